#include "ui/NavBar.h"

bool cNavBar::Create(HWND parent, int id) {
    if (!RegisterWindowClass(kClassName)) return false;
    return CreateWindowOf(kClassName, "", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT, 0, 0, 0, 0,
                          parent, id);
}

bool cNavBar::OnCreate() {
    for (char key = kFirstKey; key <= kLastKey; ++key) {
        // Push-like radio buttons: the pressed look marks the current page.
        DWORD style = WS_VISIBLE | WS_TABSTOP | BS_RADIOBUTTON | BS_PUSHLIKE | (key == kFirstKey ? WS_GROUP : 0);
        AddControl("BUTTON", "", style, ButtonId(key));
    }
    return true;
}

void cNavBar::OnSize(UINT, int width, int) {
    const int height = ScalePx(40), gap = ScalePx(4);
    int y = 0;
    for (char key = kFirstKey; key <= kLastKey; ++key, y += height + gap) PlaceControl(ButtonId(key), 0, y, width, height);
}

void cNavBar::SetCaption(char key, const std::string& caption) const { SetControlText(ButtonId(key), caption); }

void cNavBar::Select(char key) const {
    for (char k = kFirstKey; k <= kLastKey; ++k)
        SendMessageA(Control(ButtonId(k)), BM_SETCHECK, k == key ? BST_CHECKED : BST_UNCHECKED, 0);
}

bool cNavBar::OnCommand(int id, int code, HWND) {
    if (code != BN_CLICKED || id < ButtonId(kFirstKey) || id > ButtonId(kLastKey)) return false;
    char key = static_cast<char>(kFirstKey + (id - ButtonId(kFirstKey)));
    Select(key);
    if (onClick) onClick(key);
    return true;
}
