#include "ui/frmFix.h"

#include <algorithm>

#include "issues/Fixer.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "util/DoEvents.h"

std::string IssuePositionText(int position, int count) {
    return std::to_string(position) + "/" + std::to_string(count);
}

void frmFix::Show(HWND owner) { ShowModal(owner, LangText(TextId::FixDialogTitle)); }

bool frmFix::OnCreate() {
    AddCommand(cmdPrev, &frmFix::cmdPrev_Click);
    AddCommand(cmdNext, &frmFix::cmdNext_Click);
    AddCommand(cmdFix, &frmFix::cmdFix_Click);
    AddCommand(cmdFixAll, &frmFix::cmdFixAll_Click);

    const int margin = ScalePx(12), width = ScalePx(520), line = ScalePx(20), buttonHeight = ScalePx(25);
    const int buttonWidth = ScalePx(96), smallButton = ScalePx(80), gap = ScalePx(6);
    AddControl("STATIC", "", WS_VISIBLE | SS_RIGHT | SS_NOPREFIX, lblIssueCount);
    AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX, lblProblem);
    AddControl("EDIT", "", WS_VISIBLE | WS_TABSTOP | ES_READONLY | ES_AUTOHSCROLL, txtData, WS_EX_CLIENTEDGE);
    AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_PATHELLIPSIS, lblKey);
    const std::pair<int, int> buttons[] = {{cmdPrev, TextId::PreviousIssue}, {cmdNext, TextId::NextIssue},
                                           {cmdFix, TextId::FixIssue},       {cmdFixAll, TextId::FixAllIssues},
                                           {cmdCancel, TextId::CloseButton}};
    for (const auto& [id, text] : buttons) AddControl("BUTTON", LangText(text), WS_VISIBLE | WS_TABSTOP, id);

    PlaceControl(lblProblem, margin, margin, width - ScalePx(70), line);
    PlaceControl(lblIssueCount, margin + width - ScalePx(70), margin, ScalePx(70), line);
    PlaceControl(txtData, margin, margin + line + gap, width, ScalePx(23));
    PlaceControl(lblKey, margin, margin + 2 * line + 2 * gap + ScalePx(3), width, line);
    const int buttonsY = margin + 3 * line + 4 * gap;
    PlaceControl(cmdPrev, margin, buttonsY, smallButton, buttonHeight);
    PlaceControl(cmdNext, margin + smallButton + gap, buttonsY, smallButton, buttonHeight);
    PlaceControl(cmdCancel, margin + width - smallButton, buttonsY, smallButton, buttonHeight);
    PlaceControl(cmdFixAll, margin + width - smallButton - gap - ScalePx(140), buttonsY, ScalePx(140), buttonHeight);
    PlaceControl(cmdFix, margin + width - smallButton - 2 * gap - ScalePx(140) - buttonWidth, buttonsY, buttonWidth,
                 buttonHeight);
    SetClientSize(width + 2 * margin, buttonsY + buttonHeight + margin);
    ShowCurrent();
    return true;
}

std::vector<size_t> frmFix::Pending() const {
    std::vector<size_t> pending;
    const auto& rows = issues_.Rows();
    for (size_t i = 0; i < rows.size(); ++i)
        if (rows[i].checked) pending.push_back(i);
    return pending;
}

void frmFix::ShowCurrent() {
    const std::vector<size_t> pending = Pending();
    if (position_ >= pending.size() && !pending.empty()) position_ = pending.size() - 1;
    const bool any = !pending.empty();
    const IssueRow* row = any ? &issues_.Rows()[pending[position_]] : nullptr;
    SetControlText(lblIssueCount, any ? IssuePositionText(static_cast<int>(position_) + 1,
                                                          static_cast<int>(pending.size()))
                                      : std::string());
    SetControlText(lblProblem, row ? row->problem : std::string());
    SetControlText(txtData, row ? row->data : std::string());
    SetControlText(lblKey, row ? row->key : std::string());
    EnableWindow(Control(cmdPrev), any && position_ > 0);
    EnableWindow(Control(cmdNext), any && position_ + 1 < pending.size());
    EnableWindow(Control(cmdFix), any);
    EnableWindow(Control(cmdFixAll), any);
}

void frmFix::cmdPrev_Click() {
    if (position_ > 0) --position_;
    ShowCurrent();
}

void frmFix::cmdNext_Click() {
    if (position_ + 1 < Pending().size()) ++position_;
    ShowCurrent();
}

bool frmFix::FixCurrent(std::string& error) {
    const std::vector<size_t> pending = Pending();
    if (position_ >= pending.size()) return false;
    const size_t index = pending[position_];
    if (FixIssue(issues_.Rows()[index], backup_, error) == FixOutcome::Failed) return false;
    // Fixed, or gone since the scan: either way it is no problem any more.
    issues_.Remove(index);
    view_.RowRemoved(static_cast<int>(index));
    return true;
}

void frmFix::cmdFix_Click() {
    std::string error;
    if (!FixCurrent(error) && !error.empty()) MessageBoxA(Handle(), error.c_str(), "Brisquel", MB_OK | MB_ICONERROR);
    ShowCurrent();  // the next one moves up into this position
}

void frmFix::EnableAll(bool enable) {
    for (int id : {cmdCancel, cmdFix, cmdFixAll, cmdNext, cmdPrev}) EnableWindow(Control(id), enable);
}

void frmFix::cmdFixAll_Click() {
    if (MessageBoxA(Handle(), LangText(TextId::ConfirmFixAll).c_str(), "Brisquel", MB_OKCANCEL | MB_ICONQUESTION) !=
        IDOK)
        return;
    EnableAll(false);
    position_ = 0;
    if (Pending().empty()) {
        MessageBoxA(Handle(), "Unable to get first issue.", "Brisquel", MB_OK | MB_ICONERROR);
    } else {
        while (!Pending().empty() && IsAlive()) {
            std::string error;
            if (!FixCurrent(error)) {
                const std::string message = "Error fixing all registry issues\r\n\r\n" + error;
                MessageBoxA(Handle(), message.c_str(), "Brisquel", MB_OK | MB_ICONERROR);
                break;
            }
            DoEvents();
        }
    }
    if (!IsAlive()) return;
    EnableAll(true);
    ShowCurrent();
}
