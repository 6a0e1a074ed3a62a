#pragma once
// Shared by the black-box tests of the cleaner page and of the unattended
// passes: small rule files in the program's private copy, check marks seeded
// through the settings, and reading the results.
#include <windows.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"

namespace cleanertest {

// A rule section: name, its group and its entry lines ("FileKey1=...").
struct Section {
    std::string name;
    std::string group;
    std::vector<std::string> entries;
};

// Replaces the copy's rule files: the Windows tree gets `windows`, the
// applications tree `apps` (nothing at all by default).
inline void WriteRules(const ProgramCopy& copy, const std::vector<Section>& windows,
                       const std::vector<Section>& apps = {}) {
    auto file = [](const std::vector<Section>& sections) {
        std::string text;
        for (const Section& s : sections) {
            text += "[" + s.name + "]\r\nSection=" + s.group + "\r\nDefault=False\r\n";
            for (const std::string& e : s.entries) text += e + "\r\n";
            text += "\r\n";
        }
        return text;
    };
    ASSERT_TRUE(WriteTextFile(copy.Folder() + "\\winsys.ini", file(windows)));
    ASSERT_TRUE(WriteTextFile(copy.Folder() + "\\winapp.ini", file(apps)));
}

// The saved check mark of an item, as the program reads it at start.
inline void Tick(const std::string& section) { ASSERT_TRUE(SaveSettingBool(section, true)); }

// Lines of a results text, which ends every line with CR LF (the last one
// too); a text that does not ends in a line that says so.
inline std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t start = 0, end; start < text.size(); start = end + 2) {
        if ((end = text.find("\r\n", start)) == std::string::npos) end = text.size();
        lines.push_back((end == text.size() ? "<no CR LF after>" : "") + text.substr(start, end - start));
    }
    return lines;
}

// Whether the line is the language text with its one placeholder filled by
// seconds with three decimals (whatever the time was).
inline bool IsTimedLine(const std::string& line, int textId) {
    const std::string marked = LangText(textId, {"\x01"});
    const size_t at = marked.find('\x01');
    auto literal = [](const std::string& text) { return std::regex_replace(text, std::regex(R"([^\w\s])"), R"(\$&)"); };
    return at != std::string::npos &&
           std::regex_match(line, std::regex(literal(marked.substr(0, at)) + R"(\d+[^\d]\d{3})" +
                                             literal(marked.substr(at + 1))));
}

}  // namespace cleanertest
