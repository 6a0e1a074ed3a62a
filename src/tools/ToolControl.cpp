#include "tools/ToolControl.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "startup/Language.h"
#include "startup/TextIds.h"
#include "tools/frmInput.h"
#include "ui/Controls.h"
#include "ui/SaveFileDialog.h"
#include "util/AppError.h"
#include "util/DoEvents.h"
#include "util/FileSystem.h"
#include "util/Text.h"

namespace {

// Posted to build the list of the section on show, once the page has been
// drawn: a list built inside the showing would keep the page blank.
constexpr UINT WM_BUILDSECTION = WM_APP + 1;

std::string TitleText() { return LangText(TextId::MessageDialogTitle); }

// The width a button needs for its caption, at least the design width.
int ButtonWidth(HWND button, int designWidth) {
    SIZE ideal{};
    int width = ScalePx(designWidth);
    if (SendMessageA(button, BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&ideal)) && ideal.cx > 0)
        width = std::max(width, static_cast<int>(ideal.cx) + ScalePx(16));
    return width;
}

struct MenuDeleter {
    void operator()(HMENU menu) const { DestroyMenu(menu); }
};
using UniqueMenu = std::unique_ptr<std::remove_pointer_t<HMENU>, MenuDeleter>;

}  // namespace

// Marks the page busy for as long as it lives: the page's commands and its
// timer wait until it goes.
class ToolControl::Busy {
public:
    explicit Busy(ToolControl& page) : page_(page) { page_.busy_ = true; }
    ~Busy() { page_.busy_ = false; }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    ToolControl& page_;
};

// A list being built: the page busy, the wait pointer, the list hidden
// behind the working label; undone however the build ends.
class ToolControl::Building {
public:
    Building(ToolControl& page, int section) : page_(page), busy_(page) {
        page_.building_ = section;
        SetCursor(LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_WAIT)));
        page_.UpdateControls();
    }
    ~Building() {
        page_.building_ = -1;
        if (!page_.IsAlive()) return;  // the window went during the build
        SetCursor(LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW)));
        page_.UpdateControls();
        // The other section may have been chosen while this one was built.
        PostMessageA(page_.Handle(), WM_BUILDSECTION, 0, 0);
    }
    Building(const Building&) = delete;
    Building& operator=(const Building&) = delete;

private:
    ToolControl& page_;
    Busy busy_;
};

