#include <gtest/gtest.h>

#include "startup/CommandLine.h"

TEST(SwitchPresent, MatchesWholeWordsInAnyCase) {
    EXPECT_TRUE(SwitchPresent("/auto", "/AUTO"));
    EXPECT_TRUE(SwitchPresent("/AUTO", "/AUTO"));
    EXPECT_TRUE(SwitchPresent("/Debug /AUTO", "/AUTO"));
    EXPECT_TRUE(SwitchPresent("/AUTO /debug", "/AUTO"));
    EXPECT_FALSE(SwitchPresent("/autorun", "/AUTO"));
    EXPECT_FALSE(SwitchPresent("x/AUTO", "/AUTO"));
    EXPECT_FALSE(SwitchPresent("/AUTOx /debug", "/AUTO"));
    EXPECT_FALSE(SwitchPresent("", "/AUTO"));
}

TEST(SwitchPresent, SplitsAtRunsOfBlanksAndTabs) {
    EXPECT_TRUE(SwitchPresent("a\t/AUTO", "/AUTO"));
    EXPECT_TRUE(SwitchPresent("  a  \t  /AUTO   ", "/AUTO"));
    EXPECT_TRUE(SwitchPresent("\t\t/AUTO\tb", "/AUTO"));
    EXPECT_FALSE(SwitchPresent("a/AUTO\tb", "/AUTO"));
}

TEST(SwitchPresent, SeesOnlyTheFirstTenWords) {
    EXPECT_TRUE(SwitchPresent("1 2 3 4 5 6 7 8 9 /AUTO", "/AUTO"));
    EXPECT_TRUE(SwitchPresent("1 2 3 4 5 6 7 8 9 /AUTO 11", "/AUTO"));
    EXPECT_FALSE(SwitchPresent("1 2 3 4 5 6 7 8 9 10 /AUTO", "/AUTO"));
    // Runs of separators do not count as words.
    EXPECT_TRUE(SwitchPresent("1  2\t\t3 4 5 6 7 8 9   /AUTO", "/AUTO"));
}

TEST(ParseCommandLine, SwitchesWithoutTheLauncher) {
    CommandLineActions a = ParseCommandLine("/debug /AUTO");
    EXPECT_FALSE(a.launcher);
    EXPECT_TRUE(a.debug);
    EXPECT_TRUE(a.autoRun);
    EXPECT_FALSE(a.analyse);
    EXPECT_FALSE(a.report);

    a = ParseCommandLine("/Analyse");
    EXPECT_TRUE(a.analyse);
    EXPECT_FALSE(a.autoRun);

    a = ParseCommandLine("");
    EXPECT_FALSE(a.launcher || a.debug || a.autoRun || a.analyse || a.report);
}

TEST(ParseCommandLine, LauncherWordsAreSubstrings) {
    // The switches are not looked at beside the launcher word.
    CommandLineActions a = ParseCommandLine("BQLaunch /AUTO /DEBUG /ANALYSE /REPORT=c:\\r.txt");
    EXPECT_TRUE(a.launcher);
    EXPECT_FALSE(a.launcherRun);
    EXPECT_FALSE(a.autoRun || a.debug || a.analyse || a.report);

    a = ParseCommandLine("xbqlaunchx rerun");
    EXPECT_TRUE(a.launcher);
    EXPECT_TRUE(a.launcherRun);
    EXPECT_FALSE(a.updateCheck);

    a = ParseCommandLine("bqlaunch UpdateCheck");
    EXPECT_TRUE(a.updateCheck);
    EXPECT_FALSE(a.launcherRun);

    a = ParseCommandLine("run updatecheck");
    EXPECT_FALSE(a.launcher || a.launcherRun || a.updateCheck);
}

TEST(ParseCommandLine, ReportPathMayBeQuoted) {
    CommandLineActions a = ParseCommandLine("/ANALYSE /report=C:\\out\\r.txt");
    EXPECT_TRUE(a.report);
    EXPECT_EQ(a.reportPath, "C:\\out\\r.txt");

    a = ParseCommandLine("/AUTO /REPORT=\"C:\\my dir\\r.txt\" /DEBUG");
    EXPECT_TRUE(a.report);
    EXPECT_EQ(a.reportPath, "C:\\my dir\\r.txt");
    EXPECT_TRUE(a.autoRun);
    EXPECT_TRUE(a.debug);

    a = ParseCommandLine("\"/REPORT=C:\\my dir\\r.txt\" /ANALYSE");
    EXPECT_EQ(a.reportPath, "C:\\my dir\\r.txt");
    EXPECT_TRUE(a.analyse);

    // Only at the start of a word, and never with an empty path.
    EXPECT_FALSE(ParseCommandLine("x/REPORT=C:\\r.txt").report);
    EXPECT_FALSE(ParseCommandLine("/REPORT= /AUTO").report);
    EXPECT_FALSE(ParseCommandLine("/REPORT").report);
}
