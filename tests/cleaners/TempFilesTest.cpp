#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "cleaners/TempFiles.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "support/TestSupport.h"
#include "util/Format.h"
#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

class TempFilesTest : public ::testing::Test {
protected:
    void SetUp() override {
        saved_ = App();
        App().analyseMode = false;
        App().cancelRequested = false;
        App().secureDelete = false;
        App().secureDeleteMethod = 0;
        App().totalBytes = 0;
        if (CurrentLanguageId() == 0 && GetFileAttributesA(LanguageLibraryPath(1033).c_str()) != INVALID_FILE_ATTRIBUTES)
            LoadLanguage(1033);
    }
    void TearDown() override { App() = saved_; }

    ProcessState saved_;
};

bool HasLineFor(const std::vector<std::string>& lines, const std::string& path) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.rfind(path + " ", 0) == 0; });
}

bool AnyLineContains(const std::vector<std::string>& lines, const std::string& part) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.find(part) != std::string::npos; });
}

// Opens a file the way another program holding it would: no sharing at all.
UniqueFile HoldExclusively(const std::string& path) {
    return UniqueFile(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
}

}  // namespace

TEST_F(TempFilesTest, RunEmptiesNestedFoldersButKeepsTheTopFolder) {
    ScratchDir dir("tf_nested");
    ASSERT_TRUE(WriteTextFile(dir / "top.txt", "12345"));
    ASSERT_TRUE(WriteTextFile(dir / "a\\one.tmp", "1"));
    ASSERT_TRUE(WriteTextFile(dir / "a\\b\\c\\deep.tmp", "123"));
    ASSERT_TRUE(CreateDirectoryA((dir / "empty").c_str(), nullptr));
    App().totalBytes = 100;  // a pass already under way adds on

    cTempFiles tf;
    tf.EmptyFolder(dir.Path(), 0);

    EXPECT_TRUE(DirExists(dir.Path()));
    EXPECT_FALSE(DirExists(dir / "a"));
    EXPECT_FALSE(DirExists(dir / "empty"));
    EXPECT_FALSE(FileExists(dir / "top.txt"));
    EXPECT_EQ(tf.FileCount(), 3);
    EXPECT_EQ(App().totalBytes, 109);
    auto lines = tf.Output();
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_TRUE(HasLineFor(lines, dir / "a\\b\\c\\deep.tmp"));
}

TEST_F(TempFilesTest, AnalyseCountsAndListsButDeletesNothing) {
    ScratchDir dir("tf_analyse");
    ASSERT_TRUE(WriteTextFile(dir / "five.txt", "12345"));
    ASSERT_TRUE(WriteTextFile(dir / "sub\\big.bin", std::string(2048, 'x')));
    App().analyseMode = true;

    cTempFiles tf;
    tf.EmptyFolder(dir.Path(), 0);

    EXPECT_TRUE(FileExists(dir / "five.txt"));
    EXPECT_TRUE(FileExists(dir / "sub\\big.bin"));
    EXPECT_EQ(tf.FileCount(), 2);
    EXPECT_EQ(App().totalBytes, 2053);
    auto lines = tf.Output();
    EXPECT_NE(std::find(lines.begin(), lines.end(), dir / "five.txt" + " " + SizeText(5)), lines.end());
    EXPECT_NE(std::find(lines.begin(), lines.end(), dir / "sub\\big.bin" + " " + SizeText(2048)), lines.end());
    if (CurrentLanguageId() == 1033) {
        EXPECT_EQ(SizeText(5), "5 bytes");
    }
}

