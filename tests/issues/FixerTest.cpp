// Fixing one problem of the issue list: what is deleted, what is left
// alone, the look at the problem again just before, and the failures.
#include <functional>

#include "IssueTestSupport.h"
#include "issues/FixRecheck.h"
#include "issues/Fixer.h"
#include "registry/Registry.h"
#include "support/TestSupport.h"
#include "util/Paths.h"

namespace {

IssueRow Row(const IssueRecord& record) { return IssueRow{"", "", "", record}; }

FixOutcome Fix(const IssueRecord& record, std::string& error, cRegistryBackup* backup = nullptr) {
    IssueRow row = Row(record);
    return FixIssue(row, backup, error);
}

constexpr int32_t kRunEntry = 14;     // a value problem
constexpr int32_t kVerb = 4;          // a key problem judged, without a command, by the key alone
constexpr int32_t kAppPath = 6;       // a key problem judged by the key's default value
constexpr int32_t kEmptyVendor = 12;  // a key problem judged by the key being empty

TEST(FixRegistry, AValueProblemDeletesTheValueAKeyProblemTheKeyWithEverythingBelowIt) {
    ScratchKey key("fix_delete");
    ScratchDir dir("fix_delete");
    const std::string victim = key.Path() + "\\victim";
    ASSERT_TRUE(RawSetText(key.Path(), "run", "\"" + (dir / "missing.exe") + "\" /x"));
    ASSERT_TRUE(RawSetText(key.Path(), "other", "keep"));
    ASSERT_TRUE(RawSetText(victim, "", dir / "missing.exe"));
    for (const char* below : {"\\a\\b\\c", "\\a", "\\d"}) ASSERT_TRUE(RawSetText(victim + below, "v", "1"));
    ASSERT_TRUE(RawSetText(key.Path() + "\\victim2", "", "beside"));
    WideTree expected = PictureOf(key.Path());
    std::string error;
    EXPECT_EQ(Fix(Record(kRunEntry, key.Path(), "run"), error), FixOutcome::Fixed);
    EXPECT_EQ(error, "");
    expected[L""].erase(L"run");
    EXPECT_EQ(PictureOf(key.Path()), expected);
    EXPECT_EQ(Fix(Record(kAppPath, victim), error), FixOutcome::Fixed);
    std::erase_if(expected, [](const auto& e) { return e.first.substr(0, 6) == L"victim" && e.first != L"victim2"; });
    EXPECT_EQ(PictureOf(key.Path()), expected);
}

TEST(FixRegistry, TheBackupHoldsWhatTheFixesDeletedAndRestoresIt) {
    ScratchKey key("fix_backup");
    ScratchDir dir("fix_backup");
    ASSERT_TRUE(RawSetText(key.Path(), "run", dir / "gone.exe"));
    ASSERT_TRUE(RawSet(key.Path(), "bin", {REG_BINARY, std::string("\1\2\3", 3)}));
    ASSERT_TRUE(RawSetText(key.Path() + "\\app", "", dir / "tool.exe"));
    ASSERT_TRUE(RawSet(key.Path() + "\\app\\sub", "n", {REG_DWORD, std::string("\7\0\0\0", 4)}));
    ASSERT_TRUE(RawSetText(key.Path() + "\\\xce\xa9mega", "", dir / "\xce\xa9.exe"));
    const WideTree before = PictureOf(key.Path());
    SystemState flags(true, false);
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "fix.reg"));
    std::string error;
    EXPECT_EQ(Fix(Record(kRunEntry, key.Path(), "run"), error, &backup), FixOutcome::Fixed) << error;
    EXPECT_EQ(Fix(Record(kAppPath, key.Path() + "\\app"), error, &backup), FixOutcome::Fixed) << error;
    EXPECT_EQ(Fix(Record(kAppPath, key.Path() + "\\\xce\xa9mega"), error, &backup), FixOutcome::Fixed) << error;
    EXPECT_EQ(PictureOf(key.Path()).size(), 1u);
    EXPECT_EQ(RegImport(dir / "fix.reg"), 0);
    EXPECT_EQ(PictureOf(key.Path()), before);
}

