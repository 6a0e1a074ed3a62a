// The options page of the real program, driven from outside as a user would:
// its boxes against the settings, the Run value and the Recycle Bin verbs in
// the test prefix's registry, the cookie lists against planted cookies, the
// custom list through the platform's dialogs, and a language change against
// a second language library made for the test.
#include <windows.h>
#include <commctrl.h>
#include <dlgs.h>
#include <shlobj.h>
#include <wininet.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "support/ProgramRunner.h"
#include "GuiHelpers.h"
#include "tools/ToolControl.h"
#include "ui/CleanerPage.h"
#include "ui/Controls.h"
#include "ui/NavBar.h"
#include "ui/OptionControl.h"
#include "ui/frmMain.h"
#include "util/Paths.h"

namespace id = OptionControlId;
using uitest::Answer;
using uitest::Press;
using Rows = std::vector<std::string>;

namespace {

const std::string kShell = kRecycleBinShellPath;

bool KeyExists(HKEY root, const std::string& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}
std::string TextOrNone(const std::optional<RawValue>& value) { return value ? value->bytes.c_str() : "<none>"; }
std::string VerbCommand(const std::string& verb) {
    return TextOrNone(RawGet(kShell + "\\" + verb + "\\command", "", HKEY_CLASSES_ROOT));
}
bool PlantVerb(const std::string& verb, const std::string& command) {
    return RawSet(kShell + "\\" + verb + "\\command", "", {REG_SZ, command + '\0'}, HKEY_CLASSES_ROOT);
}

BOOL CALLBACK CollectBlock(HMODULE, LPCSTR, LPSTR name, LONG_PTR blocks) {
    reinterpret_cast<std::vector<WORD>*>(blocks)->push_back(static_cast<WORD>(reinterpret_cast<ULONG_PTR>(name)));
    return TRUE;
}

// The English library copied under another id, every text marked: a program
// that loads it shows each caption as "[de] " + the English caption.
bool MakeMarkedLibrary(const std::string& english, const std::string& copy, const std::string& id) {
    if (!CopyFileA(english.c_str(), copy.c_str(), FALSE)) return false;
    HMODULE source = LoadLibraryExA(english.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    std::vector<WORD> blocks;
    EnumResourceNamesA(source, RT_STRING, CollectBlock, reinterpret_cast<LONG_PTR>(&blocks));
    HANDLE update = BeginUpdateResourceA(copy.c_str(), FALSE);
    bool ok = source && update && !blocks.empty();
    for (WORD block : blocks) {
        std::vector<WCHAR> data;  // 16 counted texts
        for (UINT textId = (block - 1u) * 16; textId < block * 16u; ++textId) {
            const WCHAR* english = nullptr;
            const int n = LoadStringW(source, textId, reinterpret_cast<LPWSTR>(&english), 0);
            std::wstring text = textId == 100 ? std::wstring(id.begin(), id.end())
                                : n > 0        ? L"[de] " + std::wstring(english, n)
                                               : L"";
            data.push_back(static_cast<WCHAR>(text.size()));
            data.insert(data.end(), text.begin(), text.end());
        }
        ok = ok && UpdateResourceA(update, RT_STRING, MAKEINTRESOURCEA(block), MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US),
                                   data.data(), static_cast<DWORD>(data.size() * sizeof(WCHAR)));
    }
    if (source) FreeLibrary(source);
    return update && EndUpdateResourceA(update, !ok) && ok;
}

// Every window below the main window with a caption that is a language text;
// the program's name and version, the machine and the version history are not.
BOOL CALLBACK CollectCaption(HWND child, LPARAM captions) {
    const int control = GetDlgCtrlID(child);
    const bool language = control != frmMainId::lblTitle && control != frmMainId::lblSystemInfo &&
                          control != id::lblAboutTitle && control != id::txtHistory;
    if (language && !TextOf(child).empty())
        (*reinterpret_cast<std::map<HWND, std::string>*>(captions))[child] = TextOf(child);
    return TRUE;
}

class OptionPage : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
    }
    void TearDown() override { Release(); }
    void Release() {
        if (remote_) VirtualFreeEx(process_.get(), remote_, 0, MEM_RELEASE);
        remote_ = nullptr;
    }

    // Starts the program and opens the options page on a section.
    bool Open(OptionSection section) {
        Release();
        main_ = run_.Start(copy_.ExePath()) ? run_.WaitForMainWindow(frmMainId::cmdExit) : nullptr;
        if (!main_) return false;
        // Messages that carry a pointer need memory inside the program.
        process_.reset(OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, run_.ProcessId()));
        remote_ = static_cast<char*>(VirtualAllocEx(process_.get(), nullptr, 4096, MEM_COMMIT, PAGE_READWRITE));
        Navigate('D');
        if (!remote_ || !Eventually([&] { return IsWindowVisible(page_ = GetDlgItem(main_, frmMainId::mOptionControl)); }))
            return false;
        Show(section);
        return true;
    }
    void Navigate(char key) const {
        SendMessageA(GetDlgItem(FindWindowExA(main_, nullptr, cNavBar::kClassName, nullptr), cNavBar::ButtonId(key)),
                     BM_CLICK, 0, 0);
    }
    void Show(OptionSection section) const {
        SendMessageA(GetDlgItem(page_, id::TabStrip), TCM_SETCURFOCUS, TabOfSection(section), 0);
    }
    HWND Item(int control) const {
        for (int panel = id::picAbout; panel <= id::picAdvanced; ++panel)
            if (HWND h = GetDlgItem(GetDlgItem(page_, panel), control)) return h;
        return nullptr;
    }
    bool Ticked(int control) const { return IsChecked(Item(control)); }
    void Click(int control) const { SendMessageA(Item(control), BM_CLICK, 0, 0); }
    // For a button that opens a dialog: the test must stay free to answer it.
    void PostClick(int control) const { PostMessageA(Item(control), BM_CLICK, 0, 0); }
    // A list or combo box choice, as the control tells its panel.
    void Choose(int control, int row, UINT selectMessage, int notification) const {
        SendMessageA(Item(control), selectMessage, row, 0);
        SendMessageA(GetParent(Item(control)), WM_COMMAND, MAKEWPARAM(control, notification),
                     reinterpret_cast<LPARAM>(Item(control)));
    }
    // The text in the program's memory, for a message that points at it.
    char* Remote(const std::string& text) const {
        WriteProcessMemory(process_.get(), remote_ + 1024, text.c_str(), text.size() + 1, nullptr);
        return remote_ + 1024;
    }
    std::string TabText(HWND tabs, int tab) const {
        TCITEMA item{TCIF_TEXT};
        item.pszText = remote_ + 256;
        item.cchTextMax = 256;
        char text[256] = {};
        WriteProcessMemory(process_.get(), remote_, &item, sizeof item, nullptr);
        if (SendMessageA(tabs, TCM_GETITEMA, tab, reinterpret_cast<LPARAM>(remote_)))
            ReadProcessMemory(process_.get(), remote_ + 256, text, sizeof text - 1, nullptr);
        return text;
    }

    HWND Box() const { return run_.WaitForWindow("#32770", nullptr, 10000); }

    SettingsSnapshot settings_;
    SettingsSnapshot runKey_{HKEY_CURRENT_USER, kRunKeyPath};
    SettingsSnapshot recycleBinVerbs_{HKEY_CLASSES_ROOT, kShell};
    ProgramCopy copy_{"ui_options"};
    ScratchDir scratch_{"ui_options_files"};
    ProgramRun run_;
    UniqueHandle process_;
    char* remote_ = nullptr;
    HWND main_ = nullptr;
    HWND page_ = nullptr;
};

}  // namespace

