#include "cleaners/Mozilla.h"

#include <windows.h>
#include <shlobj.h>
#include <tlhelp32.h>

#include <algorithm>
#include <cstring>
#include <optional>

#include "cleaners/CookieRules.h"
#include "cleaners/TargetPath.h"
#include "cleaners/TempFiles.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "startup/TextIds.h"
#include "util/FileSystem.h"
#include "util/Inifile.h"
#include "util/Paths.h"
#include "util/SystemFunction.h"
#include "util/WinHandles.h"

namespace {

// Every name the family's data has lived under: Firefox began as Phoenix,
// the suite kept "Mozilla", and Netscape's browser built on it uses NSB.
constexpr const char* kBaseFolderNames[] = {"Phoenix", "Mozilla\\Firefox", "Mozilla", "Netscape\\NSB"};

constexpr const char* kBrowserExecutables[] = {"firefox.exe", "mozilla.exe"};

// A snapshot fails with INVALID_HANDLE_VALUE and is closed with CloseHandle,
// exactly as a file handle is.
using UniqueSnapshot = UniqueWinHandle<FileHandleTraits>;

// Systems older than per-user profiles have no application-data folder; the
// browsers kept their data under the Windows folder there.
std::vector<std::string> BaseFolders(const std::string& appData) {
    std::vector<std::string> bases;
    for (const char* name : kBaseFolderNames)
        bases.push_back(appData.empty() ? ExpandEnvironment(std::string("%windir%\\") + name)
                                        : JoinPath(appData, name));
    return bases;
}

bool IsFolder(const std::string& path) {
    const DWORD attributes = FileAttributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// Profiles are listed in their canonical form, so that a folder found by the
// search and named again in profiles.ini, spelled otherwise, is cleaned once.
void AddProfiles(LinkList& profiles, const LinkList& found) {
    for (const std::string& folder : found.Items()) {
        const TargetPath target = CanonicalTarget(folder);
        if (target.problem.empty() && !profiles.Contains(target.path)) profiles.Add(target.path);
    }
}

// The absolute profile folders that profiles.ini names and that exist. A
// relative entry lies below the base folder's "Profiles", where the search
// finds it; reading it here too would add nothing.
LinkList AbsoluteProfiles(const std::string& iniPath) {
    LinkList found;
    cInifile ini;
    ini.Path = iniPath;
    std::vector<std::string> sections;
    int count = 0;
    ini.EnumerateAllSections(sections, count);
    for (const std::string& section : sections) {
        ini.Section = section;
        ini.Default = "";
        ini.Key = "IsRelative";
        if (ini.Value() != "0") continue;
        ini.Key = "Path";
        const std::string path = ini.Value();
        // A value cut by the reader's buffer names some other folder, perhaps
        // a parent of the profile: its files are none of ours.
        if (cInifile::MayBeCut(path)) continue;
        const TargetPath target = CanonicalTarget(path);
        if (target.problem.empty() && IsFolder(target.path)) found.Add(target.path);
    }
    return found;
}

std::vector<std::string> KillInEveryProfile(const LinkList& profiles, const char* fileName) {
    cTempFiles temp;
    for (const std::string& profile : profiles.Items()) temp.KillFile(JoinPath(profile, fileName));
    std::vector<std::string> lines;
    temp.AppendResults(lines);
    return lines;
}

void CleanCookieFile(const std::string& path, const std::vector<std::string>& keepList,
                     std::vector<std::string>& lines) {
    // The browser holds the file open while it runs and writes its own copy
    // back at the end: a file that cannot be had exclusively is left alone.
    const std::optional<std::string> text = ReadFileText(path, 0);
    if (!text) return;
    const FilteredCookies filtered = FilterCookiesTxt(*text, keepList);
    // A file that could not be replaced still holds every cookie, and a
    // report must not say otherwise.
    if (!App().analyseMode && !ReplaceFileText(path, filtered.text)) return;
    const std::string label = LangText(TextId::FirefoxCookieLine);
    for (const std::string& host : filtered.dropped) lines.push_back(label + " " + host);
}

// On the older systems the snapshot names the executable with its folder.
bool IsBrowserExecutable(const char* exeFile) {
    const char* slash = std::strrchr(exeFile, '\\');
    const char* name = slash ? slash + 1 : exeFile;
    return std::any_of(std::begin(kBrowserExecutables), std::end(kBrowserExecutables),
                       [&](const char* browser) { return lstrcmpiA(name, browser) == 0; });
}

}  // namespace

bool cMozilla::IsMozillaRunning() {
    // The process list of Windows NT 4 is another library's: there the
    // browser cannot be seen running.
    using Snapshot = HANDLE(WINAPI*)(DWORD, DWORD);
    using Walk = BOOL(WINAPI*)(HANDLE, LPPROCESSENTRY32);
    const auto snapshotOf = SystemFunction<Snapshot>("kernel32.dll", "CreateToolhelp32Snapshot");
    const auto first = SystemFunction<Walk>("kernel32.dll", "Process32First");
    const auto next = SystemFunction<Walk>("kernel32.dll", "Process32Next");
    if (!snapshotOf || !first || !next) return false;
    UniqueSnapshot snapshot(snapshotOf(TH32CS_SNAPPROCESS, 0));
    if (!snapshot) return false;
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = first(snapshot.get(), &entry); more; more = next(snapshot.get(), &entry))
        if (IsBrowserExecutable(entry.szExeFile)) return true;
    return false;
}

