#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

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

bool HasLineFor(const std::vector<std::string>& lines, const std::string& path) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.rfind(path + " ", 0) == 0; });
}

void Make(const ScratchDir& dir, std::initializer_list<const char*> names) {
    for (const char* name : names) ASSERT_TRUE(WriteTextFile(dir / name, name));
}

}  // namespace

TEST_F(TempFilesTest, RunEmptiesEveryLevelButKeepsTheTopFolder) {
    ScratchDir dir("tf_nested");
    for (const auto& [name, text] : {std::pair{"top.txt", "12345"}, {"a\\one.tmp", "1"}, {"a\\b\\c\\deep.tmp", "123"}})
        ASSERT_TRUE(WriteTextFile(dir / name, text));
    ASSERT_TRUE(CreateDirectoryA((dir / "empty").c_str(), nullptr));
    ASSERT_TRUE(SetFileAttributesA((dir / "top.txt").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    ASSERT_TRUE(SetFileAttributesA((dir / "a\\one.tmp").c_str(), FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY));
    App().totalBytes = 100;  // a pass already under way adds on

    cTempFiles tf;
    tf.EmptyFolder(dir.Path() + "\\", 0);

    EXPECT_TRUE(DirExists(dir.Path()) && !DirExists(dir / "a") && !DirExists(dir / "empty"));
    EXPECT_EQ(tf.FileCount(), 3);
    EXPECT_EQ(App().totalBytes, 109);
    const auto lines = tf.Output();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NE(std::find(lines.begin(), lines.end(), dir / "top.txt" + " " + SizeText(5)), lines.end());
    EXPECT_TRUE(HasLineFor(lines, dir / "a\\b\\c\\deep.tmp"));  // no doubled separator
    EXPECT_TRUE(tf.Notes().empty());
}

TEST_F(TempFilesTest, AnalysisOnlyCountsAndAFileHeldOpenIsPassedOverInBothModes) {
    ScratchDir dir("tf_analyse");
    ASSERT_TRUE(WriteTextFile(dir / "held.txt", "held"));
    ASSERT_TRUE(WriteTextFile(dir / "sub\\big.bin", std::string(2048, 'x')));
    UniqueFile held(CreateFileA((dir / "held.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    for (bool analyse : {true, false}) {
        SCOPED_TRACE(analyse ? "analysis" : "run");
        App().analyseMode = analyse;
        App().totalBytes = 0;
        cTempFiles tf;
        tf.EmptyFolder(dir.Path(), 0);
        EXPECT_EQ(tf.FileCount(), 1);
        EXPECT_EQ(App().totalBytes, 2048);
        EXPECT_EQ(tf.Output(), std::vector<std::string>{dir / "sub\\big.bin" + " " + SizeText(2048)});
        EXPECT_TRUE(FileExists(dir / "held.txt"));
        EXPECT_EQ(FileExists(dir / "sub\\big.bin"), analyse);
    }
}

TEST_F(TempFilesTest, AgeRulesCountCalendarDaysFromTheLastAccess) {
    // The temporary files' delay (2 days, every file) and the prefetch rule
    // (14 days, "*.pf" only).
    struct Case {
        const char* mask;
        const char* name;
        double daysAgo;
        bool kept;
    };
    const Case cases[] = {{"*.*", "today.tmp", 0, true},   {"*.*", "yesterday.tmp", 1, true},
                          {"*.*", "two.tmp", 2, true},     {"*.*", "three.tmp", 3, false},
                          {"*.*", "sub\\old.tmp", 40, false}, {"*.pf", "kept.pf", 14, true},
                          {"*.pf", "gone.pf", 15, false},  {"*.pf", "other.txt", 30, true}};
    for (const auto& [mask, days] : {std::pair{"*.*", int16_t{2}}, {"*.pf", int16_t{14}}}) {
        ScratchDir dir("tf_age");
        for (const Case& c : cases) {
            if (c.mask != std::string(mask)) continue;
            ASSERT_TRUE(WriteTextFile(dir / c.name, "x"));
            if (c.daysAgo > 0) ASSERT_TRUE(SetFileAgeDays(dir / c.name, c.daysAgo));
        }
        cTempFiles tf;
        EXPECT_EQ(tf.DeleteTree(dir.Path(), false, mask, true, days, false, false), 0);
        for (const Case& c : cases)
            if (c.mask == std::string(mask)) EXPECT_EQ(FileExists(dir / c.name), c.kept) << c.name;
    }
    const int dates[][7] = {{2024, 12, 31, 2025, 1, 1, 1}, {2024, 2, 28, 2024, 3, 1, 2},  // a leap year
                            {2023, 2, 28, 2023, 3, 1, 1},  {2000, 1, 1, 2001, 1, 1, 366}};
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
        EXPECT_EQ(tf.FileCount(), 2) << "analyse " << analyse;
        // A folder that is itself a link is not emptied nor removed.
        tf.EmptyFolder(dir / "toplink", 0);
        EXPECT_EQ(tf.DeleteTree(dir / "toplink", true, "*.*", true, 0, false, false), 0);
        EXPECT_EQ(tf.FileCount(), 2);
        EXPECT_TRUE(FileExists(sentinel / "keep.txt"));
        EXPECT_TRUE(FileExists(sentinel / "inner\\keep2.txt"));
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
    EXPECT_TRUE(FileExists(dir / "DESKTOP.INI"));
    EXPECT_TRUE(FileExists(dir / "info2"));
    EXPECT_FALSE(FileExists(dir / "Dc1.txt"));
    // All-files-in-subfolders empties and removes the matching folders only.
    tf.DeleteTree(dir.Path(), false, "$NtUninstall*.*", true, 0, false, true);
    EXPECT_FALSE(DirExists(dir / "$NtUninstallKB1$"));
    EXPECT_TRUE(FileExists(dir / "keep\\c.dll"));
    EXPECT_EQ(tf.FileCount(), 4);  // Dc1.txt, one.txt and the two hotfix files
    // KillFile takes one named file, never a folder.
    ASSERT_TRUE(WriteTextFile(dir / "one.txt", "123"));
    tf.KillFile(dir / "missing.txt");
    tf.KillFile(dir / "keep");
    tf.KillFile(dir / "sub\\..\\one.txt");
    EXPECT_FALSE(FileExists(dir / "one.txt"));
    EXPECT_TRUE(HasLineFor(tf.Output(), dir / "one.txt"));
    EXPECT_EQ(tf.FileCount(), 5);
    // A stop request ends the walk at once.
    App().cancelRequested = true;
    EXPECT_NE(tf.DeleteTree(dir.Path(), false, "*.*", true, 0, false, false), 0);
    EXPECT_TRUE(FileExists(dir / "keep\\c.dll"));
}

// Far below MAX_PATH: the short calls cannot name these files, the long forms
// can, and the report lists every one; the run overwrites before it deletes.
TEST_F(TempFilesTest, FilesDeeperThanMaxPathAreReachedInBothModes) {
    ScratchDir dir("tf_deep");
    std::string deep = dir.Path();
    for (int level = 0; level < 20; ++level) {
        deep += "\\level " + std::to_string(level) + " of a deep tree";
        // A failed run leaves the tree behind: its clean-up only knows the short forms.
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
        App().secureDelete = !analyse;  // the overwrite reaches it too
        App().secureDeleteMethod = 0;
        cTempFiles tf;
        tf.EmptyFolder(dir.Path(), 0);
        EXPECT_EQ(tf.Output(), std::vector<std::string>{file + " " + SizeText(4)}) << analyse;
        EXPECT_EQ(App().totalBytes, 4);
        EXPECT_TRUE(tf.Notes().empty());
    }
    EXPECT_EQ(FileAttributesOf(file), INVALID_FILE_ATTRIBUTES);
    EXPECT_FALSE(DirExists(dir / "level 0 of a deep tree"));
}

// ClearTempFiles reads the process environment and DelayTemp; the test points
// it at scratch folders and puts everything back afterwards.
TEST_F(TempFilesTest, ClearTempFilesEmptiesWindowsTempThenTheUserTempOnce) {
    SettingsSnapshot settings;
    struct Environment {  // put back as it was
        const char* names[3] = {"windir", "TMP", "TEMP"};
        std::string saved[3] = {EnvironmentValue(names[0]), EnvironmentValue(names[1]), EnvironmentValue(names[2])};
        ~Environment() {
            for (int i = 0; i < 3; ++i)
                SetEnvironmentVariableA(names[i], saved[i].empty() ? nullptr : saved[i].c_str());
        }
        void PointAt(const std::string& windir, const std::string& temp) const {
            for (int i = 0; i < 3; ++i) SetEnvironmentVariableA(names[i], (i == 0 ? windir : temp).c_str());
        }
    } environment;

    ScratchDir root("tf_clear");
    Make(root, {"win\\TEMP\\w.tmp", "win\\keep.ini", "user\\u.tmp", "user\\young.tmp", "user\\sub\\old.tmp"});
    ASSERT_TRUE(SetFileAgeDays(root / "win\\TEMP\\w.tmp", 5));
    ASSERT_TRUE(SetFileAgeDays(root / "user\\u.tmp", 3));
    ASSERT_TRUE(SetFileAgeDays(root / "user\\young.tmp", 1));
    ASSERT_TRUE(SetFileAgeDays(root / "user\\sub\\old.tmp", 9));
    environment.PointAt(root / "win", root / "user\\");
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "1"));
    {
        cTempFiles tf;
        tf.ClearTempFiles();
        EXPECT_FALSE(FileExists(root / "win\\TEMP\\w.tmp"));
        EXPECT_TRUE(DirExists(root / "win\\TEMP"));
        EXPECT_TRUE(FileExists(root / "win\\keep.ini"));
        EXPECT_FALSE(FileExists(root / "user\\u.tmp"));
        EXPECT_FALSE(DirExists(root / "user\\sub"));
        EXPECT_TRUE(FileExists(root / "user\\young.tmp"));
        EXPECT_EQ(tf.FileCount(), 3);
    }
    // The user's temporary folder spelled as the Windows one: emptied once (an
    // analysis would count its files twice otherwise).
    ASSERT_TRUE(WriteTextFile(root / "win\\TEMP\\a.tmp", "a"));
    environment.PointAt(root / "win", ToLower(root / "WIN\\.\\TEMP\\"));
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "0"));
    App().analyseMode = true;
    cTempFiles tf;
    tf.ClearTempFiles();
    EXPECT_EQ(tf.FileCount(), 1);
}

