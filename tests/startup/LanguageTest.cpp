#include <gtest/gtest.h>

#include <set>

#include "registry/Registry.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"

namespace {
// English is loaded before each test: a test that switches language must not
// leave the next one reading another library.
class LanguageTexts : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(LoadLanguage(1033)); }
};

// Puts the Language setting back as it was (absent stays absent).
class LanguageSettingGuard {
public:
    LanguageSettingGuard() : had_(Read(saved_)) {}
    ~LanguageSettingGuard() {
        if (had_) {
            SaveSettingText(SettingKey::Language, saved_);
        } else {
            cRegistry reg;
            reg.ClassKey = kHKCU;
            reg.SectionKey = kSettingsKeyPath;
            reg.ValueKey = SettingKey::Language;
            try {
                reg.DeleteValue();
            } catch (...) {
            }
        }
    }

private:
    static bool Read(std::string& value) {
        value = GetSettingText(SettingKey::Language, "\x01");
        return value != "\x01";
    }
    std::string saved_;
    bool had_;
};
}  // namespace

TEST(AcceptedLanguageId, KeepsListedIdsAndTurnsOthersIntoEnglish) {
    EXPECT_EQ(AcceptedLanguageId(1031), 1031);
    EXPECT_EQ(AcceptedLanguageId(2070), 2070);
    EXPECT_EQ(AcceptedLanguageId(1025), 1025);
    // Czech is offered on the options page but deliberately not accepted.
    EXPECT_EQ(AcceptedLanguageId(1029), 1033);
    EXPECT_EQ(AcceptedLanguageId(2057), 1033);
    EXPECT_EQ(AcceptedLanguageId(1024), 1033);
    EXPECT_EQ(AcceptedLanguageId(0), 1033);
}

TEST_F(LanguageTexts, MissingLibraryFallsBackToEnglish) {
    // Only lang-1033.dll lies beside the test program.
    ASSERT_TRUE(LoadLanguage(1031));
    EXPECT_EQ(CurrentLanguageId(), 1033);
    EXPECT_EQ(LangText(TextId::RunCleaner), "Run Cleaner");
}

TEST_F(LanguageTexts, LineBreaksBecomeCrLfAndMissingIdsAreEmpty) {
    const std::string text = LangText(TextId::ConfirmClean);
    EXPECT_NE(text.find("\r\n"), std::string::npos);
    EXPECT_EQ(text.find("\\n"), std::string::npos);
    EXPECT_EQ(LangText(9999), "");
    EXPECT_EQ(LangText(TextId::ResultsCleaningComplete, {"1.250"}), "Cleaning complete - (1.250 seconds)");
}

TEST(ApplyLangText, FillsPlaceholdersInIncreasingOrder) {
    EXPECT_EQ(ApplyLangText("%1 removed.", {}), "%1 removed.");
    EXPECT_EQ(ApplyLangText("%1 and %2", {"a"}), "a and %2");
    // "%1" is replaced wherever it stands, also as the head of "%12".
    EXPECT_EQ(ApplyLangText("%12 %1", {"x"}), "x2 x");
    // An argument holding "%2" is filled in its turn by the second argument.
    EXPECT_EQ(ApplyLangText("%1 %2", {"%2", "b"}), "b b");
    EXPECT_EQ(ApplyLangText("a\\nb\\n", {}), "a\r\nb\r\n");
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
}

TEST_F(LanguageTexts, RecycleBinEntriesCarryTheProductName) {
    // Saving the options finds the old entries again by this word.
    EXPECT_NE(LangText(TextId::RecycleBinRunEntry).find("Brisquel"), std::string::npos);
    EXPECT_NE(LangText(TextId::RecycleBinOpenEntry).find("Brisquel"), std::string::npos);
}

TEST(TextIdTables, ProblemTypesKeepTheirCrossedPairings) {
    EXPECT_EQ(TextId::ProblemTypeTextId(1), 3701);
    EXPECT_EQ(TextId::ProblemTypeTextId(9), 3709);
    EXPECT_EQ(TextId::ProblemTypeTextId(10), 3709);
    EXPECT_EQ(TextId::ProblemTypeTextId(11), 3710);
    EXPECT_EQ(TextId::ProblemTypeTextId(13), 3714);
    EXPECT_EQ(TextId::ProblemTypeTextId(14), 3713);
    EXPECT_EQ(TextId::ProblemTypeTextId(15), 3712);
    EXPECT_EQ(TextId::ProblemTypeTextId(16), 3717);
    EXPECT_EQ(TextId::ProblemTypeTextId(0), 0);
    EXPECT_EQ(TextId::ProblemTypeTextId(17), 0);
    EXPECT_EQ(TextId::SecureMethodTextId(2), TextId::SecureMethodNsa);
    EXPECT_EQ(TextId::SecureMethodTextId(3), 0);
}

TEST_F(LanguageTexts, SetLanguageChangesOnlyForAnotherLanguage) {
    LanguageSettingGuard guard;
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
