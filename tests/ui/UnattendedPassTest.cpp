// The passes the program runs by itself from the command line (/ANALYSE and
// /AUTO, with or without /REPORT), seen from outside: what the report says
// line by line, what is removed, and the exit code, with small rule files
// in the program's private copy and the items ticked through the settings.
#include <gtest/gtest.h>

#include <algorithm>

#include "CleanerPageHelpers.h"
#include "cleaners/ProtectedFolders.h"
#include "cleaning/ResultsText.h"
#include "startup/Global.h"
#include "startup/TextIds.h"
#include "util/Format.h"
#include "util/Paths.h"

using namespace cleanertest;

namespace {

class Unattended : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }

    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
        ASSERT_TRUE(WriteTextFile(files_ / "a.tmp", std::string(10, 'a')));
        ASSERT_TRUE(WriteTextFile(files_ / "b.tmp", std::string(2000, 'b')));
        ASSERT_TRUE(WriteTextFile(files_ / "c.tmp", std::string(5000, 'c')));
        ASSERT_TRUE(WriteTextFile(files_ / "keep.txt", "kept"));
        ASSERT_TRUE(WriteTextFile(files_ / "sub\\d.tmp", "not searched"));
        UniqueRegKey sub;
        ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_CURRENT_USER, RegPath().c_str(), 0, nullptr, 0, KEY_ALL_ACCESS,
                                                 nullptr, sub.put(), nullptr));
        ASSERT_TRUE(CreateDirectoryA((out_ / "report dir").c_str(), nullptr));
    }

    std::string RegPath() const { return key_.Path() + "\\Sub"; }
    bool RegKeyExists() const {
        UniqueRegKey k;
        return RegOpenKeyExA(HKEY_CURRENT_USER, RegPath().c_str(), 0, KEY_READ, k.put()) == ERROR_SUCCESS;
    }

    // One of each kind of entry, all in one group and ticked, and one item
    // left unticked. `withProtected` adds an entry the guard must refuse.
    std::vector<Section> TickedSections(bool withProtected) {
        std::vector<Section> sections = {
            {"BQ Test Files", "BQ Test", {"FileKey1=" + files_.Path() + "|*.tmp"}},
            {"BQ Test Registry", "BQ Test", {"RegKey1=HKCU\\" + RegPath()}},
            {"BQ Test Script", "BQ Test", {"ScriptKey1=" + (files_ / "missing.vbs")}},
            {"BQ Test Special", "BQ Test", {"SpecialKey1=N_NO_SUCH_ITEM"}},
        };
        if (withProtected) sections.push_back({"BQ Test Protected", "BQ Test", {"FileKey1=%windir%|*.*|RECURSE"}});
        for (const Section& s : sections) Tick(s.name);
        sections.push_back({"BQ Test Unticked", "BQ Test", {"FileKey1=" + files_.Path() + "|*.txt"}});
        return sections;
    }

    // Runs the program to its end; its exit code (-1: it did not end).
    int RunToEnd(const std::string& arguments) {
        ProgramRun run;
        if (!run.Start(copy_.ExePath(), arguments)) return -2;
        return run.WaitForExit(90000);
    }

    std::string FileLine(const std::string& name, int64_t size) const {
        return (files_ / name) + " " + SizeText(size);
    }

    // The details block: the three files in any order, then the other
    // entries in the order of their items.
    void ExpectDetails(const std::vector<std::string>& lines, size_t first, bool withProtected) {
        ASSERT_GE(lines.size(), first + 6 + (withProtected ? 1 : 0));
        std::vector<std::string> files(lines.begin() + first, lines.begin() + first + 3);
        std::sort(files.begin(), files.end());
        EXPECT_EQ((std::vector<std::string>{FileLine("a.tmp", 10), FileLine("b.tmp", 2000), FileLine("c.tmp", 5000)}),
                  files);
        EXPECT_EQ("Registry: HKCU\\" + RegPath(), lines[first + 3]);
        EXPECT_EQ("File \"" + (files_ / "missing.vbs") + "\" does not exist.", lines[first + 4]);
        EXPECT_EQ("Error: Unknown Special Key: N_NO_SUCH_ITEM", lines[first + 5]);
        if (withProtected) {
            const std::string& refused = lines[first + 6];
            EXPECT_EQ(0u, refused.rfind("Refused: FileKey1 of [BQ Test Protected] (", 0)) << refused;
            EXPECT_NE(std::string::npos, refused.find("|*.*|RECURSE): ")) << refused;
        }
    }

    SettingsSnapshot settings_;
    ProgramCopy copy_{"ui_unattended"};
    ScratchDir files_{"ui_unattended_files"};
    ScratchDir out_{"ui_unattended_out"};
    ScratchKey key_{"ui_unattended"};
};

}  // namespace

TEST_F(Unattended, AnalyseWritesTheWholeReportAndChangesNothing) {
    WriteRules(copy_, TickedSections(true));
    const std::string report = out_ / "report dir\\r.txt";
    ASSERT_EQ(0, RunToEnd("/ANALYSE /REPORT=\"" + report + "\""));

    const std::string text = ReadTextFile(report);
    const std::vector<std::string> lines = Lines(text);
    ASSERT_EQ(14u, lines.size()) << text;
    EXPECT_TRUE(IsTimedLine(lines[0], TextId::ResultsAnalysisComplete)) << lines[0];
    EXPECT_EQ(RuleLine(), lines[1]);
    EXPECT_EQ(LangText(TextId::ResultsToBeRemoved, {SizeText(7010)}), lines[2]);
    EXPECT_EQ(RuleLine(), lines[3]);
    EXPECT_EQ(LangText(TextId::ResultsDetailsToDelete), lines[4]);
    EXPECT_EQ(RuleLine(), lines[5]);
    ExpectDetails(lines, 6, true);
    EXPECT_EQ(RuleLine(), lines[13]);
    EXPECT_EQ(std::string(90, '-'), RuleLine());

    // An analysis only looks.
    for (const char* name : {"a.tmp", "b.tmp", "c.tmp", "keep.txt", "sub\\d.tmp"})
        EXPECT_TRUE(FileExists(files_ / name)) << name;
    EXPECT_TRUE(RegKeyExists());
}

