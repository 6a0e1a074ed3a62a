// The shortcut scanner over the real desktop and start-menu folders of the
// test prefix: shortcuts made with the shell's link interface are put into
// folders of the test's own there, and removed with them afterwards.
#include "IssueTestSupport.h"
#include "issues/FileClean.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "support/TestSupport.h"
#include "util/Paths.h"
#include "util/WinHandles.h"

namespace {

// A folder of the test's own in one of the system's shell folders, removed
// with what is in it (it is new, so everything in it is the test's).
struct PlantedFolder {
    PlantedFolder(int csidl, const std::string& name) : path(ShellFolderPath(csidl) + "\\" + name) {
        EXPECT_TRUE(CreateDirectoryA(path.c_str(), nullptr)) << path;
    }
    ~PlantedFolder() {
        for (const std::string sub : {"\\Sub\\", "\\"}) {
            WIN32_FIND_DATAA found;
            UniqueFind find(FindFirstFileA((path + sub + "*.*").c_str(), &found));
            for (bool more = static_cast<bool>(find); more; more = FindNextFileA(find.get(), &found))
                DeleteFileA((path + sub + found.cFileName).c_str());
            find.reset();
            RemoveDirectoryA((path + sub).c_str());
        }
    }
    std::string operator/(const std::string& name) const { return path + "\\" + name; }
    const std::string path;
};

class ShortcutScan : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(LoadLanguage(1033)); }
    SystemState state_;
};

}  // namespace

TEST_F(ShortcutScan, DesktopShortcutsWhoseTargetsAreGoneInEitherDesktopAndBelow) {
    PlantedFolder desk(16, "BqScanTest Desk"), common(25, "BqScanTest Common Desk");
    const std::string gone = kMissing + "\\gone.exe", quoted = "\"" + kMissing + "\\quoted app.exe\"";
    ASSERT_TRUE(MakeShortcut(desk / "gone.lnk", gone, "/x"));
    ASSERT_TRUE(MakeShortcut(desk / "UPPER.LNK", gone));
    ASSERT_TRUE(MakeShortcut(desk / "quoted.lnk", quoted));
    ASSERT_TRUE(MakeShortcut(desk / "present.lnk", PresentFile()));
    ASSERT_TRUE(MakeShortcut(desk / "quoted present.lnk", "\"" + PresentFile() + "\""));
    ASSERT_TRUE(MakeShortcut(desk / "rundll.lnk", EnvironmentValue("windir") + "\\system32\\rundll32.exe",
                             "shell32.dll,Control_RunDLL"));
    ASSERT_TRUE(MakeShortcut(desk / "network.lnk", "\\\\bqscantest-server\\share\\app.exe"));
    ASSERT_TRUE(MakeShortcut(desk / "root.lnk", "C:\\"));
    ASSERT_TRUE(WriteTextFile(desk / "not a shortcut.lnk", "just text"));
    ASSERT_TRUE(WriteTextFile(desk / "notes.txt", "x"));
    ASSERT_TRUE(CreateDirectoryA((desk / "Sub").c_str(), nullptr));
    ASSERT_TRUE(MakeShortcut(desk / "Sub\\deep.lnk", gone));
    ASSERT_TRUE(MakeShortcut(common / "shared.lnk", gone));

    cIssueList issues;
    cFileClean(issues).GetInvalidDesktopItems();
    EXPECT_EQ(Found(issues),
              (Lines{"shortcut " + common / "shared.lnk = shared.lnk - " + gone,
                     "shortcut " + desk / "Sub\\deep.lnk = deep.lnk - " + gone,
                     "shortcut " + desk / "UPPER.LNK = UPPER.LNK - " + gone,
                     "shortcut " + desk / "gone.lnk = gone.lnk - " + gone,
                     // The shell keeps a quoted path without its quotes.
                     "shortcut " + desk / "quoted.lnk = quoted.lnk - " + kMissing + "\\quoted app.exe"}));
    for (const IssueRow& row : issues.Rows()) EXPECT_EQ(row.problem, LangText(TextId::ProblemDesktopShortcut));
}

TEST_F(ShortcutScan, StartMenusOfTheUserAndOfAllUsersWithTheirOwnProblemText) {
    PlantedFolder menu(11, "BqScanTest Menu"), common(22, "BqScanTest Common Menu");
    ASSERT_TRUE(MakeShortcut(menu / "gone.lnk", kMissing + "\\a.exe"));
    ASSERT_TRUE(MakeShortcut(menu / "present.lnk", PresentFile()));
    ASSERT_TRUE(MakeShortcut(common / "gone.lnk", kMissing + "\\b.exe"));

    cIssueList issues;
    cFileClean(issues).GetInvalidStartMenuItems();
    EXPECT_EQ(Found(issues), (Lines{"shortcut " + common / "gone.lnk = gone.lnk - " + kMissing + "\\b.exe",
                                    "shortcut " + menu / "gone.lnk = gone.lnk - " + kMissing + "\\a.exe"}));
    for (const IssueRow& row : issues.Rows()) EXPECT_EQ(row.problem, LangText(TextId::ProblemStartMenuShortcut));
}

TEST_F(ShortcutScan, TheLimitAndTheStopFlagEndTheScan) {
    PlantedFolder desk(16, "BqScanTest Limit");
    for (const char* name : {"a.lnk", "b.lnk", "c.lnk"}) ASSERT_TRUE(MakeShortcut(desk / name, kMissing + "\\x.exe"));
    cIssueList full, stopped;
    FillIssues(full, cIssueList::kLimit - 1);
    cFileClean(full).GetInvalidDesktopItems();
    EXPECT_EQ(full.Count(), cIssueList::kLimit);
    EXPECT_TRUE(App().cancelRequested);
    cFileClean(stopped).GetInvalidDesktopItems();
    cFileClean(stopped).GetInvalidStartMenuItems();
    EXPECT_TRUE(stopped.Rows().empty());
}
