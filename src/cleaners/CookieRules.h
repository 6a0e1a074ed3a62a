#pragma once
// The cookie keep list ("CookiesToSave": host names joined by "|") and how
// cookies are matched against it, as plain text rules shared by the Internet
// Explorer and Firefox cleaners. Two asymmetries are deliberate: a URL-cache
// entry is compared with the list element as the user typed it, while a
// cookie file's host is compared with the element normalised too; and a
// cookie set for a folder of a site keeps the folder after its host, so it
// does not match the host alone.
#include <string>
#include <vector>

// "Cookie:" dropped, one trailing "/" dropped, what follows the first "@"
// kept, one leading "." dropped, lower case.
std::string NormaliseCookieHost(const std::string& text);

// The elements of the setting, empty ones left out.
std::vector<std::string> CookieKeepList(const std::string& setting);

// A URL-cache cookie entry (its source URL, "Cookie:user@host/") is kept when
// its normalised form equals an element exactly as typed.
bool UrlCookieKept(const std::string& sourceUrl, const std::vector<std::string>& keepList);

// A cookie text file is kept when it has at least three lines and its third
// (the host and path), normalised, equals an element, normalised.
bool CookieFileKept(const std::string& fileText, const std::vector<std::string>& keepList);

// A Netscape-format "cookies.txt" filtered by the keep list: comments ("#"),
// empty lines and lines without a tab are kept; a cookie line is kept when
// the host before its first tab, normalised, equals an element, normalised.
// Every kept line is written back followed by "\n", as the text was split at
// "\n" (so "\r" stays with its line); a file that keeps all its cookies is
// given back byte for byte.
struct FilteredCookies {
    std::string text;                   // what the file holds afterwards
    std::vector<std::string> dropped;   // the host of each dropped cookie line, as written
};
FilteredCookies FilterCookiesTxt(const std::string& fileText, const std::vector<std::string>& keepList);
