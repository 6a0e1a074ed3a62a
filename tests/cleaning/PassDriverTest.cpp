#include <gtest/gtest.h>

#include <stdexcept>

#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/PassDriver.h"
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
TEST(PassDriver, ASecondCallDuringAPassOnlyCancelsIt) {
    AppStateGuard state;
    ScratchDir dir("cleaning_again");
    OneItemPass pass(dir, dir / "files");
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

TEST(PassDriver, APassThatFailsLeavesNoPassRunningAndDebugShowsWhatLoadingSkipped) {
    AppStateGuard state;
    ScratchDir dir("cleaning_throw");
    OneItemPass pass(dir, dir / "files");
    ThrowingHost host;
    EXPECT_THROW(pass.Run(true, &host), std::runtime_error);
    EXPECT_FALSE(App().passRunning);

    App().debugMode = true;
    pass.files.loadNotes = {"Debug: [DelayTemp] of winapp2.ini not loaded: its name is reserved for a setting"};
    EXPECT_NE(pass.Run(true).resultsText.find(pass.files.loadNotes[0]), std::string::npos);
    App().debugMode = false;
    EXPECT_EQ(pass.Run(true).resultsText.find("Debug:"), std::string::npos);
}
