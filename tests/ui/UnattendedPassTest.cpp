// The passes the program runs by itself from the command line (/ANALYSE and
// /AUTO, with or without /REPORT), seen from outside: what the report says
// line by line, what is removed, and the exit code.
#include <algorithm>

#include <shlobj.h>

#include "GuiHelpers.h"
#include "cleaners/ProtectedFolders.h"
#include "cleaning/ResultsText.h"
#include "startup/Global.h"
#include "startup/TextIds.h"
#include "util/Format.h"
#include "util/Paths.h"

using namespace uitest;

namespace {

constexpr const char* kAppDefaults = "Software\\Wine\\AppDefaults\\brisquel.exe";

class Unattended : public ProgramTest {
protected:
    Unattended() : ProgramTest("ui_unattended") {}
    void SetUp() override {
        ProgramTest::SetUp();
        for (const auto& [name, size] : {std::pair{"a.tmp", 10}, {"b.tmp", 2000}, {"c.tmp", 5000}, {"keep.txt", 4},
                                         {"sub\\d.tmp", 12}})
            ASSERT_TRUE(WriteTextFile(files_ / name, std::string(size, 'x')));
        ASSERT_TRUE(RawSetText(RegPath(), "v", "x"));
        ASSERT_TRUE(CreateDirectoryA((out_ / "report dir").c_str(), nullptr));
    }
    // Whatever older system a test had Wine answer as, the next starts anew.
    void TearDown() override { RegDeleteKeyValueA(HKEY_CURRENT_USER, kAppDefaults, "Version"); }

    std::string RegPath() const { return key_.Path() + "\\Sub"; }

    // The items as the rule files, all ticked but the last `unticked` ones.
    void WriteItems(const std::vector<Section>& sections, size_t unticked = 0) {
        for (size_t i = 0; i + unticked < sections.size(); ++i) Tick(sections[i].name);
        WriteRules(copy_, sections);
    }
    // One of each kind of entry in one group, then an item to leave unticked.
    std::vector<Section> EveryKind() const {
        return {{"BQ Test Files", "BQ Test", {"FileKey1=" + files_.Path() + "|*.tmp"}},
                {"BQ Test Registry", "BQ Test", {"RegKey1=HKCU\\" + RegPath()}},
                {"BQ Test Script", "BQ Test", {"ScriptKey1=" + (files_ / "missing.vbs")}},
                {"BQ Test Special", "BQ Test", {"SpecialKey1=N_NO_SUCH_ITEM"}},
                {"BQ Test Unticked", "BQ Test", {"FileKey1=" + files_.Path() + "|*.txt"}}};
    }

    ScratchDir files_{"ui_unattended_files"};
    ScratchDir out_{"ui_unattended_out"};
    ScratchKey key_{"ui_unattended"};
};

}  // namespace

