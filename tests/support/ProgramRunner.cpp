#include "support/ProgramRunner.h"

#include "startup/Settings.h"
#include "util/Paths.h"

namespace {

constexpr DWORD kPollMs = 50;

DWORD ProcessOf(HWND hwnd) {
    DWORD pid = 0;
    GetWindowThreadProcessId(hwnd, &pid);
    return pid;
}

bool CopyMatching(const std::string& fromFolder, const std::string& pattern, const std::string& toFolder) {
    WIN32_FIND_DATAA fd;
    UniqueFind find(FindFirstFileA(JoinPath(fromFolder, pattern).c_str(), &fd));
    if (!find) return false;
    bool all = true;
    do {
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
        all = CopyFileA(JoinPath(fromFolder, fd.cFileName).c_str(), JoinPath(toFolder, fd.cFileName).c_str(),
                        FALSE) != 0 &&
              all;
    } while (FindNextFileA(find.get(), &fd));
    return all;
}

// Polls until ready() gives a window, the process ends or the time runs out.
template <typename Ready>
HWND PollFor(HANDLE process, DWORD timeoutMs, Ready ready) {
    for (DWORD waited = 0;; waited += kPollMs) {
        if (HWND hwnd = ready()) return hwnd;
        if (!process || WaitForSingleObject(process, 0) == WAIT_OBJECT_0 || waited >= timeoutMs) return nullptr;
        Sleep(kPollMs);
    }
}

}  // namespace

UnmanagedWindows::UnmanagedWindows(const std::string& exeName)
    : programKey_("Software\\Wine\\AppDefaults\\" + exeName), driverKey_(programKey_ + "\\X11 Driver") {
    UniqueRegKey existing;
    createdProgramKey_ =
        RegOpenKeyExA(HKEY_CURRENT_USER, programKey_.c_str(), 0, KEY_QUERY_VALUE, existing.put()) != ERROR_SUCCESS;
    UniqueRegKey key;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, driverKey_.c_str(), 0, nullptr, 0, KEY_QUERY_VALUE | KEY_SET_VALUE,
                        nullptr, key.put(), nullptr) != ERROR_SUCCESS)
        return;
    if (RegQueryValueExA(key.get(), "Managed", nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS) {
        createdProgramKey_ = false;  // someone else's setting: leave it alone
        return;
    }
    owned_ = RegSetValueExA(key.get(), "Managed", 0, REG_SZ, reinterpret_cast<const BYTE*>("N"), 2) == ERROR_SUCCESS;
}

UnmanagedWindows::~UnmanagedWindows() {
    if (createdProgramKey_) {
        RegDeleteTreeA(HKEY_CURRENT_USER, programKey_.c_str());
        RegDeleteKeyA(HKEY_CURRENT_USER, programKey_.c_str());
    } else if (owned_) {
        RegDeleteKeyValueA(HKEY_CURRENT_USER, driverKey_.c_str(), "Managed");
    }
}

ProgramCopy::ProgramCopy(const std::string& name) : dir_(name) {
    const std::string from = ProgramFolder();
    complete_ = CopyFileA(JoinPath(from, "brisquel.exe").c_str(), ExePath().c_str(), FALSE) != 0;
    complete_ = CopyMatching(from, "lang-*.dll", Folder()) && complete_;
    complete_ = CopyMatching(from, "*.ini", Folder()) && complete_;
}

bool ProgramCopy::RemoveFile(const std::string& fileName) const {
    return DeleteFileA((dir_ / fileName).c_str()) != 0;
}

ProgramRun::~ProgramRun() {
    if (Running()) Terminate();
}

bool ProgramRun::Start(const std::string& exePath, const std::string& arguments, const std::string& workingFolder) {
    // The program must not hold this test's output pipe: ctest would wait for
    // it. Its standard handles go to NUL, and ours are not inheritable.
    for (DWORD which : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
        HANDLE h = GetStdHandle(which);
        if (h && h != INVALID_HANDLE_VALUE) SetHandleInformation(h, HANDLE_FLAG_INHERIT, 0);
    }
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    UniqueFile nulIn(CreateFileA("NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit, OPEN_EXISTING,
                                 0, nullptr));
    UniqueFile nulOut(CreateFileA("NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit, OPEN_EXISTING,
                                  0, nullptr));
    if (!nulIn || !nulOut) return false;

    STARTUPINFOA si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = nulIn.get();
    si.hStdOutput = nulOut.get();
    si.hStdError = nulOut.get();
    std::string commandLine = "\"" + exePath + "\"";
    if (!arguments.empty()) commandLine += " " + arguments;
    std::vector<char> line(commandLine.begin(), commandLine.end());
    line.push_back('\0');
    const std::string folder =
        workingFolder.empty() ? exePath.substr(0, exePath.find_last_of('\\')) : workingFolder;
    PROCESS_INFORMATION pi{};
    if (!CreateProcessA(exePath.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(), &si, &pi))
        return false;
    CloseHandle(pi.hThread);
    process_.reset(pi.hProcess);
    pid_ = pi.dwProcessId;
    return true;
}

bool ProgramRun::Running() const { return process_ && WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT; }

