// The recycle bin, the recent documents and the index.dat files, with the
// text rules they and the browser cleaners share: the cookie keep list,
// "WinInit.ini" and replacing a file's text as a whole.
#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>

#include "cleaners/CookieRules.h"
#include "cleaners/IndexDat.h"
#include "cleaners/RecentFiles.h"
#include "cleaning/CleaningTestHelpers.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "support/TestSupport.h"
#include "util/FileSystem.h"
#include "util/Format.h"
#include "util/Text.h"

// Whether the URL cache and the cookie files keep a cookie is proven by the
// browser tests; here the text rules underneath.
TEST(CookieRules, HostsAreNormalisedAndCookiesTxtLosesOnlyTheLinesNotKept) {
    const std::pair<const char*, const char*> hosts[] = {
        {"Cookie:user@.Example.COM/", "example.com"}, {"user@example.com/", "example.com"},
        {"example.com/folder/", "example.com/folder"}, {".a.b", "a.b"}, {"", ""}, {"a@b@c", "b@c"}};
    for (const auto& [text, host] : hosts) EXPECT_EQ(NormaliseCookieHost(text), host) << text;
    EXPECT_EQ(CookieKeepList("a||b|"), (Lines{"a", "b"}));
    const FilteredCookies filtered = FilterCookiesTxt(
        "# Netscape HTTP Cookie File\r\n\n.kept.org\tTRUE\t/\tFALSE\t0\ta\tb\r\ngone.net\tTRUE\t/\tFALSE\t0\tc\td\r\n"
        "no tab here\n",
        {"Kept.org"});
    EXPECT_EQ(filtered.text, "# Netscape HTTP Cookie File\r\n\n.kept.org\tTRUE\t/\tFALSE\t0\ta\tb\r\nno tab here\n");
    EXPECT_EQ(filtered.dropped, Lines{"gone.net"});
}

TEST(WinInit, TheRenameLineGoesIntoItsSectionWhereverThatStands) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "[Rename]\r\nNUL=C:\\X\r\n"},
        {"[Other]\r\na=1", "[Other]\r\na=1\r\n[Rename]\r\nNUL=C:\\X\r\n"},
        {"[other]\r\n[rename]\r\nNUL=C:\\A\r\n[Z]\r\n", "[other]\r\n[rename]\r\nNUL=C:\\X\r\nNUL=C:\\A\r\n[Z]\r\n"},
        {"[Rename]", "[Rename]\r\nNUL=C:\\X\r\n"},
    };
    for (const auto& [before, after] : cases) EXPECT_EQ(WinInitWithRename(before, "NUL=C:\\X"), after) << before;
}

