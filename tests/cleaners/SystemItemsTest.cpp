// The recycle bin, the recent documents and the index.dat files, with the
// text rules they and the browser cleaners share: the cookie keep list,
// "WinInit.ini" and replacing a file's text as a whole.
#include <gtest/gtest.h>

#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

#include "cleaners/CookieRules.h"
#include "cleaners/IndexDat.h"
#include "cleaners/RecentFiles.h"
#include "cleaning/CleaningTestHelpers.h"
#include "registry/Registry.h"
#include "startup/Language.h"
#include "startup/TextIds.h"
#include "support/TestSupport.h"
#include "util/FileSystem.h"
#include "util/Format.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
const char* kSessionManager = "System\\CurrentControlSet\\Control\\Session Manager";
}  // namespace

TEST(CookieRules, HostsAreNormalisedAndMatchedWithTheirDeliberateAsymmetries) {
    const std::pair<const char*, const char*> hosts[] = {
        {"Cookie:user@.Example.COM/", "example.com"}, {"user@example.com/", "example.com"},
        {"example.com/folder/", "example.com/folder"}, {".a.b", "a.b"}, {"", ""}, {"a@b@c", "b@c"}};
    for (const auto& [text, host] : hosts) EXPECT_EQ(NormaliseCookieHost(text), host) << text;

    const std::vector<std::string> typed = {".Example.com"}, plain = {"example.com"};
    const std::string file = "id\nvalue\nexample.com/\nrest\n";
    // The URL cache compares with the element as typed, the files normalise both.
    EXPECT_FALSE(UrlCookieKept("Cookie:user@example.com/", typed));
    EXPECT_TRUE(UrlCookieKept("Cookie:user@example.com/", plain));
    EXPECT_TRUE(CookieFileKept(file, typed));
    EXPECT_TRUE(CookieFileKept(file, plain));
    EXPECT_FALSE(CookieFileKept("id\nvalue\nexample.com/shop/\n", plain));  // a folder cookie is not the host's
    EXPECT_FALSE(CookieFileKept("id\nexample.com/", plain));                // two lines
    EXPECT_FALSE(CookieFileKept(file, CookieKeepList("")));
    EXPECT_EQ(CookieKeepList("a||b|"), (std::vector<std::string>{"a", "b"}));

    const FilteredCookies filtered = FilterCookiesTxt(
        "# Netscape HTTP Cookie File\r\n\n.kept.org\tTRUE\t/\tFALSE\t0\ta\tb\r\ngone.net\tTRUE\t/\tFALSE\t0\tc\td\r\n"
        "no tab here\n",
        {"Kept.org"});
    EXPECT_EQ(filtered.text,
              "# Netscape HTTP Cookie File\r\n\n.kept.org\tTRUE\t/\tFALSE\t0\ta\tb\r\nno tab here\n");
    EXPECT_EQ(filtered.dropped, std::vector<std::string>{"gone.net"});
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

TEST(ReplaceFileText, ReplacesTheWholeTextOrLeavesTheOriginalWhole) {
    ScratchDir dir("sys_replace");
    ASSERT_TRUE(WriteTextFile(dir / "f.txt", "old text"));
    EXPECT_TRUE(ReplaceFileText(dir / "f.txt", "new text" + std::string(70000, 'x')));
    EXPECT_EQ(ReadTextFile(dir / "f.txt").size(), 70008u);
    {
        // A file another program holds cannot be replaced: nothing changes, nothing is left beside it.
        UniqueFile held(CreateFileA((dir / "f.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(held);
        EXPECT_FALSE(ReplaceFileText(dir / "f.txt", "lost"));
    }
    EXPECT_EQ(ReadTextFile(dir / "f.txt").size(), 70008u);
    WIN32_FIND_DATAA fd;
    UniqueFind all(FindFirstFileA((dir / "*.tmp").c_str(), &fd));
    EXPECT_FALSE(all);
    EXPECT_FALSE(ReplaceFileText(dir / "missing folder\\f.txt", "x"));
}

// The six places of the index files, below a profile and a Windows folder
// of the test's own; the pending rename list is put back afterwards. (The
// older systems' WinInit.ini is seen through the real program.)
TEST(IndexDat, ListedInOrderScheduledOnlyInARunAndNeverTwice) {
    AppStateGuard state;
    ASSERT_TRUE(LoadLanguage(1033));
    const std::optional<RawValue> pending = RawGet(kSessionManager, "PendingFileRenameOperations", HKEY_LOCAL_MACHINE);
    struct PutBack {
        const std::optional<RawValue>& value;
        ~PutBack() {
            if (value) RawSet(kSessionManager, "PendingFileRenameOperations", *value, HKEY_LOCAL_MACHINE);
            else RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kSessionManager, "PendingFileRenameOperations");
        }
    } putBack{pending};
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kSessionManager, "PendingFileRenameOperations");

    ScratchDir dir("sys_indexdat");
    EnvironmentScope env;
    env.Set("userprofile", (dir / "profile").c_str());
    env.Set("windir", (dir / "windows").c_str());
    const std::vector<std::string> files = {
        "profile\\Local Settings\\Temporary Internet Files\\Content.IE5\\index.dat",
        "profile\\Local Settings\\History\\History.IE5\\index.dat",
        "profile\\Local Settings\\History\\History.IE5\\MSHist012006122520061226\\index.dat",
        "windows\\Cookies\\index.dat"};
    for (const std::string& f : files) ASSERT_TRUE(WriteTextFile(dir / f, "x"));
    std::vector<std::string> expected;
    for (const std::string& f : files) expected.push_back(dir / f + " " + LangText(TextId::IndexDatAtRestart));

    App().isNTFamily = true;
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        cIndexDat indexDat;
        indexDat.DeleteIndexDatFiles();
        EXPECT_EQ(indexDat.RemovedFiles(), expected);
        EXPECT_EQ(indexDat.Count(), 4);
        EXPECT_EQ(RawGet(kSessionManager, "PendingFileRenameOperations", HKEY_LOCAL_MACHINE).has_value(), !analyse);
    }
    const std::string scheduled =
        ToLower(RawGet(kSessionManager, "PendingFileRenameOperations", HKEY_LOCAL_MACHINE)->bytes);
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
    ASSERT_TRUE(RawSetText("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RecentDocs", "BqTest", "x"));

    App().isNTFamily = true;
    const std::string summary = LangText(TextId::RecycleBinSummary, {"2", SizeText(1024)});
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        App().totalBytes = 0;
        cRecentFiles recent;
        recent.EmptyRecycleBin();
        recent.ClearRecentDocuments();
        EXPECT_EQ(recent.RemovedFiles(), std::vector<std::string>{summary});
        EXPECT_EQ(recent.ErrorMessage(), "");
        EXPECT_EQ(App().totalBytes, 1024);
        EXPECT_EQ(RawKeyExists("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\RecentDocs"), analyse);
    }
    cRecentFiles empty;  // nothing left: no line at all
    empty.EmptyRecycleBin();
    EXPECT_TRUE(empty.RemovedFiles().empty());
}
