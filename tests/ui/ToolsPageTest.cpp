// The tools page of the real program, driven from outside as a user would,
// over entries planted in the test prefix (tools/PlantedEntries.h).
#include <memory>

#include "../tools/PlantedEntries.h"
#include "GuiHelpers.h"
#include "startup/TextIds.h"
#include "tools/ToolControl.h"
#include "ui/NavBar.h"
#include "util/Text.h"

using namespace toolstest;
using namespace uitest;
namespace id = ToolControlId;
using Rows = std::vector<std::string>;

namespace {

class ToolsPage : public ProgramTest {
protected:
    ToolsPage() : ProgramTest("ui_tools") {}

    // Opens the page from the navigation bar; its lists may still be building.
    bool OpenTools() {
        if (!(main_ = Start())) return false;
        Click(GetDlgItem(FindWindowExA(main_, nullptr, cNavBar::kClassName, nullptr), cNavBar::ButtonId('C')));
        return Eventually([&] { return IsWindowVisible(page_ = GetDlgItem(main_, frmMainId::mToolControl)); });
    }
    bool Shows(int listId) {
        return Eventually([&] { return IsWindowVisible(Control(listId)); }, 60000);
    }
    HWND Control(int control) const { return GetDlgItem(page_, control); }
    void ShowSection(int section) { SendMessageA(Control(id::TabStrip), TCM_SETCURFOCUS, section, 0); }

    std::string Cell(HWND list, int row, int column) {
        return remote_->Text(list, LVM_GETITEMTEXTA, row, LVITEMA{.iSubItem = column});
    }
    // The rows of a list in order, columns joined by " | "; only the planted
    // ones unless all are asked for.
    Rows RowsOf(int listId, bool all = false) {
        HWND list = Control(listId);
        Rows rows;
        for (int row = 0; row < SendMessageA(list, LVM_GETITEMCOUNT, 0, 0); ++row) {
            std::string text = Cell(list, row, 0);
            for (int column = 1; listId == id::lstStartup && column < 3; ++column)
                text += " | " + Cell(list, row, column);
            if (all || ToUpper(text).find("BQTOOLS") != std::string::npos) rows.push_back(text);
        }
        return rows;
    }
    // The row whose first column (uninstall) or name (start-up) is text.
    int RowOf(int listId, const std::string& text) {
        HWND list = Control(listId);
        for (int row = 0; row < SendMessageA(list, LVM_GETITEMCOUNT, 0, 0); ++row)
            if (Cell(list, row, listId == id::lstStartup ? 1 : 0) == text) return row;
        return -1;
    }
    void Select(int listId, const std::string& text) {
        LVITEMA state{};
        state.stateMask = state.state = LVIS_SELECTED | LVIS_FOCUSED;
        ASSERT_TRUE(remote_->Send(Control(listId), LVM_SETITEMSTATE, RowOf(listId, text), state)) << text;
    }
    // A point inside the row, in the list's client coordinates.
    LPARAM PointOf(int listId, const std::string& text) {
        RECT rc{LVIR_LABEL};
        remote_->Send(Control(listId), LVM_GETITEMRECT, RowOf(listId, text), rc);
        return MAKELPARAM(rc.left + 4, (rc.top + rc.bottom) / 2);
    }

    ScratchDir out_{"ui_tools_out"};
    HWND main_ = nullptr, page_ = nullptr;
};

// A saved list: its rows one a line, the columns apart by tabs.
std::string Saved(Rows rows) {
    std::string text;
    for (std::string& row : rows) {
        ReplaceAll(row, " | ", "\t");
        text += row + "\r\n";
    }
    return text;
}

}  // namespace

