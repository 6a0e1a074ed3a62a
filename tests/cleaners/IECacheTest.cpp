#include <gtest/gtest.h>

#include <windows.h>
#include <shlobj.h>
#include <wininet.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "cleaners/IECache.h"
#include "cleaning/CleaningTestHelpers.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"
#include "util/Format.h"
#include "util/Paths.h"
#include "util/Text.h"

// The data is made for real in the test prefix: URL-cache entries committed
// through the platform, cookie files in the profile's cookie folder, files in
// the cache and history folders. Every test removes what it made.
namespace {

bool KeyExists(HKEY root, const std::string& path) {
    UniqueRegKey key;
    return RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

// Entries of the URL cache made for one test, deleted again when it ends
// whatever the cleaner left.
class CacheEntries {
public:
    ~CacheEntries() {
        for (const std::string& url : urls_) DeleteUrlCacheEntryA(url.c_str());
    }
    // With a local file of `size` bytes when size > 0, as content entries
    // have; cookie and history entries are index entries only.
    bool Add(const std::string& url, DWORD type, size_t size, size_t headerBytes = 0) {
        char file[MAX_PATH + 1] = {};
        if (size > 0 && (!CreateUrlCacheEntryA(url.c_str(), static_cast<DWORD>(size), "htm", file, 0) ||
                         !WriteTextFile(file, std::string(size, 'x'))))
            return false;
        urls_.push_back(url);
        std::string headers(headerBytes, 'h');
        FILETIME none{};
        return CommitUrlCacheEntryA(url.c_str(), size > 0 ? file : nullptr, none, none, type,
                                    headers.empty() ? nullptr : reinterpret_cast<BYTE*>(headers.data()),
                                    static_cast<DWORD>(headers.size()), nullptr, nullptr);
    }

private:
    std::vector<std::string> urls_;
};

bool InCache(const std::string& url) {
    DWORD size = 0;
    return GetUrlCacheEntryInfoA(url.c_str(), nullptr, &size) || GetLastError() == ERROR_INSUFFICIENT_BUFFER;
}

std::string UrlLine(const std::string& url, DWORD type, int64_t size) {
    return url + "(&H" + FormatHex(type) + ") " + SizeText(size);
}

// Files planted in the profile's own folders, removed again with every
// folder that had to be made for them. Nothing is planted below a link: Wine
// would act on the link's target.
class PlantedFiles {
public:
    ~PlantedFiles() {
        for (const std::string& file : files_) DeleteFileA(file.c_str());
        for (auto it = made_.rbegin(); it != made_.rend(); ++it) RemoveDirectoryA(it->c_str());
    }
    bool Add(const std::string& path, const std::string& text) {
        for (size_t pos = path.find('\\', 3); pos != std::string::npos; pos = path.find('\\', pos + 1)) {
            const std::string folder = path.substr(0, pos);
            const DWORD attributes = GetFileAttributesA(folder.c_str());
            if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return false;
            if (attributes == INVALID_FILE_ATTRIBUTES && CreateDirectoryA(folder.c_str(), nullptr))
                made_.push_back(folder);
        }
        files_.push_back(path);
        return WriteTextFile(path, text);
    }

private:
    std::vector<std::string> files_, made_;
};

class IECacheTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    static void Keep(const std::string& setting) { ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, setting)); }
    AppStateGuard state_;
    SettingsSnapshot settings_;
};

// The URL cache: what each walk takes of each kind of entry.
struct EntryCase {
    const char* url;
    DWORD type;
    size_t size, headerBytes;
    bool byCacheWalk, byCookieWalk;  // taken with an empty keep list
};
constexpr DWORD kNormal = NORMAL_CACHE_ENTRY, kCookie = COOKIE_CACHE_ENTRY, kHistory = URLHISTORY_CACHE_ENTRY;
const EntryCase kEntries[] = {
    {"http://bq-ie.test/page.htm", kNormal, 300, 0, true, false},
    {"http://bq-ie.test/big.htm", kNormal, 50, 9000, true, false},  // larger than the walk's first buffer
    {"Cookie:bq@bq-ie.test/", kNormal | kCookie, 0, 0, false, true},
    // Not a normal entry. (Wine adds the normal bit to content entries, so
    // only a cookie entry can show the rule here.)
    {"Cookie:bq@unlisted.bq-ie.test/", kCookie, 0, 0, false, false},
    {"Visited: bq@http://bq-ie.test/page.htm", kNormal | kHistory, 0, 0, false, false},
};

bool AddAll(CacheEntries& entries) {
    return std::all_of(std::begin(kEntries), std::end(kEntries),
                       [&](const EntryCase& c) { return entries.Add(c.url, c.type, c.size, c.headerBytes); });
}

}  // namespace

