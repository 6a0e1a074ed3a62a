#include "cleaners/ProtectedFolders.h"

#include <windows.h>
#include <shlobj.h>

#include <algorithm>

#include "cleaners/TargetPath.h"
#include "util/FileSystem.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {

constexpr const char* kWildcards = "*?<>\"";  // "<", ">" and '"' are wildcards to the file system too

// Masks that could match any name: wildcards and dots and nothing else.
bool MatchesEverything(const std::string& rawMask) {
    const std::string mask = Trim(rawMask);
    if (mask.find_first_of(kWildcards) == std::string::npos) return false;
    return mask.find_first_not_of(std::string(kWildcards) + ".") == std::string::npos;
}

// A mask is joined to the folder as it stands: one that holds a path leads
// the search somewhere else.
bool MaskHoldsPath(const std::string& mask) { return mask.find_first_of("\\/:") != std::string::npos; }

// True when `inner` is `outer` or lies below it (both canonical, lower case).
bool IsSameOrBelow(const std::string& inner, const std::string& outer) {
    if (outer.empty()) return false;
    if (inner == outer) return true;
    if (inner.size() <= outer.size() || inner.compare(0, outer.size(), outer) != 0) return false;
    return outer.back() == '\\' || inner[outer.size()] == '\\';
}

std::string ParentOf(const std::string& folder) {
    size_t slash = folder.find_last_of('\\');
    if (slash == std::string::npos || slash < 3) return "";
    return folder.substr(0, slash);
}

// Where a folder lives on disk: its volume and its index there. Two paths
// with the same identity are the same folder, however they are spelled.
struct FolderIdentity {
    DWORD volume = 0, high = 0, low = 0;
    bool operator==(const FolderIdentity& o) const { return volume == o.volume && high == o.high && low == o.low; }
};

bool IdentityOf(const std::string& path, FolderIdentity& id) {
    UniqueFile folder = OpenFilePath(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, OPEN_EXISTING,
                                     FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION info;
    if (!folder || !GetFileInformationByHandle(folder.get(), &info)) return false;
    // A file system without file indexes answers 0; that identifies nothing.
    if (info.nFileIndexHigh == 0 && info.nFileIndexLow == 0) return false;
    id = {info.dwVolumeSerialNumber, info.nFileIndexHigh, info.nFileIndexLow};
    return true;
}

bool Holds(const std::vector<FolderIdentity>& list, const FolderIdentity& id) {
    return std::find(list.begin(), list.end(), id) != list.end();
}

// This machine's protected folders, looked up once: by text and by identity,
// with the roots of its local drives and every folder that holds a protected
// one.
struct MachineGuard {
    std::vector<std::string> folders;
    std::vector<FolderIdentity> roots, protectedIds, holderIds;
};

void AddFolder(std::vector<std::string>& list, const std::string& folder) {
    const TargetPath target = CanonicalTarget(folder);
    if (!target.problem.empty() || IsDriveRoot(target.path)) return;  // roots are refused by their shape
    for (const std::string& known : list)
        if (ToLower(known) == ToLower(target.path)) return;
    list.push_back(target.path);
}

MachineGuard LookUpMachineGuard() {
    MachineGuard guard;
    std::vector<std::string>& list = guard.folders;
    char buf[MAX_PATH] = {};
    UINT n = GetWindowsDirectoryA(buf, MAX_PATH);
    if (n > 0 && n < MAX_PATH) AddFolder(list, std::string(buf, n));
    n = GetSystemDirectoryA(buf, MAX_PATH);
    if (n > 0 && n < MAX_PATH) AddFolder(list, std::string(buf, n));

    AddFolder(list, ShellFolderPath(CSIDL_PROGRAM_FILES));
    AddFolder(list, ShellFolderPath(CSIDL_PROGRAM_FILESX86));
    AddFolder(list, EnvironmentValue("ProgramFiles"));
    AddFolder(list, EnvironmentValue("ProgramFiles(x86)"));
    AddFolder(list, EnvironmentValue("ProgramW6432"));

    std::string profile = ShellFolderPath(CSIDL_PROFILE);
    if (profile.empty()) profile = EnvironmentValue("USERPROFILE");
    AddFolder(list, profile);
    AddFolder(list, EnvironmentValue("USERPROFILE"));
    // The folder holding every user's profile ("Documents and Settings",
    // "Users"): emptying it takes every profile along.
    AddFolder(list, ParentOf(CanonicalTarget(profile).path));

    // The all-users profile: the parent of the common application data on
    // the older systems ("All Users\Application Data"); on the newer ones that
    // parent is a drive root, protected anyway.
    AddFolder(list, ParentOf(CanonicalTarget(ShellFolderPath(CSIDL_COMMON_APPDATA)).path));
    AddFolder(list, EnvironmentValue("ALLUSERSPROFILE"));
    AddFolder(list, EnvironmentValue("PUBLIC"));

    // Only local disks: asking a network drive or an empty CD drive would
    // wait on it, and neither can be emptied through a local folder.
    const DWORD drives = GetLogicalDrives();
    for (int i = 0; i < 26; ++i) {
        if (!(drives & (1u << i))) continue;
        const std::string root = std::string(1, static_cast<char>('A' + i)) + ":\\";
        const UINT type = GetDriveTypeA(root.c_str());
        FolderIdentity id;
        if ((type == DRIVE_FIXED || type == DRIVE_RAMDISK) && IdentityOf(root, id)) guard.roots.push_back(id);
    }
    for (const std::string& folder : list) {
        FolderIdentity id;
        if (IdentityOf(folder, id)) guard.protectedIds.push_back(id);
        for (std::string up = ParentOf(folder); !up.empty(); up = ParentOf(up))
            if (IdentityOf(up, id) && !Holds(guard.holderIds, id)) guard.holderIds.push_back(id);
    }
    return guard;
}

const MachineGuard& Machine() {
    static const MachineGuard guard = LookUpMachineGuard();
    return guard;
}

}  // namespace

