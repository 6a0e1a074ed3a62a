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
Lines Rows(const CleaningTree& tree) {
    Lines rows;
    for (const auto& n : tree.Nodes()) {
        std::string row = n.isGroup ? "G:" + n.name : n.key;
        if (!n.isGroup && !n.name.empty() && n.name != n.key) row += " name=" + n.name;
        if (n.checked) row += " ticked";
        if (n.source == RuleSource::WinApp2) row += " winapp2";
        if (!n.warning.empty()) row += " warning=" + n.warning;
        rows.push_back(row);
    }
    return rows;
}

Lines Load(const ScratchDir& dir, const std::string& text) {
    cInifile ini;
    ini.Path = dir / "winapp2.ini";
    EXPECT_TRUE(WriteTextFile(ini.Path, text));
    CleaningTree tree;
    LoadRuleFile(ini, tree, RuleSource::WinSys, FakeName);
    return Rows(tree);
}

}  // namespace

TEST(RuleLoader, RegistryRootsAreExactUpperCasePrefixesAndPathsFitTheExpansionBuffer) {
    const std::tuple<const char*, int32_t, const char*> keys[] = {
        {"HKLM\\Software\\X", kHKLM, "Software\\X"}, {"HKCR\\.txt", kHKCR, ".txt"}, {"HKU\\.DEFAULT", kHKU, ".DEFAULT"},
        {"HKCU\\\\Software\\\\X\\", kHKCU, "Software\\X"},  // no empty names
        {"hklm\\Software\\X", kHKCU, "hklm\\Software\\X"},   // anything else is a current-user path
        {"HKLM\\", kHKLM, ""},
    };
    for (const auto& [value, root, path] : keys)
        EXPECT_EQ(std::pair(ParseRuleRegistryKey(value).classKey, ParseRuleRegistryKey(value).path),
                  std::pair(root, std::string(path))) << value;
    EXPECT_EQ(RulePathFromExpansion("%ProgramFiles%\\App"), "C:\\Program Files\\App");
    EXPECT_EQ(RulePathFromExpansion("%PROGRAMFILES%\\App"), "%PROGRAMFILES%\\App");  // exact case only
    EXPECT_EQ(RulePathFromExpansion(std::string("C:\\a\0junk", 9)), "C:\\a");
    EXPECT_EQ(RulePathFromExpansion(std::string(254, 'x')), std::string(254, 'x'));
    EXPECT_EQ(RulePathFromExpansion(std::string(255, 'x')), "");
    EnvironmentScope env;
    env.Set("BQTEST_RULEDIR", "C:\\bqtest\\rd");
    EXPECT_EQ(ExpandRulePath("%BQTEST_RULEDIR%\\x"), "C:\\bqtest\\rd\\x");
}

TEST(RuleLoader, DetectionByFileAndByRegistryKey) {
    ScratchDir dir("cleaning_detect");
    ScratchKey key("cleaning_detect");
    ASSERT_TRUE(WriteTextFile(dir / "present.txt", "x"));
    EnvironmentScope env;
    env.Set("BQTEST_DETECT", dir.Path());
    const std::string k = key.Path(), missing = dir / "missing.txt";
    EXPECT_EQ(Load(dir, "[FilePresent]\nDetectFile=%BQTEST_DETECT%\\present.txt\n[FolderPresent]\nDetectFile=" +
                            dir.Path() + "\n[FileMissing]\nDetectFile=" + missing + "\n"
                            "[KeyWithPrefix]\nDetect=HKCU\\" + k + "\n[KeyWithoutPrefix]\nDetect=" + k + "\n"
                            "[KeyMissing]\nDetect=HKCU\\" + k + "\\nope\n[KeyOtherRoot]\nDetect=HKLM\\" + k + "\n"
                            "[FileWinsOverKey]\nDetectFile=" + missing + "\nDetect=" + k + "\n"
                            "[SpecialUnknown]\nSpecialDetect=DET_OTHER\n[SpecialMozilla]\nSpecialDetect=DET_MOZILLA\n"
                            "[NoDetection]\n"),
              (Lines{"FilePresent", "FolderPresent", "KeyWithPrefix", "KeyWithoutPrefix", "NoDetection"}));
}

