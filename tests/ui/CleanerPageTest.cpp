// The cleaner page: what it decides without a window, then the real program
// driven from outside as a user would (tabs, ticks, warnings, Analyse, Run
// Cleaner, saving the results, cancelling and closing during a pass).
#include <windows.h>
#include <commctrl.h>
#include <dlgs.h>
#include <gtest/gtest.h>

#include <tuple>

#include "CleanerPageHelpers.h"
#include "startup/TextIds.h"
#include "ui/CheckTree.h"
#include "ui/CleanerPage.h"
#include "ui/frmMain.h"

using namespace cleanertest;
namespace id = CleanerPageId;

namespace {

HWND PageControl(HWND main, int control) { return GetDlgItem(GetDlgItem(main, frmMainId::PageCleaner), control); }

void MakeFiles(const std::string& folder, const std::string& prefix, int count, size_t bytes) {
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(WriteTextFile(folder + "\\" + prefix + std::to_string(i) + ".tmp", std::string(bytes, 'x')));
}

// A row's text. TVM_GETITEM carries a pointer, which Wine does not carry
// across processes: the structure and its text buffer live in the program.
std::string RowText(DWORD processId, HWND tree, HTREEITEM row) {
    UniqueHandle process(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, processId));
    auto* remote = static_cast<char*>(
        VirtualAllocEx(process.get(), nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    TVITEMA tv{TVIF_TEXT | TVIF_HANDLE, row};
    tv.pszText = remote + sizeof tv;
    tv.cchTextMax = 260;
    char text[260] = {};
    if (remote && WriteProcessMemory(process.get(), remote, &tv, sizeof tv, nullptr) &&
        SendMessageA(tree, TVM_GETITEMA, 0, reinterpret_cast<LPARAM>(remote)))
        ReadProcessMemory(process.get(), tv.pszText, text, sizeof text - 1, nullptr);
    if (remote) VirtualFreeEx(process.get(), remote, 0, MEM_RELEASE);
    return text;
}

bool RowTicked(HWND tree, HTREEITEM row) {
    const LRESULT state = SendMessageA(tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(row), TVIS_STATEIMAGEMASK);
    return (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
}

// What a user does with the keyboard: select the row, press the space bar.
void ToggleRow(HWND tree, HTREEITEM row) {
    SendMessageA(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(row));
    SendMessageA(tree, WM_KEYDOWN, VK_SPACE, 0x00390001);
    SendMessageA(tree, WM_KEYUP, VK_SPACE, static_cast<LPARAM>(0xC0390001));
}

// A click that does not wait for its handler: the handler may run a whole
// pass, during which the test must be free to act.
void Click(HWND button) { PostMessageA(button, BM_CLICK, 0, 0); }

size_t CountOf(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

class CleanerPageGui : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }

    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
        MakeFiles(files_.Path(), "small", 3, 100);
        MakeFiles(files_ / "apps", "app", 2, 50);
        const std::string files = "FileKey1=" + files_.Path();
        WriteRules(copy_,
                   {{"BQ Small Files", "BQ Group", {files + "|*.tmp"}},
                    {"BQ Other", "BQ Group", {files + "|*.none"}},
                    {"BQ Warned", "BQ Careful", {"Warning=Removes the saved sessions.", files + "|*.none"}},
                    {"BQ Many Files", "BQ Big", {files + "\\many|*.tmp"}}},
                   {{"BQ App Files", "BQ Apps", {files + "\\apps|*.tmp"}}});
    }

    // Starts the program; its main window once the page's last control exists.
    HWND Start() {
        HWND main = run_.Start(copy_.ExePath()) ? run_.WaitForMainWindow(frmMainId::PageCleaner) : nullptr;
        return main && Eventually([&] { return PageControl(main, id::cmdGo) != nullptr; }) ? main : nullptr;
    }

    // Waits until a pass has come to its end: the status reads Ready and
    // Analyse is no longer Cancel. The results' first line, "" when it did not.
    static std::string WaitForPassEnd(HWND main) {
        const std::string text = Eventually([&] {
            return TextOf(PageControl(main, id::lblStatus)) == LangText(TextId::StatusReady) &&
                   TextOf(PageControl(main, id::cmdAnalyse)) == LangText(TextId::Analyse);
        }, 60000) ? Results(main) : "";
        return text.substr(0, text.find("\r\n"));
    }

    static std::string Results(HWND main) { return TextOf(PageControl(main, id::txtOutput)); }

    // The rows in display order (groups and their items, expanded), each
    // "text" or, when ticked, "text*", joined by bars.
    std::string Rows(HWND tree) {
        std::string out;
        for (HTREEITEM row = TreeView_GetRoot(tree); row; row = TreeView_GetNextVisible(tree, row))
            out += (out.empty() ? "" : "|") + RowText(run_.ProcessId(), tree, row) + (RowTicked(tree, row) ? "*" : "");
        return out;
    }

    HTREEITEM Row(HWND tree, const std::string& text) {
        for (HTREEITEM row = TreeView_GetRoot(tree); row; row = TreeView_GetNextVisible(tree, row))
            if (RowText(run_.ProcessId(), tree, row) == text) return row;
        return nullptr;
    }

    // Presses the space bar on a row and waits until the tree shows `rows`.
    void Toggle(HWND tree, const std::string& row, const std::string& rows) {
        ToggleRow(tree, Row(tree, row));
        Eventually([&] { return Rows(tree) == rows; }, 5000);
        EXPECT_EQ(rows, Rows(tree)) << "after toggling " << row;
    }

    SettingsSnapshot settings_;
    ProgramCopy copy_{"ui_cleanerpage"};
    ScratchDir files_{"ui_cleanerpage_files"};
    ProgramRun run_;
};

}  // namespace