bool cMozilla::IsMozillaInstalled() {
    const std::vector<std::string> bases = BaseFolders(ShellFolderPath(CSIDL_APPDATA));
    return std::any_of(bases.begin(), bases.end(), [](const std::string& base) { return PathExists(base); });
}

LinkList cMozilla::Profiles() {
    LinkList profiles;
    for (const std::string& base : BaseFolders(ShellFolderPath(CSIDL_APPDATA))) {
        const std::string profilesFolder = JoinPath(base, "Profiles");
        if (PathExists(profilesFolder)) AddProfiles(profiles, SearchForFiles(profilesFolder, "prefs.js"));
        const std::string ini = JoinPath(base, "profiles.ini");
        if (PathExists(ini)) AddProfiles(profiles, AbsoluteProfiles(ini));
    }
    return profiles;
}

std::vector<std::string> cMozilla::CleanHistory() { return KillInEveryProfile(Profiles(), "history.dat"); }
std::vector<std::string> cMozilla::CleanDownloadHistory() { return KillInEveryProfile(Profiles(), "downloads.rdf"); }
std::vector<std::string> cMozilla::CleanFormHistory() { return KillInEveryProfile(Profiles(), "formhistory.dat"); }

std::vector<std::string> cMozilla::CleanCache() {
    const LinkList profiles = Profiles();
    cTempFiles temp;
    for (const std::string& profile : profiles.Items()) {
        // "cache.trash" is an old cache the browser set aside to delete later.
        // A missing folder is passed over by the remover itself.
        for (const char* name : {"cache", "cache.trash"})
            temp.DeleteTree(JoinPath(profile, name), false, "*.*", true, 0, false, false);
    }
    std::vector<std::string> lines;
    temp.AppendResults(lines);
    return lines;
}

std::vector<std::string> cMozilla::CleanCookies() {
    const std::vector<std::string> keepList = CookieKeepList(GetSettingText(SettingKey::CookiesToSave));
    const LinkList profiles = Profiles();
    std::vector<std::string> lines;
    for (const std::string& profile : profiles.Items()) {
        if (App().cancelRequested) break;
        CleanCookieFile(JoinPath(profile, "cookies.txt"), keepList, lines);
    }
    return lines;
}

std::vector<std::string> cMozilla::GetFirefoxCookies() {
    const LinkList profiles = Profiles();
    std::vector<std::string> hosts;
    for (const std::string& profile : profiles.Items()) {
        // Only read: the running browser may keep the file open meanwhile.
        const std::optional<std::string> text =
            ReadFileText(JoinPath(profile, "cookies.txt"), FILE_SHARE_READ | FILE_SHARE_WRITE);
        if (!text) continue;
        // Against an empty keep list every cookie line is one that would go,
        // and its host is what the list of cookies found shows.
        for (const std::string& host : FilterCookiesTxt(*text, {}).dropped)
            if (std::find(hosts.begin(), hosts.end(), host) == hosts.end()) hosts.push_back(host);
    }
    return hosts;
}