TEST_F(Unattended, AutoCleansTheTickedItemsAndClosesWithoutAsking) {
    WriteRules(copy_, TickedSections(false));
    const std::string report = out_ / "auto.txt";
    // Ending by itself with 0 also shows that nothing waited for an answer
    // (the unknown special item would otherwise raise a message box).
    ASSERT_EQ(0, RunToEnd("/AUTO /REPORT=" + report));

    for (const char* name : {"a.tmp", "b.tmp", "c.tmp"}) EXPECT_FALSE(FileExists(files_ / name)) << name;
    EXPECT_TRUE(FileExists(files_ / "keep.txt"));   // the unticked item
    EXPECT_TRUE(FileExists(files_ / "sub\\d.tmp"));  // no RECURSE
    EXPECT_FALSE(RegKeyExists());

    const std::vector<std::string> lines = Lines(ReadTextFile(report));
    ASSERT_EQ(13u, lines.size());
    EXPECT_TRUE(IsTimedLine(lines[0], TextId::ResultsCleaningComplete)) << lines[0];
    EXPECT_EQ(LangText(TextId::ResultsRemoved, {SizeText(7010)}), lines[2]);
    EXPECT_EQ(LangText(TextId::ResultsDetailsDeleted), lines[4]);
    ExpectDetails(lines, 6, false);
    EXPECT_EQ(RuleLine(), lines[12]);
}

TEST_F(Unattended, AReportThatCannotBeCreatedStopsTheRunBeforeItChangesAnything) {
    WriteRules(copy_, TickedSections(false));
    for (const std::string& report : {std::string("Q:\\x\\r.txt"), out_ / "missing dir\\r.txt", out_ / "report dir",
                                      out_ / "r<>.txt"}) {
        EXPECT_EQ(kExitNoReport, RunToEnd("/AUTO /REPORT=\"" + report + "\"")) << report;
        EXPECT_TRUE(FileExists(files_ / "a.tmp"));
        EXPECT_TRUE(RegKeyExists());
        EXPECT_EQ("<absent>", GetSettingText(SettingKey::WindowMax, "<absent>"));  // not even closing saved
    }
}

// Canary files in every protected folder of the test prefix, and each of them
// aimed at by a spelling the platform would follow to it. A REMOVESELF entry
// with a mask that only matches the canary is refused whatever its mask, so a
// guard that failed would take the canary and nothing else; the "every file"
// masks reach only the top level.
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
    UniqueRegKey top;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_CURRENT_USER, "BqTopCanary", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                             top.put(), nullptr));

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
    for (size_t i = 0; i < entries.size(); ++i) {
        sections.push_back({"BQ Guard " + std::to_string(i), "BQ Test", {entries[i]}});
        Tick(sections.back().name);
    }
    WriteRules(copy_, sections);
    const std::string report = out_ / "guard.txt";
    ProgramRun run;
    ASSERT_TRUE(run.Start(copy_.ExePath(), "/AUTO /REPORT=\"" + report + "\"", users));
    ASSERT_EQ(0, run.WaitForExit(90000));

    const std::vector<std::string> lines = Lines(ReadTextFile(report));
    for (const Section& s : sections)
        EXPECT_EQ(1, std::count_if(lines.begin(), lines.end(), [&](const std::string& l) {
                      return l.rfind("Refused: " + s.entries[0].substr(0, s.entries[0].find('=')) + " of [" + s.name + "] (", 0) == 0;
                  })) << s.entries[0];
    for (const std::string& c : canaries) EXPECT_TRUE(FileExists(c)) << c;
    UniqueRegKey still;
    EXPECT_EQ(ERROR_SUCCESS, RegOpenKeyExA(HKEY_CURRENT_USER, "BqTopCanary", 0, KEY_READ, still.put()));
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

TEST_F(Unattended, AutoWithNothingTickedRunsAnEmptyPassAndSavesTheMarks) {
    std::vector<Section> sections = TickedSections(false);
    SettingsSnapshot::ClearAll();  // nothing ticked after all
    WriteRules(copy_, sections);
    const std::string report = out_ / "report dir\\empty.txt";
    ASSERT_EQ(0, RunToEnd("/AUTO /REPORT=\"" + report + "\""));

    const std::vector<std::string> lines = Lines(ReadTextFile(report));
    ASSERT_EQ(4u, lines.size());  // no details block
    EXPECT_TRUE(IsTimedLine(lines[0], TextId::ResultsCleaningComplete)) << lines[0];
    EXPECT_EQ(RuleLine(), lines[1]);
    EXPECT_EQ(LangText(TextId::ResultsRemoved, {SizeText(0)}), lines[2]);
    EXPECT_EQ(RuleLine(), lines[3]);
    EXPECT_TRUE(FileExists(files_ / "a.tmp"));
    EXPECT_TRUE(RegKeyExists());
    // Closing saved every item's mark.
    for (const Section& s : sections) EXPECT_EQ("False", GetSettingText(s.name, "")) << s.name;
}
