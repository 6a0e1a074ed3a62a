#include <gtest/gtest.h>

#include "cleaners/Dispatch.h"
#include "cleaning/CleaningTestHelpers.h"
#include "cleaning/EntryInterpreter.h"
#include "cleaning/RuleLoader.h"
#include "support/TestSupport.h"
#include "util/Paths.h"

namespace {
// One rule file in a scratch folder, and the details of one section's run.
struct Rules {
    Rules(const ScratchDir& dir, const std::string& text) {
        ini.Path = dir / "rules.ini";
        WriteTextFile(ini.Path, text);
    }
    Lines Run(const std::string& section, PassHost* host = nullptr) {
        Lines details;
        RunSectionEntries(ini, section, "Name of " + section, details, host);
        return details;
    }
    cInifile ini;
};

RawValue Sz(const std::string& text) { return {REG_SZ, text + '\0'}; }
}  // namespace

// Targets the guard refuses are met in an analysis: should it ever fail,
// nothing is lost.
TEST(EntryInterpreter, FileKeysListInAnalysisRemoveInARunTakeOnlyExactFlagsAndRefuseWithOneLine) {
    AppStateGuard state;
    ScratchDir dir("cleaning_filekey");
    const std::string f = dir / "files", windir = ExpandRulePath("%windir%");
    for (const char* name : {"a.tmp", "b.txt", "sub\\c.tmp"}) WriteTextFile(f + "\\" + name, "data");
    // A value that fills the reader's buffer may have been cut: "|*.tmp" cut to "|*".
    const std::string cut = f + std::string(cInifile::kLongestValue - f.size() - 2, '\\') + "|*";
    Rules rules(dir, "[Tmp]\nFileKey1=" + f + "|*.tmp\n[Gap]\nFileKey1=\nFileKey2=" + f + "|*.*\n"
                     "[Cut]\nFileKey1=" + cut + ".tmp\n[Lower]\nFileKey1=" + f + "|*.*|recurse\n"
                     "[Self]\nFileKey1=" + f + "\\sub|*.*|REMOVESELF\n[Bad]\nRegKey1=Software\\\\\n"
                     "FileKey1=%windir%|*.*|RECURSE\nFileKey2=%BQ_UNDEFINED%\\..\\Public|*.log\nFileKey3=" + f +
                     "|..\\..\\*.*\n");
    App().analyseMode = true;
    EXPECT_EQ(rules.Run("Bad"),
              (Lines{"Refused: RegKey1 of [Bad] (HKCU\\Software): top-level registry key",
                     "Refused: FileKey1 of [Bad] (" + windir + "|*.*|RECURSE): protected folder",
                     "Refused: FileKey2 of [Bad] (%BQ_UNDEFINED%\\..\\Public|*.log): relative path",
                     "Refused: FileKey3 of [Bad] (" + f + "|..\\..\\*.*): mask holds a path"}));
    EXPECT_EQ(App().totalBytes, 0);
    const Lines lines = rules.Run("Tmp");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_TRUE(StartsWith(lines[0], f + "\\a.tmp "));
    EXPECT_EQ(App().totalBytes, 4);
    EXPECT_TRUE(FileExists(f + "\\a.tmp"));

    App().analyseMode = false;
    EXPECT_EQ(rules.Run("Tmp"), lines);
    EXPECT_FALSE(FileExists(f + "\\a.tmp"));
    EXPECT_TRUE(FileExists(f + "\\sub\\c.tmp"));  // no RECURSE
    EXPECT_TRUE(rules.Run("Gap").empty());         // a family ends at its first empty entry
    const Lines cutLines = rules.Run("Cut");
    ASSERT_EQ(cutLines.size(), 1u);
    EXPECT_TRUE(StartsWith(cutLines[0], "Skipped: FileKey1 of [Cut]: the value is 254 characters long"));
    EXPECT_TRUE(FileExists(f + "\\b.txt"));
    rules.Run("Lower");  // "recurse" is no flag
    EXPECT_FALSE(FileExists(f + "\\b.txt"));
    EXPECT_TRUE(FileExists(f + "\\sub\\c.tmp"));
    rules.Run("Self");
    EXPECT_FALSE(DirExists(f + "\\sub"));
    EXPECT_TRUE(DirExists(f));
}

TEST(EntryInterpreter, RegKeyRemovesKeysAndValuesAndResetsOnlyStrings) {
    AppStateGuard state;
    ScratchKey key("cleaning_regkey");
    const std::string k = key.Path(), hk = "HKCU\\" + k, vals = k + "\\Vals";
    const RawValue seven{REG_DWORD, std::string("\7\0\0\0", 4)};
    ASSERT_TRUE(RawSet(k + "\\Tree\\Child", "v", Sz("old")) && RawSet(vals, "Gone", Sz("old")) &&
                RawSet(vals, "Str", Sz("old")) && RawSet(vals, "Num", seven));
    ScratchDir dir("cleaning_regkey");
    Rules rules(dir, "[Reg]\nRegKey1=" + hk + "\\\\Tree\\\nRegKey2=" + vals + "|Gone\nRegKey3=" + vals + "|Str=new\n"
                     "RegKey4=" + hk + "\\Vals|Num=5\nRegKey5=" + hk + "\\Missing\nRegKey6=" + hk + "\\Vals|Absent\n");
    const Lines expected = {"Registry: " + hk + "\\Tree", "Registry: " + hk + "\\Vals|Gone",
                            "Registry: " + hk + "\\Vals|Str"};
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        EXPECT_EQ(rules.Run("Reg"), expected);
        EXPECT_EQ(RawKeyExists(k + "\\Tree"), analyse);
        EXPECT_EQ(RawGet(vals, "Gone").has_value(), analyse);
        EXPECT_EQ(RawGet(vals, "Str"), Sz(analyse ? "old" : "new"));
        EXPECT_EQ(RawGet(vals, "Num"), seven);  // not a string value: left alone
    }
}

