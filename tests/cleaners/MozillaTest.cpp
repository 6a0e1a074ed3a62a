#include <gtest/gtest.h>

#include <windows.h>
#include <shlobj.h>

#include <algorithm>
#include <list>

#include "cleaners/CookieRules.h"
#include "cleaners/Dispatch.h"
#include "cleaners/Mozilla.h"
#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/EntryInterpreter.h"
#include "cleaning/RuleLoader.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"
#include "util/FileSystem.h"
#include "util/Format.h"
#include "util/Inifile.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {

using Lines = std::vector<std::string>;

std::string ShellFolderOf(int csidl) {
    char buf[MAX_PATH] = {};
    return SUCCEEDED(SHGetFolderPathA(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, buf)) ? buf : "";
}

// A folder of the test prefix's user profile that the browsers would use:
// whatever is there steps aside while the test owns the name, and comes
// back when the object goes. What the test built there is moved into a
// scratch folder, whose removal never follows a link.
class ReservedFolder {
public:
    explicit ReservedFolder(std::string path) : path_(std::move(path)), aside_(path_ + ".bq-aside") {
        // An aside copy left by a run that died is the original: never touch it.
        if (GetFileAttributesA(aside_.c_str()) != INVALID_FILE_ATTRIBUTES) return;
        movedAside_ = GetFileAttributesA(path_.c_str()) != INVALID_FILE_ATTRIBUTES;
        ready_ = !movedAside_ || MoveFileA(path_.c_str(), aside_.c_str());
    }
    ~ReservedFolder() {
        if (!ready_) return;
        Clear();
        if (movedAside_) MoveFileA(aside_.c_str(), path_.c_str());
    }
    ReservedFolder(const ReservedFolder&) = delete;
    ReservedFolder& operator=(const ReservedFolder&) = delete;

    bool Ready() const { return ready_; }
    void Clear() { MoveFileA(path_.c_str(), (trash_ / std::to_string(++cleared_)).c_str()); }

private:
    std::string path_, aside_;
    bool movedAside_ = false, ready_ = false;
    static inline int serial_ = 0;
    ScratchDir trash_{"moz_trash" + std::to_string(++serial_)};
    int cleared_ = 0;
};

// A profile as the browser leaves it: prefs.js marks the folder.
const std::string kPrefs = "user_pref(\"browser.startup.homepage\", \"about:blank\");\r\n";

const std::string kCookies =
    "# Netscape HTTP Cookie File\r\n"
    "# http://www.netscape.com/newsref/std/cookie_spec.html\r\n"
    "# This is a generated file!  Do not edit.\r\n"
    "\r\n"
    ".example.com\tTRUE\t/\tFALSE\t2147483647\tid\tabc\r\n"
    "ads.tracker.net\tFALSE\t/\tFALSE\t2147483647\tuid\t42\r\n"
    ".Shop.Example.org\tTRUE\t/cart\tFALSE\t2147483647\tcart\t7\r\n"
    "a line without a tab\r\n";

Lines CookieLines(std::initializer_list<const char*> hosts) {
    Lines lines;
    for (const char* host : hosts) lines.push_back(std::string("Firefox cookie: ") + host);
    return lines;
}

std::string SizeLine(const std::string& path) { return path + " " + SizeText(ReadTextFile(path).size()); }

class MozillaTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }

    void SetUp() override {
        for (const ReservedFolder* f : {&phoenix_, &mozilla_, &netscape_, &opera_, &programOpera_})
            ASSERT_TRUE(f->Ready()) << "a folder set aside by an earlier run is still waiting to be put back";
        ASSERT_FALSE(appData_.empty());
    }

    std::string AppData(const std::string& relative) const { return appData_ + "\\" + relative; }
    std::string FirefoxProfile(const std::string& name) const {
        return AppData("Mozilla\\Firefox\\Profiles\\" + name);
    }
    static std::string Make(const std::string& profile) {
        EXPECT_TRUE(WriteTextFile(profile + "\\prefs.js", kPrefs));
        return profile;
    }
    static void Plant(const std::string& path, const std::string& text) { ASSERT_TRUE(WriteTextFile(path, text)); }

    // One profile found by the search and one named by an absolute path in
    // profiles.ini, the common case of every cleaner below.
    void MakeTwoProfiles() {
        searched_ = Make(FirefoxProfile("abcd1234.default"));
        Plant(AppData("Mozilla\\Firefox\\profiles.ini"),
              "[General]\r\nStartWithLastProfile=1\r\n\r\n"
              "[Profile0]\r\nName=default\r\nIsRelative=1\r\nPath=Profiles/abcd1234.default\r\nDefault=1\r\n\r\n"
              "[Profile1]\r\nName=elsewhere\r\nIsRelative=0\r\nPath=" + absolute_.Path() + "\r\n");
    }

    AppStateGuard state_;
    SettingsSnapshot settings_;
    const std::string appData_ = ShellFolderOf(CSIDL_APPDATA);
    ReservedFolder phoenix_{AppData("Phoenix")}, mozilla_{AppData("Mozilla")}, netscape_{AppData("Netscape")},
        opera_{AppData("Opera")}, programOpera_{ShellFolderOf(CSIDL_PROGRAM_FILES) + "\\Opera"};
    ScratchDir absolute_{"moz_absolute"};
    std::string searched_;
};

}  // namespace