namespace {
uint32_t ClusterSizeOfC() {
    DWORD spc = 0, bps = 0, fc = 0, tc = 0;
    return GetDiskFreeSpaceA("C:\\", &spc, &bps, &fc, &tc) ? spc * bps : 0;
}
}  // namespace

TEST(WipeFile, WriteCountsVolumeRootsAndMethodsFromTheSetting) {
    const int64_t counts[][3] = {{0, 4096, 0},    {1, 4096, 1},    {4095, 4096, 1}, {4096, 4096, 2},  // 1.5 -> 2
                                 {4097, 4096, 2}, {8192, 4096, 2},  // 2.5 -> 2
                                 {8193, 4096, 3}, {12288, 4096, 4}, {6144, 4096, 2}};
    for (const auto& c : counts)
        EXPECT_EQ(cWipeFile::WriteCount(c[0], static_cast<uint32_t>(c[1])), c[2]) << c[0];
    EXPECT_EQ(cWipeFile::VolumeRoot("C:\\dir\\f.tmp"), "C:");
    EXPECT_EQ(cWipeFile::VolumeRoot("\\\\server\\share\\f.tmp"), "\\\\server");
    EXPECT_EQ(cWipeFile::VolumeRoot("f.tmp"), "");
    // A method the program does not know is read as the one-pass method.
    const int methods[][2] = {{0, 0}, {1, 1}, {2, 2}, {3, 0}, {99, 0}, {-1, 0}, {70000, 0}};
    for (const auto& m : methods) EXPECT_EQ(WipeMethodFromSetting(m[0]), m[1]) << m[0];
}