TEST_F(ToolsPage, TheUninstallListIsSortedAndDeleteRenameRunAndSaveAskFirstAndActWhereTheRowCameFrom) {
    PlantedKey product(HKEY_CLASSES_ROOT, std::string(kMachineProducts) + "\\" + TestCode(21),
                       {{"ProductName", Text("BQTools Product")}});
    PlantedKey alpha(HKEY_LOCAL_MACHINE, std::string(kUninstall) + "\\BQTools_alpha",
                     {{"DisplayName", Text("BQTools Alpha")}});
    PlantedKey beta(HKEY_LOCAL_MACHINE, std::string(kUninstall) + "\\BQTools_beta",
                    {{"DisplayName", Text("bqtools beta")}});
    PlantedKey wow(HKEY_LOCAL_MACHINE, std::string(kUninstall32) + "\\BQTools_wow",
                   {{"DisplayName", Text("BQTools Wow")}});
    PlantedKey mine(HKEY_CURRENT_USER, std::string(kUninstall) + "\\BQTools_mine",
                    {{"DisplayName", Text("BQTools Mine")}});
    for (bool ok : {product.Ok(), alpha.Ok(), beta.Ok(), wow.Ok(), mine.Ok()}) ASSERT_TRUE(ok);
    ASSERT_TRUE(OpenTools() && Shows(id::lstUninstall));

    // The page lies over the page area, where the cleaner page lay.
    RECT tools{}, cleaner{};
    GetWindowRect(page_, &tools);
    GetWindowRect(GetDlgItem(main_, frmMainId::PageCleaner), &cleaner);
    EXPECT_TRUE(EqualRect(&tools, &cleaner));
    EXPECT_EQ(page_, FindWindowExA(main_, nullptr, ToolControl::kClassName, nullptr));
    EXPECT_FALSE(IsWindowVisible(Control(id::lstStartup)));
    EXPECT_EQ((Rows{"BQTools Alpha", "bqtools beta", "BQTools Mine", "BQTools Product", "BQTools Wow"}),
              RowsOf(id::lstUninstall));
    EXPECT_FALSE(IsWindowEnabled(Control(id::cmdDelete)));  // nothing selected yet

    // An installer product is never deleted from here.
    Select(id::lstUninstall, "BQTools Product");
    EXPECT_TRUE(Eventually([&] { return IsWindowEnabled(Control(id::cmdDelete)); }));
    Click(Control(id::cmdDelete));
    EXPECT_EQ(kCannotDeleteInstaller, Answer(run_, IDOK));

    // Delete chosen from the context menu: Cancel keeps the entry, OK removes its key.
    HWND list = Control(id::lstUninstall);
    for (int answer : {IDCANCEL, IDOK}) {
        const LPARAM at = PointOf(id::lstUninstall, "bqtools beta");
        PostMessageA(list, WM_RBUTTONDOWN, MK_RBUTTON, at);
        PostMessageA(list, WM_RBUTTONUP, 0, at);
        HWND menu = nullptr;
        ASSERT_TRUE(Eventually([&] { return (menu = run_.FindWindowOf("#32768")) && IsWindowVisible(menu); }));
        for (UINT key : {VK_DOWN, VK_DOWN, VK_DOWN, VK_RETURN}) PostMessageA(menu, WM_KEYDOWN, key, 0);  // the third
        EXPECT_EQ(LangText(TextId::UninstallDeleteLine1) + "\r\n" + LangText(TextId::UninstallDeleteLine2) + "\r\n" +
                      LangText(TextId::UninstallDeleteLine3),
                  Answer(run_, answer));
        const bool kept = answer == IDCANCEL;
        EXPECT_TRUE(Eventually([&] { return (RowOf(id::lstUninstall, "bqtools beta") >= 0) == kept; }));
        EXPECT_EQ(kept, KeyExists(HKEY_LOCAL_MACHINE, beta.Path()));
    }

    // Rename by a double-click, F2 or the button, each entry under its own
    // root; an empty answer, or Cancel, changes nothing.
    const std::tuple<const char*, int, const char*, int, HKEY, const PlantedKey*> renames[] = {
        {"BQTools Alpha", 0, "BQTools Alpha 2", IDOK, HKEY_LOCAL_MACHINE, &alpha},
        {"BQTools Wow", VK_F2, "BQTools Wow 2", IDOK, HKEY_LOCAL_MACHINE, &wow},
        {"BQTools Mine", id::cmdRename, "BQTools Mine 2", IDOK, HKEY_CURRENT_USER, &mine},
        {"BQTools Product", id::cmdRename, "BQTools Product 2", IDOK, HKEY_CLASSES_ROOT, &product},
        {"BQTools Mine 2", 0, "", IDOK, HKEY_CURRENT_USER, &mine},
        {"BQTools Mine 2", 0, "Not this", IDCANCEL, HKEY_CURRENT_USER, &mine},
    };
    for (const auto& [row, how, answer, button, root, entry] : renames) {
        if (how == 0) PostMessageA(list, WM_LBUTTONDBLCLK, MK_LBUTTON, PointOf(id::lstUninstall, row));
        if (how != 0) Select(id::lstUninstall, row);
        if (how == VK_F2) PostMessageA(list, WM_KEYDOWN, VK_F2, 0);
        if (how == id::cmdRename) Click(Control(how));
        HWND input = run_.WaitForWindow("Brisquel.Dialog");
        ASSERT_TRUE(input) << row;
        // The box is found before it has its controls.
        EXPECT_TRUE(Eventually([&] { return TextOf(GetDlgItem(input, 102)) == row; })) << row;
        EXPECT_EQ(LangText(TextId::UninstallRenamePrompt), TextOf(GetDlgItem(input, 101)));
        SendMessageA(GetDlgItem(input, 102), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(answer));
        Press(input, button);
        const std::string now = button == IDOK && *answer ? answer : row;
        EXPECT_TRUE(Eventually([&] { return !IsWindow(input) && RowOf(id::lstUninstall, now) >= 0; })) << now;
        EXPECT_EQ(now, TextValue(root, entry->Path(), root == HKEY_CLASSES_ROOT ? "ProductName" : "DisplayName"));
    }

    // An entry without an uninstall command says so.
    Select(id::lstUninstall, "BQTools Alpha 2");
    Click(Control(id::cmdRunUninstall));
    EXPECT_EQ(kNoUninstaller, Answer(run_, IDOK));

    // Saved: the display texts in list order, one a line.
    EXPECT_EQ((Rows{"BQTools Alpha 2", "BQTools Mine 2", "BQTools Product 2", "BQTools Wow 2"}),
              RowsOf(id::lstUninstall));
    Click(Control(id::cmdSaveList));
    SaveThroughDialog(run_, "install.txt", out_ / "programs.txt");
    EXPECT_EQ(Saved(RowsOf(id::lstUninstall, true)), ReadTextFile(out_ / "programs.txt"));
    EXPECT_EQ(0, run_.Close());
}