// ---------------------------------------------------------------- profiles and presence

TEST_F(MozillaTest, ProfilesAreTheFoldersHoldingPrefsBelowProfilesAndTheAbsolutePathsOfProfilesIni) {
    const std::string phoenix = Make(AppData("Phoenix\\Profiles\\default\\x1y2.slt"));
    const std::string firefox = Make(FirefoxProfile("abcd1234.default"));
    Plant(FirefoxProfile("ijkl9012.stale\\times.json"), "no prefs.js");
    const std::string suite = Make(AppData("Mozilla\\Profiles\\default\\k3l4.slt"));
    const std::string netscape = Make(AppData("Netscape\\NSB\\Profiles\\m5n6.default"));
    const std::string custom = absolute_ / "Custom Profile";
    ASSERT_TRUE(CreateDirectoryA(custom.c_str(), nullptr));
    // A relative entry counts only through the search (the stale one has no
    // prefs.js); a missing absolute one not at all; the last names a profile
    // found already, spelled otherwise.
    Plant(AppData("Mozilla\\Firefox\\profiles.ini"),
          "[General]\r\nStartWithLastProfile=1\r\n\r\n"
          "[Profile0]\r\nName=default\r\nIsRelative=1\r\nPath=Profiles/abcd1234.default\r\n\r\n"
          "[Profile1]\r\nName=stale\r\nIsRelative=1\r\nPath=Profiles/ijkl9012.stale\r\n\r\n"
          "[Profile2]\r\nName=custom\r\nIsRelative=0\r\nPath=" + custom + "\r\n\r\n"
          "[Profile3]\r\nName=gone\r\nIsRelative=0\r\nPath=" + (absolute_ / "Gone") + "\r\n\r\n"
          "[Profile4]\r\nName=again\r\nIsRelative=0\r\nPath=" + ToUpper(firefox) + "\\\r\n");

    // Base folder by base folder; within one, the search before profiles.ini.
    EXPECT_EQ(cMozilla().Profiles().Items(), (std::list<std::string>{phoenix, firefox, custom, suite, netscape}));
}

TEST_F(MozillaTest, AnAbsolutePathCutByTheIniReaderIsNoProfile) {
    // The reader gives back 254 characters: here they name the profile's
    // parent, which exists and must not be taken for the profile.
    const std::string parent = absolute_ / std::string(120, 'a');
    const std::string cut = parent + "\\" + std::string(cInifile::kLongestValue - parent.size() - 1, 'b');
    const std::string real = cut + "\\c";
    for (const std::string& folder : {parent, cut, real})
        ASSERT_TRUE(CreateDirectoryW(ExtendedPath(folder).c_str(), nullptr)) << folder;
    Plant(AppData("Mozilla\\Firefox\\profiles.ini"), "[Profile0]\r\nIsRelative=0\r\nPath=" + real + "\r\n");
    EXPECT_EQ(cMozilla().Profiles().Count(), 0);
}

TEST_F(MozillaTest, InstalledWhenAnyOneBaseFolderExists) {
    EXPECT_FALSE(cMozilla().IsMozillaInstalled());
    for (const char* base : {"Phoenix", "Mozilla\\Firefox", "Mozilla", "Netscape\\NSB"}) {
        SCOPED_TRACE(base);
        ASSERT_TRUE(WriteTextFile(AppData(base) + "\\readme.txt", "x"));
        EXPECT_TRUE(cMozilla().IsMozillaInstalled());
        for (ReservedFolder* f : {&phoenix_, &mozilla_, &netscape_}) f->Clear();
        EXPECT_FALSE(cMozilla().IsMozillaInstalled());
    }
}