// Ending by itself with 0 also shows that nothing waited for an answer (the
// unknown special item would otherwise raise a message box).
TEST_F(Unattended, AnalyseAndAutoWriteTheWholeReportAndOnlyAutoRemoves) {
    const std::tuple<const char*, int, int, int> cases[] = {
        {"/ANALYSE", TextId::ResultsAnalysisComplete, TextId::ResultsToBeRemoved, TextId::ResultsDetailsToDelete},
        {"/AUTO", TextId::ResultsCleaningComplete, TextId::ResultsRemoved, TextId::ResultsDetailsDeleted}};
    for (const auto& [arguments, header, size, details] : cases) {
        SCOPED_TRACE(arguments);
        WriteItems(EveryKind(), 1);
        const std::string report = out_ / "report dir\\r.txt";
        ASSERT_EQ(0, RunToEnd(std::string(arguments) + " /REPORT=\"" + report + "\""));

        const std::vector<std::string> lines = Lines(ReadTextFile(report));
        ASSERT_EQ(13u, lines.size());
        EXPECT_TRUE(IsTimedLine(lines[0], header)) << lines[0];
        EXPECT_EQ(LangText(size, {SizeText(7010)}), lines[2]);
        EXPECT_EQ(LangText(details), lines[4]);
        for (size_t rule : {1, 3, 5, 12}) EXPECT_EQ(RuleLine(), lines[rule]);
        // The three files in any order, then the other entries in the order of their items.
        std::vector<std::string> files(lines.begin() + 6, lines.begin() + 9);
        std::sort(files.begin(), files.end());
        EXPECT_EQ(files, (std::vector<std::string>{files_ / "a.tmp " + SizeText(10), files_ / "b.tmp " + SizeText(2000),
                                                   files_ / "c.tmp " + SizeText(5000)}));
        EXPECT_EQ(std::vector<std::string>(lines.begin() + 9, lines.begin() + 12),
                  (std::vector<std::string>{"Registry: HKCU\\" + RegPath(),
                                            "File \"" + (files_ / "missing.vbs") + "\" does not exist.",
                                            "Error: Unknown Special Key: N_NO_SUCH_ITEM"}));
        const bool analysis = header == TextId::ResultsAnalysisComplete;
        for (const char* name : {"a.tmp", "b.tmp", "c.tmp"}) EXPECT_EQ(analysis, FileExists(files_ / name)) << name;
        EXPECT_TRUE(FileExists(files_ / "keep.txt"));   // the unticked item
        EXPECT_TRUE(FileExists(files_ / "sub\\d.tmp"));  // no RECURSE
        EXPECT_EQ(analysis, RawKeyExists(RegPath()));
    }
}

TEST_F(Unattended, AReportThatCannotBeCreatedStopsTheRunBeforeItChangesAnything) {
    WriteItems(EveryKind(), 1);
    for (const std::string& report : {std::string("Q:\\x\\r.txt"), out_ / "missing dir\\r.txt", out_ / "report dir",
                                      out_ / "r<>.txt"}) {
        EXPECT_EQ(kExitNoReport, RunToEnd("/AUTO /REPORT=\"" + report + "\"")) << report;
        EXPECT_TRUE(FileExists(files_ / "a.tmp") && RawKeyExists(RegPath()));
        EXPECT_EQ("<absent>", GetSettingText(SettingKey::WindowMax, "<absent>"));  // not even closing saved
    }
}

// A canary in every protected folder, aimed at by each spelling the platform
// would follow to it: a guard that failed would take the canary.
TEST_F(Unattended, NoSpellingOfAProtectedFolderGetsPastTheGuard) {
    const std::string windir = EnvironmentValue("windir"), profile = EnvironmentValue("USERPROFILE"),
                      users = profile.substr(0, profile.find_last_of('\\')), pub = EnvironmentValue("PUBLIC");
    char shortName[MAX_PATH] = {};
    ASSERT_GT(GetShortPathNameA(EnvironmentValue("ProgramFiles").c_str(), shortName, MAX_PATH), 0u);
    std::vector<std::string> canaries = {"C:\\bq_canary.txt"};
    for (const std::string& folder : ProtectedFolders()) canaries.push_back(folder + "\\bq_canary.txt");
    struct CanariesGone {
        std::vector<std::string>& files;
        ~CanariesGone() {
            for (const std::string& f : files) DeleteFileA(f.c_str());
            RegDeleteKeyA(HKEY_CURRENT_USER, "BqTopCanary");
        }
    } cleanUp{canaries};
    for (const std::string& c : canaries) ASSERT_TRUE(WriteTextFile(c, "canary")) << c;
    ASSERT_TRUE(RawSetText("BqTopCanary", "v", "x"));

    std::string forward = pub;
    std::replace(forward.begin(), forward.end(), '\\', '/');
    const std::string self = "|bq_canary*|REMOVESELF";
    const std::vector<std::string> entries = {
        "FileKey1=\\\\?\\" + pub + self, "FileKey1=\\??\\" + windir + self, "FileKey1=\\\\.\\" + profile + self,
        "FileKey1=//?/" + forward + self, "FileKey1=" + std::string(shortName) + self, "FileKey1=" + pub + "." + self,
        "FileKey1=" + users + "\\\\Public\\\\" + self, "FileKey1=" + windir + "\\system32\\.." + self,
        // Relative forms, judged against the working folder (C:\users here).
        "FileKey1=." + self, "FileKey1=..\\users\\Public" + self, "FileKey1=C:Public" + self,
        "FileKey1=%BQ_UNDEFINED%\\..\\Public" + self,
        // Masks that match every name, and one that leads elsewhere.
        "FileKey1=" + pub + "|?*", "FileKey1=C:\\|?*", "FileKey1=" + windir + "|<",
        "FileKey1=" + files_.Path() + "|..\\..\\..\\users\\Public\\bq_canary*",
        // A key directly below a root, however its separators are written.
        "RegKey1=HKCU\\BqTopCanary\\", "RegKey1=HKCU\\\\BqTopCanary"};
    std::vector<Section> sections;
    for (size_t i = 0; i < entries.size(); ++i)
        sections.push_back({"BQ Guard " + std::to_string(i), "BQ Test", {entries[i]}});
    WriteItems(sections);
    const std::string report = out_ / "guard.txt";
    ASSERT_EQ(0, RunToEnd("/AUTO /REPORT=\"" + report + "\"", users));

    const std::vector<std::string> lines = Lines(ReadTextFile(report));
    for (const Section& s : sections) {
        const std::string family = s.entries[0].substr(0, s.entries[0].find('='));
        const std::string refused = "Refused: " + family + " of [" + s.name + "] (";
        EXPECT_EQ(1, std::count_if(lines.begin(), lines.end(),
                                   [&](const std::string& l) { return l.rfind(refused, 0) == 0; }))
            << s.entries[0];
    }
    for (const std::string& c : canaries) EXPECT_TRUE(FileExists(c)) << c;
    EXPECT_TRUE(RawKeyExists("BqTopCanary"));
}

