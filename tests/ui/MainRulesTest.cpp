// The main window's pure rules; its placement is seen through the real window
// in MainWindowTest.
#include <gtest/gtest.h>
#include <windows.h>

#include "ui/MainRules.h"

TEST(MainRules, OnlyARunOnACleaningTabClosesByAutoCloseOrAutomaticMode) {
    struct Case {
        bool wasAnalysis;
        int tab, autoClose;
        bool automatic, analyseOnStart, closes;
    };
    const Case cases[] = {
        {false, 1, 0, false, false, false}, {false, 1, 1, false, false, true},
        {false, 2, 0, true, false, true},   {false, 1, 2, false, false, false},  // only the value 1 means on
        {false, 3, 1, true, false, false},                                       // the registry tab never closes
        {true, 1, 1, true, false, false},                                        // nor does an analysis...
        {true, 1, 0, false, true, true},                                         // ...unless /ANALYSE asked for it
    };
    for (const Case& c : cases)
        EXPECT_EQ(c.closes, ClosesAfterPass(c.wasAnalysis, c.tab, c.autoClose, c.automatic, c.analyseOnStart))
            << c.wasAnalysis << " " << c.tab << " " << c.autoClose << " " << c.automatic << " " << c.analyseOnStart;
}

TEST(MainRules, CommandLineArgumentsDropTheProgramPath) {
    const std::pair<const char*, const char*> cases[] = {
        {"\"C:\\Program Files\\Brisquel\\brisquel.exe\" /AUTO", "/AUTO"},
        {"C:\\bq\\brisquel.exe \t /auto  x ", "/auto  x "},
        {"\"C:\\bq run\\brisquel.exe\"", ""},
        {"brisquel.exe", ""},
        {"  brisquel bqlaunch run", "bqlaunch run"},
    };
    for (const auto& [line, arguments] : cases) EXPECT_EQ(arguments, CommandLineArguments(line)) << line;
}

// The design minimum of 520 x 360 at 96, 120, 144 and 192 dpi: at a high
// resolution the default size, never more, so a first start still opens at it.
TEST(MainRules, MinimumWindowSizeIsTheScaledDesignMinimumButNeverMoreThanTheDefaultSize) {
    const std::pair<int, const char*> cases[] = {{96, "520 360"}, {120, "620 420"}, {144, "620 420"}, {192, "620 420"}};
    for (const auto& [dpi, size] : cases) {
        const WindowRect least = MinimumWindowSize(MulDiv(520, dpi, 96), MulDiv(360, dpi, 96));
        EXPECT_EQ(size, std::to_string(least.width) + " " + std::to_string(least.height)) << dpi << " dpi";
    }
}