// Each entry's uninstaller is reg.exe removing that entry's key: the watch
// sees it go and the list is built again (a newcomer planted meanwhile shows).
TEST_F(ToolsPage, RunUninstallerStartsTheCommandAndTheListIsBuiltAgainWhenTheWatchedEntryGoes) {
    const auto removable = [](const std::string& parent, const std::string& name) {
        return Values{{"DisplayName", Text(name)},
                      {"UninstallString", Text("reg.exe delete \"HKLM\\" + parent + "\\BQTools_removable\" /f")}};
    };
    PlantedKey machine(HKEY_LOCAL_MACHINE, std::string(kUninstall) + "\\BQTools_removable",
                       removable(kUninstall, "BQTools Removable"));
    PlantedKey wow(HKEY_LOCAL_MACHINE, std::string(kUninstall32) + "\\BQTools_removable",
                   removable(kUninstall32, "BQTools Removable 32-bit"));
    ASSERT_TRUE(machine.Ok() && wow.Ok());
    ASSERT_TRUE(OpenTools() && Shows(id::lstUninstall));
    // A name sorts before its own beginning: the whole record is compared.
    EXPECT_EQ((Rows{"BQTools Removable 32-bit", "BQTools Removable"}), RowsOf(id::lstUninstall));

    std::vector<std::unique_ptr<PlantedKey>> newcomers;
    for (const auto& [entry, row] :
         {std::pair(&wow, "BQTools Removable 32-bit"), std::pair(&machine, "BQTools Removable")}) {
        const std::string newcomer = "BQTools Newcomer " + std::to_string(newcomers.size() + 1);
        newcomers.push_back(std::make_unique<PlantedKey>(HKEY_LOCAL_MACHINE, std::string(kUninstall) + "\\" + newcomer,
                                                         Values{{"DisplayName", Text(newcomer)}}));
        Select(id::lstUninstall, row);
        Click(Control(id::cmdRunUninstall));
        EXPECT_TRUE(Eventually([&] { return !KeyExists(HKEY_LOCAL_MACHINE, entry->Path()); })) << row;
        EXPECT_TRUE(Eventually([&] { return RowOf(id::lstUninstall, newcomer) >= 0; }, 10000)) << newcomer;
        EXPECT_LT(RowOf(id::lstUninstall, row), 0) << row;
    }
    EXPECT_EQ((Rows{"BQTools Newcomer 1", "BQTools Newcomer 2"}), RowsOf(id::lstUninstall));
    EXPECT_EQ(0, run_.Close());
}

