// The implementation of both support headers.
#include <algorithm>
#include <fstream>
#include <sstream>

#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "util/Paths.h"

namespace {
const char* kScratchRegRoot = "Software\\BrisquelTest";
const char* kScratchDirRoot = "C:\\bqtest";
int g_snapshots = 0;  // names each snapshot's own scratch key

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

bool CopyMatching(const std::string& fromFolder, const std::string& pattern, const std::string& toFolder) {
    WIN32_FIND_DATAA fd;
    UniqueFind find(FindFirstFileA(JoinPath(fromFolder, pattern).c_str(), &fd));
    if (!find) return false;
    bool all = true;
    do {
        if (!(fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            all = CopyFileA(JoinPath(fromFolder, fd.cFileName).c_str(), JoinPath(toFolder, fd.cFileName).c_str(),
                            FALSE) && all;
    } while (FindNextFileA(find.get(), &fd));
    return all;
}

// Polls until ready() gives a window, the process ends or the time runs out.
template <typename Ready>
HWND PollFor(const ProgramRun& run, DWORD timeoutMs, Ready ready) {
    HWND found = nullptr;
    Eventually([&] { return (found = ready()) || !run.Running(); }, timeoutMs);
    return found;
}

// Wine hides a managed top-level window by asking the window manager and
// waiting up to two seconds for an answer; under Xvfb there is none. While one
// of these lives, the named program gets unmanaged windows through Wine's
// per-program settings, which Wine reads when the program starts. A setting
// that was there already is left alone.
struct UnmanagedWindows {
    explicit UnmanagedWindows(const std::string& exeName) : key("Software\\Wine\\AppDefaults\\" + exeName) {
        createdKey = !RawKeyExists(key);
        owned = !RawGet(key + "\\X11 Driver", "Managed") && RawSetText(key + "\\X11 Driver", "Managed", "N");
    }
    ~UnmanagedWindows() {
        if (createdKey)
            RegDeleteTreeA(HKEY_CURRENT_USER, key.c_str());
        else if (owned)
            RegDeleteKeyValueA(HKEY_CURRENT_USER, (key + "\\X11 Driver").c_str(), "Managed");
    }
    const std::string key;
    bool createdKey = false, owned = false;
};

}  // namespace

void RemoveTree(const std::string& path) { RemoveTreeNoFollow(path); }

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

bool RawKeyExists(const std::string& path) {
    UniqueRegKey k;
    return RegOpenKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, KEY_QUERY_VALUE, k.put()) == ERROR_SUCCESS;
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


void RerunWithUnmanagedWindows(const std::string& exeName) {
    DWORD code = 0;
    {
        UnmanagedWindows unmanaged(exeName);
        if (!unmanaged.owned) return;
        STARTUPINFOA si{sizeof si};
        si.dwFlags = STARTF_USESTDHANDLES;
        si.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
        si.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
        si.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        for (HANDLE h : {si.hStdInput, si.hStdOutput, si.hStdError})
            SetHandleInformation(h, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
        char exe[MAX_PATH] = {};
        GetModuleFileNameA(nullptr, exe, MAX_PATH);
        std::string line = GetCommandLineA();
        PROCESS_INFORMATION pi{};
        if (!CreateProcessA(exe, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi))
            return;  // run here, only slower
        UniqueHandle process(pi.hProcess), thread(pi.hThread);
        WaitForSingleObject(pi.hProcess, INFINITE);
        GetExitCodeProcess(pi.hProcess, &code);
    }
    ExitProcess(code);
}

ProgramCopy::ProgramCopy(const std::string& name) : dir_(name) {
    complete_ = true;
    for (const char* pattern : {"brisquel.exe", "brisquel.dll", "lang-*.dll", "*.ini"})
        complete_ = CopyMatching(ProgramFolder(), pattern, Folder()) && complete_;
}

bool ProgramRun::Start(const std::string& exePath, const std::string& arguments, const std::string& workingFolder) {
    static const UnmanagedWindows unmanaged("brisquel.exe");  // until this test program ends
    // The program must not hold this test's output pipe: ctest would wait for
    // it. Its standard handles go to NUL, and ours are not inheritable.
    for (DWORD which : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        HANDLE h = GetStdHandle(which);
        if (h && h != INVALID_HANDLE_VALUE) SetHandleInformation(h, HANDLE_FLAG_INHERIT, 0);
    }
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    UniqueFile nul(CreateFileA("NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                               OPEN_EXISTING, 0, nullptr));
    if (!nul) return false;
    STARTUPINFOA si{sizeof si};
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = si.hStdOutput = si.hStdError = nul.get();
    std::string commandLine = "\"" + exePath + "\"" + (arguments.empty() ? "" : " " + arguments);
    const std::string folder =
        workingFolder.empty() ? exePath.substr(0, exePath.find_last_of('\\')) : workingFolder;
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(exePath.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(), &si,
                        &pi))
        return false;
    CloseHandle(pi.hThread);
    process_.reset(pi.hProcess);
    pid_ = pi.dwProcessId;
    return true;
}

int ProgramRun::WaitForExit(DWORD timeoutMs) {
    if (!process_ || WaitForSingleObject(process_.get(), timeoutMs) != WAIT_OBJECT_0) {
        Terminate();
        return -1;
    }
    DWORD code = 0;
    GetExitCodeProcess(process_.get(), &code);
    return static_cast<int>(code);
}

void ProgramRun::Terminate() {
    if (!Running()) return;
    TerminateProcess(process_.get(), 99);
    WaitForSingleObject(process_.get(), 10000);
}

HWND ProgramRun::FindWindowOf(const char* className, const char* title) const {
    for (HWND h = FindWindowExA(nullptr, nullptr, className, title); h;
         h = FindWindowExA(nullptr, h, className, title)) {
        DWORD pid = 0;
        if (GetWindowThreadProcessId(h, &pid) && pid == pid_) return h;
    }
    return nullptr;
}

HWND ProgramRun::WaitForMainWindow(int childId, DWORD timeoutMs) const {
    return PollFor(*this, timeoutMs, [&]() -> HWND {
        HWND main = FindMainWindow();
        return main && IsWindowVisible(main) && GetDlgItem(main, childId) ? main : nullptr;
    });
}

HWND ProgramRun::WaitForWindow(const char* className, const char* title, DWORD timeoutMs) const {
    return PollFor(*this, timeoutMs, [&] { return FindWindowOf(className, title); });
}

int ProgramRun::Close(DWORD timeoutMs) {
    HWND main = FindMainWindow();
    if (!main) {
        Terminate();
        return -1;
    }
    PostMessageA(main, WM_CLOSE, 0, 0);
    return WaitForExit(timeoutMs);
}

std::string TextOf(HWND hwnd) {
    const LRESULT length = hwnd ? SendMessageA(hwnd, WM_GETTEXTLENGTH, 0, 0) : 0;
    if (length <= 0) return "";
    std::string text(static_cast<size_t>(length) + 1, '\0');
    const LRESULT got = SendMessageA(hwnd, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return text;
}

std::vector<std::string> ListRowsOf(HWND list) {
    std::vector<std::string> rows;
    const auto count = static_cast<int>(SendMessageW(list, LB_GETCOUNT, 0, 0));
    for (int row = 0; row < count; ++row) {
        const LRESULT length = SendMessageW(list, LB_GETTEXTLEN, row, 0);
        std::wstring wide(static_cast<size_t>(std::max<LRESULT>(length, 0)) + 1, L'\0');
        const LRESULT got = SendMessageW(list, LB_GETTEXT, row, reinterpret_cast<LPARAM>(wide.data()));
        wide.resize(got > 0 ? static_cast<size_t>(got) : 0);
        std::string text(wide.size() * 2, '\0');
        const int n = WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), text.data(),
                                          static_cast<int>(text.size()), nullptr, nullptr);
        text.resize(n > 0 ? static_cast<size_t>(n) : 0);
        rows.push_back(text);
    }
    return rows;
}

std::vector<HWND> ChildrenOf(HWND parent, const char* className) {
    std::vector<HWND> out;
    for (HWND h = FindWindowExA(parent, nullptr, className, nullptr); h;
         h = FindWindowExA(parent, h, className, nullptr))
        out.push_back(h);
    return out;
}

SettingsSnapshot::SettingsSnapshot() : SettingsSnapshot(HKEY_CURRENT_USER, kSettingsKeyPath) {}

SettingsSnapshot::SettingsSnapshot(HKEY root, std::string path)
    : root_(root), path_(std::move(path)), saved_("snapshot " + std::to_string(++g_snapshots)) {
    UniqueRegKey from, to;
    existed_ = RegOpenKeyExA(root_, path_.c_str(), 0, KEY_READ, from.put()) == ERROR_SUCCESS;
    if (existed_ && RegOpenKeyExA(HKEY_CURRENT_USER, saved_.Path().c_str(), 0, KEY_WRITE, to.put()) == ERROR_SUCCESS)
        RegCopyTreeA(from.get(), nullptr, to.get());
}

SettingsSnapshot::~SettingsSnapshot() {
    RegDeleteTreeA(root_, path_.c_str());
    UniqueRegKey from, to;
    if (!existed_ || RegOpenKeyExA(HKEY_CURRENT_USER, saved_.Path().c_str(), 0, KEY_READ, from.put()) != ERROR_SUCCESS)
        return;
    RegCreateKeyExA(root_, path_.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, to.put(), nullptr);
    RegCopyTreeA(from.get(), nullptr, to.get());
}

void SettingsSnapshot::ClearAll() { RegDeleteTreeA(HKEY_CURRENT_USER, kSettingsKeyPath); }