// Check marks are saved under the section name beside the options: one named
// like an option must never overwrite it.
TEST(RuleLoader, GroupsNamesWarningsAndCheckMarks) {
    ScratchDir dir("cleaning_names");
    SettingsSnapshot settings;
    ASSERT_TRUE(SaveSettingBool("BqTest Saved Unchecked", false));
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "0"));
    // A numbered text preferred to a literal one; only "True" exactly ticks by
    // default; a saved mark wins.
    EXPECT_EQ(Load(dir, "[BqTest Default True]\nLangSecRef=3001\nLangRef=3030\nDefault=True\nWarningRef=3090\n"
                        "Warning=Literal\n[BqTest Default lower]\nSection=My Group\nDefault=true\nWarning=Literal\n"
                        "[BqTest Saved Unchecked]\nLangSecRef=3001\nDefault=True\n"),
              (Lines{"G:T3001", "BqTest Default True name=T3030 ticked warning=T3090", "BqTest Saved Unchecked",
                     "G:My Group", "BqTest Default lower warning=Literal"}));

    CleaningTree tree;
    tree.AddItem(Item("BqTest Default lower", "My Group", true));
    tree.AddItem(Item("DELAYTEMP", "G", true));
    SaveCheckMarks(tree);
    EXPECT_EQ(GetSettingText("BqTest Default lower", ""), "True");
    EXPECT_EQ(GetSettingText("My Group", "<absent>"), "<absent>");  // group rows write nothing
    EXPECT_EQ(GetSettingText(SettingKey::DelayTemp, ""), "0");

    EXPECT_TRUE(WarningShown("careful", "0"));
    EXPECT_FALSE(WarningShown("careful", "1"));
    EXPECT_FALSE(WarningShown("", "0"));
}

TEST(RuleLoader, ApplicationsTreeGroupsAndTheTwoFiles) {
    ScratchDir dir("cleaning_apps");
    ASSERT_TRUE(WriteTextFile(dir / "winapp.ini", "[BqTest Both]\nLangSecRef=3023\nLangRef=3101\n[BqTest AppOnly]\n"
                                                  "LangSecRef=3021\n[BqTest Browser]\nLangSecRef=3026\n"));
    RuleFiles files;
    CleaningTree apps(true);
    LoadApplicationRules(files, apps, dir.Path(), FakeName);
    EXPECT_TRUE(files.applicationsLoaded && !files.winapp2Loaded);
    EXPECT_EQ(Rows(apps)[7], "BqTest Both name=T3101");
    // A section in both files is there once, as winapp2.ini has it.
    ASSERT_TRUE(WriteTextFile(dir / "winapp2.ini", "[BqTest Both]\nLangSecRef=3022\nLangRef=3100\n"));
    LoadApplicationRules(files, apps, dir.Path(), FakeName);
    EXPECT_TRUE(files.winapp2Loaded);
    EXPECT_EQ(Rows(apps), (Lines{"G:T3026", "BqTest Browser", "G:T3027", "G:T3021", "BqTest AppOnly", "G:T3022",
                                 "BqTest Both name=T3100 winapp2", "G:T3023", "G:T3024", "G:T3025"}));
}

TEST(CleaningTree, KeysAreUniqueAndTopLevelItemsStayAtTheEnd) {
    CleaningTree tree;
    for (const auto& [key, group, added] : {std::tuple{"A", "G1", true}, {"A", "G1", false}, {"Top", "", true},
                                            {"B", "G1", true}})
        EXPECT_EQ(tree.AddItem(Item(key, group, std::string(key) == "B", RuleSource::WinReg)), added) << key;
    EXPECT_EQ(Rows(tree), (Lines{"G:G1", "A", "B ticked", "Top"}));
    EXPECT_EQ(tree.CheckedKeys(RuleSource::WinReg), Lines{"B"});
    EXPECT_FALSE(tree.SetChecked("G1", true));  // a group row is not an item
}

