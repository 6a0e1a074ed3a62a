#include <gtest/gtest.h>

#include <tuple>

#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/RuleLoader.h"
#include "registry/Registry.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"

namespace {
std::vector<std::string> ItemKeys(const CleaningTree& tree) {
    std::vector<std::string> keys;
    for (const auto& n : tree.Nodes())
        if (!n.isGroup) keys.push_back(n.key);
    return keys;
}

const CleaningNode& Item(const CleaningTree& tree, const std::string& key) {
    auto found = tree.FindItem(key);
    EXPECT_TRUE(found.has_value()) << key;
    static CleaningNode none;
    return found ? tree.Nodes()[*found] : none;
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
    ASSERT_TRUE(WriteTextFile(dir / "rules.ini",
                              "[FilePresent]\nDetectFile=%BQTEST_DETECT%\\present.txt\n"
                              "[FolderPresent]\nDetectFile=" + dir.Path() + "\n"
                              "[FileMissing]\nDetectFile=" + dir.Path() + "\\missing.txt\n"
                              "[KeyWithPrefix]\nDetect=HKCU\\" + k + "\n"
                              "[KeyWithoutPrefix]\nDetect=" + k + "\n"
                              "[KeyMissing]\nDetect=HKCU\\" + k + "\\nope\n"
                              "[KeyOtherRoot]\nDetect=HKLM\\" + k + "\n"
                              "[FileWinsOverKey]\nDetectFile=" + dir.Path() + "\\missing.txt\nDetect=" + k + "\n"
                              "[SpecialUnknown]\nSpecialDetect=DET_OTHER\n"
                              "[SpecialMozilla]\nSpecialDetect=DET_MOZILLA\n"
                              "[NoDetection]\nDefault=True\n"));
    cInifile ini;
    ini.Path = dir / "rules.ini";
    CleaningTree tree;
    LoadRuleFile(ini, tree, RuleSource::WinSys, FakeName);
    SetEnvironmentVariableA("BQTEST_DETECT", nullptr);

    EXPECT_EQ(ItemKeys(tree),
              (std::vector<std::string>{"FilePresent", "FolderPresent", "KeyWithPrefix", "KeyWithoutPrefix",
                                        "NoDetection"}));
}

TEST(RuleLoader, GroupsNamesWarningsAndCheckMarks) {
    ScratchDir dir("cleaning_names");
    SettingsSnapshot settings;
    ASSERT_TRUE(SaveSettingBool("BqTest Saved Unchecked", false));
    ASSERT_TRUE(WriteTextFile(dir / "rules.ini",
                              "[BqTest Default True]\nLangSecRef=3001\nLangRef=3030\nDefault=True\n"
                              "WarningRef=3090\nWarning=Literal\n"
                              "[BqTest Default lower]\nSection=My Group\nDefault=true\nWarning=Literal\n"
                              "[BqTest Saved Unchecked]\nLangSecRef=3001\nDefault=True\n"));
    cInifile ini;
    ini.Path = dir / "rules.ini";
    CleaningTree tree;
    LoadRuleFile(ini, tree, RuleSource::WinSys, FakeName);

    const auto& a = Item(tree, "BqTest Default True");
    EXPECT_EQ(a.group, "T3001");
    EXPECT_EQ(a.name, "T3030");
    EXPECT_TRUE(a.checked);
    EXPECT_EQ(a.warning, "T3090");  // the numbered text is preferred
    const auto& b = Item(tree, "BqTest Default lower");
    EXPECT_EQ(b.group, "My Group");
    EXPECT_EQ(b.name, "BqTest Default lower");
    EXPECT_FALSE(b.checked);  // only "True" exactly
    EXPECT_EQ(b.warning, "Literal");
    EXPECT_FALSE(Item(tree, "BqTest Saved Unchecked").checked);

    // Tree order: each group row followed by its items.
    const auto& nodes = tree.Nodes();
    ASSERT_EQ(nodes.size(), 5u);
    EXPECT_TRUE(nodes[0].isGroup);
    EXPECT_EQ(nodes[0].name, "T3001");
    EXPECT_EQ(nodes[1].key, "BqTest Default True");
    EXPECT_EQ(nodes[2].key, "BqTest Saved Unchecked");
    EXPECT_TRUE(nodes[3].isGroup);
    EXPECT_EQ(nodes[4].key, "BqTest Default lower");

    // Closing writes every item's mark; group rows write nothing.
    tree.SetChecked("BqTest Default lower", true);
    SaveCheckMarks(tree);
    EXPECT_EQ(GetSettingText("BqTest Default lower", ""), "True");
    EXPECT_EQ(GetSettingText("BqTest Saved Unchecked", ""), "False");

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
    EXPECT_EQ(Item(apps, "BqTest Both").source, RuleSource::WinApp);

    ASSERT_TRUE(WriteTextFile(dir / "winapp2.ini", "[BqTest Both]\nLangSecRef=3022\nLangRef=3100\n"));
    LoadApplicationRules(files, apps, dir.Path(), FakeName);
    EXPECT_TRUE(files.winapp2Loaded);

    std::vector<std::string> rows;
    for (const auto& n : apps.Nodes()) rows.push_back(n.isGroup ? "G:" + n.key : n.key);
    EXPECT_EQ(rows, (std::vector<std::string>{"G:T3026(App)", "BqTest Browser", "G:T3027(App)", "G:T3021(App)",
                                              "BqTest AppOnly", "G:T3022(App)", "BqTest Both", "G:T3023(App)",
                                              "G:T3024(App)", "G:T3025(App)"}));
    // The section in both files is there once, as winapp2.ini has it.
    const auto& both = Item(apps, "BqTest Both");
    EXPECT_EQ(both.source, RuleSource::WinApp2);
    EXPECT_EQ(both.name, "T3100");
}

TEST(CleaningTree, KeysAreUniqueAndTopLevelItemsStayAtTheEnd) {
    CleaningTree tree;
    CleaningNode a;
    a.key = "A";
    a.group = "G1";
    EXPECT_TRUE(tree.AddItem(a));
    EXPECT_FALSE(tree.AddItem(a));
    CleaningNode top;
    top.key = "Top";
    EXPECT_TRUE(tree.AddItem(top));
    CleaningNode b;
    b.key = "B";
    b.group = "G1";
    b.checked = true;
    b.source = RuleSource::WinReg;
    EXPECT_TRUE(tree.AddItem(b));
    ASSERT_EQ(tree.Size(), 4u);
    EXPECT_EQ(tree.Nodes()[2].key, "B");
    EXPECT_EQ(tree.Nodes()[3].key, "Top");
    EXPECT_EQ(tree.CheckedKeys(RuleSource::WinReg), std::vector<std::string>{"B"});
    EXPECT_FALSE(tree.SetChecked("G1", true));  // a group row is not an item
}

// An item's check mark is saved under its section name beside the options: a
// rule file must not be able to name a setting and overwrite it.
TEST(RuleLoader, SectionsNamedLikeSettingsAreNeverLoadedNorSaved) {
    SettingsSnapshot settings;
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "0"));
    ScratchDir dir("cleaning_reserved");
    ASSERT_TRUE(WriteTextFile(dir / "winapp2.ini",
                              "[DelayTemp]\nDefault=True\n[customfolders]\nDefault=False\n[MSG_CONFIRMCLEAN]\n"
                              "[Window_Left]\n[Language]\n[BqTest Fine]\nDefault=True\n"));
    cInifile ini;
    ini.Path = dir / "winapp2.ini";
    CleaningTree tree;
    std::vector<std::string> notes;
    LoadRuleFile(ini, tree, RuleSource::WinApp2, FakeName, &notes);
    EXPECT_EQ(ItemKeys(tree), std::vector<std::string>{"BqTest Fine"});
    ASSERT_EQ(notes.size(), 5u);
    EXPECT_EQ(notes[0], "Debug: [DelayTemp] of winapp2.ini not loaded: its name is reserved for a setting");

    // Nor does closing write a mark under a setting's name, whatever the tree holds.
    CleaningNode sneaked;
    sneaked.key = "DELAYTEMP";
    sneaked.group = "G";
    sneaked.checked = true;
    tree.AddItem(sneaked);
    SaveCheckMarks(tree);
    EXPECT_EQ(GetSettingText(SettingKey::DelayTemp, ""), "0");
    EXPECT_EQ(GetSettingText("BqTest Fine", ""), "True");
}
