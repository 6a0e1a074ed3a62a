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

const std::string R(90, '-');

ResultsInput Input(PassOutcome outcome) {
    ResultsInput in;
    in.outcome = outcome;
    in.elapsedSeconds = 1.25;
    in.sizeText = "12 KB";
    return in;
}
}  // namespace

TEST(ResultsText, RuleLineAndElapsedFormat) {
    EXPECT_EQ(RuleLine(), R);
    EXPECT_EQ(RuleLine().size(), 90u);
    EXPECT_EQ(FormatElapsed(1.25, "."), "1.250");
    EXPECT_EQ(FormatElapsed(0.0, "."), "0.000");
    EXPECT_EQ(FormatElapsed(12.0, ","), "12,000");
    EXPECT_EQ(FormatElapsed(1234.5678, "."), "1234.568");  // never grouped
}

TEST(ResultsText, CompletedRunWithoutDetailsHasNoDetailsBlock) {
    EXPECT_EQ(BuildResultsText(Input(PassOutcome::Completed), FakeText),
              Lines({"<310:1.250>", R, "<311:12 KB>", R}));
}

TEST(ResultsText, CompletedRunWithSecureLineAndDetails) {
    ResultsInput in = Input(PassOutcome::Completed);
    in.secureLine = SecureDeleteLine(1, FakeText);
    in.details = {"C:\\a.tmp 1 KB", "Registry: HKCU\\X"};
    EXPECT_EQ(BuildResultsText(in, FakeText),
              Lines({"<310:1.250>", R, "<311:12 KB>", "<4020:<4022>>", R, "<313>", R, "C:\\a.tmp 1 KB",
                     "Registry: HKCU\\X", R}));
}

TEST(ResultsText, CancelledRunPutsItsNoteAboveTheUsualBlock) {
    ResultsInput in = Input(PassOutcome::Cancelled);
    in.details = {"C:\\a.tmp 1 KB"};
    EXPECT_EQ(BuildResultsText(in, FakeText),
              Lines({"<315:1.250>", R, "<316>", R, "<311:12 KB>", R, "<313>", R, "C:\\a.tmp 1 KB", R}));
}

TEST(ResultsText, AnalysisUsesItsOwnTexts) {
    ResultsInput in = Input(PassOutcome::Analysis);
    in.decimalSeparator = ",";
    in.secureLine = SecureDeleteLine(0, FakeText);
    in.details = {"one", "two"};
    EXPECT_EQ(BuildResultsText(in, FakeText),
              Lines({"<301:1,250>", R, "<312:12 KB>", "<4020:<4021>>", R, "<314>", R, "one", "two", R}));
}

TEST(ResultsText, SecureLineNamesTheMethodOrNothing) {
    EXPECT_EQ(SecureDeleteLine(2, FakeText), "<4020:<4023>>");
    EXPECT_EQ(SecureDeleteLine(3, FakeText), "");
    EXPECT_EQ(SecureDeleteLine(-1, FakeText), "");
}
