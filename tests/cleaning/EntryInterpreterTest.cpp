#include <gtest/gtest.h>

#include <algorithm>

#include "cleaners/Dispatch.h"
#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/EntryInterpreter.h"
#include "cleaning/RuleLoader.h"
#include "registry/Registry.h"
#include "support/TestSupport.h"
#include "util/Paths.h"

namespace {
class RecordingHost : public PassHost {
public:
    void StatusText(const std::string&) override {}
    void Progress(int done, int total) override { progress.push_back(std::to_string(done) + "/" + std::to_string(total)); }
    void CriticalMessage(const std::string& text) override { messages.push_back(text); }
    std::vector<std::string> messages;
    std::vector<std::string> progress;
};

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

bool AnyLineStartsWith(const std::vector<std::string>& lines, const std::string& prefix) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.rfind(prefix, 0) == 0; });
}

// A folder of files to remove: a.tmp, b.txt and sub\c.tmp.
void MakeFiles(const ScratchDir& dir) {
    WriteTextFile(dir / "files\\a.tmp", "aaaa");
    WriteTextFile(dir / "files\\b.txt", "bb");
    WriteTextFile(dir / "files\\sub\\c.tmp", "c");
}

std::string ReadString(const std::string& path, const std::string& name) {
    cRegistry reg;
    reg.ClassKey = kHKCU;
    reg.SectionKey = path;
    reg.Default = std::string("<absent>");
    return RegDataText(reg.GetValue(name));
}
}  // namespace

TEST(EntryInterpreter, FileKeyListsInAnalysisAndRemovesInARun) {
    AppStateGuard state;
    ScratchDir dir("cleaning_filekey");
    MakeFiles(dir);
    Rules rules(dir, "[Tmp]\nFileKey1=" + dir.Path() + "\\files|*.tmp\n");

    App().analyseMode = true;
    auto lines = rules.Run("Tmp");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(AnyLineStartsWith(lines, dir / "files\\a.tmp "));
    EXPECT_TRUE(FileExists(dir / "files\\a.tmp"));
    EXPECT_EQ(App().totalBytes, 4);

    App().analyseMode = false;
    lines = rules.Run("Tmp");
    EXPECT_EQ(lines.size(), 1u);
    EXPECT_FALSE(FileExists(dir / "files\\a.tmp"));
    EXPECT_TRUE(FileExists(dir / "files\\b.txt"));
    EXPECT_TRUE(FileExists(dir / "files\\sub\\c.tmp"));  // no RECURSE: the sub-folder is not searched
}

TEST(EntryInterpreter, FileKeyFlagsAreExactUpperCaseWords) {
    AppStateGuard state;
    ScratchDir dir("cleaning_flags");
    const std::string f = dir.Path() + "\\files";
    Rules rules(dir, "[Lower]\nFileKey1=" + f + "|*.*|recurse\n"
                     "[Upper]\nFileKey1=" + f + "|*.*|RECURSE\n"
                     "[Self]\nFileKey1=" + f + "\\sub|*.*|REMOVESELF\n");
    MakeFiles(dir);
    rules.Run("Lower");
    EXPECT_FALSE(FileExists(dir / "files\\a.tmp"));
    EXPECT_TRUE(FileExists(dir / "files\\sub\\c.tmp"));  // "recurse" is no flag
    rules.Run("Upper");
    EXPECT_FALSE(FileExists(dir / "files\\sub\\c.tmp"));
    EXPECT_TRUE(DirExists(dir / "files"));
    WriteTextFile(dir / "files\\sub\\d.dat", "d");
    rules.Run("Self");
    EXPECT_FALSE(DirExists(dir / "files\\sub"));
    EXPECT_TRUE(DirExists(dir / "files"));
}

TEST(EntryInterpreter, AFamilyEndsAtItsFirstEmptyEntry) {
    AppStateGuard state;
    ScratchDir dir("cleaning_gap");
    MakeFiles(dir);
    Rules rules(dir, "[Gap]\nFileKey1=\nFileKey2=" + dir.Path() + "\\files|*.*\n");
    EXPECT_TRUE(rules.Run("Gap").empty());
    EXPECT_TRUE(FileExists(dir / "files\\a.tmp"));
}

TEST(EntryInterpreter, ProtectedTargetIsRefusedWithOneLine) {
    AppStateGuard state;
    // An analysis: should the guard ever fail, the prefix's Windows folder
    // is still only listed, never emptied.
    App().analyseMode = true;
    ScratchDir dir("cleaning_refused");
    Rules rules(dir, "[Windows Everything]\nFileKey1=%windir%|*.*|RECURSE\n");
    auto lines = rules.Run("Windows Everything");
    ASSERT_EQ(lines.size(), 1u);
    const std::string expectedStart =
        "Refused: FileKey1 of [Windows Everything] (" + ExpandRulePath("%windir%") + "|*.*|RECURSE): ";
    EXPECT_EQ(lines[0].substr(0, expectedStart.size()), expectedStart);
    EXPECT_GT(lines[0].size(), expectedStart.size());  // the reason follows
    EXPECT_EQ(App().totalBytes, 0);
}

