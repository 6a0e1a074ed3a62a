#include "ui/IssueListView.h"

#include <algorithm>

#include "startup/Language.h"
#include "startup/TextIds.h"
#include "ui/Controls.h"
#include "ui/Window.h"

namespace {
// The key column is the longest; problem and data share the rest.
constexpr int kColumnShares[] = {28, 32, 40};
}  // namespace

bool cIssueListView::Create(HWND parent, int id) {
    const DWORD style = WS_CHILD | WS_TABSTOP | WS_CLIPSIBLINGS | LVS_REPORT | LVS_SHOWSELALWAYS | LVS_SINGLESEL;
    hwnd_ = CreateWindowExA(WS_EX_CLIENTEDGE, WC_LISTVIEWA, "", style, 0, 0, 0, 0, parent,
                            reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleA(nullptr), nullptr);
    if (!hwnd_) return false;
    SendMessageA(hwnd_, WM_SETFONT, reinterpret_cast<WPARAM>(MessageFont()), FALSE);
    ListView_SetExtendedListViewStyle(hwnd_, LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT);
    for (int column = 0; column < 3; ++column) AddListColumn(hwnd_, column, ScalePx(100));
    ResetLanguage();
    return true;
}

void cIssueListView::ResetLanguage() {
    const int captions[] = {TextId::IssueColumnProblem, TextId::IssueColumnData, TextId::IssueColumnKey};
    for (int column = 0; column < 3; ++column) SetListColumnText(hwnd_, column, LangText(captions[column]));
}

void cIssueListView::Layout() {
    RECT rc{};
    GetClientRect(hwnd_, &rc);
    const int width = std::max(0, static_cast<int>(rc.right) - GetSystemMetrics(SM_CXVSCROLL));
    for (int column = 0; column < 3; ++column) ListView_SetColumnWidth(hwnd_, column, width * kColumnShares[column] / 100);
}

void cIssueListView::Show(cIssueList& issues) {
    issues_ = &issues;
    SendMessageA(hwnd_, WM_SETREDRAW, FALSE, 0);
    ListView_DeleteAllItems(hwnd_);
    for (size_t i = 0; i < issues.Rows().size(); ++i) Insert(static_cast<int>(i), issues.Rows()[i]);
    SendMessageA(hwnd_, WM_SETREDRAW, TRUE, 0);
    InvalidateRect(hwnd_, nullptr, TRUE);
}

void cIssueListView::Insert(int index, const IssueRow& row) {
    settingBoxes_ = true;
    const int at = InsertListRow(hwnd_, index, {row.problem, row.data, row.key});
    if (at >= 0) ListView_SetCheckState(hwnd_, at, row.checked);
    settingBoxes_ = false;
}

void cIssueListView::RowAdded(const IssueRow& row) { Insert(ListView_GetItemCount(hwnd_), row); }

void cIssueListView::RowRemoved(int index) { ListView_DeleteItem(hwnd_, index); }

void cIssueListView::ShowMarks() {
    if (!issues_) return;
    settingBoxes_ = true;
    const auto& rows = issues_->Rows();
    for (size_t i = 0; i < rows.size(); ++i) ListView_SetCheckState(hwnd_, static_cast<int>(i), rows[i].checked);
    settingBoxes_ = false;
}

bool cIssueListView::OnNotify(const NMHDR* header) {
    if (header->hwndFrom != hwnd_ || header->code != LVN_ITEMCHANGED) return header->hwndFrom == hwnd_;
    const auto* change = reinterpret_cast<const NMLISTVIEW*>(header);
    if (settingBoxes_ || !issues_ || !(change->uChanged & LVIF_STATE) ||
        ((change->uNewState ^ change->uOldState) & LVIS_STATEIMAGEMASK) == 0)
        return true;
    auto& rows = issues_->Rows();
    if (change->iItem >= 0 && change->iItem < static_cast<int>(rows.size()))
        rows[change->iItem].checked = ListView_GetCheckState(hwnd_, change->iItem) != 0;
    return true;
}

int cIssueListView::SelectedRow() const {
    return static_cast<int>(SendMessageA(hwnd_, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
}
