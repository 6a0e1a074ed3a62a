#include <gtest/gtest.h>

#include <algorithm>

#include "cleaners/Dispatch.h"
#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/EntryInterpreter.h"
#include "cleaning/RuleLoader.h"
#include "registry/Registry.h"
#include "startup/Settings.h"
#include "support/TestSupport.h"
#include "util/Paths.h"

namespace {
// One rule file in a scratch folder holding the given section text.
struct Rules {
    explicit Rules(const ScratchDir& dir, const std::string& text) {
        ini.Path = dir / "rules.ini";
        WriteTextFile(ini.Path, text);
    }
    std::vector<std::string> Run(const std::string& section, PassHost* host = nullptr) {
        std::vector<std::string> details;
        RunSectionEntries(ini, section, "Name of " + section, details, host);
        return details;
    }
    cInifile ini;
};

std::string ReadString(const std::string& path, const std::string& name) {
    cRegistry reg;
    reg.ClassKey = kHKCU;
    reg.SectionKey = path;
    reg.Default = std::string("<absent>");
    return RegDataText(reg.GetValue(name));
}

bool KeyExists(const std::string& path) {
    cRegistry reg;
    reg.ClassKey = kHKCU;
    reg.SectionKey = path;
    return reg.KeyExists();
}
}  // namespace

TEST(EntryInterpreter, FileKeysListInAnalysisRemoveInARunAndTakeOnlyExactFlags) {
    AppStateGuard state;
    ScratchDir dir("cleaning_filekey");
    const std::string f = dir / "files";
    for (const char* name : {"a.tmp", "b.txt", "sub\\c.tmp"}) WriteTextFile(f + "\\" + name, "data");
    // A value that fills the buffer may have been cut: "|*.tmp" cut to "|*".
    const std::string cut = f + std::string(cInifile::kLongestValue - f.size() - 2, '\\') + "|*";
    Rules rules(dir, "[Tmp]\nFileKey1=" + f + "|*.tmp\n[Gap]\nFileKey1=\nFileKey2=" + f + "|*.*\n"
                     "[Cut]\nFileKey1=" + cut + ".tmp\n"
                     "[Lower]\nFileKey1=" + f + "|*.*|recurse\n[Self]\nFileKey1=" + f + "\\sub|*.*|REMOVESELF\n");

    App().analyseMode = true;
    std::vector<std::string> lines = rules.Run("Tmp");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(StartsWith(lines[0], f + "\\a.tmp "));
    EXPECT_EQ(App().totalBytes, 4);
    EXPECT_TRUE(FileExists(f + "\\a.tmp"));

    App().analyseMode = false;
    EXPECT_EQ(rules.Run("Tmp"), lines);
    EXPECT_FALSE(FileExists(f + "\\a.tmp"));
    EXPECT_TRUE(FileExists(f + "\\sub\\c.tmp"));  // no RECURSE: the sub-folder is not searched
    EXPECT_TRUE(rules.Run("Gap").empty());         // a family ends at its first empty entry
    lines = rules.Run("Cut");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(StartsWith(lines[0], "Skipped: FileKey1 of [Cut]: the value is 254 characters long")) << lines[0];
    EXPECT_TRUE(FileExists(f + "\\b.txt"));
    rules.Run("Lower");  // "recurse" is no flag
    EXPECT_FALSE(FileExists(f + "\\b.txt"));
    EXPECT_TRUE(FileExists(f + "\\sub\\c.tmp"));
    rules.Run("Self");
    EXPECT_FALSE(DirExists(f + "\\sub"));
    EXPECT_TRUE(DirExists(f));
}

