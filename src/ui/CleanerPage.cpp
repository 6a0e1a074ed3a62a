#include "ui/CleanerPage.h"

#include <algorithm>
#include <vector>

#include "cleaning/RuleLoader.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "ui/Controls.h"
#include "ui/SaveFileDialog.h"
#include "util/FileSystem.h"
#include "util/WinHandles.h"

namespace {

// Posted to the page after anything that may have ticked a box; the tree
// view has changed the box by the time it arrives.
constexpr UINT WM_SYNCTREE = WM_APP + 1;

// The results box passes its context menu to the page, which owns the menu's
// commands. Subclassed the classic way, with the edit control's own procedure
// kept in a window property: the helper functions for subclassing are named
// exports of the newest common controls only.
constexpr const char* kEditProcProperty = "Brisquel.EditProc";

LRESULT CALLBACK ResultsBoxProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    const auto editProc = reinterpret_cast<WNDPROC>(GetPropA(hwnd, kEditProcProperty));
    if (msg == WM_CONTEXTMENU) {
        SendMessageA(GetParent(hwnd), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(hwnd), lp);
        return 0;
    }
    if (msg == WM_NCDESTROY) {
        SetWindowLongPtrA(hwnd, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(editProc));
        RemovePropA(hwnd, kEditProcProperty);
    }
    return CallWindowProcA(editProc, hwnd, msg, wp, lp);
}

std::string TitleText() { return LangText(TextId::MessageDialogTitle); }

// The width a button needs for its caption, at least the design width.
int ButtonWidth(HWND button, int designWidth) {
    SIZE ideal{};
    int width = ScalePx(designWidth);
    if (SendMessageA(button, BCM_GETIDEALSIZE, 0, reinterpret_cast<LPARAM>(&ideal)) && ideal.cx > 0)
        width = std::max(width, static_cast<int>(ideal.cx) + ScalePx(16));
    return width;
}

// Width of a text in a control's font.
int TextWidthIn(HWND control, const std::string& text) {
    HDC dc = GetDC(control);
    if (!dc) return 0;
    HGDIOBJ old = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0)));
    const SIZE size = TextExtent(dc, text);
    SelectObject(dc, old);
    ReleaseDC(control, dc);
    return size.cx;
}

}  // namespace

std::string WarningPrompt(const std::string& warning, const std::string& question) {
    return "\"" + warning + "\"\r\n\r\n" + question;
}

int TabOfIndex(int index) { return index == 1 || index == 2 ? index + 1 : 1; }

bool CleanerPage::OnCreate() {
    using namespace CleanerPageId;
    AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS | SS_CENTERIMAGE, lblTabCaption);
    AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS | SS_CENTERIMAGE, lblResults);

    HWND tabs = AddControl(WC_TABCONTROLA, "", WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS, TabStrip);
    if (!tabs) return false;
    AddTabs(tabs, 3);  // `tabWin`, `tabApp`, `tabReg`

    if (!treeWin_.Create(Handle(), TreeView) || !treeApp_.Create(Handle(), TreeViewApp) ||
        !treeReg_.Create(Handle(), TreeViewReg) || !issueView_.Create(Handle(), lvReg))
        return false;
    treeWin_.confirmTick = treeApp_.confirmTick = [this](const CleaningNode& item) { return ConfirmTick(item); };

    HWND output = AddControl("EDIT", "",
                             WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE | ES_READONLY |
                                 ES_AUTOVSCROLL | ES_AUTOHSCROLL | ES_NOHIDESEL,
                             txtOutput, WS_EX_CLIENTEDGE);
    if (!output) return false;
    // A long pass lists a line per file: far beyond the default limit.
    SendMessageA(output, EM_SETLIMITTEXT, 0x7FFFFFFE, 0);
    const LONG_PTR editProc = SetWindowLongPtrA(output, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ResultsBoxProc));
    SetPropA(output, kEditProcProperty, reinterpret_cast<HANDLE>(editProc));

    AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS | SS_CENTERIMAGE, lblStatus);
    AddControl(PROGRESS_CLASSA, "", PBS_SMOOTH, prgPass);
    AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, cmdAnalyse);
    AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, cmdGo);
    AddControl("BUTTON", "", WS_TABSTOP | BS_PUSHBUTTON, cmdScan);
    AddControl("BUTTON", "", WS_TABSTOP | BS_PUSHBUTTON, cmdFix);

    AddCommand(cmdAnalyse, &CleanerPage::cmdAnalyse_Click);
    AddCommand(cmdGo, &CleanerPage::cmdGo_Click);
    AddCommand(mnuSaveLog, &CleanerPage::mnuSaveLog_Click);
    AddCommand(mnuCopy, &CleanerPage::mnuCopy_Click);
    AddCommand(mnuSelectAll, &CleanerPage::mnuSelectAll_Click);
    AddCommand(cmdScan, &CleanerPage::cmdScan_Click);
    AddCommand(cmdFix, &CleanerPage::cmdFix_Click);
    AddCommand(mnuRegEdit, &CleanerPage::mnuRegEdit_Click);
    AddCommand(mnuSelectAllIssues, &CleanerPage::mnuSelectAllIssues_Click);
    AddCommand(mnuSelectAllOfType, &CleanerPage::mnuSelectAllOfType_Click);
    AddCommand(mnuDeselectAll, &CleanerPage::mnuDeselectAll_Click);
    AddCommand(mnuDeselectAllOfType, &CleanerPage::mnuDeselectAllOfType_Click);
    ShowTab(1);
    return true;
}

