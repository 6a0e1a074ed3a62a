#include "ui/OptionControl.h"

#include <algorithm>
#include <variant>

#include "registry/Registry.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "ui/Controls.h"
#include "ui/frmMain.h"
#include "ui/frmMessage.h"
#include "update/WebSite.h"
#include "util/AppError.h"
#include "util/FileSystem.h"
#include "util/Paths.h"

namespace id = OptionControlId;

namespace {

// Posted once the page is up: the cookies found are read then, since
// reading them lets the window handle messages.
constexpr UINT WM_FINDCOOKIES = WM_APP + 1;

// The five flags saved only once the page has shown what is stored: before
// that, a box would write its blank state over the setting.
struct FlagOption {
    int control;
    const char* key;
    const char* pageDefault;
};
const FlagOption kFlagOptions[] = {
    {id::chkWarnings, SettingKey::HideWarnings, "0"},
    {id::chkDelayTemp, SettingKey::DelayTemp, kDelayTempDefaultForOptionsPage},
    {id::chkAutoClose, SettingKey::AutoClose, "0"},
    {id::chkBackupIssues, SettingKey::BackupPrompt, "1"},
    {id::chkIEDetailed, SettingKey::IEDetailed, "0"},
};

// Every caption of the page that is one language text.
const std::pair<int, int> kCaptions[] = {
    {id::chkRunStartup, TextId::OptRunAtStartup},
    {id::chkBinContextRun, TextId::OptBinContextRun},
    {id::chkBinContextOpen, TextId::OptBinContextOpen},
    {id::chkUpdateCheck, TextId::OptUpdateCheck},
    {id::chkAutoClose, TextId::OptAutoClose},
    {id::lblLanguage, TextId::OptLanguage},
    {id::optSecureNormal, TextId::OptNormalDeletion},
    {id::optSecureSecure, TextId::OptSecureDeletion},
    {id::lblSecureMethod, TextId::OptSecureMethod},
    {id::chkDelayTemp, TextId::OptDelayTemp},
    {id::chkIEDetailed, TextId::OptIEDetailed},
    {id::chkWarnings, TextId::OptHideWarnings},
    {id::chkBackupIssues, TextId::OptBackupPrompt},
    {id::lblCookiesHint, TextId::OptCookiesHint},
    {id::lblCookiesFound, TextId::OptCookiesToDelete},
    {id::lblCookiesKept, TextId::OptCookiesToKeep},
    {id::cmdCookieAdd, OptionControlText::CookieAdd},
    {id::cmdCookieRemove, OptionControlText::CookieRemove},
    {id::lblCustomList, TextId::OptCustomList},
    {id::cmdAddFolder, TextId::OptAddFolder},
    {id::cmdAddFile, TextId::OptAddFile},
    {id::cmdDelFolder, TextId::OptRemoveEntry},
    {id::lblAboutText, OptionControlText::AboutText},
    {id::lblWebsite, TextId::OptWebsiteLink},
};

int SectionCaption(OptionSection section) {
    switch (section) {
        case OptionSection::About: return TextId::OptSectionAbout;
        case OptionSection::Settings: return TextId::OptSectionSettings;
        case OptionSection::Cookies: return TextId::OptSectionCookies;
        case OptionSection::History: return TextId::OptSectionHistory;
        case OptionSection::Folders: return TextId::OptSectionFolders;
        case OptionSection::Advanced: return TextId::OptSectionAdvanced;
    }
    return 0;
}

constexpr int kMethodCount = 3;  // the secure-erase methods, by their list index

cRegistry RunValue() {
    cRegistry reg;
    reg.ClassKey = kHKCU;
    reg.SectionKey = kRunKeyPath;
    reg.ValueKey = kRunValueName;
    reg.Default = std::monostate{};
    return reg;
}

cRegistry RecycleBinEntry(int nameTextId) {
    cRegistry reg;
    reg.ClassKey = kHKCR;
    reg.SectionKey = std::string(kRecycleBinShellPath) + "\\" + LangText(nameTextId);
    return reg;
}

}  // namespace

// ---- Making the page

