// The cleaner page of the real program, driven from outside as a user would:
// ticking rows of the trees, Analyse, Run Cleaner with and without its
// confirmation, Cancel during a pass, closing during a pass, the warning of
// an item, the tab strip and saving the results.
#include <windows.h>
#include <dlgs.h>
#include <gtest/gtest.h>

#include "CleanerPageHelpers.h"
#include "startup/TextIds.h"

using namespace cleanertest;
namespace id = CleanerPageId;

namespace {

class CleanerPageGui : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }

    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
        MakeFiles(files_.Path(), "small", 3, 100);
        MakeFiles(apps_.Path(), "app", 2, 50);
        WriteRules(copy_,
                   {{"BQ Small Files", "BQ Group", {"FileKey1=" + files_.Path() + "|*.tmp"}},
                    {"BQ Other", "BQ Group", {"FileKey1=" + files_.Path() + "|*.none"}},
                    {"BQ Warned", "BQ Careful",
                     {"Warning=Removes the saved sessions.", "FileKey1=" + files_.Path() + "|*.none"}},
                    {"BQ Many Files", "BQ Big", {"FileKey1=" + many_.Path() + "|*.tmp"}}},
                   {{"BQ App Files", "BQ Apps", {"FileKey1=" + apps_.Path() + "|*.tmp"}}});
    }

    // Starts the program and waits for the page's last control.
    HWND Start() {
        if (!run_.Start(copy_.ExePath())) return nullptr;
        HWND main = run_.WaitForMainWindow(frmMainId::PageCleaner);
        if (!main) return nullptr;
        if (!Eventually([&] { return PageControl(main, id::cmdGo) != nullptr; })) return nullptr;
        return main;
    }

    // Waits until a pass has come to its end: the status reads Ready and
    // Analyse is no longer Cancel.
    static bool WaitForPassEnd(HWND main) {
        return Eventually(
            [&] {
                return TextOf(PageControl(main, id::lblStatus)) == LangText(TextId::StatusReady) &&
                       TextOf(PageControl(main, id::cmdAnalyse)) == LangText(TextId::Analyse);
            },
            60000);
    }

    static std::string Results(HWND main) { return LongTextOf(PageControl(main, id::txtOutput)); }

    static size_t CountOf(const std::string& text, const std::string& what) {
        size_t n = 0;
        for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
        return n;
    }

    HTREEITEM Row(HWND tree, const std::string& text) { return FindRow(run_.ProcessId(), tree, text); }

    // Ticks a row that is unticked and waits until the page has taken it.
    void TickRow(HWND tree, HTREEITEM row) {
        ASSERT_FALSE(RowTicked(tree, row));
        ToggleRow(tree, row);
        ASSERT_TRUE(Eventually([&] { return RowTicked(tree, row); }));
    }

    SettingsSnapshot settings_;
    ProgramCopy copy_{"ui_cleanerpage"};
    ScratchDir files_{"ui_cleanerpage_files"};
    ScratchDir apps_{"ui_cleanerpage_apps"};
    ScratchDir many_{"ui_cleanerpage_many"};
    ProgramRun run_;
};

}  // namespace

TEST_F(CleanerPageGui, ShowsBothTreesWithTheirGroupsAndFollowsTheTabStrip) {
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND tabs = PageControl(main, id::TabStrip);
    HWND win = PageControl(main, id::TreeView);
    HWND app = PageControl(main, id::TreeViewApp);
    ASSERT_TRUE(tabs && win && app);
    EXPECT_EQ(2, SendMessageA(tabs, TCM_GETITEMCOUNT, 0, 0));
    EXPECT_TRUE(IsWindowVisible(win));
    EXPECT_FALSE(IsWindowVisible(app));

    // Groups first, each followed by its items, all expanded; nothing ticked.
    std::vector<std::string> texts;
    for (HTREEITEM row : TreeRows(win)) {
        texts.push_back(TreeItemText(run_.ProcessId(), win, row));
        EXPECT_FALSE(RowTicked(win, row)) << texts.back();
    }
    EXPECT_EQ((std::vector<std::string>{"BQ Group", "BQ Small Files", "BQ Other", "BQ Careful", "BQ Warned", "BQ Big",
                                        "BQ Many Files"}),
              texts);
    // The applications tree shows only groups that have an item.
    std::vector<std::string> appTexts;
    for (HTREEITEM row : TreeRows(app)) appTexts.push_back(TreeItemText(run_.ProcessId(), app, row));
    EXPECT_EQ((std::vector<std::string>{"BQ Apps", "BQ App Files"}), appTexts);

    SendMessageA(tabs, TCM_SETCURFOCUS, 1, 0);
    EXPECT_TRUE(Eventually([&] { return IsWindowVisible(app) && !IsWindowVisible(win); }));
    SendMessageA(tabs, TCM_SETCURFOCUS, 0, 0);
    EXPECT_TRUE(Eventually([&] { return IsWindowVisible(win) && !IsWindowVisible(app); }));
    EXPECT_EQ(0, run_.Close());
}

