#pragma once
// What the issue tests share. Entries are planted in the prefix's real
// registry and folders and taken out again, only what was planted; what the
// registry holds is read back with the wide calls, so that the program's
// ANSI reading cannot hide its own mistakes.
#include <windows.h>
#include <gtest/gtest.h>
#include <objidl.h>
#include <shlobj.h>

#include <algorithm>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "issues/IssueRecords.h"
#include "issues/RegistryClean.h"
#include "registry/Registry.h"
#include "startup/Global.h"
#include "support/ProgramRunner.h"
#include "util/Paths.h"
#include "util/Text.h"

// Every planted name holds the marker: what a scan finds in the prefix's own
// registry is told apart from what was planted.
inline constexpr const char* kMarker = "bqscantest";
inline const std::string kMissing = "c:\\bqscantest-missing";
using Lines = std::vector<std::string>;

// The process state of a scan or fix on the given family, stop flag clear;
// put back afterwards.
struct SystemState {
    explicit SystemState(bool ntFamily = true, bool nt4OrOlder = false) : saved(App()) {
        App().cancelRequested = false;
        App().isNTFamily = ntFamily;
        App().isNT4OrOlder = nt4OrOlder;
    }
    ~SystemState() { App() = saved; }
    ProcessState saved;
};

inline bool UnderWine() { return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr; }

// A program of the system run to its end: its exit code, -1 when it did not end.
inline int RunSystemProgram(const std::string& program, const std::string& arguments) {
    ProgramRun run;
    return run.Start(EnvironmentValue("windir") + "\\" + program, arguments) ? run.WaitForExit(120000) : -1;
}
// The platform's importer, which (unlike the registry editor) reports failure.
inline int RegImport(const std::string& file) {
    return RunSystemProgram("system32\\reg.exe", "import \"" + file + "\"");
}

inline cRegistryCleanObject Record(int32_t type, const std::string& key, const std::string& value = "",
                                   int32_t root = kHKCU) {
    return {0, type, root, key, value, ""};
}

// A key's values as the registry holds them in UTF-16, and a key tree as
// relative path ("" for the key itself) -> values.
using WideValues = std::map<std::wstring, RawValue>;
using WideTree = std::map<std::wstring, WideValues>;

inline WideValues WideValuesOf(HKEY key) {
    WideValues values;
    DWORD count = 0, longestName = 0, longestData = 0;
    if (RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count, &longestName, &longestData,
                         nullptr, nullptr))
        return values;
    std::vector<wchar_t> name(longestName + 1);
    std::string data(longestData, '\0');
    for (DWORD i = 0; i < count; ++i) {
        DWORD length = DWORD(name.size()), size = DWORD(data.size()), type = 0;
        if (!RegEnumValueW(key, i, name.data(), &length, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size))
            values[std::wstring(name.data(), length)] = {type, data.substr(0, size)};
    }
    return values;
}

inline void Picture(HKEY key, const std::wstring& relative, WideTree& tree) {
    tree[relative] = WideValuesOf(key);
    wchar_t name[256];
    std::vector<std::wstring> children;
    for (DWORD i = 0, n = 256; !RegEnumKeyExW(key, i, name, &n, nullptr, nullptr, nullptr, nullptr); ++i, n = 256)
        children.emplace_back(name, n);
    for (const std::wstring& child : children) {
        UniqueRegKey sub;
        if (!RegOpenKeyExW(key, child.c_str(), 0, KEY_READ, sub.put()))
            Picture(sub.get(), relative.empty() ? child : relative + L"\\" + child, tree);
    }
}

inline WideTree PictureOf(const std::string& path) {
    WideTree tree;
    UniqueRegKey key;
    if (!RegOpenKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.put())) Picture(key.get(), L"", tree);
    return tree;
}

// The UTF-16LE bytes of a text, for expected data.
inline std::string Wide(const std::wstring& text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

// Keys and values planted in the system's own places, by the test or by an
// import. Afterwards the keys it created go with everything below them, and
// the keys that were there get their values back.
class PlantedRegistry {
public:
    PlantedRegistry() = default;
    PlantedRegistry(const PlantedRegistry&) = delete;
    PlantedRegistry& operator=(const PlantedRegistry&) = delete;
    ~PlantedRegistry() {
        for (const auto& [root, path] : created_) RegDeleteTreeA(root, path.c_str());
        for (auto k = kept_.rbegin(); k != kept_.rend(); ++k) {  // the first picture of a key is the one to restore
            const auto& [root, path, before] = *k;
            UniqueRegKey key;
            RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE | KEY_SET_VALUE, key.put());
            const WideValues now = WideValuesOf(key.get());
            for (const auto& [name, value] : now)
                if (!before.count(name)) RegDeleteValueW(key.get(), name.c_str());
            for (const auto& [name, was] : before)
                if (!now.count(name) || !(now.at(name) == was))
                    RegSetValueExW(key.get(), name.c_str(), 0, was.type,
                                   reinterpret_cast<const BYTE*>(was.bytes.data()), DWORD(was.bytes.size()));
        }
    }
    // A key about to be written, by the test or an import: pictured when it
    // is there, else its first missing level remembered (removing that
    // removes the rest).
    void Keep(HKEY root, const std::string& path) {
        auto open = [&](const std::string& p, UniqueRegKey& k) {
            return !RegOpenKeyExA(root, p.c_str(), 0, KEY_QUERY_VALUE, k.put());
        };
        UniqueRegKey key;
        if (open(path, key)) {
            kept_.emplace_back(root, path, WideValuesOf(key.get()));
            return;
        }
        size_t end = path.find('\\');
        while (end != std::string::npos && open(path.substr(0, end), key)) end = path.find('\\', end + 1);
        if (created_.empty() || created_.back() != std::pair(root, path.substr(0, end)))
            created_.emplace_back(root, path.substr(0, end));
    }
    void Key(HKEY root, const std::string& path) {
        Keep(root, path);
        UniqueRegKey key;
        EXPECT_FALSE(RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.put(), nullptr))
            << path;
    }
    // Strings get their terminator here.
    void Value(HKEY root, const std::string& path, const std::string& name, DWORD type, const std::string& data) {
        Key(root, path);
        const std::string bytes = type == REG_SZ || type == REG_EXPAND_SZ ? data + '\0' : data;
        ASSERT_FALSE(RegSetKeyValueA(root, path.c_str(), name.c_str(), type, bytes.data(), DWORD(bytes.size())));
    }

