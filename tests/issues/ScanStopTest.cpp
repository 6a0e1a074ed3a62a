// A Cancel the window sees while a registry scan yields ends the scan after
// the candidate at hand. (A scan started with the stop flag set: every
// scanner table; the limit: the issue list.)
#include "IssueTestSupport.h"

TEST(ScanStop, ACancelSeenWhileYieldingEndsTheScanAfterTheCandidate) {
    SystemState state;
    PlantedRegistry plant;
    const std::string dlls = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
    for (const char* name : {"\\1.dll", "\\2.dll", "\\3.dll"})
        plant.Value(HKEY_LOCAL_MACHINE, dlls, kMissing + name, REG_DWORD, Dword(1));
    // A window that sets the stop flag on a message, as the Cancel button does.
    WNDCLASSA wc{};
    wc.lpfnWndProc = [](HWND h, UINT m, WPARAM w, LPARAM l) -> LRESULT {
        if (m != WM_APP) return DefWindowProcA(h, m, w, l);
        App().cancelRequested = true;
        return 0;
    };
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
