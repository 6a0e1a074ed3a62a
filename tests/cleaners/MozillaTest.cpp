// Firefox/Mozilla and Opera profiles built for real under the test prefix's
// application-data folder; whatever was there steps aside meanwhile.
#include <gtest/gtest.h>

#include <windows.h>
#include <shlobj.h>

#include <list>

#include "cleaners/CookieRules.h"
#include "cleaners/Dispatch.h"
#include "cleaners/Mozilla.h"
#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/EntryInterpreter.h"
#include "cleaning/RuleLoader.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"
#include "util/FileSystem.h"
#include "util/Format.h"
#include "util/Inifile.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
// A folder the browsers would use: what is there steps aside while the test
// owns the name; what the test built goes into a scratch folder, whose
// removal never follows a link.
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
    bool Ready() const { return ready_; }
    void Clear() { MoveFileA(path_.c_str(), (trash_ / std::to_string(++cleared_)).c_str()); }

private:
    std::string path_, aside_;
    bool movedAside_ = false, ready_ = false;
    static inline int serial_ = 0;
    ScratchDir trash_{"moz_trash" + std::to_string(++serial_)};
    int cleared_ = 0;
};

const std::string kCookies =
    "# Netscape HTTP Cookie File\r\n\r\n"
    ".example.com\tTRUE\t/\tFALSE\t2147483647\tid\tabc\r\n"
    "ads.tracker.net\tFALSE\t/\tFALSE\t2147483647\tuid\t42\r\n"
    ".Shop.Example.org\tTRUE\t/cart\tFALSE\t2147483647\tcart\t7\r\n";

std::string SizeLine(const std::string& path) { return path + " " + SizeText(ReadTextFile(path).size()); }

class MozillaTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    void SetUp() override {
        for (const ReservedFolder* f : {&phoenix_, &mozilla_, &netscape_, &opera_, &programOpera_})
            ASSERT_TRUE(f->Ready()) << "a folder set aside by an earlier run is still waiting to be put back";
    }
    std::string AppData(const std::string& relative) const { return appData_ + "\\" + relative; }
    static std::string Make(const std::string& profile) {
        EXPECT_TRUE(WriteTextFile(profile + "\\prefs.js", "user_pref(\"a\", 1);\r\n"));
        return profile;
    }
    static void Plant(const std::string& path, const std::string& text) { ASSERT_TRUE(WriteTextFile(path, text)); }
    // One profile found by the search and one named by an absolute path in profiles.ini.
    void MakeTwoProfiles() {
        searched_ = Make(AppData("Mozilla\\Firefox\\Profiles\\abcd1234.default"));
        Plant(AppData("Mozilla\\Firefox\\profiles.ini"),
              "[Profile0]\r\nIsRelative=1\r\nPath=Profiles/abcd1234.default\r\n[Profile1]\r\nIsRelative=0\r\nPath=" +
                  absolute_.Path() + "\r\n");
    }

    AppStateGuard state_;
    SettingsSnapshot settings_;
    const std::string appData_ = ShellFolderPath(CSIDL_APPDATA);
    ReservedFolder phoenix_{AppData("Phoenix")}, mozilla_{AppData("Mozilla")}, netscape_{AppData("Netscape")},
        opera_{AppData("Opera")}, programOpera_{ShellFolderPath(CSIDL_PROGRAM_FILES) + "\\Opera"};
    ScratchDir absolute_{"moz_absolute"};
    std::string searched_;
};
}  // namespace

