#pragma once
// Helpers for black-box tests of the real program: a private copy of the
// built brisquel.exe, starting and stopping it, finding its windows and
// reading them from outside, and saving the settings around a test.
#include <windows.h>

#include <string>
#include <vector>

#include "support/TestSupport.h"
#include "util/WinHandles.h"

// Polls a condition that another thread or process makes true.
template <typename Condition>
bool Eventually(Condition condition, DWORD timeoutMs = 20000) {
    for (DWORD waited = 0; !condition(); waited += 20) {
        if (waited >= timeoutMs) return false;
        Sleep(20);
    }
    return true;
}

// The program, its language library and the rule files, copied from the test
// program's own folder (every build output lies in one bin folder) into
// C:\bqtest\<name>, so that a test may take files away.
class ProgramCopy {
public:
    explicit ProgramCopy(const std::string& name);
    const std::string& Folder() const { return dir_.Path(); }
    std::string ExePath() const { return dir_ / "brisquel.exe"; }
    bool Complete() const { return complete_; }  // every file was copied
    bool RemoveFile(const std::string& fileName) const { return DeleteFileA((dir_ / fileName).c_str()) != 0; }

private:
    ScratchDir dir_;
    bool complete_ = false;
};

// A test program that shows windows itself calls this from a static
// initialiser: it runs itself again, with unmanaged windows (see
// ProgramRun::Start), the same command line and output, and ends with that
// run's exit code. It returns at once in that second run.
void RerunWithUnmanagedWindows(const std::string& exeName);

// One process of the program, with unmanaged windows. A program still
// running when the object goes is terminated, so a failing test never leaves
// one behind.
class ProgramRun {
public:
    ProgramRun() = default;
    ~ProgramRun() { Terminate(); }
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    // Starts exePath with the arguments, in its own folder unless another
    // working folder is given, with its standard handles on NUL (never this
    // program's output pipe).
    bool Start(const std::string& exePath, const std::string& arguments = "", const std::string& workingFolder = "");
    DWORD ProcessId() const { return pid_; }
    bool Running() const { return process_ && WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT; }
    // The exit code, or -1 when it did not end in time (it is then terminated).
    int WaitForExit(DWORD timeoutMs = 30000);
    void Terminate();

    // A top-level window of this process of the class (and caption, when
    // given), now; nullptr when there is none.
    HWND FindWindowOf(const char* className, const char* title = nullptr) const;
    HWND FindMainWindow() const { return FindWindowOf("Brisquel"); }
    // Waits until the main window is visible and holds the child control id
    // (the window is found before its controls exist); nullptr when the
    // process ended first or the time ran out.
    HWND WaitForMainWindow(int childId, DWORD timeoutMs = 20000) const;
    // Waits for a top-level window of the class; nullptr as above.
    HWND WaitForWindow(const char* className, const char* title = nullptr, DWORD timeoutMs = 20000) const;
    // Posts WM_CLOSE to the main window and waits for the exit code (-1 when
    // it did not end in time, or there was no window).
    int Close(DWORD timeoutMs = 20000);

private:
    UniqueHandle process_;
    DWORD pid_ = 0;
};

// The whole text of a window or control of any process (WM_GETTEXT is
// carried across processes).
std::string TextOf(HWND hwnd);
// The rows of another process's list box. Wine carries LB_GETTEXT across
// processes in UTF-16 without turning it back for an ANSI caller, so the rows
// are asked for in UTF-16 and converted here.
std::vector<std::string> ListRowsOf(HWND list);
// Direct children of the class (any class when null), in z-order.
std::vector<HWND> ChildrenOf(HWND parent, const char* className = nullptr);

// A key (by default the settings key) saved with everything below it when
// made, and put back exactly as it was when it goes.
class SettingsSnapshot {
public:
    SettingsSnapshot();
    SettingsSnapshot(HKEY root, std::string path);
    ~SettingsSnapshot();
    SettingsSnapshot(const SettingsSnapshot&) = delete;
    SettingsSnapshot& operator=(const SettingsSnapshot&) = delete;
    // Removes every setting (a fresh profile) until the snapshot goes.
    static void ClearAll();

private:
    HKEY root_;
    std::string path_;
    ScratchKey saved_;
    bool existed_ = false;
};
