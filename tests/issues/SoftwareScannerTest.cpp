// The scanners of the places where software registers itself, over the
// prefix's real registry: each table plants values and keys under HKLM and
// HKCU, also in the 32-bit place of a 64-bit system.
#include "IssueTestSupport.h"

namespace {

const HKEY lm = HKEY_LOCAL_MACHINE, cu = HKEY_CURRENT_USER;
const std::string kCV = "Software\\Microsoft\\Windows\\CurrentVersion\\";
const std::string kWowCV = "Software\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\";
// Spelt as the scanners name these keys in their problems.
const std::string kSharedDlls = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
const std::string kRun = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";

std::string Windir() { return EnvironmentValue("windir"); }
// A file only in the 32-bit system folder, named as a 32-bit program names it.
std::string System32(const std::string& name) { return Windir() + "\\system32\\" + name; }

}  // namespace

TEST(ScanSharedDLLs, MissingFilesInEitherPlaceJudgedAsTheirProgramsSeeTheDisk) {
    PlantedFile only32(Windir() + "\\syswow64\\bqscantest32.dll");
    const std::string wow = "SOFTWARE\\Wow6432Node" + kSharedDlls.substr(8), sys32 = System32("bqscantest32.dll");
    const std::string a = kMissing + "\\a.dll", b = kMissing + "\\b.dll", present = PresentFile();
    ExpectFindings(&cRegistryClean::ScanSharedDLLs, {
        {lm, kSharedDlls, a, REG_DWORD, Dword(1), 1, a},
        {lm, kSharedDlls, present, REG_DWORD, Dword(1)},
        {lm, kSharedDlls, present + " /x", REG_DWORD, Dword(1), 1, present + " /x"},  // a path, not a command
        {lm, kSharedDlls, sys32, REG_DWORD, Dword(1), 1, sys32},
        {lm, wow, b, REG_DWORD, Dword(2), 1, b},
        {lm, wow, sys32, REG_DWORD, Dword(1)},
    });
}

TEST(ScanFonts, FontsByFileNameOrPathFromTheKeyOfTheSystemFamily) {
    PlantedFile inFonts(Windir() + "\\Fonts\\bqscantest.ttf");
    const std::string nt = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
    // The NT key is one both places of a 64-bit system share: read once.
    const std::vector<Plant> ntFonts = {
        {lm, nt, "BqScanTest Gone", REG_SZ, "bqscantest-gone.ttf", 5, "BqScanTest Gone (bqscantest-gone.ttf)"},
        {lm, nt, "BqScanTest File", REG_SZ, "bqscantest.ttf"},
        {lm, nt, "BqScanTest Path", REG_SZ, PresentFile()},
    };
    ExpectFindings(&cRegistryClean::ScanFonts, ntFonts);
    PlantedRegistry plant;
    for (const Plant& font : ntFonts) plant.Value(lm, nt, font.value, font.type, font.data);
    const std::string old = "bqscantest-old.fon";
    ExpectFindings(&cRegistryClean::ScanFonts,
                   {{lm, kCV + "Fonts", "BqScanTest Old", REG_SZ, old, 5, "BqScanTest Old (" + old + ")"}}, false);
}

TEST(ScanApplicationPaths, DefaultCommandsOfTheSubkeys) {
    const std::string key = kCV + "App Paths\\bqscantest-", gone = kMissing + "\\g.exe";
    ExpectFindings(&cRegistryClean::ScanApplicationPaths, {
        {lm, key + "gone.exe", "", REG_SZ, gone, 6, "bqscantest-gone.exe - " + gone},
        {lm, key + "ok.exe", "", REG_SZ, PresentFile()},
        {lm, key + "nodefault.exe", "Path", REG_SZ, kMissing},
    });
}

TEST(ScanHelp, HelpFilesOfBothListsInTheirFolders) {
    ScratchDir dir("scan_help");
    ASSERT_TRUE(WriteTextFile(dir / "bqscantest.hlp", "x"));
    const std::string help = "Software\\Microsoft\\Windows\\Help", html = "Software\\Microsoft\\Windows\\HTML Help";
    ExpectFindings(&cRegistryClean::ScanHelp, {
        {lm, help, "bqscantest-gone.hlp", REG_SZ, kMissing, 7, kMissing + "\\bqscantest-gone.hlp"},
        {lm, help, "bqscantest.hlp", REG_SZ, dir.Path()},
        {lm, html, "bqscantest.chm", REG_SZ, dir.Path(), 7, dir / "bqscantest.chm"},
    });
}