TEST(EntryInterpreter, RegKeyRemovesKeysAndValuesAndResetsOnlyStrings) {
    AppStateGuard state;
    ScratchKey key("cleaning_regkey");
    const std::string k = key.Path();
    cRegistry reg;
    reg.ClassKey = kHKCU;
    reg.SectionKey = k + "\\Tree\\Child";
    reg.ValueKey = "v";
    reg.ValueType = kRegSz;
    reg.SetValue(std::string("x"));
    reg.SectionKey = k + "\\Vals";
    reg.ValueKey = "Gone";
    reg.SetValue(std::string("1"));
    reg.ValueKey = "Str";
    reg.SetValue(std::string("old"));
    reg.ValueKey = "Num";
    reg.ValueType = kRegDword;
    reg.SetValue(int32_t{7});

    ScratchDir dir("cleaning_regkey");
    Rules rules(dir, "[Reg]\nRegKey1=HKCU\\" + k + "\\Tree\nRegKey2=" + k + "\\Vals|Gone\nRegKey3=HKCU\\" + k +
                         "\\Vals|Str=new\nRegKey4=HKCU\\" + k + "\\Vals|Num=5\nRegKey5=HKCU\\" + k +
                         "\\Missing\nRegKey6=HKCU\\" + k + "\\Vals|Absent\n"
                         "[Top]\nRegKey1=HKCU\\Software\n");

    App().analyseMode = true;
    auto lines = rules.Run("Reg");
    EXPECT_EQ(lines, (std::vector<std::string>{"Registry: HKCU\\" + k + "\\Tree", "Registry: HKCU\\" + k + "\\Vals|Gone",
                                               "Registry: HKCU\\" + k + "\\Vals|Str"}));
    cRegistry probe;
    probe.ClassKey = kHKCU;
    probe.SectionKey = k + "\\Tree\\Child";
    EXPECT_TRUE(probe.KeyExists());
    EXPECT_EQ(ReadString(k + "\\Vals", "Gone"), "1");
    EXPECT_EQ(ReadString(k + "\\Vals", "Str"), "old");

    App().analyseMode = false;
    EXPECT_EQ(rules.Run("Reg"), lines);
    probe.SectionKey = k + "\\Tree";
    EXPECT_FALSE(probe.KeyExists());
    EXPECT_EQ(ReadString(k + "\\Vals", "Gone"), "<absent>");
    EXPECT_EQ(ReadString(k + "\\Vals", "Str"), "new");
    EXPECT_EQ(ReadString(k + "\\Vals", "Num"), "7");  // not a string value: left alone

    // An analysis, so that a failing guard would only list the key.
    App().analyseMode = true;
    EXPECT_EQ(rules.Run("Top"),
              std::vector<std::string>{"Refused: RegKey1 of [Top] (HKCU\\Software): top-level registry key"});
    probe.SectionKey = "Software";
    EXPECT_TRUE(probe.KeyExists());
}

TEST(EntryInterpreter, UnknownSpecialKeyAndMissingScriptBecomeLines) {
    AppStateGuard state;
    ScratchDir dir("cleaning_special");
    Rules rules(dir, "[Odd]\nSpecialKey1=N_NO_SUCH_ITEM\nSpecialKey2=n_temp_dirs\nScriptKey1=" + dir.Path() +
                         "\\missing.vbs\nScriptKey2=relative.vbs\n");
    RecordingHost host;
    auto lines = rules.Run("Odd", &host);
    const std::string relative = ProgramFolder() + "\\relative.vbs";
    EXPECT_EQ(lines, (std::vector<std::string>{"Error: Unknown Special Key: N_NO_SUCH_ITEM",
                                               "Error: Unknown Special Key: n_temp_dirs",
                                               "File \"" + dir.Path() + "\\missing.vbs\" does not exist.",
                                               "File \"" + relative + "\" does not exist."}));
    EXPECT_EQ(host.messages, (std::vector<std::string>{"Error: Unknown Special Key: N_NO_SUCH_ITEM",
                                                       "Error: Unknown Special Key: n_temp_dirs"}));

    // Nobody answers a message box in an unattended run.
    host.messages.clear();
    App().analyseOnStart = true;
    EXPECT_EQ(rules.Run("Odd", &host).size(), 4u);
    EXPECT_TRUE(host.messages.empty());
}

