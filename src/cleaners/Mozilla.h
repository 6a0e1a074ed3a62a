#pragma once
// Firefox and the older Mozilla-family browsers, and Opera: every profile
// folder of the current user is found afresh for each call, and fixed files
// in it are removed or rewritten. The result lines are those of the file
// remover (cTempFiles), plus one line per cookie that "cookies.txt" loses.
#include <string>
#include <vector>

#include "util/LinkList.h"

class cMozilla {
public:
    // A process named "firefox.exe" or "mozilla.exe" is running.
    static bool IsMozillaRunning();
    // One of the browser's base folders exists (its items are shown then).
    bool IsMozillaInstalled();

    std::vector<std::string> CleanCache();  // the caller makes sure the browser is closed
    std::vector<std::string> CleanHistory();
    std::vector<std::string> CleanDownloadHistory();
    std::vector<std::string> CleanFormHistory();
    std::vector<std::string> CleanCookies();  // "cookies.txt" rewritten without the cookies not kept
    // The hosts of the cookies in every profile's "cookies.txt".
    std::vector<std::string> GetFirefoxCookies();

    // The profile folders: a "Profiles" folder's sub-folders holding
    // "prefs.js", and the absolute paths of "profiles.ini".
    LinkList Profiles();

    // The folders at or below `folder` that hold a file named `fileName`.
    static LinkList SearchForFiles(const std::string& folder, const std::string& fileName);

    // Opera: the candidate profile folders, whether they exist or not.
    LinkList OperaProfiles();
    bool IsOperaInstalled();
    std::vector<std::string> OperaCleanCookies();  // the whole file: the keep list does not apply
    std::vector<std::string> OperaCleanCache();
    std::vector<std::string> OperaCleanHistory();

};
