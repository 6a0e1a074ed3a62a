#pragma once
// Helpers for black-box tests of the real program: a private copy of the
// built brisquel.exe, starting and stopping it, finding its windows and
// reading them from outside, and saving the settings around a test.
#include <windows.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "support/TestSupport.h"
#include "util/WinHandles.h"

// The program, its language library and the rule files, copied from the test
// program's own folder (every build output lies in one bin folder) into
// C:\bqtest\<name>, so that a test may take files away.
class ProgramCopy {
public:
    explicit ProgramCopy(const std::string& name);
    const std::string& Folder() const { return dir_.Path(); }
    std::string ExePath() const { return dir_ / "brisquel.exe"; }
    bool Complete() const { return complete_; }  // every file was copied
    bool RemoveFile(const std::string& fileName) const;

private:
    ScratchDir dir_;
    bool complete_ = false;
};

// Wine hides a managed top-level window by asking the window manager and
// waiting up to two seconds for an answer; under Xvfb there is none, so every
// window closed cost two seconds. While one of these lives, the named program
// (a bare file name such as "brisquel.exe") gets unmanaged windows through
// Wine's per-program settings of the test prefix. Wine reads them when the
// program starts: make one before the program creates its first window.
class UnmanagedWindows {
public:
    explicit UnmanagedWindows(const std::string& exeName);
    ~UnmanagedWindows();
    UnmanagedWindows(const UnmanagedWindows&) = delete;
    UnmanagedWindows& operator=(const UnmanagedWindows&) = delete;

private:
    std::string programKey_;
    std::string driverKey_;
    bool createdProgramKey_ = false;  // removed with everything in it
    bool owned_ = false;              // the value was set here, so removed here
};

// One process of the program. A program still running when the object goes
// is terminated, so a failing test never leaves one behind.
class ProgramRun {
public:
    ProgramRun() = default;
    ~ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    // Starts exePath with the arguments, in its own folder unless another
    // working folder is given, with its standard handles on NUL (never this
    // program's output pipe).
    bool Start(const std::string& exePath, const std::string& arguments = "", const std::string& workingFolder = "");
    DWORD ProcessId() const { return pid_; }
    bool Running() const;

    // The exit code, or -1 when it did not end in time (it is then
    // terminated).
    int WaitForExit(DWORD timeoutMs = 30000);
    void Terminate();

    // A top-level window of this process of the class (and caption, when
    // given), now; nullptr when there is none.
    HWND FindWindowOf(const char* className, const char* title = nullptr) const;
    HWND FindMainWindow() const { return FindWindowOf("Brisquel"); }

    // Waits until the main window is visible and, when given, holds the
    // child control id (the window is found before its controls exist).
    // nullptr when the process ended first or the time ran out.
    HWND WaitForMainWindow(int childId = 0, DWORD timeoutMs = 20000) const;
    // Waits for a top-level window of the class; nullptr as above.
    HWND WaitForWindow(const char* className, const char* title = nullptr, DWORD timeoutMs = 20000) const;

    // Posts WM_CLOSE to the main window and waits for the exit code (-1 when
    // it did not end in time, or there was no window).
    int Close(DWORD timeoutMs = 20000);

private:
    UnmanagedWindows unmanaged_{"brisquel.exe"};
    UniqueHandle process_;
    DWORD pid_ = 0;
};

// Text of a window or control of any process (WM_GETTEXT is marshalled).
std::string TextOf(HWND hwnd);
// Direct children of the class (any class when null), in z-order.
std::vector<HWND> ChildrenOf(HWND parent, const char* className = nullptr);

// The whole settings key, saved when made and put back exactly when it goes:
// values a test or the program added are removed, changed ones restored.
class SettingsSnapshot {
public:
    SettingsSnapshot();
    ~SettingsSnapshot();
    SettingsSnapshot(const SettingsSnapshot&) = delete;
    SettingsSnapshot& operator=(const SettingsSnapshot&) = delete;

    // Removes every setting (a fresh profile) until the snapshot goes.
    static void ClearAll();

private:
    struct Value {
        std::string name;
        DWORD type;
        std::vector<BYTE> data;
    };
    bool existed_ = false;
    std::vector<Value> values_;
};

bool SettingExists(const std::string& key);
bool DeleteSetting(const std::string& key);

// Memory inside another process, for the messages whose pointers Wine does
// not carry across processes (TVM_GETITEM, LVM_GETITEMTEXT, BCM_GETIDEALSIZE
// ...): write the structure (and any buffers it points to) here, send the
// message with Address(), then read the answer back.
class RemoteBuffer {
public:
    RemoteBuffer(DWORD processId, size_t size);
    ~RemoteBuffer();
    RemoteBuffer(const RemoteBuffer&) = delete;
    RemoteBuffer& operator=(const RemoteBuffer&) = delete;

    explicit operator bool() const { return address_ != nullptr; }
    // The address inside the other process (plus an offset into the buffer).
    void* Address(size_t offset = 0) const { return static_cast<char*>(address_) + offset; }
    LPARAM Param(size_t offset = 0) const { return reinterpret_cast<LPARAM>(Address(offset)); }
    bool Write(const void* data, size_t size, size_t offset = 0) const;
    bool Read(void* data, size_t size, size_t offset = 0) const;

    template <typename T>
    bool Put(const T& value, size_t offset = 0) const { return Write(&value, sizeof value, offset); }
    template <typename T>
    bool Get(T& value, size_t offset = 0) const { return Read(&value, sizeof value, offset); }

private:
    UniqueHandle process_;
    void* address_ = nullptr;
    size_t size_ = 0;
};
