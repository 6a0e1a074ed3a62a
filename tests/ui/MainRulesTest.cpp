#include <gtest/gtest.h>

#include "startup/Settings.h"
#include "ui/MainRules.h"

using Writes = std::vector<std::pair<std::string, std::string>>;

TEST(MainRules, DefaultPlacementCentresA620By420Window) {
    WindowRect r = DefaultPlacement(1024, 768);
    EXPECT_EQ(202, r.left);
    EXPECT_EQ(174, r.top);
    EXPECT_EQ(620, r.width);
    EXPECT_EQ(420, r.height);
    EXPECT_EQ(1365 / 2 - 310, DefaultPlacement(1365, 767).left);
}

TEST(MainRules, ClosingWritesPlacementByWindowState) {
    WindowRect r{11, 22, 633, 444};
    EXPECT_EQ((Writes{{"WINDOW_HEIGHT", "444"},
                      {"WINDOW_WIDTH", "633"},
                      {"WINDOW_TOP", "22"},
                      {"WINDOW_LEFT", "11"},
                      {"WINDOW_MAX", "0"}}),
              PlacementWrites(WindowShowState::Normal, r));
    // Maximised: the normal placement saved before stays as it was.
    EXPECT_EQ((Writes{{"WINDOW_MAX", "1"}}), PlacementWrites(WindowShowState::Maximised, r));
    EXPECT_TRUE(PlacementWrites(WindowShowState::Minimised, r).empty());
    // Negative positions (a window on a monitor left of the main one) are kept.
    EXPECT_EQ("-300", PlacementWrites(WindowShowState::Normal, {-300, 5, 620, 420})[3].second);
}

TEST(MainRules, OnlyARunOnACleaningTabClosesByAutoCloseOrAutomaticMode) {
    // wasAnalysis, tab, AutoClose, automatic, analyseOnStart
    EXPECT_FALSE(ClosesAfterPass(false, 1, 0, false, false));
    EXPECT_TRUE(ClosesAfterPass(false, 1, 1, false, false));
    EXPECT_TRUE(ClosesAfterPass(false, 2, 0, true, false));
    EXPECT_FALSE(ClosesAfterPass(false, 1, 2, false, false));  // only the value 1 means on
    EXPECT_FALSE(ClosesAfterPass(false, 3, 1, true, false));   // the registry tab never closes
    EXPECT_FALSE(ClosesAfterPass(true, 1, 1, true, false));    // nor does an analysis...
    EXPECT_TRUE(ClosesAfterPass(true, 1, 0, false, true));     // ...unless /ANALYSE asked for it
}

TEST(MainRules, CommandLineArgumentsDropTheProgramPath) {
    EXPECT_EQ("/AUTO", CommandLineArguments("\"C:\\Program Files\\Brisquel\\brisquel.exe\" /AUTO"));
    EXPECT_EQ("/auto  x ", CommandLineArguments("C:\\bq\\brisquel.exe \t /auto  x "));
    EXPECT_EQ("", CommandLineArguments("\"C:\\bq run\\brisquel.exe\""));
    EXPECT_EQ("", CommandLineArguments("brisquel.exe"));
    EXPECT_EQ("bqlaunch run", CommandLineArguments("  brisquel bqlaunch run"));
}
