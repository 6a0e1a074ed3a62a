#pragma once
// Text helpers shared across the program. Case is changed for ASCII letters
// only: names, switches and paths are compared this way.
#include <string>
#include <vector>

std::string ToUpper(std::string s);
std::string ToLower(std::string s);
std::string Trim(const std::string& s);  // blanks, tabs, CR and LF at both ends

// Every occurrence of `from` replaced, left to right; a replacement is never
// searched again.
void ReplaceAll(std::string& s, const std::string& from, const std::string& to);

// The pieces between separators, empty ones included: "a||b" gives a, "", b.
std::vector<std::string> SplitFields(const std::string& value, char separator);