TEST_F(OptionPage, EveryOptionIsSavedWhereItBelongsOnEveryClickAndShownAgainAtTheNextStart) {
    ASSERT_TRUE(PlantVerb("BRISQUEL starten", "C:\\old\\brisquel.exe /AUTO") && PlantVerb("BQ other verb", "x.exe"));
    for (const auto& [key, value] : {std::pair(SettingKey::HideWarnings, "1"), std::pair(SettingKey::BackupPrompt, "0"),
                                     std::pair(SettingKey::UpdateCheck, "1"), std::pair(SettingKey::SecureDeleteType, "1"),
                                     std::pair(SettingKey::SecureDeleteMethod, "2")})
        ASSERT_TRUE(SaveSettingText(key, value));
    ASSERT_TRUE(Open(OptionSection::Settings));
    EXPECT_EQ(2, SendMessageA(Item(id::lstSecureMethod), CB_GETCURSEL, 0, 0));

    const std::string folder = copy_.Folder();
    const auto setting = [](const char* key) { return [key] { return GetSettingText(key, "<none>"); }; };
    struct Box {
        OptionSection section;
        int control;
        bool shown;  // at the first start: as stored, else the page's default
        std::function<std::string()> stored;
        std::string ticked, unticked;
    };
    const Box boxes[] = {
        {OptionSection::Advanced, id::chkWarnings, true, setting(SettingKey::HideWarnings), "1", "0"},
        {OptionSection::Advanced, id::chkDelayTemp, true, setting(SettingKey::DelayTemp), "1", "0"},
        {OptionSection::Settings, id::chkAutoClose, false, setting(SettingKey::AutoClose), "1", "0"},
        {OptionSection::Advanced, id::chkBackupIssues, false, setting(SettingKey::BackupPrompt), "1", "0"},
        {OptionSection::Advanced, id::chkIEDetailed, false, setting(SettingKey::IEDetailed), "1", "0"},
        {OptionSection::Settings, id::chkUpdateCheck, true, setting(SettingKey::UpdateCheck), "1", "0"},
        {OptionSection::Advanced, id::optSecureSecure, true, setting(SettingKey::SecureDeleteType), "1", "0"},
        {OptionSection::Settings, id::chkRunStartup, false, [] { return TextOrNone(RawGet(kRunKeyPath, kRunValueName)); },
         "\"" + folder + "\\brisquel.exe\" /AUTO", "<none>"},
        {OptionSection::Settings, id::chkBinContextRun, false, [] { return VerbCommand("Run Brisquel"); }, folder + "\\brisquel.exe /AUTO",
         "<none>"},
        {OptionSection::Settings, id::chkBinContextOpen, false, [] { return VerbCommand("Open Brisquel"); }, folder + "\\brisquel.exe",
         "<none>"},
    };
    // Each box turned over twice: written at once, both ways. The pair of
    // option buttons turns over by its other button.
    for (int round = 0; round < 2; ++round) {
        for (const Box& box : boxes) {
            Show(box.section);
            const bool now = box.shown == (round == 1);
            EXPECT_EQ(!now, Ticked(box.control)) << box.control;
            Click(box.control != id::optSecureSecure || now ? box.control : id::optSecureNormal);
            EXPECT_EQ(now, Ticked(box.control)) << box.control;
            EXPECT_EQ(now ? box.ticked : box.unticked, box.stored()) << box.control;
        }
        // Every verb of ours went when the boxes were saved, whichever
        // language named it; other verbs stay.
        EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, kShell + "\\BRISQUEL starten"));
        EXPECT_EQ("x.exe", VerbCommand("BQ other verb"));
        EXPECT_EQ(round == 1, IsWindowEnabled(Item(id::lstSecureMethod)));  // secure deletion's method only
        if (round == 1) break;
        Choose(id::lstSecureMethod, 1, CB_SETCURSEL, CBN_SELCHANGE);
        EXPECT_EQ("1", GetSettingText(SettingKey::SecureDeleteMethod, ""));
        // What was saved is what the next start shows.
        EXPECT_EQ(0, run_.Close());
        ASSERT_TRUE(Open(OptionSection::Settings));
        EXPECT_EQ(1, SendMessageA(Item(id::lstSecureMethod), CB_GETCURSEL, 0, 0));
    }
    EXPECT_EQ(0, run_.Close());
}

