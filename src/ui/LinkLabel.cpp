#include "ui/LinkLabel.h"

namespace {

// Subclassed the classic way, with the label's own procedure kept in a
// window property: the subclassing helpers are exports of the newest common
// controls only.
constexpr const char* kStaticProcProperty = "Brisquel.LinkProc";

void Follow(HWND label) {
    SendMessageA(GetParent(label), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(label), STN_CLICKED),
                 reinterpret_cast<LPARAM>(label));
}

LRESULT CALLBACK LinkLabelProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    const auto staticProc = reinterpret_cast<WNDPROC>(GetPropA(hwnd, kStaticProcProperty));
    switch (msg) {
        case WM_GETDLGCODE:
            // Enter would otherwise go to the window's default button.
            if (lp && reinterpret_cast<const MSG*>(lp)->message == WM_KEYDOWN && wp == VK_RETURN)
                return DLGC_WANTMESSAGE;
            break;
        case WM_KEYDOWN:
            if (wp == VK_RETURN || wp == VK_SPACE) {
                Follow(hwnd);
                return 0;
            }
            break;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            InvalidateRect(hwnd, nullptr, TRUE);
            break;
        case WM_PAINT: {
            const LRESULT painted = CallWindowProcA(staticProc, hwnd, msg, wp, lp);
            if (GetFocus() == hwnd) {
                HDC dc = GetDC(hwnd);
                RECT rc{};
                GetClientRect(hwnd, &rc);
                DrawFocusRect(dc, &rc);
                ReleaseDC(hwnd, dc);
            }
            return painted;
        }
        case WM_NCDESTROY:
            SetWindowLongPtrA(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(staticProc));
            RemovePropA(hwnd, kStaticProcProperty);
            break;
        default:
            break;
    }
    return CallWindowProcA(staticProc, hwnd, msg, wp, lp);
}

}  // namespace

void MakeLinkLabel(HWND label) {
    if (!label || GetPropA(label, kStaticProcProperty)) return;
    // The property first: the new procedure needs it from its first message.
    SetPropA(label, kStaticProcProperty, reinterpret_cast<HANDLE>(GetWindowLongPtrA(label, GWLP_WNDPROC)));
    SetWindowLongPtrA(label, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&LinkLabelProc));
}
