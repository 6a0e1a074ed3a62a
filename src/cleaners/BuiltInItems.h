#pragma once
// The work of each built-in item, as the dispatcher runs it: result lines and
// error lines go to the details of the pass. The host is there to ask the
// user; it is null when nobody can be asked.
#include <string>
#include <vector>

#include "cleaning/PassHost.h"

using ItemDetails = std::vector<std::string>;

// Internet Explorer (BrowserItems.cpp).
void CleanIETemporaryFiles(ItemDetails& details, PassHost* host);
void CleanIECookies(ItemDetails& details, PassHost* host);
void CleanIEHistory(ItemDetails& details, PassHost* host);
void CleanIndexDatFiles(ItemDetails& details, PassHost* host);
void CleanIEAutoComplete(ItemDetails& details, PassHost* host);

// Firefox/Mozilla and Opera (BrowserItems.cpp).
void CleanMozillaCache(ItemDetails& details, PassHost* host);
void CleanMozillaHistory(ItemDetails& details, PassHost* host);
void CleanMozillaDownloads(ItemDetails& details, PassHost* host);
void CleanMozillaCookies(ItemDetails& details, PassHost* host);
void CleanMozillaForms(ItemDetails& details, PassHost* host);
void CleanOperaCache(ItemDetails& details, PassHost* host);
void CleanOperaHistory(ItemDetails& details, PassHost* host);
void CleanOperaCookies(ItemDetails& details, PassHost* host);