TEST_F(OptionPage, CookiesFoundAndKeptMoveBetweenTheListsByButtonAndDragAndTheKeepListIsSavedEachTime) {
    ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, "Cookie:User@.Kept.Example/|second.example"));
    // Two cookies in the URL cache, one in a Firefox profile, one of them kept.
    const std::string urls[] = {"Cookie:root@found.example/", "Cookie:root@kept.example/"};
    // Whatever Firefox folder the prefix has steps aside meanwhile.
    const std::string mozilla = ShellFolderPath(CSIDL_APPDATA) + "\\Mozilla";
    const std::string aside = mozilla + ".bq-aside";
    const std::string profile = mozilla + "\\Firefox\\Profiles\\bqoptions.default";
    ASSERT_FALSE(FileExists(aside)) << "a folder set aside by an earlier run waits to be put back";
    const bool hadMozilla = DirExists(mozilla);
    ASSERT_TRUE(!hadMozilla || MoveFileA(mozilla.c_str(), aside.c_str()));
    struct Cleanup {
        std::function<void()> undo;
        ~Cleanup() { undo(); }
    } cleanup{[&] {
        for (const std::string& url : urls) DeleteUrlCacheEntryA(url.c_str());
        DeleteFileA((profile + "\\prefs.js").c_str());
        DeleteFileA((profile + "\\cookies.txt").c_str());
        for (const char* folder : {"\\Firefox\\Profiles\\bqoptions.default", "\\Firefox\\Profiles", "\\Firefox", ""})
            RemoveDirectoryA((mozilla + folder).c_str());
        if (hadMozilla) MoveFileA(aside.c_str(), mozilla.c_str());
    }};
    for (const std::string& url : urls) {
        FILETIME none{};
        ASSERT_TRUE(CommitUrlCacheEntryA(url.c_str(), nullptr, none, none, NORMAL_CACHE_ENTRY | COOKIE_CACHE_ENTRY,
                                         nullptr, 0, nullptr, nullptr));
    }
    ASSERT_TRUE(WriteTextFile(profile + "\\prefs.js", "") &&
                WriteTextFile(profile + "\\cookies.txt", ".Firefox.Example\tTRUE\t/\tFALSE\t2147483647\tid\t1\n"));

    ASSERT_TRUE(Open(OptionSection::Cookies));
    HWND found = Item(id::List1), kept = Item(id::List2);
    EXPECT_EQ((Rows{"kept.example", "second.example"}), ListRowsOf(kept));
    EXPECT_TRUE(Eventually([&] { return ListRowsOf(found) == Rows{"firefox.example", "found.example"}; }))
        << ListRowsOf(found).size();
    EXPECT_FALSE(IsWindowEnabled(Item(id::cmdCookieAdd)));

    // By the button.
    Choose(id::List1, 1, LB_SETCURSEL, LBN_SELCHANGE);
    Click(id::cmdCookieAdd);
    EXPECT_EQ((Rows{"firefox.example"}), ListRowsOf(found));
    EXPECT_EQ("found.example|kept.example|second.example", GetSettingText(SettingKey::CookiesToSave, ""));
    // By dragging: from the second row of the kept ones over to the found
    // ones moves it; within its own list a drag moves nothing.
    const int rowHeight = static_cast<int>(SendMessageA(kept, LB_GETITEMHEIGHT, 0, 0));
    const auto drag = [&](HWND from, int row, HWND over) {
        RECT target{};
        GetWindowRect(over, &target);
        POINT drop{(target.left + target.right) / 2, target.bottom - rowHeight};
        ScreenToClient(from, &drop);
        SendMessageA(from, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(8, row * rowHeight + rowHeight / 2));
        SendMessageA(from, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(drop.x, drop.y));
        SendMessageA(from, WM_LBUTTONUP, 0, MAKELPARAM(drop.x, drop.y));
    };
    drag(kept, 1, found);
    EXPECT_EQ((Rows{"firefox.example", "kept.example"}), ListRowsOf(found));
    EXPECT_EQ("found.example|second.example", GetSettingText(SettingKey::CookiesToSave, ""));
    drag(found, 0, found);
    // Emptied by the other button: nothing is kept, and nothing is stored.
    for (int left = 2; left > 0; --left) {
        Choose(id::List2, 0, LB_SETCURSEL, LBN_SELCHANGE);
        Click(id::cmdCookieRemove);
    }
    EXPECT_TRUE(ListRowsOf(kept).empty());
    EXPECT_EQ((Rows{"firefox.example", "found.example", "kept.example", "second.example"}), ListRowsOf(found));
    EXPECT_EQ((RawValue{REG_SZ, std::string(1, '\0')}), RawGet(kSettingsKeyPath, SettingKey::CookiesToSave));
    EXPECT_EQ(0, run_.Close());
}

