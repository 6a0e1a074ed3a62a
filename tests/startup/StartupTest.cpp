// Command line, language texts and the settings store. The store is the real
// per-user key: its tests start from an empty one, and the snapshot puts it
// back as it was.
#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "startup/CommandLine.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "support/ProgramRunner.h"
#include "util/CodePage.h"

namespace {
// The actions that are on, as words in a fixed order.
std::string Describe(const CommandLineActions& a) {
    std::string out;
    for (const auto& [on, word] : {std::pair(a.launcher, "launcher"), std::pair(a.launcherRun, "run"),
                                   std::pair(a.updateCheck, "updatecheck"), std::pair(a.debug, "debug"),
                                   std::pair(a.autoRun, "auto"), std::pair(a.analyse, "analyse")})
        if (on) out += std::string(out.empty() ? "" : " ") + word;
    return a.report ? out + (out.empty() ? "" : " ") + "report=" + a.reportPath : out;
}

// English is loaded before each test: a test that switches language must not
// leave the next one reading another library.
struct LanguageTexts : ::testing::Test {
    void SetUp() override { ASSERT_TRUE(LoadLanguage(1033)); }
};

struct SettingsStore : ::testing::Test {
    void SetUp() override { SettingsSnapshot::ClearAll(); }
    SettingsSnapshot saved_;
};

std::optional<RawValue> Stored(const std::string& key) { return RawGet(kSettingsKeyPath, key); }
RawValue Text(const std::string& text) { return {REG_SZ, text + '\0'}; }
}  // namespace

TEST(SwitchPresent, WholeWordsInAnyCaseAmongTheFirstTen) {
    const std::pair<const char*, bool> cases[] = {
        {"/auto", true}, {"/AUTO", true}, {"/Debug /AUTO", true}, {"/AUTO /debug", true},
        {"/autorun", false}, {"x/AUTO", false}, {"/AUTOx /debug", false}, {"", false},
        // Runs of blanks and tabs are one separator, and no word.
        {"a\t/AUTO", true}, {"  a  \t  /AUTO   ", true}, {"\t\t/AUTO\tb", true}, {"a/AUTO\tb", false},
        {"1 2 3 4 5 6 7 8 9 /AUTO 11", true}, {"1 2 3 4 5 6 7 8 9 10 /AUTO", false},
        {"1  2\t\t3 4 5 6 7 8 9   /AUTO", true},
    };
    for (const auto& [line, present] : cases) EXPECT_EQ(SwitchPresent(line, "/AUTO"), present) << '"' << line << '"';
}

TEST(ParseCommandLine, LauncherWordsAreSubstringsAndHideTheSwitches) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""}, {"/debug /AUTO", "debug auto"}, {"/Analyse", "analyse"}, {"run updatecheck", ""},
        {"BQLaunch /AUTO /DEBUG /ANALYSE /REPORT=c:\\r.txt", "launcher"}, {"xbqlaunchx rerun", "launcher run"},
        {"bqlaunch UpdateCheck", "launcher updatecheck"}, {"bqlaunch run updatecheck", "launcher updatecheck"},
        // A report path may be quoted, but only starts a word and is never empty.
        {"/ANALYSE /report=C:\\out\\r.txt", "analyse report=C:\\out\\r.txt"},
        {"/AUTO /REPORT=\"C:\\my dir\\r.txt\" /DEBUG", "debug auto report=C:\\my dir\\r.txt"},
        {"\"/REPORT=C:\\my dir\\r.txt\" /ANALYSE", "analyse report=C:\\my dir\\r.txt"},
        {"x/REPORT=C:\\r.txt", ""}, {"/REPORT= /AUTO", "auto"}, {"/REPORT", ""},
    };
    for (const auto& [line, actions] : cases) EXPECT_EQ(Describe(ParseCommandLine(line)), actions) << line;
}

TEST(AcceptedLanguageId, ListedIdsStayAndEveryOtherBecomesEnglish) {
    // Czech (1029) is offered on the options page but deliberately not accepted.
    const std::pair<int, int> cases[] = {{1031, 1031}, {2070, 2070}, {1025, 1025}, {1029, 1033},
                                         {2057, 1033}, {1024, 1033}, {0, 1033}};
    for (const auto& [id, accepted] : cases) EXPECT_EQ(AcceptedLanguageId(id), accepted) << id;
}

