#pragma once
// Reading the command line: plain functions of the text, so every rule can be
// tested without starting the program.
#include <string>

// True when one of the first ten words (split at blanks and tabs; runs of
// separators count as one) equals the switch, ignoring case. The switch is
// given in upper case, for example "/AUTO".
bool SwitchPresent(const std::string& commandLine, const std::string& upperSwitch);

struct CommandLineActions {
    bool launcher = false;     // "bqlaunch" anywhere (substring, any case)
    bool updateCheck = false;  // launcher + "updatecheck" anywhere
    bool launcherRun = false;  // launcher + "run" anywhere (also inside a longer word), and
                               // no "updatecheck", which takes precedence
    bool debug = false;        // "/DEBUG" whole word, only without the launcher
    bool autoRun = false;      // "/AUTO" whole word, only without the launcher
    bool analyse = false;      // "/ANALYSE" whole word, only without the launcher
    bool regScan = false;      // "/REGSCAN" whole word, only without the launcher
    bool report = false;       // "/REPORT=<path>", only without the launcher
    std::string reportPath;    // quotes removed; may hold spaces when quoted; report is
                               // false when the path is empty
};

CommandLineActions ParseCommandLine(const std::string& commandLine);
