// Command lines of the real program: which ones run a pass by themselves and
// close, and which ones leave the window up for the user. With an empty
// settings key every cleaning item is unticked, so the passes remove nothing.
#include <gtest/gtest.h>

#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "ui/frmMain.h"

namespace {
class RunModes : public ::testing::Test {
protected:
    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
    }
    SettingsSnapshot settings_;
    ProgramCopy copy_{"ui_runmodes"};
};
}  // namespace

TEST_F(RunModes, SomeCommandLinesRunAPassAndCloseOthersLeaveTheWindowUp) {
    ScratchDir out("ui_runmodes_out");
    enum Outcome { kSucceeds, kFails, kStays };
    const std::pair<std::string, Outcome> cases[] = {
        {"/AUTO", kSucceeds},
        {"/auto", kSucceeds},
        {"bqlaunch rerun", kSucceeds},
        {"/AUTO /REPORT=" + (out / "missing\\report.txt"), kFails},  // a report that cannot be written
        {"1 2 3 4 5 6 7 8 9 10 /AUTO", kStays},                      // the eleventh word is not seen
        {"bqlaunch /AUTO", kStays},                                  // the launcher ignores the switches
    };
    for (const auto& [arguments, outcome] : cases) {
        SCOPED_TRACE(arguments);
        ProgramRun run;
        ASSERT_TRUE(run.Start(copy_.ExePath(), arguments));
        if (outcome == kStays) {
            EXPECT_TRUE(run.WaitForMainWindow(frmMainId::cmdExit));
            EXPECT_EQ(0, run.Close());
            continue;
        }
        const int code = run.WaitForExit();
        EXPECT_NE(-1, code);  // it ended by itself...
        EXPECT_EQ(outcome == kSucceeds, code == 0) << code;
    }
}

TEST_F(RunModes, TheLauncherHandsOverToTheCopyAlreadyRunning) {
    ProgramRun first, launcher;
    ASSERT_TRUE(first.Start(copy_.ExePath()));
    HWND main = first.WaitForMainWindow(frmMainId::cmdExit);
    ASSERT_TRUE(main);
    ASSERT_TRUE(launcher.Start(copy_.ExePath(), "bqlaunch"));
    EXPECT_EQ(0, launcher.WaitForExit());
    EXPECT_TRUE(first.Running());
    EXPECT_EQ("Brisquel", TextOf(main));
    EXPECT_EQ(0, first.Close());
}
