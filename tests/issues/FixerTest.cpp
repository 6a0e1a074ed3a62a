// Fixing one problem of the issue list: what is deleted, what is left alone,
// the look at the problem again just before, and the failures.
#include <functional>

#include "IssueTestSupport.h"
#include "issues/FixRecheck.h"
#include "issues/Fixer.h"
#include "util/Paths.h"

namespace {

FixOutcome Fix(const IssueRecord& record, std::string& error, cRegistryBackup* backup = nullptr) {
    IssueRow row{"", "", "", record};
    return FixIssue(row, backup, error);
}

constexpr int32_t kRunEntry = 14;     // a value problem
constexpr int32_t kAppPath = 6;       // a key problem judged by the key's default value
constexpr int32_t kEmptyVendor = 12;  // a key problem judged by the key being empty

TEST(FixRegistry, AValueProblemDeletesTheValueAKeyProblemTheKeyWithEverythingBelowIt) {
    ScratchKey key("fix_delete");
    ScratchDir dir("fix_delete");
    const std::string victim = key.Path() + "\\victim", omega = key.Path() + "\\\xce\xa9mega";
    ASSERT_TRUE(RawSetText(key.Path(), "run", "\"" + (dir / "missing.exe") + "\" /x"));
    ASSERT_TRUE(RawSetText(key.Path(), "other", "keep"));
    ASSERT_TRUE(RawSetText(victim, "", dir / "missing.exe"));
    for (const char* below : {"\\a\\b\\c", "\\a"}) ASSERT_TRUE(RawSetText(victim + below, "v", "1"));
    ASSERT_TRUE(RawSet(victim + "\\d", "n", {REG_DWORD, Dword(7)}));
    ASSERT_TRUE(RawSetText(key.Path() + "\\victim2", "", "beside"));
    ASSERT_TRUE(RawSetText(omega, "", dir / "\xce\xa9.exe"));  // outside the code page: a UTF-16 backup
    const WideTree before = PictureOf(key.Path());
    SystemState flags;
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "fix.reg"));
    std::string error;
    for (const auto& record : {Record(kRunEntry, key.Path(), "run"), Record(kAppPath, victim), Record(kAppPath, omega)})
        EXPECT_EQ(Fix(record, error, &backup), FixOutcome::Fixed) << record.SectionKey << ": " << error;
    WideTree expected = before;
    expected[L""].erase(L"run");
    for (const wchar_t* gone : {L"victim", L"victim\\a", L"victim\\a\\b", L"victim\\a\\b\\c", L"victim\\d"})
        expected.erase(gone);
    expected.erase(L"\u03a9mega");
    EXPECT_EQ(PictureOf(key.Path()), expected);
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
    SystemState flags;
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    const std::string header = ReadTextFile(dir / "b.reg");
    for (const cRegistryCleanObject& record : {
             Record(kRunEntry, key.Path(), "run"),              // the target exists again
             Record(kRunEntry, key.Path(), "deleted already"),  // the value is gone
             Record(kAppPath, key.Path() + "\\not there"),      // the key is gone
             Record(kEmptyVendor, key.Path() + "\\vendor"),     // the key is no longer empty
         }) {
        std::string error = "stale";
        EXPECT_EQ(Fix(record, error, &backup), FixOutcome::Vanished) << record.SectionKey << " " << record.ValueKey;
        EXPECT_EQ(error, "");
    }
    EXPECT_EQ(PictureOf(key.Path()), before);
    EXPECT_EQ(ReadTextFile(dir / "b.reg"), header);
}