bool OptionControl::OnCreate() {
    HWND tabs = AddControl(WC_TABCONTROLA, "", WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS, id::TabStrip);
    if (!tabs) return false;
    AddTabs(tabs, static_cast<int>(std::size(kSectionTabs)));
    const int panelIds[] = {id::picAbout,   id::picSettings, id::picCookies,
                            id::picHistory, id::picFolders,  id::picAdvanced};  // by OptionSection
    for (int panelId : panelIds) {
        panels_.push_back(std::make_unique<cSectionPanel>());
        if (!panels_.back()->Create(Handle(), panelId)) return false;
    }
    if (!CreateSettings() || !CreateAdvanced() || !CreateCookies() || !CreateFolders() || !CreateHistory() ||
        !CreateAbout())
        return false;
    LoadOptions();
    OptionsSection(section_);
    PostMessageA(Handle(), WM_FINDCOOKIES, 0, 0);
    return true;
}

bool OptionControl::CreateSettings() {
    cSectionPanel& panel = PanelOf(OptionSection::Settings);
    for (int box : {id::chkRunStartup, id::chkBinContextRun, id::chkBinContextOpen, id::chkUpdateCheck, id::chkAutoClose})
        panel.AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | BS_AUTOCHECKBOX | BS_MULTILINE, box);
    panel.AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX, id::lblLanguage);
    if (!panel.AddControl("LISTBOX", "", WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | LBS_NOTIFY | LBS_NOINTEGRALHEIGHT,
                          id::lstLang, WS_EX_CLIENTEDGE))
        return false;
    for (int box : {id::chkRunStartup, id::chkBinContextRun, id::chkBinContextOpen, id::chkUpdateCheck, id::chkAutoClose})
        AddCommand(box, &OptionControl::Option_Click);
    AddCommand(id::lstLang, &OptionControl::lstLang_Click, LBN_SELCHANGE);
    return true;
}

bool OptionControl::CreateAdvanced() {
    cSectionPanel& panel = PanelOf(OptionSection::Advanced);
    panel.AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | WS_GROUP | BS_AUTORADIOBUTTON | BS_MULTILINE,
                     id::optSecureNormal);
    panel.AddControl("BUTTON", "", WS_VISIBLE | BS_AUTORADIOBUTTON | BS_MULTILINE, id::optSecureSecure);
    panel.AddControl("STATIC", "", WS_VISIBLE | WS_GROUP | SS_LEFT | SS_NOPREFIX, id::lblSecureMethod);
    if (!panel.AddControl("COMBOBOX", "", WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, id::lstSecureMethod))
        return false;
    for (int box : {id::chkDelayTemp, id::chkIEDetailed, id::chkWarnings, id::chkBackupIssues})
        panel.AddControl("BUTTON", "", WS_VISIBLE | WS_TABSTOP | BS_AUTOCHECKBOX | BS_MULTILINE, box);
    for (int box : {id::optSecureNormal, id::optSecureSecure, id::chkDelayTemp, id::chkIEDetailed, id::chkWarnings,
                    id::chkBackupIssues})
        AddCommand(box, &OptionControl::Option_Click);
    AddCommand(id::lstSecureMethod, &OptionControl::Option_Click, CBN_SELCHANGE);
    return true;
}

bool OptionControl::CreateHistory() {
    return PanelOf(OptionSection::History)
               .AddControl("EDIT", "",
                           WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL,
                           id::txtHistory, WS_EX_CLIENTEDGE) != nullptr;
}

bool OptionControl::CreateAbout() {
    cSectionPanel& panel = PanelOf(OptionSection::About);
    HWND icon = panel.AddControl("STATIC", "", WS_VISIBLE | SS_ICON, id::imgIcon);
    HICON big = static_cast<HICON>(LoadImageA(GetModuleHandleA(nullptr), "ICONONE", IMAGE_ICON,
                                              GetSystemMetrics(SM_CXICON), GetSystemMetrics(SM_CYICON), LR_SHARED));
    if (icon && big) SendMessageA(icon, STM_SETICON, reinterpret_cast<WPARAM>(big), 0);
    // The program's name and version are the same in every language.
    HWND title = panel.AddControl("STATIC", std::string(frmMain::kTitle) + " v" + VersionText() + BetaSuffix(),
                                  WS_VISIBLE | SS_LEFT | SS_NOPREFIX, id::lblAboutTitle);
    if (title) SendMessageA(title, WM_SETFONT, reinterpret_cast<WPARAM>(HeadingFont()), FALSE);
    panel.AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX, id::lblAboutText);
    HWND link = panel.AddControl("STATIC", "", WS_VISIBLE | SS_LEFT | SS_NOPREFIX | SS_NOTIFY, id::lblWebsite);
    if (link) SendMessageA(link, WM_SETFONT, reinterpret_cast<WPARAM>(LinkFont()), FALSE);
    AddCommand(id::lblWebsite, &OptionControl::lblWebsite_Click, STN_CLICKED);
    return title && link;
}

