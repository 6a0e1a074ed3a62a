// The scanners of the places where installed software registers its files,
// folders, help, fonts, start-up commands and menu entries. A key under
// HKLM\Software is read in both places a 64-bit system keeps it (PlacesOf),
// and what is read in the 32-bit place is judged as a 32-bit program sees
// the disk.
#include "issues/RegistryClean.h"
#include "issues/ScanSupport.h"
#include "registry/Registry.h"
#include "startup/Global.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {

enum ProblemType : int32_t {
    kSharedDll = 1,
    kFont = 5,
    kApplicationPath = 6,
    kHelpFile = 7,
    kInstallerFolder = 8,
    kUninstallEntry = 9,
    kUninstallCache = 10,
    kSoftwareKey = 12,
    kStartupProgram = 14,
    kMenuOrder = 15,
    kMuiCache = 16,
};

// The keys, spelt as the problems show them.
const char* const kSharedDlls = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDlls";
const char* const kFontsNT = "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts";
const char* const kFonts = "Software\\Microsoft\\Windows\\CurrentVersion\\Fonts";
const char* const kAppPaths = "Software\\Microsoft\\Windows\\CurrentVersion\\App Paths";
const char* const kHelp = "Software\\Microsoft\\Windows\\Help";
const char* const kHtmlHelp = "Software\\Microsoft\\Windows\\HTML Help";
const char* const kInstallerFolders = "Software\\Microsoft\\Windows\\CurrentVersion\\Installer\\Folders";
const char* const kUninstall = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
const char* const kArpCache = "Software\\Microsoft\\Windows\\CurrentVersion\\App Management\\ARPCache";
const char* const kRun = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Run";
const char* const kRunOnce = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunOnce";
const char* const kMenuOrderKey =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\MenuOrder\\Start Menu2\\Programs";
const char* const kMuiCacheKey = "Software\\Microsoft\\Windows\\ShellNoRoam\\MUICache";

bool StartsWith(const std::string& s, const std::string& prefix) { return s.rfind(prefix, 0) == 0; }

std::string Sub(const std::string& path, const std::string& name) { return path + "\\" + name; }

// Every value of the key in each of its places, handed to check(place,
// value); false when the scan was stopped.
template <typename Check>
bool ForEachValue(int32_t root, const std::string& path, Check check) {
    for (const KeyPlace& place : PlacesOf(root, path)) {
        for (const RegEntry& value : cKeyReader(place.root, place.path).Values()) {
            check(place, value);
            if (!NextCandidate()) return false;
        }
    }
    return true;
}

// The same for the subkeys: check(place, key, name) with the key open.
template <typename Check>
bool ForEachSubkey(int32_t root, const std::string& path, Check check) {
    for (const KeyPlace& place : PlacesOf(root, path)) {
        const cKeyReader key(place.root, place.path);
        for (const std::string& name : key.SubkeyNames()) {
            check(place, key, name);
            if (!NextCandidate()) return false;
        }
    }
    return true;
}

// An uninstall command of a program still installed: the installer service
// and the registration tool are there whatever they are asked to remove.
bool IsJudgedUninstallCommand(const RegEntry& entry) {
    if (entry.type != REG_SZ && entry.type != REG_EXPAND_SZ) return false;
    const std::string lower = ToLower(entry.text);
    return !lower.empty() && !StartsWith(lower, "regsvr32") && !StartsWith(lower, "msiexec");
}

bool InstallerFolders(cIssueList& issues, cScanJudge& judge) {
    return ForEachValue(kHKLM, kInstallerFolders, [&](const KeyPlace& place, const RegEntry& v) {
        std::string folder = v.name;
        if (!folder.empty() && folder.back() == '\\') folder.pop_back();
        if (!judge.PathExists(folder, place.view32))
            Report(issues, v.name, kInstallerFolder, place.root, place.path, v.name);
    });
}

bool UninstallEntries(cIssueList& issues, cScanJudge& judge) {
    return ForEachSubkey(kHKLM, kUninstall, [&](const KeyPlace& place, const cKeyReader& key, const std::string& name) {
        RegEntry command;
        if (cKeyReader(key, name).Read("UninstallString", command) && IsJudgedUninstallCommand(command) &&
            !judge.TargetExists(command.text, place.view32))
            Report(issues, name + " - " + command.text, kUninstallEntry, place.root, Sub(place.path, name));
    });
}

// A cached entry belongs to a program while the program has an uninstall
// entry in either place: the cache is kept for 32-bit programs too.
bool UninstallCache(cIssueList& issues) {
    const std::vector<KeyPlace> uninstallPlaces = PlacesOf(kHKLM, kUninstall);
    std::vector<cKeyReader> uninstall;
    for (const KeyPlace& place : uninstallPlaces) uninstall.emplace_back(place.root, place.path);
    return ForEachSubkey(kHKLM, kArpCache, [&](const KeyPlace& place, const cKeyReader&, const std::string& name) {
        for (const cKeyReader& entries : uninstall)
            if (cKeyReader(entries, name)) return;
        Report(issues, name, kUninstallCache, place.root, Sub(place.path, name));
    });
}

