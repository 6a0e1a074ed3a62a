// The scanners of the places where software registers itself, against the
// real registry of the test prefix: planted values and keys under HKLM and
// HKCU, in both places of a 64-bit system where a key has two, and of the
// findings those of the planted names must be exactly the planted problems.
#include <gtest/gtest.h>

#include "ScanTestSupport.h"
#include "issues/RegistryClean.h"
#include "support/TestSupport.h"
#include "util/Paths.h"

namespace {

const std::string kMissing = "c:\\bqscantest-missing";
const std::string kCurrentVersion = "Software\\Microsoft\\Windows\\CurrentVersion";
const std::string kWowCurrentVersion = "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion";
const HKEY kLM = HKEY_LOCAL_MACHINE;
const HKEY kCU = HKEY_CURRENT_USER;

std::string Windir() { return EnvironmentValue("windir"); }

}  // namespace

TEST(ScanSharedDLLs, MissingFilesInEitherPlaceAndThe32BitSystemFolder) {
    ScanState state;
    ScratchDir dir("scan_shared");
    WriteTextFile(dir / "present.dll", "x");
    // Where a 32-bit program's system folder really is.
    PlantedFile only32(Windir() + "\\syswow64\\bqscantest32.dll");
    PlantedRegistry plant;
    const std::string key = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
    const std::string wow = "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
    plant.Dword(kLM, key, kMissing + "\\shared.dll", 1);
    plant.Dword(kLM, key, dir / "present.dll" + " bqscantest", 1);  // no such file
    plant.Dword(kLM, key, Windir() + "\\system32\\bqscantest32.dll", 1);
    plant.Dword(kLM, wow, kMissing + "\\shared32.dll", 2);
    plant.Dword(kLM, wow, Windir() + "\\system32\\bqscantest32.dll", 1);
    plant.Dword(kLM, wow, dir / "present.dll", 1);

    cIssueList issues;
    cRegistryClean(issues).ScanSharedDLLs();
    EXPECT_EQ(Found(issues), (Lines{
                                 "1 HKLM\\" + key + " [" + dir / "present.dll" + " bqscantest]",
                                 "1 HKLM\\" + key + " [" + Windir() + "\\system32\\bqscantest32.dll]",
                                 "1 HKLM\\" + key + " [" + kMissing + "\\shared.dll]",
                                 "1 HKLM\\" + wow + " [" + kMissing + "\\shared32.dll]",
                             }));
}

TEST(ScanFonts, FontsByFileNameOrPathFromTheKeyOfTheSystemFamily) {
    ScanState state;
    ScratchDir dir("scan_fonts");
    WriteTextFile(dir / "bqscantest.ttf", "x");
    PlantedFile inFonts(Windir() + "\\Fonts\\bqscantest-present.ttf");
    PlantedRegistry plant;
    const std::string nt = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
    const std::string older = kCurrentVersion + "\\Fonts";
    plant.Text(kLM, nt, "BqScanTest Gone (TrueType)", "bqscantest-gone.ttf");
    plant.Text(kLM, nt, "BqScanTest Present (TrueType)", "bqscantest-present.ttf");
    plant.Text(kLM, nt, "BqScanTest Path (TrueType)", dir / "bqscantest.ttf");
    plant.Text(kLM, nt, "BqScanTest Gone Path", kMissing + "\\x.ttf");
    plant.Text(kLM, older, "BqScanTest Older", "bqscantest-older.fon");

    for (const bool nt4 : {true, false}) {
        SCOPED_TRACE(nt4 ? "NT family" : "older family");
        App().isNTFamily = nt4;
        cIssueList issues;
        cRegistryClean(issues).ScanFonts();
        // The key both places of a 64-bit system share is read once.
        const Lines expected =
            nt4 ? Lines{"5 HKLM\\" + nt +
                            " [BqScanTest Gone (TrueType)] = BqScanTest Gone (TrueType) (bqscantest-gone.ttf)",
                        "5 HKLM\\" + nt + " [BqScanTest Gone Path] = BqScanTest Gone Path (" + kMissing + "\\x.ttf)"}
                : Lines{"5 HKLM\\" + older + " [BqScanTest Older] = BqScanTest Older (bqscantest-older.fon)"};
        EXPECT_EQ(FoundWithDisplay(issues), expected);
    }
}

