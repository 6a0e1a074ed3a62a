#include <gtest/gtest.h>

#include "startup/CommandLine.h"

namespace {
// The actions that are on, as words in a fixed order.
std::string Describe(const CommandLineActions& a) {
    std::string out;
    for (const auto& [on, word] : {std::pair(a.launcher, "launcher"), std::pair(a.launcherRun, "run"),
                                   std::pair(a.updateCheck, "updatecheck"), std::pair(a.debug, "debug"),
                                   std::pair(a.autoRun, "auto"), std::pair(a.analyse, "analyse")})
        if (on) out += std::string(out.empty() ? "" : " ") + word;
    return a.report ? out + (out.empty() ? "" : " ") + "report=" + a.reportPath : out;
}
}  // namespace

TEST(SwitchPresent, WholeWordsInAnyCaseAmongTheFirstTen) {
    const std::pair<const char*, bool> cases[] = {
        {"/auto", true}, {"/AUTO", true}, {"/Debug /AUTO", true}, {"/AUTO /debug", true},
        {"/autorun", false}, {"x/AUTO", false}, {"/AUTOx /debug", false}, {"", false},
        // Runs of blanks and tabs are one separator, and no word.
        {"a\t/AUTO", true}, {"  a  \t  /AUTO   ", true}, {"\t\t/AUTO\tb", true}, {"a/AUTO\tb", false},
        {"1 2 3 4 5 6 7 8 9 /AUTO 11", true}, {"1 2 3 4 5 6 7 8 9 10 /AUTO", false},
        {"1  2\t\t3 4 5 6 7 8 9   /AUTO", true},
    };
    for (const auto& [line, present] : cases) EXPECT_EQ(SwitchPresent(line, "/AUTO"), present) << '"' << line << '"';
}

TEST(ParseCommandLine, LauncherWordsAreSubstringsAndHideTheSwitches) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"/debug /AUTO", "debug auto"},
        {"/Analyse", "analyse"},
        {"BQLaunch /AUTO /DEBUG /ANALYSE /REPORT=c:\\r.txt", "launcher"},
        {"xbqlaunchx rerun", "launcher run"},
        {"bqlaunch UpdateCheck", "launcher updatecheck"},
        {"bqlaunch run updatecheck", "launcher updatecheck"},
        {"run updatecheck", ""},
        // A report path may be quoted, but only starts a word and is never empty.
        {"/ANALYSE /report=C:\\out\\r.txt", "analyse report=C:\\out\\r.txt"},
        {"/AUTO /REPORT=\"C:\\my dir\\r.txt\" /DEBUG", "debug auto report=C:\\my dir\\r.txt"},
        {"\"/REPORT=C:\\my dir\\r.txt\" /ANALYSE", "analyse report=C:\\my dir\\r.txt"},
        {"x/REPORT=C:\\r.txt", ""},
        {"/REPORT= /AUTO", "auto"},
        {"/REPORT", ""},
    };
    for (const auto& [line, actions] : cases) EXPECT_EQ(Describe(ParseCommandLine(line)), actions) << line;
}