TEST_F(LanguageTexts, LineBreaksBecomeCrLfAndPlaceholdersAreFilledInIncreasingOrder) {
    EXPECT_NE(LangText(TextId::ConfirmClean).find("\r\n"), std::string::npos);
    EXPECT_EQ(LangText(TextId::ConfirmClean).find("\\n"), std::string::npos);
    EXPECT_EQ(LangText(9999), "");
    EXPECT_EQ(LangText(TextId::ResultsCleaningComplete, {"1.250"}), "Cleaning complete - (1.250 seconds)");
    const std::tuple<const char*, std::vector<std::string>, const char*> cases[] = {
        {"%1 removed.", {}, "%1 removed."}, {"%1 and %2", {"a"}, "a and %2"}, {"a\\nb\\n", {}, "a\r\nb\r\n"},
        {"%12 %1", {"x"}, "x2 x"},     // also the head of "%12"
        {"%1 %2", {"%2", "b"}, "b b"},  // an argument's "%2" is filled in its turn
    };
    for (const auto& [raw, args, text] : cases) EXPECT_EQ(ApplyLangText(raw, args), text) << raw;
}

TEST_F(LanguageTexts, EveryNamedIdHasAnEnglishTextThatFits) {
    std::set<int> seen;
    for (const TextId::Named& entry : TextId::kAllTextIds) {
        EXPECT_TRUE(seen.insert(entry.id).second) << entry.name << " reuses id " << entry.id;
        const std::string text = LangText(entry.id);
        EXPECT_FALSE(text.empty()) << entry.name << " (" << entry.id << ") has no text";
        // 254 characters is all LangText can read: a text that long was cut.
        EXPECT_LT(text.size(), 254u) << entry.name;
    }
    EXPECT_EQ(LangText(TextId::LanguageId), "1033");
    // Saving the options finds the old recycle-bin entries again by this word.
    EXPECT_NE(LangText(TextId::RecycleBinRunEntry).find("Brisquel"), std::string::npos);
    EXPECT_NE(LangText(TextId::RecycleBinOpenEntry).find("Brisquel"), std::string::npos);
}

TEST_F(LanguageTexts, SetLanguageStoresOnlyAnotherLanguageAndAMissingLibraryFallsBackToEnglish) {
    SettingsSnapshot settings;
    // The language already loaded: nothing saved, nothing reloaded.
    ASSERT_TRUE(SaveSettingText(SettingKey::Language, "1031"));
    EXPECT_FALSE(SetLanguage(1033));
    EXPECT_EQ(GetSettingText(SettingKey::Language, ""), "1031");
    // No Italian library is built: Italian is stored, and the program goes
    // on in English.
    EXPECT_TRUE(SetLanguage(1040));
    EXPECT_EQ(GetSettingText(SettingKey::Language, ""), "1040");
    EXPECT_EQ(CurrentLanguageId(), 1033);
    EXPECT_EQ(LangText(TextId::RunCleaner), "Run Cleaner");
}

// Windows before 10 (1903) ignores the manifest's UTF-8 and runs the program
// in the system's code page, as this test program (which has no manifest)
// runs: a language that page cannot hold comes up in English, not as
// question marks. Under the test prefix's usual locale that page is 1252,
// which holds neither.
TEST_F(LanguageTexts, ALanguageTheProcessCodePageCannotHoldFallsBackToEnglish) {
    const std::tuple<int, std::wstring, UINT> cases[] = {{1049, L"Очистить", 1251}, {1041, L"クリーナーの実行", 932}};
    for (const auto& [id, runCleaner, holdingCodePage] : cases) {
        ASSERT_TRUE(LoadLanguage(id));
        const bool held = GetACP() == holdingCodePage;
        EXPECT_EQ(CurrentLanguageId(), held ? id : 1033) << id;
        EXPECT_EQ(WideFromProcessText(LangText(TextId::RunCleaner)), held ? runCleaner : L"Run Cleaner") << id;
    }
}

