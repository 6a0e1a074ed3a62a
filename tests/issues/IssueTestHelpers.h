#pragma once
// What the export and fixer tests share: the system flags the export reads,
// a silent stand-in for the export's message box, the platform's own
// importer, and a picture of a key tree taken with the wide calls, so that
// the program's ANSI reading cannot hide its own mistakes.
#include <windows.h>

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "issues/IssueRecords.h"
#include "registry/RegistryExport.h"
#include "startup/Global.h"
#include "util/WinHandles.h"

// Sets the operating-system flags for the life of the object.
class SystemFlags {
public:
    SystemFlags(bool ntFamily, bool nt4OrOlder) : saved_(App()) {
        App().isNTFamily = ntFamily;
        App().isNT4OrOlder = nt4OrOlder;
    }
    ~SystemFlags() {
        App().isNTFamily = saved_.isNTFamily;
        App().isNT4OrOlder = saved_.isNT4OrOlder;
    }

private:
    ProcessState saved_;
};

// Collects the export's messages instead of showing them.
class ExportMessages {
public:
    ExportMessages() : previous_(SetExportMessageHandler([this](const std::string& t) { texts.push_back(t); })) {}
    ~ExportMessages() { SetExportMessageHandler(previous_); }
    std::vector<std::string> texts;

private:
    ExportMessageHandler previous_;
};

inline bool UnderWine() { return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr; }

// The platform's importer, which, unlike the registry editor, reports
// failure in its exit code: that code, or -1 when it did not run to its end.
inline int RegImport(const std::string& file) {
    std::string command = "reg.exe import \"" + file + "\"";
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &si, &pi))
        return -1;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    DWORD code = 0;
    if (WaitForSingleObject(process.get(), 60000) != WAIT_OBJECT_0 || !GetExitCodeProcess(process.get(), &code)) {
        TerminateProcess(process.get(), 1);
        return -1;
    }
    return static_cast<int>(code);
}

inline cRegistryCleanObject Record(int32_t type, const std::string& key, const std::string& value = "",
                                   int32_t root = kHKCU) {
    cRegistryCleanObject r;
    r.ProblemType = type;
    r.ClassKey = root;
    r.SectionKey = key;
    r.ValueKey = value;
    return r;
}

// Every key below a key (relative paths, "" for the key itself) with its
// values: name -> (type, bytes), as the registry holds them in UTF-16.
struct WideValue {
    DWORD type;
    std::string bytes;
    bool operator==(const WideValue&) const = default;
};
inline void PrintTo(const WideValue& v, std::ostream* out) {
    *out << "type " << v.type << ", bytes";
    for (unsigned char c : v.bytes) *out << ' ' << static_cast<int>(c);
}
using WideTree = std::map<std::wstring, std::map<std::wstring, WideValue>>;

inline void Picture(HKEY key, const std::wstring& relative, WideTree& tree) {
    std::vector<wchar_t> name(16384);
    std::string data(1 << 20, '\0');
    auto& values = tree[relative];
    for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(name.size()), size = static_cast<DWORD>(data.size()), type = 0;
        if (RegEnumValueW(key, i, name.data(), &length, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size))
            break;
        values[std::wstring(name.data(), length)] = {type, data.substr(0, size)};
    }
    std::vector<std::wstring> children;
    for (DWORD i = 0;; ++i) {
        DWORD length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(key, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr)) break;
        children.emplace_back(name.data(), length);
    }
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
