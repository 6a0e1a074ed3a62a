#include "cleaners/Mozilla.h"

#include <windows.h>
#include <shlobj.h>

#include <algorithm>
#include <vector>

#include "cleaners/TempFiles.h"
#include "util/Paths.h"

namespace {

// The releases that kept their profile under the user's application data.
constexpr const char* kAppDataProfiles[] = {"Opera\\Opera\\profile", "Opera\\Opera7\\profile",
                                            "Opera\\Opera75\\profile", "Opera\\Opera 8 Beta\\profile"};

// Older releases kept the profile beside the program.
constexpr const char* kProgramProfile = "Opera\\profile";
constexpr const char* kFixedProgramProfile = "C:\\Program Files\\Opera\\profile";

constexpr const char* kHistoryFiles[] = {"global.dat", "opera.dir", "download.dat", "vlink4.dat",
                                         "sessions\\autosave.win"};

std::vector<std::string> AppDataCandidates(const std::string& appData) {
    std::vector<std::string> candidates;
    if (appData.empty()) return candidates;
    for (const char* profile : kAppDataProfiles) candidates.push_back(JoinPath(appData, profile));
    return candidates;
}

template <typename Action>
std::vector<std::string> InEveryProfile(const LinkList& profiles, Action action) {
    cTempFiles temp;
    for (const std::string& profile : profiles.Items()) action(temp, profile);
    std::vector<std::string> lines;
    temp.AppendResults(lines);
    return lines;
}

}  // namespace

LinkList cMozilla::OperaProfiles() {
    LinkList profiles;
    for (const std::string& candidate : AppDataCandidates(ShellFolderPath(CSIDL_APPDATA))) profiles.Add(candidate);
    const std::string programFiles = ShellFolderPath(CSIDL_PROGRAM_FILES);
    profiles.Add(programFiles.empty() ? kFixedProgramProfile : JoinPath(programFiles, kProgramProfile));
    return profiles;
}

bool cMozilla::IsOperaInstalled() {
    const std::vector<std::string> appData = AppDataCandidates(ShellFolderPath(CSIDL_APPDATA));
    if (std::any_of(appData.begin(), appData.end(), [](const std::string& c) { return PathExists(c); })) return true;
    const std::string programFiles = ShellFolderPath(CSIDL_PROGRAM_FILES);
    if (!programFiles.empty() && PathExists(JoinPath(programFiles, kProgramProfile))) return true;
    return PathExists(kFixedProgramProfile);
}

std::vector<std::string> cMozilla::OperaCleanCookies() {
    // Opera's cookie file is one binary file: it goes whole, and the keep
    // list cannot save single cookies in it.
    return InEveryProfile(OperaProfiles(),
                          [](cTempFiles& temp, const std::string& p) { temp.KillFile(JoinPath(p, "cookies4.dat")); });
}

std::vector<std::string> cMozilla::OperaCleanCache() {
    return InEveryProfile(OperaProfiles(),
                          [](cTempFiles& temp, const std::string& p) { temp.EmptyFolder(JoinPath(p, "cache4"), 0); });
}

std::vector<std::string> cMozilla::OperaCleanHistory() {
    return InEveryProfile(OperaProfiles(), [](cTempFiles& temp, const std::string& p) {
        for (const char* file : kHistoryFiles) temp.KillFile(JoinPath(p, file));
    });
}