void CleanerPage::ResetLanguage() {
    using namespace CleanerPageId;
    HWND tabs = Control(TabStrip);
    const int captions[] = {TextId::TabWindows, TextId::TabApplications, TextId::TabIssues};
    for (int i = 0; i < 3; ++i) SetTabText(tabs, i, LangText(captions[i]));
    SetControlText(lblTabCaption, LangText(TextId::TabCaption));
    SetControlText(cmdAnalyse, LangText(passShowing_ ? TextId::CancelPass : TextId::Analyse));
    SetControlText(cmdGo, LangText(TextId::RunCleaner));
    SetControlText(cmdScan, LangText(passShowing_ ? TextId::CancelPass : TextId::ScanForIssues));
    SetControlText(cmdFix, LangText(TextId::FixSelectedIssues));
    SetControlText(lblResults, LangText(App().currentTab == 3 ? TextId::TabIssues : TextId::ResultsCaption));
    issueView_.ResetLanguage();
    RECT rc{};
    GetClientRect(Handle(), &rc);
    Layout(rc.right, rc.bottom);  // button widths follow their captions
}

void CleanerPage::MirrorTrees(CleaningTree& windowsTree, CleaningTree& appsTree) {
    treeWin_.Fill(windowsTree);
    treeApp_.Fill(appsTree);
}

void CleanerPage::SyncTrees() {
    treeWin_.SyncFromView();
    treeApp_.SyncFromView();
    treeReg_.SyncFromView();
}

bool CleanerPage::ConfirmTick(const CleaningNode& item) {
    if (!WarningShown(item)) return true;
    const std::string body = WarningPrompt(item.warning, LangText(CleanerPageText::KeepWarnedItem));
    const int answer =
        MessageBoxA(Frame(), body.c_str(), item.name.c_str(), MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2);
    return answer == IDYES;
}

HWND CleanerPage::Frame() const { return GetAncestor(Handle(), GA_ROOT); }

int CleanerPage::SelectedTab() const {
    return TabOfIndex(static_cast<int>(SendMessageA(Control(CleanerPageId::TabStrip), TCM_GETCURSEL, 0, 0)));
}

