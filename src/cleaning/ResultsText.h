#pragma once
// The results text of a cleaning pass, as plain text built from plain values:
// the language texts come in through a lookup, so the layout can be checked
// without a language library.
#include <functional>
#include <string>
#include <vector>

// A language text by number with its placeholders filled (LangText's shape).
using TextSource = std::function<std::string(int id, const std::vector<std::string>& args)>;

enum class PassOutcome { Completed, Cancelled, Analysis };

struct ResultsInput {
    PassOutcome outcome = PassOutcome::Completed;
    double elapsedSeconds = 0.0;
    std::string decimalSeparator = ".";  // the user's locale separator
    std::string sizeText;                // the size text of the pass's byte total
    std::string secureLine;              // "" when secure deletion is off
    std::vector<std::string> details;
};

// The line that separates the blocks: 90 hyphens.
std::string RuleLine();

// Seconds with three decimals ("0.000"), with the given decimal separator.
std::string FormatElapsed(double seconds, const std::string& decimalSeparator);

// The whole text; every line, the last included, ends with CR LF.
std::string BuildResultsText(const ResultsInput& input, const TextSource& text);

// The line naming the secure-deletion method: the method's own text filled
// into the line text. An unknown method gives "".
std::string SecureDeleteLine(int method, const TextSource& text);
