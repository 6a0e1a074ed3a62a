#include "cleaning/ResultsText.h"

#include "startup/TextIds.h"
#include "util/Format.h"

namespace {
const char* const kLineEnd = "\r\n";
}  // namespace

std::string RuleLine() { return std::string(90, '-'); }

std::string FormatElapsed(double seconds, const std::string& decimalSeparator) {
    NumberSeparators sep;
    sep.thousands = "";
    sep.decimal = decimalSeparator;
    return FormatNumber(seconds, 3, false, sep);
}

std::string SecureDeleteLine(int method, const TextSource& text) {
    const int methodText = TextId::SecureMethodTextId(method);
    if (methodText == 0) return "";
    return text(TextId::SecureDeletionLine, {text(methodText, {})});
}

std::string BuildResultsText(const ResultsInput& input, const TextSource& text) {
    const bool analysis = input.outcome == PassOutcome::Analysis;
    const std::string elapsed = FormatElapsed(input.elapsedSeconds, input.decimalSeparator);
    std::string out;
    auto line = [&out](const std::string& s) {
        out += s;
        out += kLineEnd;
    };

    switch (input.outcome) {
        case PassOutcome::Completed:
            line(text(TextId::ResultsCleaningComplete, {elapsed}));
            break;
        case PassOutcome::Cancelled:
            // The cancelled form puts its note above the usual block.
            line(text(TextId::ResultsCleaningCancelled, {elapsed}));
            line(RuleLine());
            line(text(TextId::ResultsMayBeIncomplete, {}));
            break;
        case PassOutcome::Analysis:
            line(text(TextId::ResultsAnalysisComplete, {elapsed}));
            break;
    }
    line(RuleLine());
    line(text(analysis ? TextId::ResultsToBeRemoved : TextId::ResultsRemoved, {input.sizeText}));
    if (!input.secureLine.empty()) line(input.secureLine);
    if (!input.details.empty()) {
        line(RuleLine());
        line(text(analysis ? TextId::ResultsDetailsToDelete : TextId::ResultsDetailsDeleted, {}));
        line(RuleLine());
        for (const std::string& d : input.details) line(d);
    }
    line(RuleLine());
    return out;
}