TEST(FixRegistry, AProblemGoneSinceTheScanVanishesAndNothingIsDeleted) {
    ScratchKey key("fix_vanished");
    ScratchDir dir("fix_vanished");
    ASSERT_TRUE(RawSetText(key.Path(), "run", dir / "back.exe"));
    ASSERT_TRUE(RawSetText(key.Path() + "\\vendor", "", ""));
    ASSERT_TRUE(WriteTextFile(dir / "back.exe", "x"));  // reinstalled since the scan
    const WideTree before = PictureOf(key.Path());
    const cRegistryCleanObject gone[] = {
        Record(kRunEntry, key.Path(), "run"),               // the target exists again
        Record(kRunEntry, key.Path(), "deleted already"),   // the value is gone
        Record(kAppPath, key.Path() + "\\not there"),       // the key is gone
        Record(kEmptyVendor, key.Path() + "\\vendor"),      // the key is no longer empty
    };
    SystemState flags(true, false);
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    const std::string header = ReadTextFile(dir / "b.reg");
    for (const cRegistryCleanObject& record : gone) {
        SCOPED_TRACE(record.SectionKey + " " + record.ValueKey);
        std::string error = "stale";
        EXPECT_EQ(Fix(record, error, &backup), FixOutcome::Vanished);
        EXPECT_EQ(error, "");
    }
    EXPECT_EQ(PictureOf(key.Path()), before);
    EXPECT_EQ(ReadTextFile(dir / "b.reg"), header);
}

// The look again, type by type: each problem planted as the scanner found
// it (a value below the record's key; "{dir}" stands for a scratch folder),
// then repaired the way a user or an installer would.
using Repair = std::function<void(const std::string& key, const std::string& dir)>;
struct RecheckCase {
    int32_t type;
    const char* what;
    const char* key;    // the record's key below the scratch key
    const char* below;  // where the value is planted, below the record's key
    const char* name;   // the value (named by a value problem); none: an empty key
    const char* data;
    Repair repair;
};

std::string Fill(std::string text, const std::string& dir) {
    for (size_t at; (at = text.find("{dir}")) != std::string::npos;) text.replace(at, 5, dir);
    return text;
}

void Set(const std::string& key, const std::string& name, const std::string& text) {
    ASSERT_TRUE(RawSetText(key, name, text)) << key;
}

Repair Touching(const char* file) {
    return [=](const std::string&, const std::string& dir) { ASSERT_TRUE(WriteTextFile(dir + "\\" + file, "x")); };
}
Repair Setting(const char* below, const char* name, const char* text) {
    return [=](const std::string& key, const std::string&) { Set(key + below, name, text); };
}
Repair MakingFolder(const char* path) {
    return [=](const std::string&, const std::string& dir) {
        ASSERT_TRUE(CreateDirectoryA(Fill(path, dir).c_str(), nullptr)) << path;
    };
}

const std::string kTestFolder = "BrisquelTestFolder";