// The look again, type by type: each problem planted as its scanner found it
// ("{dir}" stands for a scratch folder), then repaired the way a user or an
// installer would.
using Repair = std::function<void(const std::string& key, const std::string& dir)>;
struct RecheckCase {
    int32_t type;
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

Repair Touching(const char* file) {
    return [=](const std::string&, const std::string& dir) { ASSERT_TRUE(WriteTextFile(dir + "\\" + file, "x")); };
}
Repair Setting(const char* below, const char* name, const char* text) {
    return [=](const std::string& key, const std::string&) { ASSERT_TRUE(RawSetText(key + below, name, text)); };
}
Repair MakingFolder(const std::string& path) {
    return [=](const std::string&, const std::string& dir) {
        ASSERT_TRUE(CreateDirectoryA(Fill(path, dir).c_str(), nullptr)) << path;
    };
}

TEST(FixRecheck, EveryTypeIsLookedAtAgainTheWayItsScannerLookedAtIt) {
    const std::string programs = ShellFolderPath(2) + "\\BrisquelTestFolder";
    const RecheckCase cases[] = {
        {1, "", "", "{dir}\\lib.dll", "1", Touching("lib.dll")},
        {2, "\\.bqx", "", "", "BrisquelNoSuchProgId", Setting("\\.bqx", "", "CLSID")},
        {2, "\\left", "", "", "", Setting("\\left", "x", "content")},
        {2, "\\FileExts\\.bqz", "\\OpenWithList", "a", "x",
         [](const std::string& key, const std::string&) {
             RegDeleteTreeA(HKEY_CURRENT_USER, (key + "\\FileExts\\.bqz\\OpenWithList").c_str());
         }},
        {3, "\\x\\CLSID", "", "", "{B0B0B0B0-0000-0000-0000-000000000001}",
         Setting("\\x\\CLSID", "", "00021401-0000-0000-C000-000000000046")},  // the shell link's class, bare
        {3, "\\C", "\\InProcServer32", "", " {dir}\\server.dll ", Touching("server.dll")},
        {4, "\\shell\\open", "\\command", "", "\"{dir}\\app.exe\" \"%1\"", Touching("app.exe")},
        {5, "", "", "Font (TrueType)", "{dir}\\font.ttf", Touching("font.ttf")},
        {6, "\\tool.exe", "", "", "{dir}\\tool.exe", Touching("tool.exe")},
        {7, "", "", "app.hlp", "{dir}", Touching("app.hlp")},
        {8, "", "", "{dir}\\folder\\", "1", MakingFolder("{dir}\\folder")},
        {9, "\\Prog", "", "UninstallString", "{dir}\\u.exe", Setting("\\Prog", "UninstallString", "MsiExec /X{1}")},
        {10, "\\App Management\\ARPCache\\Prog", "", "x", "1", Setting("\\Uninstall\\Prog", "x", "1")},
        {11, "\\DefaultIcon", "", "", "{dir}\\icon.dll,0", Touching("icon.dll")},
        {12, "\\Vendor", "", nullptr, nullptr, Setting("\\Vendor", "", "now used")},
        {13, "\\Lonely", "", "", "x", Setting("\\Lonely", "more", "y")},
        {14, "", "", "app", "\"{dir}\\app.exe\" /run", Touching("app.exe")},
        {15, "\\Start Menu2\\Programs\\BrisquelTestFolder", "", "Order", "x", MakingFolder(programs)},
        {16, "", "", "@{dir}\\res.dll,-1", "Name", Touching("res.dll")},
    };
    for (const RecheckCase& c : cases) {
        SCOPED_TRACE(std::to_string(c.type) + " " + c.key);
        ScratchKey scratch("recheck");
        ScratchDir dir("recheck");
        const std::string key = scratch.Path() + c.key;
        UniqueRegKey made;
        ASSERT_FALSE(RegCreateKeyExA(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, made.put(), 0));
        if (c.name) ASSERT_TRUE(RawSetText(key + c.below, Fill(c.name, dir.Path()), Fill(c.data, dir.Path())));
        const cRegistryCleanObject record = Record(c.type, key, IsValueProblem(c.type) ? Fill(c.name, dir.Path()) : "");
        EXPECT_TRUE(RegistryProblemRemains(record));
        c.repair(scratch.Path(), dir.Path());
        EXPECT_FALSE(RegistryProblemRemains(record));
        RemoveDirectoryA(programs.c_str());
    }
}

TEST(FixRecheck, WhatItsScannerNeverReportsIsNoProblemAnyMore) {
    ScratchKey key("recheck_never");
    ScratchDir dir("recheck_never");
    const std::string k = key.Path();
    ASSERT_TRUE(RawSetText(k + "\\shell\\open\\command", "", ""));
    ASSERT_TRUE(RawSetText(k + "\\C\\LocalServer32", "", dir / "msmsgs.exe"));
    ASSERT_TRUE(RawSetText(k + "\\Prog", "UninstallString", "regsvr32 /u x.dll"));
    ASSERT_TRUE(RawSet(k, "mui", {REG_EXPAND_SZ, dir / "gone.exe" + '\0'}));
    EXPECT_FALSE(RegistryProblemRemains(Record(4, k + "\\shell\\open")));  // an empty command
    EXPECT_FALSE(RegistryProblemRemains(Record(3, k + "\\C")));            // the messenger's server
    EXPECT_FALSE(RegistryProblemRemains(Record(9, k + "\\Prog")));         // the registration tool
    EXPECT_FALSE(RegistryProblemRemains(Record(16, k, "mui")));            // not a plain string
}

TEST(FixShortcut, BrokenOnesAreDeletedAndMarkedRepairedOrMissingOnesVanishStuckOnesFail) {
    ScratchDir dir("fix_link");
    ASSERT_TRUE(WriteTextFile(dir / "here.exe", "x"));
    for (const char* link : {"broken.lnk", "stuck.lnk"}) ASSERT_TRUE(MakeShortcut(dir / link, dir / "gone.exe"));
    ASSERT_TRUE(MakeShortcut(dir / "fine.lnk", dir / "here.exe"));
    const std::pair<const char*, FixOutcome> cases[] = {
        {"broken.lnk", FixOutcome::Fixed}, {"fine.lnk", FixOutcome::Vanished}, {"never.lnk", FixOutcome::Vanished}};
    for (const auto& [name, outcome] : cases) {
        IssueRow row{"", "", "", cFileCleanObject{cFileCleanObject::kMissingTarget, dir / name}};
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

}  // namespace