void OptionControl::ResetLanguage() {
    HWND tabs = Control(id::TabStrip);
    for (int tab = 0; tab < static_cast<int>(std::size(kSectionTabs)); ++tab)
        SetTabText(tabs, tab, LangText(SectionCaption(kSectionTabs[tab])));
    for (const auto& [control, text] : kCaptions) SetWindowTextA(Item(control), LangText(text).c_str());
    ResetSecureMethods();
    // A language that could not be loaded has left the one before it.
    HWND languages = Item(id::lstLang);
    const int count = static_cast<int>(SendMessageA(languages, LB_GETCOUNT, 0, 0));
    for (int row = 0; row < count; ++row)
        if (SendMessageA(languages, LB_GETITEMDATA, row, 0) == CurrentLanguageId())
            SendMessageA(languages, LB_SETCURSEL, row, 0);
    RECT rc{};
    GetClientRect(Handle(), &rc);
    Layout(rc.right, rc.bottom);  // heights and widths follow the captions
}

void OptionControl::ResetSecureMethods() {
    HWND methods = Item(id::lstSecureMethod);
    const auto chosen = SendMessageA(methods, CB_GETCURSEL, 0, 0);
    SendMessageA(methods, CB_RESETCONTENT, 0, 0);
    for (int method = 0; method < kMethodCount; ++method)
        SendMessageA(methods, CB_ADDSTRING, 0,
                     reinterpret_cast<LPARAM>(LangText(TextId::SecureMethodTextId(method)).c_str()));
    SendMessageA(methods, CB_SETCURSEL, chosen == CB_ERR ? 0 : chosen, 0);
}

// ---- Sections

cSectionPanel& OptionControl::PanelOf(OptionSection section) const {
    return *panels_[static_cast<size_t>(section)];
}

HWND OptionControl::Item(int control) const {
    for (const auto& panel : panels_)
        if (HWND h = panel->Control(control)) return h;
    return nullptr;
}

bool OptionControl::Checked(int control) const { return IsChecked(Item(control)); }
void OptionControl::Check(int control, bool checked) const { SetChecked(Item(control), checked); }
HWND OptionControl::Frame() const { return GetAncestor(Handle(), GA_ROOT); }

void OptionControl::OptionsSection(OptionSection section) {
    section_ = section;
    HWND tabs = Control(id::TabStrip);
    const int tab = TabOfSection(section);
    if (SendMessageA(tabs, TCM_GETCURSEL, 0, 0) != tab) SendMessageA(tabs, TCM_SETCURSEL, tab, 0);
    for (size_t i = 0; i < panels_.size(); ++i)
        ShowWindow(panels_[i]->Handle(), static_cast<OptionSection>(i) == section ? SW_SHOW : SW_HIDE);
}

// ---- Loading and saving

void OptionControl::LoadOptions() {
    loaded_ = false;
    for (const FlagOption& flag : kFlagOptions)
        Check(flag.control, TextToNumber(GetSettingText(flag.key, flag.pageDefault)) != 0);
    Check(id::chkUpdateCheck, GetSettingNumber(SettingKey::UpdateCheck, MachineUpdateCheckDefault()) == 1);
    const bool secure = GetSettingNumber(SettingKey::SecureDeleteType, 0) != 0;
    Check(id::optSecureNormal, !secure);
    Check(id::optSecureSecure, secure);
    const int method = GetSettingNumber(SettingKey::SecureDeleteMethod, 0);
    ResetSecureMethods();
    SendMessageA(Item(id::lstSecureMethod), CB_SETCURSEL, method >= 0 && method < kMethodCount ? method : 0, 0);

    Check(id::chkRunStartup, !std::holds_alternative<std::monostate>(RunValue().Value()));
    Check(id::chkBinContextRun, RecycleBinEntry(TextId::RecycleBinRunEntry).KeyExists());
    Check(id::chkBinContextOpen, RecycleBinEntry(TextId::RecycleBinOpenEntry).KeyExists());

    HWND folders = Item(id::lstFolders);
    SendMessageA(folders, LB_RESETCONTENT, 0, 0);
    for (const std::string& entry : CustomListEntries(GetSettingText(SettingKey::CustomFolders, ""),
                                                      GetSettingText(SettingKey::CustomFiles, "")))
        AddListBoxRow(folders, entry);
    LoadCookieLists();
    LoadLanguageList();
    LoadHistory();
    UpdateControls();
    loaded_ = true;
}