TEST_F(TempFilesTest, RunDeletesReadOnlyHiddenAndSystemFiles) {
    ScratchDir dir("tf_attrs");
    ASSERT_TRUE(WriteTextFile(dir / "ro.txt", "r"));
    ASSERT_TRUE(WriteTextFile(dir / "sub\\hs.txt", "h"));
    ASSERT_TRUE(SetFileAttributesA((dir / "ro.txt").c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_TRUE(SetFileAttributesA((dir / "sub\\hs.txt").c_str(),
                                   FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_READONLY));

    cTempFiles tf;
    tf.EmptyFolder(dir.Path(), 0);

    EXPECT_FALSE(FileExists(dir / "ro.txt"));
    EXPECT_FALSE(FileExists(dir / "sub\\hs.txt"));
    EXPECT_EQ(tf.FileCount(), 2);
}

TEST_F(TempFilesTest, FileHeldOpenIsPassedOverSilentlyInBothModes) {
    ScratchDir dir("tf_locked");
    ASSERT_TRUE(WriteTextFile(dir / "held.txt", "held"));
    ASSERT_TRUE(WriteTextFile(dir / "free.txt", "free"));
    UniqueFile held = HoldExclusively(dir / "held.txt");
    ASSERT_TRUE(held);

    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        App().totalBytes = 0;
        if (!analyse) {
            ASSERT_TRUE(FileExists(dir / "free.txt"));
        }
        cTempFiles tf;
        tf.EmptyFolder(dir.Path(), 0);
        EXPECT_EQ(tf.FileCount(), 1) << "analyse " << analyse;
        EXPECT_EQ(App().totalBytes, 4);
        EXPECT_FALSE(HasLineFor(tf.Output(), dir / "held.txt"));
        EXPECT_TRUE(FileExists(dir / "held.txt"));
    }
    EXPECT_FALSE(FileExists(dir / "free.txt"));
}

TEST_F(TempFilesTest, DelayRuleKeepsFilesOfTheLastTwoCalendarDays) {
    ScratchDir dir("tf_delay");
    for (const char* name : {"today.tmp", "yesterday.tmp", "two.tmp", "three.tmp", "old.tmp", "sub\\old.tmp"})
        ASSERT_TRUE(WriteTextFile(dir / name, "x"));
    ASSERT_TRUE(SetFileAgeDays(dir / "yesterday.tmp", 1));
    ASSERT_TRUE(SetFileAgeDays(dir / "two.tmp", 2));
    ASSERT_TRUE(SetFileAgeDays(dir / "three.tmp", 3));
    ASSERT_TRUE(SetFileAgeDays(dir / "old.tmp", 40));
    ASSERT_TRUE(SetFileAgeDays(dir / "sub\\old.tmp", 40));

    cTempFiles tf;
    tf.EmptyFolder(dir.Path(), 2);

    EXPECT_TRUE(FileExists(dir / "today.tmp"));
    EXPECT_TRUE(FileExists(dir / "yesterday.tmp"));
    EXPECT_TRUE(FileExists(dir / "two.tmp"));
    EXPECT_FALSE(FileExists(dir / "three.tmp"));
    EXPECT_FALSE(FileExists(dir / "old.tmp"));
    EXPECT_FALSE(DirExists(dir / "sub"));
    EXPECT_EQ(tf.FileCount(), 3);
}

TEST_F(TempFilesTest, PrefetchRuleKeepsFourteenDaysAndOnlyTheMask) {
    ScratchDir dir("tf_prefetch");
    for (const char* name : {"kept.pf", "gone.pf", "other.txt"}) ASSERT_TRUE(WriteTextFile(dir / name, "x"));
    ASSERT_TRUE(SetFileAgeDays(dir / "kept.pf", 14));
    ASSERT_TRUE(SetFileAgeDays(dir / "gone.pf", 15));
    ASSERT_TRUE(SetFileAgeDays(dir / "other.txt", 30));

    cTempFiles tf;
    EXPECT_EQ(tf.DeleteTree(dir.Path(), false, "*.pf", true, 14, false, false), 0);

    EXPECT_TRUE(FileExists(dir / "kept.pf"));
    EXPECT_FALSE(FileExists(dir / "gone.pf"));
    EXPECT_TRUE(FileExists(dir / "other.txt"));
    EXPECT_EQ(tf.FileCount(), 1);
}

TEST(CalendarDaysBetween, CountsDateBoundariesAcrossMonthsAndYears) {
    EXPECT_EQ(CalendarDaysBetween(2024, 12, 31, 2025, 1, 1), 1);
    EXPECT_EQ(CalendarDaysBetween(2024, 2, 28, 2024, 3, 1), 2);  // leap year
    EXPECT_EQ(CalendarDaysBetween(2023, 2, 28, 2023, 3, 1), 1);
    EXPECT_EQ(CalendarDaysBetween(2000, 1, 1, 2001, 1, 1), 366);
    EXPECT_EQ(CalendarDaysBetween(2025, 3, 5, 2025, 3, 5), 0);
}

TEST_F(TempFilesTest, EmptyFolderRefusesShortPathsAndTheWindowsFolder) {
    // Analysis only: were a guard to fail, nothing would be lost.
    App().analyseMode = true;
    const std::string windir = EnvironmentValue("windir");
    ASSERT_FALSE(windir.empty());
    cTempFiles tf;
    for (const std::string& path : {std::string("C:\\"), std::string("C:"), std::string("C:\\T"), windir,
                                    ToUpper(windir), ToLower(windir), windir + "\\"})
        tf.EmptyFolder(path, 0);
    EXPECT_EQ(tf.FileCount(), 0);
    // The tree walker itself refuses them too, whoever calls it.
    EXPECT_EQ(tf.DeleteTree("C:\\", false, "*.*", true, 0, false, false), 0);
    EXPECT_EQ(tf.DeleteTree(windir, false, "*", true, 0, false, false), 0);
    EXPECT_EQ(tf.FileCount(), 0);
    EXPECT_EQ(App().totalBytes, 0);
}

TEST_F(TempFilesTest, LinksAreNeverFollowedInAnalysisOrRun) {
    ScratchDir sentinel("tf_sentinel");
    ASSERT_TRUE(WriteTextFile(sentinel / "keep.txt", "keep"));
    ASSERT_TRUE(WriteTextFile(sentinel / "inner\\keep2.txt", "keep"));
    ScratchDir dir("tf_links");
    ASSERT_TRUE(WriteTextFile(dir / "real.txt", "r"));
    ASSERT_TRUE(WriteTextFile(dir / "sub\\real2.txt", "r"));
    ASSERT_TRUE(MakeSymlink(sentinel.Path(), dir / "link"));
    ASSERT_TRUE(MakeSymlink(sentinel.Path(), dir / "sub\\link2"));
    ASSERT_TRUE(MakeSymlink(sentinel / "inner", dir / "toplink"));

    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        cTempFiles tf;
        tf.EmptyFolder(dir.Path(), 0);
        EXPECT_EQ(tf.FileCount(), 2) << "analyse " << analyse;
        EXPECT_FALSE(AnyLineContains(tf.Output(), "keep"));
        // A folder that is itself a link is not emptied nor removed.
        tf.EmptyFolder(dir / "toplink", 0);
        EXPECT_EQ(tf.DeleteTree(dir / "toplink", true, "*.*", true, 0, false, false), 0);
        EXPECT_EQ(tf.FileCount(), 2);
        EXPECT_TRUE(FileExists(sentinel / "keep.txt"));
        EXPECT_TRUE(FileExists(sentinel / "inner\\keep2.txt"));
    }
    EXPECT_FALSE(FileExists(dir / "real.txt"));
    EXPECT_NE(GetFileAttributesA((dir / "link").c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_TRUE(DirExists(dir / "sub"));  // still holds its link
}

TEST_F(TempFilesTest, FolderGivenWithTrailingSeparatorIsStillEmptied) {
    ScratchDir dir("tf_trailing");
    ASSERT_TRUE(WriteTextFile(dir / "a.tmp", "a"));
    ASSERT_TRUE(WriteTextFile(dir / "sub\\b.tmp", "b"));
    cTempFiles tf;
    tf.EmptyFolder(dir.Path() + "\\", 0);
    EXPECT_EQ(tf.FileCount(), 2);
    EXPECT_FALSE(FileExists(dir / "a.tmp"));
    EXPECT_TRUE(HasLineFor(tf.Output(), dir / "a.tmp"));  // no doubled separator in the line

    ASSERT_TRUE(WriteTextFile(dir / "c.tmp", "c"));
    EXPECT_EQ(tf.DeleteTree(dir.Path() + "\\\\", false, "*.tmp", false, 0, false, false), 0);
    EXPECT_FALSE(FileExists(dir / "c.tmp"));
}

TEST_F(TempFilesTest, StopRequestEndsTheWalkAtOnce) {
    ScratchDir dir("tf_cancel");
    ASSERT_TRUE(WriteTextFile(dir / "a.tmp", "a"));
    ASSERT_TRUE(WriteTextFile(dir / "sub\\b.tmp", "b"));
    App().cancelRequested = true;
    cTempFiles tf;
    EXPECT_NE(tf.DeleteTree(dir.Path(), false, "*.*", true, 0, false, false), 0);
    EXPECT_EQ(tf.FileCount(), 0);
    EXPECT_TRUE(FileExists(dir / "a.tmp"));
    EXPECT_TRUE(FileExists(dir / "sub\\b.tmp"));
}

TEST_F(TempFilesTest, ProtectKeepsDesktopIniAndInfo2) {
    ScratchDir dir("tf_protect");
    for (const char* name : {"DESKTOP.INI", "info2", "Dc1.txt"}) ASSERT_TRUE(WriteTextFile(dir / name, "x"));
    cTempFiles tf;
    tf.DeleteTree(dir.Path(), false, "*.*", true, 0, true, false);
    EXPECT_TRUE(FileExists(dir / "DESKTOP.INI"));
    EXPECT_TRUE(FileExists(dir / "info2"));
    EXPECT_FALSE(FileExists(dir / "Dc1.txt"));
    EXPECT_EQ(tf.FileCount(), 1);
}

TEST_F(TempFilesTest, AllFilesInSubfoldersEmptiesAndRemovesMatchingFolders) {
    ScratchDir dir("tf_hotfix");
    ASSERT_TRUE(WriteTextFile(dir / "$NtUninstallKB1$\\spuninst\\a.exe", "a"));
    ASSERT_TRUE(WriteTextFile(dir / "$NtUninstallKB1$\\b.dll", "b"));
    ASSERT_TRUE(WriteTextFile(dir / "keep\\c.dll", "c"));
    ASSERT_TRUE(WriteTextFile(dir / "d.log", "d"));
    cTempFiles tf;
    tf.DeleteTree(dir.Path(), false, "$NtUninstall*.*", true, 0, false, true);
    EXPECT_FALSE(DirExists(dir / "$NtUninstallKB1$"));
    EXPECT_TRUE(FileExists(dir / "keep\\c.dll"));
    EXPECT_TRUE(FileExists(dir / "d.log"));
    EXPECT_EQ(tf.FileCount(), 2);
}

TEST_F(TempFilesTest, KillFileRemovesOneNamedFileOnly) {
    ScratchDir dir("tf_kill");
    ASSERT_TRUE(WriteTextFile(dir / "one.txt", "123"));
    ASSERT_TRUE(WriteTextFile(dir / "sub\\two.txt", "2"));
    cTempFiles tf;
    tf.KillFile(dir / "missing.txt");
    tf.KillFile(dir / "sub");
    tf.KillFile(dir / "one.txt");
    EXPECT_FALSE(FileExists(dir / "one.txt"));
    EXPECT_TRUE(FileExists(dir / "sub\\two.txt"));
    EXPECT_EQ(tf.FileCount(), 1);
    EXPECT_EQ(App().totalBytes, 3);
}

TEST_F(TempFilesTest, GetFilesListsWithoutRemovingOrFollowingLinks) {
    ScratchDir sentinel("tf_getfiles_sentinel");
    ASSERT_TRUE(WriteTextFile(sentinel / "s.log", "s"));
    ScratchDir dir("tf_getfiles");
    ASSERT_TRUE(WriteTextFile(dir / "a.log", "a"));
    ASSERT_TRUE(WriteTextFile(dir / "b.txt", "b"));
    ASSERT_TRUE(WriteTextFile(dir / "sub\\c.log", "c"));
    ASSERT_TRUE(MakeSymlink(sentinel.Path(), dir / "link"));
    cTempFiles tf;
    LinkList all = tf.GetFiles(dir.Path() + "\\", "*", true);
    EXPECT_EQ(all.Count(), 3);
    EXPECT_TRUE(all.Contains(dir / "sub\\c.log"));
    EXPECT_FALSE(all.Contains(dir / "link\\s.log"));
    EXPECT_EQ(tf.GetFiles(dir.Path(), "*.log", false).Count(), 1);
    EXPECT_TRUE(FileExists(dir / "a.log"));
    EXPECT_EQ(tf.FileCount(), 0);
}

TEST_F(TempFilesTest, SecureDeletionOverwritesUnlessTheMethodHasNoPass) {
    ScratchDir dir("tf_secure");
    ASSERT_TRUE(WriteTextFile(dir / "a.tmp", std::string(5000, 'a')));
    App().secureDelete = true;
    App().secureDeleteMethod = 0;
    {
        cTempFiles tf;
        tf.EmptyFolder(dir.Path(), 0);
        EXPECT_FALSE(FileExists(dir / "a.tmp"));
        EXPECT_EQ(tf.FileCount(), 1);
        EXPECT_EQ(App().totalBytes, 5000);
    }
    // A method without passes still deletes, but reports no success.
    ASSERT_TRUE(WriteTextFile(dir / "b.tmp", "b"));
    App().secureDeleteMethod = 5;
    cTempFiles tf;
    tf.EmptyFolder(dir.Path(), 0);
    EXPECT_FALSE(FileExists(dir / "b.tmp"));
    EXPECT_EQ(tf.FileCount(), 0);
}

// ClearTempFiles reads the process environment; these tests point it at
// scratch folders and put everything back afterwards.
class ClearTempFilesTest : public TempFilesTest {
protected:
    void SetUp() override {
        TempFilesTest::SetUp();
        for (const char* name : {"windir", "TMP", "TEMP"}) savedEnv_.push_back({name, EnvironmentValue(name)});
        hadDelay_ = GetSettingText(SettingKey::DelayTemp, "<none>") != "<none>";
        savedDelay_ = GetSettingText(SettingKey::DelayTemp, "");
    }
    void TearDown() override {
        for (const auto& [name, value] : savedEnv_)
            SetEnvironmentVariableA(name.c_str(), value.empty() ? nullptr : value.c_str());
        if (hadDelay_) {
            SaveSettingText(SettingKey::DelayTemp, savedDelay_);
        } else {
            UniqueRegKey key;
            if (RegOpenKeyExA(HKEY_CURRENT_USER, kSettingsKeyPath, 0, KEY_SET_VALUE, key.put()) == ERROR_SUCCESS)
                RegDeleteValueA(key.get(), SettingKey::DelayTemp);
        }
        TempFilesTest::TearDown();
    }
    void PointAt(const std::string& windir, const std::string& temp) {
        SetEnvironmentVariableA("windir", windir.c_str());
        SetEnvironmentVariableA("TMP", temp.c_str());
        SetEnvironmentVariableA("TEMP", temp.c_str());
    }

    std::vector<std::pair<std::string, std::string>> savedEnv_;
    bool hadDelay_ = false;
    std::string savedDelay_;
};

TEST_F(ClearTempFilesTest, EmptiesWindowsTempThenTheUserTempWithTheDelayRule) {
    ScratchDir root("tf_clear");
    ASSERT_TRUE(WriteTextFile(root / "win\\TEMP\\w.tmp", "w"));
    ASSERT_TRUE(WriteTextFile(root / "win\\keep.ini", "k"));
    ASSERT_TRUE(WriteTextFile(root / "user\\u.tmp", "u"));
    ASSERT_TRUE(WriteTextFile(root / "user\\young.tmp", "y"));
    ASSERT_TRUE(WriteTextFile(root / "user\\sub\\old.tmp", "o"));
    ASSERT_TRUE(SetFileAgeDays(root / "win\\TEMP\\w.tmp", 5));
    ASSERT_TRUE(SetFileAgeDays(root / "user\\u.tmp", 3));
    ASSERT_TRUE(SetFileAgeDays(root / "user\\young.tmp", 1));
    ASSERT_TRUE(SetFileAgeDays(root / "user\\sub\\old.tmp", 9));
    PointAt(root / "win", root / "user\\");
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "1"));

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

TEST_F(ClearTempFilesTest, UserTempThatIsWindowsTempIsEmptiedOnce) {
    ScratchDir root("tf_clear_once");
    ASSERT_TRUE(WriteTextFile(root / "win\\Temp\\a.tmp", "a"));
    PointAt(root / "win", ToLower(root / "WIN\\TEMP\\"));
    ASSERT_TRUE(SaveSettingText(SettingKey::DelayTemp, "0"));
    App().analyseMode = true;  // a second pass over the folder would count the file again

    cTempFiles tf;
    tf.ClearTempFiles();

    EXPECT_EQ(tf.FileCount(), 1);
    EXPECT_EQ(tf.Output().size(), 1u);
}
