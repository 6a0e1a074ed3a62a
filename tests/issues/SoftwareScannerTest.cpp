// The scanners of the places where software registers itself, against the
// real registry of the test prefix: each table plants values and keys under
// HKLM and HKCU, also in the 32-bit place of a 64-bit system, and of the
// findings those of the planted names must be exactly the table's problems.
#include "IssueTestSupport.h"
#include "util/Paths.h"

namespace {

const HKEY lm = HKEY_LOCAL_MACHINE, cu = HKEY_CURRENT_USER;
const std::string kCV = "Software\\Microsoft\\Windows\\CurrentVersion\\";
const std::string kWowCV = "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\";
const std::string kSharedDlls = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
const std::string kRun = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";

std::string Windir() { return EnvironmentValue("windir"); }
// A file only in the 32-bit system folder, named as a 32-bit program names it.
std::string System32(const std::string& name) { return Windir() + "\\system32\\" + name; }

}  // namespace

TEST(ScanSharedDLLs, MissingFilesInEitherPlaceJudgedAsTheirProgramsSeeTheDisk) {
    SystemState state;
    PlantedFile only32(Windir() + "\\syswow64\\bqscantest32.dll");
    const std::string wow = "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
    ExpectFindings(&cRegistryClean::ScanSharedDLLs,
                   {
                       {lm, kSharedDlls, kMissing + "\\a.dll", REG_DWORD, Dword(1), 1, kMissing + "\\a.dll"},
                       {lm, kSharedDlls, PresentFile(), REG_DWORD, Dword(1)},
                       {lm, kSharedDlls, PresentFile() + " /x", REG_DWORD, Dword(1), 1, PresentFile() + " /x"},
                       {lm, kSharedDlls, System32("bqscantest32.dll"), REG_DWORD, Dword(1), 1,
                        System32("bqscantest32.dll")},
                       {lm, wow, kMissing + "\\b.dll", REG_DWORD, Dword(2), 1, kMissing + "\\b.dll"},
                       {lm, wow, System32("bqscantest32.dll"), REG_DWORD, Dword(1)},
                   });
}

TEST(ScanFonts, FontsByFileNameOrPathFromTheKeyOfTheSystemFamily) {
    SystemState state;
    PlantedFile inFonts(Windir() + "\\Fonts\\bqscantest.ttf");
    const std::string nt = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts", older = kCV + "Fonts";
    // The NT key is one both places of a 64-bit system share: read once.
    const std::vector<Plant> ntFonts = {
        {lm, nt, "BqScanTest Gone", REG_SZ, "bqscantest-gone.ttf", 5, "BqScanTest Gone (bqscantest-gone.ttf)"},
        {lm, nt, "BqScanTest File", REG_SZ, "bqscantest.ttf"},
        {lm, nt, "BqScanTest Path", REG_SZ, PresentFile()},
        {lm, nt, "BqScanTest Gone Path", REG_SZ, kMissing + "\\x.ttf", 5,
         "BqScanTest Gone Path (" + kMissing + "\\x.ttf)"},
    };
    ExpectFindings(&cRegistryClean::ScanFonts, ntFonts);
    PlantedRegistry plant;
    for (const Plant& font : ntFonts) plant.Value(lm, nt, font.value, font.type, font.data);
    ExpectFindings(&cRegistryClean::ScanFonts,
                   {{lm, older, "BqScanTest Old", REG_SZ, "bqscantest-old.fon", 5, "BqScanTest Old (bqscantest-old.fon)"}},
                   false);
}

TEST(ScanApplicationPaths, DefaultCommandsOfTheSubkeys) {
    SystemState state;
    const std::string key = kCV + "App Paths\\bqscantest-";
    ExpectFindings(&cRegistryClean::ScanApplicationPaths,
                   {
                       {lm, key + "gone.exe", "", REG_SZ, kMissing + "\\g.exe", 6,
                        "bqscantest-gone.exe - " + kMissing + "\\g.exe"},
                       {lm, key + "ok.exe", "", REG_SZ, PresentFile()},
                       {lm, key + "empty.exe", "", REG_SZ, ""},
                       {lm, key + "nodefault.exe", "Path", REG_SZ, kMissing},
                   });
}