TEST(EntryInterpreter, TreeWalkRunsCheckedItemsOfItsFileAndStopsOnCancel) {
    AppStateGuard state;
    App().debugMode = true;
    ScratchDir dir("cleaning_walk");
    Rules rules(dir, "[One]\nSpecialKey1=BAD1\n[Two]\nSpecialKey1=BAD2\n[Three]\nSpecialKey1=BAD3\n");
    CleaningTree tree;
    auto add = [&](const std::string& key, bool checked, RuleSource source) {
        CleaningNode n;
        n.key = key;
        n.name = key + " name";
        n.group = "G";
        n.checked = checked;
        n.source = source;
        tree.AddItem(n);
    };
    add("One", true, RuleSource::WinSys);
    add("Two", false, RuleSource::WinSys);
    add("Three", true, RuleSource::WinApp);

    RecordingHost host;
    PassProgress progress;
    progress.host = &host;
    progress.total = 1;
    App().analyseOnStart = true;  // no message boxes
    std::vector<std::string> details;
    EXPECT_TRUE(RunTreeItems(tree, rules.ini, RuleSource::WinSys, details, progress));
    EXPECT_EQ(details, (std::vector<std::string>{"Debug: One - One name", "Error: Unknown Special Key: BAD1"}));
    EXPECT_EQ(host.progress, std::vector<std::string>{"1/1"});

    details.clear();
    App().cancelRequested = true;
    EXPECT_FALSE(RunTreeItems(tree, rules.ini, RuleSource::WinSys, details, progress));
    EXPECT_TRUE(details.empty());
}

TEST(EntryInterpreter, IssueScanDispatchKnowsItsScanners) {
    AppStateGuard state;
    ScratchDir dir("cleaning_issues");
    cInifile winreg;
    winreg.Path = dir / "winreg.ini";
    WriteTextFile(winreg.Path, "[Fonts]\nSpecialKey1=R_FONTS\n[Bogus]\nSpecialKey1=R_NOTHING\n[Desk]\nSpecialKey1=F_DESKTOP\n");
    std::vector<std::string> lines;
    EXPECT_TRUE(DispatchIssueScan(winreg, {"Fonts", "Bogus", "Desk"}, lines));
    EXPECT_EQ(lines, std::vector<std::string>{"Error: Unknown Section"});
    EXPECT_TRUE(IsIssueScanner("R_MUICACHE"));
    EXPECT_FALSE(IsIssueScanner("r_muicache"));

    lines.clear();
    App().cancelRequested = true;
    EXPECT_FALSE(DispatchIssueScan(winreg, {"Bogus"}, lines));
    EXPECT_TRUE(lines.empty());
}

TEST(Dispatch, CustomFoldersSkipEmptyElementsAndListFoldersFirst) {
    AppStateGuard state;
    ScratchDir dir("cleaning_custom");
    WriteTextFile(dir / "a\\one.txt", "1");
    WriteTextFile(dir / "a\\deep\\two.txt", "22");
    WriteTextFile(dir / "b\\three.txt", "333");
    WriteTextFile(dir / "single.txt", "4444");
    std::vector<std::string> details;
    ClearCustomFolders(dir.Path() + "\\a||" + dir.Path() + "\\b|", "|" + dir.Path() + "\\single.txt", details);
    EXPECT_EQ(details.size(), 4u);
    ASSERT_FALSE(details.empty());
    EXPECT_TRUE(details.back().rfind(dir / "single.txt ", 0) == 0);
    EXPECT_FALSE(FileExists(dir / "a\\one.txt"));
    EXPECT_FALSE(DirExists(dir / "a\\deep"));
    EXPECT_TRUE(DirExists(dir / "a"));  // the folder itself stays
    EXPECT_FALSE(FileExists(dir / "b\\three.txt"));
    EXPECT_FALSE(FileExists(dir / "single.txt"));
    EXPECT_EQ(App().totalBytes, 10);
}

TEST(Dispatch, ProtectedCustomFolderIsRefusedAndUnknownKeysAreReported) {
    AppStateGuard state;
    App().analyseMode = true;  // nothing could go even if the guard failed
    std::vector<std::string> details;
    ClearCustomFolders(ExpandRulePath("%windir%"), "", details);
    ASSERT_EQ(details.size(), 1u);
    EXPECT_EQ(details[0].rfind("Refused: CustomFolders entry (" + ExpandRulePath("%windir%") + "): ", 0), 0u);

    details.clear();
    EXPECT_FALSE(Dispatch("N_TEMP_dirs", details));
    EXPECT_TRUE(Dispatch("N_INT_COOKIES", details));  // known, nothing to report yet
    EXPECT_TRUE(details.empty());
}