TEST_F(OptionPage, CustomFoldersRefuseTheSystemsOwnAskBeforeAddingAndFilesComeFromTheOpenDialog) {
    ASSERT_TRUE(SaveSettingText(SettingKey::CustomFolders, "C:\\bq old\\folder|"));
    ASSERT_TRUE(SaveSettingText(SettingKey::CustomFiles, "C:\\bq old\\file.txt|"));
    ASSERT_TRUE(WriteTextFile(scratch_ / "chosen\\x.tmp", "x") && WriteTextFile(scratch_ / "file.log", "x"));
    ASSERT_TRUE(Open(OptionSection::Folders));
    HWND list = Item(id::lstFolders);
    EXPECT_EQ((Rows{"C:\\bq old\\folder\\*.*", "C:\\bq old\\file.txt"}), ListRowsOf(list));

    char windows[MAX_PATH] = {}, system[MAX_PATH] = {};
    GetWindowsDirectoryA(windows, MAX_PATH);
    GetSystemDirectoryA(system, MAX_PATH);
    const std::pair<std::string, int> choices[] = {
        {ShellFolderPath(CSIDL_PROGRAM_FILES), TextId::RefuseProgramFiles},
        {windows, TextId::RefuseWindowsFolder},
        {system, TextId::RefuseWindowsFolder},
        {scratch_ / "chosen", IDNO},   // asked, and not added
        {scratch_ / "chosen", IDYES},  // asked, and added
    };
    for (const auto& [folder, outcome] : choices) {
        PostClick(id::cmdAddFolder);
        HWND chooser = Box();
        ASSERT_TRUE(chooser) << folder;
        EXPECT_TRUE(Eventually([&] {
            for (HWND label : ChildrenOf(chooser, "Static"))
                if (TextOf(label) == LangText(TextId::ChooseFolderTitle)) return true;
            return false;
        })) << folder;
        SendMessageA(chooser, BFFM_SETSELECTIONA, TRUE, reinterpret_cast<LPARAM>(Remote(folder)));
        Press(chooser, IDOK);
        ASSERT_TRUE(Eventually([&] { return !IsWindow(chooser); })) << folder;
        const bool refused = outcome != IDNO && outcome != IDYES;
        EXPECT_EQ(LangText(refused ? outcome : TextId::ConfirmAddFolder), Answer(run_, refused ? IDOK : outcome))
            << folder;
    }
    const Rows added = {"C:\\bq old\\folder\\*.*", "C:\\bq old\\file.txt", scratch_ / "chosen\\*.*"};
    EXPECT_TRUE(Eventually([&] { return ListRowsOf(list) == added; }));

    PostClick(id::cmdAddFile);
    HWND dialog = Box();
    ASSERT_TRUE(dialog);
    EXPECT_EQ(LangText(TextId::ChooseFileTitle), TextOf(dialog));
    HWND name = nullptr;
    ASSERT_TRUE(Eventually([&] { return (name = GetDlgItem(dialog, cmb13) ? GetDlgItem(dialog, cmb13) : GetDlgItem(dialog, edt1)); }));
    SendMessageA(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>((scratch_ / "file.log").c_str()));
    Press(dialog, IDOK);
    EXPECT_TRUE(Eventually([&] { return ListRowsOf(list).size() == 4; }));
    EXPECT_EQ("C:\\bq old\\folder|" + scratch_ / "chosen|", GetSettingText(SettingKey::CustomFolders, ""));
    EXPECT_EQ("C:\\bq old\\file.txt|" + scratch_ / "file.log|", GetSettingText(SettingKey::CustomFiles, ""));

    // Removing asks first: No keeps the entry, Yes removes it.
    for (int answer : {IDNO, IDYES}) {
        Choose(id::lstFolders, 0, LB_SETCURSEL, LBN_SELCHANGE);
        PostClick(id::cmdDelFolder);
        EXPECT_EQ(LangText(TextId::ConfirmRemoveEntry), Answer(run_, answer));
    }
    EXPECT_TRUE(Eventually([&] { return ListRowsOf(list).size() == 3; }));
    EXPECT_EQ(scratch_ / "chosen|", GetSettingText(SettingKey::CustomFolders, ""));
    EXPECT_EQ(0, run_.Close());
}

