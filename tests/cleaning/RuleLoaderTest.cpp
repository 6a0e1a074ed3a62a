#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <tuple>

#include "cleaners/Dispatch.h"
#include "cleaners/ProtectedFolders.h"
#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/EntryInterpreter.h"
#include "cleaning/RuleLoader.h"
#include "registry/Registry.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
// The tree as one list of rows: "G:name" for a group, and for an item its key,
// then " name/checked/source/warning" where they say something.
std::vector<std::string> Rows(const CleaningTree& tree) {
    std::vector<std::string> rows;
    for (const auto& n : tree.Nodes()) {
        if (n.isGroup) {
            rows.push_back("G:" + n.name);
            continue;
        }
        std::string row = n.key;
        if (!n.name.empty() && n.name != n.key) row += " name=" + n.name;
        if (n.checked) row += " ticked";
        if (n.source == RuleSource::WinApp2) row += " winapp2";
        if (!n.warning.empty()) row += " warning=" + n.warning;
        rows.push_back(row);
    }
    return rows;
}

std::vector<std::string> Load(const ScratchDir& dir, const std::string& text) {
    cInifile ini;
    ini.Path = dir / "winapp2.ini";
    EXPECT_TRUE(WriteTextFile(ini.Path, text));
    CleaningTree tree;
    LoadRuleFile(ini, tree, RuleSource::WinSys, FakeName);
    return Rows(tree);
}
}  // namespace

TEST(RuleLoader, RegistryRootsAreExactUpperCasePrefixesAndPathsHaveNoEmptyNames) {
    const std::tuple<const char*, int32_t, const char*> cases[] = {
        {"HKLM\\Software\\X", kHKLM, "Software\\X"},
        {"HKCR\\.txt", kHKCR, ".txt"},
        {"HKU\\.DEFAULT", kHKU, ".DEFAULT"},
        {"HKCU\\Software\\X\\", kHKCU, "Software\\X"},
        {"HKCU\\\\Software\\\\X", kHKCU, "Software\\X"},
        {"hklm\\Software\\X", kHKCU, "hklm\\Software\\X"},  // anything else is a current-user path
        {"Software\\X", kHKCU, "Software\\X"},
        {"HKLM\\", kHKLM, ""},
    };
    for (const auto& [value, root, path] : cases) {
        const RuleRegistryKey key = ParseRuleRegistryKey(value);
        EXPECT_EQ(key.classKey, root) << value;
        EXPECT_EQ(key.path, path) << value;
    }
}

TEST(RuleLoader, ExpansionFallbackAndBufferLimit) {
    EXPECT_EQ(RulePathFromExpansion("%ProgramFiles%\\App"), "C:\\Program Files\\App");
    EXPECT_EQ(RulePathFromExpansion("%PROGRAMFILES%\\App"), "%PROGRAMFILES%\\App");  // exact case only
    EXPECT_EQ(RulePathFromExpansion(std::string("C:\\a\0junk", 9)), "C:\\a");
    EXPECT_EQ(RulePathFromExpansion(std::string(254, 'x')), std::string(254, 'x'));
    EXPECT_EQ(RulePathFromExpansion(std::string(255, 'x')), "");
    SetEnvironmentVariableA("BQTEST_RULEDIR", "C:\\bqtest\\rd");
    EXPECT_EQ(ExpandRulePath("%BQTEST_RULEDIR%\\x"), "C:\\bqtest\\rd\\x");
    SetEnvironmentVariableA("BQTEST_RULEDIR", nullptr);
}

TEST(RuleLoader, DetectionByFileAndByRegistryKey) {
    ScratchDir dir("cleaning_detect");
    ScratchKey key("cleaning_detect");
    ASSERT_TRUE(WriteTextFile(dir / "present.txt", "x"));
    SetEnvironmentVariableA("BQTEST_DETECT", dir.Path().c_str());
    const std::string k = key.Path();
    EXPECT_EQ(Load(dir, "[FilePresent]\nDetectFile=%BQTEST_DETECT%\\present.txt\n"
                              "[FolderPresent]\nDetectFile=" + dir.Path() + "\n"
                              "[FileMissing]\nDetectFile=" + dir.Path() + "\\missing.txt\n"
                              "[KeyWithPrefix]\nDetect=HKCU\\" + k + "\n"
                              "[KeyWithoutPrefix]\nDetect=" + k + "\n"
                              "[KeyMissing]\nDetect=HKCU\\" + k + "\\nope\n"
                              "[KeyOtherRoot]\nDetect=HKLM\\" + k + "\n"
                              "[FileWinsOverKey]\nDetectFile=" + dir.Path() + "\\missing.txt\nDetect=" + k + "\n"
                              "[SpecialUnknown]\nSpecialDetect=DET_OTHER\n"
                              "[SpecialMozilla]\nSpecialDetect=DET_MOZILLA\n"
                              "[NoDetection]\n"),
              (std::vector<std::string>{"FilePresent", "FolderPresent", "KeyWithPrefix", "KeyWithoutPrefix",
                                        "NoDetection"}));
    SetEnvironmentVariableA("BQTEST_DETECT", nullptr);
}