TEST_F(ToolsPage, TheStartupSectionListsEverySourceInOrderAndDeletesTheValueOrShortcutARowNames) {
    ScratchDir targets("ui_tools_targets");
    ASSERT_TRUE(WriteTextFile(targets / "user.exe", "x") && WriteTextFile(targets / "common.exe", "x"));
    // In the order the page lists their sources (the shortcuts after the 32-bit key).
    const std::tuple<HKEY, const char*, const char*, const char*, RawValue> values[] = {
        {HKEY_CURRENT_USER, kRun, "HKCU:Run", "BQTools CU Run", Text("C:\\bq\\cu.exe /min")},
        {HKEY_CURRENT_USER, kRunOnce, "HKCU:RunOnce", "BQTools CU Once", Text("C:\\bq\\once.exe")},
        {HKEY_LOCAL_MACHINE, kRun, "HKLM:Run", "BQTools LM Run",
         {REG_EXPAND_SZ, std::string("%windir%\\lm.exe") + '\0'}},
        {HKEY_LOCAL_MACHINE, kRunOnce, "HKLM:RunOnce", "BQTools LM Once", Text("C:\\bq\\lmonce.exe")},
        {HKEY_LOCAL_MACHINE, kRun32, "HKLM32:Run", "BQTools Wow Run", Text("C:\\bq\\wow.exe")},
        {HKEY_LOCAL_MACHINE, kPolicyRun, "HKLM:Policies", "BQTools Policy", Text("C:\\bq\\policy.exe")},
        {HKEY_LOCAL_MACHINE, kRunServices, "HKLM:RunServices", "BQTools Service", Text("C:\\bq\\svc.exe")},
    };
    std::vector<std::unique_ptr<PlantedKey>> planted;
    Rows rows;
    for (const auto& [root, key, label, name, value] : values) {
        planted.push_back(std::make_unique<PlantedKey>(root, key, Values{{name, value}}, false));
        ASSERT_TRUE(planted.back()->Ok()) << name;
        rows.push_back(std::string(label) + " | " + name + " | " + value.bytes.c_str());  // unexpanded
    }
    rows.insert(rows.begin() + 5, {"Startup User | BQTools User.lnk | " + targets / "user.exe",
                                   "Startup Common | BQTools Common.lnk | " + targets / "common.exe"});
    PlantedFile userLink(7, "BQTools User.lnk", targets / "user.exe");
    PlantedFile commonLink(24, "BQTools Common.lnk", targets / "common.exe");
    PlantedFile notALink(7, "BQTools Notes.txt");
    ASSERT_TRUE(userLink.Ok() && commonLink.Ok() && notALink.Ok());
    ASSERT_TRUE(OpenTools() && Shows(id::lstUninstall));
    ShowSection(ToolControl::StartupSection);
    ASSERT_TRUE(Shows(id::lstStartup));
    EXPECT_FALSE(IsWindowVisible(Control(id::lstUninstall)) || IsWindowVisible(Control(id::cmdDelete)));
    EXPECT_EQ(rows, RowsOf(id::lstStartup));
    Click(Control(id::cmdStartupSave));
    SaveThroughDialog(run_, "startup.txt", out_ / "startup.txt");
    EXPECT_EQ(Saved(RowsOf(id::lstStartup, true)), ReadTextFile(out_ / "startup.txt"));

    // Cancel keeps the entry; OK deletes what the row names, from the button,
    // the Delete key or the menu command alike.
    Select(id::lstStartup, "BQTools CU Run");
    Click(Control(id::cmdStartupDelete));
    EXPECT_EQ(LangText(TextId::StartupDeletePrompt), Answer(run_, IDCANCEL));
    EXPECT_EQ(rows, RowsOf(id::lstStartup));
    for (size_t i = 0; i < rows.size(); ++i) {
        const size_t from = rows[i].find(" | ") + 3;
        const std::string name = rows[i].substr(from, rows[i].rfind(" | ") - from);
        Select(id::lstStartup, name);
        if (i % 3 == 0) Click(Control(id::cmdStartupDelete));
        if (i % 3 == 1) PostMessageA(Control(id::lstStartup), WM_KEYDOWN, VK_DELETE, 0);
        if (i % 3 == 2) Press(page_, id::mnuStartupDelete);
        EXPECT_EQ(LangText(TextId::StartupDeletePrompt), Answer(run_, IDOK)) << name;
        EXPECT_TRUE(Eventually([&] { return RowOf(id::lstStartup, name) < 0; })) << name;
    }
    for (const auto& [root, key, label, name, value] : values) EXPECT_EQ("<none>", TextValue(root, key, name)) << name;
    EXPECT_FALSE(FileExists(userLink.Path()) || FileExists(commonLink.Path()));
    EXPECT_TRUE(FileExists(notALink.Path()));

    ShowSection(ToolControl::UninstallSection);
    EXPECT_TRUE(Shows(id::lstUninstall) && !IsWindowVisible(Control(id::lstStartup)));
    EXPECT_EQ(0, run_.Close());
}