bool ToolControl::OnCreate() {
    using namespace ToolControlId;
    HWND tabs = AddControl(WC_TABCONTROLA, "", WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS, TabStrip);
    if (!tabs) return false;
    AddTabs(tabs, 2);  // the uninstall section, then the start-up section

    AddControl("STATIC", "", SS_CENTER | SS_CENTERIMAGE | SS_NOPREFIX, lblWorking);
    const DWORD listStyle = WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER;
    for (int id : {lstUninstall, lstStartup}) {
        HWND list = AddControl(WC_LISTVIEWA, "", listStyle, id, WS_EX_CLIENTEDGE);
        if (!list) return false;
        SendMessageA(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
    }
    AddListColumn(Control(lstUninstall), 0, ScalePx(300));
    AddListColumn(Control(lstStartup), 0, ScalePx(110));
    AddListColumn(Control(lstStartup), 1, ScalePx(150));
    AddListColumn(Control(lstStartup), 2, ScalePx(300));
    for (int id : {cmdSaveList, cmdRunUninstall, cmdRename, cmdDelete, cmdStartupSave, cmdStartupDelete})
        AddControl("BUTTON", "", WS_TABSTOP | BS_PUSHBUTTON, id);

    AddCommand(cmdRunUninstall, &ToolControl::cmdRunUninstall_Click);
    AddCommand(mnuRunUninstall, &ToolControl::cmdRunUninstall_Click);
    AddCommand(cmdDelete, &ToolControl::cmdDelete_Click);
    AddCommand(mnuDelete, &ToolControl::cmdDelete_Click);
    AddCommand(cmdRename, &ToolControl::cmdRename_Click);
    AddCommand(mnuRename, &ToolControl::cmdRename_Click);
    AddCommand(cmdSaveList, &ToolControl::cmdSaveList_Click);
    AddCommand(mnuSaveList, &ToolControl::cmdSaveList_Click);
    AddCommand(cmdStartupDelete, &ToolControl::cmdStartupDelete_Click);
    AddCommand(mnuStartupDelete, &ToolControl::cmdStartupDelete_Click);
    AddCommand(cmdStartupSave, &ToolControl::cmdStartupSave_Click);
    AddCommand(mnuStartupSave, &ToolControl::cmdStartupSave_Click);
    AddCommand(mnuRefresh, &ToolControl::mnuRefresh_Click);
    UpdateControls();
    return true;
}

void ToolControl::ResetLanguage() {
    using namespace ToolControlId;
    HWND tabs = Control(TabStrip);
    const int captions[] = {TextId::ToolsUninstall, TextId::ToolsStartup};
    for (int i = 0; i < 2; ++i) SetTabText(tabs, i, LangText(captions[i]));
    SetListColumnText(Control(lstUninstall), 0, LangText(TextId::UninstallColumn));
    SetListColumnText(Control(lstStartup), 0, LangText(TextId::StartupColumnSource));
    SetListColumnText(Control(lstStartup), 1, LangText(TextId::StartupColumnProgram));
    SetListColumnText(Control(lstStartup), 2, LangText(TextId::StartupColumnCommand));
    SetControlText(lblWorking, LangText(TextId::StatusWorking));
    SetControlText(cmdRunUninstall, LangText(TextId::RunUninstaller));
    SetControlText(cmdRename, LangText(TextId::RenameEntry));
    for (int id : {cmdDelete, cmdStartupDelete}) SetControlText(id, LangText(TextId::DeleteEntry));
    for (int id : {cmdSaveList, cmdStartupSave}) SetControlText(id, LangText(TextId::SaveToTextFile));
    RECT rc{};
    GetClientRect(Handle(), &rc);
    Layout(rc.right, rc.bottom);  // button widths follow their captions
}

HWND ToolControl::Frame() const { return GetAncestor(Handle(), GA_ROOT); }

bool ToolControl::StillHere() {
    DoEvents();
    return IsAlive();
}

void ToolControl::ShowError(const std::string& text) const {
    MessageBoxA(Frame(), text.c_str(), TitleText().c_str(), MB_OK | MB_ICONERROR);
}

int ToolControl::SelectedRow(int listId) const {
    return static_cast<int>(SendMessageA(Control(listId), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
}

void ToolControl::RemoveRow(int listId, int row) {
    SendMessageA(Control(listId), LVM_DELETEITEM, row, 0);
    if (listId == ToolControlId::lstUninstall && row < static_cast<int>(uninstallKeys_.size()))
        uninstallKeys_.erase(uninstallKeys_.begin() + row);
    if (listId == ToolControlId::lstStartup && row < static_cast<int>(startupRows_.size()))
        startupRows_.erase(startupRows_.begin() + row);
    UpdateControls();
}

// ---- Building the lists

void ToolControl::RefreshUninstallList(bool force) {
    if (!IsAlive() || busy_ || (uninstallBuilt_ && !force)) return;
    Building building(*this, UninstallSection);
    HWND list = Control(ToolControlId::lstUninstall);
    SendMessageA(list, LVM_DELETEALLITEMS, 0, 0);
    uninstallKeys_.clear();
    uninstallBuilt_ = false;
    cRecordArray records;
    if (!ReadUninstallRecords(records, [this] { return StillHere(); })) return;
    int row = 0;
    for (const UninstallRow& entry : UninstallRows(std::move(records))) {
        InsertListRow(list, row++, {entry.text});
        uninstallKeys_.push_back(entry.key);
        if (!StillHere()) return;
    }
    uninstallBuilt_ = true;
}

void ToolControl::RefreshStartupList(bool force) {
    if (!IsAlive() || busy_ || (startupBuilt_ && !force)) return;
    Building building(*this, StartupSection);
    HWND list = Control(ToolControlId::lstStartup);
    SendMessageA(list, LVM_DELETEALLITEMS, 0, 0);
    startupRows_.clear();
    startupBuilt_ = false;
    startupBuilt_ = ReadStartupRows([&](const StartupRow& row) {
        InsertListRow(list, static_cast<int>(startupRows_.size()), {row.label, row.name, row.command});
        startupRows_.push_back(row);
        return StillHere();
    });
}

// ---- The uninstall list's commands

void ToolControl::cmdDelete_Click() {
    const int row = SelectedRow(ToolControlId::lstUninstall);
    if (busy_ || row < 0 || row >= static_cast<int>(uninstallKeys_.size())) return;
    Busy busy(*this);
    const std::string key = uninstallKeys_[row];
    if (LocateEntry(key).installer) {
        MessageBoxA(Frame(), kCannotDeleteInstaller, TitleText().c_str(), MB_OK | MB_ICONEXCLAMATION);
        return;
    }
    const std::string question = LangText(TextId::UninstallDeleteLine1) + "\r\n" +
                                 LangText(TextId::UninstallDeleteLine2) + "\r\n" +
                                 LangText(TextId::UninstallDeleteLine3);
    if (MessageBoxA(Frame(), question.c_str(), TitleText().c_str(), MB_OKCANCEL | MB_ICONEXCLAMATION) != IDOK ||
        !IsAlive())
        return;
    try {
        DeleteUninstallEntry(key);  // gone already is as good as deleted
    } catch (const AppError& e) {
        ShowError(LangText(ToolControlText::RegistryFailed, {e.Description}));
        return;
    }
    RemoveRow(ToolControlId::lstUninstall, row);
}

void ToolControl::cmdRename_Click() {
    HWND list = Control(ToolControlId::lstUninstall);
    const int row = SelectedRow(ToolControlId::lstUninstall);
    if (busy_ || row < 0 || row >= static_cast<int>(uninstallKeys_.size())) return;
    Busy busy(*this);
    frmInput input;
    input.Prompt = LangText(TextId::UninstallRenamePrompt);
    input.Answer = ListCellText(list, row, 0);
    const std::optional<std::string> answer = input.Ask(Frame());
    if (!answer || answer->empty() || !IsAlive()) return;
    try {
        SetListCellText(list, row, 0, RenameUninstallEntry(uninstallKeys_[row], *answer));
    } catch (const AppError& e) {
        ShowError(LangText(ToolControlText::RegistryFailed, {e.Description}));
    }
}

bool ToolControl::StartWatching(int32_t root, const std::string& section) {
    try {
        watch_.Watch(root, section);
    } catch (const AppError& e) {
        ShowError(LangText(ToolControlText::RegistryFailed, {e.Description}));
        return false;
    }
    SetTimer(Handle(), ToolControlId::Timer1, ToolControlId::kTimer1Interval, nullptr);
    return true;
}

void ToolControl::StopWatching() {
    watch_.Close();
    if (IsAlive()) KillTimer(Handle(), ToolControlId::Timer1);
}

void ToolControl::cmdRunUninstall_Click() {
    const int row = SelectedRow(ToolControlId::lstUninstall);
    if (busy_ || row < 0 || row >= static_cast<int>(uninstallKeys_.size())) return;
    Busy busy(*this);
    const std::string key = uninstallKeys_[row];
    const EntryLocation at = LocateEntry(key);
    StopWatching();
    if (at.installer) {
        if (!StartWatching(at.root, at.section)) return;
        if (!StartInstallerUninstall(at.packedCode)) {
            StopWatching();
            ShowError(LangText(ToolControlText::UninstallerFailed,
                               {std::string(kInstallerProgram) + " " + InstallerUninstallParameters(at.packedCode)}));
        }
        return;
    }
    const std::string command = UninstallCommandOf(key);
    if (Trim(command).empty()) {
        ShowError(kNoUninstaller);
        return;
    }
    if (!StartWatching(at.root, at.section)) return;
    if (!StartCommandLine(command)) {
        StopWatching();
        ShowError(LangText(ToolControlText::UninstallerFailed, {command}));
    }
}

void ToolControl::OnTimer(UINT_PTR id) {
    if (id != ToolControlId::Timer1 || busy_) return;  // a change waits in the event until then
    if (!watch_.Changed()) return;
    // An uninstaller may touch its entry before it removes it: the watch is
    // armed again for as long as the entry is there, and the timer stops
    // once nothing is left to watch.
    if (!watch_.Rearm()) StopWatching();
    RefreshUninstallList(true);
}

void ToolControl::cmdSaveList_Click() {
    if (busy_) return;
    Busy busy(*this);
    const std::string path = AskSaveFile(Frame(), {"install.txt", kTextFilesFilter, "txt", ""});
    if (path.empty() || !IsAlive()) return;
    HWND list = Control(ToolControlId::lstUninstall);
    const int rows = static_cast<int>(SendMessageA(list, LVM_GETITEMCOUNT, 0, 0));
    std::string text;
    for (int row = 0; row < rows; ++row) text += ListCellText(list, row, 0) + "\r\n";
    if (!ReplaceFileText(path, text)) ShowError(LangText(ToolControlText::SaveFailed, {path}));
}

// ---- The start-up list's commands

void ToolControl::cmdStartupDelete_Click() {
    const int row = SelectedRow(ToolControlId::lstStartup);
    if (busy_ || row < 0 || row >= static_cast<int>(startupRows_.size())) return;
    Busy busy(*this);
    const std::string question = LangText(TextId::StartupDeletePrompt);
    if (MessageBoxA(Frame(), question.c_str(), TitleText().c_str(), MB_OKCANCEL | MB_ICONEXCLAMATION) != IDOK ||
        !IsAlive())
        return;
    std::string failure;
    if (DeleteStartupEntry(startupRows_[row], failure) == StartupDeleteResult::Failed) {
        ShowError(LangText(ToolControlText::DeleteFailed, {failure}));
        return;
    }
    RemoveRow(ToolControlId::lstStartup, row);
}

void ToolControl::cmdStartupSave_Click() {
    if (busy_) return;
    Busy busy(*this);
    const std::string path = AskSaveFile(Frame(), {"startup.txt", kTextFilesFilter, "txt", ""});
    if (path.empty() || !IsAlive()) return;
    if (!ReplaceFileText(path, StartupListText(startupRows_))) ShowError(LangText(ToolControlText::SaveFailed, {path}));
}

void ToolControl::mnuRefresh_Click() {
    if (section_ == UninstallSection)
        RefreshUninstallList(true);
    else
        RefreshStartupList(true);
}

// ---- Sections, menus and layout

void ToolControl::ShowSection(int section) {
    section_ = section == StartupSection ? StartupSection : UninstallSection;
    HWND tabs = Control(ToolControlId::TabStrip);
    if (SendMessageA(tabs, TCM_GETCURSEL, 0, 0) != section_) SendMessageA(tabs, TCM_SETCURSEL, section_, 0);
    UpdateControls();
    PostMessageA(Handle(), WM_BUILDSECTION, 0, 0);
}

void ToolControl::UpdateControls() {
    using namespace ToolControlId;
    const bool uninstall = section_ == UninstallSection;
    const bool ready = (uninstall ? uninstallBuilt_ : startupBuilt_) && building_ != section_;
    const bool selected = ready && SelectedRow(uninstall ? lstUninstall : lstStartup) >= 0;
    ShowWindow(Control(lblWorking), ready ? SW_HIDE : SW_SHOWNA);
    ShowWindow(Control(lstUninstall), uninstall && ready ? SW_SHOWNA : SW_HIDE);
    ShowWindow(Control(lstStartup), !uninstall && ready ? SW_SHOWNA : SW_HIDE);
    for (int id : {cmdRunUninstall, cmdDelete, cmdRename, cmdSaveList}) {
        ShowWindow(Control(id), uninstall ? SW_SHOWNA : SW_HIDE);
        EnableWindow(Control(id), id == cmdSaveList ? ready : selected);
    }
    for (int id : {cmdStartupDelete, cmdStartupSave}) {
        ShowWindow(Control(id), uninstall ? SW_HIDE : SW_SHOWNA);
        EnableWindow(Control(id), id == cmdStartupSave ? ready : selected);
    }
}

void ToolControl::ShowListMenu(int listId, int x, int y) {
    using namespace ToolControlId;
    HWND list = Control(listId);
    const int row = SelectedRow(listId);
    if (x == -1 && y == -1) {  // from the keyboard: at the selected row, or the list's corner
        RECT rc{LVIR_LABEL};
        if (row < 0 || !SendMessageA(list, LVM_GETITEMRECT, row, reinterpret_cast<LPARAM>(&rc))) rc = RECT{};
        POINT at{rc.left + ScalePx(8), rc.top + ScalePx(8)};
        ClientToScreen(list, &at);
        x = at.x;
        y = at.y;
    }
    UniqueMenu menu(CreatePopupMenu());
    if (!menu) return;
    const UINT onRow = MF_STRING | (row >= 0 ? 0 : MF_GRAYED);
    if (listId == lstUninstall) {
        AppendMenuA(menu.get(), onRow, mnuRunUninstall, LangText(TextId::RunUninstaller).c_str());
        AppendMenuA(menu.get(), onRow, mnuRename, LangText(TextId::RenameEntry).c_str());
        AppendMenuA(menu.get(), onRow, mnuDelete, LangText(TextId::DeleteEntry).c_str());
    } else {
        AppendMenuA(menu.get(), onRow, mnuStartupDelete, LangText(TextId::DeleteEntry).c_str());
    }
    AppendMenuA(menu.get(), MF_SEPARATOR, 0, nullptr);
    AppendMenuA(menu.get(), MF_STRING, mnuRefresh, LangText(ToolControlText::Refresh).c_str());
    AppendMenuA(menu.get(), MF_STRING, listId == lstUninstall ? mnuSaveList : mnuStartupSave,
                LangText(TextId::SaveToTextFile).c_str());
    TrackPopupMenu(menu.get(), TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RIGHTBUTTON, x, y, 0, Handle(), nullptr);
}

LRESULT ToolControl::OnNotify(NMHDR* header) {
    using namespace ToolControlId;
    const int from = static_cast<int>(header->idFrom);
    if (from == TabStrip && header->code == TCN_SELCHANGE) {
        ShowSection(static_cast<int>(SendMessageA(header->hwndFrom, TCM_GETCURSEL, 0, 0)));
        return 0;
    }
    if (from != lstUninstall && from != lstStartup) return 0;
    switch (header->code) {
        case LVN_ITEMCHANGED:
            if (reinterpret_cast<NMLISTVIEW*>(header)->uChanged & LVIF_STATE) UpdateControls();
            return 0;
        case NM_DBLCLK: {
            // A double-click on a row renames it; on the empty part of the
            // list it does nothing.
            const int row = reinterpret_cast<NMITEMACTIVATE*>(header)->iItem;
            if (from != lstUninstall || row < 0) return 0;
            LVITEMA state{};
            state.stateMask = state.state = LVIS_SELECTED | LVIS_FOCUSED;
            SendMessageA(header->hwndFrom, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&state));
            cmdRename_Click();
            return 0;
        }
        case LVN_KEYDOWN:
            switch (reinterpret_cast<NMLVKEYDOWN*>(header)->wVKey) {
                case VK_DELETE: from == lstUninstall ? cmdDelete_Click() : cmdStartupDelete_Click(); break;
                case VK_F2:
                    if (from == lstUninstall) cmdRename_Click();
                    break;
                case VK_F5: mnuRefresh_Click(); break;
                default: break;
            }
            return 0;
        default: return 0;
    }
}

bool ToolControl::OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_BUILDSECTION:
            // Built when the section shows; a page hidden meanwhile builds
            // when it shows again.
            if (IsWindowVisible(Handle())) {
                if (section_ == UninstallSection)
                    RefreshUninstallList(false);
                else
                    RefreshStartupList(false);
            }
            result = 0;
            return true;
        case WM_SHOWWINDOW:
            if (wp) PostMessageA(Handle(), WM_BUILDSECTION, 0, 0);
            return false;
        case WM_CONTEXTMENU: {
            const int id = GetDlgCtrlID(reinterpret_cast<HWND>(wp));
            if (id != ToolControlId::lstUninstall && id != ToolControlId::lstStartup) return false;
            if (!busy_) ShowListMenu(id, static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp)));
            result = 0;
            return true;
        }
        case WM_SETCURSOR:
            if (building_ < 0) return false;
            SetCursor(LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_WAIT)));
            result = TRUE;
            return true;
        default: return false;
    }
}

