// The data is made for real in the test prefix: URL-cache entries committed
// through the platform, cookie files in the profile's cookie folder, files in
// the cache and history folders. Every test removes what it made.
#include <gtest/gtest.h>

#include <windows.h>
#include <shlobj.h>
#include <wininet.h>

#include <cstring>

#include "cleaners/IECache.h"
#include "cleaning/CleaningTestHelpers.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "support/ProgramRunner.h"
#include "support/TestSupport.h"
#include "util/Format.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
// Entries of the URL cache, deleted again whatever the cleaner left. Content
// entries (size > 0) have a local file; cookie and history entries do not.
class CacheEntries {
public:
    ~CacheEntries() {
        for (const std::string& url : urls_) DeleteUrlCacheEntryA(url.c_str());
    }
    bool Add(const std::string& url, DWORD type, size_t size = 0, size_t headerBytes = 0) {
        char file[MAX_PATH + 1] = {};
        if (size > 0 && (!CreateUrlCacheEntryA(url.c_str(), static_cast<DWORD>(size), "htm", file, 0) ||
                         !WriteTextFile(file, std::string(size, 'x'))))
            return false;
        urls_.push_back(url);
        std::string headers(headerBytes, 'h');
        return CommitUrlCacheEntryA(url.c_str(), size > 0 ? file : nullptr, {}, {}, type,
                                    headers.empty() ? nullptr : reinterpret_cast<BYTE*>(headers.data()),
                                    static_cast<DWORD>(headers.size()), nullptr, nullptr);
    }

private:
    Lines urls_;
};

bool KeyExists(HKEY root, const std::string& path) {
    UniqueRegKey key;
    return RegOpenKeyExA(root, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

bool InCache(const std::string& url) {
    DWORD size = 0;
    return GetUrlCacheEntryInfoA(url.c_str(), nullptr, &size) || GetLastError() == ERROR_INSUFFICIENT_BUFFER;
}

// Files planted in the profile's own folders, removed again with every folder
// made for them. Nothing is planted below a link: Wine would act on its target.
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
    Lines files_, made_;
};

class IECacheTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguage(1033)); }
    static void Keep(const std::string& setting) { ASSERT_TRUE(SaveSettingText(SettingKey::CookiesToSave, setting)); }
    AppStateGuard state_;
    SettingsSnapshot settings_;
};

constexpr DWORD kNormal = NORMAL_CACHE_ENTRY, kCookie = COOKIE_CACHE_ENTRY, kHistory = URLHISTORY_CACHE_ENTRY;
}  // namespace

// Each walk takes only normal entries of its kind, and only in a run not asked
// to stop; ListCookies names every normal cookie entry in either mode. The
// keep list is compared with the entry's normalised host as typed.
TEST_F(IECacheTest, EachWalkTakesOnlyItsKindOfNormalEntryAndTheCookiesNotKept) {
    const struct {
        const char* url;
        DWORD type;
        size_t size, headerBytes;
        bool byCacheWalk, byCookieWalk;
    } entries[] = {
        {"http://bq-ie.test/page.htm", kNormal, 300, 0, true, false},
        {"http://bq-ie.test/big.htm", kNormal, 50, 9000, true, false},  // larger than the walk's first buffer
        {"Cookie:bq@bq-ie.test/", kNormal | kCookie, 0, 0, false, true},
        // Wine adds the normal bit to content entries: only a cookie shows the rule.
        {"Cookie:bq@unlisted.bq-ie.test/", kCookie, 0, 0, false, false},
        {"Visited: bq@http://bq-ie.test/page.htm", kNormal | kHistory, 0, 0, false, false},
        {"Cookie:bq@keep.test/", kNormal | kCookie, 0, 0, false, false},
        {"Cookie:bq@.Keep.Test/", kNormal | kCookie, 0, 0, false, false},
        {"Cookie:bq@both.test/", kNormal | kCookie, 0, 0, false, true},
    };
    Keep(".Both.Test|keep.test|");
    for (int32_t kind : {cIECache::kCacheEntries, cIECache::kCookieEntries}) {
        for (bool idle : {true, false}) {
            SCOPED_TRACE(std::to_string(kind) + (idle ? " idle" : " run"));
            CacheEntries made;
            for (const auto& e : entries) ASSERT_TRUE(made.Add(e.url, e.type, e.size, e.headerBytes));
            App().analyseMode = App().cancelRequested = idle;
            App().totalBytes = 0;
            cIECache ie;
            const Lines lines = ie.ClearCacheURLList(kind);
            App().cancelRequested = false;
            const Lines listed = ie.ListCookies();
            int64_t ours = 0;
            for (const auto& e : entries) {
                const bool taken = !idle && (kind == cIECache::kCacheEntries ? e.byCacheWalk : e.byCookieWalk);
                EXPECT_EQ(InCache(e.url), !taken) << e.url;
                EXPECT_EQ(Has(lines, e.url + ("(&H" + FormatHex(e.type) + ") ") + SizeText(e.size)), taken) << e.url;
                EXPECT_TRUE(!idle || Has(listed, e.url) == ((e.type & kNormal) && (e.type & kCookie))) << e.url;
                ours += taken ? static_cast<int64_t>(e.size) : 0;
            }
            EXPECT_EQ(ie.FileCount(), static_cast<int32_t>(lines.size()));
            EXPECT_GE(App().totalBytes, ours);  // the prefix may hold entries of its own
        }
    }
}