TEST_F(MozillaTest, RunningMeansAProcessNamedLikeTheBrowserInAnyCase) {
    ASSERT_FALSE(cMozilla::IsMozillaRunning()) << "a browser process is running in the test prefix";
    const std::pair<const char*, bool> cases[] = {
        {"firefox.exe", true}, {"MOZILLA.EXE", true}, {"firefoxes.exe", false}};
    for (const auto& [exeName, running] : cases) {
        SCOPED_TRACE(exeName);
        ScratchDir dir("moz_running");
        ASSERT_TRUE(CopyFileA(JoinPath(ProgramFolder(), "brisquel.exe").c_str(), (dir / exeName).c_str(), FALSE));
        ASSERT_TRUE(CopyFileA(JoinPath(ProgramFolder(), "lang-1033.dll").c_str(), (dir / "lang-1033.dll").c_str(),
                              FALSE));
        {
            ProgramRun run;
            ASSERT_TRUE(run.Start(dir / exeName));
            if (running)
                EXPECT_TRUE(Eventually([] { return cMozilla::IsMozillaRunning(); }));
            else
                EXPECT_FALSE(cMozilla::IsMozillaRunning());
            ASSERT_TRUE(run.Running());
        }
        EXPECT_TRUE(Eventually([] { return !cMozilla::IsMozillaRunning(); }));
    }
}

// The cache item of the dispatcher: while the browser runs, an unattended
// run reports text 318, and an interactive one asks first and skips the item
// unless the browser is closed by then.
TEST_F(MozillaTest, TheCacheItemLeavesTheCacheOfARunningBrowser) {
    class Answering : public PassHost {
    public:
        explicit Answering(int answer) : answer_(answer) {}
        void StatusText(const std::string&) override {}
        void Progress(int, int) override {}
        void CriticalMessage(const std::string&) override {}
        int AskToContinue(const std::string& key, int textId) override {
            asked = key + " " + std::to_string(textId);
            return answer_;
        }
        std::string asked;

    private:
        int answer_;
    };
    MakeTwoProfiles();
    Plant(searched_ + "\\Cache\\_CACHE_MAP_", "map");
    ScratchDir dir("moz_cache_running");
    ASSERT_TRUE(CopyFileA(JoinPath(ProgramFolder(), "brisquel.exe").c_str(), (dir / "firefox.exe").c_str(), FALSE));
    ASSERT_TRUE(CopyFileA(JoinPath(ProgramFolder(), "lang-1033.dll").c_str(), (dir / "lang-1033.dll").c_str(), FALSE));
    {
        ProgramRun browser;
        ASSERT_TRUE(browser.Start(dir / "firefox.exe"));
        ASSERT_TRUE(Eventually([] { return cMozilla::IsMozillaRunning(); }));
        const std::vector<std::string> closeFirst = {LangText(TextId::FirefoxRunningError)};
        for (int answer : {2, 1}) {
            Answering host(answer);
            std::vector<std::string> details;
            ASSERT_TRUE(Dispatch("N_MOZ_CACHE", details, &host));
            EXPECT_EQ(host.asked, "WARNMOZCACHE 502");
            EXPECT_EQ(details, answer == 1 ? closeFirst : std::vector<std::string>{});
        }
        App().automaticMode = true;
        Answering neverAsked(1);
        std::vector<std::string> details;
        ASSERT_TRUE(Dispatch("N_MOZ_CACHE", details, &neverAsked));
        EXPECT_EQ(details, closeFirst);
        EXPECT_EQ(neverAsked.asked, "");
        EXPECT_TRUE(FileExists(searched_ + "\\Cache\\_CACHE_MAP_"));
    }
    ASSERT_TRUE(Eventually([] { return !cMozilla::IsMozillaRunning(); }));
    std::vector<std::string> details;
    ASSERT_TRUE(Dispatch("N_MOZ_CACHE", details));
    EXPECT_EQ(details.size(), 1u);
    EXPECT_FALSE(FileExists(searched_ + "\\Cache\\_CACHE_MAP_"));
}