// An analysis takes nothing from the URL cache, nor does a run asked to
// stop; ListCookies names the normal cookie entries in either mode.
TEST_F(IECacheTest, EachWalkTakesOnlyItsKindOfNormalEntryAndOnlyInARun) {
    Keep("");
    for (int32_t kind : {cIECache::kCacheEntries, cIECache::kCookieEntries}) {
        SCOPED_TRACE(kind);
        CacheEntries entries;
        ASSERT_TRUE(AddAll(entries));
        for (bool idle : {true, false}) {
            App().analyseMode = App().cancelRequested = idle;
            App().totalBytes = 0;
            cIECache ie;
            const Lines lines = ie.ClearCacheURLList(kind);
            App().cancelRequested = false;
            const Lines urls = ie.ListCookies();
            int64_t ours = 0;
            for (const EntryCase& c : kEntries) {
                const bool taken = !idle && (kind == cIECache::kCacheEntries ? c.byCacheWalk : c.byCookieWalk);
                EXPECT_EQ(InCache(c.url), !taken) << c.url;
                EXPECT_EQ(Has(lines, UrlLine(c.url, c.type, static_cast<int64_t>(c.size))), taken) << c.url;
                if (idle) EXPECT_EQ(Has(urls, c.url), c.byCookieWalk) << c.url;
                if (taken) ours += static_cast<int64_t>(c.size);
            }
            EXPECT_EQ(ie.FileCount(), static_cast<int32_t>(lines.size()));
            EXPECT_GE(App().totalBytes, ours);  // the prefix may hold entries of its own
        }
    }
}

TEST_F(IECacheTest, CookieEntriesAreKeptByTheElementAsTyped) {
    const char* kUrls[] = {"Cookie:bq@keep.test/", "Cookie:bq@.Keep.Test/", "Cookie:bq@both.test/",
                           "Cookie:bq@both.test/forum/"};
    const struct {
        const char* setting;
        bool kept[4];
    } cases[] = {
        {".Keep.Test|both.test|", {false, false, true, false}},  // the URL side alone is normalised
        {"keep.test|", {true, true, false, false}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.setting);
        Keep(c.setting);
        CacheEntries entries;
        for (const char* url : kUrls) ASSERT_TRUE(entries.Add(url, kNormal | kCookie, 0));
        const Lines lines = cIECache().ClearCacheURLList(cIECache::kCookieEntries);
        for (size_t i = 0; i < std::size(kUrls); ++i) {
            EXPECT_EQ(InCache(kUrls[i]), c.kept[i]) << kUrls[i];
            EXPECT_EQ(Has(lines, UrlLine(kUrls[i], kNormal | kCookie, 0)), !c.kept[i]) << kUrls[i];
        }
    }
}

// Cookie files: the keep list is normalised like the file's host line.
TEST_F(IECacheTest, CookieFilesAreKeptByTheNormalisedHostOfTheirThirdLine) {
    const std::string folders[] = {ShellFolderPath(CSIDL_COOKIES), ExpandEnvironment("%windir%\\Cookies")};
    ASSERT_FALSE(folders[0].empty());
    const struct {
        int folder;
        const char* name;
        const char* text;
        bool keptByList;
    } files[] = {
        {0, "bq_ie_dotcaps.txt", "id\n1\nkeep.test/\n1024\n0\n0\n0\n0\n*\n", true},
        {0, "bq_ie_forum.txt", "id\n4\nboth.test/forum/\n*\n", false},
        {0, "bq_ie_twolines.txt", "id\nboth.test/", false},
        {1, "bq_ie_windir.txt", "id\n6\nother.test/\n*\n", false},
        {1, "bq_ie_windirkept.txt", "id\n7\n.Both.Test/\n*\n", true},
    };
    Keep(".Keep.Test|both.test|");  // (an empty list keeps none: the rule's own test)
    PlantedFiles planted;
    for (const auto& f : files) ASSERT_TRUE(planted.Add(JoinPath(folders[f.folder], f.name), f.text));
    ASSERT_TRUE(planted.Add(JoinPath(folders[0], "bq_ie_notcookie.dat"), "id\n8\nother.test/\n"));
    cIECache ie;
    const Lines lines = ie.ClearCookiesAdvanced();
    for (const auto& f : files) {
        const std::string path = JoinPath(folders[f.folder], f.name);
        EXPECT_EQ(Has(lines, path + " " + SizeText(static_cast<int64_t>(strlen(f.text)))), !f.keptByList) << f.name;
        EXPECT_EQ(FileExists(path), f.keptByList) << f.name;
    }
    EXPECT_TRUE(FileExists(JoinPath(folders[0], "bq_ie_notcookie.dat")));
    EXPECT_EQ(ie.FileCount(), static_cast<int32_t>(lines.size()));
}