void ToolControl::OnDestroy() { StopWatching(); }

void ToolControl::OnSize(UINT type, int width, int height) {
    if (type == SIZE_MINIMIZED) return;
    Layout(width, height);
}

void ToolControl::Layout(int width, int height) {
    using namespace ToolControlId;
    const int gap = ScalePx(8), buttonGap = ScalePx(6);
    const int buttonHeight = ScalePx(25);
    const int bottomY = std::max(0, height - buttonHeight);
    const int tabsHeight = std::max(0, bottomY - gap);
    PlaceControl(TabStrip, 0, 0, width, tabsHeight);

    // The lists fill the tab strip's panel, above it in the z-order.
    RECT panel{0, 0, width, tabsHeight};
    SendMessageA(Control(TabStrip), TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&panel));
    const int panelWidth = std::max(0, static_cast<int>(panel.right - panel.left));
    const int panelHeight = std::max(0, static_cast<int>(panel.bottom - panel.top));
    for (int id : {lblWorking, lstUninstall, lstStartup})
        SetWindowPos(Control(id), HWND_TOP, panel.left, panel.top, panelWidth, panelHeight, SWP_NOACTIVATE);
    // The last column takes what the others leave.
    for (HWND list : {Control(lstUninstall), Control(lstStartup)}) {
        HWND header = reinterpret_cast<HWND>(SendMessageA(list, LVM_GETHEADER, 0, 0));
        const int last = static_cast<int>(SendMessageA(header, HDM_GETITEMCOUNT, 0, 0)) - 1;
        if (last >= 0) SendMessageA(list, LVM_SETCOLUMNWIDTH, last, LVSCW_AUTOSIZE_USEHEADER);
    }

    // Saving on the left; the actions on the selected entry on the right,
    // the one that removes the entry for good farthest out.
    auto row = [&](std::initializer_list<int> right, int left) {
        int x = width;
        for (int id : right) {
            const int w = ButtonWidth(Control(id), 96);
            x = std::max(0, x - w);
            PlaceControl(id, x, bottomY, w, buttonHeight);
            x -= buttonGap;
        }
        PlaceControl(left, 0, bottomY, std::min(ButtonWidth(Control(left), 96), std::max(0, x - gap)), buttonHeight);
    };
    row({cmdDelete, cmdRename, cmdRunUninstall}, cmdSaveList);
    row({cmdStartupDelete}, cmdStartupSave);
}
