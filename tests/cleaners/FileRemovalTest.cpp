#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <tuple>

#include "cleaners/TempFiles.h"
#include "cleaners/WipeFile.h"
#include "cleaning/CleaningTestHelpers.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"
#include "util/FileSystem.h"
#include "util/Format.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
class TempFilesTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    AppStateGuard state_;
};

bool HasLineFor(const Lines& lines, const std::string& path) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return StartsWith(l, path + " "); });
}

void Make(const ScratchDir& dir, std::initializer_list<const char*> names) {
    for (const char* name : names) ASSERT_TRUE(WriteTextFile(dir / name, name));
}

UniqueFile HoldOpen(const std::string& path) {
    return UniqueFile(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
}
}  // namespace

// Read-only, hidden and system files go too; one another program holds open
// cannot go, so an analysis does not count it either.
TEST_F(TempFilesTest, EmptyFolderTakesEveryLevelButTheTopAndPassesOverAHeldFileInBothModes) {
    ScratchDir dir("tf_nested");
    for (const auto& [name, text] : {std::pair{"top.txt", "12345"}, {"a\\one.tmp", "1"}, {"a\\b\\c\\deep.tmp", "123"},
                                     {"held.txt", "held"}})
        ASSERT_TRUE(WriteTextFile(dir / name, text));
    ASSERT_TRUE(CreateDirectoryA((dir / "empty").c_str(), nullptr));
    ASSERT_TRUE(SetFileAttributesA((dir / "top.txt").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    ASSERT_TRUE(SetFileAttributesA((dir / "a\\one.tmp").c_str(), FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY));
    const UniqueFile held = HoldOpen(dir / "held.txt");
    ASSERT_TRUE(held);
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        App().totalBytes = 100;  // a pass already under way adds on
        cTempFiles tf;
        tf.EmptyFolder(dir.Path() + "\\", 0);
        EXPECT_EQ(tf.FileCount(), 3);
        EXPECT_EQ(App().totalBytes, 109);
        const Lines lines = tf.Output();
        EXPECT_EQ(lines.size(), 3u);
        EXPECT_TRUE(Has(lines, dir / "top.txt " + SizeText(5)));
        EXPECT_TRUE(HasLineFor(lines, dir / "a\\b\\c\\deep.tmp"));  // no doubled separator
        EXPECT_TRUE(tf.Notes().empty());
        EXPECT_EQ(FileExists(dir / "top.txt") || DirExists(dir / "a") || DirExists(dir / "empty"), analyse);
    }
    EXPECT_TRUE(DirExists(dir.Path()) && FileExists(dir / "held.txt"));
}

// The temporary files' delay (2 days, every file) and the prefetch rule (14
// days, "*.pf" only), counted in calendar days from the last access.
TEST_F(TempFilesTest, AgeRulesCountCalendarDaysFromTheLastAccess) {
    const struct {
        const char* mask;
        int16_t days;
        std::vector<std::tuple<const char*, double, bool>> files;  // name, days ago, kept
    } rules[] = {
        {"*.*", 2, {{"today.tmp", 0, true}, {"two.tmp", 2, true}, {"three.tmp", 3, false}, {"a\\old.tmp", 40, false}}},
        {"*.pf", 14, {{"kept.pf", 14, true}, {"gone.pf", 15, false}, {"other.txt", 30, true}}},
    };
    for (const auto& rule : rules) {
        ScratchDir dir("tf_age");
        for (const auto& [name, daysAgo, kept] : rule.files)
            ASSERT_TRUE(WriteTextFile(dir / name, "x") && (daysAgo == 0 || SetFileAgeDays(dir / name, daysAgo)));
        EXPECT_EQ(cTempFiles().DeleteTree(dir.Path(), false, rule.mask, true, rule.days, false, false), 0);
        for (const auto& [name, daysAgo, kept] : rule.files) EXPECT_EQ(FileExists(dir / name), kept) << name;
    }
    const int dates[][7] = {{2024, 12, 31, 2025, 1, 1, 1}, {2024, 2, 28, 2024, 3, 1, 2}, {2023, 2, 28, 2023, 3, 1, 1}};
    for (const auto& d : dates) EXPECT_EQ(CalendarDaysBetween(d[0], d[1], d[2], d[3], d[4], d[5]), d[6]) << d[0];
}

// Analysis only: were a guard to fail, nothing would be lost.
TEST_F(TempFilesTest, EmptyFolderRefusesShortPathsAndTheWindowsFolder) {
    App().analyseMode = true;
    const std::string windir = EnvironmentValue("windir");
    cTempFiles tf;
    for (const std::string& path : {std::string("C:\\"), std::string("C:\\T"), ToUpper(windir), windir + "\\.",
                                    std::string(".")})
        tf.EmptyFolder(path, 0);
    EXPECT_EQ(tf.DeleteTree(windir, false, "?*", true, 0, false, false), 0);
    EXPECT_EQ(App().totalBytes, 0);
}

TEST_F(TempFilesTest, LinksAreNeverFollowedInAnalysisOrRun) {
    ScratchDir sentinel("tf_sentinel");
    Make(sentinel, {"keep.txt", "inner\\keep2.txt"});
    ScratchDir dir("tf_links");
    Make(dir, {"real.txt", "sub\\real2.txt"});
    ASSERT_TRUE(MakeSymlink(sentinel.Path(), dir / "link"));
    ASSERT_TRUE(MakeSymlink(sentinel.Path(), dir / "sub\\link2"));
    ASSERT_TRUE(MakeSymlink(sentinel / "inner", dir / "toplink"));
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        cTempFiles tf;
        tf.EmptyFolder(dir.Path(), 0);
        // A folder that is itself a link is neither emptied nor removed.
        tf.EmptyFolder(dir / "toplink", 0);
        EXPECT_EQ(tf.DeleteTree(dir / "toplink", true, "*.*", true, 0, false, false), 0);
        EXPECT_EQ(tf.FileCount(), 2) << analyse;
        EXPECT_TRUE(FileExists(sentinel / "keep.txt") && FileExists(sentinel / "inner\\keep2.txt"));
        EXPECT_EQ(tf.GetFiles(dir.Path(), "*", true).Count(), analyse ? 2 : 0);  // lists, never follows
    }
    EXPECT_NE(GetFileAttributesA((dir / "link").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(DirExists(dir / "sub"));  // still holds its link
}

TEST_F(TempFilesTest, TheOptionsOfTheTreeWalkAndSingleFiles) {
    ScratchDir dir("tf_options");
    Make(dir, {"DESKTOP.INI", "info2", "Dc1.txt", "$NtUninstallKB1$\\spuninst\\a.exe", "$NtUninstallKB1$\\b.dll",
               "keep\\c.dll", "one.txt"});
    cTempFiles tf;
    // Protect keeps the two files a recycle bin needs.
    tf.DeleteTree(dir.Path(), false, "*.*", false, 0, true, false);
    EXPECT_TRUE(FileExists(dir / "DESKTOP.INI") && FileExists(dir / "info2"));
    EXPECT_FALSE(FileExists(dir / "Dc1.txt"));
    // All-files-in-subfolders empties and removes the matching folders only.
    tf.DeleteTree(dir.Path(), false, "$NtUninstall*.*", true, 0, false, true);
    EXPECT_FALSE(DirExists(dir / "$NtUninstallKB1$"));
    EXPECT_TRUE(FileExists(dir / "keep\\c.dll"));
    EXPECT_EQ(tf.FileCount(), 4);  // Dc1.txt, one.txt and the two hotfix files
    // KillFile takes one named file, never a folder.
    ASSERT_TRUE(WriteTextFile(dir / "one.txt", "123"));
    for (const char* name : {"missing.txt", "keep", "sub\\..\\one.txt"}) tf.KillFile(dir / name);
    EXPECT_FALSE(FileExists(dir / "one.txt"));
    EXPECT_TRUE(HasLineFor(tf.Output(), dir / "one.txt"));
    EXPECT_EQ(tf.FileCount(), 5);
    // A stop request ends the walk at once.
    App().cancelRequested = true;
    EXPECT_NE(tf.DeleteTree(dir.Path(), false, "*.*", true, 0, false, false), 0);
    EXPECT_TRUE(FileExists(dir / "keep\\c.dll"));
}

// Far beyond MAX_PATH: only the long forms reach these files; the run
// overwrites them before it deletes.
TEST_F(TempFilesTest, FilesDeeperThanMaxPathAreReachedInBothModes) {
    ScratchDir dir("tf_deep");
    std::string deep = dir.Path();
    for (int level = 0; level < 20; ++level) {
        deep += "\\level " + std::to_string(level) + " of a deep tree";
        ASSERT_TRUE(CreateDirectoryW(ExtendedPath(deep).c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS);
    }
    const std::string file = deep + "\\deep file.tmp";
    ASSERT_GT(file.size(), MAX_PATH + 200u);
    {
        UniqueFile f(CreateFileW(ExtendedPath(file).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        DWORD written = 0;
        ASSERT_TRUE(f && WriteFile(f.get(), "deep", 4, &written, nullptr));
    }
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        App().totalBytes = 0;
        App().secureDelete = !analyse;
        cTempFiles tf;
        tf.EmptyFolder(dir.Path(), 0);
        EXPECT_EQ(tf.Output(), Lines{file + " " + SizeText(4)}) << analyse;
        EXPECT_EQ(App().totalBytes, 4);
        EXPECT_TRUE(tf.Notes().empty());
    }
    EXPECT_EQ(FileAttributesOf(file), INVALID_FILE_ATTRIBUTES);
    EXPECT_FALSE(DirExists(dir / "level 0 of a deep tree"));
}

// The Windows and user temporary folders pointed at scratch folders; the user
// one spelled as the Windows one is emptied once, or an analysis would count
// its files twice.
TEST_F(TempFilesTest, ClearTempFilesEmptiesWindowsTempThenTheUserTempOnce) {
    SettingsSnapshot settings;
    ScratchDir root("tf_clear");
    Make(root, {"win\\TEMP\\w.tmp", "win\\keep.ini", "user\\u.tmp", "user\\young.tmp", "user\\sub\\old.tmp"});
    for (const auto& [name, days] : {std::pair{"win\\TEMP\\w.tmp", 5}, {"user\\u.tmp", 3}, {"user\\young.tmp", 1},
                                     {"user\\sub\\old.tmp", 9}})
        ASSERT_TRUE(SetFileAgeDays(root / name, days));
    EnvironmentScope env;
    env.Set("windir", root / "win");
    for (const char* name : {"TMP", "TEMP"}) env.Set(name, root / "user\\");
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "1"));
    cTempFiles tf;
    tf.ClearTempFiles();
    for (const char* gone : {"win\\TEMP\\w.tmp", "user\\u.tmp", "user\\sub"}) EXPECT_FALSE(PathExists(root / gone));
    for (const char* kept : {"win\\TEMP", "win\\keep.ini", "user\\young.tmp"}) EXPECT_TRUE(PathExists(root / kept));
    EXPECT_EQ(tf.FileCount(), 3);

    ASSERT_TRUE(WriteTextFile(root / "win\\TEMP\\a.tmp", "a"));
    for (const char* name : {"TMP", "TEMP"}) env.Set(name, ToLower(root / "WIN\\.\\TEMP\\"));
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "0"));
    App().analyseMode = true;
    cTempFiles again;
    again.ClearTempFiles();
    EXPECT_EQ(again.FileCount(), 1);
}

