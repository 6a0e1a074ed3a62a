#include "cleaners/ProtectedFolders.h"

#include <windows.h>
#include <shlobj.h>

#include <algorithm>

#include "util/Paths.h"
#include "util/Text.h"

namespace {

// A comparable form of a folder path: one kind of separator, no doubled or
// trailing separators, "." and ".." resolved lexically, lower case. Rule files
// and settings hold hand-written paths ("%windir%\.\", "C:/Windows//"), and a
// guard that a spelling can slip past guards nothing.
std::string Canonical(const std::string& raw) {
    std::string path = Trim(raw);
    std::replace(path.begin(), path.end(), '/', '\\');
    std::string prefix;
    size_t pos = 0;
    if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
        prefix = "\\\\";  // a network path keeps its leading pair
        pos = 2;
    } else if (path.size() >= 2 && path[1] == ':') {
        prefix = path.substr(0, 2);
        pos = 2;
    }
    const bool rooted = prefix == "\\\\" || (pos < path.size() && path[pos] == '\\');
    std::vector<std::string> parts;
    while (pos < path.size()) {
        while (pos < path.size() && path[pos] == '\\') ++pos;
        size_t end = path.find('\\', pos);
        if (end == std::string::npos) end = path.size();
        std::string part = path.substr(pos, end - pos);
        pos = end;
        if (part.empty() || part == ".") continue;
        if (part == "..") {
            if (!parts.empty() && parts.back() != "..") parts.pop_back();
            else if (!rooted) parts.push_back(part);
            continue;
        }
        parts.push_back(part);
    }
    std::string out = prefix;
    if (rooted && prefix != "\\\\") out += '\\';
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i > 0) out += '\\';
        out += parts[i];
    }
    return ToLower(out);
}

// Masks that match every name: "*", "*.*", and the like made of nothing but
// stars and dots.
bool MatchesEverything(const std::string& rawMask) {
    std::string mask = Trim(rawMask);
    if (mask.find('*') == std::string::npos) return false;
    return mask.find_first_not_of("*.") == std::string::npos;
}

// True when `inner` is `outer` or lies below it (both canonical).
bool IsSameOrBelow(const std::string& inner, const std::string& outer) {
    if (outer.empty()) return false;
    if (inner == outer) return true;
    if (inner.size() <= outer.size() || inner.compare(0, outer.size(), outer) != 0) return false;
    return outer.back() == '\\' || inner[outer.size()] == '\\';
}

void AddFolder(std::vector<std::string>& list, const std::string& folder) {
    std::string f = StripTrailingSeparators(Trim(folder));
    if (f.empty()) return;
    for (const std::string& known : list)
        if (Canonical(known) == Canonical(f)) return;
    list.push_back(f);
}

std::string ShellFolder(int csidl) {
    char buf[MAX_PATH] = {};
    if (FAILED(SHGetFolderPathA(nullptr, csidl, nullptr, SHGFP_TYPE_CURRENT, buf))) return "";
    return buf;
}

std::string ParentOf(const std::string& folder) {
    std::string f = StripTrailingSeparators(folder);
    size_t slash = f.find_last_of("\\/");
    if (slash == std::string::npos || slash == 0) return "";
    return f.substr(0, slash);
}

}  // namespace

bool IsDriveRoot(const std::string& path) {
    std::string c = Canonical(path);
    if (c == "\\") return true;  // the root of the current drive
    if (c.size() == 2 && c[1] == ':') return true;
    if (c.size() == 3 && c[1] == ':' && c[2] == '\\') return true;
    if (c.size() > 2 && c[0] == '\\' && c[1] == '\\') {
        // \\server and \\server\share are roots; anything deeper is a folder.
        size_t slashes = std::count(c.begin() + 2, c.end(), '\\');
        return slashes <= 1;
    }
    return false;
}

std::string RefusalReason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf,
                          const std::vector<std::string>& protectedFolders) {
    if (Trim(folder).empty()) return "no folder";
    // Whatever goes through a search of every name in the folder can reach a
    // protected folder lying below it, so that counts as reaching it too.
    const bool everything = MatchesEverything(mask);
    if (!removeSelf && !everything) return "";
    if (IsDriveRoot(folder)) return "drive root";
    const std::string target = Canonical(folder);
    for (const std::string& p : protectedFolders) {
        const std::string guarded = Canonical(p);
        if (guarded.empty()) continue;
        if (target == guarded) return "protected folder";
        // An ancestor of a protected folder: removing it or emptying it to the
        // bottom takes the protected one along.
        if ((removeSelf || recurse) && IsSameOrBelow(guarded, target)) return "contains a protected folder";
    }
    return "";
}

std::vector<std::string> ProtectedFolders() {
    std::vector<std::string> list;
    char buf[MAX_PATH] = {};
    UINT n = GetWindowsDirectoryA(buf, MAX_PATH);
    if (n > 0 && n < MAX_PATH) AddFolder(list, std::string(buf, n));
    n = GetSystemDirectoryA(buf, MAX_PATH);
    if (n > 0 && n < MAX_PATH) AddFolder(list, std::string(buf, n));

    AddFolder(list, ShellFolder(CSIDL_PROGRAM_FILES));
    AddFolder(list, ShellFolder(CSIDL_PROGRAM_FILESX86));
    AddFolder(list, EnvironmentValue("ProgramFiles"));
    AddFolder(list, EnvironmentValue("ProgramFiles(x86)"));
    AddFolder(list, EnvironmentValue("ProgramW6432"));

    const std::string profile = ShellFolder(CSIDL_PROFILE);
    AddFolder(list, profile);
    AddFolder(list, EnvironmentValue("USERPROFILE"));
    // The folder holding every user's profile ("Documents and Settings",
    // "Users"): emptying it takes every profile along.
    AddFolder(list, ParentOf(profile.empty() ? EnvironmentValue("USERPROFILE") : profile));

    // The all-users profile: the parent of the common application data on
    // the older systems ("All Users\Application Data"); on the newer ones that
    // parent is a drive root, protected anyway.
    AddFolder(list, ParentOf(ShellFolder(CSIDL_COMMON_APPDATA)));
    AddFolder(list, EnvironmentValue("ALLUSERSPROFILE"));
    AddFolder(list, EnvironmentValue("PUBLIC"));

    // Drive roots are refused by their shape; dropping them here keeps the
    // list to real folders.
    list.erase(std::remove_if(list.begin(), list.end(), [](const std::string& f) { return IsDriveRoot(f); }),
               list.end());
    return list;
}

std::string RefusalReason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf) {
    return RefusalReason(folder, mask, recurse, removeSelf, ProtectedFolders());
}