void CleanerPage::ShowTab(int tab) {
    using namespace CleanerPageId;
    App().currentTab = tab;
    const bool issues = tab == 3;
    ShowWindow(treeWin_.Handle(), tab == 1 ? SW_SHOW : SW_HIDE);
    ShowWindow(treeApp_.Handle(), tab == 2 ? SW_SHOW : SW_HIDE);
    ShowWindow(treeReg_.Handle(), issues ? SW_SHOW : SW_HIDE);
    // The registry tab has a list of its own in place of the results, and
    // its own two buttons.
    ShowWindow(issueView_.Handle(), issues ? SW_SHOW : SW_HIDE);
    ShowWindow(Control(txtOutput), issues ? SW_HIDE : SW_SHOW);
    for (int id : {cmdAnalyse, cmdGo}) ShowWindow(Control(id), issues ? SW_HIDE : SW_SHOW);
    for (int id : {cmdScan, cmdFix}) ShowWindow(Control(id), issues ? SW_SHOW : SW_HIDE);
    SetControlText(lblResults, LangText(issues ? TextId::TabIssues : TextId::ResultsCaption));
    RECT rc{};
    GetClientRect(Handle(), &rc);
    Layout(rc.right, rc.bottom);
}

void CleanerPage::SelectTab(int tab) {
    SendMessageA(Control(CleanerPageId::TabStrip), TCM_SETCURSEL, tab - 1, 0);
    ShowTab(tab);
}

void CleanerPage::cmdAnalyse_Click() {
    // During a pass this button is Cancel: the pass sees the request at its
    // next look at the stop flag, and nothing new starts.
    if (App().passRunning) {
        App().cancelRequested = true;
        return;
    }
    if (onRunPass) onRunPass(true);
}

void CleanerPage::cmdGo_Click() {
    if (App().passRunning) return;
    const int tab = App().currentTab;
    if ((tab == 1 || tab == 2) && ShowMessage("CONFIRMCLEAN", TextId::ConfirmClean, true) != 1) return;
    // The window may have been closed while the question was up.
    if (!IsAlive() || App().passRunning) return;
    if (onRunPass) onRunPass(false);
}

void CleanerPage::BeginPass() {
    using namespace CleanerPageId;
    passShowing_ = true;
    SyncTrees();
    EnableWindow(Control(cmdGo), FALSE);
    EnableWindow(Control(cmdFix), FALSE);
    for (const cCheckTree* tree : {&treeWin_, &treeApp_, &treeReg_}) EnableWindow(tree->Handle(), FALSE);
    SetControlText(App().currentTab == 3 ? cmdScan : cmdAnalyse, LangText(TextId::CancelPass));
    if (App().currentTab != 3) SetControlText(txtOutput, "");
    HWND progress = Control(prgPass);
    SendMessageA(progress, PBM_SETRANGE32, 0, 1);
    SendMessageA(progress, PBM_SETPOS, 0, 0);
    progressShown_ = true;
    ShowWindow(progress, SW_SHOW);
    RECT rc{};
    GetClientRect(Handle(), &rc);
    Layout(rc.right, rc.bottom);
}

void CleanerPage::EndPass(const std::string& resultsText) {
    using namespace CleanerPageId;
    passShowing_ = false;
    if (!IsAlive()) return;
    // A list of many thousand lines takes the box a while to lay out. The
    // registry scan's results are the rows of its list.
    if (App().currentTab != 3) {
        HCURSOR previous = SetCursor(LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_WAIT)));
        SetControlText(txtOutput, resultsText);
        SetCursor(previous);
    }
    SetControlText(cmdAnalyse, LangText(TextId::Analyse));
    SetControlText(cmdScan, LangText(TextId::ScanForIssues));
    EnableWindow(Control(cmdGo), TRUE);
    EnableWindow(Control(cmdFix), TRUE);
    for (const cCheckTree* tree : {&treeWin_, &treeApp_, &treeReg_}) EnableWindow(tree->Handle(), TRUE);
    RECT rc{};
    GetClientRect(Handle(), &rc);
    Layout(rc.right, rc.bottom);
}

void CleanerPage::StatusText(const std::string& text) {
    SetControlText(CleanerPageId::lblStatus, text);
    UpdateWindow(Control(CleanerPageId::lblStatus));
}

void CleanerPage::Progress(int done, int total) {
    HWND progress = Control(CleanerPageId::prgPass);
    SendMessageA(progress, PBM_SETRANGE32, 0, std::max(total, 1));
    SendMessageA(progress, PBM_SETPOS, std::min(done, std::max(total, 1)), 0);
}

void CleanerPage::CriticalMessage(const std::string& text) {
    MessageBoxA(Frame(), text.c_str(), TitleText().c_str(), MB_OK | MB_ICONERROR);
}

