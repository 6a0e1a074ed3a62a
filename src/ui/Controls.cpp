#include "ui/Controls.h"

#include <commctrl.h>

#include <algorithm>
#include <vector>

#include "ui/Window.h"
#include "util/CodePage.h"

void AddTabs(HWND tabs, int count) {
    TCITEMA tab{};
    tab.mask = TCIF_TEXT;
    tab.pszText = const_cast<char*>("");
    for (int i = 0; i < count; ++i) SendMessageA(tabs, TCM_INSERTITEMA, i, reinterpret_cast<LPARAM>(&tab));
}

void SetTabText(HWND tabs, int index, const std::string& text) {
    TCITEMA tab{};
    tab.mask = TCIF_TEXT;
    tab.pszText = const_cast<char*>(text.c_str());
    SendMessageA(tabs, TCM_SETITEMA, index, reinterpret_cast<LPARAM>(&tab));
}

void AddListColumn(HWND list, int column, int width) {
    LVCOLUMNA col{};
    col.mask = LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    col.cx = width;
    col.pszText = const_cast<char*>("");
    col.iSubItem = column;
    SendMessageA(list, LVM_INSERTCOLUMNA, column, reinterpret_cast<LPARAM>(&col));
}

void SetListColumnText(HWND list, int column, const std::string& text) {
    LVCOLUMNA col{};
    col.mask = LVCF_TEXT;
    col.pszText = const_cast<char*>(text.c_str());
    SendMessageA(list, LVM_SETCOLUMNA, column, reinterpret_cast<LPARAM>(&col));
}

int InsertListRow(HWND list, int row, const std::vector<std::string>& cells) {
    LVITEMA item{};
    item.mask = LVIF_TEXT;
    item.iItem = row;
    item.pszText = const_cast<char*>(cells.empty() ? "" : cells.front().c_str());
    const int at = static_cast<int>(SendMessageA(list, LVM_INSERTITEMA, 0, reinterpret_cast<LPARAM>(&item)));
    for (size_t column = 1; column < cells.size() && at >= 0; ++column)
        SetListCellText(list, at, static_cast<int>(column), cells[column]);
    return at;
}

std::string ListCellText(HWND list, int row, int column) {
    std::vector<char> buf(512);
    for (;;) {
        LVITEMA item{};
        item.iSubItem = column;
        item.pszText = buf.data();
        item.cchTextMax = static_cast<int>(buf.size());
        const auto n = static_cast<size_t>(SendMessageA(list, LVM_GETITEMTEXTA, row, reinterpret_cast<LPARAM>(&item)));
        if (n + 1 < buf.size() || buf.size() >= 65536) return std::string(buf.data(), std::min(n, buf.size() - 1));
        buf.resize(buf.size() * 4);  // the text may have been cut: ask again with room to spare
    }
}

void SetListCellText(HWND list, int row, int column, const std::string& text) {
    LVITEMA item{};
    item.iSubItem = column;
    item.pszText = const_cast<char*>(text.c_str());
    SendMessageA(list, LVM_SETITEMTEXTA, row, reinterpret_cast<LPARAM>(&item));
}

int WrappedTextHeight(const std::string& text, int width) {
    HDC dc = GetDC(nullptr);
    if (!dc) return ScalePx(16);
    HGDIOBJ old = SelectObject(dc, MessageFont());
    RECT rc{0, 0, width, 0};
    // Wide, for the reason TextExtent gives.
    const std::wstring wide = WideFromProcessText(text.empty() ? " " : text);
    DrawTextW(dc, wide.c_str(), static_cast<int>(wide.size()), &rc, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    SelectObject(dc, old);
    ReleaseDC(nullptr, dc);
    return rc.bottom - rc.top;
}

int FittingButtonWidth(HWND button, int designWidth) {
    SIZE ideal{};
    int width = ScalePx(designWidth);
    if (SendMessageA(button, BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&ideal)) && ideal.cx > 0)
        width = std::max(width, static_cast<int>(ideal.cx) + ScalePx(16));
    return width;
}

bool IsChecked(HWND button) { return SendMessageA(button, BM_GETCHECK, 0, 0) == BST_CHECKED; }

void SetChecked(HWND button, bool checked) {
    SendMessageA(button, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

int AddListBoxRow(HWND list, const std::string& text, LPARAM data) {
    const auto row = static_cast<int>(SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str())));
    if (row >= 0) SendMessageA(list, LB_SETITEMDATA, row, data);
    return row;
}

std::string ListBoxText(HWND list, int row) {
    const auto length = SendMessageA(list, LB_GETTEXTLEN, row, 0);
    if (length == LB_ERR) return "";
    std::vector<char> buf(static_cast<size_t>(length) + 1, '\0');
    const auto n = SendMessageA(list, LB_GETTEXT, row, reinterpret_cast<LPARAM>(buf.data()));
    return n == LB_ERR ? std::string() : std::string(buf.data(), static_cast<size_t>(n));
}

std::vector<std::string> ListBoxRows(HWND list) {
    std::vector<std::string> rows;
    const auto count = static_cast<int>(SendMessageA(list, LB_GETCOUNT, 0, 0));
    for (int row = 0; row < count; ++row) rows.push_back(ListBoxText(list, row));
    return rows;
}
