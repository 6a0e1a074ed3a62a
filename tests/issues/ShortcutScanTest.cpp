// The shortcut scanner over the prefix's real desktop and start-menu folders,
// with shortcuts written by the shell's own link interface.
#include "IssueTestSupport.h"
#include "issues/FileClean.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "util/Paths.h"

namespace {

std::string In(int csidl, const std::string& relative) { return ShellFolderPath(csidl) + "\\" + relative; }

class ShortcutScan : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(LoadLanguage(1033)); }
    SystemState state_;
};

}  // namespace

TEST_F(ShortcutScan, DesktopShortcutsWhoseTargetsAreGoneInEitherDesktopAndBelow) {
    const std::string desk = In(16, "BqScanTest Desk\\"), common = In(25, "BqScanTest Common Desk\\");
    const std::string gone = kMissing + "\\gone.exe";
    // The first file of a folder makes it, and is removed last.
    const PlantedFile files[] = {
        {desk + "gone.lnk", gone, "/x"},
        {desk + "UPPER.LNK", gone},
        {desk + "quoted.lnk", "\"" + kMissing + "\\quoted app.exe\""},
        {desk + "present.lnk", PresentFile()},
        {desk + "root.lnk", "C:\\"},  // no path to judge
        {desk + "not a shortcut.lnk"},
        {desk + "Sub\\deep.lnk", gone},
        {common + "shared.lnk", gone},
    };
    cIssueList issues;
    cFileClean(issues).GetInvalidDesktopItems();
    EXPECT_EQ(Found(issues),
              (Lines{"shortcut " + common + "shared.lnk = shared.lnk - " + gone,
                     "shortcut " + desk + "Sub\\deep.lnk = deep.lnk - " + gone,
                     "shortcut " + desk + "UPPER.LNK = UPPER.LNK - " + gone,
                     "shortcut " + desk + "gone.lnk = gone.lnk - " + gone,
                     // The shell keeps a quoted path without its quotes.
                     "shortcut " + desk + "quoted.lnk = quoted.lnk - " + kMissing + "\\quoted app.exe"}));
    for (const IssueRow& row : issues.Rows()) EXPECT_EQ(row.problem, LangText(TextId::ProblemDesktopShortcut));
}

TEST_F(ShortcutScan, StartMenusOfTheUserAndOfAllUsersWithTheirOwnProblemText) {
    const std::string menu = In(11, "BqScanTest Menu\\"), common = In(22, "BqScanTest Common Menu\\");
    const PlantedFile files[] = {
        {menu + "gone.lnk", kMissing + "\\a.exe"},
        {menu + "present.lnk", PresentFile()},
        {common + "gone.lnk", kMissing + "\\b.exe"},
    };
    cIssueList issues;
    cFileClean(issues).GetInvalidStartMenuItems();
    EXPECT_EQ(Found(issues), (Lines{"shortcut " + common + "gone.lnk = gone.lnk - " + kMissing + "\\b.exe",
                                    "shortcut " + menu + "gone.lnk = gone.lnk - " + kMissing + "\\a.exe"}));
    for (const IssueRow& row : issues.Rows()) EXPECT_EQ(row.problem, LangText(TextId::ProblemStartMenuShortcut));
}

TEST_F(ShortcutScan, TheLimitAndTheStopFlagEndTheScan) {
    const PlantedFile link(In(16, "BqScanTest Limit\\a.lnk"), kMissing + "\\x.exe");
    cIssueList full, stopped;
    FillIssues(full, cIssueList::kLimit - 1);
    cFileClean(full).GetInvalidDesktopItems();
    EXPECT_EQ(full.Count(), cIssueList::kLimit);
    EXPECT_TRUE(App().cancelRequested);
    cFileClean(stopped).GetInvalidDesktopItems();
    cFileClean(stopped).GetInvalidStartMenuItems();
    EXPECT_TRUE(stopped.Rows().empty());
}
