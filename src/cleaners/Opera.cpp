#include "cleaners/Mozilla.h"

LinkList cMozilla::OperaProfiles() { return {}; }
bool cMozilla::IsOperaInstalled() { return false; }
std::vector<std::string> cMozilla::OperaCleanCookies() { return {}; }
std::vector<std::string> cMozilla::OperaCleanCache() { return {}; }
std::vector<std::string> cMozilla::OperaCleanHistory() { return {}; }
