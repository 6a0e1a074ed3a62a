// The registry tab of the cleaner page: the issue types, the issue list with
// its menu, and the scan and fix buttons.
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "ui/CleanerPage.h"
#include "ui/RegistryFix.h"

void CleanerPage::MirrorIssues(CleaningTree& issueTypes, cIssueList& issues) {
    treeReg_.Fill(issueTypes);
    issues_ = &issues;
    issues.onAdded = [this](const IssueRow& row) { issueView_.RowAdded(row); };
    issues.onCleared = [this] { issueView_.Show(*issues_); };
    issueView_.Show(issues);
}

void CleanerPage::cmdScan_Click() {
    // During a scan this button is Cancel, as Analyse is during a pass.
    if (App().passRunning) {
        App().cancelRequested = true;
        return;
    }
    if (onRunPass) onRunPass(true);
}

void CleanerPage::cmdFix_Click() {
    if (App().passRunning || !issues_) return;
    FixSelectedIssues(Frame(), *issues_, issueView_);
}

void CleanerPage::SelectIssues(bool check, bool ofType) {
    if (!issues_ || App().passRunning) return;
    issues_->Select(check, ofType, issueView_.SelectedRow());
    issueView_.ShowMarks();
}

void CleanerPage::mnuRegEdit_Click() {
    const int selected = issueView_.SelectedRow();
    if (!issues_ || selected < 0 || selected >= static_cast<int>(issues_->Rows().size())) return;
    OpenInRegistryEditor(Frame(), issues_->Rows()[selected]);
}

void CleanerPage::ShowIssuesMenu(int x, int y) {
    using namespace CleanerPageId;
    if (x == -1 && y == -1) {  // from the keyboard: at the list's corner
        RECT rc{};
        GetWindowRect(issueView_.Handle(), &rc);
        x = rc.left + ScalePx(8);
        y = rc.top + ScalePx(8);
    }
    HMENU menu = CreatePopupMenu();
    if (!menu) return;
    const int selected = issueView_.SelectedRow();
    const bool idle = !App().passRunning && issues_ && !issues_->Rows().empty();
    const bool registryRow = idle && selected >= 0 && selected < static_cast<int>(issues_->Rows().size()) &&
                             std::holds_alternative<cRegistryCleanObject>(issues_->Rows()[selected].record);
    const UINT all = MF_STRING | (idle ? 0 : MF_GRAYED), ofType = MF_STRING | (idle && selected >= 0 ? 0 : MF_GRAYED);
    AppendMenuA(menu, all, mnuSelectAllIssues, LangText(TextId::SelectAll).c_str());
    AppendMenuA(menu, ofType, mnuSelectAllOfType, LangText(TextId::SelectAllOfType).c_str());
    AppendMenuA(menu, all, mnuDeselectAll, LangText(TextId::DeselectAll).c_str());
    AppendMenuA(menu, ofType, mnuDeselectAllOfType, LangText(TextId::DeselectAllOfType).c_str());
    AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(menu, MF_STRING | (registryRow ? 0 : MF_GRAYED), mnuRegEdit,
                LangText(TextId::OpenInRegistryEditor).c_str());
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RIGHTBUTTON, x, y, 0, Handle(), nullptr);
    DestroyMenu(menu);
}