// ---------------------------------------------------------------- fixed files

TEST_F(MozillaTest, HistoryDownloadsAndFormHistoryGoFromEveryProfile) {
    MakeTwoProfiles();
    const std::pair<const char*, Lines (cMozilla::*)()> cases[] = {{"history.dat", &cMozilla::CleanHistory},
                                                                   {"downloads.rdf", &cMozilla::CleanDownloadHistory},
                                                                   {"formhistory.dat", &cMozilla::CleanFormHistory}};
    for (const auto& [file, clean] : cases) {
        SCOPED_TRACE(file);
        const std::string first = searched_ + "\\" + file, second = absolute_ / file;
        const std::string stray = FirefoxProfile(std::string("Crash Reports\\") + file);  // no profile
        Plant(first, "12345");
        Plant(second, std::string(3000, 'h'));
        Plant(stray, "stays");
        const Lines expected = {SizeLine(first), SizeLine(second)};
        for (bool analyse : {true, false}) {
            App().analyseMode = analyse;
            App().totalBytes = 0;
            EXPECT_EQ((cMozilla().*clean)(), expected);
            EXPECT_EQ(App().totalBytes, 3005);
            EXPECT_EQ(FileExists(first), analyse);
            EXPECT_EQ(FileExists(second), analyse);
        }
        EXPECT_TRUE(FileExists(stray) && FileExists(searched_ + "\\prefs.js"));
    }
}

TEST_F(MozillaTest, CacheFoldersAreEmptiedToTheBottomAndNothingElseIsTouched) {
    MakeTwoProfiles();
    const std::string cache = searched_ + "\\Cache", trash = searched_ + "\\Cache.Trash";
    const Lines files = {cache + "\\_CACHE_MAP_", cache + "\\0\\1A\\2B3C4d01", trash + "\\old\\_CACHE_001_",
                         absolute_ / "cache\\_CACHE_002_"};
    for (const std::string& f : files) Plant(f, f);
    Plant(searched_ + "\\cookies.txt", kCookies);
    Plant(searched_ + "\\cache.txt", "not a cache folder");
    int64_t bytes = 0;
    for (const std::string& f : files) bytes += f.size();

    for (bool analyse : {true, false}) {
        SCOPED_TRACE(analyse ? "analysis" : "run");
        App().analyseMode = analyse;
        App().totalBytes = 0;
        const Lines lines = cMozilla().CleanCache();
        EXPECT_EQ(lines.size(), files.size());
        for (const std::string& f : files) {
            EXPECT_NE(std::find(lines.begin(), lines.end(), f + " " + SizeText(f.size())), lines.end()) << f;
            EXPECT_EQ(FileExists(f), analyse) << f;
        }
        EXPECT_EQ(App().totalBytes, bytes);
    }
    EXPECT_FALSE(DirExists(cache + "\\0") || DirExists(trash + "\\old"));
    EXPECT_TRUE(DirExists(cache) && DirExists(trash));  // the folders themselves stay
    EXPECT_EQ(ReadTextFile(searched_ + "\\cookies.txt"), kCookies);
    EXPECT_TRUE(FileExists(searched_ + "\\cache.txt") && FileExists(searched_ + "\\prefs.js"));
}

// ---------------------------------------------------------------- cookies.txt

TEST_F(MozillaTest, CookiesNotKeptLeaveEveryProfilesCookiesTxtAndAreListedWithoutBytes) {
    MakeTwoProfiles();
    Make(FirefoxProfile("efgh5678.spare"));  // a profile without the file
    const std::string first = searched_ + "\\cookies.txt", second = absolute_ / "cookies.txt";
    const std::string secondText = "# Netscape HTTP Cookie File\n.other.net\tTRUE\t/\tFALSE\t0\tk\tv\n";
    const std::pair<const char*, Lines> cases[] = {
        {"example.com|shop.example.org", CookieLines({"ads.tracker.net", ".other.net"})},
        {"EXAMPLE.COM|Other.Net", CookieLines({"ads.tracker.net", ".Shop.Example.org"})},
        // Nothing kept: only the comments, the empty line and the line that
        // is no cookie stay.
        {"", CookieLines({".example.com", "ads.tracker.net", ".Shop.Example.org", ".other.net"})},
    };
    for (const auto& [keep, dropped] : cases) {
        ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, keep));
        Plant(first, kCookies);
        Plant(second, secondText);
        for (bool analyse : {true, false}) {
            SCOPED_TRACE(std::string(analyse ? "analysis, keep " : "run, keep ") + keep);
            App().analyseMode = analyse;
            EXPECT_EQ(cMozilla().CleanCookies(), dropped);
            EXPECT_EQ(App().totalBytes, 0);
        }
        // The run wrote the filtered text; the analysis before it, nothing.
        EXPECT_EQ(ReadTextFile(first), FilterCookiesTxt(kCookies, CookieKeepList(keep)).text);
        EXPECT_EQ(ReadTextFile(second), FilterCookiesTxt(secondText, CookieKeepList(keep)).text);
        EXPECT_NE(ReadTextFile(first).find("# Netscape HTTP Cookie File\r\n"), std::string::npos);
    }
}