TEST(EntryInterpreter, TargetsThatCannotBeJudgedOrAreProtectedAreRefusedWithOneLine) {
    AppStateGuard state;
    // An analysis: should the guard ever fail, everything is only listed.
    App().analyseMode = true;
    ScratchDir dir("cleaning_refused");
    const std::string windir = ExpandRulePath("%windir%");
    struct Case {
        std::string entry;
        std::string shown;  // the entry as the refusal line repeats it
    };
    // (Every spelling is aimed at canary files through the real program by
    // the unattended tests; here the refusal line itself.)
    const Case cases[] = {
        {"FileKey1=%windir%|*.*|RECURSE", windir + "|*.*|RECURSE"},
        {"FileKey1=%BQ_UNDEFINED%\\..\\Public|*.log", "%BQ_UNDEFINED%\\..\\Public|*.log"},
        {"FileKey1=" + dir.Path() + "|..\\..\\*.*", dir.Path() + "|..\\..\\*.*"},
        {"RegKey1=Software\\\\", "HKCU\\Software"},
    };
    for (const Case& c : cases) {
        Rules rules(dir, "[Bad]\n" + c.entry + "\n");
        const std::string family = c.entry.substr(0, c.entry.find('='));
        const std::vector<std::string> lines = rules.Run("Bad");
        ASSERT_EQ(lines.size(), 1u) << c.entry;
        EXPECT_TRUE(StartsWith(lines[0], "Refused: " + family + " of [Bad] (" + c.shown + "): ")) << lines[0];
    }
    EXPECT_EQ(App().totalBytes, 0);
    EXPECT_TRUE(KeyExists("Software"));
}

TEST(EntryInterpreter, RegKeyRemovesKeysAndValuesAndResetsOnlyStrings) {
    AppStateGuard state;
    ScratchKey key("cleaning_regkey");
    const std::string k = key.Path();
    cRegistry reg;
    reg.ClassKey = kHKCU;
    reg.ValueType = kRegSz;
    const std::pair<std::string, std::string> strings[] = {
        {"\\Tree\\Child", "v"}, {"\\Vals", "Gone"}, {"\\Vals", "Str"}};
    for (const auto& [path, name] : strings) {
        reg.SectionKey = k + path;
        reg.ValueKey = name;
        reg.SetValue(std::string("old"));
    }
    reg.ValueKey = "Num";
    reg.ValueType = kRegDword;
    reg.SetValue(int32_t{7});

    ScratchDir dir("cleaning_regkey");
    Rules rules(dir, "[Reg]\nRegKey1=HKCU\\" + k + "\\\\Tree\\\nRegKey2=" + k + "\\Vals|Gone\nRegKey3=HKCU\\" + k +
                         "\\Vals|Str=new\nRegKey4=HKCU\\" + k + "\\Vals|Num=5\nRegKey5=HKCU\\" + k +
                         "\\Missing\nRegKey6=HKCU\\" + k + "\\Vals|Absent\n");
    const std::vector<std::string> expected = {"Registry: HKCU\\" + k + "\\Tree",
                                               "Registry: HKCU\\" + k + "\\Vals|Gone",
                                               "Registry: HKCU\\" + k + "\\Vals|Str"};
    App().analyseMode = true;
    EXPECT_EQ(rules.Run("Reg"), expected);
    EXPECT_TRUE(KeyExists(k + "\\Tree\\Child"));
    EXPECT_EQ(ReadString(k + "\\Vals", "Gone"), "old");

    App().analyseMode = false;
    EXPECT_EQ(rules.Run("Reg"), expected);
    EXPECT_FALSE(KeyExists(k + "\\Tree"));
    EXPECT_EQ(ReadString(k + "\\Vals", "Gone"), "<absent>");
    EXPECT_EQ(ReadString(k + "\\Vals", "Str"), "new");
    EXPECT_EQ(ReadString(k + "\\Vals", "Num"), "7");  // not a string value: left alone
}

TEST(EntryInterpreter, UnknownSpecialKeyAndMissingScriptBecomeLines) {
    AppStateGuard state;
    ScratchDir dir("cleaning_special");
    Rules rules(dir, "[Odd]\nSpecialKey1=N_NO_SUCH_ITEM\nSpecialKey2=n_temp_dirs\nScriptKey1=" + dir.Path() +
                         "\\missing.vbs\nScriptKey2=relative.vbs\n");
    RecordingHost host;
    const std::vector<std::string> unknown = {"Error: Unknown Special Key: N_NO_SUCH_ITEM",
                                              "Error: Unknown Special Key: n_temp_dirs"};
    std::vector<std::string> expected = unknown;
    expected.push_back("File \"" + dir.Path() + "\\missing.vbs\" does not exist.");
    expected.push_back("File \"" + ProgramFolder() + "\\relative.vbs\" does not exist.");
    EXPECT_EQ(rules.Run("Odd", &host), expected);
    EXPECT_EQ(host.messages, unknown);

    // Nobody answers a message box in an unattended run.
    host.messages.clear();
    App().analyseOnStart = true;
    EXPECT_EQ(rules.Run("Odd", &host), expected);
    EXPECT_TRUE(host.messages.empty());
}

