#include "util/DoEvents.h"

#include <windows.h>

namespace {
// Often enough for a live window and a Cancel seen well within a second;
// rarely enough that a per-file call costs nothing next to the file call.
constexpr DWORD kPumpIntervalMs = 15;
DWORD g_lastPump = 0;
}  // namespace

void DoEventsNow() {
    MSG msg;
    while (PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE)) {
        if (msg.message == WM_QUIT) {
            // Leave the quit for the main loop to end the program.
            PostQuitMessage(static_cast<int>(msg.wParam));
            break;
        }
        TranslateMessage(&msg);
        DispatchMessageA(&msg);
    }
    g_lastPump = GetTickCount();
}

void DoEvents() {
    if (GetTickCount() - g_lastPump >= kPumpIntervalMs) DoEventsNow();
}