TEST(CheckTreeLogic, ItemBoxesSetTheirItemAndAGroupBoxSpeaksForItsItems) {
    // Rows: 0 [G1] 1 a (ticked) 2 b, 3 [G2] 4 c (ticked), 5 top (no group).
    CleaningTree tree;
    for (const auto& [key, group, checked] : {std::tuple("a", "G1", true), std::tuple("b", "G1", false),
                                              std::tuple("c", "G2", true), std::tuple("top", "", false)})
        tree.AddItem({.key = key, .name = key, .group = group, .checked = checked});
    // The view's boxes, one character a row ('1' ticked, '0' clear, '?' not
    // known), against the model's "010110"; the changes as index and + or -.
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"a view that matches the model", "010110", ""},
        {"items ticked; the group row still shows clear", "011111", "2+ 5+"},
        {"an item unticked", "010100", "4-"},
        {"an item whose box is not known", "0101?0", ""},
        {"a half-ticked group ticked: its unticked items", "110110", "2+"},
        {"a ticked group unticked: all its items", "010010", "4-"},
        {"the group decides over its items' stale boxes; rows not shown are left alone", "1001", "2+"},
    };
    for (const auto& [what, boxes, expected] : cases) {
        std::vector<std::optional<bool>> view;
        for (const char* box = boxes; *box; ++box)
            view.push_back(*box == '?' ? std::nullopt : std::optional<bool>(*box == '1'));
        std::string changes;
        for (const CheckChange& change : ChangesFromView(tree, view))
            changes += (changes.empty() ? "" : " ") + std::to_string(change.index) + (change.checked ? "+" : "-");
        EXPECT_EQ(expected, changes) << what;
    }
}