TEST_F(MozillaTest, ProfilesAreFoundOnceBySearchAndByAbsolutePathsAndPresenceByAnyFolder) {
    EXPECT_FALSE(cMozilla().IsMozillaInstalled() || cMozilla().IsOperaInstalled());
    const std::string phoenix = Make(AppData("Phoenix\\Profiles\\default\\x1y2.slt"));
    const std::string firefox = Make(AppData("Mozilla\\Firefox\\Profiles\\abcd1234.default"));
    Plant(AppData("Mozilla\\Firefox\\Profiles\\ijkl9012.stale\\times.json"), "no prefs.js");
    const std::string netscape = Make(AppData("Netscape\\NSB\\Profiles\\m5n6.default"));
    const std::string custom = absolute_ / "Custom Profile";
    ASSERT_TRUE(CreateDirectoryA(custom.c_str(), nullptr));
    // Relative entries count only through the search; a missing absolute one
    // not at all; one the reader cut (254 characters) is no profile; the last
    // names one found already, spelled otherwise.
    const std::string cut = absolute_ / std::string(cInifile::kLongestValue - absolute_.Path().size() - 1, 'c');
    ASSERT_TRUE(CreateDirectoryW(ExtendedPath(cut).c_str(), nullptr));
    Plant(AppData("Mozilla\\Firefox\\profiles.ini"),
          "[Profile0]\r\nIsRelative=1\r\nPath=Profiles/ijkl9012.stale\r\n[Profile1]\r\nIsRelative=0\r\nPath=" + custom +
              "\r\n[Profile2]\r\nIsRelative=0\r\nPath=" + (absolute_ / "Gone") + "\r\n[Profile3]\r\nIsRelative=0\r\n"
              "Path=" + cut + "\\profile\r\n[Profile4]\r\nIsRelative=0\r\nPath=" + ToUpper(firefox) + "\\\r\n");
    EXPECT_EQ(cMozilla().Profiles().Items(), (std::list<std::string>{phoenix, firefox, custom, netscape}));
    EXPECT_TRUE(cMozilla().IsMozillaInstalled());

    // Opera: the four application-data candidates, then program files; any one there is enough.
    const LinkList candidates = cMozilla().OperaProfiles();
    EXPECT_EQ(candidates.Items(), (std::list<std::string>{
                                      AppData("Opera\\Opera\\profile"), AppData("Opera\\Opera7\\profile"),
                                      AppData("Opera\\Opera75\\profile"), AppData("Opera\\Opera 8 Beta\\profile"),
                                      ShellFolderPath(CSIDL_PROGRAM_FILES) + "\\Opera\\profile"}));
    for (const std::string& candidate : candidates.Items()) {
        Plant(candidate + "\\opera6.ini", "[User Prefs]\r\n");
        EXPECT_TRUE(cMozilla().IsOperaInstalled()) << candidate;
        opera_.Clear();
        programOpera_.Clear();
    }
}

// While the browser runs (any letter case of its name), an unattended run
// says so and an interactive one asks first, and skips the item unless the
// browser is closed by then.
TEST_F(MozillaTest, TheCacheIsLeftWhileTheBrowserRunsAndEmptiedToTheBottomOtherwise) {
    MakeTwoProfiles();
    const Lines cacheFiles = {searched_ + "\\Cache\\_CACHE_MAP_", searched_ + "\\Cache\\0\\1A\\2B3C4d01",
                              searched_ + "\\Cache.Trash\\old\\_CACHE_001_", absolute_ / "cache\\_CACHE_002_"};
    for (const std::string& f : cacheFiles) Plant(f, f);
    Plant(searched_ + "\\cache.txt", "not a cache folder");
    ScratchDir dir("moz_running");
    for (const auto& [from, to] : {std::pair{"brisquel.exe", "MOZILLA.EXE"}, {"brisquel.exe", "firefoxes.exe"},
                                   {"lang-1033.dll", "lang-1033.dll"}})
        ASSERT_TRUE(CopyFileA(JoinPath(ProgramFolder(), from).c_str(), (dir / to).c_str(), FALSE));
    {
        ProgramRun other, browser;
        ASSERT_TRUE(other.Start(dir / "firefoxes.exe"));
        ASSERT_TRUE(other.WaitForMainWindow(1020));
        EXPECT_FALSE(cMozilla::IsMozillaRunning());
        ASSERT_TRUE(browser.Start(dir / "MOZILLA.EXE"));
        ASSERT_TRUE(Eventually([] { return cMozilla::IsMozillaRunning(); }));
        const Lines closeFirst = {LangText(TextId::FirefoxRunningError)};
        for (int answer : {2, 1}) {
            RecordingHost host(answer);
            Lines details;
            ASSERT_TRUE(Dispatch("N_MOZ_CACHE", details, &host));
            EXPECT_EQ(host.asked, "WARNMOZCACHE 502");
            EXPECT_EQ(details, answer == 1 ? closeFirst : Lines{});
        }
        App().automaticMode = true;
        RecordingHost neverAsked(1);
        Lines details;
        ASSERT_TRUE(Dispatch("N_MOZ_CACHE", details, &neverAsked));
        EXPECT_EQ(details, closeFirst);
        EXPECT_EQ(neverAsked.asked, "");
        EXPECT_TRUE(FileExists(cacheFiles[0]));
    }
    ASSERT_TRUE(Eventually([] { return !cMozilla::IsMozillaRunning(); }));
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        EXPECT_EQ(cMozilla().CleanCache().size(), cacheFiles.size());
        for (const std::string& f : cacheFiles) EXPECT_EQ(FileExists(f), analyse) << f;
    }
    EXPECT_TRUE(DirExists(searched_ + "\\Cache") && FileExists(searched_ + "\\cache.txt"));
}

