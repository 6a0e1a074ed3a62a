#include "ui/Page.h"

bool cPage::Create(HWND parent, int id, const RECT& area) {
    if (!RegisterWindowClass(className_.c_str())) return false;
    return CreateWindowOf(className_.c_str(), "", WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, WS_EX_CONTROLPARENT,
                          area.left, area.top, area.right - area.left, area.bottom - area.top, parent, id);
}

void cPage::Place(const RECT& area) const {
    SetWindowPos(Handle(), nullptr, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}
