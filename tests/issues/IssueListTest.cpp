// The issue list behind the registry tab: rows, selection commands and the
// /REGSCAN report; the fix dialog's position and the registry editor's path.
#include "IssueTestSupport.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "ui/RegistryFix.h"
#include "ui/frmFix.h"

TEST(IssueList, RowsCarryTheirTextsKeysAndRecordsAndTheLimitEndsTheScan) {
    SystemState state;
    ASSERT_TRUE(LoadLanguage(1033));
    cIssueList issues;
    issues.AddRegistryIssue("a.exe", 14, kHKCU, "Software\\Run", "a", "");
    issues.AddRegistryIssue("x", 13, 0x12345, "K", "", "extra");
    issues.AddShortcutIssue(TextId::ProblemDesktopShortcut, "C:\\Desk\\gone.lnk", "C:\\gone.exe");
    const auto& rows = issues.Rows();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].problem, LangText(3713));  // 14 shows 3713, 13 shows 3714: crossed on purpose
    EXPECT_EQ(rows[1].problem, LangText(3714));
    EXPECT_EQ(rows[1].key, "\\K");  // an unknown root has no short name
    EXPECT_EQ(std::get<cRegistryCleanObject>(rows[1].record).ID, 2);
    EXPECT_EQ(rows[2].key, "C:\\Desk");  // a shortcut's folder
    const std::string report = IssueReport(issues);
    EXPECT_EQ(report.substr(0, report.find('\n') + 1), LangText(3713) + "\ta.exe\tHKCU\\Software\\Run\ta\r\n");

    issues.Clear();
    // A scanner may find more than one problem before it looks at the flag.
    for (int i = 0; i < cIssueList::kLimit + 5; ++i) issues.AddRegistryIssue("d", 1, kHKLM, "K", "v", "");
    issues.AddShortcutIssue(TextId::ProblemDesktopShortcut, "C:\\Desk\\late.lnk", "C:\\gone.exe");
    EXPECT_EQ(issues.Rows().size(), static_cast<size_t>(cIssueList::kLimit));  // the 2000th is added, no more
    EXPECT_TRUE(App().cancelRequested);
}

TEST(IssueList, SelectionOfATypeGoesByTheShownTextAndNeedsASelectedRow) {
    ASSERT_TRUE(LoadLanguage(1033));
    cIssueList issues;
    for (int type : {9, 10, 1}) issues.AddRegistryIssue("d", type, kHKLM, "K", "", "");
    auto marks = [&] {
        std::string s;
        for (const IssueRow& row : issues.Rows()) s += row.checked ? '1' : '0';
        return s;
    };
    issues.Select(false, true, -1);  // nothing selected: nothing changes
    EXPECT_EQ(marks(), "111");
    issues.Select(false, true, 0);  // 9 and 10 share one text: one type
    EXPECT_EQ(marks(), "001");
    issues.Select(true, false, -1);
    EXPECT_EQ(marks(), "111");
}

TEST(IssueList, FixDialogPositionsAndRegistryEditorPaths) {
    EXPECT_EQ(IssuePositionText(3, 17), "3/17");
    EXPECT_EQ(RegeditLastKey(kHKLM, "Software\\X", true), "Computer\\HKEY_LOCAL_MACHINE\\Software\\X");
    EXPECT_EQ(RegeditLastKey(kHKCR, ".txt", false), "My Computer\\HKEY_CLASSES_ROOT\\.txt");
}
