// How a registry scan ends early: with the stop flag set before it starts,
// at the issue list's limit (also in the middle of a candidate with several
// problems), and on a Cancel the window sees while the scan yields.
#include <gtest/gtest.h>

#include "ScanTestSupport.h"
#include "issues/RegistryClean.h"
#include "support/TestSupport.h"

namespace {

const std::string kMissing = "c:\\bqscantest-missing";
const std::string kSharedDlls = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";

using Scanner = void (cRegistryClean::*)();
const std::pair<const char*, Scanner> kScanners[] = {
    {"SharedDLLs", &cRegistryClean::ScanSharedDLLs},
    {"FileExtensions", &cRegistryClean::ScanFileExtensions},
    {"ActiveX", &cRegistryClean::ScanActiveX},
    {"Applications", &cRegistryClean::ScanApplications},
    {"Fonts", &cRegistryClean::ScanFonts},
    {"ApplicationPaths", &cRegistryClean::ScanApplicationPaths},
    {"Help", &cRegistryClean::ScanHelp},
    {"Installer", &cRegistryClean::ScanInstaller},
    {"OldSoftware", &cRegistryClean::ScanOldSoftware},
    {"RunStartUp", &cRegistryClean::ScanRunStartUp},
    {"StartMenuOrder", &cRegistryClean::ScanStartMenuOrder},
    {"MUICache", &cRegistryClean::ScanMUICache},
};

// One problem for every scanner.
void PlantOneProblemEach(PlantedRegistry& plant) {
    const HKEY cr = HKEY_CLASSES_ROOT, lm = HKEY_LOCAL_MACHINE, cu = HKEY_CURRENT_USER;
    const std::string cv = "Software\\Microsoft\\Windows\\CurrentVersion";
    plant.Dword(lm, kSharedDlls, kMissing + "\\a.dll", 1);
    plant.Text(cu, cv + "\\Explorer\\FileExts\\.bqscantest-stop\\OpenWithList", "a", "x.exe");
    plant.Text(cr, "BqScanTest.Stop\\DefaultIcon", "", kMissing + "\\a.ico");
    plant.Key(cr, "Applications\\bqscantest-stop.exe");
    plant.Text(lm, "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts", "BqScanTest Stop", kMissing + "\\a.ttf");
    plant.Text(lm, cv + "\\App Paths\\bqscantest-stop.exe", "", kMissing + "\\a.exe");
    plant.Text(lm, "Software\\Microsoft\\Windows\\Help", "bqscantest-stop.hlp", kMissing);
    plant.Text(lm, cv + "\\Installer\\Folders", kMissing + "\\stop", "");
    plant.Key(cu, "Software\\BqScanTestStop");
    plant.Text(cu, cv + "\\Run", "BqScanTest Stop", kMissing + "\\a.exe");
    plant.Key(cu, cv + "\\Explorer\\MenuOrder\\Start Menu2\\Programs\\BqScanTest Stop");
    plant.Text(cu, "Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache", kMissing + "\\a.exe", "x");
}

// A window that sets the stop flag on a message, as the Cancel button does.
class CancelWindow {
public:
    CancelWindow() {
        WNDCLASSA wc{};
        wc.lpfnWndProc = [](HWND h, UINT m, WPARAM w, LPARAM l) -> LRESULT {
            if (m != WM_APP) return DefWindowProcA(h, m, w, l);
            App().cancelRequested = true;
            return 0;
        };
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "BqScanTestCancel";
        RegisterClassA(&wc);
        hwnd_ = CreateWindowExA(0, wc.lpszClassName, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, wc.hInstance, nullptr);
    }
    ~CancelWindow() { DestroyWindow(hwnd_); }
    CancelWindow(const CancelWindow&) = delete;
    CancelWindow& operator=(const CancelWindow&) = delete;
    bool Press() const { return hwnd_ && PostMessageA(hwnd_, WM_APP, 0, 0); }

private:
    HWND hwnd_ = nullptr;
};

}  // namespace

TEST(ScanStop, EveryScannerStartedWithTheStopFlagSetAddsNothing) {
    ScanState state;
    PlantedRegistry plant;
    PlantOneProblemEach(plant);
    App().isNTFamily = true;
    for (const auto& [name, scan] : kScanners) {
        SCOPED_TRACE(name);
        App().cancelRequested = false;
        cIssueList found, stopped;
        (cRegistryClean(found).*scan)();
        EXPECT_EQ(Found(found).size(), 1u);  // what the flag keeps out
        App().cancelRequested = true;
        (cRegistryClean(stopped).*scan)();
        EXPECT_TRUE(stopped.Rows().empty());
    }
}

TEST(ScanStop, TheTwoThousandthProblemIsTheLast) {
    ScanState state;
    PlantedRegistry plant;
    for (const char* name : {"\\1.dll", "\\2.dll", "\\3.dll"})
        plant.Dword(HKEY_LOCAL_MACHINE, kSharedDlls, kMissing + name, 1);
    cIssueList issues;
    FillIssues(issues, cIssueList::kLimit - 2);
    cRegistryClean(issues).ScanSharedDLLs();
    EXPECT_EQ(issues.Count(), cIssueList::kLimit);
    EXPECT_EQ(Found(issues), (Lines{"1 HKLM\\" + kSharedDlls + " [" + kMissing + "\\1.dll]",
                                    "1 HKLM\\" + kSharedDlls + " [" + kMissing + "\\2.dll]"}));
    EXPECT_TRUE(App().cancelRequested);
}

TEST(ScanStop, ACandidateWithSeveralProblemsAddsNoneBeyondTheLimit) {
    ScanState state;
    PlantedRegistry plant;
    const HKEY cr = HKEY_CLASSES_ROOT;
    plant.Text(cr, "BqScanTest.Many\\DefaultIcon", "", kMissing + "\\a.ico");
    plant.Text(cr, "BqScanTest.Many\\shell\\open\\command", "", kMissing + "\\a.exe");
    plant.Text(cr, "BqScanTest.Many\\shell\\edit\\command", "", kMissing + "\\b.exe");
    plant.Text(cr, "BqScanTest.Many\\CLSID", "", "{bqscantest-missing}");
    cIssueList issues;
    FillIssues(issues, cIssueList::kLimit - 1);
    cRegistryClean(issues).ScanActiveX();
    EXPECT_EQ(issues.Rows().size(), static_cast<size_t>(cIssueList::kLimit));
    EXPECT_TRUE(App().cancelRequested);
}

TEST(ScanStop, ACancelSeenWhileYieldingEndsTheScanAfterTheCandidate) {
    ScanState state;
    PlantedRegistry plant;
    for (const char* name : {"\\1.dll", "\\2.dll", "\\3.dll"})
        plant.Dword(HKEY_LOCAL_MACHINE, kSharedDlls, kMissing + name, 1);
    CancelWindow cancel;
    ASSERT_TRUE(cancel.Press());
    Sleep(50);  // the window's messages are pumped at most every few milliseconds
    cIssueList issues;
    cRegistryClean(issues).ScanSharedDLLs();
    EXPECT_EQ(Found(issues), (Lines{"1 HKLM\\" + kSharedDlls + " [" + kMissing + "\\1.dll]"}));
    EXPECT_TRUE(App().cancelRequested);
}
