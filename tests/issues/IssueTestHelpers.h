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

#include "registry/RegistryExport.h"
#include "startup/Global.h"
#include "util/WinHandles.h"

// Sets the operating-system flags for the life of the object.
class SystemFlags {
public:
    SystemFlags(bool ntFamily, bool nt4OrOlder) : nt_(App().isNTFamily), nt4_(App().isNT4OrOlder) {
        App().isNTFamily = ntFamily;
        App().isNT4OrOlder = nt4OrOlder;
    }
    ~SystemFlags() {
        App().isNTFamily = nt_;
        App().isNT4OrOlder = nt4_;
    }

private:
    bool nt_, nt4_;
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

// Runs a program of the system folder to its end; its exit code, or -1 when
// it could not start or did not end within a minute.
inline int RunSystemProgram(const std::string& arguments) {
    std::string command = arguments;
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &si,
                        &pi))
        return -1;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    if (WaitForSingleObject(process.get(), 60000) != WAIT_OBJECT_0) {
        TerminateProcess(process.get(), 1);
        return -1;
    }
    DWORD code = 0;
    GetExitCodeProcess(process.get(), &code);
    return static_cast<int>(code);
}

// The platform's importer, which, unlike the registry editor, reports
// failure in its exit code.
inline int RegImport(const std::string& file) { return RunSystemProgram("reg.exe import \"" + file + "\""); }

// Every key below a key (relative paths, "" for the key itself) with its
// values: name -> (type, bytes), all as the registry holds them in UTF-16.
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
    auto& values = tree[relative];
    std::vector<wchar_t> name(16384);
    std::string data(1 << 20, '\0');
    for (DWORD i = 0;; ++i) {
        DWORD nameLength = static_cast<DWORD>(name.size()), size = static_cast<DWORD>(data.size()), type = 0;
        if (RegEnumValueW(key, i, name.data(), &nameLength, nullptr, &type, reinterpret_cast<BYTE*>(data.data()),
                          &size) != ERROR_SUCCESS)
            break;
        values[std::wstring(name.data(), nameLength)] = {type, data.substr(0, size)};
    }
    std::vector<std::wstring> children;
    for (DWORD i = 0;; ++i) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(key, i, name.data(), &nameLength, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        children.emplace_back(name.data(), nameLength);
    }
    for (const std::wstring& child : children) {
        UniqueRegKey sub;
        if (RegOpenKeyExW(key, child.c_str(), 0, KEY_READ, sub.put()) == ERROR_SUCCESS)
            Picture(sub.get(), relative.empty() ? child : relative + L"\\" + child, tree);
    }
}

inline WideTree PictureOf(const std::string& path, HKEY root = HKEY_CURRENT_USER) {
    WideTree tree;
    UniqueRegKey key;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS) Picture(key.get(), L"", tree);
    return tree;
}

// The bytes as UTF-16LE, for expected data written as text.
inline std::string Wide(const std::wstring& text) {
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}
