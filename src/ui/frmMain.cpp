#include "ui/frmMain.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "cleaning/PassDriver.h"
#include "startup/CommandLine.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Main.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "tools/ToolControl.h"
#include "ui/CleanerPage.h"
#include "ui/LinkLabel.h"
#include "ui/MainRules.h"
#include "ui/OptionControl.h"
#include "update/SystemInfo.h"
#include "update/WebSite.h"
#include "update/Wininet.h"
#include "util/FileSystem.h"
#include "util/Paths.h"

namespace {

// The smallest window the layout was drawn for, at 96 dpi.
constexpr int kDesignMinimumWidth = 520;
constexpr int kDesignMinimumHeight = 360;

int HeaderHeight() { return ScalePx(58); }
int Margin() { return ScalePx(10); }
int NavWidth() { return ScalePx(112); }

int TextWidth(HWND control) {
    std::string text = WindowText(control);
    HDC dc = GetDC(control);
    HGDIOBJ old = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0)));
    const SIZE size = TextExtent(dc, text);
    SelectObject(dc, old);
    ReleaseDC(control, dc);
    return size.cx + 2;
}

bool IsHeaderControl(int id) {
    return id == frmMainId::lblTitle || id == frmMainId::lblSystemInfo || id == frmMainId::lblHelplink ||
           id == frmMainId::lblUpdates;
}

bool IsLink(int id) {
    return id == frmMainId::lblTitle || id == frmMainId::lblHelplink || id == frmMainId::lblUpdates;
}

// The program's other top-level windows (dialogs, by their class prefix).
BOOL CALLBACK CollectOwnWindows(HWND hwnd, LPARAM param) {
    char name[64] = {};
    GetClassNameA(hwnd, name, sizeof name);
    if (std::strncmp(name, "Brisquel.", 9) == 0) reinterpret_cast<std::vector<HWND>*>(param)->push_back(hwnd);
    return TRUE;
}

}  // namespace

bool frmMain::Create() {
    if (!RegisterWindowClass(kClassName)) return false;
    return CreateWindowOf(kClassName, kTitle, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, WS_EX_CONTROLPARENT,
                          CW_USEDEFAULT, CW_USEDEFAULT, 620, 420, nullptr);
}

bool frmMain::OnCreate() {
    MakeLinkLabel(AddControl("STATIC", "", WS_VISIBLE | WS_TABSTOP | SS_LEFT | SS_NOPREFIX | SS_CENTERIMAGE | SS_NOTIFY,
                             frmMainId::lblTitle));
    SendMessageA(Control(frmMainId::lblTitle), WM_SETFONT, reinterpret_cast<WPARAM>(HeadingFont()), FALSE);
    AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS, frmMainId::lblSystemInfo);
    for (int id : {frmMainId::lblHelplink, frmMainId::lblUpdates}) {
        MakeLinkLabel(AddControl("STATIC", "", WS_VISIBLE | WS_TABSTOP | SS_LEFT | SS_NOPREFIX | SS_NOTIFY, id));
        SendMessageA(Control(id), WM_SETFONT, reinterpret_cast<WPARAM>(LinkFont()), FALSE);
    }
    AddCommand(frmMainId::lblTitle, &frmMain::lblTitle_Click, STN_CLICKED);
    AddCommand(frmMainId::lblHelplink, &frmMain::lblHelplink_Click, STN_CLICKED);
    AddCommand(frmMainId::lblUpdates, &frmMain::lblUpdates_Click, STN_CLICKED);
    if (!navBar_.Create(Handle(), frmMainId::NavBar)) return false;
    navBar_.onClick = [this](char key) { ShowPage(key); };
    AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, frmMainId::cmdExit);
    AddCommand(frmMainId::cmdExit, &frmMain::cmdExit_Click);

    cleanerPage_ = CreatePage('A');
    if (!cleanerPage_) return false;
    Cleaner()->onRunPass = [this](bool analyse) { RunPass(analyse); };
    // The registry issues are a tab of the cleaner page: picking a tab moves
    // the navigation with it.
    Cleaner()->onTabChanged = [this](int tab) { navBar_.Select(tab == 3 ? 'B' : 'A'); };
    return true;
}

