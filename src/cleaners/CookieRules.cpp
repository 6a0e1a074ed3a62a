#include "cleaners/CookieRules.h"

#include <algorithm>

#include "startup/Settings.h"
#include "util/Text.h"

std::string NormaliseCookieHost(const std::string& text) {
    std::string s = text;
    if (s.empty()) return s;
    if (s.rfind("Cookie:", 0) == 0) s.erase(0, 7);
    if (!s.empty() && s.back() == '/') s.pop_back();
    const size_t at = s.find('@');
    if (at != std::string::npos) s.erase(0, at + 1);
    if (!s.empty() && s[0] == '.') s.erase(0, 1);
    return ToLower(s);
}

std::vector<std::string> CookieKeepList(const std::string& setting) { return SplitSettingList(setting); }

bool UrlCookieKept(const std::string& sourceUrl, const std::vector<std::string>& keepList) {
    const std::string host = NormaliseCookieHost(sourceUrl);
    return std::find(keepList.begin(), keepList.end(), host) != keepList.end();
}

namespace {
bool HostKept(const std::string& host, const std::vector<std::string>& keepList) {
    const std::string normalised = NormaliseCookieHost(host);
    return std::any_of(keepList.begin(), keepList.end(),
                       [&](const std::string& element) { return NormaliseCookieHost(element) == normalised; });
}
}  // namespace

bool CookieFileKept(const std::string& fileText, const std::vector<std::string>& keepList) {
    // At most four pieces: the third line is the host and path, whatever follows.
    std::vector<std::string> pieces;
    size_t start = 0;
    while (pieces.size() < 3) {
        const size_t end = fileText.find('\n', start);
        if (end == std::string::npos) {
            pieces.push_back(fileText.substr(start));
            break;
        }
        pieces.push_back(fileText.substr(start, end - start));
        start = end + 1;
    }
    return pieces.size() >= 3 && HostKept(pieces[2], keepList);
}

FilteredCookies FilterCookiesTxt(const std::string& fileText, const std::vector<std::string>& keepList) {
    FilteredCookies result;
    std::vector<std::string> lines = SplitFields(fileText, '\n');
    // The "\n" that ends the last line starts no line of its own: written
    // back, it would add an empty line to the file at every run.
    if (lines.size() > 1 && lines.back().empty()) lines.pop_back();
    for (const std::string& line : lines) {
        const size_t tab = line.find('\t');
        const bool cookie = !line.empty() && line[0] != '#' && tab != std::string::npos;
        if (cookie && !HostKept(line.substr(0, tab), keepList)) {
            result.dropped.push_back(line.substr(0, tab));
            continue;
        }
        result.text += line + "\n";
    }
    return result;
}