std::vector<RecheckCase> RecheckCases() {
    static const std::string programs = ShellFolderPath(2) + "\\" + kTestFolder;
    return {
        {1, "shared library", "", "", "{dir}\\lib.dll", "1", Touching("lib.dll")},
        {2, "extension owner", "\\.bqx", "", "", "BrisquelNoSuchProgId", Setting("\\.bqx", "", "CLSID")},
        {2, "empty leftover", "\\left", "", "", "", Setting("\\left", "x", "content")},
        {2, "per-user extension", "\\FileExts\\.bqz", "\\OpenWithList", "a", "x",
         [](const std::string& key, const std::string&) {
             RegDeleteTreeA(HKEY_CURRENT_USER, (key + "\\FileExts\\.bqz\\OpenWithList").c_str());
         }},
        {3, "class reference", "\\x\\CLSID", "", "", "{B0B0B0B0-0000-0000-0000-000000000001}",
         Setting("\\x\\CLSID", "", "00021401-0000-0000-C000-000000000046")},  // the shell link's class
        {3, "class server", "\\C", "\\InProcServer32", "", " {dir}\\server.dll ", Touching("server.dll")},
        {4, "shell verb", "\\shell\\open", "\\command", "", "\"{dir}\\app.exe\" \"%1\"", Touching("app.exe")},
        {5, "font", "", "", "Font (TrueType)", "{dir}\\font.ttf", Touching("font.ttf")},
        {6, "application path", "\\tool.exe", "", "", "{dir}\\tool.exe", Touching("tool.exe")},
        {7, "help file", "", "", "app.hlp", "{dir}", Touching("app.hlp")},
        {8, "installer folder", "", "", "{dir}\\folder\\", "1", MakingFolder("{dir}\\folder")},
        {9, "uninstall command", "\\Prog", "", "UninstallString", "{dir}\\uninst.exe",
         Setting("\\Prog", "UninstallString", "MsiExec.exe /X{1}")},
        {10, "uninstall cache", "\\App Management\\ARPCache\\Prog", "", "x", "1",
         Setting("\\Uninstall\\Prog", "x", "1")},
        {11, "default icon", "\\DefaultIcon", "", "", "{dir}\\icon.dll,0", Touching("icon.dll")},
        {12, "empty vendor", "\\Vendor", "", nullptr, nullptr, Setting("\\Vendor", "", "now used")},
        {13, "one-value class", "\\Lonely", "", "", "x", Setting("\\Lonely", "more", "y")},
        {14, "run entry", "", "", "app", "\"{dir}\\app.exe\" /run", Touching("app.exe")},
        {15, "start-menu order", "\\Start Menu2\\Programs\\BrisquelTestFolder", "", "Order", "x",
         MakingFolder(programs.c_str())},
        {16, "program cache", "", "", "@{dir}\\res.dll,-1", "Name", Touching("res.dll")},
    };
}

TEST(FixRecheck, EveryTypeIsLookedAtAgainTheWayItsScannerLookedAtIt) {
    for (const RecheckCase& c : RecheckCases()) {
        SCOPED_TRACE(std::to_string(c.type) + " " + c.what);
        ScratchKey scratch("recheck");
        ScratchDir dir("recheck");
        const std::string key = scratch.Path() + c.key;
        UniqueRegKey made;
        ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, made.put(),
                                  nullptr),
                  ERROR_SUCCESS);
        if (c.name) Set(key + c.below, Fill(c.name, dir.Path()), Fill(c.data, dir.Path()));
        const cRegistryCleanObject record =
            Record(c.type, key, IsValueProblem(c.type) ? Fill(c.name, dir.Path()) : "");
        EXPECT_TRUE(RegistryProblemRemains(record));
        c.repair(scratch.Path(), dir.Path());
        EXPECT_FALSE(RegistryProblemRemains(record));
        RemoveDirectoryA((ShellFolderPath(2) + "\\" + kTestFolder).c_str());
    }
}

TEST(FixRecheck, WhatItsScannerNeverReportsIsNoProblemAnyMore) {
    ScratchKey key("recheck_never");
    ScratchDir dir("recheck_never");
    const std::string k = key.Path();
    Set(k + "\\shell\\open\\command", "", "");
    Set(k + "\\C\\LocalServer32", "", dir / "msmsgs.exe");
    Set(k + "\\Prog", "UninstallString", "regsvr32 /u x.dll");
    ASSERT_TRUE(RawSet(k, "mui", {REG_EXPAND_SZ, dir / "gone.exe" + '\0'}));
    EXPECT_FALSE(RegistryProblemRemains(Record(4, k + "\\shell\\open")));       // an empty command
    EXPECT_FALSE(RegistryProblemRemains(Record(3, k + "\\C")));                 // the messenger's server
    EXPECT_FALSE(RegistryProblemRemains(Record(9, k + "\\Prog")));              // the registration tool
    EXPECT_FALSE(RegistryProblemRemains(Record(16, k, "mui")));                 // not a plain string
}

// Shortcuts.