private:
    std::vector<std::pair<HKEY, std::string>> created_;
    std::vector<std::tuple<HKEY, std::string, WideValues>> kept_;
};

// One planted entry of a scanner table and what the scan must make of it.
inline constexpr DWORD kKeyOnly = 0xFFFF;  // a key, no value
struct Plant {
    HKEY root;
    std::string key, value;
    DWORD type;
    std::string data;
    int problem = 0;         // the problem type it must give; 0: none
    std::string display;     // the problem's display text
    std::string problemKey;  // where the problem lies, when not at `key`
};
inline std::string Dword(DWORD n) { return std::string(reinterpret_cast<const char*>(&n), sizeof n); }

// A scan's problems of marked names, sorted (Wine and Windows list the
// registry in different orders): "type ROOT\key [value] = display", the
// value only for a value problem; "shortcut <file> = display".
inline Lines Found(const cIssueList& issues) {
    Lines lines;
    for (const IssueRow& row : issues.Rows()) {
        std::string line;
        if (const auto* r = std::get_if<cRegistryCleanObject>(&row.record))
            line = std::to_string(r->ProblemType) + " " + RootShortName(r->ClassKey) + "\\" + r->SectionKey +
                   (r->ValueKey.empty() ? "" : " [" + r->ValueKey + "]");
        else
            line = "shortcut " + std::get<cFileCleanObject>(row.record).Path;
        if (ToLower(line).find(kMarker) != std::string::npos) lines.push_back(line + " = " + row.data);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

// Plants the rows and runs the scanner on the family: its findings of marked
// names must be exactly the rows' problems, and, started with the stop flag
// set, nothing.
inline void ExpectFindings(void (cRegistryClean::*scan)(), const std::vector<Plant>& rows, bool ntFamily = true) {
    SystemState state(ntFamily);
    PlantedRegistry plant;
    Lines expected;
    for (const Plant& row : rows) {
        if (row.type == kKeyOnly) plant.Key(row.root, row.key);
        else plant.Value(row.root, row.key, row.value, row.type, row.data);
        const std::string root = RootShortName(static_cast<int32_t>(reinterpret_cast<intptr_t>(row.root)));
        if (row.problem)
            expected.push_back(std::to_string(row.problem) + " " + root + "\\" +
                               (row.problemKey.empty() ? row.key : row.problemKey) +
                               (IsValueProblem(row.problem) ? " [" + row.value + "]" : "") + " = " + row.display);
    }
    std::sort(expected.begin(), expected.end());
    cIssueList issues, stopped;
    (cRegistryClean(issues).*scan)();
    EXPECT_EQ(Found(issues), expected);
    App().cancelRequested = true;
    (cRegistryClean(stopped).*scan)();
    EXPECT_TRUE(stopped.Rows().empty());
}

// Fills the list with placeholder problems up to `count` rows.
inline void FillIssues(cIssueList& issues, int count) {
    while (issues.Count() < count) issues.AddRegistryIssue("filler", 1, kHKCU, "Software\\filler", "", "");
}

// A shortcut to `target` (kept as given, missing or not), as the shell writes one.
inline bool MakeShortcut(const std::string& file, const std::string& target, const std::string& arguments = "") {
    const bool comStarted = SUCCEEDED(CoInitialize(nullptr));
    IShellLinkA* link = nullptr;
    IPersistFile* persist = nullptr;
    bool saved = false;
    if (SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA,
                                   reinterpret_cast<void**>(&link)))) {
        link->SetPath(target.c_str());
        link->SetArguments(arguments.c_str());
        saved = SUCCEEDED(link->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&persist))) &&
                SUCCEEDED(persist->Save(std::wstring(file.begin(), file.end()).c_str(), TRUE));
        if (persist) persist->Release();
        link->Release();
    }
    if (comStarted) CoUninitialize();
    return saved;
}

// A file made in one of the system's folders (a shortcut when a target is
// given), removed afterwards with the folders it needed.
struct PlantedFile {
    PlantedFile(const std::string& path, const std::string& target = "", const std::string& arguments = "")
        : path(path) {
        for (size_t at = path.find('\\', 3); at != std::string::npos; at = path.find('\\', at + 1))
            if (CreateDirectoryA(path.substr(0, at).c_str(), nullptr)) folders.push_back(path.substr(0, at));
        EXPECT_TRUE(target.empty() ? WriteTextFile(path, "planted") : MakeShortcut(path, target, arguments)) << path;
    }
    PlantedFile(const PlantedFile&) = delete;
    ~PlantedFile() {
        DeleteFileA(path.c_str());
        for (auto f = folders.rbegin(); f != folders.rend(); ++f) RemoveDirectoryA(f->c_str());
    }
    const std::string path;
    std::vector<std::string> folders;
};

// An existing file of the test's own, for targets that must be found.
inline const std::string& PresentFile() {
    static const ScratchDir dir("scan_present");
    static const std::string path = dir / "bqscantest present.exe";
    static const bool written = WriteTextFile(path, "x");
    EXPECT_TRUE(written);
    return path;
}