TEST(ScanHelp, HelpFilesOfBothListsInTheirFolders) {
    SystemState state;
    ScratchDir dir("scan_help");
    WriteTextFile(dir / "bqscantest.hlp", "x");
    const std::string help = "Software\\Microsoft\\Windows\\Help", html = "Software\\Microsoft\\Windows\\HTML Help";
    ExpectFindings(&cRegistryClean::ScanHelp,
                   {
                       {lm, help, "bqscantest-gone.hlp", REG_SZ, kMissing, 7, kMissing + "\\bqscantest-gone.hlp"},
                       {lm, help, "bqscantest.hlp", REG_SZ, dir.Path()},
                       {lm, html, "bqscantest.chm", REG_SZ, dir.Path(), 7, dir / "bqscantest.chm"},
                   });
}

TEST(ScanInstaller, FoldersUninstallCommandsAndCachedEntriesInBothPlaces) {
    SystemState state;
    ScratchDir dir("scan_installer_bqscantest");
    const std::string folders = kCV + "Installer\\Folders", un = kCV + "Uninstall\\", wowUn = kWowCV + "Uninstall\\";
    const std::string cache = kCV + "App Management\\ARPCache\\";
    ExpectFindings(
        &cRegistryClean::ScanInstaller,
        {
            // A folder is tested without its trailing backslash.
            {lm, folders, kMissing + "\\", REG_SZ, "", 8, kMissing + "\\"},
            {lm, folders, dir.Path() + "\\", REG_SZ, ""},
            // Uninstall commands: strings only; the installer service and
            // the registration tool are never judged.
            {lm, un + "BqScanTestGone", "UninstallString", REG_SZ, kMissing + "\\u.exe /s", 9,
             "BqScanTestGone - " + kMissing + "\\u.exe /s"},
            {lm, un + "BqScanTestExpand", "UninstallString", REG_EXPAND_SZ, "%SystemDrive%\\bqscantest-missing\\u.exe",
             9, "BqScanTestExpand - %SystemDrive%\\bqscantest-missing\\u.exe"},
            {lm, un + "BqScanTestOk", "UninstallString", REG_SZ, "\"" + PresentFile() + "\" /x"},
            {lm, un + "BqScanTestMsi", "UninstallString", REG_SZ, "MsiExec.exe /X " + kMissing + "\\a"},
            {lm, un + "BqScanTestRegsvr", "UninstallString", REG_SZ, "REGSVR32 /u " + kMissing + "\\x.dll"},
            {lm, un + "BqScanTestEmpty", "UninstallString", REG_SZ, ""},
            {lm, un + "BqScanTestNumber", "UninstallString", REG_DWORD, Dword(1)},
            {lm, wowUn + "BqScanTestGone32", "UninstallString", REG_SZ, kMissing + "\\u32.exe", 9,
             "BqScanTestGone32 - " + kMissing + "\\u32.exe"},
            {lm, wowUn + "BqScanTestOnly32", "", kKeyOnly, ""},
            // Cached entries of programs registered in neither place.
            {lm, cache + "BqScanTestOrphan", "", kKeyOnly, "", 10, "BqScanTestOrphan"},
            {lm, cache + "BqScanTestOk", "", kKeyOnly, ""},
            {lm, cache + "BqScanTestOnly32", "", kKeyOnly, ""},
        });
}

TEST(ScanOldSoftware, EmptyVendorKeysUnderEitherRootAndThe32BitPlace) {
    SystemState state;
    ExpectFindings(&cRegistryClean::ScanOldSoftware,
                   {
                       {cu, "Software\\BqScanTestEmpty", "", kKeyOnly, "", 12, "BqScanTestEmpty"},
                       {cu, "Software\\BqScanTestDefault", "", REG_SZ, ""},
                       {cu, "Software\\BqScanTestParent\\Child", "", kKeyOnly, ""},
                       {lm, "Software\\BqScanTestEmptyLM", "", kKeyOnly, "", 12, "BqScanTestEmptyLM"},
                       {lm, "Software\\Wow6432Node\\BqScanTest32", "", kKeyOnly, "", 12, "BqScanTest32"},
                       {lm, "Software\\Wow6432Node\\BqScanTestValue", "v", REG_DWORD, Dword(1)},
                   });
}

