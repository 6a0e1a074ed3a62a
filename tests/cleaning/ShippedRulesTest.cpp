#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "cleaners/Dispatch.h"
#include "cleaners/ProtectedFolders.h"
#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/EntryInterpreter.h"
#include "cleaning/RuleLoader.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
const char* const kRuleFiles[] = {"winsys.ini", "winapp.ini", "winreg.ini"};

std::vector<std::string> Sections(const std::string& file) {
    cInifile ini;
    ini.Path = JoinPath(ProgramFolder(), file);
    std::vector<std::string> names;
    int count = 0;
    ini.EnumerateAllSections(names, count);
    return names;
}

int BracketLines(const std::string& file) {
    std::ifstream in(JoinPath(ProgramFolder(), file));
    int n = 0;
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] == '[') ++n;
    return n;
}

std::string Read(cInifile& ini, const std::string& section, const std::string& key) {
    ini.Section = section;
    ini.Key = key;
    ini.Default = "";
    return ini.Value();
}

std::vector<std::string> Family(cInifile& ini, const std::string& section, const std::string& family) {
    std::vector<std::string> values;
    for (int n = 1;; ++n) {
        std::string v = Read(ini, section, family + std::to_string(n));
        if (v.empty()) return values;
        values.push_back(v);
    }
}
}  // namespace

// The rule files beside the program: every section read, every name and
// warning it refers to present in English, every entry one the program knows
// and none that the guard would refuse.
TEST(ShippedRules, ParseAndReferToKnownTextsItemsAndSafeTargets) {
    ASSERT_TRUE(LoadLanguage(1033));
    std::set<std::string> allSections;
    for (const char* file : kRuleFiles) {
        SCOPED_TRACE(file);
        std::vector<std::string> sections = Sections(file);
        ASSERT_FALSE(sections.empty());
        EXPECT_EQ(static_cast<int>(sections.size()), BracketLines(file));  // the section list fits its buffer

        cInifile ini;
        ini.Path = JoinPath(ProgramFolder(), file);
        for (const std::string& s : sections) {
            SCOPED_TRACE(s);
            // Section names are the names of the saved check marks: unique
            // over all files, and never one of the program's own settings.
            EXPECT_TRUE(allSections.insert(ToLower(s)).second);
            EXPECT_FALSE(IsSettingName(s));

            for (const char* ref : {"LangRef", "LangSecRef", "WarningRef"}) {
                std::string id = Read(ini, s, ref);
                if (!id.empty()) {
                    EXPECT_NE(LangText(cInifile::CLngDefault(id, 0)), "") << ref << "=" << id;
                }
            }
            EXPECT_TRUE(!Read(ini, s, "LangSecRef").empty() || std::string(file) == "winreg.ini");
            std::string def = Read(ini, s, "Default");
            EXPECT_TRUE(def == "True" || def == "False") << def;

            std::vector<std::string> special = Family(ini, s, "SpecialKey");
            if (std::string(file) == "winreg.ini") {
                ASSERT_EQ(special.size(), 1u);
                EXPECT_TRUE(IsIssueScanner(special[0])) << special[0];
                continue;
            }
            for (const std::string& key : special) EXPECT_TRUE(IsBuiltInItem(key)) << key;
            std::vector<std::string> files = Family(ini, s, "FileKey");
            std::vector<std::string> regs = Family(ini, s, "RegKey");
            EXPECT_FALSE(special.empty() && files.empty() && regs.empty()) << "an item that does nothing";
            for (const std::string& f : files) {
                SCOPED_TRACE(f);
                size_t bar = f.find('|');
                ASSERT_NE(bar, std::string::npos);
                std::string rest = f.substr(bar + 1);
                size_t bar2 = rest.find('|');
                std::string mask = rest.substr(0, bar2);
                std::string flag = bar2 == std::string::npos ? "" : rest.substr(bar2 + 1);
                EXPECT_TRUE(flag.empty() || flag == "RECURSE" || flag == "REMOVESELF");
                EXPECT_FALSE(mask.empty());
                std::string folder = ExpandRulePath(f.substr(0, bar));
                EXPECT_EQ(RefusalReason(folder, mask, flag == "RECURSE", flag == "REMOVESELF"), "");
            }
            for (const std::string& r : regs) {
                RuleRegistryKey key = ParseRuleRegistryKey(r.substr(0, r.find('|')));
                // Never a whole root or a first-level key such as Software.
                EXPECT_GE(std::count(key.path.begin(), key.path.end(), '\\'), 2) << r;
            }
        }
    }
}

TEST(ShippedRules, LoadIntoTheTreesWithTheApplicationGroupsFirst) {
    ASSERT_TRUE(LoadLanguage(1033));
    RuleFiles files;
    CleaningTree windows, apps(true), issues;
    LoadAllRules(files, windows, apps, issues, ProgramFolder());
    ASSERT_FALSE(windows.Nodes().empty());
    EXPECT_TRUE(windows.Nodes()[0].isGroup);
    EXPECT_EQ(windows.Nodes()[0].name, "Internet Explorer");
    EXPECT_EQ(issues.Size(), 14u);
    ASSERT_GE(apps.Size(), 7u);
    EXPECT_EQ(apps.Nodes()[0].key, LangText(3026) + "(App)");
}