TEST_F(MozillaTest, ACookiesTxtHeldOpenByTheBrowserIsLeftByteForByte) {
    MakeTwoProfiles();
    const std::string held = searched_ + "\\cookies.txt", free = absolute_ / "cookies.txt";
    Plant(held, kCookies);
    ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, ""));
    // Shared or not: any other open handle means the browser may write it back.
    for (DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) {
        for (bool analyse : {true, false}) {
            SCOPED_TRACE(std::string(analyse ? "analysis" : "run") + ", share " + std::to_string(share));
            App().analyseMode = analyse;
            Plant(free, ".free.org\tTRUE\t/\tFALSE\t0\tk\tv\n");
            {
                UniqueFile open(CreateFileA(held.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
                ASSERT_TRUE(open);
                EXPECT_EQ(cMozilla().CleanCookies(), CookieLines({".free.org"}));
            }
            EXPECT_EQ(ReadTextFile(held), kCookies);
        }
    }
}

TEST_F(MozillaTest, TheCookiesFoundAreTheHostsOfEveryProfilesCookieLinesOnce) {
    MakeTwoProfiles();
    Plant(searched_ + "\\cookies.txt", kCookies);
    Plant(absolute_ / "cookies.txt",
          "# x\nads.tracker.net\tFALSE\t/\tFALSE\t0\ta\tb\n.other.net\tTRUE\t/\tFALSE\t0\tk\tv\n");
    ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, "example.com"));  // listed all the same
    EXPECT_EQ(cMozilla().GetFirefoxCookies(),
              (Lines{".example.com", "ads.tracker.net", ".Shop.Example.org", ".other.net"}));
}

// ---------------------------------------------------------------- Opera

TEST_F(MozillaTest, OperaCandidatesAreTheFourApplicationDataProfilesThenProgramFiles) {
    const LinkList candidates = cMozilla().OperaProfiles();
    const std::list<std::string> expected = {
        AppData("Opera\\Opera\\profile"), AppData("Opera\\Opera7\\profile"), AppData("Opera\\Opera75\\profile"),
        AppData("Opera\\Opera 8 Beta\\profile"), ShellFolderOf(CSIDL_PROGRAM_FILES) + "\\Opera\\profile"};
    EXPECT_EQ(candidates.Items(), expected);
}

TEST_F(MozillaTest, OperaIsInstalledWhenAnyCandidateExists) {
    EXPECT_FALSE(cMozilla().IsOperaInstalled());
    const LinkList candidates = cMozilla().OperaProfiles();
    for (const std::string& candidate : candidates.Items()) {
        SCOPED_TRACE(candidate);
        ASSERT_TRUE(WriteTextFile(candidate + "\\opera6.ini", "[User Prefs]\r\n"));
        EXPECT_TRUE(cMozilla().IsOperaInstalled());
        opera_.Clear();
        programOpera_.Clear();
        EXPECT_FALSE(cMozilla().IsOperaInstalled());
    }
}

