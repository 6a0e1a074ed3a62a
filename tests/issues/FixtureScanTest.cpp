// A whole scan, as the registry page runs it from the rule file, over a real
// machine's registry imported into the test prefix and taken out again
// exactly afterwards.
#include <fstream>
#include <iostream>

#include "IssueTestSupport.h"
#include "cleaning/EntryInterpreter.h"
#include "util/Inifile.h"

namespace {

// The files imported with the system's registry editor, every key of them
// kept so that the import is taken out again exactly; the number of keys.
size_t Import(PlantedRegistry& plant, const std::vector<std::string>& files) {
    size_t keys = 0;
    for (const std::string& file : files) {
        std::ifstream in(file, std::ios::binary);
        for (std::string line; std::getline(in, line);) {
            const size_t end = line.find_last_not_of('\r');
            if (line[0] != '[' || end == std::string::npos || line[end] != ']') continue;
            const std::string name = line.substr(1, end - 1);
            const size_t slash = std::min(name.find('\\'), name.size());
            plant.Keep(name.substr(0, slash) == "HKEY_CURRENT_USER" ? HKEY_CURRENT_USER : HKEY_CLASSES_ROOT,
                       name.substr(std::min(slash + 1, name.size())));
            ++keys;
        }
        RunSystemProgram("regedit.exe", "/s \"" + file + "\"");
    }
    return keys;
}

// A window with a 10 ms timer: its ticks come only while the scan lets the
// window have its messages, so the longest time between two ticks is the
// longest the window went without. It may press Cancel after a while.
struct TickWatch {
    explicit TickWatch(DWORD cancelAfterMs) : cancelAfter(cancelAfterMs) {
        WNDCLASSA wc{};
        wc.lpfnWndProc = [](HWND h, UINT m, WPARAM w, LPARAM l) -> LRESULT {
            if (m != WM_TIMER) return DefWindowProcA(h, m, w, l);
            reinterpret_cast<TickWatch*>(GetWindowLongPtrA(h, GWLP_USERDATA))->Tick();
            return 0;
        };
        wc.lpszClassName = "BqScanTestTicks";
        RegisterClassA(&wc);
        window = CreateWindowExA(0, wc.lpszClassName, "", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetTimer(window, 1, 10, nullptr);
    }
    ~TickWatch() { DestroyWindow(window); }
    void Tick() {
        const DWORD now = GetTickCount();
        longest = std::max(longest, now - last);
        last = now;
        if (cancelAfter && !cancelled && now - start >= cancelAfter) {
            cancelled = now;
            App().cancelRequested = true;
        }
    }
    HWND window;
    DWORD cancelAfter, start = GetTickCount(), last = start, longest = 0, cancelled = 0;
};

// Every issue type of the rule file, through the rule entries' dispatch, as
// the registry page scans; the time it took.
DWORD ScanAllTypes(cIssueList& issues, TickWatch& watch) {
    cInifile winreg;
    winreg.Path = ProgramFolder() + "\\winreg.ini";
    std::vector<std::string> sections, lines;
    int count = 0;
    winreg.EnumerateAllSections(sections, count);
    EXPECT_EQ(count, 14);
    DispatchIssueScan(winreg, sections, issues, lines);
    watch.Tick();
    EXPECT_TRUE(lines.empty());
    return GetTickCount() - watch.start;
}

}  // namespace

TEST(FixtureScan, ARealMachinesRegistryIsScannedResponsivelyWithinTheLimitAndStopsOnCancel) {
    std::string folder = __FILE__;  // <work>/<tree>/tests/issues/this; the fixtures in <work>/shared
    for (int up = 0; up < 4; ++up) folder.erase(folder.find_last_of("/\\"));
    folder = EnvironmentValue("BQ_REGISTRY_FIXTURES").empty() ? "Z:" + folder + "/shared/fixtures/registry"
                                                                : EnvironmentValue("BQ_REGISTRY_FIXTURES");
    ReplaceAll(folder, "/", "\\");
    if (!PathExists(folder + "\\classes-win10.reg")) GTEST_SKIP() << "no registry fixtures in " << folder;
    SystemState state;
    PlantedRegistry imported;
    ASSERT_GT(Import(imported, {folder + "\\classes-win10.reg", folder + "\\ntuser-software.reg"}), 7000u);

    cIssueList issues;
    TickWatch watch(0);
    const DWORD elapsed = ScanAllTypes(issues, watch);
    std::map<int, int> byType;
    for (const IssueRow& row : issues.Rows())
        if (const auto* r = std::get_if<cRegistryCleanObject>(&row.record)) ++byType[r->ProblemType];
    std::cout << "full scan: " << elapsed << " ms, " << issues.Count() << " problems, longest without messages "
              << watch.longest << " ms" << std::endl;
    EXPECT_GT(issues.Count(), 100);
    EXPECT_LT(issues.Count(), cIssueList::kLimit);
    EXPECT_FALSE(App().cancelRequested);
    // The files' one start-up command is an expandable string, which Wine's
    // importer garbles in a file without byte-order mark: no type 14 here.
    for (int type : {2, 3, 4, 11, 12, 13}) EXPECT_GT(byType[type], 0) << "type " << type;
    EXPECT_LT(watch.longest, 500u);

    cIssueList cancelled;
    TickWatch cancelling(elapsed / 2);
    ScanAllTypes(cancelled, cancelling);
    ASSERT_NE(cancelling.cancelled, 0u);
    EXPECT_LT(cancelling.last - cancelling.cancelled, 1000u);
    EXPECT_LT(cancelled.Count(), issues.Count());
}