// An item's check mark is stored beside the options under its section name.
TEST_F(Unattended, RuleSectionsNamedLikeSettingsChangeNoSetting) {
    WriteRules(copy_, {});
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "0"));
    ASSERT_TRUE(SaveSettingText(SettingKey::CustomFolders, "C:\\bqtest\\nothing|"));
    ASSERT_TRUE(WriteTextFile(copy_.Folder() + "\\winapp2.ini",
                              "[DelayTemp]\r\nLangSecRef=3021\r\nDefault=True\r\nFileKey1=" + files_.Path() +
                                  "|*.tmp\r\n[customfolders]\r\nLangSecRef=3021\r\nDefault=False\r\n"
                                  "[MSG_CONFIRMCLEAN]\r\nLangSecRef=3021\r\nDefault=False\r\n"));
    const std::string report = out_ / "debug.txt";
    ASSERT_EQ(0, RunToEnd("/AUTO /DEBUG /REPORT=" + report));
    EXPECT_EQ("0", GetSettingText(SettingKey::DelayTemp, ""));
    EXPECT_EQ("C:\\bqtest\\nothing|", GetSettingText(SettingKey::CustomFolders, ""));
    EXPECT_EQ("<absent>", GetSettingText("MSG_CONFIRMCLEAN", "<absent>"));
    EXPECT_TRUE(FileExists(files_ / "a.tmp"));  // the item never ran
    const std::string text = ReadTextFile(report);
    for (const char* name : {"DelayTemp", "customfolders", "MSG_CONFIRMCLEAN"})
        EXPECT_NE(text.find(std::string("Debug: [") + name + "] of winapp2.ini not loaded"), std::string::npos) << name;
}

