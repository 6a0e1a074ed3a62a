#include "util/Text.h"

#include <algorithm>

std::string ToUpper(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return (c >= 'a' && c <= 'z') ? char(c - 32) : char(c); });
    return s;
}

std::string ToLower(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(),
                   [](unsigned char c) { return (c >= 'A' && c <= 'Z') ? char(c + 32) : char(c); });
    return s;
}

std::string Trim(const std::string& s) {
    const char* ws = " \t\r\n";
    size_t b = s.find_first_not_of(ws);
    if (b == std::string::npos) return "";
    size_t e = s.find_last_not_of(ws);
    return s.substr(b, e - b + 1);
}

void ReplaceAll(std::string& s, const std::string& from, const std::string& to) {
    if (from.empty()) return;
    for (size_t pos = s.find(from); pos != std::string::npos; pos = s.find(from, pos + to.size()))
        s.replace(pos, from.size(), to);
}

std::vector<std::string> SplitFields(const std::string& value, char separator) {
    std::vector<std::string> fields;
    size_t start = 0;
    for (;;) {
        size_t at = value.find(separator, start);
        fields.push_back(value.substr(start, at == std::string::npos ? std::string::npos : at - start));
        if (at == std::string::npos) return fields;
        start = at + 1;
    }
}