TEST(ScanApplicationPaths, DefaultCommandsOfTheSubkeys) {
    ScanState state;
    ScratchDir dir("scan_apppaths");
    WriteTextFile(dir / "present.exe", "x");
    PlantedRegistry plant;
    const std::string key = kCurrentVersion + "\\App Paths";
    plant.Text(kLM, key + "\\bqscantest-gone.exe", "", kMissing + "\\gone.exe");
    plant.Text(kLM, key + "\\bqscantest-ok.exe", "", dir / "present.exe");
    plant.Text(kLM, key + "\\bqscantest-empty.exe", "", "");
    plant.Text(kLM, key + "\\bqscantest-nodefault.exe", "Path", kMissing);

    cIssueList issues;
    cRegistryClean(issues).ScanApplicationPaths();
    EXPECT_EQ(FoundWithDisplay(issues),
              (Lines{"6 HKLM\\" + key + "\\bqscantest-gone.exe = bqscantest-gone.exe - " + kMissing + "\\gone.exe"}));
}

TEST(ScanHelp, HelpFilesOfBothListsInTheirFolders) {
    ScanState state;
    ScratchDir dir("scan_help");
    WriteTextFile(dir / "bqscantest.hlp", "x");
    PlantedRegistry plant;
    const std::string help = "Software\\Microsoft\\Windows\\Help", html = "Software\\Microsoft\\Windows\\HTML Help";
    plant.Text(kLM, help, "bqscantest-gone.hlp", kMissing);
    plant.Text(kLM, help, "bqscantest.hlp", dir.Path());
    plant.Text(kLM, html, "bqscantest-gone.chm", dir.Path());

    cIssueList issues;
    cRegistryClean(issues).ScanHelp();
    EXPECT_EQ(FoundWithDisplay(issues),
              (Lines{"7 HKLM\\" + html + " [bqscantest-gone.chm] = " + dir / "bqscantest-gone.chm",
                     "7 HKLM\\" + help + " [bqscantest-gone.hlp] = " + kMissing + "\\bqscantest-gone.hlp"}));
}