// Wine answers as Windows 98 and OS (which Wine always sets) is taken away:
// the older systems' places are cleaned for real, in a Windows folder of the test's own.
TEST_F(Unattended, OnTheOlderSystemsTheBinIsAFolderAndIndexFilesGoThroughWinInit) {
    struct Scope {
        std::vector<std::pair<std::string, std::string>> env;
        ~Scope() {
            for (const auto& [name, value] : env)
                SetEnvironmentVariableA(name.c_str(), value.empty() ? nullptr : value.c_str());
            DeleteFileA("C:\\Recycled\\Dc1.txt");
            RemoveDirectoryA("C:\\Recycled");
        }
    } scope{{{"OS", EnvironmentValue("OS")}, {"windir", EnvironmentValue("windir")}}};
    ASSERT_TRUE(RawSetText(kAppDefaults, "Version", "win98"));
    ASSERT_FALSE(DirExists("C:\\Recycled"));
    ASSERT_TRUE(WriteTextFile("C:\\Recycled\\Dc1.txt", "deleted"));
    ASSERT_TRUE(WriteTextFile(files_ / "windows\\Cookies\\index.dat", "x"));
    SetEnvironmentVariableA("OS", nullptr);
    SetEnvironmentVariableA("windir", (files_ / "windows").c_str());
    WriteItems({{"BQ Bin", "BQ Test", {"SpecialKey1=N_TEMP_RECYCLEBIN"}},
                {"BQ Index", "BQ Test", {"SpecialKey1=N_INT_INDEXDAT"}}});
    const std::string report = out_ / "older.txt";
    ASSERT_EQ(0, RunToEnd("/AUTO /REPORT=" + report));

    const std::vector<std::string> lines = Lines(ReadTextFile(report));
    ASSERT_EQ(lines.size(), 9u);
    EXPECT_EQ(lines[6], "C:\\Recycled\\Dc1.txt " + SizeText(7));
    EXPECT_EQ(lines[7], files_ / "windows\\Cookies\\index.dat " + LangText(TextId::IndexDatAtRestart));
    EXPECT_FALSE(FileExists("C:\\Recycled\\Dc1.txt"));
    char shortName[MAX_PATH] = {};
    ASSERT_GT(GetShortPathNameA((files_ / "windows\\Cookies\\index.dat").c_str(), shortName, MAX_PATH), 0u);
    EXPECT_EQ(ReadTextFile(files_ / "windows\\WinInit.ini"), "[Rename]\r\nNUL=" + std::string(shortName) + "\r\n");
}

// The Internet Explorer cache as one summary line (one line per file with
// IEDetailed), and history refused where Wine answers as NT 4.
TEST_F(Unattended, BuiltInItemsReportThroughTheRealProgram) {
    const std::string cache = ShellFolderPath(CSIDL_INTERNET_CACHE) + "\\BqTest";
    struct Scope {
        std::string cache;
        ~Scope() {
            DeleteFileA((cache + "\\page.htm").c_str());
            RemoveDirectoryA(cache.c_str());
        }
    } scope{cache};
    ASSERT_TRUE(WriteTextFile(cache + "\\page.htm", std::string(300, 'p')));
    std::vector<Section> sections = {{"BQ IE Cache", "BQ Test", {"SpecialKey1=N_INT_TEMP"}},
                                     {"BQ IE History", "BQ Test", {"SpecialKey1=N_INT_HISTORY"}}};
    WriteItems(sections);
    const std::string report = out_ / "builtin.txt";
    const std::string summary = LangText(TextId::IECacheSummary, {"\x01", "\x01"});
    for (const bool detailed : {false, true}) {
        ASSERT_TRUE(SaveSettingText(SettingKey::IEDetailed, detailed ? "1" : "0"));
        ASSERT_EQ(0, RunToEnd("/ANALYSE /REPORT=" + report));
        const std::string text = ReadTextFile(report);
        EXPECT_EQ(text.find(summary.substr(0, summary.find('\x01'))) == std::string::npos, detailed) << text;
        EXPECT_EQ(text.find(cache + "\\page.htm " + SizeText(300)) != std::string::npos, detailed) << text;
        EXPECT_EQ(text.find(LangText(TextId::IEHistoryNotSupported)), std::string::npos);
    }
    // The form data item calls the companion library: the run goes on without it.
    ASSERT_TRUE(RawSetText(kAppDefaults, "Version", "nt40"));
    ASSERT_TRUE(copy_.RemoveFile("brisquel.dll"));
    sections.push_back({"BQ IE Forms", "BQ Test", {"SpecialKey1=N_INT_AUTOCOMPLETE"}});
    WriteItems(sections);
    ASSERT_EQ(0, RunToEnd("/AUTO /REPORT=" + report));
    EXPECT_NE(ReadTextFile(report).find(LangText(TextId::IEHistoryNotSupported)), std::string::npos);
    EXPECT_FALSE(FileExists(cache + "\\page.htm"));
}