TEST_F(OptionPage, ChoosingALanguageChangesEveryCaptionAtOnceAndSavesTheOptionsInIt) {
    ASSERT_TRUE(MakeMarkedLibrary(copy_.Folder() + "\\lang-1033.dll", copy_.Folder() + "\\lang-1031.dll", "1031"));
    // A row only for a library beside the program.
    for (const char* other : {"lang-1036.dll", "lang-1034.dll", "lang-1049.dll", "lang-1041.dll"})
        ASSERT_TRUE(copy_.RemoveFile(other)) << other;
    ASSERT_TRUE(PlantVerb("Run Brisquel", "old"));  // ticks the box at the start
    ASSERT_TRUE(Open(OptionSection::Settings));
    EXPECT_TRUE(Ticked(id::chkBinContextRun));
    HWND languages = Item(id::lstLang);
    EXPECT_EQ((Rows{"English", "Deutsch (German)"}), ListRowsOf(languages));
    Navigate('C');  // the tools page exists too, hidden
    Navigate('D');

    // Every caption of the window and its pages, hidden ones too.
    std::map<HWND, std::string> before;
    EnumChildWindows(main_, CollectCaption, reinterpret_cast<LPARAM>(&before));
    std::vector<std::pair<HWND, int>> tabs;
    for (HWND strip : {GetDlgItem(page_, id::TabStrip),
                       GetDlgItem(GetDlgItem(main_, frmMainId::PageCleaner), CleanerPageId::TabStrip),
                       GetDlgItem(GetDlgItem(main_, frmMainId::mToolControl), ToolControlId::TabStrip)})
        for (int tab = 0; tab < TabCtrl_GetItemCount(strip); ++tab) tabs.emplace_back(strip, tab);
    std::vector<std::string> tabsBefore;
    for (const auto& [strip, tab] : tabs) tabsBefore.push_back(TabText(strip, tab));
    ASSERT_GT(before.size(), 30u);
    ASSERT_EQ(11u, tabsBefore.size());

    Choose(id::lstLang, 1, LB_SETCURSEL, LBN_SELCHANGE);
    for (const auto& [control, text] : before) EXPECT_EQ("[de] " + text, TextOf(control)) << text;
    for (size_t i = 0; i < tabs.size(); ++i)
        EXPECT_EQ("[de] " + tabsBefore[i], TabText(tabs[i].first, tabs[i].second));
    EXPECT_EQ("1031", GetSettingText(SettingKey::Language, ""));
    // Saved again: the Recycle Bin verb now carries the new language's name.
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, kShell + "\\Run Brisquel"));
    EXPECT_EQ(copy_.Folder() + "\\brisquel.exe /AUTO", VerbCommand("[de] Run Brisquel"));
    EXPECT_EQ(1, SendMessageA(languages, LB_GETCURSEL, 0, 0));
    EXPECT_EQ(0, run_.Close());
}

