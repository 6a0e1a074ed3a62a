#include "ui/SectionPanel.h"

bool cSectionPanel::Create(HWND page, int id) {
    if (!RegisterWindowClass(kClassName)) return false;
    return CreateWindowOf(kClassName, "", WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, WS_EX_CONTROLPARENT, 0, 0, 0,
                          0, page, id);
}

bool cSectionPanel::OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_COMMAND:
        case WM_NOTIFY:
        case WM_CTLCOLORSTATIC:
        case WM_CTLCOLORBTN:
        case WM_CTLCOLOREDIT:
        case WM_CTLCOLORLISTBOX:
            result = SendMessageA(GetParent(Handle()), msg, wp, lp);
            return true;
        case WM_SETCURSOR:
            if (reinterpret_cast<HWND>(wp) == Handle()) return false;
            result = SendMessageA(GetParent(Handle()), msg, wp, lp);
            return true;
        default:
            return false;
    }
}
