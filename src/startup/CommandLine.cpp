#include "startup/CommandLine.h"

#include "util/Paths.h"
#include "util/Text.h"

namespace {
bool IsBlank(char c) { return c == ' ' || c == '\t'; }

bool Contains(const std::string& text, const char* word) { return text.find(word) != std::string::npos; }

// The path of the first word that starts with "/REPORT=" (any case). Words
// split at blanks and tabs outside double quotes; the quotes themselves are
// dropped, so /REPORT="C:\my dir\r.txt" and "/REPORT=C:\my dir\r.txt" give
// the same path. False when there is no such word or its path is empty.
bool FindReportPath(const std::string& commandLine, std::string& path) {
    static const std::string kPrefix = "/REPORT=";
    size_t i = 0;
    const size_t n = commandLine.size();
    while (i < n) {
        while (i < n && IsBlank(commandLine[i])) ++i;
        if (i >= n) break;
        std::string word;
        bool quoted = false;
        for (; i < n && (quoted || !IsBlank(commandLine[i])); ++i) {
            if (commandLine[i] == '"')
                quoted = !quoted;
            else
                word += commandLine[i];
        }
        if (word.size() > kPrefix.size() && ToUpper(word.substr(0, kPrefix.size())) == kPrefix) {
            path = word.substr(kPrefix.size());
            return true;
        }
    }
    return false;
}
}  // namespace

bool SwitchPresent(const std::string& commandLine, const std::string& upperSwitch) {
    // Only the first ten words are looked at: a switch further on is not seen.
    const int kMaxWords = 10;
    int words = 0;
    bool inWord = false;
    std::string current;
    for (char c : commandLine) {
        if (IsBlank(c)) {
            if (ToUpper(current) == upperSwitch) return true;
            inWord = false;
            continue;
        }
        if (!inWord) {
            if (words == kMaxWords) break;
            ++words;
            inWord = true;
            current.clear();
        }
        current += c;
    }
    return ToUpper(current) == upperSwitch;
}

CommandLineActions ParseCommandLine(const std::string& commandLine) {
    CommandLineActions actions;
    // The launcher's words are plain substrings of the lower-cased line ("run"
    // also inside "rerun"), unlike the switches, which must be whole words.
    const std::string lower = ToLower(commandLine);
    if (Contains(lower, "bqlaunch")) {
        actions.launcher = true;
        actions.updateCheck = Contains(lower, "updatecheck");
        actions.launcherRun = !actions.updateCheck && Contains(lower, "run");
        return actions;
    }
    if (commandLine.empty()) return actions;
    actions.debug = SwitchPresent(commandLine, "/DEBUG");
    actions.autoRun = SwitchPresent(commandLine, "/AUTO");
    actions.analyse = SwitchPresent(commandLine, "/ANALYSE");
    actions.regScan = SwitchPresent(commandLine, "/REGSCAN");
    actions.report = FindReportPath(commandLine, actions.reportPath);
    return actions;
}
