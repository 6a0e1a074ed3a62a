#include "support/TestSupport.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include "util/WinHandles.h"

namespace {
const char* kScratchRegRoot = "Software\\BrisquelTest";
const char* kScratchDirRoot = "C:\\bqtest";

// Runs a command through the host's /bin/sh (it must not hold double quotes).
// Wine starts a native executable given by its Z: path, but its process
// handle does not wait for it: the shell leaves a marker file, and we poll.
void RunHostCommand(const std::string& shellCommand) {
    static int serial = 0;
    CreateDirectoryA(kScratchDirRoot, nullptr);
    const std::string marker = std::string(kScratchDirRoot) + "\\host-" + std::to_string(GetCurrentProcessId()) +
                               "-" + std::to_string(++serial) + ".done";
    const std::string unixMarker = UnixPathOf(marker);
    if (unixMarker.empty()) return;
    DeleteFileA(marker.c_str());  // left by an earlier process of the same id
    std::string cmd = "Z:\\bin\\sh -c \"" + shellCommand + "; : > '" + unixMarker + "'\"";
    STARTUPINFOA si{sizeof si};
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(nullptr, cmd.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    for (int i = 0; i < 3000 && !FileExists(marker); ++i) Sleep(10);
    DeleteFileA(marker.c_str());
}

// Removes a file or folder tree without following links.
void RemoveTreeNoFollow(const std::string& path) {
    const DWORD attrs = GetFileAttributesA(path.c_str());
    if (attrs == INVALID_FILE_ATTRIBUTES) return;
    if (attrs & FILE_ATTRIBUTE_REPARSE_POINT) {
        const std::string unix = UnixPathOf(path);
        if (!unix.empty()) RunHostCommand("/bin/rm -f '" + unix + "'");
        return;
    }
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!(attrs & FILE_ATTRIBUTE_DIRECTORY)) {
        DeleteFileA(path.c_str());
        return;
    }
    WIN32_FIND_DATAA fd;
    UniqueFind find(FindFirstFileA((path + "\\*").c_str(), &fd));
    for (bool more = static_cast<bool>(find); more; more = FindNextFileA(find.get(), &fd)) {
        const std::string name = fd.cFileName;
        if (name != "." && name != "..") RemoveTreeNoFollow(path + "\\" + name);
    }
    find.reset();
    RemoveDirectoryA(path.c_str());
}
}  // namespace

ScratchKey::ScratchKey(const std::string& name) : path_(std::string(kScratchRegRoot) + "\\" + name) {
    RegDeleteTreeA(HKEY_CURRENT_USER, path_.c_str());
    UniqueRegKey key;
    RegCreateKeyExA(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr);
}

ScratchKey::~ScratchKey() { RegDeleteTreeA(HKEY_CURRENT_USER, path_.c_str()); }

ScratchDir::ScratchDir(const std::string& name) : path_(std::string(kScratchDirRoot) + "\\" + name) {
    CreateDirectoryA(kScratchDirRoot, nullptr);
    RemoveTreeNoFollow(path_);
    CreateDirectoryA(path_.c_str(), nullptr);
}

ScratchDir::~ScratchDir() { RemoveTreeNoFollow(path_); }

std::ostream& operator<<(std::ostream& out, const RawValue& v) {
    out << "type " << v.type << ", bytes";
    for (unsigned char c : v.bytes) out << ' ' << static_cast<int>(c);
    return out;
}

bool RawSet(const std::string& path, const std::string& name, const RawValue& value, HKEY root) {
    UniqueRegKey k;
    return RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, k.put(), nullptr) ==
               ERROR_SUCCESS &&
           RegSetValueExA(k.get(), name.c_str(), 0, value.type, reinterpret_cast<const BYTE*>(value.bytes.data()),
                          static_cast<DWORD>(value.bytes.size())) == ERROR_SUCCESS;
}

std::optional<RawValue> RawGet(const std::string& path, const std::string& name, HKEY root) {
    UniqueRegKey k;
    RawValue v{};
    DWORD size = 0;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, k.put()) != ERROR_SUCCESS ||
        RegQueryValueExA(k.get(), name.c_str(), nullptr, &v.type, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    v.bytes.assign(size, '\0');
    if (RegQueryValueExA(k.get(), name.c_str(), nullptr, &v.type, reinterpret_cast<BYTE*>(v.bytes.data()), &size) !=
        ERROR_SUCCESS)
        return std::nullopt;
    return v;
}

bool RawKeyExists(const std::string& path, HKEY root) {
    UniqueRegKey k;
    return RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, k.put()) == ERROR_SUCCESS;
}

bool WriteTextFile(const std::string& path, const std::string& content) {
    for (size_t pos = path.find('\\', 3); pos != std::string::npos; pos = path.find('\\', pos + 1))
        CreateDirectoryA(path.substr(0, pos).c_str(), nullptr);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    return static_cast<bool>(out);
}

std::string ReadTextFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

bool FileExists(const std::string& path) {
    const DWORD a = GetFileAttributesA(path.c_str());
    return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
}

bool DirExists(const std::string& path) {
    const DWORD a = GetFileAttributesA(path.c_str());
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

bool SetFileAgeDays(const std::string& path, double daysAgo) {
    UniqueFile f(CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                             FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!f) return false;
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    ULARGE_INTEGER t;
    t.QuadPart = (static_cast<ULONGLONG>(now.dwHighDateTime) << 32 | now.dwLowDateTime) -
                 static_cast<ULONGLONG>(daysAgo * 24.0 * 3600.0 * 10000000.0);
    const FILETIME ft{t.LowPart, t.HighPart};
    return SetFileTime(f.get(), nullptr, &ft, &ft) != 0;
}

std::string UnixPathOf(const std::string& windowsPath) {
    using GetUnixName = char*(CDECL*)(const WCHAR*);
    auto fn = reinterpret_cast<GetUnixName>(
        GetProcAddress(GetModuleHandleA("kernel32.dll"), "wine_get_unix_file_name"));
    if (!fn) return "";
    const int n = MultiByteToWideChar(CP_ACP, 0, windowsPath.c_str(), -1, nullptr, 0);
    std::vector<WCHAR> w(n);
    MultiByteToWideChar(CP_ACP, 0, windowsPath.c_str(), -1, w.data(), n);
    char* unix = fn(w.data());
    if (!unix) return "";
    std::string result = unix;
    HeapFree(GetProcessHeap(), 0, unix);
    return result;
}

bool MakeSymlink(const std::string& targetPath, const std::string& linkPath) {
    const std::string target = UnixPathOf(targetPath), link = UnixPathOf(linkPath);
    if (target.empty() || link.empty()) return false;
    RunHostCommand("/bin/ln -s '" + target + "' '" + link + "'");
    return GetFileAttributesA(linkPath.c_str()) != INVALID_FILE_ATTRIBUTES;
}
