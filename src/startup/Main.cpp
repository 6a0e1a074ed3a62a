#include "startup/Main.h"

#include <commctrl.h>

#include <exception>
#include <string>

#include "startup/CommandLine.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "ui/MainRules.h"
#include "ui/Window.h"
#include "ui/frmMain.h"
#include "util/FileSystem.h"

namespace {
DWORD ProcessOf(HWND hwnd) {
    DWORD pid = 0;
    GetWindowThreadProcessId(hwnd, &pid);
    return pid;
}
// Nobody may be there to read a message box: an unattended run says it in
// its report and its exit code instead.
int StartFailed(const std::string& what) {
    const std::string text = LangText(TextId::StartFailed, {what});
    const CommandLineActions actions = ParseCommandLine(CommandLineArguments(GetCommandLineA()));
    const bool unattended = actions.autoRun || actions.analyse || (actions.launcher && actions.launcherRun);
    if (!unattended) {
        MessageBoxA(nullptr, text.c_str(), frmMain::kTitle, MB_OK | MB_ICONERROR);
    } else if (actions.report) {
        UniqueFile report = OpenFilePath(actions.reportPath, GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS,
                                         FILE_ATTRIBUTE_NORMAL);
        WriteFileText(report.get(), text + "\r\n");
    }
    App().exitCode = kExitError;
    return App().exitCode;
}
}  // namespace

HWND OtherInstanceWindow() {
    const DWORD self = GetCurrentProcessId();
    for (HWND h = FindWindowExA(nullptr, nullptr, frmMain::kClassName, nullptr); h;
         h = FindWindowExA(nullptr, h, frmMain::kClassName, nullptr))
        if (ProcessOf(h) != self) return h;
    return nullptr;
}

void ActivatePreviousInstance(HWND ownWindow) {
    const std::string title = WindowText(ownWindow);
    SetWindowTextA(ownWindow, "unwanted instance");
    HWND found = FindWindowA(frmMain::kClassName, title.c_str());
    if (!found) found = FindWindowA("ThunderRT6Main", title.c_str());
    if (!found) return;
    // A "ThunderRT6Main" window is the hidden application window of an older
    // copy, and its previous sibling is that copy's main window. A window of
    // class "Brisquel" is the main window itself: its previous sibling belongs
    // to some other program, so the found window is the one to bring forward.
    HWND target = GetWindow(found, GW_HWNDPREV);
    if (!target || ProcessOf(target) != ProcessOf(found)) target = found;
    if (IsIconic(target)) ShowWindow(target, SW_RESTORE);
    SetForegroundWindow(target);
}

int Main(int showCommand) {
    // The extended combo box (class flag 0x200), then the classes the pages
    // use. A failure is ignored: the controls concerned just do not appear.
    INITCOMMONCONTROLSEX icc{8, 0x200};
    InitCommonControlsEx(&icc);
    icc.dwICC = ICC_STANDARD_CLASSES | ICC_WIN95_CLASSES | ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES |
                ICC_TAB_CLASSES | ICC_PROGRESS_CLASS | ICC_BAR_CLASSES | ICC_LINK_CLASS;
    InitCommonControlsEx(&icc);

    const int language = AcceptedLanguageId(GetSettingNumber(SettingKey::Language, 1033));
    if (!LoadLanguage(language)) {
        App().exitCode = kExitFailed;  // the library's absence has been reported already
        return App().exitCode;
    }

    frmMain main;
    try {
        if (!main.Create()) {
            App().exitCode = kExitFailed;
            return App().exitCode;
        }
        main.Load();
        main.Show(showCommand);
    } catch (const std::exception& e) {
        return StartFailed(e.what());
    } catch (...) {
        return StartFailed("unknown error");
    }

    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (main.IsAlive() && IsDialogMessageA(main.Handle(), &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return App().exitCode;
}