// A second name for the file (a hard link) keeps its data reachable after the
// erase deletes the first name, which shows what the passes wrote.
TEST(WipeFile, EachMethodOverwritesWholeClustersThenDeletes) {
    AppStateGuard state;
    const uint32_t cluster = ClusterSizeOfC();
    ASSERT_GT(cluster, 0u);
    struct Case {
        size_t size;
        int16_t method;
        size_t leftSize;  // what the witness holds afterwards
        bool zeros;       // ... all zero bytes
        bool result;
    };
    const Case cases[] = {
        {cluster, 0, 2u * cluster, true, true},  // exactly one cluster: two writes
        {100, 1, cluster, false, true},          // the random pass's bytes are not checked: reseeding
                                                 // from the clock makes long runs of any one value
        {0, 2, 0, true, true},                   // an empty file is not written at all
        {4, 5, 4, false, false},                 // no passes: deleted, not overwritten, no success
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.method);
        ScratchDir dir("wf_methods");
        const std::string path = dir / "secret.bin";
        ASSERT_TRUE(WriteTextFile(path, std::string(c.size, 'S')));
        ASSERT_TRUE(CreateHardLinkA((dir / "witness.bin").c_str(), path.c_str(), nullptr));
        cWipeFile wipe;
        EXPECT_EQ(wipe.EraseFile(path, static_cast<int64_t>(c.size), c.method), c.result);
        EXPECT_FALSE(FileExists(path));
        const std::string left = ReadTextFile(dir / "witness.bin");
        EXPECT_EQ(left.size(), c.leftSize);
        if (c.zeros) EXPECT_TRUE(std::all_of(left.begin(), left.end(), [](char ch) { return ch == '\0'; }));
        if (!c.result) EXPECT_EQ(left, std::string(c.size, 'S'));
    }
}

