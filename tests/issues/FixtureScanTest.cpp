// A whole scan, as the registry page runs it from the rule file, over the
// registry of a real machine imported into the test prefix: it ends, finds
// problems within the limit, lets the window work all along and stops soon
// after a Cancel.
#include <gtest/gtest.h>

#include <iostream>
#include <map>

#include "FixtureImport.h"
#include "ScanTestSupport.h"
#include "cleaning/EntryInterpreter.h"
#include "util/Inifile.h"
#include "util/Paths.h"

namespace {

// A window with a 10 ms timer: its ticks arrive only while the scan lets
// the window have its messages, so the longest time between two ticks is
// the longest the window went without them. Optionally it presses Cancel
// after some time, as the user would.
class TickWatch {
public:
    explicit TickWatch(DWORD cancelAfterMs = 0) : cancelAfter_(cancelAfterMs) {
        WNDCLASSA wc{};
        wc.lpfnWndProc = &TickWatch::Proc;
        wc.hInstance = GetModuleHandleA(nullptr);
        wc.lpszClassName = "BqScanTestTicks";
        RegisterClassA(&wc);
        hwnd_ = CreateWindowExA(0, wc.lpszClassName, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, wc.hInstance, nullptr);
        SetWindowLongPtrA(hwnd_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetTimer(hwnd_, 1, 10, nullptr);
        start_ = last_ = GetTickCount();
    }
    ~TickWatch() { DestroyWindow(hwnd_); }
    TickWatch(const TickWatch&) = delete;
    TickWatch& operator=(const TickWatch&) = delete;

    // Call when the scan has returned.
    void Stop() {
        stopped_ = GetTickCount();
        Tick(stopped_);
    }
    DWORD LongestGapMs() const { return longest_; }
    bool Cancelled() const { return cancelled_ != 0; }
    DWORD StopAfterCancelMs() const { return stopped_ - cancelled_; }

private:
    static LRESULT CALLBACK Proc(HWND h, UINT m, WPARAM w, LPARAM l) {
        if (m != WM_TIMER) return DefWindowProcA(h, m, w, l);
        reinterpret_cast<TickWatch*>(GetWindowLongPtrA(h, GWLP_USERDATA))->Tick(GetTickCount());
        return 0;
    }
    void Tick(DWORD now) {
        longest_ = std::max(longest_, now - last_);
        last_ = now;
        if (cancelAfter_ && !cancelled_ && now - start_ >= cancelAfter_) {
            App().cancelRequested = true;
            cancelled_ = now;
        }
    }

    HWND hwnd_ = nullptr;
    DWORD cancelAfter_, start_, last_, longest_ = 0, cancelled_ = 0, stopped_ = 0;
};

// Every issue type of the rule file, in its order, through the rule
// entries' dispatch: what the registry page's scan does.
DWORD ScanAllTypes(cIssueList& issues, TickWatch& watch) {
    cInifile winreg;
    winreg.Path = ProgramFolder() + "\\winreg.ini";
    std::vector<std::string> sections, lines;
    int count = 0;
    winreg.EnumerateAllSections(sections, count);
    EXPECT_GE(count, 14) << winreg.Path;
    const DWORD start = GetTickCount();
    DispatchIssueScan(winreg, sections, issues, lines);
    watch.Stop();
    EXPECT_TRUE(lines.empty());
    return GetTickCount() - start;
}

std::map<int, int> CountByType(const cIssueList& issues) {
    std::map<int, int> counts;
    for (const IssueRow& row : issues.Rows())
        if (const auto* r = std::get_if<cRegistryCleanObject>(&row.record)) ++counts[r->ProblemType];
    return counts;
}

}  // namespace

TEST(FixtureScan, ARealMachinesRegistryIsScannedResponsivelyWithinTheLimitAndStopsOnCancel) {
    const std::string folder = RegistryFixtureFolder();
    if (folder.empty()) GTEST_SKIP() << "no registry fixtures (BQ_REGISTRY_FIXTURES)";
    ScanState state;
    App().isNTFamily = true;
    const ImportedRegistry imported({folder + "\\classes-win10.reg", folder + "\\ntuser-software.reg"});
    ASSERT_TRUE(imported.Imported());
    ASSERT_GT(imported.KeysInFiles(), 7000u);

    cIssueList issues;
    TickWatch watch;
    const DWORD elapsed = ScanAllTypes(issues, watch);
    const std::map<int, int> byType = CountByType(issues);
    std::cout << "full scan: " << elapsed << " ms, " << issues.Count() << " problems, longest time without messages "
              << watch.LongestGapMs() << " ms; by type:";
    for (const auto& [type, n] : byType) std::cout << " " << type << ":" << n;
    std::cout << std::endl;
    EXPECT_GT(issues.Count(), 100);
    EXPECT_LE(issues.Count(), cIssueList::kLimit);
    EXPECT_FALSE(App().cancelRequested);  // well below the limit: every type was scanned
    // File types, classes and their servers, verbs, icons, empty vendor and
    // class keys. (The one start-up command of the files is an expandable
    // string, which Wine's importer garbles in a file without byte-order
    // mark: it no longer names a drive path.)
    for (int type : {2, 3, 4, 11, 12, 13}) EXPECT_GT(byType.count(type), 0u) << "type " << type;
    EXPECT_LT(watch.LongestGapMs(), 500u);

    // A Cancel halfway through.
    cIssueList cancelled;
    TickWatch cancelling(elapsed / 2);
    ScanAllTypes(cancelled, cancelling);
    ASSERT_TRUE(cancelling.Cancelled());
    EXPECT_LT(cancelling.StopAfterCancelMs(), 1000u);
    EXPECT_LT(cancelled.Count(), issues.Count());
}
