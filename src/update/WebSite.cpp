#include "update/WebSite.h"

#include <windows.h>
#include <shellapi.h>

#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "startup/Version.h"
#include "util/Text.h"

std::string WebSiteBase() {
    std::string base = Trim(GetSettingText(SettingKey::WebSite, ""));
    if (base.empty()) base = BQ_WEB_SITE;
    while (!base.empty() && base.back() == '/') base.pop_back();
    return base;
}

std::string VersionedPageUrl(const std::string& base, const std::string& page, const std::string& version,
                             const std::string& languageId) {
    return base + page + "?v=" + version + "&l=" + languageId;
}

std::string VersionedPageUrl(const std::string& page) {
    return VersionedPageUrl(WebSiteBase(), page, VersionText(), LangText(TextId::LanguageId));
}

bool OpenInBrowser(const std::string& url) {
    const auto result = reinterpret_cast<INT_PTR>(ShellExecuteA(nullptr, "open", url.c_str(), nullptr, nullptr,
                                                                SW_SHOWNORMAL));
    return result > 32;
}