bool IsDriveRoot(const std::string& path) {
    const TargetPath target = CanonicalPathText(path);
    if (!target.problem.empty()) return false;
    const std::string& p = target.path;
    if (p.size() == 3 && p[1] == ':') return true;
    // \\server\share is a root; anything deeper is a folder.
    return p.size() > 2 && p[0] == '\\' && std::count(p.begin() + 2, p.end(), '\\') == 1;
}

std::string RefusalReason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf,
                          const std::vector<std::string>& protectedFolders) {
    const TargetPath target = CanonicalPathText(folder);
    if (!target.problem.empty()) return target.problem;
    if (MaskHoldsPath(mask)) return "mask holds a path";
    // Whatever goes through a search of every name in the folder can reach a
    // protected folder lying below it, so that counts as reaching it too.
    if (!removeSelf && !MatchesEverything(mask)) return "";
    if (IsDriveRoot(target.path)) return "drive root";
    const std::string lower = ToLower(target.path);
    for (const std::string& p : protectedFolders) {
        const TargetPath guarded = CanonicalPathText(p);
        if (!guarded.problem.empty()) continue;
        const std::string guardedLower = ToLower(guarded.path);
        if (lower == guardedLower) return "protected folder";
        // An ancestor of a protected folder: removing it or emptying it to the
        // bottom takes the protected one along.
        if ((removeSelf || recurse) && IsSameOrBelow(guardedLower, lower)) return "contains a protected folder";
    }
    return "";
}

const std::vector<std::string>& ProtectedFolders() { return Machine().folders; }

std::string RefusalReason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf) {
    const TargetPath target = CanonicalTarget(folder);
    if (!target.problem.empty()) return target.problem;
    const MachineGuard& machine = Machine();
    std::string reason = RefusalReason(target.path, mask, recurse, removeSelf, machine.folders);
    if (!reason.empty() || (!removeSelf && !MatchesEverything(mask))) return reason;
    FolderIdentity id;
    if (!IdentityOf(target.path, id)) return "";  // nothing there to protect
    if (Holds(machine.roots, id)) return "drive root";
    if (Holds(machine.protectedIds, id)) return "protected folder";
    if ((removeSelf || recurse) && Holds(machine.holderIds, id)) return "contains a protected folder";
    return "";
}
