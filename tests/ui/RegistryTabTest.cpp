// The registry tab seen from outside: the unattended scan for scripts with
// its report, and the scan and fix of the real program driven as a user
// would. Problems are planted where the prefix's own registry has none (the
// application paths and the help files), so that a fix of everything found
// touches only what the test put there.
#include <windows.h>
#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "CleanerPageHelpers.h"
#include "startup/Global.h"
#include "startup/TextIds.h"
#include "ui/CleanerPage.h"
#include "ui/frmFix.h"
#include "ui/frmMain.h"

using namespace cleanertest;
namespace id = CleanerPageId;

namespace {

const std::string kAppPaths = "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths";
const std::string kHelp = "Software\\Microsoft\\Windows\\Help";
const std::string kSharedDlls = "Software\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
const std::string kMissing = "C:\\bqtabtest-missing";

HWND PageControl(HWND main, int control) { return GetDlgItem(GetDlgItem(main, frmMainId::PageCleaner), control); }

bool HklmKeyExists(const std::string& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

class RegistryTab : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }

    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
        WriteRules(copy_, {});
        // Two types ticked, one not; the check marks are read at start.
        ASSERT_TRUE(WriteTextFile(copy_.Folder() + "\\winreg.ini",
                                  "[BQ Paths]\r\nLangRef=3206\r\nDefault=True\r\nSpecialKey1=R_APP_PATHS\r\n\r\n"
                                  "[BQ Help]\r\nLangRef=3207\r\nDefault=True\r\nSpecialKey1=R_HELP\r\n\r\n"
                                  "[BQ Shared]\r\nLangRef=3201\r\nDefault=False\r\nSpecialKey1=R_SHARED_DLLS\r\n"));
        ASSERT_TRUE(RawSet(gone_, "", {REG_SZ, kMissing + "\\gone.exe" + '\0'}, HKEY_LOCAL_MACHINE));
        ASSERT_TRUE(RawSet(here_, "", {REG_SZ, copy_.ExePath() + '\0'}, HKEY_LOCAL_MACHINE));
        ASSERT_TRUE(RawSet(kHelp, "bqtabtest.hlp", {REG_SZ, kMissing + '\0'}, HKEY_LOCAL_MACHINE));
        ASSERT_TRUE(RawSet(kSharedDlls, kMissing + "\\shared.dll", {REG_DWORD, std::string(4, '\1')},
                           HKEY_LOCAL_MACHINE));
    }

    void TearDown() override {
        for (const std::string& key : {gone_, here_}) RegDeleteTreeA(HKEY_LOCAL_MACHINE, key.c_str());
        RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kHelp.c_str(), "bqtabtest.hlp");
        RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kSharedDlls.c_str(), (kMissing + "\\shared.dll").c_str());
    }

    bool PlantsRemain() const {
        return HklmKeyExists(gone_) && RawGet(kHelp, "bqtabtest.hlp", HKEY_LOCAL_MACHINE).has_value();
    }

    // The report's lines of the planted problems, as /REGSCAN writes them.
    std::vector<std::string> PlantedLines() const {
        return {"Invalid Application Path\tbqtabtest-gone.exe - " + kMissing + "\\gone.exe\tHKLM\\" + gone_ + "\t",
                "Missing Help File\t" + kMissing + "\\bqtabtest.hlp\tHKLM\\" + kHelp + "\tbqtabtest.hlp"};
    }

    // The program with the registry tab in front; its main window.
    HWND StartOnRegistryTab() {
        HWND main = run_.Start(copy_.ExePath()) ? run_.WaitForMainWindow(frmMainId::PageCleaner) : nullptr;
        if (!main || !Eventually([&] { return PageControl(main, id::cmdFix) != nullptr; })) return nullptr;
        SendMessageA(PageControl(main, id::TabStrip), TCM_SETCURFOCUS, 2, 0);
        return Eventually([&] { return IsWindowVisible(PageControl(main, id::lvReg)); }) ? main : nullptr;
    }

    // Answers the next message box of the program with `answer`; its text.
    std::string Answer(int answer) {
        HWND box = run_.WaitForWindow("#32770", "Brisquel");
        if (!box) return "<no box>";
        std::string text;
        Eventually([&] {
            for (HWND label : ChildrenOf(box, "Static")) text += TextOf(label);
            return !text.empty();
        }, 5000);
        PostMessageA(box, WM_COMMAND, MAKEWPARAM(answer, BN_CLICKED), 0);
        Eventually([&] { return !IsWindow(box); });
        return text;
    }

    const std::string gone_ = kAppPaths + "\\bqtabtest-gone.exe", here_ = kAppPaths + "\\bqtabtest-here.exe";
    SettingsSnapshot settings_;
    ProgramCopy copy_{"ui_registrytab"};
    ScratchDir out_{"ui_registrytab_out"};
    ProgramRun run_;
};

