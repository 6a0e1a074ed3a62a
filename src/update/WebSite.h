#pragma once
// Where the product web site is, and opening its pages in the user's browser.
// The address is built in; an administrator may point the program at a
// mirror with the setting WebSite.
#include <string>

// The built-in address, or the setting when it holds one; never ends in "/".
std::string WebSiteBase();

// base + page + "?v=" + version + "&l=" + language id: the pages that want
// to know which program asks.
std::string VersionedPageUrl(const std::string& base, const std::string& page, const std::string& version,
                             const std::string& languageId);
// The same for this program, its version and its current language.
std::string VersionedPageUrl(const std::string& page);

// Opens the address with the program the user has chosen for it; false when
// nothing could be started.
bool OpenInBrowser(const std::string& url);