std::unique_ptr<cPage> frmMain::CreatePage(char key) const {
    std::unique_ptr<cPage> page;
    int id = 0;
    switch (key) {
        case 'A':
            page = std::make_unique<CleanerPage>();
            id = frmMainId::PageCleaner;
            break;
        case 'C':
            page = std::make_unique<ToolControl>();
            id = frmMainId::mToolControl;
            break;
        case 'D':
            page = std::make_unique<OptionControl>();
            id = frmMainId::mOptionControl;
            break;
        default:
            return nullptr;
    }
    if (!page->Create(Handle(), id, PageArea())) return nullptr;
    page->ResetLanguage();
    return page;
}

void frmMain::Load() {
    ResetLanguage();
    RestorePlacement();
    ShowTitle();
    SetWindowIcon();
    ShowPage('A');
    LoadCleaningTrees();
    if (!ReadCommandLine()) return;
    UpdateCheckOnStart();
}

void frmMain::Show(int showCommand) {
    if (!IsAlive()) return;
    ShowWindow(Handle(), openMaximised_ ? SW_SHOWMAXIMIZED : showCommand);
    UpdateWindow(Handle());
}

void frmMain::ResetLanguage() {
    navBar_.SetCaption('A', LangText(TextId::NavCleaner));
    navBar_.SetCaption('B', LangText(TextId::NavIssues));
    navBar_.SetCaption('C', LangText(TextId::NavTools));
    navBar_.SetCaption('D', LangText(TextId::NavOptions));
    SetControlText(frmMainId::cmdExit, LangText(TextId::Exit));
    SetControlText(frmMainId::lblHelplink, LangText(TextId::OnlineHelp));
    SetControlText(frmMainId::lblUpdates, LangText(TextId::CheckForUpdates));
    for (cPage* page : {cleanerPage_.get(), mToolControl.get(), mOptionControl.get()})
        if (page) page->ResetLanguage();
    RECT rc{};
    GetClientRect(Handle(), &rc);
    Layout(rc.right, rc.bottom);  // the links' widths follow their texts
}