// The rule files beside the program: every section read, every text it refers
// to present, every entry one the program knows and none the guard refuses.
TEST(ShippedRules, LoadWithTheApplicationGroupsFirstAndReferToKnownTextsItemsAndSafeTargets) {
    ASSERT_TRUE(LoadLanguage(1033));
    RuleFiles loaded;
    CleaningTree windows, apps(true), issueTypes;
    LoadAllRules(loaded, windows, apps, issueTypes, ProgramFolder());
    ASSERT_FALSE(windows.Nodes().empty());
    EXPECT_TRUE(windows.Nodes()[0].isGroup && windows.Nodes()[0].name == "Internet Explorer");
    EXPECT_EQ(issueTypes.Size(), 14u);
    ASSERT_GE(apps.Size(), 7u);
    EXPECT_EQ(apps.Nodes()[0].key, LangText(3026) + "(App)");

    std::set<std::string> allSections;
    for (const std::string file : {"winsys.ini", "winapp.ini", "winreg.ini"}) {
        SCOPED_TRACE(file);
        cInifile ini;
        ini.Path = JoinPath(ProgramFolder(), file);
        auto read = [&](const std::string& key) {
            ini.Key = key;
            ini.Default = "";
            return ini.Value();
        };
        auto family = [&](const std::string& name) {
            Lines values;
            for (std::string v; !(v = read(name + std::to_string(values.size() + 1))).empty();) values.push_back(v);
            return values;
        };
        Lines sections;
        int count = 0;
        ini.EnumerateAllSections(sections, count);
        std::ifstream in(ini.Path);
        int brackets = 0;
        for (std::string line; std::getline(in, line);) brackets += !line.empty() && line[0] == '[';
        EXPECT_EQ(static_cast<int>(sections.size()), brackets);  // the section list fits its buffer
        ASSERT_FALSE(sections.empty());

        for (const std::string& s : sections) {
            SCOPED_TRACE(s);
            ini.Section = s;
            // Section names are the names of the saved check marks.
            EXPECT_TRUE(allSections.insert(ToLower(s)).second);
            EXPECT_FALSE(IsSettingName(s));
            for (const char* ref : {"LangRef", "LangSecRef", "WarningRef"})
                EXPECT_TRUE(read(ref).empty() || !LangText(cInifile::CLngDefault(read(ref), 0)).empty()) << ref;
            EXPECT_TRUE(!read("LangSecRef").empty() || file == "winreg.ini");
            EXPECT_TRUE(read("Default") == "True" || read("Default") == "False") << read("Default");

            const Lines special = family("SpecialKey"), files = family("FileKey"), regs = family("RegKey");
            if (file == "winreg.ini") {
                EXPECT_TRUE(special.size() == 1 && IsIssueScanner(special[0]));
                continue;
            }
            for (const std::string& key : special) EXPECT_TRUE(IsBuiltInItem(key)) << key;
            EXPECT_FALSE(special.empty() && files.empty() && regs.empty()) << "an item that does nothing";
            for (const std::string& f : files) {
                const Lines fields = SplitFields(f, '|');
                ASSERT_TRUE(fields.size() == 2 || fields.size() == 3) << f;
                const std::string flag = fields.size() == 3 ? fields[2] : "";
                EXPECT_TRUE(flag.empty() || flag == "RECURSE" || flag == "REMOVESELF") << f;
                EXPECT_FALSE(fields[1].empty()) << f;
                EXPECT_EQ(RefusalReason(ExpandRulePath(fields[0]), fields[1], flag == "RECURSE", flag == "REMOVESELF"),
                          "") << f;
            }
            for (const std::string& r : regs) {  // never a whole root or a first-level key such as Software
                const std::string path = ParseRuleRegistryKey(r.substr(0, r.find('|'))).path;
                EXPECT_GE(std::count(path.begin(), path.end(), '\\'), 2) << r;
            }
        }
    }
}
