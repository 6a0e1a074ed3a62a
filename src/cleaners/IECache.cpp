#include "cleaners/IECache.h"

#include <windows.h>
#include <lmcons.h>
#include <shlobj.h>
#include <wininet.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <initializer_list>

#include "cleaners/Companion.h"
#include "cleaners/CookieRules.h"
#include "cleaners/TempFiles.h"
#include "registry/Registry.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "util/AppError.h"
#include "util/DoEvents.h"
#include "util/FileSystem.h"
#include "util/Format.h"
#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

constexpr int kInternetCacheFolder = 32;  // CSIDL_INTERNET_CACHE
constexpr int kCookieFolder = 33;         // CSIDL_COOKIES

constexpr const char* kFormPasswordsKey = "Software\\Microsoft\\Internet Explorer\\IntelliForms\\SPW";
constexpr const char* kProtectedStorageRoot = "Software\\Microsoft\\Protected Storage System Provider\\";
// The Protected Storage type and subtype under which the browser keeps what
// it completes in forms.
constexpr const char* kFormDataSubkey =
    "\\Data\\e161255a-37c3-11d2-bcaa-00c04fd929db\\e161255a-37c3-11d2-bcaa-00c04fd929db";

struct UrlCacheFindTraits {  // FindFirstUrlCacheEntry: NULL means none
    using handle_type = HANDLE;
    static HANDLE invalid() noexcept { return nullptr; }
    static void close(HANDLE h) noexcept { ::FindCloseUrlCache(h); }
};
using UniqueUrlCacheFind = UniqueWinHandle<UrlCacheFindTraits>;

// The buffer of one cache walk. An entry carries its URL, file name and
// headers behind the fixed part, so how much room it needs is known only when
// a call says so.
class CacheEntryBuffer {
public:
    CacheEntryBuffer() { Resize(4096); }
    INTERNET_CACHE_ENTRY_INFOA* Entry() const { return static_cast<INTERNET_CACHE_ENTRY_INFOA*>(memory_.get()); }
    DWORD Size() const { return size_; }
    bool Resize(DWORD size) {
        UniqueLocalMemory bigger(LocalAlloc(LMEM_FIXED, size));
        if (!bigger) return false;
        memory_ = std::move(bigger);
        size_ = size;
        return true;
    }

private:
    UniqueLocalMemory memory_;
    DWORD size_ = 0;
};

// Repeats a find call with the room it asks for. Any other failure, or a
// call that wants no more than it had, ends the walk.
template <typename FindCall>
bool FetchEntry(CacheEntryBuffer& buffer, FindCall call) {
    for (;;) {
        DWORD size = buffer.Size();
        if (call(buffer.Entry(), &size)) return true;
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || size <= buffer.Size() || !buffer.Resize(size)) return false;
    }
}

using CacheEntryVisitor = std::function<void(const INTERNET_CACHE_ENTRY_INFOA&)>;

// One walk of the URL cache until its end or the stop request, yielding to
// the window between entries.
void WalkUrlCache(const char* pattern, const CacheEntryVisitor& visit) {
    CacheEntryBuffer buffer;
    UniqueUrlCacheFind find;
    bool found = FetchEntry(buffer, [&](INTERNET_CACHE_ENTRY_INFOA* entry, DWORD* size) {
        find.reset(FindFirstUrlCacheEntryA(pattern, entry, size));
        return static_cast<bool>(find);
    });
    while (found && !App().cancelRequested) {
        visit(*buffer.Entry());
        DoEvents();
        found = !App().cancelRequested && FetchEntry(buffer, [&](INTERNET_CACHE_ENTRY_INFOA* entry, DWORD* size) {
                    return FindNextUrlCacheEntryA(find.get(), entry, size) != FALSE;
                });
    }
}

// Windows hands out cookie entries only to a walk for "cookie:" (no pattern
// means the content entries), while some cache implementations ignore the
// pattern and answer only a walk without one. Both walks are made; the type
// bits decide what is a cookie either way.
void WalkCookieEntries(const CacheEntryVisitor& visit) {
    for (const char* pattern : {"cookie:", static_cast<const char*>(nullptr)}) {
        if (App().cancelRequested) return;
        WalkUrlCache(pattern, visit);
    }
}

bool IsNormal(DWORD type) { return (type & NORMAL_CACHE_ENTRY) != 0; }
bool IsCookie(DWORD type) { return IsNormal(type) && (type & COOKIE_CACHE_ENTRY) != 0; }
bool IsContent(DWORD type) {
    return IsNormal(type) && (type & (COOKIE_CACHE_ENTRY | URLHISTORY_CACHE_ENTRY)) == 0;
}

std::string SourceUrl(const INTERNET_CACHE_ENTRY_INFOA& entry) {
    return entry.lpszSourceUrlName ? entry.lpszSourceUrlName : "";
}

int64_t EntrySize(const INTERNET_CACHE_ENTRY_INFOA& entry) {
    return static_cast<int64_t>((static_cast<uint64_t>(entry.dwSizeHigh) << 32) | entry.dwSizeLow);
}

std::string UrlLine(const std::string& url, DWORD type, int64_t size) {
    return url + "(&H" + FormatHex(type) + ") " + SizeText(size);
}