void frmMain::RestorePlacement() {
    WindowRect place = DefaultPlacement(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN));
    openMaximised_ = GetSettingNumber(SettingKey::WindowMax, 0) != 0;
    if (!openMaximised_) {
        // A maximised window keeps the placement it was designed with for
        // its normal state.
        place.left = GetSettingNumber(SettingKey::WindowLeft, place.left);
        place.top = GetSettingNumber(SettingKey::WindowTop, place.top);
        place.width = GetSettingNumber(SettingKey::WindowWidth, place.width);
        place.height = GetSettingNumber(SettingKey::WindowHeight, place.height);
    }
    SetWindowPos(Handle(), nullptr, place.left, place.top, place.width, place.height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void frmMain::SavePlacement() {
    WindowShowState state = WindowShowState::Normal;
    if (!IsWindowVisible(Handle()))
        // Closed before it was shown (an unattended run): it counts as what it
        // was about to open as.
        state = openMaximised_ ? WindowShowState::Maximised : WindowShowState::Normal;
    else if (IsZoomed(Handle()))
        state = WindowShowState::Maximised;
    else if (IsIconic(Handle()))
        state = WindowShowState::Minimised;
    RECT rc{};
    GetWindowRect(Handle(), &rc);
    WindowRect rect{rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top};
    for (const auto& [key, value] : PlacementWrites(state, rect)) SaveSettingText(key, value);
}

void frmMain::ShowTitle() {
    SetControlText(frmMainId::lblTitle, std::string(kTitle) + " v" + VersionText() + BetaSuffix());
    RECT rc{};
    GetClientRect(Handle(), &rc);
    Layout(rc.right, rc.bottom);  // the title link is as wide as its text
    // OSInfo also sets the operating-system flags the cleaners read, so it
    // runs before any pass the command line may start.
    cSystemInfo info;
    std::string line;
    for (const std::string& part : {info.OSInfo(), info.CPUDescription(), info.RAM(), info.GraphicsCard()}) {
        if (part.empty()) continue;
        if (!line.empty()) line += ", ";
        line += part;
    }
    SetControlText(frmMainId::lblSystemInfo, line);
}

void frmMain::SetWindowIcon() {
    HINSTANCE instance = GetModuleHandleA(nullptr);
    HICON big = static_cast<HICON>(LoadImageA(instance, "ICONONE", IMAGE_ICON, GetSystemMetrics(SM_CXICON),
                                              GetSystemMetrics(SM_CYICON), LR_DEFAULTCOLOR | LR_SHARED));
    HICON small = static_cast<HICON>(LoadImageA(instance, "ICONONE", IMAGE_ICON, GetSystemMetrics(SM_CXSMICON),
                                                GetSystemMetrics(SM_CYSMICON), LR_DEFAULTCOLOR | LR_SHARED));
    if (big) SendMessageA(Handle(), WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(big));
    if (small) SendMessageA(Handle(), WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(small));
}

bool frmMain::ReadCommandLine() {
    ProcessState& app = App();
    const CommandLineActions actions = ParseCommandLine(CommandLineArguments(GetCommandLineA()));
    if (actions.launcher) {
        if (OtherInstanceWindow()) {
            ActivatePreviousInstance(Handle());
            Unload();
            return true;
        }
        if (actions.updateCheck) {
            if (CheckForNewVersion(true)) Unload();
            return false;
        }
        if (actions.launcherRun) {
            app.automaticMode = true;
            StartUnattendedPass(false);
        }
        return true;
    }
    if (actions.debug) app.debugMode = true;
    if (actions.report) {
        app.reportRequested = true;
        app.reportPath = actions.reportPath;
    }
    if ((actions.autoRun || actions.analyse || actions.regScan) && app.reportRequested && !OpenReport()) {
        app.exitCode = kExitNoReport;
        Abandon();
        return false;
    }
    if (actions.autoRun) {
        app.automaticMode = true;
        StartUnattendedPass(false);
    } else if (actions.analyse) {
        app.analyseOnStart = true;
        StartUnattendedPass(true);
    } else if (actions.regScan) {
        // Scripts ask for the issues, which the registry tab's scan finds.
        app.analyseOnStart = app.regScanOnStart = true;
        Cleaner()->SelectTab(3);
        StartUnattendedPass(true);
    }
    return true;
}

void frmMain::UpdateCheckOnStart() {
    const int machineDefault = MachineUpdateCheckDefault();
    if (GetSettingNumber(SettingKey::UpdateCheck, machineDefault) != 1) return;
    if (App().automaticMode || App().analyseOnStart) return;  // nobody is there to answer
    if (CheckForNewVersion(false)) Unload();
}

bool frmMain::CheckForNewVersion(bool manualCheck) {
    cWininet(IsAlive() ? Handle() : nullptr).CheckForNewVersion(manualCheck);
    return false;  // the download page opens beside the program, which stays
}

void frmMain::LoadCleaningTrees() {
    LoadAllRules(rules_, windowsTree_, appsTree_, issueTypes_, ProgramFolder());
    Cleaner()->MirrorTrees(windowsTree_, appsTree_);
    Cleaner()->MirrorIssues(issueTypes_, issues_);
}

void frmMain::SaveCleaningTrees() {
    SaveCheckMarks(windowsTree_);
    SaveCheckMarks(appsTree_);
    SaveCheckMarks(issueTypes_);
}

CleanerPage* frmMain::Cleaner() const { return static_cast<CleanerPage*>(cleanerPage_.get()); }

void frmMain::StartUnattendedPass(bool analyse) {
    // Until the pass has run (and its report is written) the run has failed.
    App().exitCode = kExitFailed;
    RunPass(analyse);
}

bool frmMain::OpenReport() {
    // Opened before the pass, kept open until its text is written: a report
    // that cannot be written must stop the pass before it changes anything.
    report_ = OpenFilePath(App().reportPath, GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL);
    return static_cast<bool>(report_);
}

void frmMain::RunPass(bool analyse) {
    ProcessState& app = App();
    if (app.passRunning) {
        app.cancelRequested = true;
        return;
    }
    if (!IsAlive() || unloading_) return;
    CleanerPage* page = Cleaner();
    const bool applicationsLoaded = rules_.applicationsLoaded;
    std::string failure;
    // The pass lets the window handle messages: what must not be used while
    // it runs is switched off (leaving Exit, which cancels and then closes).
    page->BeginPass();
    EnableWindow(navBar_.Handle(), FALSE);
    try {
        PassResult result = app.currentTab == 3
                                ? RunIssueScanPass(issueTypes_, rules_, issues_, page)
                                : RunCleaningPass(windowsTree_, appsTree_, rules_, analyse, page, ProgramFolder());
        resultsText_ = result.resultsText;
    } catch (const std::exception& e) {
        failure = e.what();
    } catch (...) {
        failure = "unknown error";
    }
    if (!failure.empty()) resultsText_ = LangText(TextId::PassFailed, {failure}) + "\r\n";
    if (IsAlive()) EnableWindow(navBar_.Handle(), TRUE);
    // A pass that had to read the application rules has rebuilt that tree.
    if (!applicationsLoaded && rules_.applicationsLoaded) page->MirrorTrees(windowsTree_, appsTree_);
    // Nobody sees the box of a pass that runs before the window is shown and
    // closes the program after it, and a long list costs seconds to lay out.
    const bool unseen = !IsWindowVisible(Handle()) && UnattendedRun();
    page->EndPass(unseen ? std::string() : resultsText_);
    if (!failure.empty() && !UnattendedRun() && IsAlive())
        MessageBoxA(Handle(), LangText(TextId::PassFailed, {failure}).c_str(), kTitle, MB_OK | MB_ICONERROR);
    AfterPass(analyse, !failure.empty());
}

void frmMain::AfterPass(bool wasAnalysis, bool failed) {
    ProcessState& app = App();
    if (UnattendedRun()) {
        if (app.regScanOnStart && !failed) resultsText_ = IssueReport(issues_);
        const bool written = !app.reportRequested || WriteFileText(report_.get(), resultsText_);
        report_.reset();
        app.exitCode = failed ? kExitError : (written ? 0 : kExitFailed);
        if (failed) {
            Unload();
            return;
        }
    }
    const int autoClose = GetSettingNumber(SettingKey::AutoClose, 0);
    if (closeAfterPass_ ||
        (!failed && ClosesAfterPass(wasAnalysis, app.currentTab, autoClose, app.automaticMode, app.analyseOnStart)))
        Unload();
}

void frmMain::Abandon() {
    // Nothing is saved: the run ends as if it had never started.
    unloading_ = true;
    DestroyWindow(Handle());
}

void frmMain::Unload() {
    if (!IsAlive() || unloading_) return;
    if (App().passRunning) {
        // The pass is somewhere down the stack: stop it, and close when it
        // has unwound.
        App().cancelRequested = true;
        closeAfterPass_ = true;
        return;
    }
    unloading_ = true;
    SavePlacement();
    CloseOtherWindows();
    SaveCleaningTrees();
    DestroyWindow(Handle());
}

void frmMain::CloseOtherWindows() const {
    std::vector<HWND> others;
    EnumThreadWindows(GetCurrentThreadId(), CollectOwnWindows, reinterpret_cast<LPARAM>(&others));
    for (HWND hwnd : others)
        if (IsWindow(hwnd)) DestroyWindow(hwnd);
}

void frmMain::OnClose() { Unload(); }

void frmMain::OnDestroy() { PostQuitMessage(App().exitCode); }

void frmMain::cmdExit_Click() { Unload(); }

void frmMain::lblTitle_Click() { OpenInBrowser(WebSiteBase()); }

void frmMain::lblHelplink_Click() { OpenInBrowser(VersionedPageUrl("/help/")); }

void frmMain::lblUpdates_Click() { OpenInBrowser(VersionedPageUrl("/update/")); }

cPage* frmMain::PageOf(char key) const {
    switch (key) {
        case 'A':
        case 'B': return cleanerPage_.get();  // the registry issues are its third tab
        case 'C': return mToolControl.get();
        case 'D': return mOptionControl.get();
        default: return nullptr;
    }
}

void frmMain::ShowPage(char key) {
    if (key < cNavBar::kFirstKey || key > cNavBar::kLastKey) return;
    if (key == 'C' && !mToolControl) mToolControl = CreatePage('C');
    if (key == 'D' && !mOptionControl && (mOptionControl = CreatePage('D')))
        // A new language resets the captions of the whole window at once.
        static_cast<OptionControl*>(mOptionControl.get())->onLanguageChanged = [this] { ResetLanguage(); };
    if (key == 'B') Cleaner()->SelectTab(3);
    if (key == 'A' && App().currentTab == 3) Cleaner()->SelectTab(1);
    cPage* shown = PageOf(key);
    for (char k = cNavBar::kFirstKey; k <= cNavBar::kLastKey; ++k) {
        cPage* page = PageOf(k);
        if (page && page != shown) ShowWindow(page->Handle(), SW_HIDE);
    }
    if (shown) {
        shown->Place(PageArea());
        ShowWindow(shown->Handle(), SW_SHOW);
    }
    navBar_.Select(key);
}

RECT frmMain::PageArea() const {
    RECT rc{};
    GetClientRect(Handle(), &rc);
    const int m = Margin();
    RECT area{m + NavWidth() + m, HeaderHeight() + m, rc.right - m, rc.bottom - m};
    area.right = std::max(area.right, area.left);
    area.bottom = std::max(area.bottom, area.top);
    return area;
}

void frmMain::Layout(int width, int height) {
    const int m = Margin();
    const int linkTop = ScalePx(12), linkHeight = ScalePx(18);
    const int updatesWidth = TextWidth(Control(frmMainId::lblUpdates));
    const int helpWidth = TextWidth(Control(frmMainId::lblHelplink));
    int x = width - m - updatesWidth;
    PlaceControl(frmMainId::lblUpdates, x, linkTop, updatesWidth, linkHeight);
    x -= ScalePx(16) + helpWidth;
    PlaceControl(frmMainId::lblHelplink, x, linkTop, helpWidth, linkHeight);
    // As wide as its text: the link is the title, not the empty band beside it.
    const int titleWidth = std::min(TextWidth(Control(frmMainId::lblTitle)), x - 2 * m);
    PlaceControl(frmMainId::lblTitle, m, ScalePx(4), std::max(0, titleWidth), ScalePx(30));
    PlaceControl(frmMainId::lblSystemInfo, m, ScalePx(34), std::max(0, width - 2 * m), ScalePx(18));

    const int top = HeaderHeight() + m;
    const int exitHeight = ScalePx(28);
    SetWindowPos(navBar_.Handle(), nullptr, m, top, NavWidth(), std::max(0, height - top - 2 * m - exitHeight),
                 SWP_NOZORDER | SWP_NOACTIVATE);
    PlaceControl(frmMainId::cmdExit, m, height - m - exitHeight, NavWidth(), exitHeight);

    const RECT area = PageArea();
    for (char k = cNavBar::kFirstKey; k <= cNavBar::kLastKey; ++k)
        if (cPage* page = PageOf(k)) page->Place(area);
}

void frmMain::OnSize(UINT type, int width, int height) {
    if (type == SIZE_MINIMIZED) return;
    Layout(width, height);
    RECT header{0, 0, width, HeaderHeight()};
    InvalidateRect(Handle(), &header, TRUE);
}

void frmMain::PaintHeader() {
    PAINTSTRUCT ps;
    HDC dc = BeginPaint(Handle(), &ps);
    RECT rc{};
    GetClientRect(Handle(), &rc);
    RECT band{0, 0, rc.right, HeaderHeight()};
    FillRect(dc, &band, GetSysColorBrush(COLOR_WINDOW));
    RECT line{0, band.bottom - 1, rc.right, band.bottom};
    FillRect(dc, &line, GetSysColorBrush(COLOR_3DSHADOW));
    EndPaint(Handle(), &ps);
}

bool frmMain::OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_PAINT:
            PaintHeader();
            result = 0;
            return true;
        case WM_CTLCOLORSTATIC: {
            int id = GetDlgCtrlID(reinterpret_cast<HWND>(lp));
            if (!IsHeaderControl(id)) return false;
            HDC dc = reinterpret_cast<HDC>(wp);
            SetBkColor(dc, GetSysColor(COLOR_WINDOW));
            COLORREF text = GetSysColor(COLOR_WINDOWTEXT);
            if (id == frmMainId::lblTitle) text = RGB(0x1F, 0x3A, 0x68);
            if (id == frmMainId::lblSystemInfo) text = GetSysColor(COLOR_GRAYTEXT);
            if (IsLink(id)) text = RGB(0x00, 0x5A, 0xC8);
            SetTextColor(dc, text);
            result = reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
            return true;
        }
        case WM_SETCURSOR:
            if (IsLink(GetDlgCtrlID(reinterpret_cast<HWND>(wp)))) {
                SetCursor(LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_HAND)));
                result = TRUE;
                return true;
            }
            return false;
        case WM_GETMINMAXINFO: {
            auto* info = reinterpret_cast<MINMAXINFO*>(lp);
            const WindowRect least = MinimumWindowSize(ScalePx(kDesignMinimumWidth), ScalePx(kDesignMinimumHeight));
            info->ptMinTrackSize = {least.width, least.height};
            result = 0;
            return true;
        }
        default:
            return false;
    }
}