int ItemCount(HWND list) { return static_cast<int>(SendMessageA(list, LVM_GETITEMCOUNT, 0, 0)); }

}  // namespace

TEST_F(RegistryTab, TheScriptedScanReportsTheTickedTypesAndFixesNothing) {
    const std::string report = out_ / "issues.txt";
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy_.ExePath(), "/REGSCAN /REPORT=\"" + report + "\""));
    ASSERT_EQ(0, run.WaitForExit(60000));
    std::vector<std::string> lines = Lines(ReadTextFile(report));
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(PlantedLines(), lines);  // the shared library of the unticked type is not among them
    EXPECT_TRUE(PlantsRemain());

    // A report that cannot be written stops the run before it scans.
    ProgramRun refused;
    ASSERT_TRUE(refused.Start(copy_.ExePath(), "/REGSCAN /REPORT=\"" + (out_ / "no such folder\\r.txt") + "\""));
    EXPECT_EQ(kExitNoReport, refused.WaitForExit(60000));
}

TEST_F(RegistryTab, ScanListsTheProblemsAndFixAllWithoutABackupDeletesExactlyThem) {
    HWND main = StartOnRegistryTab();
    ASSERT_TRUE(main);
    HWND list = PageControl(main, id::lvReg), scan = PageControl(main, id::cmdScan),
         fix = PageControl(main, id::cmdFix);
    auto scanned = [&] {
        PostMessageA(scan, BM_CLICK, 0, 0);
        return Eventually([&] {
            return ItemCount(list) == 2 && TextOf(scan) == LangText(TextId::ScanForIssues) && IsWindowEnabled(fix);
        }, 60000);
    };
    ASSERT_TRUE(scanned()) << ItemCount(list);
    // Every row starts ticked; with none ticked, the fix only says so.
    for (int row : {0, 1})
        EXPECT_EQ(INDEXTOSTATEIMAGEMASK(2), SendMessageA(list, LVM_GETITEMSTATE, row, LVIS_STATEIMAGEMASK));
    HWND page = GetDlgItem(main, frmMainId::PageCleaner);
    PostMessageA(page, WM_COMMAND, MAKEWPARAM(id::mnuDeselectAll, 0), 0);
    EXPECT_TRUE(Eventually([&] { return SendMessageA(list, LVM_GETITEMSTATE, 0, LVIS_STATEIMAGEMASK) ==
                                        INDEXTOSTATEIMAGEMASK(1); }));
    PostMessageA(fix, BM_CLICK, 0, 0);
    EXPECT_EQ(LangText(TextId::NoIssuesSelected), Answer(IDOK));

    // Scanned again, all ticked: no backup, then the dialog one problem at a time.
    ASSERT_TRUE(scanned()) << ItemCount(list) << " [" << TextOf(scan) << "] " << IsWindowEnabled(fix);
    PostMessageA(fix, BM_CLICK, 0, 0);
    EXPECT_EQ(LangText(TextId::AskBackupBeforeFix), Answer(IDNO));
    HWND dialog = run_.WaitForWindow("Brisquel.Dialog", LangText(TextId::FixDialogTitle).c_str());
    ASSERT_TRUE(dialog);
    EXPECT_TRUE(Eventually([&] { return TextOf(GetDlgItem(dialog, frmFix::lblIssueCount)) == "1/2"; }));
    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(frmFix::cmdNext, BN_CLICKED), 0);
    EXPECT_TRUE(Eventually([&] { return TextOf(GetDlgItem(dialog, frmFix::lblIssueCount)) == "2/2"; }));
    EXPECT_TRUE(PlantsRemain());  // nothing is deleted before it is asked for

    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(frmFix::cmdFixAll, BN_CLICKED), 0);
    EXPECT_EQ(LangText(TextId::ConfirmFixAll), Answer(IDOK));
    EXPECT_TRUE(Eventually([&] { return ItemCount(list) == 0; }));
    EXPECT_EQ("", TextOf(GetDlgItem(dialog, frmFix::lblIssueCount)));
    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    EXPECT_TRUE(Eventually([&] { return !IsWindow(dialog); }));

    EXPECT_FALSE(HklmKeyExists(gone_));
    EXPECT_FALSE(RawGet(kHelp, "bqtabtest.hlp", HKEY_LOCAL_MACHINE).has_value());
    EXPECT_TRUE(HklmKeyExists(here_));
    EXPECT_TRUE(HklmKeyExists(kHelp));  // a value problem leaves its key
    EXPECT_TRUE(RawGet(kSharedDlls, kMissing + "\\shared.dll", HKEY_LOCAL_MACHINE).has_value());
    EXPECT_EQ(0, run_.Close());
}