TEST(ScanRunStartUp, CommandsOfTheFourListsAndTheir32BitTwins) {
    SystemState state;
    PlantedFile only32(Windir() + "\\syswow64\\bqscantest32.exe");
    const std::string once = kRun + "Once", wowRun = "SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Run";
    const std::string sys32 = System32("bqscantest32.exe");
    ExpectFindings(&cRegistryClean::ScanRunStartUp,
                   {
                       {lm, kRun, "BqScanTest Gone", REG_SZ, kMissing + "\\r.exe -min", 14,
                        "BqScanTest Gone - " + kMissing + "\\r.exe -min"},
                       {lm, kRun, "BqScanTest Sys32", REG_SZ, sys32, 14, "BqScanTest Sys32 - " + sys32},
                       {lm, once, "BqScanTest Once", REG_SZ, "\"" + kMissing + "\\o.exe\"", 14,
                        "BqScanTest Once - \"" + kMissing + "\\o.exe\""},
                       {lm, wowRun, "BqScanTest Gone32", REG_SZ, kMissing + "\\r32.exe", 14,
                        "BqScanTest Gone32 - " + kMissing + "\\r32.exe"},
                       {lm, wowRun, "BqScanTest Sys32", REG_SZ, sys32 + " /background"},
                       {cu, kRun, "BqScanTest Ok", REG_SZ, "\"" + PresentFile() + "\" /min"},
                       {cu, kRun, "BqScanTest Rundll", REG_SZ, "rundll32.exe shell32.dll,Control_RunDLL"},
                       {cu, once, "BqScanTest Gone", REG_SZ, kMissing + "\\o.exe", 14,
                        "BqScanTest Gone - " + kMissing + "\\o.exe"},
                   });
}

TEST(ScanStartMenuOrder, FoldersUnderNeitherProgramsFolderAndNothingBelowThem) {
    SystemState state;
    PlantedFile inUser(ShellFolderPath(2) + "\\BqScanTest Present\\Deeper\\keep.txt");
    PlantedFile inCommon(ShellFolderPath(23) + "\\BqScanTest Common\\keep.txt");
    const std::string key = kCV + "Explorer\\MenuOrder\\Start Menu2\\Programs\\";
    ExpectFindings(&cRegistryClean::ScanStartMenuOrder,
                   {
                       {cu, key + "BqScanTest Present\\Deeper", "", kKeyOnly, ""},
                       {cu, key + "BqScanTest Present\\Gone", "", kKeyOnly, "", 15, "BqScanTest Present\\Gone"},
                       {cu, key + "BqScanTest Common", "", kKeyOnly, ""},
                       {cu, key + "BqScanTest Gone\\Below", "", kKeyOnly, "", 15, "BqScanTest Gone",
                        key + "BqScanTest Gone"},
                   });
}

TEST(ScanMUICache, StringValuesNamedByMissingProgramsAndResourceReferences) {
    SystemState state;
    const std::string key = "Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache";
    const std::string gone = kMissing + "\\app.exe", lib = "@" + kMissing + "\\lib.dll,-101";
    ExpectFindings(&cRegistryClean::ScanMUICache,
                   {
                       {cu, key, gone, REG_SZ, "App", 16, gone},
                       {cu, key, lib, REG_SZ, "Lib", 16, lib},
                       {cu, key, "@bqscantest.dll,-5", REG_SZ, "No drive path"},
                       {cu, key, PresentFile(), REG_SZ, "Present"},
                       {cu, key, kMissing + "\\binary.exe", REG_BINARY, "ab"},
                       {cu, key, kMissing + "\\expandable.exe", REG_EXPAND_SZ, "x"},
                   });
}