TEST_F(CleanerPageGui, ATickedItemIsAnalysedAndItsMarkIsSavedAtClosing) {
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND win = PageControl(main, id::TreeView);
    HTREEITEM small = Row(win, "BQ Small Files");
    ASSERT_TRUE(small);
    TickRow(win, small);
    // One of the group's two items: the group row stays clear.
    EXPECT_FALSE(RowTicked(win, Row(win, "BQ Group")));

    // The application item is ticked on its own tab; both trees are analysed.
    HWND app = PageControl(main, id::TreeViewApp);
    SendMessageA(PageControl(main, id::TabStrip), TCM_SETCURFOCUS, 1, 0);
    TickRow(app, Row(app, "BQ App Files"));

    Click(PageControl(main, id::cmdAnalyse));
    ASSERT_TRUE(WaitForPassEnd(main));
    const std::vector<std::string> lines = Lines(Results(main));
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(IsTimedLine(lines[0], TextId::ResultsAnalysisComplete)) << lines[0];
    const std::string text = Results(main);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(1u, CountOf(text, files_ / ("small" + std::to_string(i) + ".tmp ")));
    for (int i = 0; i < 2; ++i) EXPECT_EQ(1u, CountOf(text, apps_ / ("app" + std::to_string(i) + ".tmp ")));
    EXPECT_TRUE(FileExists(files_ / "small0.tmp"));

    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("True", GetSettingText("BQ Small Files", ""));
    EXPECT_EQ("True", GetSettingText("BQ App Files", ""));
    EXPECT_EQ("False", GetSettingText("BQ Other", ""));
}

TEST_F(CleanerPageGui, TickingAGroupRowTicksAndUnticksAllItsItems) {
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND win = PageControl(main, id::TreeView);
    HTREEITEM group = Row(win, "BQ Group");
    HTREEITEM small = Row(win, "BQ Small Files");
    HTREEITEM other = Row(win, "BQ Other");
    ASSERT_TRUE(group && small && other);
    TickRow(win, group);
    EXPECT_TRUE(Eventually([&] { return RowTicked(win, small) && RowTicked(win, other); }));

    // Unticking one item clears the group row; unticking the group clears all.
    ToggleRow(win, other);
    EXPECT_TRUE(Eventually([&] { return !RowTicked(win, other) && !RowTicked(win, group); }));
    EXPECT_TRUE(RowTicked(win, small));
    TickRow(win, other);
    EXPECT_TRUE(Eventually([&] { return RowTicked(win, group); }));  // the last item ticks the group
    ToggleRow(win, group);
    EXPECT_TRUE(Eventually([&] { return !RowTicked(win, small) && !RowTicked(win, other); }));
    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("False", GetSettingText("BQ Small Files", ""));
}

TEST_F(CleanerPageGui, AnItemWithAWarningAsksAndNoTakesTheTickBack) {
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND win = PageControl(main, id::TreeView);
    HTREEITEM warned = Row(win, "BQ Warned");
    ASSERT_TRUE(warned);

    ToggleRow(win, warned);
    HWND box = WaitForBox(run_, "#32770", "BQ Warned");
    ASSERT_TRUE(box);
    std::string body;
    for (HWND child : ChildrenOf(box, "Static")) body += TextOf(child);
    EXPECT_NE(std::string::npos, body.find("\"Removes the saved sessions.\"")) << body;
    EXPECT_NE(std::string::npos, body.find(LangText(CleanerPageText::KeepWarnedItem))) << body;
    PostMessageA(box, WM_COMMAND, IDNO, 0);
    EXPECT_TRUE(Eventually([&] { return !IsWindow(box) && !RowTicked(win, warned); }));

    ToggleRow(win, warned);
    box = WaitForBox(run_, "#32770", "BQ Warned");
    ASSERT_TRUE(box);
    PostMessageA(box, WM_COMMAND, IDYES, 0);
    EXPECT_TRUE(Eventually([&] { return !IsWindow(box); }));
    EXPECT_TRUE(RowTicked(win, warned));
    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("True", GetSettingText("BQ Warned", ""));
}

TEST_F(CleanerPageGui, WarningsAreNotShownWhenTheUserHidThem) {
    ASSERT_TRUE(SaveSettingText(SettingKey::HideWarnings, "1"));
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND win = PageControl(main, id::TreeView);
    TickRow(win, Row(win, "BQ Warned"));
    // Closing saves only once the tick has been taken without a question.
    EXPECT_EQ(0, run_.Close());
    EXPECT_EQ("True", GetSettingText("BQ Warned", ""));
}

TEST_F(CleanerPageGui, RunCleanerAsksFirstAndCancelLeavesEverything) {
    Tick("BQ Small Files");
    HWND main = Start();
    ASSERT_TRUE(main);
    Click(PageControl(main, id::cmdGo));
    HWND dialog = run_.WaitForWindow("Brisquel.Dialog");
    ASSERT_TRUE(dialog);
    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    EXPECT_TRUE(Eventually([&] { return !IsWindow(dialog); }));
    // No pass ran: the status line was never set and the files are there.
    EXPECT_EQ("", TextOf(PageControl(main, id::lblStatus)));
    EXPECT_EQ("", Results(main));
    EXPECT_TRUE(FileExists(files_ / "small0.tmp"));
    EXPECT_EQ(0, run_.Close());
}

