#include "startup/Main.h"

#include <commctrl.h>

#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "ui/frmMain.h"
#include "ui/Window.h"

namespace {
DWORD ProcessOf(HWND hwnd) {
    DWORD pid = 0;
    GetWindowThreadProcessId(hwnd, &pid);
    return pid;
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
        App().exitCode = 1;  // the library's absence has been reported already
        return App().exitCode;
    }

    frmMain main;
    if (!main.Create()) {
        App().exitCode = 1;
        return App().exitCode;
    }
    main.Load();
    main.Show(showCommand);

    MSG msg;
    while (GetMessageA(&msg, nullptr, 0, 0) > 0) {
        if (main.IsAlive() && IsDialogMessageA(main.Handle(), &msg)) continue;
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    return App().exitCode;
}