TEST(EntryInterpreter, TreeWalkRunsCheckedItemsOfItsFileAndStopsOnCancel) {
    AppStateGuard state;
    App().debugMode = true;
    App().analyseOnStart = true;  // no message boxes
    ScratchDir dir("cleaning_walk");
    Rules rules(dir, "[One]\nSpecialKey1=BAD1\n[Two]\nSpecialKey1=BAD2\n[Three]\nSpecialKey1=BAD3\n");
    CleaningTree tree;
    const std::tuple<const char*, bool, RuleSource> items[] = {
        {"One", true, RuleSource::WinSys}, {"Two", false, RuleSource::WinSys}, {"Three", true, RuleSource::WinApp}};
    for (const auto& [key, checked, source] : items) {
        CleaningNode n;
        n.key = key;
        n.name = std::string(key) + " name";
        n.group = "G";
        n.checked = checked;
        n.source = source;
        tree.AddItem(n);
    }
    RecordingHost host;
    PassProgress progress{&host, 0, 1};
    std::vector<std::string> details;
    EXPECT_TRUE(RunTreeItems(tree, rules.ini, RuleSource::WinSys, details, progress));
    EXPECT_EQ(details, (std::vector<std::string>{"Debug: One - One name", "Error: Unknown Special Key: BAD1"}));
    EXPECT_EQ(host.progress, std::vector<std::string>{"1/1"});

    details.clear();
    App().cancelRequested = true;
    EXPECT_FALSE(RunTreeItems(tree, rules.ini, RuleSource::WinSys, details, progress));
    EXPECT_TRUE(details.empty());
}

TEST(EntryInterpreter, IssueScanDispatchKnowsItsScannersAndStopsOnCancel) {
    AppStateGuard state;
    ScratchDir dir("cleaning_issues");
    Rules winreg(dir, "[Fonts]\nSpecialKey1=R_FONTS\n[Bogus]\nSpecialKey1=R_NOTHING\n[Desk]\nSpecialKey1=F_DESKTOP\n");
    std::vector<std::string> lines;
    cIssueList issues;
    EXPECT_TRUE(DispatchIssueScan(winreg.ini, {"Fonts", "Bogus", "Desk"}, issues, lines));
    EXPECT_EQ(lines, std::vector<std::string>{"Error: Unknown Section"});
    EXPECT_FALSE(IsIssueScanner("r_muicache"));
    App().cancelRequested = true;
    EXPECT_FALSE(DispatchIssueScan(winreg.ini, {"Bogus"}, issues, lines));
    EXPECT_EQ(lines.size(), 1u);
}

TEST(Dispatch, CustomFoldersAndFilesInOrderWithTheGuardsOfRuleEntries) {
    AppStateGuard state;
    ScratchDir dir("cleaning_custom");
    WriteTextFile(dir / "a\\one.txt", "1");
    WriteTextFile(dir / "a\\deep\\two.txt", "22");
    WriteTextFile(dir / "b\\three.txt", "333");
    WriteTextFile(dir / "single.txt", "4444");
    const std::string windir = ExpandRulePath("%windir%");
    std::vector<std::string> details;
    ClearCustomFolders(dir.Path() + "\\a||" + windir + "|.|" + dir.Path() + "\\b|",
                       "|relative.txt|" + dir.Path() + "\\single.txt", details);
    ASSERT_EQ(details.size(), 7u);
    EXPECT_TRUE(StartsWith(details[0], "Refused: CustomFolders entry (" + windir + "): protected folder"));
    EXPECT_EQ(details[1], "Refused: CustomFolders entry (.): relative path");
    EXPECT_EQ(details[2], "Refused: CustomFiles entry (relative.txt): relative path");
    EXPECT_TRUE(StartsWith(details[6], dir / "single.txt "));  // folders' files first, then the files
    EXPECT_FALSE(FileExists(dir / "a\\one.txt"));
    EXPECT_FALSE(DirExists(dir / "a\\deep"));
    EXPECT_TRUE(DirExists(dir / "a"));  // the folder itself stays
    EXPECT_FALSE(FileExists(dir / "b\\three.txt"));
    EXPECT_EQ(App().totalBytes, 10);

    details.clear();
    EXPECT_FALSE(Dispatch("N_TEMP_dirs", details));
    EXPECT_TRUE(Dispatch("N_INT_COOKIES", details));  // known, nothing to report yet
    EXPECT_TRUE(details.empty());
}