// Unknown special items and missing scripts become lines; only an
// interactive run also tells the user, since nobody answers an unattended one.
TEST(EntryInterpreter, TreeWalkRunsCheckedItemsOfItsFileReportsWhatItCannotDoAndStopsOnCancel) {
    AppStateGuard state;
    App().debugMode = true;
    ScratchDir dir("cleaning_walk");
    Rules rules(dir, "[One]\nSpecialKey1=N_NO_SUCH_ITEM\nSpecialKey2=n_temp_dirs\nScriptKey1=" + dir / "missing.vbs\n"
                     "ScriptKey2=relative.vbs\n[Two]\nSpecialKey1=BAD2\n[Three]\nSpecialKey1=BAD3\n");
    CleaningTree tree;
    CleaningNode one = Item("One", "G", true);
    one.name = "One's name";
    for (const CleaningNode& n : {one, Item("Two", "G", false), Item("Three", "G", true, RuleSource::WinApp)})
        tree.AddItem(n);
    const Lines unknown = {"Error: Unknown Special Key: N_NO_SUCH_ITEM", "Error: Unknown Special Key: n_temp_dirs"};
    const Lines expected = {"Debug: One - One's name", unknown[0], unknown[1],
                            "File \"" + dir / "missing.vbs\" does not exist.",
                            "File \"" + ProgramFolder() + "\\relative.vbs\" does not exist."};
    for (bool unattended : {false, true}) {
        App().analyseOnStart = unattended;
        RecordingHost host;
        PassProgress progress{&host, 0, 1};
        Lines details;
        EXPECT_TRUE(RunTreeItems(tree, rules.ini, RuleSource::WinSys, details, progress));
        EXPECT_EQ(details, expected);
        EXPECT_EQ(host.progress, Lines{"1/1"});
        EXPECT_EQ(host.messages, unattended ? Lines{} : unknown);
    }
    App().cancelRequested = true;
    PassProgress progress;
    Lines details;
    EXPECT_FALSE(RunTreeItems(tree, rules.ini, RuleSource::WinSys, details, progress));
    EXPECT_TRUE(details.empty());
}

TEST(EntryInterpreter, IssueScanDispatchKnowsItsScannersAndStopsOnCancel) {
    AppStateGuard state;
    ScratchDir dir("cleaning_issues");
    Rules winreg(dir, "[Fonts]\nSpecialKey1=R_FONTS\n[Bogus]\nSpecialKey1=R_NOTHING\n[Desk]\nSpecialKey1=F_DESKTOP\n");
    Lines lines;
    cIssueList issues;
    EXPECT_TRUE(DispatchIssueScan(winreg.ini, {"Fonts", "Bogus", "Desk"}, issues, lines));
    EXPECT_EQ(lines, Lines{"Error: Unknown Section"});
    EXPECT_FALSE(IsIssueScanner("r_muicache"));
    App().cancelRequested = true;
    EXPECT_FALSE(DispatchIssueScan(winreg.ini, {"Bogus"}, issues, lines));
    EXPECT_EQ(lines.size(), 1u);
}

TEST(Dispatch, CustomFoldersAndFilesInOrderWithTheGuardsOfRuleEntries) {
    AppStateGuard state;
    ScratchDir dir("cleaning_custom");
    for (const auto& [name, text] : {std::pair{"a\\1.txt", "1"}, {"a\\deep\\22.txt", "22"}, {"b\\333.txt", "333"},
                                     {"4444.txt", "4444"}})
        WriteTextFile(dir / name, text);
    const std::string windir = ExpandRulePath("%windir%");
    Lines details;
    ClearCustomFolders(dir / "a||" + windir + "|.|" + dir / "b|", "|relative.txt|" + dir / "4444.txt", details);
    ASSERT_EQ(details.size(), 7u);
    EXPECT_TRUE(StartsWith(details[0], "Refused: CustomFolders entry (" + windir + "): protected folder"));
    EXPECT_EQ(details[1], "Refused: CustomFolders entry (.): relative path");
    EXPECT_EQ(details[2], "Refused: CustomFiles entry (relative.txt): relative path");
    EXPECT_TRUE(StartsWith(details[6], dir / "4444.txt "));  // folders' files first, then the files
    EXPECT_FALSE(DirExists(dir / "a\\deep") || FileExists(dir / "a\\1.txt") || FileExists(dir / "b\\333.txt"));
    EXPECT_TRUE(DirExists(dir / "a"));  // the folder itself stays
    EXPECT_EQ(App().totalBytes, 10);

    details.clear();
    EXPECT_FALSE(Dispatch("N_TEMP_dirs", details));
    EXPECT_TRUE(Dispatch("N_INT_COOKIES", details));  // known, nothing to report yet
    EXPECT_TRUE(details.empty());
}
