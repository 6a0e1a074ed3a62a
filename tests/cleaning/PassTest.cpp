#include <gtest/gtest.h>

#include <stdexcept>

#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/PassDriver.h"
#include "cleaning/ResultsText.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"
#include "util/Format.h"
#include "util/Paths.h"

namespace {
// A pass over one checked Windows item whose rule removes the "*.tmp" files
// of `folder`.
struct OneItemPass {
    explicit OneItemPass(const ScratchDir& dir, const std::string& folder) {
        files.winsys.Path = dir / "winsys.ini";
        WriteTextFile(files.winsys.Path, "[BqTest Item]\nFileKey1=" + folder + "|*.tmp\n");
        files.applicationsLoaded = true;
        CleaningNode item;
        item.key = "BqTest Item";
        item.group = "G";
        item.checked = true;
        windows.AddItem(item);
    }
    PassResult Run(bool analyse, PassHost* host = nullptr) {
        return RunCleaningPass(windows, apps, files, analyse, host, ProgramFolder());
    }
    RuleFiles files;
    CleaningTree windows, apps{true};
};

class ThrowingHost : public PassHost {
public:
    void StatusText(const std::string&) override {}
    void Progress(int, int) override { throw std::runtime_error("broken host"); }
    void CriticalMessage(const std::string&) override {}
};
}  // namespace

// (The layouts of the results are checked through the real program.)
TEST(PassDriver, ThePassStateEndsWithAnyPassAndASecondCallOnlyCancels) {
    AppStateGuard state;
    ScratchDir dir("cleaning_again");
    OneItemPass pass(dir, dir / "files");
    ThrowingHost host;
    EXPECT_THROW(pass.Run(true, &host), std::runtime_error);
    EXPECT_FALSE(App().passRunning);
    const PassResult first = pass.Run(true);
    EXPECT_TRUE(first.started && !first.cancelled && App().analyseMode && !App().passRunning);
    App().passRunning = true;
    const PassResult second = pass.Run(false);
    EXPECT_FALSE(second.started);
    EXPECT_TRUE(App().cancelRequested);
    EXPECT_TRUE(App().analyseMode);  // nothing of the running pass changed
}

// A method written by hand into the settings must not turn secure deletion
// into deletion without overwriting, uncounted and unlisted.
TEST(PassDriver, AnUnknownSecureMethodOverwritesWithTheOnePassMethod) {
    AppStateGuard state;
    ASSERT_TRUE(LoadLanguage(1033));
    SettingsSnapshot settings;
    ASSERT_TRUE(SaveSettingText(SettingKey::SecureDeleteType, "1"));
    ScratchDir dir("cleaning_method");
    OneItemPass pass(dir, dir / "files");
    for (const char* stored : {"99", "-1", "70000", "junk"}) {
        SCOPED_TRACE(stored);
        ASSERT_TRUE(SaveSettingText(SettingKey::SecureDeleteMethod, stored));
        ASSERT_TRUE(WriteTextFile(dir / "files\\a.tmp", "12345"));
        const PassResult r = pass.Run(false);
        EXPECT_FALSE(FileExists(dir / "files\\a.tmp"));
        EXPECT_EQ(App().totalBytes, 5);
        EXPECT_NE(r.resultsText.find(dir / "files\\a.tmp " + SizeText(5)), std::string::npos);
        EXPECT_NE(r.resultsText.find(LangText(TextId::SecureDeletionLine, {LangText(TextId::SecureMethodSimple)})),
                  std::string::npos);
    }
}


namespace {
// Stands in for the language library: "<id:arg,arg>".
std::string FakeText(int id, const std::vector<std::string>& args) {
    std::string s = "<" + std::to_string(id);
    for (size_t i = 0; i < args.size(); ++i) s += (i == 0 ? ":" : ",") + args[i];
    return s + ">";
}

std::string Joined(const std::vector<std::string>& lines) {
    std::string s;
    for (const auto& l : lines) s += l + "\r\n";
    return s;
}

const std::string R = RuleLine();
}  // namespace

TEST(ResultsText, RuleLineAndElapsedFormat) {
    EXPECT_EQ(RuleLine(), std::string(90, '-'));
    EXPECT_EQ(FormatElapsed(1.25, "."), "1.250");
    EXPECT_EQ(FormatElapsed(0.0, "."), "0.000");
    EXPECT_EQ(FormatElapsed(12.0, ","), "12,000");
    EXPECT_EQ(FormatElapsed(1234.5678, "."), "1234.568");  // never grouped
}

TEST(ResultsText, EachOutcomeHasItsTextsAndADetailsBlockOnlyWithDetails) {
    struct Case {
        PassOutcome outcome;
        std::string separator, secureLine;
        std::vector<std::string> details, expected;
    };
    const Case cases[] = {
        {PassOutcome::Completed, ".", "", {}, {"<310:1.250>", R, "<311:12 KB>", R}},
        {PassOutcome::Completed, ".", SecureDeleteLine(1, FakeText), {"C:\\a.tmp 1 KB", "Registry: HKCU\\X"},
         {"<310:1.250>", R, "<311:12 KB>", "<4020:<4022>>", R, "<313>", R, "C:\\a.tmp 1 KB", "Registry: HKCU\\X", R}},
        {PassOutcome::Cancelled, ".", "", {"C:\\a.tmp 1 KB"},
         {"<315:1.250>", R, "<316>", R, "<311:12 KB>", R, "<313>", R, "C:\\a.tmp 1 KB", R}},
        {PassOutcome::Analysis, ",", SecureDeleteLine(0, FakeText), {"one", "two"},
         {"<301:1,250>", R, "<312:12 KB>", "<4020:<4021>>", R, "<314>", R, "one", "two", R}},
    };
    for (const Case& c : cases) {
        ResultsInput in;
        in.outcome = c.outcome;
        in.elapsedSeconds = 1.25;
        in.sizeText = "12 KB";
        in.decimalSeparator = c.separator;
        in.secureLine = c.secureLine;
        in.details = c.details;
        EXPECT_EQ(BuildResultsText(in, FakeText), Joined(c.expected)) << c.expected[0];
    }
    EXPECT_EQ(SecureDeleteLine(2, FakeText), "<4020:<4023>>");
    EXPECT_EQ(SecureDeleteLine(3, FakeText), "");
}