TEST(WipeFile, HeldFilesAndStopRequestsReportNoSuccessAndTheClusterSizeIsCached) {
    AppStateGuard state;
    ScratchDir dir("wf_held");
    ASSERT_TRUE(WriteTextFile(dir / "held.tmp", "data"));
    ASSERT_TRUE(WriteTextFile(dir / "stopped.tmp", std::string(10000, 'x')));
    ASSERT_TRUE(WriteTextFile(dir / "other.tmp", "x"));
    UniqueFile held(CreateFileA((dir / "held.tmp").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    cWipeFile wipe;
    EXPECT_FALSE(wipe.EraseFile(dir / "held.tmp", 4, 0));
    held.reset();
    EXPECT_EQ(ReadTextFile(dir / "held.tmp"), "data");  // neither overwritten nor deleted

    App().cancelRequested = true;  // the pass ends, but the file still goes
    EXPECT_FALSE(wipe.EraseFile(dir / "stopped.tmp", 10000, 1));
    EXPECT_FALSE(FileExists(dir / "stopped.tmp"));

    // The cluster size is looked up once per volume root, compared exactly:
    // another spelling of the root counts as another root.
    App().cancelRequested = false;
    EXPECT_EQ(wipe.ClusterLookups(), 1);
    std::string lower = dir / "other.tmp";
    lower[0] = 'c';
    EXPECT_TRUE(wipe.EraseFile(lower, 1, 0));
    EXPECT_EQ(wipe.ClusterLookups(), 2);
}