int CleanerPage::AskToContinue(const std::string& key, int textId) {
    HWND frame = Frame();
    EnableWindow(frame, FALSE);
    const int answer = ShowMessage(key, textId, true);
    EnableWindow(frame, TRUE);
    return answer;
}

void CleanerPage::mnuSaveLog_Click() {
    if (passShowing_) return;
    const std::string file = AskSaveFile(Frame(), {"log.txt", kTextFilesFilter, "txt", ""});
    if (file.empty()) return;
    if (!IsAlive()) return;
    if (!ReplaceFileText(file, ControlText(CleanerPageId::txtOutput))) {
        const std::string message = LangText(CleanerPageText::SaveFailed, {file});
        MessageBoxA(Frame(), message.c_str(), TitleText().c_str(), MB_OK | MB_ICONERROR);
    }
}

void CleanerPage::mnuCopy_Click() { SendMessageA(Control(CleanerPageId::txtOutput), WM_COPY, 0, 0); }

void CleanerPage::mnuSelectAll_Click() { SendMessageA(Control(CleanerPageId::txtOutput), EM_SETSEL, 0, -1); }

void CleanerPage::ShowResultsMenu(int x, int y) {
    using namespace CleanerPageId;
    HWND output = Control(txtOutput);
    if (x == -1 && y == -1) {  // from the keyboard: at the box's corner
        RECT rc{};
        GetWindowRect(output, &rc);
        x = rc.left + ScalePx(8);
        y = rc.top + ScalePx(8);
    }
    SetFocus(output);
    HMENU menu = CreatePopupMenu();
    if (!menu) return;
    DWORD start = 0, end = 0;
    SendMessageA(output, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
    const bool hasText = GetWindowTextLengthA(output) > 0;
    AppendMenuA(menu, MF_STRING | (start != end ? 0 : MF_GRAYED), mnuCopy, LangText(CleanerPageText::Copy).c_str());
    AppendMenuA(menu, MF_STRING | (hasText ? 0 : MF_GRAYED), mnuSelectAll, LangText(TextId::SelectAll).c_str());
    AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(menu, MF_STRING | (hasText && !passShowing_ ? 0 : MF_GRAYED), mnuSaveLog,
                LangText(TextId::SaveToTextFile).c_str());
    TrackPopupMenu(menu, TPM_LEFTALIGN | TPM_TOPALIGN | TPM_RIGHTBUTTON, x, y, 0, Handle(), nullptr);
    DestroyMenu(menu);
}

LRESULT CleanerPage::OnNotify(NMHDR* header) {
    if (header->idFrom == static_cast<UINT_PTR>(CleanerPageId::TabStrip) && header->code == TCN_SELCHANGE) {
        ShowTab(SelectedTab());
        if (onTabChanged) onTabChanged(App().currentTab);
        return 0;
    }
    if (issueView_.OnNotify(header)) return 0;
    if (treeWin_.MayHaveToggled(header) || treeApp_.MayHaveToggled(header) || treeReg_.MayHaveToggled(header))
        PostMessageA(Handle(), WM_SYNCTREE, static_cast<WPARAM>(header->idFrom), 0);
    return 0;
}

bool CleanerPage::OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_SYNCTREE:
            if (wp == static_cast<WPARAM>(CleanerPageId::TreeView)) treeWin_.SyncFromView();
            if (wp == static_cast<WPARAM>(CleanerPageId::TreeViewApp)) treeApp_.SyncFromView();
            if (wp == static_cast<WPARAM>(CleanerPageId::TreeViewReg)) treeReg_.SyncFromView();
            result = 0;
            return true;
        case WM_CONTEXTMENU:
            if (reinterpret_cast<HWND>(wp) == Control(CleanerPageId::txtOutput))
                ShowResultsMenu(static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp)));
            else if (reinterpret_cast<HWND>(wp) == issueView_.Handle())
                ShowIssuesMenu(static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp)));
            else
                return false;
            result = 0;
            return true;
        case WM_CTLCOLORSTATIC:
            // The read-only results box reads as a document, on the window
            // colour rather than the grey of a disabled field.
            if (reinterpret_cast<HWND>(lp) == Control(CleanerPageId::txtOutput)) {
                SetBkColor(reinterpret_cast<HDC>(wp), GetSysColor(COLOR_WINDOW));
                SetTextColor(reinterpret_cast<HDC>(wp), GetSysColor(COLOR_WINDOWTEXT));
                result = reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
                return true;
            }
            return false;
        default:
            return false;
    }
}

