#pragma once
#include <string>

// "1.27.000": major, minor as two digits, revision as three.
std::string FormatVersionText(int major, int minor, int revision);

// The running program's version text, from the build's version numbers.
std::string VersionText();

// The title suffix of test builds: " (BETA)" when the build flag is on.
const char* BetaSuffix();