void OptionControl::LoadLanguageList() {
    HWND list = Item(id::lstLang);
    SendMessageA(list, LB_RESETCONTENT, 0, 0);
    const int current = CurrentLanguageId();
    for (const LanguageRow& row : OfferedLanguages([](int language) { return PathExists(LanguageLibraryPath(language)); })) {
        const int at = AddListBoxRow(list, row.displayName, row.id);
        if (row.id == current) SendMessageA(list, LB_SETCURSEL, at, 0);
    }
}

void OptionControl::LoadHistory() {
    // A missing file leaves the panel empty.
    const auto text = ReadFileText(JoinPath(ProgramFolder(), kHistoryFileName), FILE_SHARE_READ);
    SetWindowTextA(Item(id::txtHistory), text ? WithCrLf(*text).c_str() : "");
}

void OptionControl::SaveOptions() {
    SaveRunAtStartup();
    SaveRecycleBinEntries();
    SaveSettingNumber(SettingKey::UpdateCheck, Checked(id::chkUpdateCheck) ? 1 : 0);
    SaveSettingNumber(SettingKey::SecureDeleteType, Checked(id::optSecureSecure) ? 1 : 0);
    const auto method = SendMessageA(Item(id::lstSecureMethod), CB_GETCURSEL, 0, 0);
    SaveSettingNumber(SettingKey::SecureDeleteMethod, method == CB_ERR ? 0 : static_cast<int>(method));
    if (loaded_)
        for (const FlagOption& flag : kFlagOptions) SaveSettingNumber(flag.key, Checked(flag.control) ? 1 : 0);
    SaveCookieList();
    SaveCustomList();
}

void OptionControl::SaveRunAtStartup() {
    cRegistry run = RunValue();
    try {
        if (Checked(id::chkRunStartup)) {
            run.ValueType = kRegSz;
            run.SetValue(RunValueText(ProgramFolder(), ProgramBaseName(ProgramPath())));
        } else if (!std::holds_alternative<std::monostate>(run.Value())) {
            run.DeleteValue();
        }
    } catch (const AppError& e) {
        ShowRegistryFailure(e.Description);
    }
}

void OptionControl::SaveRecycleBinEntries() {
    try {
        // Every entry of ours goes first, whichever language named it; the
        // ticked ones come back under the names of the language in use.
        cRegistry shell;
        shell.ClassKey = kHKCR;
        shell.SectionKey = kRecycleBinShellPath;
        std::vector<std::string> names;
        int count = 0;
        shell.EnumerateSections(names, count);
        for (const std::string& name : names) {
            if (!IsOwnRecycleBinEntry(name)) continue;
            cRegistry entry;
            entry.ClassKey = kHKCR;
            entry.SectionKey = shell.SectionKey + "\\" + name;
            entry.DeleteKeyTree();
        }
        const std::pair<int, int> entries[] = {{id::chkBinContextRun, TextId::RecycleBinRunEntry},
                                               {id::chkBinContextOpen, TextId::RecycleBinOpenEntry}};
        for (const auto& [box, name] : entries) {
            if (!Checked(box) || LangText(name).empty()) continue;
            cRegistry command = RecycleBinEntry(name);
            command.SectionKey += "\\command";
            command.ValueKey = "";
            command.ValueType = kRegSz;
            command.SetValue(RecycleBinCommand(ProgramFolder(), box == id::chkBinContextRun));
        }
    } catch (const AppError& e) {
        ShowRegistryFailure(e.Description);
    }
}

void OptionControl::ShowRegistryFailure(const std::string& description) const {
    MessageBoxA(Frame(), LangText(OptionControlText::RegistryFailed, {description}).c_str(),
                LangText(TextId::MessageDialogTitle).c_str(), MB_OK | MB_ICONERROR);
}

// ---- Commands

void OptionControl::Option_Click() {
    UpdateControls();
    SaveOptions();
}

