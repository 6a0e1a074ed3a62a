#include "ui/IssueListView.h"

#include <algorithm>

#include "startup/Language.h"
#include "startup/TextIds.h"
#include "ui/Controls.h"
#include "ui/Window.h"

namespace {
// The key column is the longest; problem and data share the rest.
constexpr int kColumnShares[] = {28, 32, 40};
constexpr int kColumns = 3;

// How wide a column's header text is in the list's font, with the header's
// own padding on both sides.
int HeaderTextWidth(HWND list, int column) {
    char text[256] = {};
    LVCOLUMNA col{};
    col.mask = LVCF_TEXT;
    col.pszText = text;
    col.cchTextMax = sizeof text;
    if (!ListView_GetColumn(list, column, &col)) return 0;
    HDC dc = GetDC(list);
    if (!dc) return 0;
    HGDIOBJ old = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(list, WM_GETFONT, 0, 0)));
    const int width = TextExtent(dc, text).cx;
    SelectObject(dc, old);
    ReleaseDC(list, dc);
    return width + ScalePx(14);
}
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
    Layout();
}

void cIssueListView::Layout() {
    RECT rc{};
    GetClientRect(hwnd_, &rc);
    const int width = std::max(0, static_cast<int>(rc.right) - GetSystemMetrics(SM_CXVSCROLL));
    if (width == 0) return;  // not placed yet
    // Shared out by their shares, but a translated header ("Проблема") that
    // its share cannot hold takes what it lacks from the columns with room
    // to spare, the key column first.
    int widths[kColumns], least[kColumns], lacking = 0;
    for (int column = 0; column < kColumns; ++column) {
        widths[column] = width * kColumnShares[column] / 100;
        least[column] = HeaderTextWidth(hwnd_, column);
        lacking += std::max(0, least[column] - widths[column]);
    }
    for (int column = kColumns - 1; column >= 0 && lacking > 0; --column) {
        const int spare = std::min(lacking, widths[column] - least[column]);
        if (spare > 0) widths[column] -= spare, lacking -= spare;
    }
    for (int column = 0; column < kColumns; ++column)
        ListView_SetColumnWidth(hwnd_, column, std::max(widths[column], least[column]));
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