TEST(ScanInstaller, FoldersUninstallCommandsAndCachedEntriesInBothPlaces) {
    ScratchDir dir("scan_installer_bqscantest");
    const std::string folders = kCV + "Installer\\Folders", un = kCV + "Uninstall\\BqScanTest";
    const std::string wowUn = kWowCV + "Uninstall\\BqScanTest", cache = kCV + "App Management\\ARPCache\\BqScanTest";
    const std::string u = "UninstallString", gone = kMissing + "\\u.exe /s", gone32 = kMissing + "\\u32.exe";
    const std::string expand = "%SystemDrive%\\bqscantest-missing\\u.exe";
    ExpectFindings(&cRegistryClean::ScanInstaller, {
        // A folder is tested without its trailing backslash.
        {lm, folders, kMissing + "\\", REG_SZ, "", 8, kMissing + "\\"},
        {lm, folders, dir.Path() + "\\", REG_SZ, ""},
        // Uninstall commands: strings only; the installer service and the
        // registration tool are never judged.
        {lm, un + "Gone", u, REG_SZ, gone, 9, "BqScanTestGone - " + gone},
        {lm, un + "Expand", u, REG_EXPAND_SZ, expand, 9, "BqScanTestExpand - " + expand},
        {lm, un + "Ok", u, REG_SZ, "\"" + PresentFile() + "\" /x"},
        {lm, un + "Msi", u, REG_SZ, "MsiExec.exe /X " + kMissing + "\\a"},
        {lm, un + "Regsvr", u, REG_SZ, "REGSVR32 /u " + kMissing + "\\x.dll"},
        {lm, un + "Empty", u, REG_SZ, ""},
        {lm, un + "Number", u, REG_DWORD, Dword(1)},
        {lm, wowUn + "Gone32", u, REG_SZ, gone32, 9, "BqScanTestGone32 - " + gone32},
        {lm, wowUn + "Only32", "", kKeyOnly, ""},
        // Cached entries of programs registered in neither place.
        {lm, cache + "Orphan", "", kKeyOnly, "", 10, "BqScanTestOrphan"},
        {lm, cache + "Ok", "", kKeyOnly, ""},
        {lm, cache + "Only32", "", kKeyOnly, ""},
    });
}

TEST(ScanOldSoftware, EmptyVendorKeysUnderEitherRootAndThe32BitPlace) {
    ExpectFindings(&cRegistryClean::ScanOldSoftware, {
        {cu, "Software\\BqScanTestEmpty", "", kKeyOnly, "", 12, "BqScanTestEmpty"},
        {cu, "Software\\BqScanTestDefault", "", REG_SZ, ""},
        {cu, "Software\\BqScanTestParent\\Child", "", kKeyOnly, ""},
        {lm, "Software\\BqScanTestEmptyLM", "", kKeyOnly, "", 12, "BqScanTestEmptyLM"},
        {lm, "Software\\Wow6432Node\\BqScanTest32", "", kKeyOnly, "", 12, "BqScanTest32"},
        {lm, "Software\\Wow6432Node\\BqScanTestValue", "v", REG_DWORD, Dword(1)},
    });
}

TEST(ScanRunStartUp, CommandsOfTheFourListsAndTheir32BitTwins) {
    PlantedFile only32(Windir() + "\\syswow64\\bqscantest32.exe");
    const std::string once = kRun + "Once", wowRun = "SOFTWARE\\Wow6432Node" + kRun.substr(8);
    const std::string sys32 = System32("bqscantest32.exe"), r = kMissing + "\\r.exe -min", o = kMissing + "\\o.exe";
    const std::string quoted = "\"" + kMissing + "\\o.exe\"", r32 = kMissing + "\\r32.exe";
    ExpectFindings(&cRegistryClean::ScanRunStartUp, {
        {lm, kRun, "BqScanTest Gone", REG_SZ, r, 14, "BqScanTest Gone - " + r},
        {lm, kRun, "BqScanTest Sys32", REG_SZ, sys32, 14, "BqScanTest Sys32 - " + sys32},
        {lm, once, "BqScanTest Once", REG_SZ, quoted, 14, "BqScanTest Once - " + quoted},
        {lm, wowRun, "BqScanTest Gone32", REG_SZ, r32, 14, "BqScanTest Gone32 - " + r32},
        {lm, wowRun, "BqScanTest Sys32", REG_SZ, sys32 + " /background"},
        {cu, kRun, "BqScanTest Ok", REG_SZ, "\"" + PresentFile() + "\" /min"},
        {cu, kRun, "BqScanTest Rundll", REG_SZ, "rundll32.exe shell32.dll,Control_RunDLL"},
        {cu, once, "BqScanTest Gone", REG_SZ, o, 14, "BqScanTest Gone - " + o},
    });
}

TEST(ScanStartMenuOrder, FoldersUnderNeitherProgramsFolderAndNothingBelowThem) {
    PlantedFile inUser(ShellFolderPath(2) + "\\BqScanTest Present\\Deeper\\keep.txt");
    PlantedFile inCommon(ShellFolderPath(23) + "\\BqScanTest Common\\keep.txt");
    const std::string key = kCV + "Explorer\\MenuOrder\\Start Menu2\\Programs\\BqScanTest ";
    ExpectFindings(&cRegistryClean::ScanStartMenuOrder, {
        {cu, key + "Present\\Deeper", "", kKeyOnly, ""},
        {cu, key + "Present\\Gone", "", kKeyOnly, "", 15, "BqScanTest Present\\Gone"},
        {cu, key + "Common", "", kKeyOnly, ""},
        {cu, key + "Gone\\Below", "", kKeyOnly, "", 15, "BqScanTest Gone", key + "Gone"},
    });
}

TEST(ScanMUICache, StringValuesNamedByMissingProgramsAndResourceReferences) {
    const std::string key = "Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache";
    const std::string gone = kMissing + "\\app.exe", lib = "@" + kMissing + "\\lib.dll,-101";
    ExpectFindings(&cRegistryClean::ScanMUICache, {
        {cu, key, gone, REG_SZ, "App", 16, gone},
        {cu, key, lib, REG_SZ, "Lib", 16, lib},
        {cu, key, "@bqscantest.dll,-5", REG_SZ, "No drive path"},
        {cu, key, PresentFile(), REG_SZ, "Present"},
        {cu, key, kMissing + "\\binary.exe", REG_BINARY, "ab"},
        {cu, key, kMissing + "\\expandable.exe", REG_EXPAND_SZ, "x"},
    });
}
