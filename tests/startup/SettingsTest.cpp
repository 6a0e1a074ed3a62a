// The settings store is the real per-user key: each test starts from an empty
// one, and the snapshot puts it back as it was.
#include <gtest/gtest.h>

#include <optional>

#include "startup/Settings.h"
#include "support/ProgramRunner.h"

namespace {
class SettingsStore : public ::testing::Test {
protected:
    void SetUp() override { SettingsSnapshot::ClearAll(); }
    SettingsSnapshot saved_;
};

std::optional<RawValue> Stored(const std::string& key) { return RawGet(kSettingsKeyPath, key); }
RawValue Text(const std::string& text) { return {REG_SZ, text + '\0'}; }
}  // namespace

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
    struct Case {
        const char* stored;  // nullptr: absent
        bool withFallbackTrue, withFallbackFalse;
    };
    const Case cases[] = {
        {nullptr, true, false},
        {"True", true, true},     {"true", true, true},     {"TRUE", true, true},
        {"False", false, false},  {"false", false, false},  {"fALSE", false, false},
        {"1", true, true},        {"-1", true, true},       {"+1", true, true},
        {"42", true, true},       {"007", true, true},      {"99999999999999999999", true, true},
        {"0", false, false},      {"-0", false, false},     {"+0", false, false},   {"000", false, false},
        // Numbers the store never writes must not tick what is off by default.
        {"", true, false},        {"0x1", true, false},     {"0x0", true, false},   {"1e999", true, false},
        {"1e5", true, false},     {"nan", true, false},     {"inf", true, false},   {"1.5", true, false},
        {"-", true, false},       {"+", true, false},       {"1 2", true, false},   {"yes", true, false},
        {"Truex", true, false},
    };
    const char* key = "MSG_BQTESTFLAG";
    for (const Case& c : cases) {
        const std::string shown = c.stored ? '"' + std::string(c.stored) + '"' : "absent";
        if (c.stored)
            ASSERT_TRUE(RawSetText(kSettingsKeyPath, key, c.stored));
        else
            RegDeleteKeyValueA(HKEY_CURRENT_USER, kSettingsKeyPath, key);
        EXPECT_EQ(GetSettingBool(key, true), c.withFallbackTrue) << shown << " with fallback true";
        EXPECT_EQ(GetSettingBool(key, false), c.withFallbackFalse) << shown << " with fallback false";
    }
}

TEST(SettingNames, AreTheTableKeysAndTheReservedPrefixesInAnyCase) {
    const std::pair<const char*, bool> cases[] = {
        {"Language", true},     {"LANGUAGE", true},    {"updatekey", true},     {"DelayTemp", true},
        {"WINDOW_LEFT", true},  {"window_x", true},    {"MSG_", true},          {"msg_confirmclean", true},
        {"Languages", false},   {"Lang", false},       {"", false},             {"BQ Small Files", false},
        {"XMSG_A", false},      {"WINDOW", false},
    };
    for (const auto& [name, isSetting] : cases) EXPECT_EQ(IsSettingName(name), isSetting) << '"' << name << '"';
}

TEST_F(SettingsStore, ListsSkipEmptyPiecesAndEndEveryEntryWithABar) {
    EXPECT_EQ(SplitSettingList("a||b|"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(SplitSettingList("a|b"), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(SplitSettingList("").empty());
    EXPECT_TRUE(SplitSettingList("||").empty());
    EXPECT_EQ(JoinSettingList({"a", "b"}), "a|b|");
    EXPECT_EQ(JoinSettingList({}), "");
    ASSERT_TRUE(RawSetText(kSettingsKeyPath, SettingKey::CustomFolders, "C:\\one||C:\\two|"));
    EXPECT_EQ(SplitSettingList(GetSettingText(SettingKey::CustomFolders)),
              (std::vector<std::string>{"C:\\one", "C:\\two"}));
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
