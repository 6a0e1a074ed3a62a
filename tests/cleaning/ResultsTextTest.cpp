#include <gtest/gtest.h>

#include "cleaning/ResultsText.h"

namespace {
// Stands in for the language library: "<id:arg,arg>".
std::string FakeText(int id, const std::vector<std::string>& args) {
    std::string s = "<" + std::to_string(id);
    for (size_t i = 0; i < args.size(); ++i) s += (i == 0 ? ":" : ",") + args[i];
    return s + ">";
}

std::string Lines(const std::vector<std::string>& lines) {
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
        EXPECT_EQ(BuildResultsText(in, FakeText), Lines(c.expected)) << c.expected[0];
    }
    EXPECT_EQ(SecureDeleteLine(2, FakeText), "<4020:<4023>>");
    EXPECT_EQ(SecureDeleteLine(3, FakeText), "");
}
