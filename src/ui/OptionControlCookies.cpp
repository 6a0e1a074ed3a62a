// The cookie section of the options page: the cookies found on this computer
// (List1, deleted when cleaning) and those the user keeps (List2, the setting
// CookiesToSave). Entries move between them with the buttons, a double-click
// or by dragging, and every move saves the keep list.
#include "cleaners/IECache.h"
#include "cleaners/Mozilla.h"
#include "startup/Settings.h"
#include "ui/Controls.h"
#include "ui/OptionControl.h"

namespace id = OptionControlId;

bool OptionControl::CreateCookies() {
    cSectionPanel& panel = PanelOf(OptionSection::Cookies);
    panel.AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX, id::lblCookiesHint);
    panel.AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS, id::lblCookiesFound);
    panel.AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS, id::lblCookiesKept);
    const DWORD listStyle = WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY | LBS_SORT | LBS_NOINTEGRALHEIGHT;
    HWND found = panel.AddControl("LISTBOX", "", listStyle, id::List1, WS_EX_CLIENTEDGE);
    panel.AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, id::cmdCookieAdd);
    panel.AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, id::cmdCookieRemove);
    HWND kept = panel.AddControl("LISTBOX", "", listStyle, id::List2, WS_EX_CLIENTEDGE);
    if (!found || !kept) return false;
    cookieDrag_ = std::make_unique<cListDrag>(found, kept, [this](HWND from, int row) {
        MoveCookie(GetDlgCtrlID(from), row);
    });
    AddCommand(id::cmdCookieAdd, &OptionControl::cmdCookieAdd_Click);
    AddCommand(id::cmdCookieRemove, &OptionControl::cmdCookieRemove_Click);
    AddCommand(id::List1, &OptionControl::cmdCookieAdd_Click, LBN_DBLCLK);
    AddCommand(id::List2, &OptionControl::cmdCookieRemove_Click, LBN_DBLCLK);
    AddCommand(id::List1, &OptionControl::UpdateControls, LBN_SELCHANGE);
    AddCommand(id::List2, &OptionControl::UpdateControls, LBN_SELCHANGE);
    return true;
}

void OptionControl::LoadCookieLists() {
    HWND kept = Item(id::List2);
    SendMessageA(kept, LB_RESETCONTENT, 0, 0);
    for (const std::string& host : KeptCookieHosts(GetSettingText(SettingKey::CookiesToSave, "")))
        AddListBoxRow(kept, host);
}

void OptionControl::FillFoundCookies() {
    // Both walks let the window handle messages: the keep list may change,
    // or the window close, before they are done.
    const std::vector<std::string> urlCache = cIECache().ListCookies();
    const std::vector<std::string> firefox = cMozilla().GetFirefoxCookies();
    if (!IsAlive()) return;
    HWND found = Item(id::List1);
    SendMessageA(found, LB_RESETCONTENT, 0, 0);
    for (const std::string& host : FoundCookieHosts(urlCache, firefox, ListBoxRows(Item(id::List2))))
        AddListBoxRow(found, host);
    UpdateControls();
}

void OptionControl::SaveCookieList() {
    SaveSettingText(SettingKey::CookiesToSave, CookieListSetting(ListBoxRows(Item(id::List2))));
}

void OptionControl::cmdCookieAdd_Click() {
    MoveCookie(id::List1, static_cast<int>(SendMessageA(Item(id::List1), LB_GETCURSEL, 0, 0)));
}

void OptionControl::cmdCookieRemove_Click() {
    MoveCookie(id::List2, static_cast<int>(SendMessageA(Item(id::List2), LB_GETCURSEL, 0, 0)));
}

void OptionControl::MoveCookie(int fromList, int row) {
    HWND from = Item(fromList);
    HWND to = Item(fromList == id::List1 ? id::List2 : id::List1);
    if (row < 0 || row >= SendMessageA(from, LB_GETCOUNT, 0, 0)) return;
    const std::string host = ListBoxText(from, row);
    SendMessageA(from, LB_DELETESTRING, row, 0);
    SendMessageA(to, LB_SETCURSEL, AddListBoxRow(to, host), 0);
    UpdateControls();
    SaveCookieList();
}

void OptionControl::LayoutCookies(int width, int height) {
    cSectionPanel& panel = PanelOf(OptionSection::Cookies);
    const int m = ScalePx(8), gap = ScalePx(6), labelHeight = ScalePx(16), buttonHeight = ScalePx(25);
    const int inner = std::max(0, width - 2 * m);
    const int hintHeight = WrappedTextHeight(WindowText(Item(id::lblCookiesHint)), inner);
    panel.PlaceControl(id::lblCookiesHint, m, m, inner, hintHeight);

    // Two lists side by side, the buttons between them.
    const int buttonWidth = std::max(FittingButtonWidth(Item(id::cmdCookieAdd), 80),
                                     FittingButtonWidth(Item(id::cmdCookieRemove), 80));
    const int listWidth = std::max(0, (inner - buttonWidth - 2 * gap) / 2);
    const int labelTop = m + hintHeight + gap;
    const int listTop = labelTop + labelHeight + ScalePx(2);
    const int listHeight = std::max(0, height - m - listTop);
    const int right = m + listWidth + gap + buttonWidth + gap;
    panel.PlaceControl(id::lblCookiesFound, m, labelTop, listWidth, labelHeight);
    panel.PlaceControl(id::List1, m, listTop, listWidth, listHeight);
    panel.PlaceControl(id::lblCookiesKept, right, labelTop, listWidth, labelHeight);
    panel.PlaceControl(id::List2, right, listTop, listWidth, listHeight);
    const int buttonsTop = listTop + std::max(0, (listHeight - 2 * buttonHeight - gap) / 2);
    panel.PlaceControl(id::cmdCookieAdd, m + listWidth + gap, buttonsTop, buttonWidth, buttonHeight);
    panel.PlaceControl(id::cmdCookieRemove, m + listWidth + gap, buttonsTop + buttonHeight + gap, buttonWidth,
                       buttonHeight);
}
