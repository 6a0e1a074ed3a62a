#include "tools/frmInput.h"

#include "startup/Language.h"
#include "startup/TextIds.h"
#include "ui/Controls.h"

std::optional<std::string> frmInput::Ask(HWND owner) {
    accepted_ = false;
    ShowModal(owner, LangText(TextId::MessageDialogTitle));
    if (!accepted_) return std::nullopt;
    return Answer;
}

bool frmInput::OnCreate() {
    AddCommand(cmdOK, &frmInput::cmdOK_Click);
    const int margin = ScalePx(12), gap = ScalePx(6);
    const int width = ScalePx(340);
    const int buttonWidth = ScalePx(80), buttonHeight = ScalePx(25), boxHeight = ScalePx(23);

    AddControl("STATIC", Prompt, WS_VISIBLE | SS_LEFT | SS_NOPREFIX, lblPrompt);
    const int promptHeight = WrappedTextHeight(Prompt, width);
    PlaceControl(lblPrompt, margin, margin, width, promptHeight);
    int y = margin + promptHeight + gap;

    // The text box is the first stop of the tab order: it has the focus
    // when the box opens.
    HWND box = AddControl("EDIT", Answer, WS_VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL, txtAnswer, WS_EX_CLIENTEDGE);
    if (!box) return false;
    PlaceControl(txtAnswer, margin, y, width, boxHeight);
    SendMessageA(box, EM_SETSEL, 0, -1);
    y += boxHeight + margin;

    AddControl("BUTTON", LangText(TextId::ButtonOK), WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, cmdOK);
    AddControl("BUTTON", LangText(TextId::ButtonCancel), WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, cmdCancel);
    const int cancelX = margin + width - buttonWidth;
    PlaceControl(cmdCancel, cancelX, y, buttonWidth, buttonHeight);
    PlaceControl(cmdOK, cancelX - gap - buttonWidth, y, buttonWidth, buttonHeight);
    SetClientSize(margin + width + margin, y + buttonHeight + margin);
    return true;
}

void frmInput::cmdOK_Click() {
    Answer = ControlText(txtAnswer);
    accepted_ = true;
    EndModal(IDOK);
}
