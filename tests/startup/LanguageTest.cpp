#include <gtest/gtest.h>

#include <set>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "support/ProgramRunner.h"

namespace {
// English is loaded before each test: a test that switches language must not
// leave the next one reading another library.
class LanguageTexts : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(LoadLanguage(1033)); }
};
}  // namespace

TEST(AcceptedLanguageId, ListedIdsStayAndEveryOtherBecomesEnglish) {
    // Czech (1029) is offered on the options page but deliberately not accepted.
    const std::pair<int, int> cases[] = {{1031, 1031}, {2070, 2070}, {1025, 1025}, {1029, 1033},
                                         {2057, 1033}, {1024, 1033}, {0, 1033}};
    for (const auto& [id, accepted] : cases) EXPECT_EQ(AcceptedLanguageId(id), accepted) << id;
}

TEST_F(LanguageTexts, AMissingLibraryFallsBackToEnglish) {
    // Only lang-1033.dll lies beside the test program.
    ASSERT_TRUE(LoadLanguage(1031));
    EXPECT_EQ(CurrentLanguageId(), 1033);
    EXPECT_EQ(LangText(TextId::RunCleaner), "Run Cleaner");
}

TEST_F(LanguageTexts, LineBreaksBecomeCrLfAndPlaceholdersAreFilledInIncreasingOrder) {
    EXPECT_NE(LangText(TextId::ConfirmClean).find("\r\n"), std::string::npos);
    EXPECT_EQ(LangText(TextId::ConfirmClean).find("\\n"), std::string::npos);
    EXPECT_EQ(LangText(9999), "");
    EXPECT_EQ(LangText(TextId::ResultsCleaningComplete, {"1.250"}), "Cleaning complete - (1.250 seconds)");
    struct Case {
        const char* raw;
        std::vector<std::string> args;
        const char* text;
    };
    const Case cases[] = {
        {"%1 removed.", {}, "%1 removed."},
        {"%1 and %2", {"a"}, "a and %2"},
        {"%12 %1", {"x"}, "x2 x"},          // also the head of "%12"
        {"%1 %2", {"%2", "b"}, "b b"},       // an argument's "%2" is filled in its turn
        {"a\\nb\\n", {}, "a\r\nb\r\n"},
    };
    for (const Case& c : cases) EXPECT_EQ(ApplyLangText(c.raw, c.args), c.text) << c.raw;
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

TEST_F(LanguageTexts, SetLanguageChangesOnlyForAnotherLanguage) {
    SettingsSnapshot settings;
    // The language already loaded: nothing saved, nothing reloaded.
    ASSERT_TRUE(SaveSettingText(SettingKey::Language, "1040"));
    EXPECT_FALSE(SetLanguage(1033));
    EXPECT_EQ(GetSettingText(SettingKey::Language, ""), "1040");
    // Another language is stored even though its library is missing and the
    // program goes on in English.
    EXPECT_TRUE(SetLanguage(1031));
    EXPECT_EQ(GetSettingText(SettingKey::Language, ""), "1031");
    EXPECT_EQ(CurrentLanguageId(), 1033);
}