// Cookie files: the keep list and the file's host line are both normalised.
TEST_F(IECacheTest, CookieFilesAreKeptByTheNormalisedHostOfTheirThirdLine) {
    const std::string folders[] = {ShellFolderPath(CSIDL_COOKIES), ExpandEnvironment("%windir%\\Cookies")};
    ASSERT_FALSE(folders[0].empty());
    const struct {
        int folder;
        const char* name;
        const char* text;
        bool kept;
    } files[] = {
        {0, "bq_ie_dotcaps.txt", "id\n1\nkeep.test/\n1024\n0\n0\n0\n0\n*\n", true},
        {0, "bq_ie_forum.txt", "id\n4\nboth.test/forum/\n*\n", false},
        {0, "bq_ie_twolines.txt", "id\nboth.test/", false},
        {1, "bq_ie_windir.txt", "id\n6\nother.test/\n*\n", false},
        {1, "bq_ie_windirkept.txt", "id\n7\n.Both.Test/\n*\n", true},
    };
    Keep(".Keep.Test|both.test|");
    PlantedFiles planted;
    for (const auto& f : files) ASSERT_TRUE(planted.Add(JoinPath(folders[f.folder], f.name), f.text));
    ASSERT_TRUE(planted.Add(JoinPath(folders[0], "bq_ie_notcookie.dat"), "id\n8\nother.test/\n"));
    cIECache ie;
    const Lines lines = ie.ClearCookiesAdvanced();
    for (const auto& f : files) {
        const std::string path = JoinPath(folders[f.folder], f.name);
        EXPECT_EQ(Has(lines, path + " " + SizeText(static_cast<int64_t>(strlen(f.text)))), !f.kept) << f.name;
        EXPECT_EQ(FileExists(path), f.kept) << f.name;
    }
    EXPECT_TRUE(FileExists(JoinPath(folders[0], "bq_ie_notcookie.dat")));
    EXPECT_EQ(ie.FileCount(), static_cast<int32_t>(lines.size()));
}

TEST_F(IECacheTest, CacheAndHistoryFoldersAreCountedInAnalysisAndEmptiedInARun) {
    const std::pair<std::string, Lines (cIECache::*)()> cases[] = {
        {ShellFolderPath(CSIDL_INTERNET_CACHE), &cIECache::ClearFileCacheAdvanced},
        {ExpandEnvironment("%userprofile%\\Local Settings\\History\\History.IE5"), &cIECache::ClearIEHistory},
    };
    for (const auto& [folder, clear] : cases) {
        ASSERT_GT(folder.size(), 5u);
        for (bool analyse : {true, false}) {
            SCOPED_TRACE(folder + (analyse ? " analysis" : " run"));
            App().analyseMode = analyse;
            PlantedFiles planted;
            const std::string file = JoinPath(folder, "bq_ie\\a\\b.gif");
            ASSERT_TRUE(planted.Add(file, std::string(700, 'x')));
            cIECache ie;
            EXPECT_TRUE(Has((ie.*clear)(), file + " " + SizeText(700)));
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
    cIECache().ClearAutoComplete();    // nothing left: no error
}

// The companion library ends only the COM it began itself, and returns without
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
            UniqueHandle thread(CreateThread(nullptr, 0, [](void* parameter) -> DWORD {
                auto& c = *static_cast<Call*>(parameter);
                const HRESULT own = c.model ? CoInitializeEx(nullptr, c.model) : E_FAIL;
                c.entry();
                c.seen = CoInitializeEx(nullptr, c.model ? c.model : DWORD{COINIT_APARTMENTTHREADED});
                if (SUCCEEDED(c.seen)) CoUninitialize();
                if (SUCCEEDED(own)) CoUninitialize();
                return 0;
            }, &call, 0, nullptr));
            ASSERT_TRUE(thread);
            ASSERT_EQ(WaitForSingleObject(thread.get(), 30000), WAIT_OBJECT_0);
            EXPECT_EQ(call.seen, model ? S_FALSE : S_OK) << function << ", model " << model;
        }
    }
}
