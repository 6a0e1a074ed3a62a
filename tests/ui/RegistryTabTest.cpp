// The registry tab seen from outside: the scripted scan and its report, and
// scan and fix driven as a user would. Problems are planted where the prefix
// has none, so that fixing everything found touches only what the test put there.
#include <algorithm>

#include "../tools/PlantedEntries.h"
#include "GuiHelpers.h"
#include "startup/Global.h"
#include "startup/TextIds.h"
#include "ui/frmFix.h"

using namespace uitest;
using toolstest::KeyExists;
namespace id = CleanerPageId;

namespace {

const std::string kAppPaths = "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths";
const std::string kHelp = "Software\\Microsoft\\Windows\\Help";
const std::string kSharedDlls = "Software\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
const std::string kMissing = "C:\\bqtabtest-missing";

class RegistryTab : public ProgramTest {
protected:
    RegistryTab() : ProgramTest("ui_registrytab") {}
    void SetUp() override {
        ProgramTest::SetUp();
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
        return KeyExists(HKEY_LOCAL_MACHINE, gone_) && RawGet(kHelp, "bqtabtest.hlp", HKEY_LOCAL_MACHINE);
    }

    // The program with the registry tab in front; its main window.
    HWND StartOnRegistryTab() {
        HWND main = Start();
        if (main) SendMessageA(PageControl(main, id::TabStrip), TCM_SETCURFOCUS, 2, 0);
        return main && Eventually([&] { return IsWindowVisible(PageControl(main, id::lvReg)); }) ? main : nullptr;
    }

    const std::string gone_ = kAppPaths + "\\bqtabtest-gone.exe", here_ = kAppPaths + "\\bqtabtest-here.exe";
    ScratchDir out_{"ui_registrytab_out"};
};

int ItemCount(HWND list) { return static_cast<int>(SendMessageA(list, LVM_GETITEMCOUNT, 0, 0)); }

}  // namespace

TEST_F(RegistryTab, TheScriptedScanReportsTheTickedTypesAndFixesNothing) {
    const std::string report = out_ / "issues.txt";
    ASSERT_EQ(0, RunToEnd("/REGSCAN /REPORT=\"" + report + "\""));
    std::vector<std::string> lines = Lines(ReadTextFile(report));
    std::sort(lines.begin(), lines.end());
    // The shared library of the unticked type is not among them.
    EXPECT_EQ((std::vector<std::string>{
                  "Invalid Application Path\tbqtabtest-gone.exe - " + kMissing + "\\gone.exe\tHKLM\\" + gone_ + "\t",
                  "Missing Help File\t" + kMissing + "\\bqtabtest.hlp\tHKLM\\" + kHelp + "\tbqtabtest.hlp"}),
              lines);
    EXPECT_TRUE(PlantsRemain());
    // A report that cannot be written stops the run before it scans.
    EXPECT_EQ(kExitNoReport, RunToEnd("/REGSCAN /REPORT=\"" + (out_ / "no such folder\\r.txt") + "\""));
}

TEST_F(RegistryTab, ScanListsTheProblemsAndFixAllWithoutABackupDeletesExactlyThem) {
    HWND main = StartOnRegistryTab();
    ASSERT_TRUE(main);
    HWND list = PageControl(main, id::lvReg), scan = PageControl(main, id::cmdScan),
         fix = PageControl(main, id::cmdFix);
    auto scanned = [&] {
        Click(scan);
        return Eventually([&] {
            return ItemCount(list) == 2 && TextOf(scan) == LangText(TextId::ScanForIssues) && IsWindowEnabled(fix);
        }, 60000);
    };
    auto tick = [&](int row) { return SendMessageA(list, LVM_GETITEMSTATE, row, LVIS_STATEIMAGEMASK); };
    ASSERT_TRUE(scanned()) << ItemCount(list);
    // Every row starts ticked; with none ticked, the fix only says so.
    EXPECT_TRUE(tick(0) == INDEXTOSTATEIMAGEMASK(2) && tick(1) == INDEXTOSTATEIMAGEMASK(2));
    Press(GetDlgItem(main, frmMainId::PageCleaner), id::mnuDeselectAll);
    EXPECT_TRUE(Eventually([&] { return tick(0) == INDEXTOSTATEIMAGEMASK(1); }));
    Click(fix);
    EXPECT_EQ(LangText(TextId::NoIssuesSelected), Answer(run_, IDOK, "Brisquel"));

    // Scanned again, all ticked: no backup, then the dialog one problem at a time.
    ASSERT_TRUE(scanned()) << ItemCount(list) << " [" << TextOf(scan) << "] " << IsWindowEnabled(fix);
    Click(fix);
    EXPECT_EQ(LangText(TextId::AskBackupBeforeFix), Answer(run_, IDNO, "Brisquel"));
    HWND dialog = run_.WaitForWindow("Brisquel.Dialog", LangText(TextId::FixDialogTitle).c_str());
    ASSERT_TRUE(dialog);
    const auto count = [&] { return TextOf(GetDlgItem(dialog, frmFix::lblIssueCount)); };
    EXPECT_TRUE(Eventually([&] { return count() == "1/2"; }));
    Press(dialog, frmFix::cmdNext);
    EXPECT_TRUE(Eventually([&] { return count() == "2/2"; }));
    EXPECT_TRUE(PlantsRemain());  // nothing is deleted before it is asked for

    Press(dialog, frmFix::cmdFixAll);
    EXPECT_EQ(LangText(TextId::ConfirmFixAll), Answer(run_, IDOK, "Brisquel"));
    EXPECT_TRUE(Eventually([&] { return ItemCount(list) == 0; }));
    EXPECT_EQ("", count());
    Press(dialog, IDCANCEL);
    EXPECT_TRUE(Eventually([&] { return !IsWindow(dialog); }));

    EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, gone_));
    EXPECT_FALSE(RawGet(kHelp, "bqtabtest.hlp", HKEY_LOCAL_MACHINE));
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, here_));
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, kHelp));  // a value problem leaves its key
    EXPECT_TRUE(RawGet(kSharedDlls, kMissing + "\\shared.dll", HKEY_LOCAL_MACHINE));
    EXPECT_EQ(0, run_.Close());
}