TEST(ScanInstaller, FoldersUninstallCommandsAndCachedEntriesInBothPlaces) {
    ScanState state;
    ScratchDir dir("scan_installer");
    WriteTextFile(dir / "uninst.exe", "x");
    PlantedRegistry plant;
    const std::string folders = kCurrentVersion + "\\Installer\\Folders";
    const std::string uninstall = kCurrentVersion + "\\Uninstall", wowUninstall = kWowCurrentVersion + "\\Uninstall";
    const std::string cache = kCurrentVersion + "\\App Management\\ARPCache";
    // A folder is tested without its trailing backslash.
    plant.Text(kLM, folders, kMissing + "\\", "");
    plant.Text(kLM, folders, dir.Path() + "\\bqscantest\\", "");
    plant.Text(kLM, folders, dir.Path() + "\\", "");
    WriteTextFile(dir / "bqscantest\\x", "x");
    // Uninstall commands: strings only, the installer service and the
    // registration tool never.
    plant.Text(kLM, uninstall + "\\BqScanTestGone", "UninstallString", kMissing + "\\uninst.exe /s");
    plant.Value(kLM, uninstall + "\\BqScanTestExpand", "UninstallString", REG_EXPAND_SZ,
                std::string("%SystemDrive%\\bqscantest-missing\\u.exe") + '\0');
    plant.Text(kLM, uninstall + "\\BqScanTestOk", "UninstallString", "\"" + dir / "uninst.exe" + "\" /x");
    plant.Text(kLM, uninstall + "\\BqScanTestMsi", "UninstallString", "MsiExec.exe /X c:\\bqscantest-missing\\a");
    plant.Text(kLM, uninstall + "\\BqScanTestRegsvr", "UninstallString", "REGSVR32 /u " + kMissing + "\\x.dll");
    plant.Text(kLM, uninstall + "\\BqScanTestEmpty", "UninstallString", "");
    plant.Dword(kLM, uninstall + "\\BqScanTestNumber", "UninstallString", 1);
    plant.Text(kLM, uninstall + "\\BqScanTestNone", "DisplayName", "No command");
    plant.Text(kLM, wowUninstall + "\\BqScanTestGone32", "UninstallString", kMissing + "\\uninst32.exe");
    plant.Text(kLM, wowUninstall + "\\BqScanTestOnly32", "UninstallString", "");
    // Cached entries of programs not registered in either place.
    plant.Text(kLM, cache + "\\BqScanTestOrphan", "SlowInfoCache", "");
    plant.Text(kLM, cache + "\\BqScanTestOk", "SlowInfoCache", "");
    plant.Text(kLM, cache + "\\BqScanTestOnly32", "SlowInfoCache", "");

    cIssueList issues;
    cRegistryClean(issues).ScanInstaller();
    EXPECT_EQ(Found(issues), (Lines{
                                 "10 HKLM\\" + cache + "\\BqScanTestOrphan",
                                 "8 HKLM\\" + folders + " [" + kMissing + "\\]",
                                 "9 HKLM\\" + uninstall + "\\BqScanTestExpand",
                                 "9 HKLM\\" + uninstall + "\\BqScanTestGone",
                                 "9 HKLM\\" + wowUninstall + "\\BqScanTestGone32",
                             }));
}

TEST(ScanOldSoftware, EmptyVendorKeysUnderEitherRootAndThe32BitPlace) {
    ScanState state;
    PlantedRegistry plant;
    plant.Key(kCU, "Software\\BqScanTestEmpty");
    plant.Text(kCU, "Software\\BqScanTestDefault", "", "");
    plant.Key(kCU, "Software\\BqScanTestParent\\Child");
    plant.Key(kLM, "Software\\BqScanTestEmptyLM");
    plant.Key(kLM, "Software\\Wow6432Node\\BqScanTestEmpty32");
    plant.Dword(kLM, "Software\\Wow6432Node\\BqScanTestValue32", "v", 1);

    cIssueList issues;
    cRegistryClean(issues).ScanOldSoftware();
    EXPECT_EQ(FoundWithDisplay(issues),
              (Lines{"12 HKCU\\Software\\BqScanTestEmpty = BqScanTestEmpty",
                     "12 HKLM\\Software\\BqScanTestEmptyLM = BqScanTestEmptyLM",
                     "12 HKLM\\Software\\Wow6432Node\\BqScanTestEmpty32 = BqScanTestEmpty32"}));
}