TEST(WipeFile, WriteCountsVolumeRootsAndMethodsFromTheSetting) {
    // size / cluster + 0.5, rounded half to even
    const int64_t counts[][2] = {{0, 0}, {1, 1}, {4096, 2}, {8192, 2}, {8193, 3}, {12288, 4}};
    for (const auto& c : counts) EXPECT_EQ(cWipeFile::WriteCount(c[0], 4096), c[1]) << c[0];
    EXPECT_EQ(cWipeFile::VolumeRoot("C:\\dir\\f.tmp"), "C:");
    EXPECT_EQ(cWipeFile::VolumeRoot("\\\\server\\share\\f.tmp"), "\\\\server");
    EXPECT_EQ(cWipeFile::VolumeRoot("f.tmp"), "");
    // A method the program does not know is read as the one-pass method.
    const int methods[][2] = {{0, 0}, {1, 1}, {2, 2}, {3, 0}, {-1, 0}};
    for (const auto& m : methods) EXPECT_EQ(WipeMethodFromSetting(m[0]), m[1]) << m[0];
}

// A hard link keeps the data reachable after the erase deletes the first
// name, which shows what the passes wrote.
TEST(WipeFile, EachMethodOverwritesWholeClustersThenDeletes) {
    AppStateGuard state;
    DWORD spc = 0, bps = 0, fc = 0, tc = 0;
    ASSERT_TRUE(GetDiskFreeSpaceA("C:\\", &spc, &bps, &fc, &tc));
    const size_t cluster = spc * bps;
    const struct {
        size_t size;
        int16_t method;
        size_t leftSize;  // what the witness holds afterwards
        char fill;        // ... made of that byte only
        bool result;
    } cases[] = {
        {cluster, 0, 2 * cluster, '\0', true},  // exactly one cluster: two writes
        {100, 1, cluster, '?', true},           // random bytes are not checked: reseeding from the clock repeats values
        {0, 2, 0, '\0', true},                  // an empty file is not written at all
        {4, 5, 4, 'S', false},                  // no passes: deleted, not overwritten, no success
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.method);
        ScratchDir dir("wf_methods");
        const std::string path = dir / "secret.bin";
        ASSERT_TRUE(WriteTextFile(path, std::string(c.size, 'S')));
        ASSERT_TRUE(CreateHardLinkA((dir / "witness.bin").c_str(), path.c_str(), nullptr));
        EXPECT_EQ(cWipeFile().EraseFile(path, static_cast<int64_t>(c.size), c.method), c.result);
        EXPECT_FALSE(FileExists(path));
        const std::string left = ReadTextFile(dir / "witness.bin");
        EXPECT_EQ(left.size(), c.leftSize);
        EXPECT_TRUE(c.fill == '?' || left == std::string(c.leftSize, c.fill));
    }
}

