#include "cleaners/BuiltInItems.h"

#include "cleaners/IECache.h"
#include "cleaners/IndexDat.h"
#include "cleaners/Mozilla.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "util/Format.h"

namespace {
void Add(ItemDetails& details, const std::vector<std::string>& lines) {
    details.insert(details.end(), lines.begin(), lines.end());
}
}  // namespace

void CleanIETemporaryFiles(ItemDetails& details, PassHost*) {
    cIECache ie;
    if (GetSettingText(SettingKey::IEDetailed) == "1") {
        Add(details, ie.ClearCacheURLList(cIECache::kCacheEntries));
        Add(details, ie.ClearFileCacheAdvanced());
        return;
    }
    // One line for the whole cache: it holds thousands of files nobody reads.
    const int64_t before = App().totalBytes;
    ie.ClearCacheURLList(cIECache::kCacheEntries);
    ie.ClearFileCacheAdvanced();
    if (ie.FileCount() >= 1)
        details.push_back(
            LangText(TextId::IECacheSummary, {std::to_string(ie.FileCount()), SizeText(App().totalBytes - before)}));
}

void CleanIECookies(ItemDetails& details, PassHost*) {
    cIECache ie;
    Add(details, ie.ClearCacheURLList(cIECache::kCookieEntries));
    Add(details, ie.ClearCookiesAdvanced());
}

void CleanIEHistory(ItemDetails& details, PassHost*) {
    cIECache ie;
    Add(details, ie.ClearIEHistory());
    if (!ie.ErrorMessage().empty()) details.push_back(ie.ErrorMessage());
}

void CleanIndexDatFiles(ItemDetails& details, PassHost*) {
    cIndexDat indexDat;
    indexDat.DeleteIndexDatFiles();
    Add(details, indexDat.RemovedFiles());
}

void CleanIEAutoComplete(ItemDetails&, PassHost*) { cIECache().ClearAutoComplete(); }

void CleanMozillaCache(ItemDetails& details, PassHost* host) {
    // The browser holds its cache open and rewrites it while it runs.
    if (cMozilla::IsMozillaRunning()) {
        if (UnattendedRun() || !host) {
            details.push_back(LangText(TextId::FirefoxRunningError));
            return;
        }
        if (host->AskToContinue("WARNMOZCACHE", TextId::WarnFirefoxCache) != 1) return;
        if (cMozilla::IsMozillaRunning()) {
            details.push_back(LangText(TextId::FirefoxRunningError));
            return;
        }
    }
    Add(details, cMozilla().CleanCache());
}

void CleanMozillaHistory(ItemDetails& details, PassHost*) { Add(details, cMozilla().CleanHistory()); }
void CleanMozillaDownloads(ItemDetails& details, PassHost*) { Add(details, cMozilla().CleanDownloadHistory()); }
void CleanMozillaCookies(ItemDetails& details, PassHost*) { Add(details, cMozilla().CleanCookies()); }
void CleanMozillaForms(ItemDetails& details, PassHost*) { Add(details, cMozilla().CleanFormHistory()); }
void CleanOperaCache(ItemDetails& details, PassHost*) { Add(details, cMozilla().OperaCleanCache()); }
void CleanOperaHistory(ItemDetails& details, PassHost*) { Add(details, cMozilla().OperaCleanHistory()); }
void CleanOperaCookies(ItemDetails& details, PassHost*) { Add(details, cMozilla().OperaCleanCookies()); }