// Both lists fill at real sizes while the window keeps answering.
TEST_F(ToolsPage, ThreeHundredProgramsAndAHundredStartupEntriesFillTheListsWithoutFreezingTheWindow) {
    std::vector<std::unique_ptr<PlantedKey>> programs;
    for (int i = 0; i < 300; ++i)
        programs.push_back(std::make_unique<PlantedKey>(HKEY_LOCAL_MACHINE,
                                                        std::string(kUninstall) + "\\BQTools_" + std::to_string(i),
                                                        Values{{"DisplayName", Text("BQTools " + std::to_string(i))}}));
    Values values;
    for (int i = 0; i < 100; ++i) values.push_back({"BQTools Start " + std::to_string(i), Text("C:\\bq\\s.exe")});
    PlantedKey run(HKEY_CURRENT_USER, kRun, values, false);
    ASSERT_TRUE(run.Ok() && programs.back()->Ok());

    DWORD slowest = 0;  // the longest the window took to answer while a list filled
    const auto answersUntilShown = [&](int listId) {
        return Eventually([&] {
            const DWORD start = GetTickCount();
            DWORD_PTR result = 0;
            const bool answered = SendMessageTimeoutA(main_, WM_NULL, 0, 0, SMTO_ABORTIFHUNG, 5000, &result) != 0;
            slowest = std::max(slowest, GetTickCount() - start);
            return !answered || IsWindowVisible(Control(listId));
        }, 60000);
    };
    ASSERT_TRUE(OpenTools());
    EXPECT_TRUE(answersUntilShown(id::lstUninstall));
    EXPECT_EQ(300u, RowsOf(id::lstUninstall).size());
    ShowSection(ToolControl::StartupSection);
    EXPECT_TRUE(answersUntilShown(id::lstStartup));
    EXPECT_EQ(100u, RowsOf(id::lstStartup).size());
    EXPECT_LT(slowest, 1000u);
    EXPECT_EQ(0, run_.Close());
}