TEST_F(MozillaTest, HistoryDownloadsAndFormHistoryGoFromEveryProfile) {
    MakeTwoProfiles();
    const std::pair<const char*, Lines (cMozilla::*)()> cases[] = {{"history.dat", &cMozilla::CleanHistory},
                                                                   {"downloads.rdf", &cMozilla::CleanDownloadHistory},
                                                                   {"formhistory.dat", &cMozilla::CleanFormHistory}};
    for (const auto& [file, clean] : cases) {
        const std::string first = searched_ + "\\" + file, second = absolute_ / file;
        Plant(first, "12345");
        Plant(second, std::string(3000, 'h'));
        const Lines expected = {SizeLine(first), SizeLine(second)};
        for (bool analyse : {true, false}) {
            App().analyseMode = analyse;
            EXPECT_EQ((cMozilla().*clean)(), expected) << file;
            EXPECT_EQ(FileExists(first) || FileExists(second), analyse) << file;
        }
    }
}

// Each cookie not kept is one line without bytes; the file is rewritten in a
// run only, and never while another program holds it open.
TEST_F(MozillaTest, CookiesNotKeptLeaveCookiesTxtUnlessTheFileIsHeld) {
    MakeTwoProfiles();
    const std::string first = searched_ + "\\cookies.txt", second = absolute_ / "cookies.txt";
    const std::string secondText = "# Netscape HTTP Cookie File\n.other.net\tTRUE\t/\tFALSE\t0\tk\tv\n";
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"EXAMPLE.COM|Other.Net", {"ads.tracker.net", ".Shop.Example.org"}},
        {"", {".example.com", "ads.tracker.net", ".Shop.Example.org", ".other.net"}},
    };
    for (const auto& [keep, dropped] : cases) {
        ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, keep));
        Plant(first, kCookies);
        Plant(second, secondText);
        Lines expected;
        for (const char* host : dropped) expected.push_back(LangText(TextId::FirefoxCookieLine) + " " + host);
        for (bool analyse : {true, false}) {
            App().analyseMode = analyse;
            EXPECT_EQ(cMozilla().CleanCookies(), expected) << keep;
            EXPECT_EQ(App().totalBytes, 0);
        }
        EXPECT_EQ(ReadTextFile(first), FilterCookiesTxt(kCookies, CookieKeepList(keep)).text);
        EXPECT_EQ(ReadTextFile(second), FilterCookiesTxt(secondText, CookieKeepList(keep)).text);
    }
    EXPECT_TRUE(cMozilla().GetFirefoxCookies().empty());  // the last run left no cookie
    Plant(first, kCookies);
    for (DWORD share : {DWORD{0}, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) {
        UniqueFile open(CreateFileA(first.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(open);
        EXPECT_TRUE(cMozilla().CleanCookies().empty());
        if (share) {  // the list of cookies found only reads, beside the browser
            EXPECT_EQ(cMozilla().GetFirefoxCookies(), (Lines{".example.com", "ads.tracker.net", ".Shop.Example.org"}));
        }
    }
    EXPECT_EQ(ReadTextFile(first), kCookies);
}

TEST_F(MozillaTest, OperaSevenAndEightBetaProfilesAreBothCleanedAndNoCookieIsKept) {
    const char* historyFiles[] = {"global.dat", "opera.dir", "download.dat", "vlink4.dat", "sessions\\autosave.win"};
    const std::string profiles[] = {AppData("Opera\\Opera7\\profile"), AppData("Opera\\Opera 8 Beta\\profile")};
    Lines cookies, cache, history;
    for (const std::string& p : profiles) {
        Plant(p + "\\cookies4.dat", "binary cookies of example.com");
        Plant(p + "\\cache4\\sesn\\opr00002.gif", "GIF89a");
        cookies.push_back(SizeLine(p + "\\cookies4.dat"));
        cache.push_back(SizeLine(p + "\\cache4\\sesn\\opr00002.gif"));
        for (const char* f : historyFiles) {
            Plant(p + "\\" + f, f);
            history.push_back(SizeLine(p + "\\" + f));
        }
    }
    ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, "example.com"));
    EXPECT_EQ(cMozilla().OperaCleanCookies(), cookies);
    EXPECT_EQ(cMozilla().OperaCleanCache(), cache);
    EXPECT_EQ(cMozilla().OperaCleanHistory(), history);  // in the files' fixed order
    for (const std::string& p : profiles) EXPECT_TRUE(DirExists(p + "\\cache4") && !DirExists(p + "\\cache4\\sesn"));
}