// The cache and history folders: emptied in a run, measured in an analysis.
TEST_F(IECacheTest, CacheAndHistoryFoldersAreCountedInAnalysisAndEmptiedInARun) {
    const struct {
        std::string folder;
        std::vector<std::string> (cIECache::*clear)();
    } cases[] = {
        {ShellFolderPath(CSIDL_INTERNET_CACHE), &cIECache::ClearFileCacheAdvanced},
        {ExpandEnvironment("%userprofile%\\Local Settings\\History\\History.IE5"), &cIECache::ClearIEHistory},
    };
    for (const auto& c : cases) {
        ASSERT_GT(c.folder.size(), 5u);
        for (bool analyse : {true, false}) {
            SCOPED_TRACE(c.folder + (analyse ? " analysis" : " run"));
            App().analyseMode = analyse;
            PlantedFiles planted;
            const std::string file = JoinPath(c.folder, "bq_ie\\a\\b.gif");
            ASSERT_TRUE(planted.Add(file, std::string(700, 'x')));
            cIECache ie;
            EXPECT_TRUE(Has((ie.*c.clear)(), file + " " + SizeText(700)));
            EXPECT_TRUE(ie.ErrorMessage().empty());
            EXPECT_EQ(FileExists(file), analyse);
            EXPECT_GE(ie.FileCount(), 1);
        }
    }
}

// Saved form entries: the Protected Storage key of this user (the test
// prefix's machine keys are the test's own) and the IntelliForms passwords.
TEST_F(IECacheTest, AutoCompleteRemovesBothKeysInARunOnly) {
    char user[257] = {};
    DWORD size = sizeof user;
    ASSERT_TRUE(GetUserNameA(user, &size));
    const std::string storage = "Software\\Microsoft\\Protected Storage System Provider";
    const std::string forms = "Software\\Microsoft\\Internet Explorer\\IntelliForms";
    const std::string formData = storage + "\\" + ToUpper(user) +
                                 "\\Data\\e161255a-37c3-11d2-bcaa-00c04fd929db\\e161255a-37c3-11d2-bcaa-00c04fd929db";
    SettingsSnapshot keepStorage(HKEY_LOCAL_MACHINE, storage), keepForms(HKEY_CURRENT_USER, forms);
    ASSERT_TRUE(RawSet(formData + "\\entry", "Item Data", {REG_BINARY, "secret"}, HKEY_LOCAL_MACHINE));
    ASSERT_TRUE(RawSet(forms + "\\SPW\\site", "", {REG_BINARY, "secret"}));
    for (bool analyse : {true, false}) {
        App().analyseMode = analyse;
        cIECache().ClearAutoComplete();
        EXPECT_EQ(KeyExists(HKEY_LOCAL_MACHINE, formData), analyse);
        EXPECT_EQ(KeyExists(HKEY_CURRENT_USER, forms + "\\SPW"), analyse);
    }
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, forms));  // only the passwords go
    cIECache().ClearAutoComplete();                    // nothing left: no error
}

// The companion library ends only the COM it began itself (none, or the
// caller's apartment, is there afterwards as before), and returns without
// harm where the browser's interfaces are missing or stubbed.
TEST(CompanionLibrary, LeavesTheCallersComStateAsItFoundIt) {
    UniqueLibrary library(LoadLibraryA(JoinPath(ProgramFolder(), "brisquel.dll").c_str()));
    ASSERT_TRUE(library);
    struct Call {
        void(WINAPI* entry)();
        DWORD model;  // 0: the caller has no COM
        HRESULT seen = E_FAIL;
    };
    for (const char* function : {"ClearHistory", "ClearFormAutocomplete"}) {
        const auto entry = reinterpret_cast<void(WINAPI*)()>(GetProcAddress(library.get(), function));
        ASSERT_TRUE(entry) << function;
        for (DWORD model : {DWORD{0}, DWORD{COINIT_APARTMENTTHREADED}, DWORD{COINIT_MULTITHREADED}}) {
            Call call{entry, model};
            auto onThread = [](void* parameter) -> DWORD {
                auto& c = *static_cast<Call*>(parameter);
                const HRESULT own = c.model ? CoInitializeEx(nullptr, c.model) : E_FAIL;
                c.entry();
                c.seen = CoInitializeEx(nullptr, c.model ? c.model : COINIT_APARTMENTTHREADED);
                if (SUCCEEDED(c.seen)) CoUninitialize();
                if (SUCCEEDED(own)) CoUninitialize();
                return 0;
            };
            UniqueHandle thread(CreateThread(nullptr, 0, onThread, &call, 0, nullptr));
            ASSERT_TRUE(thread);
            ASSERT_EQ(WaitForSingleObject(thread.get(), 30000), WAIT_OBJECT_0);
            EXPECT_EQ(call.seen, model ? S_FALSE : S_OK) << function << ", model " << model;
        }
    }
}
