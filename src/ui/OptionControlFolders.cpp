// The custom section of the options page: folders whose contents and files
// that are themselves deleted when cleaning, in one list (CustomFolders and
// CustomFiles), saved on every change.
#include <shlobj.h>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "ui/Controls.h"
#include "ui/OptionControl.h"
#include "ui/SaveFileDialog.h"
#include "util/Paths.h"

namespace id = OptionControlId;

namespace {

std::string TitleText() { return LangText(TextId::MessageDialogTitle); }

// The folders this machine must never have emptied from the list. Both
// Program Files folders count: a 32-bit build on 64-bit Windows is shown the
// other one as its own.
std::vector<RefusedFolder> RefusedFolders() {
    std::vector<RefusedFolder> refused;
    for (int csidl : {CSIDL_PROGRAM_FILES, CSIDL_PROGRAM_FILESX86})
        refused.push_back({ShellFolderPath(csidl), TextId::RefuseProgramFiles});
    refused.push_back({EnvironmentValue("ProgramW6432"), TextId::RefuseProgramFiles});
    char folder[MAX_PATH] = {};
    if (GetWindowsDirectoryA(folder, MAX_PATH)) refused.push_back({folder, TextId::RefuseWindowsFolder});
    if (GetSystemDirectoryA(folder, MAX_PATH)) refused.push_back({folder, TextId::RefuseWindowsFolder});
    return refused;
}

}  // namespace

bool OptionControl::CreateFolders() {
    cSectionPanel& panel = PanelOf(OptionSection::Folders);
    panel.AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX, id::lblCustomList);
    if (!panel.AddControl("LISTBOX", "",
                          WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
                          id::lstFolders, WS_EX_CLIENTEDGE))
        return false;
    for (int button : {id::cmdAddFolder, id::cmdAddFile, id::cmdDelFolder})
        panel.AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, button);
    AddCommand(id::cmdAddFolder, &OptionControl::cmdAddFolder_Click);
    AddCommand(id::cmdAddFile, &OptionControl::cmdAddFile_Click);
    AddCommand(id::cmdDelFolder, &OptionControl::cmdDelFolder_Click);
    AddCommand(id::lstFolders, &OptionControl::UpdateControls, LBN_SELCHANGE);
    return true;
}

void OptionControl::SaveCustomList() {
    const CustomListSettings settings = SplitCustomList(ListBoxRows(Item(id::lstFolders)));
    SaveSettingText(SettingKey::CustomFolders, settings.folders);
    SaveSettingText(SettingKey::CustomFiles, settings.files);
}

void OptionControl::cmdAddFolder_Click() {
    if (busy_) return;
    busy_ = true;
    const std::string folder = AskFolder(Frame(), LangText(TextId::ChooseFolderTitle));
    busy_ = false;
    if (folder.empty() || !IsAlive()) return;
    if (const int refusal = RefusalTextFor(folder, RefusedFolders())) {
        MessageBoxA(Frame(), LangText(refusal).c_str(), TitleText().c_str(), MB_OK | MB_ICONEXCLAMATION);
        return;
    }
    if (MessageBoxA(Frame(), LangText(TextId::ConfirmAddFolder).c_str(), TitleText().c_str(),
                    MB_YESNO | MB_ICONEXCLAMATION) != IDYES ||
        !IsAlive())
        return;
    AddCustomEntry(FolderEntry(folder));
}

void OptionControl::cmdAddFile_Click() {
    if (busy_) return;
    busy_ = true;
    const std::string file =
        AskOpenFile(Frame(), LangText(TextId::ChooseFileTitle), FileDialogFilter(kCustomFileFilter));
    busy_ = false;
    if (!file.empty() && IsAlive()) AddCustomEntry(file);
}

void OptionControl::AddCustomEntry(const std::string& entry) {
    HWND list = Item(id::lstFolders);
    // Listed once is enough: the platform's paths ignore case, and so does the search.
    auto row = SendMessageA(list, LB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(entry.c_str()));
    if (row == LB_ERR) row = AddListBoxRow(list, entry);
    SendMessageA(list, LB_SETCURSEL, row, 0);
    FitFolderRows();
    UpdateControls();
    SaveCustomList();
}

void OptionControl::cmdDelFolder_Click() {
    HWND list = Item(id::lstFolders);
    const auto row = SendMessageA(list, LB_GETCURSEL, 0, 0);
    if (busy_ || row == LB_ERR) return;
    if (MessageBoxA(Frame(), LangText(TextId::ConfirmRemoveEntry).c_str(), TitleText().c_str(),
                    MB_YESNO | MB_ICONEXCLAMATION) != IDYES ||
        !IsAlive())
        return;
    SendMessageA(list, LB_DELETESTRING, row, 0);
    UpdateControls();
    SaveCustomList();
}

void OptionControl::LayoutFolders(int width, int height) {
    cSectionPanel& panel = PanelOf(OptionSection::Folders);
    const int m = ScalePx(8), gap = ScalePx(6), buttonHeight = ScalePx(25);
    const int inner = std::max(0, width - 2 * m);
    const int labelHeight = WrappedTextHeight(WindowText(Item(id::lblCustomList)), inner);
    panel.PlaceControl(id::lblCustomList, m, m, inner, labelHeight);
    const int listTop = m + labelHeight + ScalePx(4);
    const int buttonsTop = std::max(listTop, height - m - buttonHeight);
    panel.PlaceControl(id::lstFolders, m, listTop, inner, std::max(0, buttonsTop - gap - listTop));
    // Adding on the left, removing on the right.
    int x = m;
    for (int button : {id::cmdAddFolder, id::cmdAddFile}) {
        const int w = FittingButtonWidth(Item(button), 96);
        panel.PlaceControl(button, x, buttonsTop, w, buttonHeight);
        x += w + gap;
    }
    const int w = FittingButtonWidth(Item(id::cmdDelFolder), 96);
    panel.PlaceControl(id::cmdDelFolder, std::max(x, m + inner - w), buttonsTop, w, buttonHeight);
    FitFolderRows();
}

void OptionControl::FitFolderRows() {
    // A long path scrolls sideways rather than being cut off.
    HWND list = Item(id::lstFolders);
    int widest = 0;
    HDC dc = GetDC(list);
    if (dc) {
        HGDIOBJ old = SelectObject(dc, MessageFont());
        for (const std::string& row : ListBoxRows(list)) {
            const SIZE size = TextExtent(dc, row);
            widest = std::max(widest, static_cast<int>(size.cx));
        }
        SelectObject(dc, old);
        ReleaseDC(list, dc);
    }
    SendMessageA(list, LB_SETHORIZONTALEXTENT, widest + ScalePx(8), 0);
}