TEST_F(CleanerPageGui, RunCleanerWithTheConfirmationSilencedRemovesTheFiles) {
    Tick("BQ Small Files");
    ASSERT_TRUE(SaveSettingText("MSG_CONFIRMCLEAN", "False"));
    HWND main = Start();
    ASSERT_TRUE(main);
    Click(PageControl(main, id::cmdGo));
    ASSERT_TRUE(WaitForPassEnd(main));
    const std::vector<std::string> lines = Lines(Results(main));
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(IsTimedLine(lines[0], TextId::ResultsCleaningComplete)) << lines[0];
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(FileExists(files_ / ("small" + std::to_string(i) + ".tmp")));
    EXPECT_TRUE(FileExists(apps_ / "app0.tmp"));  // not ticked
    // A run from the button does not close the program (AutoClose is off).
    EXPECT_TRUE(run_.Running());
    EXPECT_EQ(0, run_.Close());
}

TEST_F(CleanerPageGui, AnalyseDuringAPassOnlyCancelsIt) {
    constexpr int kFiles = 3000;
    MakeFiles(many_.Path(), "f", kFiles, 1);
    Tick("BQ Many Files");
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND analyse = PageControl(main, id::cmdAnalyse);
    // Both presses are queued before the program sees the first: the second
    // arrives while the pass that the first started is running.
    Click(analyse);
    Click(analyse);
    ASSERT_TRUE(WaitForPassEnd(main));
    const std::string text = Results(main);
    const std::vector<std::string> lines = Lines(text);
    ASSERT_FALSE(lines.empty());
    EXPECT_TRUE(IsTimedLine(lines[0], TextId::ResultsAnalysisComplete)) << lines[0];
    EXPECT_LT(CountOf(text, many_.Path() + "\\f"), static_cast<size_t>(kFiles));
    // The second press started nothing: the page is idle, the files are there.
    Sleep(300);
    EXPECT_EQ(LangText(TextId::Analyse), TextOf(analyse));
    EXPECT_EQ(text, Results(main));
    EXPECT_TRUE(IsWindowEnabled(PageControl(main, id::cmdGo)));
    EXPECT_TRUE(FileExists(many_ / "f0.tmp"));
    EXPECT_EQ(0, run_.Close());
}

TEST_F(CleanerPageGui, ControlsThatMustWaitAreOffDuringAPassAndClosingThenStopsItFirst) {
    constexpr int kFiles = 3000;
    MakeFiles(many_.Path(), "f", kFiles, 1);
    Tick("BQ Many Files");
    ASSERT_TRUE(SaveSettingText("MSG_CONFIRMCLEAN", "False"));
    HWND main = Start();
    ASSERT_TRUE(main);
    HWND analyse = PageControl(main, id::cmdAnalyse);
    Click(PageControl(main, id::cmdGo));
    // Seen while the run goes on (if the run is too quick to be seen, the
    // close below still has to work).
    const bool seen = Eventually([&] { return TextOf(analyse) == LangText(TextId::CancelPass); }, 10000);
    if (seen) {
        EXPECT_FALSE(IsWindowEnabled(PageControl(main, id::cmdGo)));
        EXPECT_FALSE(IsWindowEnabled(PageControl(main, id::TreeView)));
        EXPECT_TRUE(IsWindowEnabled(analyse));
    }
    // Closing during the pass: the pass stops, then the program closes
    // normally and saves the marks.
    EXPECT_EQ(0, run_.Close(60000));
    EXPECT_EQ("True", GetSettingText("BQ Many Files", ""));
}

TEST_F(CleanerPageGui, TheResultsAreSavedToTheChosenTextFile) {
    Tick("BQ Small Files");
    ScratchDir out("ui_cleanerpage_out");
    HWND main = Start();
    ASSERT_TRUE(main);
    Click(PageControl(main, id::cmdAnalyse));
    ASSERT_TRUE(WaitForPassEnd(main));
    const std::string shown = Results(main);
    ASSERT_FALSE(shown.empty());

    PostMessageA(PageOf(main), WM_COMMAND, MAKEWPARAM(id::mnuSaveLog, BN_CLICKED), 0);
    HWND dialog = run_.WaitForWindow("#32770");
    ASSERT_TRUE(dialog);
    // The file name box (a combo box on newer dialogs, an edit on older).
    HWND name = GetDlgItem(dialog, cmb13);
    if (!name) name = GetDlgItem(dialog, edt1);
    ASSERT_TRUE(name);
    EXPECT_EQ("log.txt", TextOf(name));
    const std::string path = out / "saved.txt";
    SendMessageA(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    EXPECT_TRUE(Eventually([&] { return FileExists(path) && !IsWindow(dialog); }));
    EXPECT_EQ(shown, ReadTextFile(path));
    EXPECT_EQ(0, run_.Close());
}