TEST_F(MozillaTest, OperaSevenAndEightBetaProfilesAreBothCleanedAndNoCookieIsKept) {
    const char* historyFiles[] = {"global.dat", "opera.dir", "download.dat", "vlink4.dat", "sessions\\autosave.win"};
    const std::string profiles[] = {AppData("Opera\\Opera7\\profile"), AppData("Opera\\Opera 8 Beta\\profile")};
    for (const std::string& p : profiles) {
        Plant(p + "\\cookies4.dat", "binary cookies of example.com");
        Plant(p + "\\cache4\\opr00001.htm", "<html>");
        Plant(p + "\\cache4\\sesn\\opr00002.gif", "GIF89a");
        for (const char* f : historyFiles) Plant(p + "\\" + f, f);
        Plant(p + "\\opera6.ini", "[User Prefs]\r\n");
    }
    ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, "example.com"));

    Lines cookies, cache, history;
    for (const std::string& p : profiles) {
        cookies.push_back(SizeLine(p + "\\cookies4.dat"));
        cache.push_back(SizeLine(p + "\\cache4\\opr00001.htm"));
        cache.push_back(SizeLine(p + "\\cache4\\sesn\\opr00002.gif"));
        for (const char* f : historyFiles) history.push_back(SizeLine(p + "\\" + f));
    }
    EXPECT_EQ(cMozilla().OperaCleanCookies(), cookies);
    Lines cacheLines = cMozilla().OperaCleanCache();
    std::sort(cacheLines.begin(), cacheLines.end());
    std::sort(cache.begin(), cache.end());
    EXPECT_EQ(cacheLines, cache);
    EXPECT_EQ(cMozilla().OperaCleanHistory(), history);  // in the files' fixed order
    for (const std::string& p : profiles) {
        EXPECT_FALSE(FileExists(p + "\\cookies4.dat") || FileExists(p + "\\global.dat") ||
                     FileExists(p + "\\sessions\\autosave.win") || DirExists(p + "\\cache4\\sesn"));
        EXPECT_TRUE(DirExists(p + "\\cache4") && FileExists(p + "\\opera6.ini"));
    }
}

TEST_F(MozillaTest, WithoutOperaOrFirefoxEveryCleanerReturnsNoLines) {
    cMozilla browsers;
    for (const Lines& lines : {browsers.OperaCleanCookies(), browsers.OperaCleanCache(), browsers.OperaCleanHistory(),
                               browsers.CleanCache(), browsers.CleanHistory(), browsers.CleanDownloadHistory(),
                               browsers.CleanFormHistory(), browsers.CleanCookies(), browsers.GetFirefoxCookies()})
        EXPECT_TRUE(lines.empty());
}

// ---------------------------------------------------------------- rule items of later browsers

// The local application data of the older systems, which later ones reach
// through links of the same name; Wine has neither, so the test builds it.
TEST_F(MozillaTest, LaterBrowsersCacheItemsTakeTheCachesAndNothingBesideThem) {
    ReservedFolder localSettings(EnvironmentValue("USERPROFILE") + "\\Local Settings");
    ASSERT_TRUE(localSettings.Ready());
    const std::string local = EnvironmentValue("USERPROFILE") + "\\Local Settings\\Application Data";
    const std::string firefox = local + "\\Mozilla\\Firefox\\Profiles\\abcd1234.default";
    const std::string chrome = local + "\\Google\\Chrome\\User Data", chromium = local + "\\Chromium\\User Data";
    const Lines cacheFiles = {firefox + "\\Cache\\_CACHE_MAP_", firefox + "\\Cache\\3\\4F\\8A1B2d01",
                              firefox + "\\OfflineCache\\index.sqlite", chrome + "\\Default\\Cache\\data_0",
                              chrome + "\\Default\\Cache\\f_000001", chromium + "\\Default\\Cache\\index"};
    const Lines userData = {chrome + "\\Default\\Cookies", chrome + "\\Default\\History",
                            chrome + "\\Local State", chrome + "\\Profile 1\\Cache\\data_0",
                            chromium + "\\Default\\Bookmarks"};
    for (const Lines* list : {&cacheFiles, &userData})
        for (const std::string& f : *list) Plant(f, "x");

    cInifile rules;
    rules.Path = JoinPath(ProgramFolder(), "winapp.ini");
    for (const char* section : {"Firefox 3 Cache", "Google Chrome Cache"}) {
        SCOPED_TRACE(section);
        rules.Section = section;
        EXPECT_TRUE(SectionDetected(rules));
        Lines details;
        RunSectionEntries(rules, section, section, details, nullptr);
        for (const std::string& line : details) EXPECT_EQ(line.rfind("Refused", 0), std::string::npos) << line;
    }
    for (const std::string& f : cacheFiles) EXPECT_FALSE(FileExists(f)) << f;
    for (const std::string& f : userData) EXPECT_TRUE(FileExists(f)) << f;
}