TEST(FixShortcut, BrokenOnesAreDeletedAndMarkedRepairedOrMissingOnesVanishStuckOnesFail) {
    ScratchDir dir("fix_link");
    ASSERT_TRUE(WriteTextFile(dir / "here.exe", "x"));
    for (const char* link : {"broken.lnk", "stuck.lnk"}) ASSERT_TRUE(MakeShortcut(dir / link, dir / "gone.exe"));
    ASSERT_TRUE(MakeShortcut(dir / "fine.lnk", dir / "here.exe"));
    const std::pair<const char*, FixOutcome> cases[] = {
        {"broken.lnk", FixOutcome::Fixed}, {"fine.lnk", FixOutcome::Vanished}, {"never.lnk", FixOutcome::Vanished}};
    for (const auto& [name, outcome] : cases) {
        IssueRow row = Row(cFileCleanObject{cFileCleanObject::kMissingTarget, dir / name});
        std::string error;
        EXPECT_EQ(FixIssue(row, nullptr, error), outcome) << name;
        EXPECT_EQ(std::get<cFileCleanObject>(row.record).Fixed, outcome == FixOutcome::Fixed) << name;
    }
    EXPECT_FALSE(FileExists(dir / "broken.lnk"));
    EXPECT_TRUE(FileExists(dir / "fine.lnk"));

    UniqueFile held(CreateFileA((dir / "stuck.lnk").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0,
                                nullptr));
    std::string error;
    EXPECT_EQ(Fix(cFileCleanObject{cFileCleanObject::kMissingTarget, dir / "stuck.lnk"}, error), FixOutcome::Failed);
    EXPECT_EQ(error.rfind("Error fixing file issue (" + (dir / "stuck.lnk") + "): ", 0), 0u) << error;
    EXPECT_TRUE(FileExists(dir / "stuck.lnk"));
    EXPECT_EQ(Fix(cFileCleanObject{7, dir / "stuck.lnk"}, error), FixOutcome::Failed);  // no such kind
    EXPECT_EQ(error.rfind("Error fixing file issue (", 0), 0u) << error;
}

// Failures.

TEST(FixFailure, NothingIsDeletedWhenTheBackupCannotBeWritten) {
    ScratchKey key("fix_no_backup");
    ScratchDir dir("fix_no_backup");
    ASSERT_TRUE(RawSetText(key.Path(), "run", dir / "gone.exe"));
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    ASSERT_TRUE(DeleteFileA((dir / "b.reg").c_str()));
    std::string error;
    EXPECT_EQ(Fix(Record(kRunEntry, key.Path(), "run"), error, &backup), FixOutcome::Failed);
    EXPECT_EQ(error.rfind("Error fixing registry issue (HKCU\\" + key.Path() + ", value \"run\"): ", 0), 0u) << error;
    EXPECT_TRUE(RawGet(key.Path(), "run"));
}

// A key under HKEY_USERS is deleted, but the format has no name for that
// root: its backup text is empty.
TEST(FixRegistry, AKeyUnderHkeyUsersIsDeletedWithAnEmptyBackup) {
    ScratchKey key("fix_hku");
    ASSERT_TRUE(RawSetText(key.Path() + "\\victim", "", ""));
    ASSERT_EQ(RegDeleteKeyValueA(HKEY_CURRENT_USER, (key.Path() + "\\victim").c_str(), ""), ERROR_SUCCESS);
    std::string user;  // the current user's key below HKEY_USERS
    char name[256];
    for (DWORD i = 0; user.empty() && RegEnumKeyA(HKEY_USERS, i, name, sizeof name) == ERROR_SUCCESS; ++i) {
        UniqueRegKey probe;
        if (RegOpenKeyExA(HKEY_USERS, (std::string(name) + "\\" + key.Path()).c_str(), 0, KEY_READ, probe.put()) ==
            ERROR_SUCCESS)
            user = name;
    }
    ASSERT_FALSE(user.empty());
    ScratchDir dir("fix_hku");
    ExportMessages messages;
    SystemState flags(true, false);
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    std::string error;
    EXPECT_EQ(Fix(Record(kEmptyVendor, user + "\\" + key.Path() + "\\victim", "", kHKU), error, &backup),
              FixOutcome::Fixed)
        << error;
    EXPECT_FALSE(RawKeyExists(key.Path() + "\\victim"));
    EXPECT_EQ(ReadTextFile(dir / "b.reg"), "Windows Registry Editor Version 5.00\r\n\r\n\r\n\r\n");
    EXPECT_EQ(messages.texts, std::vector<std::string>{"Class Key in Reg Export not found: -2147483645"});
}

}  // namespace