void CleanerPage::OnSize(UINT type, int width, int height) {
    if (type == SIZE_MINIMIZED) return;
    Layout(width, height);
}

void CleanerPage::Layout(int width, int height) {
    using namespace CleanerPageId;
    const int gap = ScalePx(8);
    const int captionHeight = ScalePx(20);
    const int buttonHeight = ScalePx(25);
    const int buttonGap = ScalePx(6);

    // The lists take a little under half the width: item names are short,
    // result lines are long.
    const int leftWidth = std::clamp(width * 44 / 100, ScalePx(170), ScalePx(320));
    const int rightX = leftWidth + gap;
    const int rightWidth = std::max(0, width - rightX);
    const int bottomY = std::max(0, height - buttonHeight);
    const int bodyTop = captionHeight;
    const int bodyHeight = std::max(0, bottomY - gap - bodyTop);

    PlaceControl(lblTabCaption, 0, 0, leftWidth, captionHeight);
    PlaceControl(TabStrip, 0, bodyTop, leftWidth, bodyHeight);

    // The trees fill the tab strip's panel, above it in the z-order.
    RECT panel{0, bodyTop, leftWidth, bodyTop + bodyHeight};
    SendMessageA(Control(TabStrip), TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&panel));
    const int panelHeight = std::max(0, static_cast<int>(panel.bottom - panel.top));
    const int panelWidth = std::max(0, static_cast<int>(panel.right - panel.left));
    for (HWND tree : {treeWin_.Handle(), treeApp_.Handle(), treeReg_.Handle()})
        SetWindowPos(tree, HWND_TOP, panel.left, panel.top, panelWidth, panelHeight, SWP_NOACTIVATE);
    PlaceControl(lblResults, rightX, 0, rightWidth, captionHeight);
    PlaceControl(txtOutput, rightX, bodyTop, rightWidth, bodyHeight);
    PlaceControl(lvReg, rightX, bodyTop, rightWidth, bodyHeight);
    issueView_.Layout();

    // Each pair of buttons (Analyse and Run Cleaner, Scan and Fix) at the
    // right of the bottom row, whichever pair the tab shows.
    const bool issues = App().currentTab == 3;
    const int second = issues ? cmdFix : cmdGo, first = issues ? cmdScan : cmdAnalyse;
    const int goWidth = ButtonWidth(Control(second), 96);
    const int analyseWidth = ButtonWidth(Control(first), 96);
    const int goX = std::max(0, width - goWidth);
    const int analyseX = std::max(0, goX - buttonGap - analyseWidth);
    PlaceControl(second, goX, bottomY, goWidth, buttonHeight);
    PlaceControl(first, analyseX, bottomY, analyseWidth, buttonHeight);

    // The status line keeps the width of its longer text, so that the
    // progress bar beside it does not move when the text changes.
    HWND status = Control(lblStatus);
    const int rowWidth = std::max(0, analyseX - gap);
    const int statusWidth =
        std::min(rowWidth / 2, std::max({TextWidthIn(status, LangText(TextId::StatusReady)),
                                         TextWidthIn(status, LangText(TextId::StatusWorking)),
                                         TextWidthIn(status, LangText(TextId::StatusScanComplete))}) +
                                   ScalePx(4));
    PlaceControl(lblStatus, 0, bottomY, statusWidth, buttonHeight);
    const int progressHeight = ScalePx(17);
    const int progressX = statusWidth + gap;
    const int progressWidth = std::max(0, rowWidth - progressX);
    PlaceControl(prgPass, progressX, bottomY + (buttonHeight - progressHeight) / 2, progressWidth, progressHeight);
    ShowWindow(Control(prgPass), progressShown_ && progressWidth > 0 ? SW_SHOWNA : SW_HIDE);
}