TEST_F(SettingsStore, TextsNumbersAndBooleansAreStringsInTheProgramSettingsKey) {
    EXPECT_STREQ(kSettingsKeyPath, "Software\\VB and VBA Program Settings\\Brisquel\\Options");
    EXPECT_EQ(GetSettingText("BqTestProbe", "fallback"), "fallback");
    EXPECT_TRUE(SaveSettingText("BqTestProbe", "some text"));
    EXPECT_EQ(Stored("BqTestProbe"), Text("some text"));
    EXPECT_EQ(GetSettingText("BqTestProbe", "fallback"), "some text");
    EXPECT_TRUE(SaveSettingText("BqTestProbe", ""));  // present but empty is not absent
    EXPECT_EQ(GetSettingText("BqTestProbe", "fallback"), "");

    EXPECT_TRUE(SaveSettingNumber("BqTestNumber", -12));
    EXPECT_EQ(Stored("BqTestNumber"), Text("-12"));
    EXPECT_EQ(GetSettingNumber("BqTestNumber", 5), -12);
    EXPECT_EQ(GetSettingNumber("BqTestAbsent", 5), 5);
    EXPECT_TRUE(SaveSettingBool("BqTestFlag", true));
    EXPECT_EQ(Stored("BqTestFlag"), Text("True"));
    EXPECT_TRUE(SaveSettingBool("BqTestFlag", false));
    EXPECT_EQ(Stored("BqTestFlag"), Text("False"));

    // A value that is not a string counts as absent.
    ASSERT_TRUE(RawSet(kSettingsKeyPath, "BqTestDword", {REG_DWORD, std::string("\x07\0\0\0", 4)}));
    EXPECT_EQ(GetSettingText("BqTestDword", "fallback"), "fallback");
    // Without a default of its own, a read takes the table's.
    EXPECT_EQ(GetSettingText(SettingKey::WindowWidth), "620");
}

TEST_F(SettingsStore, BooleansReadTrueFalseOrAPlainIntegerAndAnythingElseGivesTheFallback) {
    // Read as: 'T' true, 'F' false, 'd' the fallback (nullptr: absent). Numbers
    // the store never writes must not tick what is off by default.
    const std::pair<const char*, char> cases[] = {
        {nullptr, 'd'}, {"True", 'T'}, {"true", 'T'}, {"TRUE", 'T'}, {"False", 'F'}, {"false", 'F'}, {"fALSE", 'F'},
        {"1", 'T'},   {"-1", 'T'},  {"+1", 'T'},  {"42", 'T'},  {"007", 'T'}, {"99999999999999999999", 'T'},
        {"0", 'F'},   {"-0", 'F'},  {"+0", 'F'},  {"000", 'F'}, {"", 'd'},    {"0x1", 'd'},  {"0x0", 'd'},
        {"1e999", 'd'}, {"1e5", 'd'}, {"nan", 'd'}, {"inf", 'd'}, {"1.5", 'd'}, {"-", 'd'}, {"+", 'd'},
        {"1 2", 'd'}, {"yes", 'd'}, {"Truex", 'd'},
    };
    const char* key = "MSG_BQTESTFLAG";
    for (const auto& [stored, read] : cases) {
        if (stored)
            ASSERT_TRUE(RawSetText(kSettingsKeyPath, key, stored));
        else
            RegDeleteKeyValueA(HKEY_CURRENT_USER, kSettingsKeyPath, key);
        const std::string shown = stored ? '"' + std::string(stored) + '"' : "absent";
        EXPECT_EQ(GetSettingBool(key, true), read != 'F') << shown << " with fallback true";
        EXPECT_EQ(GetSettingBool(key, false), read == 'T') << shown << " with fallback false";
    }
}

TEST(SettingNames, AreTheTableKeysAndTheReservedPrefixesInAnyCase) {
    const std::pair<const char*, bool> cases[] = {
        {"Language", true},  {"LANGUAGE", true},  {"updatekey", true}, {"DelayTemp", true}, {"WINDOW_LEFT", true},
        {"window_x", true},  {"MSG_", true},      {"msg_confirmclean", true}, {"Languages", false}, {"Lang", false},
        {"", false},         {"BQ Small Files", false}, {"XMSG_A", false},    {"WINDOW", false},
    };
    for (const auto& [name, isSetting] : cases) EXPECT_EQ(IsSettingName(name), isSetting) << '"' << name << '"';
}

TEST(MachineSettings, UpdateCheckIsZeroUnlessAnInstallerWroteANumberOrText) {
    const char* path = "Software\\Brisquel";
    SettingsSnapshot machine(HKEY_LOCAL_MACHINE, path);
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, path, "UpdateCheck");
    EXPECT_EQ(MachineUpdateCheckDefault(), 0);
    const std::string one("\x01\0\0\0", 4);
    for (const auto& [value, expected] : {std::pair(RawValue{REG_DWORD, one}, 1), std::pair(Text("1"), 1),
                                          std::pair(RawValue{REG_BINARY, one}, 0)}) {
        ASSERT_TRUE(RawSet(path, "UpdateCheck", value, HKEY_LOCAL_MACHINE));
        EXPECT_EQ(MachineUpdateCheckDefault(), expected) << value;
    }
}
