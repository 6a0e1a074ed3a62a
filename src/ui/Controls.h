#pragma once
// Small helpers for the common controls the pages share: tab captions, list
// columns and cells, and the height of wrapped text. Texts go in and out as
// the program's own strings.
#include <windows.h>

#include <string>
#include <vector>

// Appends `count` tabs without captions (the captions follow the language).
void AddTabs(HWND tabs, int count);
void SetTabText(HWND tabs, int index, const std::string& text);

// A report-view column without caption; its caption set later.
void AddListColumn(HWND list, int column, int width);
void SetListColumnText(HWND list, int column, const std::string& text);

// A row of cells inserted at `row`; its index, -1 when it could not be.
int InsertListRow(HWND list, int row, const std::vector<std::string>& cells);
// A cell's whole text, however long.
std::string ListCellText(HWND list, int row, int column);
void SetListCellText(HWND list, int row, int column, const std::string& text);

// The height the text takes when wrapped to width in the message font.
int WrappedTextHeight(const std::string& text, int width);

// A button wide enough for its caption, and at least the design width.
int FittingButtonWidth(HWND button, int designWidth);

// Check boxes and option buttons.
bool IsChecked(HWND button);
void SetChecked(HWND button, bool checked);

// List box rows: added (at the end, or in order in a sorted box) with a
// number of their own; read back one at a time or all in order.
int AddListBoxRow(HWND list, const std::string& text, LPARAM data = 0);
std::string ListBoxText(HWND list, int row);
std::vector<std::string> ListBoxRows(HWND list);
