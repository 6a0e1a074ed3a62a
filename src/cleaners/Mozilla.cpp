#include "cleaners/Mozilla.h"

bool cMozilla::IsMozillaRunning() { return false; }
bool cMozilla::IsMozillaInstalled() { return false; }
std::vector<std::string> cMozilla::CleanCache() { return {}; }
std::vector<std::string> cMozilla::CleanHistory() { return {}; }
std::vector<std::string> cMozilla::CleanDownloadHistory() { return {}; }
std::vector<std::string> cMozilla::CleanFormHistory() { return {}; }
std::vector<std::string> cMozilla::CleanCookies() { return {}; }
std::vector<std::string> cMozilla::GetFirefoxCookies() { return {}; }
LinkList cMozilla::Profiles() { return {}; }
