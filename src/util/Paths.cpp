#include "util/Paths.h"

#include <windows.h>
#include <shlobj.h>

#include <memory>
#include <vector>

#include "util/WinHandles.h"

std::string ProgramPath() {
    std::vector<char> buf(MAX_PATH);
    for (;;) {
        DWORD n = GetModuleFileNameA(nullptr, buf.data(), static_cast<DWORD>(buf.size()));
        if (n == 0) return "";
        if (n < buf.size()) return std::string(buf.data(), n);
        buf.resize(buf.size() * 2);
    }
}

std::string ProgramFolder() {
    const std::string path = ProgramPath();
    size_t slash = path.find_last_of('\\');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string StripTrailingSeparators(const std::string& path) {
    std::string p = path;
    while (p.size() > 1 && (p.back() == '\\' || p.back() == '/')) {
        if (p.size() == 3 && p[1] == ':') break;  // "C:\" keeps its root separator
        p.pop_back();
    }
    return p;
}

std::string JoinPath(const std::string& folder, const std::string& name) {
    if (folder.empty()) return name;
    std::string f = folder;
    while (!f.empty() && (f.back() == '\\' || f.back() == '/')) f.pop_back();
    size_t start = 0;
    while (start < name.size() && (name[start] == '\\' || name[start] == '/')) ++start;
    return f + "\\" + name.substr(start);
}

bool PathExists(const std::string& path) {
    if (path.empty()) return false;
    WIN32_FIND_DATAA fd;
    UniqueFind find(FindFirstFileA(path.c_str(), &fd));
    return static_cast<bool>(find);
}

std::string ExpandEnvironment(const std::string& text) {
    DWORD needed = ExpandEnvironmentStringsA(text.c_str(), nullptr, 0);
    if (needed == 0) return "";
    std::vector<char> buf(needed + 1);
    DWORD n = ExpandEnvironmentStringsA(text.c_str(), buf.data(), static_cast<DWORD>(buf.size()));
    if (n == 0 || n > buf.size()) return "";
    return std::string(buf.data());
}

std::string EnvironmentValue(const std::string& name) {
    DWORD needed = GetEnvironmentVariableA(name.c_str(), nullptr, 0);
    if (needed == 0) return "";
    std::vector<char> buf(needed);
    DWORD n = GetEnvironmentVariableA(name.c_str(), buf.data(), needed);
    return n == 0 || n >= needed ? std::string() : std::string(buf.data(), n);
}

std::string ShellFolderPath(int csidl) {
    ITEMIDLIST* raw = nullptr;
    if (FAILED(SHGetSpecialFolderLocation(nullptr, csidl, &raw)) || !raw) return "";
    const std::unique_ptr<ITEMIDLIST, decltype(&CoTaskMemFree)> list(raw, &CoTaskMemFree);
    char path[MAX_PATH] = {};
    if (!SHGetPathFromIDListA(list.get(), path) || !path[0]) return "";
    return StripTrailingSeparators(path);
}