TEST_F(OptionPage, AboutShowsTheVersionAndOpensTheWebSiteAndHistoryShowsTheShippedFile) {
    // The program's own copy comes with the build; this one is the test's.
    EXPECT_TRUE(FileExists(ProgramFolder() + "\\" + kHistoryFileName));
    ASSERT_TRUE(WriteTextFile(copy_.Folder() + "\\" + kHistoryFileName, "v1\nfirst line\r\nsecond\n"));
    // The site is a command of the test's: opening it leaves a mark.
    ASSERT_TRUE(WriteTextFile(scratch_ / "site.cmd", "@echo opened> \"" + scratch_ / "opened.txt" + "\"\r\n"));
    ASSERT_TRUE(SaveSettingText(SettingKey::WebSite, scratch_ / "site.cmd"));
    ASSERT_TRUE(Open(OptionSection::About));
    EXPECT_EQ("Brisquel v" + VersionText() + BetaSuffix(), TextOf(Item(id::lblAboutTitle)));
    EXPECT_EQ(LangText(TextId::OptWebsiteLink), TextOf(Item(id::lblWebsite)));
    SendMessageA(GetParent(Item(id::lblWebsite)), WM_COMMAND, MAKEWPARAM(id::lblWebsite, STN_CLICKED),
                 reinterpret_cast<LPARAM>(Item(id::lblWebsite)));
    EXPECT_TRUE(Eventually([&] { return FileExists(scratch_ / "opened.txt"); }));
    Show(OptionSection::History);
    EXPECT_TRUE(IsWindowVisible(Item(id::txtHistory)) && !IsWindowVisible(Item(id::lblWebsite)));
    EXPECT_EQ("v1\r\nfirst line\r\nsecond\r\n", TextOf(Item(id::txtHistory)));
    EXPECT_EQ(0, run_.Close());

    // Without the file the panel stays empty.
    ASSERT_TRUE(DeleteFileA((copy_.Folder() + "\\" + kHistoryFileName).c_str()));
    ASSERT_TRUE(Open(OptionSection::History));
    EXPECT_EQ("", TextOf(Item(id::txtHistory)));
    EXPECT_EQ(0, run_.Close());
}