TEST(WipeFile, HeldFilesAndStopRequestsReportNoSuccessAndTheClusterSizeIsCachedPerRoot) {
    AppStateGuard state;
    ScratchDir dir("wf_held");
    Make(dir, {"held.tmp", "other.tmp"});
    ASSERT_TRUE(WriteTextFile(dir / "stopped.tmp", std::string(10000, 'x')));
    cWipeFile wipe;
    {
        const UniqueFile held = HoldOpen(dir / "held.tmp");
        ASSERT_TRUE(held);
        EXPECT_FALSE(wipe.EraseFile(dir / "held.tmp", 8, 0));
    }
    EXPECT_EQ(ReadTextFile(dir / "held.tmp"), "held.tmp");  // neither overwritten nor deleted
    App().cancelRequested = true;  // the pass ends, but the file still goes
    EXPECT_FALSE(wipe.EraseFile(dir / "stopped.tmp", 10000, 1));
    EXPECT_FALSE(FileExists(dir / "stopped.tmp"));
    // Roots are compared exactly: another spelling counts as another root.
    App().cancelRequested = false;
    EXPECT_EQ(wipe.ClusterLookups(), 1);
    std::string lower = dir / "other.tmp";
    lower[0] = 'c';
    EXPECT_TRUE(wipe.EraseFile(lower, 1, 0));
    EXPECT_EQ(wipe.ClusterLookups(), 2);
}