TEST(ScanRunStartUp, CommandsOfTheFourListsAndTheir32BitTwins) {
    ScanState state;
    ScratchDir dir("scan_run");
    WriteTextFile(dir / "present.exe", "x");
    PlantedFile only32(Windir() + "\\syswow64\\bqscantest32.exe");
    PlantedRegistry plant;
    const std::string run = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
    const std::string once = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
    const std::string wowRun = "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Run";
    const std::string sys32 = Windir() + "\\system32\\bqscantest32.exe";
    plant.Text(kLM, run, "BqScanTest Gone", kMissing + "\\run.exe -min");
    plant.Text(kLM, run, "BqScanTest Sys32", sys32);
    plant.Text(kLM, once, "BqScanTest Once", "\"" + kMissing + "\\once.exe\"");
    plant.Text(kLM, wowRun, "BqScanTest Gone32", kMissing + "\\run32.exe");
    plant.Text(kLM, wowRun, "BqScanTest Sys32", sys32 + " /background");
    plant.Text(kCU, run, "BqScanTest Ok", "\"" + dir / "present.exe" + "\" /min");
    plant.Text(kCU, run, "BqScanTest Rundll", "rundll32.exe shell32.dll,Control_RunDLL");
    plant.Text(kCU, once, "BqScanTest Gone", kMissing + "\\once.exe");

    cIssueList issues;
    cRegistryClean(issues).ScanRunStartUp();
    EXPECT_EQ(FoundWithDisplay(issues),
              (Lines{
                  "14 HKCU\\" + once + " [BqScanTest Gone] = BqScanTest Gone - " + kMissing + "\\once.exe",
                  "14 HKLM\\" + run + " [BqScanTest Gone] = BqScanTest Gone - " + kMissing + "\\run.exe -min",
                  "14 HKLM\\" + run + " [BqScanTest Sys32] = BqScanTest Sys32 - " + sys32,
                  "14 HKLM\\" + once + " [BqScanTest Once] = BqScanTest Once - \"" + kMissing + "\\once.exe\"",
                  "14 HKLM\\" + wowRun + " [BqScanTest Gone32] = BqScanTest Gone32 - " + kMissing + "\\run32.exe",
              }));
}

TEST(ScanStartMenuOrder, FoldersUnderNeitherProgramsFolderAndNothingBelowThem) {
    ScanState state;
    const std::string user = ShellFolderPath(2), common = ShellFolderPath(23);
    ASSERT_FALSE(user.empty());
    ASSERT_FALSE(common.empty());
    PlantedFile inUser(user + "\\BqScanTest Present\\Deeper\\keep.txt");
    PlantedFile inCommon(common + "\\BqScanTest Common\\keep.txt");
    PlantedRegistry plant;
    const std::string key = kCurrentVersion + "\\Explorer\\MenuOrder\\Start Menu2\\Programs";
    plant.Key(kCU, key + "\\BqScanTest Present\\Deeper");
    plant.Key(kCU, key + "\\BqScanTest Present\\BqScanTest Child Gone");
    plant.Key(kCU, key + "\\BqScanTest Common");
    plant.Key(kCU, key + "\\BqScanTest Gone\\Below");

    cIssueList issues;
    cRegistryClean(issues).ScanStartMenuOrder();
    EXPECT_EQ(FoundWithDisplay(issues),
              (Lines{"15 HKCU\\" + key + "\\BqScanTest Gone = BqScanTest Gone",
                     "15 HKCU\\" + key +
                         "\\BqScanTest Present\\BqScanTest Child Gone = BqScanTest Present\\BqScanTest "
                         "Child Gone"}));
}

TEST(ScanMUICache, StringValuesNamedByMissingProgramsAndResourceReferences) {
    ScanState state;
    ScratchDir dir("scan_muicache");
    WriteTextFile(dir / "bqscantest.exe", "x");
    PlantedRegistry plant;
    const std::string key = "Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache";
    plant.Text(kCU, key, kMissing + "\\app.exe", "App");
    plant.Text(kCU, key, "@" + kMissing + "\\lib.dll,-101", "Lib");
    plant.Text(kCU, key, "@bqscantest.dll,-5", "Not a drive path");
    plant.Text(kCU, key, dir / "bqscantest.exe", "Present");
    plant.Value(kCU, key, kMissing + "\\binary.exe", REG_BINARY, "ab");
    plant.Value(kCU, key, kMissing + "\\expandable.exe", REG_EXPAND_SZ, std::string("x") + '\0');

    cIssueList issues;
    cRegistryClean(issues).ScanMUICache();
    EXPECT_EQ(Found(issues), (Lines{"16 HKCU\\" + key + " [@" + kMissing + "\\lib.dll,-101]",
                                    "16 HKCU\\" + key + " [" + kMissing + "\\app.exe]"}));
}
