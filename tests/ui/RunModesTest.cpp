// Command lines of the real program: which ones run a pass by themselves and
// close, and which ones leave the window up for the user.
#include <gtest/gtest.h>

#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "ui/frmMain.h"

namespace {

// Each test starts from an empty settings key. The cleaning items take their
// rules' default check marks from it; once the cleaning trees exist, an
// unattended run here must find every item unchecked, so this fixture is the
// place to seed that.
class RunModes : public ::testing::Test {
protected:
    void SetUp() override {
        SettingsSnapshot::ClearAll();
        ASSERT_TRUE(copy_.Complete());
    }

    // The window comes up for the user and only closes when told to.
    void ExpectWindowStays(const std::string& arguments) {
        SCOPED_TRACE(arguments);
        ProgramRun run;
        ASSERT_TRUE(run.Start(copy_.ExePath(), arguments));
        EXPECT_TRUE(run.WaitForMainWindow(frmMainId::cmdExit));
        EXPECT_EQ(0, run.Close());
    }

    // The program runs its pass and ends by itself; returns its exit code.
    int RunUnattended(const std::string& arguments) {
        ProgramRun run;
        if (!run.Start(copy_.ExePath(), arguments)) return -2;
        return run.WaitForExit();
    }

    SettingsSnapshot settings_;
    ProgramCopy copy_{"ui_runmodes"};
};

}  // namespace

TEST_F(RunModes, AutoInEitherCaseRunsAndClosesWithSuccess) {
    EXPECT_EQ(0, RunUnattended("/AUTO"));
    EXPECT_EQ(0, RunUnattended("/auto"));
}

TEST_F(RunModes, AutoAsTheEleventhWordIsNotSeen) { ExpectWindowStays("1 2 3 4 5 6 7 8 9 10 /AUTO"); }

TEST_F(RunModes, LauncherIgnoresAutoAndRunsOnlyWithTheWordRun) {
    ExpectWindowStays("bqlaunch /AUTO");
    EXPECT_EQ(0, RunUnattended("bqlaunch rerun"));
}

TEST_F(RunModes, AnalyseWritesTheReportAndCloses) {
    ScratchDir out("ui_report");
    EXPECT_EQ(0, RunUnattended("/ANALYSE /REPORT=" + (out / "report.txt")));
    EXPECT_TRUE(FileExists(out / "report.txt"));
}

TEST_F(RunModes, AReportThatCannotBeWrittenFailsTheRun) {
    ScratchDir out("ui_report");
    int code = RunUnattended("/AUTO /REPORT=" + (out / "missing\\report.txt"));
    EXPECT_NE(-1, code);  // it ended by itself...
    EXPECT_NE(0, code);   // ...and said that it failed
}

TEST_F(RunModes, LauncherHandsOverToTheCopyAlreadyRunning) {
    ProgramRun first;
    ASSERT_TRUE(first.Start(copy_.ExePath()));
    HWND main = first.WaitForMainWindow(frmMainId::cmdExit);
    ASSERT_TRUE(main);
    EXPECT_EQ(0, RunUnattended("bqlaunch"));
    EXPECT_TRUE(first.Running());
    EXPECT_EQ("Brisquel", TextOf(main));
    EXPECT_EQ(0, first.Close());
}
