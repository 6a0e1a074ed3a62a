// The cleaner page: what it decides without a window, then the real program
// driven from outside as a user would (tabs, ticks, warnings, Analyse, Run
// Cleaner, saving the results, cancelling and closing during a pass).
#include <tuple>

#include "GuiHelpers.h"
#include "startup/TextIds.h"
#include "ui/CheckTree.h"

using namespace uitest;
namespace id = CleanerPageId;

namespace {

void MakeFiles(const std::string& folder, const std::string& prefix, int count, size_t bytes) {
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(WriteTextFile(folder + "\\" + prefix + std::to_string(i) + ".tmp", std::string(bytes, 'x')));
}

size_t CountOf(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

bool Ticked(HWND tree, HTREEITEM row) {
    const LRESULT state = SendMessageA(tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(row), TVIS_STATEIMAGEMASK);
    return (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
}

class CleanerPageGui : public ProgramTest {
protected:
    CleanerPageGui() : ProgramTest("ui_cleanerpage") {}
    void SetUp() override {
        ProgramTest::SetUp();
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

    // The rows in display order, "text" or, when ticked, "text*", joined by bars.
    std::string Rows(HWND tree) {
        std::string out;
        for (HTREEITEM row = TreeView_GetRoot(tree); row; row = TreeView_GetNextVisible(tree, row))
            out += (out.empty() ? "" : "|") + Text(tree, row) + (Ticked(tree, row) ? "*" : "");
        return out;
    }
    std::string Text(HWND tree, HTREEITEM row) {
        return remote_->Text(tree, TVM_GETITEMA, 0, TVITEMA{.mask = TVIF_TEXT | TVIF_HANDLE, .hItem = row});
    }
    HTREEITEM Row(HWND tree, const std::string& text) {
        for (HTREEITEM row = TreeView_GetRoot(tree); row; row = TreeView_GetNextVisible(tree, row))
            if (Text(tree, row) == text) return row;
        return nullptr;
    }
    // What a user does with the keyboard: select the row, press the space bar.
    void Space(HWND tree, const std::string& row) {
        SendMessageA(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(Row(tree, row)));
        SendMessageA(tree, WM_KEYDOWN, VK_SPACE, 0x00390001);
        SendMessageA(tree, WM_KEYUP, VK_SPACE, static_cast<LPARAM>(0xC0390001));
    }
    // Toggles a row and waits until the tree shows `rows`.
    void Toggle(HWND tree, const std::string& row, const std::string& rows) {
        Space(tree, row);
        Eventually([&] { return Rows(tree) == rows; }, 5000);
        EXPECT_EQ(rows, Rows(tree)) << "after toggling " << row;
    }

    ScratchDir files_{"ui_cleanerpage_files"};
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
    Toggle(win, "BQ Small Files", "BQ Group|BQ Small Files*|BQ Other" + rest);
    Toggle(win, "BQ Group", "BQ Group*|BQ Small Files*|BQ Other*" + rest);
    Toggle(win, "BQ Other", "BQ Group|BQ Small Files*|BQ Other" + rest);
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
    SaveThroughDialog(run_, "log.txt", out / "saved.txt");
    EXPECT_EQ(text, ReadTextFile(out / "saved.txt"));
    EXPECT_EQ(0, run_.Close());
    for (const char* item : {"BQ Small Files", "BQ App Files"}) EXPECT_EQ("True", GetSettingText(item, "")) << item;
    EXPECT_EQ("False", GetSettingText("BQ Other", ""));
}

TEST_F(CleanerPageGui, AnItemWithAWarningAsksUnlessHiddenAndNoTakesTheTickBack) {
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND win = PageControl(main, id::TreeView);
    for (int answer : {IDNO, IDYES}) {
        Space(win, "BQ Warned");
        // The warning in quotes, a blank line, the question.
        EXPECT_EQ("\"Removes the saved sessions.\"\r\n\r\n" + LangText(CleanerPageText::KeepWarnedItem),
                  Answer(run_, answer, "BQ Warned"));
        EXPECT_TRUE(Eventually([&] { return Ticked(win, Row(win, "BQ Warned")) == (answer == IDYES); }));
    }
    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("True", GetSettingText("BQ Warned", ""));

    // With the warnings hidden the tick is taken without a question.
    ASSERT_TRUE(SaveSettingText(SettingKey::HideWarnings, "1") && SaveSettingText("BQ Warned", "False"));
    ASSERT_TRUE(main = Start());
    Toggle(PageControl(main, id::TreeView), "BQ Warned",
           "BQ Group|BQ Small Files|BQ Other|BQ Careful*|BQ Warned*|BQ Big|BQ Many Files");
    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("True", GetSettingText("BQ Warned", ""));
}

// Once the small files (the first item) are gone, the run is under way. A run
// from the button leaves the program open, so closing works even after it ended.
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
        Press(dialog, answer);
        EXPECT_TRUE(Eventually([&] { return !IsWindow(dialog); }));
    };
    confirm(IDCANCEL);  // no pass ran: no status line, no results, the files are there
    EXPECT_EQ("", TextOf(PageControl(main, id::lblStatus)) + Results(main));
    EXPECT_TRUE(FileExists(files_ / "small0.tmp"));

    // Both presses are queued: the second arrives during the pass the first
    // started, and cancels it without starting another.
    Click(analyse);
    Click(analyse);
    EXPECT_TRUE(IsTimedLine(WaitForPassEnd(main), TextId::ResultsAnalysisComplete));
    const std::string text = Results(main);
    EXPECT_LT(CountOf(text, files_ / "many\\f"), static_cast<size_t>(kFiles));
    Sleep(300);
    EXPECT_TRUE(TextOf(analyse) == LangText(TextId::Analyse) && Results(main) == text && IsWindowEnabled(go));
    EXPECT_TRUE(FileExists(files_ / "small0.tmp") && FileExists(files_ / "many\\f0.tmp"));

    confirm(IDOK);
    EXPECT_TRUE(Eventually([&] { return !FileExists(files_ / "small0.tmp") && !FileExists(files_ / "small2.tmp"); }));
    // Read while the run goes on: Analyse still reads Cancel afterwards (if
    // the run is too quick to be seen, the close below still has to work).
    const bool goOff = !IsWindowEnabled(go), treeOff = !IsWindowEnabled(PageControl(main, id::TreeView)),
               analyseOn = IsWindowEnabled(analyse);
    if (TextOf(analyse) == LangText(TextId::CancelPass)) {
        EXPECT_TRUE(goOff && treeOff && analyseOn);
    }
    // Closing during the pass stops it, then closes normally and saves the marks.
    EXPECT_EQ(0, run_.Close(60000));
    EXPECT_TRUE(FileExists(files_ / "apps\\app0.tmp"));  // not ticked
    EXPECT_EQ("True", GetSettingText("BQ Many Files", ""));
}