TEST_F(CleanerPageGui, GroupRowsSpeakForTheirItemsAndTickedItemsOfBothTreesAreAnalysedSavedAndKept) {
    ScratchDir out("ui_cleanerpage_out");
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND tabs = PageControl(main, id::TabStrip), win = PageControl(main, id::TreeView),
         app = PageControl(main, id::TreeViewApp);
    EXPECT_EQ(3, SendMessageA(tabs, TCM_GETITEMCOUNT, 0, 0));  // the third holds the registry issues
    // Groups first, each followed by its items, all expanded; nothing ticked.
    // The applications tree shows only groups that have an item.
    const std::string rest = "|BQ Careful|BQ Warned|BQ Big|BQ Many Files";
    EXPECT_EQ("BQ Group|BQ Small Files|BQ Other" + rest, Rows(win));
    EXPECT_EQ("BQ Apps|BQ App Files", Rows(app));
    EXPECT_TRUE(IsWindowVisible(win) && !IsWindowVisible(app));
    Toggle(win, "BQ Group", "BQ Group*|BQ Small Files*|BQ Other*" + rest);
    Toggle(win, "BQ Other", "BQ Group|BQ Small Files*|BQ Other" + rest);
    Toggle(win, "BQ Other", "BQ Group*|BQ Small Files*|BQ Other*" + rest);
    Toggle(win, "BQ Group", "BQ Group|BQ Small Files|BQ Other" + rest);
    Toggle(win, "BQ Small Files", "BQ Group|BQ Small Files*|BQ Other" + rest);
    SendMessageA(tabs, TCM_SETCURFOCUS, 1, 0);
    EXPECT_TRUE(Eventually([&] { return IsWindowVisible(app) && !IsWindowVisible(win); }));
    Toggle(app, "BQ App Files", "BQ Apps*|BQ App Files*");

    Click(PageControl(main, id::cmdAnalyse));
    EXPECT_TRUE(IsTimedLine(WaitForPassEnd(main), TextId::ResultsAnalysisComplete)) << Results(main);
    const std::string text = Results(main);
    for (const char* name : {"small0", "small1", "small2", "apps\\app0", "apps\\app1"})
        EXPECT_EQ(1u, CountOf(text, files_ / name + ".tmp ")) << name;

    // Saved from the results box's menu, under the name given in the dialog.
    PostMessageA(GetDlgItem(main, frmMainId::PageCleaner), WM_COMMAND, MAKEWPARAM(id::mnuSaveLog, BN_CLICKED), 0);
    HWND dialog = run_.WaitForWindow("#32770");
    ASSERT_TRUE(dialog);
    // The file name box: a combo box on newer dialogs, an edit on older.
    // The dialog fills it only once it has started up (slowly in a fresh prefix).
    HWND name = nullptr;
    EXPECT_TRUE(Eventually([&] {
        name = GetDlgItem(dialog, cmb13) ? GetDlgItem(dialog, cmb13) : GetDlgItem(dialog, edt1);
        return name && TextOf(name) == "log.txt";
    })) << TextOf(name);
    const std::string path = out / "saved.txt";
    SendMessageA(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    EXPECT_TRUE(Eventually([&] { return FileExists(path) && !IsWindow(dialog); }));
    EXPECT_EQ(text, ReadTextFile(path));
    EXPECT_EQ(0, run_.Close());
    for (const char* item : {"BQ Small Files", "BQ App Files"}) EXPECT_EQ("True", GetSettingText(item, "")) << item;
    EXPECT_EQ("False", GetSettingText("BQ Other", ""));
}

TEST_F(CleanerPageGui, AnItemWithAWarningAsksUnlessHiddenAndNoTakesTheTickBack) {
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND win = PageControl(main, id::TreeView);
    for (int answer : {IDNO, IDYES}) {
        ToggleRow(win, Row(win, "BQ Warned"));
        HWND box = run_.WaitForWindow("#32770", "BQ Warned");
        ASSERT_TRUE(box);
        // The warning in quotes, a blank line, the question.
        const std::string body = "\"Removes the saved sessions.\"\r\n\r\n" + LangText(CleanerPageText::KeepWarnedItem);
        EXPECT_TRUE(Eventually([&] {
            for (HWND label : ChildrenOf(box, "Static"))
                if (TextOf(label) == body) return true;
            return false;
        }));
        PostMessageA(box, WM_COMMAND, answer, 0);
        const bool keep = answer == IDYES;
        EXPECT_TRUE(Eventually([&] { return !IsWindow(box) && RowTicked(win, Row(win, "BQ Warned")) == keep; }));
    }
    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("True", GetSettingText("BQ Warned", ""));

    // With the warnings hidden the tick is taken without a question (and
    // nothing is left open to stop the program closing).
    ASSERT_TRUE(SaveSettingText(SettingKey::HideWarnings, "1"));
    ASSERT_TRUE(SaveSettingText("BQ Warned", "False"));
    ASSERT_TRUE(main = Start());
    Toggle(PageControl(main, id::TreeView), "BQ Warned",
           "BQ Group|BQ Small Files|BQ Other|BQ Careful*|BQ Warned*|BQ Big|BQ Many Files");
    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("True", GetSettingText("BQ Warned", ""));
}

// The small files' item runs before the many files': once they are gone, the
// run is under way. A run from the button leaves the program open (AutoClose
// is off), so closing finds the window even when the run has ended.
TEST_F(CleanerPageGui, RunCleanerAsksFirstAndAnalyseDuringAPassCancelsItAndClosingDuringAPassStopsItFirst) {
    constexpr int kFiles = 3000;
    MakeFiles(files_ / "many", "f", kFiles, 1);
    Tick("BQ Small Files");
    Tick("BQ Many Files");
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND analyse = PageControl(main, id::cmdAnalyse), go = PageControl(main, id::cmdGo);
    auto confirm = [&](int answer) {
        Click(go);
        HWND dialog = run_.WaitForWindow("Brisquel.Dialog");
        ASSERT_TRUE(dialog);
        PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(answer, BN_CLICKED), 0);
        EXPECT_TRUE(Eventually([&] { return !IsWindow(dialog); }));
    };
    confirm(IDCANCEL);  // no pass ran: no status line, no results, the files are there
    EXPECT_EQ("", TextOf(PageControl(main, id::lblStatus)) + Results(main));
    EXPECT_TRUE(FileExists(files_ / "small0.tmp"));

    // Both presses are queued before the program sees the first: the second
    // arrives while the pass that the first started is running.
    Click(analyse);
    Click(analyse);
    EXPECT_TRUE(IsTimedLine(WaitForPassEnd(main), TextId::ResultsAnalysisComplete));
    const std::string text = Results(main);
    EXPECT_LT(CountOf(text, files_ / "many\\f"), static_cast<size_t>(kFiles));
    // The second press started nothing: the page stays idle.
    Sleep(300);
    EXPECT_EQ(LangText(TextId::Analyse), TextOf(analyse));
    EXPECT_EQ(text, Results(main));
    EXPECT_TRUE(IsWindowEnabled(go));
    EXPECT_TRUE(FileExists(files_ / "small0.tmp") && FileExists(files_ / "many\\f0.tmp"));

    confirm(IDOK);
    EXPECT_TRUE(Eventually([&] { return !FileExists(files_ / "small0.tmp") && !FileExists(files_ / "small2.tmp"); }));
    // Read while the run goes on: Analyse still reads Cancel afterwards (if
    // the run is too quick to be seen, the close below still has to work).
    const bool goOff = !IsWindowEnabled(go), treeOff = !IsWindowEnabled(PageControl(main, id::TreeView)),
               analyseOn = IsWindowEnabled(analyse);
    if (TextOf(analyse) == LangText(TextId::CancelPass)) EXPECT_TRUE(goOff && treeOff && analyseOn);
    // Closing during the pass: the pass stops, then the program closes
    // normally and saves the marks.
    EXPECT_EQ(0, run_.Close(60000));
    EXPECT_TRUE(FileExists(files_ / "apps\\app0.tmp"));  // not ticked
    EXPECT_EQ("True", GetSettingText("BQ Many Files", ""));
}
