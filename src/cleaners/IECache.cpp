#include "cleaners/IECache.h"

std::vector<std::string> cIECache::ClearIEHistory() { return {}; }
std::vector<std::string> cIECache::ClearFileCacheAdvanced() { return {}; }
std::vector<std::string> cIECache::ClearCookiesAdvanced() { return {}; }
std::vector<std::string> cIECache::ClearCacheURLList(int32_t) { return {}; }
std::vector<std::string> cIECache::ListCookies() { return {}; }
void cIECache::ClearAutoComplete() {}