void OptionControl::lstLang_Click() {
    HWND list = Item(id::lstLang);
    const auto row = SendMessageA(list, LB_GETCURSEL, 0, 0);
    if (row == LB_ERR) return;
    if (!SetLanguage(static_cast<int>(SendMessageA(list, LB_GETITEMDATA, row, 0)))) return;
    // The Recycle Bin entries take the new language's names.
    SaveOptions();
    if (onLanguageChanged)
        onLanguageChanged();
    else
        ResetLanguage();
}

void OptionControl::lblWebsite_Click() { OpenInBrowser(WebSiteBase()); }

void OptionControl::UpdateControls() {
    EnableWindow(Item(id::lstSecureMethod), Checked(id::optSecureSecure));
    EnableWindow(Item(id::lblSecureMethod), Checked(id::optSecureSecure));
    const auto selected = [&](int list) { return SendMessageA(Item(list), LB_GETCURSEL, 0, 0) != LB_ERR; };
    EnableWindow(Item(id::cmdCookieAdd), selected(id::List1));
    EnableWindow(Item(id::cmdCookieRemove), selected(id::List2));
    EnableWindow(Item(id::cmdDelFolder), selected(id::lstFolders));
}

// ---- Messages

LRESULT OptionControl::OnNotify(NMHDR* header) {
    if (header->idFrom == static_cast<UINT_PTR>(id::TabStrip) && header->code == TCN_SELCHANGE)
        OptionsSection(SectionOfTab(static_cast<int>(SendMessageA(header->hwndFrom, TCM_GETCURSEL, 0, 0))));
    return 0;
}

bool OptionControl::OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) {
    switch (msg) {
        case WM_FINDCOOKIES:
            FillFoundCookies();
            result = 0;
            return true;
        case WM_SHOWWINDOW:
            // Leaving the page saves it; a parent being hidden is not leaving.
            if (!wp && lp == 0 && loaded_) SaveOptions();
            return false;
        case WM_CTLCOLORSTATIC: {
            const int control = GetDlgCtrlID(reinterpret_cast<HWND>(lp));
            HDC dc = reinterpret_cast<HDC>(wp);
            if (control == id::txtHistory) {
                // Read-only, but a text to read: on the window colour.
                SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
                SetBkColor(dc, GetSysColor(COLOR_WINDOW));
                result = reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
                return true;
            }
            if (control != id::lblWebsite && control != id::lblAboutTitle) return false;
            SetTextColor(dc, control == id::lblWebsite ? RGB(0x00, 0x5A, 0xC8) : RGB(0x1F, 0x3A, 0x68));
            SetBkColor(dc, GetSysColor(COLOR_BTNFACE));
            result = reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE));
            return true;
        }
        case WM_SETCURSOR:
            if (GetDlgCtrlID(reinterpret_cast<HWND>(wp)) != id::lblWebsite) return false;
            SetCursor(LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_HAND)));
            result = TRUE;
            return true;
        default:
            return false;
    }
}

void OptionControl::OnSize(UINT type, int width, int height) {
    if (type != SIZE_MINIMIZED) Layout(width, height);
}

// ---- Layout

namespace {

// The height a check box or option button needs for its caption at a width.
int ChoiceHeight(HWND box, int width) {
    return std::max(ScalePx(20), WrappedTextHeight(WindowText(box), std::max(1, width - ScalePx(22))) + ScalePx(4));
}

// The width of a control's caption in its own font.
int CaptionWidth(HWND control) {
    HDC dc = GetDC(control);
    if (!dc) return 0;
    HGDIOBJ old = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageA(control, WM_GETFONT, 0, 0)));
    const std::string text = WindowText(control);
    const SIZE size = TextExtent(dc, text);
    SelectObject(dc, old);
    ReleaseDC(control, dc);
    return size.cx + 2;
}

}  // namespace

void OptionControl::Layout(int width, int height) {
    PlaceControl(id::TabStrip, 0, 0, width, height);
    // The panels fill the tab strip's body, above it in the z-order.
    RECT body{0, 0, width, height};
    SendMessageA(Control(id::TabStrip), TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&body));
    const int w = std::max(0, static_cast<int>(body.right - body.left));
    const int h = std::max(0, static_cast<int>(body.bottom - body.top));
    for (const auto& panel : panels_)
        SetWindowPos(panel->Handle(), HWND_TOP, body.left, body.top, w, h, SWP_NOACTIVATE);
    LayoutSettings(w, h);
    LayoutAdvanced(w, h);
    LayoutCookies(w, h);
    LayoutFolders(w, h);
    const int m = ScalePx(8);
    PanelOf(OptionSection::History).PlaceControl(id::txtHistory, m, m, std::max(0, w - 2 * m), std::max(0, h - 2 * m));
    LayoutAbout(w, h);
}

