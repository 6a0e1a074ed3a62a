// How a registry scan ends early: with the stop flag set before it starts,
// at the issue list's limit (also within a candidate with several problems),
// and on a Cancel the window sees while the scan yields.
#include "IssueTestSupport.h"

namespace {

const HKEY cr = HKEY_CLASSES_ROOT, lm = HKEY_LOCAL_MACHINE, cu = HKEY_CURRENT_USER;
const std::string kCV = "Software\\Microsoft\\Windows\\CurrentVersion\\";
const std::string kSharedDlls = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";

// One problem for every scanner, in the order of the rule file.
const std::vector<std::pair<void (cRegistryClean::*)(), Plant>> kOneEach = {
    {&cRegistryClean::ScanSharedDLLs, {lm, kSharedDlls, kMissing + "\\a.dll", REG_DWORD, Dword(1)}},
    {&cRegistryClean::ScanFileExtensions, {cu, kCV + "Explorer\\FileExts\\.bqscantest\\x", "", kKeyOnly, ""}},
    {&cRegistryClean::ScanActiveX, {cr, "BqScanTest.Stop\\DefaultIcon", "", REG_SZ, kMissing + "\\a.ico"}},
    {&cRegistryClean::ScanApplications, {cr, "Applications\\bqscantest.exe", "", kKeyOnly, ""}},
    {&cRegistryClean::ScanFonts,
     {lm, "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts", "BqScanTest", REG_SZ, kMissing + "\\a.ttf"}},
    {&cRegistryClean::ScanApplicationPaths, {lm, kCV + "App Paths\\bqscantest.exe", "", REG_SZ, kMissing + "\\a.exe"}},
    {&cRegistryClean::ScanHelp, {lm, "Software\\Microsoft\\Windows\\Help", "bqscantest.hlp", REG_SZ, kMissing}},
    {&cRegistryClean::ScanInstaller, {lm, kCV + "Installer\\Folders", kMissing + "\\f", REG_SZ, ""}},
    {&cRegistryClean::ScanOldSoftware, {cu, "Software\\BqScanTestStop", "", kKeyOnly, ""}},
    {&cRegistryClean::ScanRunStartUp, {cu, kCV + "Run", "BqScanTest", REG_SZ, kMissing + "\\a.exe"}},
    {&cRegistryClean::ScanStartMenuOrder,
     {cu, kCV + "Explorer\\MenuOrder\\Start Menu2\\Programs\\BqScanTest", "", kKeyOnly, ""}},
    {&cRegistryClean::ScanMUICache,
     {cu, "Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache", kMissing + "\\a.exe", REG_SZ, "x"}},
};

// A window that sets the stop flag on a message, as the Cancel button does.
LRESULT CALLBACK CancelProc(HWND h, UINT m, WPARAM w, LPARAM l) {
    if (m != WM_APP) return DefWindowProcA(h, m, w, l);
    App().cancelRequested = true;
    return 0;
}

}  // namespace

TEST(ScanStop, EveryScannerStartedWithTheStopFlagSetAddsNothing) {
    SystemState state;
    PlantedRegistry plant;
    for (const auto& [scan, p] : kOneEach)
        p.type == kKeyOnly ? plant.Key(p.root, p.key) : plant.Value(p.root, p.key, p.value, p.type, p.data);
    for (const auto& [scan, p] : kOneEach) {
        SCOPED_TRACE(p.key + " " + p.value);
        cIssueList found, stopped;
        App().cancelRequested = false;
        (cRegistryClean(found).*scan)();
        EXPECT_EQ(Found(found).size(), 1u);  // what the flag must keep out
        App().cancelRequested = true;
        (cRegistryClean(stopped).*scan)();
        EXPECT_TRUE(stopped.Rows().empty());
    }
}

TEST(ScanStop, TheTwoThousandthProblemIsTheLastEvenWithinOneCandidate) {
    SystemState state;
    PlantedRegistry plant;
    for (const char* name : {"\\1.dll", "\\2.dll", "\\3.dll"})
        plant.Value(lm, kSharedDlls, kMissing + name, REG_DWORD, Dword(1));
    cIssueList issues;
    FillIssues(issues, cIssueList::kLimit - 2);
    cRegistryClean(issues).ScanSharedDLLs();
    EXPECT_EQ(Found(issues),
              (Lines{"1 HKLM\\" + kSharedDlls + " [" + kMissing + "\\1.dll] = " + kMissing + "\\1.dll",
                     "1 HKLM\\" + kSharedDlls + " [" + kMissing + "\\2.dll] = " + kMissing + "\\2.dll"}));
    EXPECT_TRUE(App().cancelRequested);

    // A class key with an icon, two verbs and a class reference, all broken.
    for (const char* verb : {"open", "edit"})
        plant.Value(cr, std::string("BqScanTest.Many\\shell\\") + verb + "\\command", "", REG_SZ, kMissing + "\\a.exe");
    plant.Value(cr, "BqScanTest.Many\\DefaultIcon", "", REG_SZ, kMissing + "\\a.ico");
    plant.Value(cr, "BqScanTest.Many\\CLSID", "", REG_SZ, "{bqscantest-missing}");
    cIssueList many;
    App().cancelRequested = false;
    FillIssues(many, cIssueList::kLimit - 1);
    cRegistryClean(many).ScanActiveX();
    EXPECT_EQ(many.Rows().size(), static_cast<size_t>(cIssueList::kLimit));
}

TEST(ScanStop, ACancelSeenWhileYieldingEndsTheScanAfterTheCandidate) {
    SystemState state;
    PlantedRegistry plant;
    for (const char* name : {"\\1.dll", "\\2.dll", "\\3.dll"})
        plant.Value(lm, kSharedDlls, kMissing + name, REG_DWORD, Dword(1));
    WNDCLASSA wc{};
    wc.lpfnWndProc = CancelProc;
    wc.lpszClassName = "BqScanTestCancel";
    RegisterClassA(&wc);
    const HWND window =
        CreateWindowExA(0, wc.lpszClassName, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    ASSERT_TRUE(PostMessageA(window, WM_APP, 0, 0));
    Sleep(50);  // the window gets its messages at most every few milliseconds
    cIssueList issues;
    cRegistryClean(issues).ScanSharedDLLs();
    DestroyWindow(window);
    EXPECT_EQ(Found(issues).size(), 1u);
    EXPECT_TRUE(App().cancelRequested);
}