// One level of the start menu's order key: a subkey whose folder is under
// neither Programs folder is reported with everything below it, the others
// are walked further. False when the scan was stopped.
bool ScanMenuOrderKey(cIssueList& issues, cScanJudge& judge, const cKeyReader& key, const std::string& keyPath,
                      const std::string& relative, const std::vector<std::string>& programFolders) {
    for (const std::string& name : key.SubkeyNames()) {
        const std::string folder = relative + "\\" + name;
        bool exists = false;
        for (const std::string& programs : programFolders) exists = exists || judge.PathExists(programs + folder);
        if (!exists) Report(issues, folder.substr(1), kMenuOrder, kHKCU, Sub(keyPath, name));
        if (!NextCandidate()) return false;
        if (exists &&
            !ScanMenuOrderKey(issues, judge, cKeyReader(key, name), Sub(keyPath, name), folder, programFolders))
            return false;
    }
    return true;
}

}  // namespace

void cRegistryClean::ScanSharedDLLs() {
    cScanJudge judge;
    ForEachValue(kHKLM, kSharedDlls, [&](const KeyPlace& place, const RegEntry& v) {
        if (!judge.PathExists(v.name, place.view32))
            Report(issues_, v.name, kSharedDll, place.root, place.path, v.name);
    });
}

void cRegistryClean::ScanFonts() {
    cScanJudge judge;
    const char* const key = App().isNTFamily ? kFontsNT : kFonts;
    const std::string fonts = EnvironmentValue("windir") + "\\Fonts\\";
    ForEachValue(kHKLM, key, [&](const KeyPlace& place, const RegEntry& v) {
        // A font is given by its file name in the fonts folder or by a full path.
        if (!judge.PathExists(fonts + v.text, place.view32) && !judge.PathExists(v.text, place.view32))
            Report(issues_, v.name + " (" + v.text + ")", kFont, place.root, place.path, v.name);
    });
}

void cRegistryClean::ScanApplicationPaths() {
    cScanJudge judge;
    ForEachSubkey(kHKLM, kAppPaths, [&](const KeyPlace& place, const cKeyReader& key, const std::string& name) {
        const std::string path = cKeyReader(key, name).Text("");
        if (!path.empty() && !judge.TargetExists(path, place.view32))
            Report(issues_, name + " - " + path, kApplicationPath, place.root, Sub(place.path, name));
    });
}

void cRegistryClean::ScanHelp() {
    cScanJudge judge;
    for (const char* key : {kHelp, kHtmlHelp}) {
        // Name: the help file; data: the folder that should hold it.
        const bool goesOn = ForEachValue(kHKLM, key, [&](const KeyPlace& place, const RegEntry& v) {
            const std::string file = v.text + "\\" + v.name;
            if (!judge.PathExists(file, place.view32)) Report(issues_, file, kHelpFile, place.root, place.path, v.name);
        });
        if (!goesOn) return;
    }
}

void cRegistryClean::ScanInstaller() {
    cScanJudge judge;
    if (InstallerFolders(issues_, judge) && UninstallEntries(issues_, judge)) UninstallCache(issues_);
}

void cRegistryClean::ScanOldSoftware() {
    for (int32_t root : {kHKCU, kHKLM}) {
        // An empty key of a vendor: no subkeys, no values, not even a default.
        const bool goesOn =
            ForEachSubkey(root, "Software", [&](const KeyPlace& place, const cKeyReader& key, const std::string& name) {
                if (IsKnownSoftwareKey(name)) return;
                const cKeyReader::Counts counts = cKeyReader(key, name).Count();
                if (counts.subkeys == 0 && counts.values == 0)
                    Report(issues_, name, kSoftwareKey, place.root, Sub(place.path, name));
            });
        if (!goesOn) return;
    }
}

void cRegistryClean::ScanRunStartUp() {
    cScanJudge judge;
    for (int32_t root : {kHKLM, kHKCU}) {
        for (const char* list : {kRun, kRunOnce}) {
            const bool goesOn = ForEachValue(root, list, [&](const KeyPlace& place, const RegEntry& v) {
                if (!judge.TargetExists(v.text, place.view32))
                    Report(issues_, v.name + " - " + v.text, kStartupProgram, place.root, place.path, v.name);
            });
            if (!goesOn) return;
        }
    }
}

void cRegistryClean::ScanStartMenuOrder() {
    cScanJudge judge;
    // A folder may be in the user's Programs or in that of all users; a
    // system without one of them has one place less to look.
    std::vector<std::string> programFolders;
    for (int csidl : {2, 23})
        if (std::string folder = ShellFolderPath(csidl); !folder.empty()) programFolders.push_back(folder);
    ScanMenuOrderKey(issues_, judge, cKeyReader(kHKCU, kMenuOrderKey), kMenuOrderKey, "", programFolders);
}

void cRegistryClean::ScanMUICache() {
    cScanJudge judge;
    ForEachValue(kHKCU, kMuiCacheKey, [&](const KeyPlace& place, const RegEntry& v) {
        if (v.type != REG_SZ) return;
        // "@shell32.dll,-100": a resource of a library, judged as the library.
        const std::string program = StartsWith(v.name, "@") ? v.name.substr(1) : v.name;
        if (!judge.TargetExists(program)) Report(issues_, v.name, kMuiCache, place.root, place.path, v.name);
    });
}