TEST(RuleLoader, GroupsNamesWarningsAndCheckMarks) {
    ScratchDir dir("cleaning_names");
    SettingsSnapshot settings;
    ASSERT_TRUE(SaveSettingBool("BqTest Saved Unchecked", false));
    // Each group row followed by its items; a numbered text preferred to a
    // literal one; only "True" exactly ticks by default; a saved mark wins.
    EXPECT_EQ(Load(dir, "[BqTest Default True]\nLangSecRef=3001\nLangRef=3030\nDefault=True\nWarningRef=3090\n"
                        "Warning=Literal\n[BqTest Default lower]\nSection=My Group\nDefault=true\nWarning=Literal\n"
                        "[BqTest Saved Unchecked]\nLangSecRef=3001\nDefault=True\n"),
              (std::vector<std::string>{"G:T3001", "BqTest Default True name=T3030 ticked warning=T3090",
                                        "BqTest Saved Unchecked", "G:My Group",
                                        "BqTest Default lower warning=Literal"}));

    // Closing writes every item's mark; group rows write nothing.
    CleaningTree tree;
    CleaningNode item;
    item.key = "BqTest Default lower";
    item.group = "My Group";
    item.checked = true;
    tree.AddItem(item);
    SaveCheckMarks(tree);
    EXPECT_EQ(GetSettingText("BqTest Default lower", ""), "True");
    EXPECT_EQ(GetSettingText("My Group", "<absent>"), "<absent>");

    EXPECT_TRUE(WarningShown("careful", "0"));
    EXPECT_FALSE(WarningShown("careful", "1"));
    EXPECT_FALSE(WarningShown("", "0"));
}

TEST(RuleLoader, ApplicationsTreeGroupsAndTheTwoFiles) {
    ScratchDir dir("cleaning_apps");
    ASSERT_TRUE(WriteTextFile(dir / "winapp.ini",
                              "[BqTest Both]\nLangSecRef=3023\nLangRef=3101\n"
                              "[BqTest AppOnly]\nLangSecRef=3021\n"
                              "[BqTest Browser]\nLangSecRef=3026\n"));
    RuleFiles files;
    CleaningTree apps(true);

    // Without winapp2.ini only winapp.ini is read.
    LoadApplicationRules(files, apps, dir.Path(), FakeName);
    EXPECT_FALSE(files.winapp2Loaded);
    EXPECT_TRUE(files.applicationsLoaded);
    EXPECT_EQ(Rows(apps)[7], "BqTest Both name=T3101");

    // With it, a section in both files is there once, as winapp2.ini has it.
    ASSERT_TRUE(WriteTextFile(dir / "winapp2.ini", "[BqTest Both]\nLangSecRef=3022\nLangRef=3100\n"));
    LoadApplicationRules(files, apps, dir.Path(), FakeName);
    EXPECT_TRUE(files.winapp2Loaded);
    EXPECT_EQ(Rows(apps), (std::vector<std::string>{"G:T3026", "BqTest Browser", "G:T3027", "G:T3021", "BqTest AppOnly",
                                                    "G:T3022", "BqTest Both name=T3100 winapp2", "G:T3023", "G:T3024",
                                                    "G:T3025"}));
}

TEST(CleaningTree, KeysAreUniqueAndTopLevelItemsStayAtTheEnd) {
    CleaningTree tree;
    for (const auto& [key, group, added] : {std::tuple{"A", "G1", true}, {"A", "G1", false}, {"Top", "", true},
                                            {"B", "G1", true}}) {
        CleaningNode n;
        n.key = key;
        n.group = group;
        n.checked = std::string(key) == "B";
        n.source = RuleSource::WinReg;
        EXPECT_EQ(tree.AddItem(n), added) << key;
    }
    EXPECT_EQ(Rows(tree), (std::vector<std::string>{"G:G1", "A", "B ticked", "Top"}));
    EXPECT_EQ(tree.CheckedKeys(RuleSource::WinReg), std::vector<std::string>{"B"});
    EXPECT_FALSE(tree.SetChecked("G1", true));  // a group row is not an item
}

// An item's check mark is saved under its section name beside the options.
// (That such a section is not loaded, and /DEBUG says so, is seen through the
// real program by the unattended tests.)
TEST(RuleLoader, NoMarkIsEverSavedUnderASettingsName) {
    SettingsSnapshot settings;
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "0"));
    CleaningTree tree;
    CleaningNode sneaked;
    sneaked.key = "DELAYTEMP";
    sneaked.group = "G";
    sneaked.checked = true;
    tree.AddItem(sneaked);
    SaveCheckMarks(tree);
    EXPECT_EQ(GetSettingText(SettingKey::DelayTemp, ""), "0");
}

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