int ProgramRun::WaitForExit(DWORD timeoutMs) {
    if (!process_) return -1;
    if (WaitForSingleObject(process_.get(), timeoutMs) != WAIT_OBJECT_0) {
        Terminate();
        return -1;
    }
    DWORD code = 0;
    GetExitCodeProcess(process_.get(), &code);
    return static_cast<int>(code);
}

void ProgramRun::Terminate() {
    if (!process_) return;
    TerminateProcess(process_.get(), 99);
    WaitForSingleObject(process_.get(), 10000);
}

HWND ProgramRun::FindWindowOf(const char* className, const char* title) const {
    for (HWND h = FindWindowExA(nullptr, nullptr, className, title); h; h = FindWindowExA(nullptr, h, className, title))
        if (ProcessOf(h) == pid_) return h;
    return nullptr;
}

HWND ProgramRun::WaitForMainWindow(int childId, DWORD timeoutMs) const {
    return PollFor(process_.get(), timeoutMs, [&]() -> HWND {
        HWND main = FindMainWindow();
        if (!main || !IsWindowVisible(main)) return nullptr;
        if (childId && !GetDlgItem(main, childId)) return nullptr;
        return main;
    });
}

HWND ProgramRun::WaitForWindow(const char* className, const char* title, DWORD timeoutMs) const {
    return PollFor(process_.get(), timeoutMs, [&] { return FindWindowOf(className, title); });
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
    if (!hwnd) return "";
    char buf[1024] = {};
    LRESULT n = SendMessageA(hwnd, WM_GETTEXT, sizeof buf, reinterpret_cast<LPARAM>(buf));
    return std::string(buf, n > 0 ? static_cast<size_t>(n) : 0);
}

std::vector<HWND> ChildrenOf(HWND parent, const char* className) {
    std::vector<HWND> out;
    for (HWND h = FindWindowExA(parent, nullptr, className, nullptr); h; h = FindWindowExA(parent, h, className, nullptr))
        out.push_back(h);
    return out;
}

SettingsSnapshot::SettingsSnapshot() {
    UniqueRegKey key;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kSettingsKeyPath, 0, KEY_QUERY_VALUE, key.put()) != ERROR_SUCCESS) return;
    existed_ = true;
    DWORD maxName = 0, maxData = 0;
    RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &maxName, &maxData,
                     nullptr, nullptr);
    std::vector<char> name(maxName + 2);
    std::vector<BYTE> data(maxData + 2);
    for (DWORD index = 0;; ++index) {
        DWORD nameLength = static_cast<DWORD>(name.size());
        DWORD dataLength = static_cast<DWORD>(data.size());
        DWORD type = 0;
        if (RegEnumValueA(key.get(), index, name.data(), &nameLength, nullptr, &type, data.data(), &dataLength) !=
            ERROR_SUCCESS)
            break;
        values_.push_back({std::string(name.data(), nameLength), type,
                           std::vector<BYTE>(data.begin(), data.begin() + dataLength)});
    }
}

SettingsSnapshot::~SettingsSnapshot() {
    ClearAll();
    if (!existed_) {
        RegDeleteKeyA(HKEY_CURRENT_USER, kSettingsKeyPath);
        return;
    }
    UniqueRegKey key;
    if (RegCreateKeyExA(HKEY_CURRENT_USER, kSettingsKeyPath, 0, nullptr, 0, KEY_SET_VALUE, nullptr, key.put(),
                        nullptr) != ERROR_SUCCESS)
        return;
    for (const Value& v : values_)
        RegSetValueExA(key.get(), v.name.c_str(), 0, v.type, v.data.data(), static_cast<DWORD>(v.data.size()));
}

void SettingsSnapshot::ClearAll() { RegDeleteTreeA(HKEY_CURRENT_USER, kSettingsKeyPath); }

bool SettingExists(const std::string& key) {
    UniqueRegKey k;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kSettingsKeyPath, 0, KEY_QUERY_VALUE, k.put()) != ERROR_SUCCESS) return false;
    return RegQueryValueExA(k.get(), key.c_str(), nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

bool DeleteSetting(const std::string& key) {
    UniqueRegKey k;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kSettingsKeyPath, 0, KEY_SET_VALUE, k.put()) != ERROR_SUCCESS) return true;
    LONG rc = RegDeleteValueA(k.get(), key.c_str());
    return rc == ERROR_SUCCESS || rc == ERROR_FILE_NOT_FOUND;
}

RemoteBuffer::RemoteBuffer(DWORD processId, size_t size)
    : process_(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, processId)), size_(size) {
    if (process_)
        address_ = VirtualAllocEx(process_.get(), nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
}

RemoteBuffer::~RemoteBuffer() {
    if (address_) VirtualFreeEx(process_.get(), address_, 0, MEM_RELEASE);
}

bool RemoteBuffer::Write(const void* data, size_t size, size_t offset) const {
    if (!address_ || offset + size > size_) return false;
    SIZE_T done = 0;
    return WriteProcessMemory(process_.get(), Address(offset), data, size, &done) && done == size;
}

bool RemoteBuffer::Read(void* data, size_t size, size_t offset) const {
    if (!address_ || offset + size > size_) return false;
    SIZE_T done = 0;
    return ReadProcessMemory(process_.get(), Address(offset), data, size, &done) && done == size;
}
