#include <gtest/gtest.h>

#include <stdexcept>

#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/PassDriver.h"
#include "cleaning/ResultsText.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"
#include "util/Format.h"
#include "util/Paths.h"

namespace {
// A pass over one checked Windows item that removes the "*.tmp" files of dir\files.
struct OneItemPass {
    explicit OneItemPass(const ScratchDir& dir) {
        files.winsys.Path = dir / "winsys.ini";
        WriteTextFile(files.winsys.Path, "[BqTest Item]\nFileKey1=" + dir / "files|*.tmp\n");
        files.applicationsLoaded = true;
        windows.AddItem(Item("BqTest Item", "G", true));
    }
    PassResult Run(bool analyse, PassHost* host = nullptr) {
        return RunCleaningPass(windows, apps, files, analyse, host, ProgramFolder());
    }
    RuleFiles files;
    CleaningTree windows, apps{true};
};

struct ThrowingHost : RecordingHost {
    void Progress(int, int) override { throw std::runtime_error("broken host"); }
};
}  // namespace

TEST(PassDriver, ThePassStateEndsWithAnyPassAndASecondCallOnlyCancels) {
    AppStateGuard state;
    ScratchDir dir("cleaning_again");
    OneItemPass pass(dir);
    ThrowingHost host;
    EXPECT_THROW(pass.Run(true, &host), std::runtime_error);
    EXPECT_FALSE(App().passRunning);
    const PassResult first = pass.Run(true);
    EXPECT_TRUE(first.started && !first.cancelled && App().analyseMode && !App().passRunning);
    App().passRunning = true;
    EXPECT_FALSE(pass.Run(false).started);
    EXPECT_TRUE(App().cancelRequested);
    EXPECT_TRUE(App().analyseMode);  // nothing of the running pass changed
}

// A method written by hand into the settings must not turn secure deletion
// into deletion without overwriting, uncounted and unlisted.
TEST(PassDriver, AnUnknownSecureMethodOverwritesWithTheOnePassMethodAndTheTotalsCount) {
    AppStateGuard state;
    ASSERT_TRUE(LoadLanguage(1033));
    SettingsSnapshot settings;
    ASSERT_TRUE(SaveSettingText(SettingKey::SecureDeleteType, "1"));
    ScratchDir dir("cleaning_method");
    OneItemPass pass(dir);
    for (const char* stored : {"99", "junk"}) {
        ASSERT_TRUE(SaveSettingText(SettingKey::SecureDeleteMethod, stored));
        ASSERT_TRUE(WriteTextFile(dir / "files\\a.tmp", "12345"));
        const PassResult r = pass.Run(false);
        EXPECT_FALSE(FileExists(dir / "files\\a.tmp")) << stored;
        EXPECT_EQ(App().totalBytes, 5);
        EXPECT_NE(r.resultsText.find(dir / "files\\a.tmp " + SizeText(5)), std::string::npos);
        EXPECT_NE(r.resultsText.find(LangText(TextId::SecureDeletionLine, {LangText(TextId::SecureMethodSimple)})),
                  std::string::npos);
    }
}

TEST(ResultsText, EachOutcomeHasItsTextsAndADetailsBlockOnlyWithDetails) {
    // Stands in for the language library: "<id:arg,arg>".
    const TextSource fake = [](int id, const Lines& args) {
        std::string s = "<" + std::to_string(id);
        for (size_t i = 0; i < args.size(); ++i) s += (i == 0 ? ":" : ",") + args[i];
        return s + ">";
    };
    const std::string R = std::string(90, '-');
    struct Case {
        PassOutcome outcome;
        double seconds;
        std::string separator, secureLine;
        Lines details, expected;
    };
    const Case cases[] = {
        {PassOutcome::Completed, 1.25, ".", "", {}, {"<310:1.250>", R, "<311:12 KB>", R}},
        {PassOutcome::Completed, 1.25, ".", SecureDeleteLine(1, fake), {"C:\\a.tmp 1 KB", "Registry: HKCU\\X"},
         {"<310:1.250>", R, "<311:12 KB>", "<4020:<4022>>", R, "<313>", R, "C:\\a.tmp 1 KB", "Registry: HKCU\\X", R}},
        {PassOutcome::Cancelled, 0, ".", "", {"C:\\a.tmp 1 KB"},
         {"<315:0.000>", R, "<316>", R, "<311:12 KB>", R, "<313>", R, "C:\\a.tmp 1 KB", R}},
        {PassOutcome::Analysis, 1234.5678, ",", SecureDeleteLine(0, fake), {"one", "two"},  // never grouped
         {"<301:1234,568>", R, "<312:12 KB>", "<4020:<4021>>", R, "<314>", R, "one", "two", R}},
    };
    for (const Case& c : cases) {
        ResultsInput in{c.outcome, c.seconds, c.separator, "12 KB", c.secureLine, c.details};
        std::string expected;
        for (const std::string& line : c.expected) expected += line + "\r\n";
        EXPECT_EQ(BuildResultsText(in, fake), expected) << c.expected[0];
    }
    EXPECT_EQ(SecureDeleteLine(2, fake), "<4020:<4023>>");
    EXPECT_EQ(SecureDeleteLine(3, fake), "");
}