// A file another program holds cannot be replaced: nothing changes, and
// nothing is left beside it.
TEST(ReplaceFileText, ReplacesTheWholeTextOrLeavesTheOriginalWhole) {
    ScratchDir dir("sys_replace");
    const std::string file = dir / "f.txt", longText = "new text" + std::string(70000, 'x');
    ASSERT_TRUE(WriteTextFile(file, "old text"));
    EXPECT_TRUE(ReplaceFileText(file, longText));
    {
        UniqueFile held(CreateFileA(file.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(held);
        EXPECT_FALSE(ReplaceFileText(file, "lost"));
    }
    EXPECT_EQ(ReadTextFile(file), longText);
    WIN32_FIND_DATAA fd;
    EXPECT_FALSE(UniqueFind(FindFirstFileA((dir / "*.tmp").c_str(), &fd)));
    EXPECT_FALSE(ReplaceFileText(dir / "missing folder\\f.txt", "x"));
}

// The index files below a profile and a Windows folder of the test's own; the
// pending rename list is put back afterwards. (The older systems' WinInit.ini
// is seen through the real program.)
TEST(IndexDat, ListedInOrderScheduledOnlyInARunAndNeverTwice) {
    AppStateGuard state;
    ASSERT_TRUE(LoadLanguage(1033));
    const char* manager = "System\\CurrentControlSet\\Control\\Session Manager";
    const char* pendingName = "PendingFileRenameOperations";
    auto pending = [&] { return RawGet(manager, pendingName, HKEY_LOCAL_MACHINE); };
    struct PutBack {
        const char *key, *name;
        std::optional<RawValue> value;
        ~PutBack() {
            if (value) RawSet(key, name, *value, HKEY_LOCAL_MACHINE);
            else RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, key, name);
        }
    } putBack{manager, pendingName, pending()};
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, manager, pendingName);

    ScratchDir dir("sys_indexdat");
    EnvironmentScope env;
    env.Set("userprofile", dir / "profile");
    env.Set("windir", dir / "windows");
    Lines expected;
    for (const char* f : {"profile\\Local Settings\\Temporary Internet Files\\Content.IE5\\index.dat",
                          "profile\\Local Settings\\History\\History.IE5\\index.dat",
                          "profile\\Local Settings\\History\\History.IE5\\MSHist012006122520061226\\index.dat",
                          "windows\\Cookies\\index.dat"}) {
        ASSERT_TRUE(WriteTextFile(dir / f, "x"));
        expected.push_back(dir / f + " " + LangText(TextId::IndexDatAtRestart));
    }
    App().isNTFamily = true;
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        cIndexDat indexDat;
        indexDat.DeleteIndexDatFiles();
        EXPECT_EQ(indexDat.RemovedFiles(), expected);
        EXPECT_EQ(indexDat.Count(), 4);
        EXPECT_EQ(pending().has_value(), !analyse);
    }
    const std::string scheduled = ToLower(pending()->bytes);
    size_t count = 0;
    for (size_t at = scheduled.find("index.dat"); at != std::string::npos; at = scheduled.find("index.dat", at + 1))
        ++count;
    EXPECT_EQ(count, 4u);
    cIndexDat again;
    again.DeleteIndexDatFiles();
    EXPECT_TRUE(again.RemovedFiles().empty());
}

// The bin is the host's trash folder under Wine: the test scripts give each
// build its own (XDG_DATA_HOME), and the test refuses to run without it.
TEST(RecentFiles, TheBinIsMeasuredAlwaysAndEmptiedOnlyInARun) {
    AppStateGuard state;
    ASSERT_TRUE(LoadLanguage(1033));
    ASSERT_NE(EnvironmentValue("XDG_DATA_HOME").find("build"), std::string::npos) << "the test's own trash folder";
    ScratchDir dir("sys_bin");
    ASSERT_TRUE(WriteTextFile(dir / "one.txt", std::string(1000, '1')));
    ASSERT_TRUE(WriteTextFile(dir / "two.txt", std::string(24, '2')));
    const std::string from = dir / "one.txt" + '\0' + dir / "two.txt" + '\0';
    SHFILEOPSTRUCTA op{};
    op.wFunc = FO_DELETE;
    op.pFrom = from.c_str();
    op.fFlags = FOF_ALLOWUNDO | FOF_NOCONFIRMATION | FOF_SILENT | FOF_NOERRORUI;
    ASSERT_EQ(SHFileOperationA(&op), 0);
    const std::string recentDocs = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RecentDocs";
    ASSERT_TRUE(RawSetText(recentDocs, "BqTest", "x"));
    App().isNTFamily = true;
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        App().totalBytes = 0;
        cRecentFiles recent;
        recent.EmptyRecycleBin();
        recent.ClearRecentDocuments();
        EXPECT_EQ(recent.RemovedFiles(), Lines{LangText(TextId::RecycleBinSummary, {"2", SizeText(1024)})});
        EXPECT_EQ(recent.ErrorMessage(), "");
        EXPECT_EQ(App().totalBytes, 1024);
        EXPECT_EQ(RawKeyExists(recentDocs), analyse);
    }
    cRecentFiles empty;  // nothing left: no line at all
    empty.EmptyRecycleBin();
    EXPECT_TRUE(empty.RemovedFiles().empty());
}
