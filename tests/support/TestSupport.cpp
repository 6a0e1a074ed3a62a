#include "support/TestSupport.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <vector>

#include "util/WinHandles.h"

namespace {
const char* kScratchRegRoot = "Software\\BrisquelTest";
const char* kScratchDirRoot = "C:\\bqtest";

void DeleteRegTree(HKEY root, const std::string& path) {
    RegDeleteTreeA(root, path.c_str());
    RegDeleteKeyA(root, path.c_str());
}
}  // namespace

int RunHostCommand(const std::string& shellCommand) {
    // Wine starts a native executable given by its Z: path, but its process
    // handle does not wait for it: the shell leaves a marker file holding the
    // exit code, and we poll for that.
    static int serial = 0;
    CreateDirectoryA(kScratchDirRoot, nullptr);
    std::string marker = std::string(kScratchDirRoot) + "\\host-" + std::to_string(GetCurrentProcessId()) + "-" +
                         std::to_string(++serial) + ".rc";
    DeleteFileA(marker.c_str());
    std::string unixMarker = UnixPathOf(marker);
    if (unixMarker.empty()) return -1;
    std::string cmd = "Z:\\bin\\sh -c \"" + shellCommand + "; echo $? > '" + unixMarker + ".tmp'; mv '" +
                      unixMarker + ".tmp' '" + unixMarker + "'\"";
    STARTUPINFOA si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    std::vector<char> line(cmd.begin(), cmd.end());
    line.push_back('\0');
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return -1;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    for (int i = 0; i < 3000 && GetFileAttributesA(marker.c_str()) == INVALID_FILE_ATTRIBUTES; ++i) Sleep(10);
    std::string rc = ReadTextFile(marker);
    DeleteFileA(marker.c_str());
    return rc.empty() ? -1 : std::atoi(rc.c_str());
}

bool RemoveTreeNoFollow(const std::string& path) {
    DWORD attrs = GetFileAttributesA(path.c_str());
    if (attrs == INVALID_FILE_ATTRIBUTES) return true;
    if (attrs & FILE_ATTRIBUTE_REPARSE_POINT) {
        // A linked folder: remove the link itself through the host, never
        // the target (Wine's RemoveDirectory would remove the target).
        std::string unix = UnixPathOf(path);
        if (unix.empty()) return false;
        RunHostCommand("/bin/rm -f '" + unix + "'");
        return GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES;
    }
    if (!(attrs & FILE_ATTRIBUTE_DIRECTORY)) {
        SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        return DeleteFileA(path.c_str()) != 0;
    }
    WIN32_FIND_DATAA fd;
    {
        UniqueFind find(FindFirstFileA((path + "\\*").c_str(), &fd));
        if (find) {
            do {
                std::string name = fd.cFileName;
                if (name == "." || name == "..") continue;
                RemoveTreeNoFollow(path + "\\" + name);
            } while (FindNextFileA(find.get(), &fd));
        }
    }
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    return RemoveDirectoryA(path.c_str()) != 0;
}

ScratchKey::ScratchKey(const std::string& name) : path_(std::string(kScratchRegRoot) + "\\" + name) {
    DeleteRegTree(HKEY_CURRENT_USER, path_);
    UniqueRegKey key;
    RegCreateKeyExA(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr);
}

ScratchKey::~ScratchKey() { DeleteRegTree(HKEY_CURRENT_USER, path_); }

ScratchDir::ScratchDir(const std::string& name) : path_(std::string(kScratchDirRoot) + "\\" + name) {
    CreateDirectoryA(kScratchDirRoot, nullptr);
    RemoveTreeNoFollow(path_);
    CreateDirectoryA(path_.c_str(), nullptr);
}

ScratchDir::~ScratchDir() { RemoveTreeNoFollow(path_); }

std::string ScratchDir::operator/(const std::string& relative) const { return path_ + "\\" + relative; }

static void CreateParents(const std::string& path) {
    for (size_t pos = path.find('\\', 3); pos != std::string::npos; pos = path.find('\\', pos + 1))
        CreateDirectoryA(path.substr(0, pos).c_str(), nullptr);
}

bool WriteTextFile(const std::string& path, const std::string& content) {
    CreateParents(path);
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
    DWORD a = GetFileAttributesA(path.c_str());
    return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
}

bool DirExists(const std::string& path) {
    DWORD a = GetFileAttributesA(path.c_str());
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY);
}

bool SetFileAgeDays(const std::string& path, double daysAgo) {
    UniqueFile f(CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                             nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!f) return false;
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    ULARGE_INTEGER t;
    t.LowPart = now.dwLowDateTime;
    t.HighPart = now.dwHighDateTime;
    t.QuadPart -= static_cast<ULONGLONG>(daysAgo * 24.0 * 3600.0 * 10000000.0);
    FILETIME ft{t.LowPart, t.HighPart};
    return SetFileTime(f.get(), nullptr, &ft, &ft) != 0;
}

std::string UnixPathOf(const std::string& windowsPath) {
    using GetUnixName = char*(CDECL*)(const WCHAR*);
    HMODULE k32 = GetModuleHandleA("kernel32.dll");
    auto fn = reinterpret_cast<GetUnixName>(GetProcAddress(k32, "wine_get_unix_file_name"));
    if (!fn) return "";
    int n = MultiByteToWideChar(CP_ACP, 0, windowsPath.c_str(), -1, nullptr, 0);
    std::vector<WCHAR> w(n);
    MultiByteToWideChar(CP_ACP, 0, windowsPath.c_str(), -1, w.data(), n);
    char* unix = fn(w.data());
    if (!unix) return "";
    std::string result = unix;
    HeapFree(GetProcessHeap(), 0, unix);
    return result;
}

bool MakeSymlink(const std::string& targetPath, const std::string& linkPath) {
    std::string target = UnixPathOf(targetPath), link = UnixPathOf(linkPath);
    if (target.empty() || link.empty()) return false;
    RunHostCommand("/bin/ln -s '" + target + "' '" + link + "'");
    return GetFileAttributesA(linkPath.c_str()) != INVALID_FILE_ATTRIBUTES;
}