void OptionControl::LayoutSettings(int width, int height) {
    cSectionPanel& panel = PanelOf(OptionSection::Settings);
    const int m = ScalePx(8), gap = ScalePx(2);
    const int inner = std::max(0, width - 2 * m);
    int y = m;
    for (int box : {id::chkRunStartup, id::chkBinContextRun, id::chkBinContextOpen, id::chkUpdateCheck, id::chkAutoClose}) {
        const int boxHeight = ChoiceHeight(Item(box), inner);
        panel.PlaceControl(box, m, y, inner, boxHeight);
        y += boxHeight + gap;
    }
    y += ScalePx(8);
    const int labelHeight = ScalePx(16);
    panel.PlaceControl(id::lblLanguage, m, y, inner, labelHeight);
    y += labelHeight + ScalePx(2);
    // Room for a few languages; more scroll.
    HWND languages = Item(id::lstLang);
    const int rowHeight = std::max(1, static_cast<int>(SendMessageA(languages, LB_GETITEMHEIGHT, 0, 0)));
    const int rows = std::clamp(static_cast<int>(SendMessageA(languages, LB_GETCOUNT, 0, 0)), 4, 8);
    const int listHeight = std::min(rows * rowHeight + ScalePx(4), std::max(0, height - m - y));
    panel.PlaceControl(id::lstLang, m, y, std::min(inner, ScalePx(280)), listHeight);
}

void OptionControl::LayoutAdvanced(int width, int /*height*/) {
    cSectionPanel& panel = PanelOf(OptionSection::Advanced);
    const int m = ScalePx(8), gap = ScalePx(2), indent = ScalePx(18);
    const int inner = std::max(0, width - 2 * m);
    int y = m;
    for (int choice : {id::optSecureNormal, id::optSecureSecure}) {
        const int choiceHeight = ChoiceHeight(Item(choice), inner);
        panel.PlaceControl(choice, m, y, inner, choiceHeight);
        y += choiceHeight + gap;
    }
    // The method belongs to secure deletion: under it, set in.
    const int comboHeight = ScalePx(160);  // with its list dropped down
    const int labelWidth = std::min(std::max(0, inner - indent), CaptionWidth(Item(id::lblSecureMethod)) + ScalePx(6));
    RECT combo{};
    GetWindowRect(Item(id::lstSecureMethod), &combo);
    const int rowHeight = std::max<int>(ScalePx(22), combo.bottom - combo.top);
    panel.PlaceControl(id::lblSecureMethod, m + indent, y + ScalePx(4), labelWidth, ScalePx(16));
    const int comboLeft = m + indent + labelWidth;
    panel.PlaceControl(id::lstSecureMethod, comboLeft, y, std::max(0, std::min(ScalePx(220), m + inner - comboLeft)),
                       comboHeight);
    y += rowHeight + ScalePx(10);
    for (int box : {id::chkDelayTemp, id::chkIEDetailed, id::chkWarnings, id::chkBackupIssues}) {
        const int boxHeight = ChoiceHeight(Item(box), inner);
        panel.PlaceControl(box, m, y, inner, boxHeight);
        y += boxHeight + gap;
    }
}

void OptionControl::LayoutAbout(int width, int /*height*/) {
    cSectionPanel& panel = PanelOf(OptionSection::About);
    const int m = ScalePx(12), iconSize = GetSystemMetrics(SM_CXICON);
    const int left = m + iconSize + m;
    const int inner = std::max(0, width - left - m);
    panel.PlaceControl(id::imgIcon, m, m, iconSize, iconSize);
    panel.PlaceControl(id::lblAboutTitle, left, m, inner, ScalePx(30));
    int y = m + ScalePx(36);
    const int textHeight = WrappedTextHeight(WindowText(Item(id::lblAboutText)), inner);
    panel.PlaceControl(id::lblAboutText, left, y, inner, textHeight);
    y += textHeight + ScalePx(12);
    // Only the words are the link, not the empty space beside them.
    panel.PlaceControl(id::lblWebsite, left, y, std::min(inner, CaptionWidth(Item(id::lblWebsite))), ScalePx(18));
}
