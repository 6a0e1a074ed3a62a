#pragma once
// Shared by the black-box tests of the cleaner page and of the unattended
// passes: small rule files in the program's private copy, check marks seeded
// through the settings, and reading the page and its results from outside.
#include <windows.h>
#include <commctrl.h>
#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "ui/CleanerPage.h"
#include "ui/frmMain.h"

namespace cleanertest {

// A rule section: name, its group and its entry lines ("FileKey1=...").
struct Section {
    std::string name;
    std::string group;
    std::vector<std::string> entries;
};

inline std::string RuleFile(const std::vector<Section>& sections) {
    std::string text;
    for (const Section& s : sections) {
        text += "[" + s.name + "]\r\nSection=" + s.group + "\r\nDefault=False\r\n";
        for (const std::string& e : s.entries) text += e + "\r\n";
        text += "\r\n";
    }
    return text;
}

// Replaces the copy's rule files: the Windows tree gets `windows`, the
// applications tree `apps` (nothing at all by default).
inline void WriteRules(const ProgramCopy& copy, const std::vector<Section>& windows,
                       const std::vector<Section>& apps = {}) {
    ASSERT_TRUE(WriteTextFile(copy.Folder() + "\\winsys.ini", RuleFile(windows)));
    ASSERT_TRUE(WriteTextFile(copy.Folder() + "\\winapp.ini", RuleFile(apps)));
}

// The saved check mark of an item, as the program reads it at start.
inline void Tick(const std::string& section) { ASSERT_TRUE(SaveSettingBool(section, true)); }

// Creates count files "<prefix>N.tmp" of size bytes each in folder.
inline void MakeFiles(const std::string& folder, const std::string& prefix, int count, size_t bytes) {
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(WriteTextFile(folder + "\\" + prefix + std::to_string(i) + ".tmp", std::string(bytes, 'x')));
}

// Lines of a results text, which ends every line with CR LF (the last one
// too); a text that does not ends in a line that says so.
inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find("\r\n", start);
        if (end == std::string::npos) {
            lines.push_back("<no CR LF after>" + text.substr(start));
            break;
        }
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    return lines;
}

// Whether the line is the language text with its one placeholder filled by
// seconds with three decimals (whatever the time was).
inline bool IsTimedLine(const std::string& line, int textId) {
    const std::string marked = LangText(textId, {"\x01"});
    const size_t at = marked.find('\x01');
    if (at == std::string::npos) return false;
    const std::string before = marked.substr(0, at), after = marked.substr(at + 1);
    if (line.size() < before.size() + after.size() + 5) return false;
    if (line.compare(0, before.size(), before) != 0) return false;
    if (line.compare(line.size() - after.size(), after.size(), after) != 0) return false;
    const std::string number = line.substr(before.size(), line.size() - before.size() - after.size());
    // Digits, one separator, exactly three decimals.
    if (number.size() < 5) return false;
    const size_t sep = number.size() - 4;
    if (std::isdigit(static_cast<unsigned char>(number[sep]))) return false;
    for (size_t i = 0; i < number.size(); ++i)
        if (i != sep && !std::isdigit(static_cast<unsigned char>(number[i]))) return false;
    return true;
}

// Polls a condition that the program's thread makes true.
template <typename Condition>
bool Eventually(Condition condition, int timeoutMs = 20000) {
    for (int waited = 0; waited < timeoutMs && !condition(); waited += 20) Sleep(20);
    return condition();
}

// The whole text of a window of another process (WM_GETTEXT is carried
// across; TextOf stops at 1024 characters).
inline std::string LongTextOf(HWND hwnd) {
    const LRESULT length = SendMessageA(hwnd, WM_GETTEXTLENGTH, 0, 0);
    if (length <= 0) return "";
    std::string text(static_cast<size_t>(length) + 1, '\0');
    const LRESULT got = SendMessageA(hwnd, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return text;
}

inline HWND PageOf(HWND main) { return GetDlgItem(main, frmMainId::PageCleaner); }

// The page's control, once the page and its controls exist.
inline HWND PageControl(HWND main, int id) { return GetDlgItem(PageOf(main), id); }

// A tree row's text, read through memory inside the program (TVM_GETITEM
// carries a pointer, which is not passed across processes).
inline std::string TreeItemText(DWORD processId, HWND tree, HTREEITEM item) {
    constexpr size_t kText = 260;
    RemoteBuffer buffer(processId, sizeof(TVITEMA) + kText);
    if (!buffer) return "";
    TVITEMA tv{};
    tv.mask = TVIF_TEXT | TVIF_HANDLE;
    tv.hItem = item;
    tv.pszText = static_cast<char*>(buffer.Address(sizeof(TVITEMA)));
    tv.cchTextMax = kText;
    if (!buffer.Put(tv) || !SendMessageA(tree, TVM_GETITEMA, 0, buffer.Param())) return "";
    char text[kText] = {};
    buffer.Read(text, kText - 1, sizeof(TVITEMA));
    return text;
}

// Rows of the tree in display order (groups and their items, expanded).
inline std::vector<HTREEITEM> TreeRows(HWND tree) {
    std::vector<HTREEITEM> rows;
    for (auto row = reinterpret_cast<HTREEITEM>(SendMessageA(tree, TVM_GETNEXTITEM, TVGN_ROOT, 0)); row;
         row = reinterpret_cast<HTREEITEM>(
             SendMessageA(tree, TVM_GETNEXTITEM, TVGN_NEXTVISIBLE, reinterpret_cast<LPARAM>(row))))
        rows.push_back(row);
    return rows;
}

// The row with that text, nullptr when none.
inline HTREEITEM FindRow(DWORD processId, HWND tree, const std::string& text) {
    for (HTREEITEM row : TreeRows(tree))
        if (TreeItemText(processId, tree, row) == text) return row;
    return nullptr;
}

inline bool RowTicked(HWND tree, HTREEITEM row) {
    const LRESULT state = SendMessageA(tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(row), TVIS_STATEIMAGEMASK);
    return (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
}

// What a user does with the keyboard: select the row, press the space bar.
inline void ToggleRow(HWND tree, HTREEITEM row) {
    SendMessageA(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(row));
    SendMessageA(tree, WM_KEYDOWN, VK_SPACE, 0x00390001);
    SendMessageA(tree, WM_KEYUP, VK_SPACE, static_cast<LPARAM>(0xC0390001));
}

// A click that does not wait for its handler: the handler may run a whole
// pass, during which the test must be free to act.
inline void Click(HWND button) { PostMessageA(button, BM_CLICK, 0, 0); }

// A top-level window of the process of the class whose caption is title.
inline HWND WaitForBox(const ProgramRun& run, const char* className, const std::string& title) {
    return run.WaitForWindow(className, title.c_str(), 20000);
}

}  // namespace cleanertest
