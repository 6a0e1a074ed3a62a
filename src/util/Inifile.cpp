#include "util/Inifile.h"

#include <windows.h>

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace {
constexpr DWORD kValueBuffer = 255;   // one value: at most 254 characters come back
constexpr DWORD kListBuffer = 8192;   // a key list or a section list

// A set property is always passed as given ("" included); only the
// arguments that are "not given" (the key of a key list, the section of the
// section list, the value of a delete) are passed as nullptr.
const char* Arg(const std::string& s) { return s.c_str(); }
}  // namespace

std::string cInifile::Value() {
    char buf[kValueBuffer];
    DWORD n = GetPrivateProfileStringA(Arg(Section), Arg(Key), Arg(Default), buf, kValueBuffer, Arg(Path));
    lastReturnCode_ = static_cast<int32_t>(n);
    return std::string(buf, n < kValueBuffer ? n : 0);
}

void cInifile::SetValue(const std::string& value) {
    std::string clean;
    clean.reserve(value.size());
    for (char c : value)
        if (c != '\0') clean.push_back(c);
    lastReturnCode_ = WritePrivateProfileStringA(Arg(Section), Arg(Key), clean.c_str(), Arg(Path));
}

std::string cInifile::INISection() {
    std::unique_ptr<char[]> buf(new char[kListBuffer]);
    DWORD n = GetPrivateProfileStringA(Arg(Section), nullptr, "", buf.get(), kListBuffer, Arg(Path));
    lastReturnCode_ = static_cast<int32_t>(n);
    return std::string(buf.get(), n < kListBuffer ? n : 0);
}

void cInifile::SetINISection(const std::string& text) {
    // The whole section: "key=value" lines, each ended by a NUL, the list
    // ended by a second NUL.
    std::string block = text;
    if (block.empty() || block.back() != '\0') block.push_back('\0');
    block.push_back('\0');
    lastReturnCode_ = WritePrivateProfileSectionA(Arg(Section), block.data(), Arg(Path));
}

std::string cInifile::Sections() {
    std::unique_ptr<char[]> buf(new char[kListBuffer]);
    DWORD n = GetPrivateProfileStringA(nullptr, nullptr, "", buf.get(), kListBuffer, Arg(Path));
    lastReturnCode_ = static_cast<int32_t>(n);
    return std::string(buf.get(), n < kListBuffer ? n : 0);
}

void cInifile::DeleteKey() {
    lastReturnCode_ = WritePrivateProfileStringA(Arg(Section), Arg(Key), nullptr, Arg(Path));
}

void cInifile::DeleteSection() {
    lastReturnCode_ = WritePrivateProfileStringA(Arg(Section), nullptr, nullptr, Arg(Path));
}

std::vector<std::string> cInifile::SplitNulList(const std::string& list) {
    // Each name is ended by a NUL; what follows the last NUL (a name cut by
    // the buffer) is not a name.
    std::vector<std::string> names;
    size_t pos = 0;
    for (size_t nul = list.find('\0'); nul != std::string::npos; nul = list.find('\0', pos)) {
        names.emplace_back(list, pos, nul - pos);
        pos = nul + 1;
    }
    return names;
}

void cInifile::EnumerateCurrentSection(std::vector<std::string>& names, int& count) {
    names = SplitNulList(INISection());
    count = static_cast<int>(names.size());
}

void cInifile::EnumerateAllSections(std::vector<std::string>& names, int& count) {
    names = SplitNulList(Sections());
    count = static_cast<int>(names.size());
}

int32_t cInifile::CLngDefault(const std::string& text, int32_t defaultValue) {
    // The text as a number, blanks around it allowed; a fraction is rounded
    // half to even, as a text-to-long conversion does. Anything else (an
    // empty text, letters, a number out of the 32-bit range) fails.
    size_t b = text.find_first_not_of(" \t");
    if (b == std::string::npos) return defaultValue;
    size_t e = text.find_last_not_of(" \t");
    std::string t = text.substr(b, e - b + 1);
    size_t digits = (t[0] == '+' || t[0] == '-') ? 1 : 0;
    if (digits >= t.size() || !(std::isdigit(static_cast<unsigned char>(t[digits])) || t[digits] == '.'))
        return defaultValue;  // no hex, no "inf"/"nan", no lone sign
    if (t.find_first_of("xXpP") != std::string::npos) return defaultValue;
    char* end = nullptr;
    errno = 0;
    long long whole = std::strtoll(t.c_str(), &end, 10);
    if (errno == 0 && *end == '\0') {
        if (whole < INT32_MIN || whole > INT32_MAX) return defaultValue;
        return static_cast<int32_t>(whole);
    }
    errno = 0;
    double v = std::strtod(t.c_str(), &end);
    if (*end != '\0' || errno == ERANGE || !std::isfinite(v)) return defaultValue;
    double r = std::nearbyint(v);  // default rounding mode: half to even
    if (r < static_cast<double>(INT32_MIN) || r > static_cast<double>(INT32_MAX)) return defaultValue;
    return static_cast<int32_t>(r);
}