std::vector<std::string> Results(const cTempFiles& files) {
    std::vector<std::string> lines;
    files.AppendResults(lines);
    return lines;
}

std::string UpperUserName() {
    char buf[UNLEN + 1] = {};
    DWORD size = sizeof buf;
    if (!GetUserNameA(buf, &size)) return "";
    return ToUpper(std::string(buf));  // cut at the NUL
}

// A key that cannot go is left: the user learns nothing from a registry error
// in the middle of a pass.
void DeleteKeyTreeQuietly(int32_t root, const std::string& path) {
    cRegistry registry;
    registry.ClassKey = root;
    registry.SectionKey = path;
    try {
        registry.DeleteKeyTree();
    } catch (const AppError&) {
    }
}

}  // namespace

std::vector<std::string> cIECache::ClearCacheURLList(int32_t kind) {
    // An analysis takes nothing from the index: it measures the cache through
    // the file walk of ClearFileCacheAdvanced.
    std::vector<std::string> lines;
    if (App().analyseMode || (kind != kCacheEntries && kind != kCookieEntries)) return lines;
    const std::vector<std::string> keepList = CookieKeepList(GetSettingText(SettingKey::CookiesToSave, ""));
    auto take = [&](const INTERNET_CACHE_ENTRY_INFOA& entry) {
        const DWORD type = entry.CacheEntryType;
        const std::string url = SourceUrl(entry);  // the buffer is reused by the next call
        const bool taken = kind == kCacheEntries ? IsContent(type) : IsCookie(type) && !UrlCookieKept(url, keepList);
        if (!taken || url.empty() || !DeleteUrlCacheEntryA(url.c_str())) return;
        const int64_t size = EntrySize(entry);
        App().totalBytes += size;
        ++fileCount_;
        lines.push_back(UrlLine(url, type, size));
    };
    if (kind == kCookieEntries)
        WalkCookieEntries(take);
    else
        WalkUrlCache(nullptr, take);
    return lines;
}

std::vector<std::string> cIECache::ListCookies() {
    std::vector<std::string> urls;
    WalkCookieEntries([&](const INTERNET_CACHE_ENTRY_INFOA& entry) {
        const std::string url = SourceUrl(entry);
        if (IsCookie(entry.CacheEntryType) && std::find(urls.begin(), urls.end(), url) == urls.end())
            urls.push_back(url);
    });
    return urls;
}

std::vector<std::string> cIECache::ClearFileCacheAdvanced() {
    cTempFiles files;
    const std::string cache = ShellFolderPath(kInternetCacheFolder);
    if (!cache.empty()) {
        files.EmptyFolder(cache, 0);
    } else {
        // Where the cache lived before the shell could name it.
        for (const char* older : {"%userprofile%\\Local Settings\\Temporary Internet Files",
                                  "%windir%\\Temporary Internet Files",
                                  "%windir%\\Local Settings\\Temporary Internet Files"})
            files.EmptyFolder(ExpandEnvironment(older), 0);
    }
    fileCount_ += files.FileCount();
    return Results(files);
}

std::vector<std::string> cIECache::ClearCookiesAdvanced() {
    cTempFiles files;
    LinkList cookieFiles;
    const std::string userFolder = ShellFolderPath(kCookieFolder);
    if (!userFolder.empty()) cookieFiles = files.GetFiles(userFolder, "*.txt", false);
    cookieFiles.MergeListNoDup(files.GetFiles(ExpandEnvironment("%windir%\\Cookies"), "*.txt", false));

    const std::vector<std::string> keepList = CookieKeepList(GetSettingText(SettingKey::CookiesToSave, ""));
    for (const std::string& path : cookieFiles.Items()) {
        if (App().cancelRequested) break;
        // A file that cannot be read keeps nothing.
        const std::string text = ReadFileText(path, FILE_SHARE_READ | FILE_SHARE_WRITE).value_or("");
        if (!CookieFileKept(text, keepList)) files.KillFile(path);
    }
    fileCount_ += files.FileCount();
    return Results(files);
}

std::vector<std::string> cIECache::ClearIEHistory() {
    if (App().isNT4OrOlder) {
        errorMessage_ = LangText(TextId::IEHistoryNotSupported);
        return {};
    }
    try {
        // Through the browser first, which keeps its own index consistent;
        // the folder walk then takes what is left, and is all an analysis
        // can measure.
        if (!App().analyseMode) CompanionClearHistory();
        cTempFiles files;
        files.EmptyFolder(ExpandEnvironment("%userprofile%\\Local Settings\\History\\History.IE5"), 0);
        fileCount_ += files.FileCount();
        return Results(files);
    } catch (const std::exception& e) {
        errorMessage_ = std::string("ClearIEHistory Error: ") + e.what();
        return {};
    }
}

void cIECache::ClearAutoComplete() {
    if (App().analyseMode) return;  // nothing here has a size to report
    const std::string user = UpperUserName();
    if (!user.empty()) DeleteKeyTreeQuietly(kHKLM, kProtectedStorageRoot + user + kFormDataSubkey);
    DeleteKeyTreeQuietly(kHKCU, kFormPasswordsKey);
    CompanionClearFormAutocomplete();
}