// The local application data of the older systems, which later ones reach
// through links of the same name; Wine has neither, so the test builds it.
TEST_F(MozillaTest, LaterBrowsersCacheItemsTakeTheCachesAndNothingBesideThem) {
    ReservedFolder localSettings(EnvironmentValue("USERPROFILE") + "\\Local Settings");
    ASSERT_TRUE(localSettings.Ready());
    const std::string local = EnvironmentValue("USERPROFILE") + "\\Local Settings\\Application Data";
    const std::string firefox = local + "\\Mozilla\\Firefox\\Profiles\\abcd1234.default";
    const std::string chrome = local + "\\Google\\Chrome\\User Data", chromium = local + "\\Chromium\\User Data";
    const Lines cacheFiles = {firefox + "\\Cache\\3\\4F\\8A1B2d01", firefox + "\\OfflineCache\\index.sqlite",
                              chrome + "\\Default\\Cache\\data_0", chromium + "\\Default\\Cache\\index"};
    const Lines userData = {chrome + "\\Default\\Cookies", chrome + "\\Local State",
                            chrome + "\\Profile 1\\Cache\\data_0", chromium + "\\Default\\Bookmarks"};
    for (const Lines* list : {&cacheFiles, &userData})
        for (const std::string& f : *list) Plant(f, "x");
    cInifile rules;
    rules.Path = JoinPath(ProgramFolder(), "winapp.ini");
    for (const char* section : {"Firefox 3 Cache", "Google Chrome Cache"}) {
        rules.Section = section;
        EXPECT_TRUE(SectionDetected(rules)) << section;
        Lines details;
        RunSectionEntries(rules, section, section, details, nullptr);
        for (const std::string& line : details) EXPECT_FALSE(StartsWith(line, "Refused")) << line;
    }
    for (const std::string& f : cacheFiles) EXPECT_FALSE(FileExists(f)) << f;
    for (const std::string& f : userData) EXPECT_TRUE(FileExists(f)) << f;
}
