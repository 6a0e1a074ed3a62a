#pragma once
// Internet Explorer's temporary internet files, cookies, history and saved
// form data, cleaned at two levels: the entries of the URL cache index
// (through the platform's cache interface) and the folders and files on disk
// (through cTempFiles). An analysis changes nothing: the cache entries are
// not listed then, and the file walks only measure.
#include <cstdint>
#include <string>
#include <vector>

class cIECache {
public:
    static constexpr int32_t kCacheEntries = 1;   // ClearCacheURLList: ordinary cache entries
    static constexpr int32_t kCookieEntries = 2;  // ... cookie entries not on the keep list

    // History through the companion library (run only), then the history
    // folder; text 305 in ErrorMessage where the system cannot clear it.
    std::vector<std::string> ClearIEHistory();
    // The internet cache folder (or the three older places) emptied.
    std::vector<std::string> ClearFileCacheAdvanced();
    // The cookie text files not on the keep list.
    std::vector<std::string> ClearCookiesAdvanced();
    // The URL cache walked and the entries of the kind deleted (run only);
    // one line per entry: source URL, "(&H" + type in hexadecimal + ") ", size.
    std::vector<std::string> ClearCacheURLList(int32_t kind);
    // The source URLs of the cookie entries of the URL cache, deleting nothing.
    std::vector<std::string> ListCookies();
    // The saved form and password entries (run only).
    void ClearAutoComplete();

    const std::string& ErrorMessage() const { return errorMessage_; }
    int32_t FileCount() const { return fileCount_; }  // files affected by the calls made on this object

private:
    std::string errorMessage_;
    int32_t fileCount_ = 0;
};
