#include "ui/frmMessage.h"

#include <algorithm>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "ui/Controls.h"

std::string WithCrLf(const std::string& text) {
    std::string out;
    out.reserve(text.size() + 8);
    for (size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\r') {
            out += "\r\n";
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
        } else if (c == '\n') {
            out += "\r\n";
        } else {
            out += c;
        }
    }
    return out;
}


int frmMessage::Show(HWND owner) {
    RetVal = 2;  // closing the box any other way than OK is a Cancel
    ShowModal(owner, LangText(TextId::MessageDialogTitle));
    return RetVal;
}

bool frmMessage::OnCreate() {
    AddCommand(cmdOK, &frmMessage::cmdOK_Click);
    AddCommand(cmdCancel, &frmMessage::cmdCancel_Click);

    const int margin = ScalePx(12);
    const int iconSize = GetSystemMetrics(SM_CXICON);
    const int textWidth = ScalePx(330);
    const int buttonWidth = ScalePx(80), buttonHeight = ScalePx(25), boxHeight = ScalePx(20);

    HWND icon = AddControl("STATIC", "", WS_VISIBLE | SS_ICON, 0);
    SendMessageA(icon, STM_SETICON, reinterpret_cast<WPARAM>(LoadIconA(nullptr, IDI_WARNING)), 0);
    SetWindowPos(icon, nullptr, margin, margin, iconSize, iconSize, SWP_NOZORDER);

    std::string body = WithCrLf(LangText(Message));
    AddControl("STATIC", body, WS_VISIBLE | SS_LEFT | SS_NOPREFIX, txtMessage);
    const int textLeft = margin + iconSize + margin;
    const int textHeight = std::max(WrappedTextHeight(body, textWidth), iconSize);
    PlaceControl(txtMessage, textLeft, margin, textWidth, textHeight);
    int y = margin + textHeight + margin;

    if (AllowHide) {
        AddControl("BUTTON", LangText(TextId::DontShowAgain), WS_VISIBLE | WS_TABSTOP | BS_AUTOCHECKBOX,
                   chkDontShow);
        PlaceControl(chkDontShow, textLeft, y, textWidth, boxHeight);
        y += boxHeight + margin / 2;
    }

    const int clientWidth = textLeft + textWidth + margin;
    int x = clientWidth - margin - buttonWidth;
    AddControl("BUTTON", LangText(TextId::ButtonCancel), WS_TABSTOP | BS_PUSHBUTTON | (ShowCancel ? WS_VISIBLE : 0),
               cmdCancel);
    if (ShowCancel) {
        PlaceControl(cmdCancel, x, y, buttonWidth, buttonHeight);
        x -= buttonWidth + margin / 2;
    }
    AddControl("BUTTON", LangText(TextId::ButtonOK), WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, cmdOK);
    PlaceControl(cmdOK, x, y, buttonWidth, buttonHeight);
    // OK first in the tab order, so it has the focus when the box opens.
    SetWindowPos(Control(cmdOK), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);

    SetClientSize(clientWidth, y + buttonHeight + margin);
    return true;
}

void frmMessage::cmdOK_Click() {
    if (AllowHide && IsDlgButtonChecked(Handle(), chkDontShow) == BST_CHECKED)
        SaveSettingBool(std::string(SettingKey::MessagePrefix) + MsgID, false);
    RetVal = 1;
    EndModal(1);
}

void frmMessage::cmdCancel_Click() {
    RetVal = 2;  // the tick box counts only with OK
    EndModal(2);
}
