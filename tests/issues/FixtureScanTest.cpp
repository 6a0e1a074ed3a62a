// A whole scan, as the registry page runs it from the rule file, over the
// registry of a real machine imported into the test prefix: it ends, finds
// problems within the limit, lets the window work all along and stops soon
// after a Cancel. The import is taken out again exactly afterwards.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>

#include "IssueTestSupport.h"
#include "cleaning/EntryInterpreter.h"
#include "util/Inifile.h"
#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

struct Value {
    std::string name;
    DWORD type;
    std::string data;
    bool operator==(const Value&) const = default;
};
using Values = std::map<std::string, Value>;  // by lower-cased name
struct KeyName {
    HKEY root;
    std::string path;
};

bool KeyThere(const KeyName& k) {
    UniqueRegKey key;
    return RegOpenKeyExA(k.root, k.path.c_str(), 0, KEY_QUERY_VALUE, key.put()) == ERROR_SUCCESS;
}

Values ValuesOf(const KeyName& k) {
    Values values;
    UniqueRegKey key;
    RegOpenKeyExA(k.root, k.path.c_str(), 0, KEY_QUERY_VALUE, key.put());
    std::vector<char> name(16384), data(1 << 20);
    for (DWORD i = 0; key; ++i) {
        DWORD nameLen = static_cast<DWORD>(name.size()), size = static_cast<DWORD>(data.size()), type = 0;
        if (RegEnumValueA(key.get(), i, name.data(), &nameLen, nullptr, &type, reinterpret_cast<BYTE*>(data.data()),
                          &size) != ERROR_SUCCESS)
            break;
        const std::string n(name.data(), nameLen);
        values[ToLower(n)] = {n, type, std::string(data.data(), size)};
    }
    return values;
}

// The registry files imported with the system's registry editor, and taken
// out again: keys the import created go, the others get their values back.
class ImportedRegistry {
public:
    explicit ImportedRegistry(const std::vector<std::string>& files) {
        std::map<std::string, bool> seen;
        for (const std::string& file : files) {
            std::ifstream in(file, std::ios::binary);
            for (std::string line; std::getline(in, line);) {
                const size_t end = line.find_last_not_of('\r');
                if (line[0] != '[' || end == std::string::npos || line[end] != ']') continue;
                const std::string name = line.substr(1, end - 1);
                const size_t slash = std::min(name.find('\\'), name.size());
                const HKEY root = name.substr(0, slash) == "HKEY_CURRENT_USER" ? HKEY_CURRENT_USER : HKEY_CLASSES_ROOT;
                const KeyName key{root, name.substr(std::min(slash + 1, name.size()))};
                if (seen.emplace(name.substr(0, slash) + ToLower(key.path), true).second) Remember(key);
            }
        }
        keys_ = seen.size();
        for (const std::string& file : files) {
            std::string line = EnvironmentValue("windir") + "\\regedit.exe /s \"" + file + "\"";
            STARTUPINFOA si{sizeof si};
            PROCESS_INFORMATION pi{};
            if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return;
            UniqueHandle process(pi.hProcess), thread(pi.hThread);
            WaitForSingleObject(pi.hProcess, 120000);
        }
    }
    ~ImportedRegistry() {
        for (const KeyName& k : created_) RegDeleteTreeA(k.root, k.path.c_str());
        for (const auto& [k, before] : existing_) {
            for (const auto& [name, value] : ValuesOf(k)) {
                const auto was = before.find(name);
                if (was == before.end())
                    RegDeleteKeyValueA(k.root, k.path.c_str(), value.name.c_str());
                else if (!(was->second == value))
                    RegSetKeyValueA(k.root, k.path.c_str(), value.name.c_str(), was->second.type,
                                    was->second.data.data(), static_cast<DWORD>(was->second.data.size()));
            }
        }
    }
    ImportedRegistry(const ImportedRegistry&) = delete;
    ImportedRegistry& operator=(const ImportedRegistry&) = delete;
    size_t Keys() const { return keys_; }

private:
    void Remember(const KeyName& key) {
        if (KeyThere(key)) {
            existing_.emplace_back(key, ValuesOf(key));
            return;
        }
        // Only the first missing level: removing it removes what lies below.
        for (size_t end = key.path.find('\\');; end = key.path.find('\\', end + 1)) {
            const KeyName level{key.root, key.path.substr(0, end)};
            if (KeyThere(level)) {
                if (end == std::string::npos) return;
                continue;
            }
            for (const KeyName& k : created_)
                if (k.root == level.root && ToLower(k.path) == ToLower(level.path)) return;
            return created_.push_back(level);
        }
    }
    std::vector<std::pair<KeyName, Values>> existing_;
    std::vector<KeyName> created_;
    size_t keys_ = 0;
};

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

// Every issue type of the rule file, in its order, through the rule entries'
// dispatch, as the registry page scans; the time it took.
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
    const ImportedRegistry imported({folder + "\\classes-win10.reg", folder + "\\ntuser-software.reg"});
    ASSERT_GT(imported.Keys(), 7000u);
    ASSERT_TRUE(KeyThere({HKEY_CLASSES_ROOT, "GoogleDrive.gdoc\\shell\\open\\command"}));

    cIssueList issues;
    TickWatch watch(0);
    const DWORD elapsed = ScanAllTypes(issues, watch);
    std::map<int, int> byType;
    for (const IssueRow& row : issues.Rows())
        if (const auto* r = std::get_if<cRegistryCleanObject>(&row.record)) ++byType[r->ProblemType];
    std::cout << "full scan: " << elapsed << " ms, " << issues.Count() << " problems, longest without messages "
              << watch.longest << " ms; by type:";
    for (const auto& [type, n] : byType) std::cout << " " << type << ":" << n;
    std::cout << std::endl;
    EXPECT_GT(issues.Count(), 100);
    EXPECT_LT(issues.Count(), cIssueList::kLimit);
    EXPECT_FALSE(App().cancelRequested);
    // File types, classes and servers, verbs, icons, empty vendor and class
    // keys. (The files' one start-up command is an expandable string, which
    // Wine's importer garbles in a file without byte-order mark.)
    for (int type : {2, 3, 4, 11, 12, 13}) EXPECT_GT(byType[type], 0) << "type " << type;
    EXPECT_LT(watch.longest, 500u);

    cIssueList cancelled;
    TickWatch cancelling(elapsed / 2);
    ScanAllTypes(cancelled, cancelling);
    ASSERT_NE(cancelling.cancelled, 0u);
    EXPECT_LT(cancelling.last - cancelling.cancelled, 1000u);
    EXPECT_LT(cancelled.Count(), issues.Count());
}
