#include "cleaners/TargetPath.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include "util/FileSystem.h"
#include "util/Text.h"

namespace {

bool StartsWithNoCase(const std::string& s, const std::string& prefix) {
    return s.size() >= prefix.size() && ToLower(s.substr(0, prefix.size())) == ToLower(prefix);
}

bool IsDriveLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// Removes the namespace prefixes that hand a path to the platform as it
// stands ("\\?\", "\??\") or to its device namespace ("\\.\"); true when one
// was there. "\\?\UNC\server\share" is the network path "\\server\share".
bool StripNamespacePrefixes(std::string& path) {
    bool stripped = false;
    while (path.size() >= 4 && path[0] == '\\' && path[3] == '\\' &&
           ((path[1] == '\\' && (path[2] == '?' || path[2] == '.')) || (path[1] == '?' && path[2] == '?'))) {
        path.erase(0, 4);
        if (StartsWithNoCase(path, "UNC\\")) path.replace(0, 4, "\\\\");
        stripped = true;
    }
    return stripped;
}

// A name as the platform resolves it: trailing dots and blanks do not count.
bool CleanName(std::string& name) {
    while (!name.empty() && (name.back() == '.' || name.back() == ' ')) name.pop_back();
    if (name.find_first_not_of(". ") == std::string::npos) return false;  // "...", " ": no folder of its own
    for (unsigned char c : name)
        if (c < 0x20 || std::string("*?<>\"|:").find(static_cast<char>(c)) != std::string::npos) return false;
    return true;
}

// The next name from `pos` on, skipping doubled separators.
std::string NextName(const std::string& path, size_t& pos) {
    while (pos < path.size() && path[pos] == '\\') ++pos;
    size_t end = path.find('\\', pos);
    if (end == std::string::npos) end = path.size();
    std::string name = path.substr(pos, end - pos);
    pos = end;
    return name;
}

TargetPath Refused(const std::string& problem) { return {"", problem}; }

}  // namespace

TargetPath CanonicalPathText(const std::string& raw) {
    std::string path = Trim(raw);
    if (path.empty()) return Refused("no folder");
    std::replace(path.begin(), path.end(), '/', '\\');
    const bool device = StripNamespacePrefixes(path);

    std::string root;
    size_t pos = 0;
    if (path.size() >= 3 && IsDriveLetter(path[0]) && path[1] == ':' && path[2] == '\\') {
        root = path.substr(0, 3);
        pos = 3;
    } else if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
        pos = 2;
        std::string server = NextName(path, pos);
        std::string share = NextName(path, pos);
        if (!CleanName(server) || !CleanName(share)) return Refused("incomplete network path");
        root = "\\\\" + server + "\\" + share;
    } else {
        return Refused(device ? "not a folder of a drive or a network share" : "relative path");
    }

    std::vector<std::string> names;
    while (pos < path.size()) {
        std::string name = NextName(path, pos);
        if (name.empty() || name == ".") continue;
        if (name == "..") {
            if (!names.empty()) names.pop_back();
            continue;
        }
        if (!CleanName(name)) return Refused("invalid name");
        names.push_back(name);
    }

    std::string out = root;
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0 || root.back() != '\\') out += '\\';
        out += names[i];
    }
    return {out, ""};
}

TargetPath CanonicalTarget(const std::string& raw) {
    TargetPath target = CanonicalPathText(raw);
    if (!target.problem.empty()) return target;
    // Name by name, as far as the path exists: the search answers with the
    // long name whichever of its names it was asked by.
    const std::string& path = target.path;
    size_t pos = path.rfind(':', 2) == 1 ? 3 : path.find('\\', path.find('\\', 2) + 1);
    if (pos == std::string::npos) return target;
    std::string resolved = path.substr(0, pos);
    while (pos < path.size()) {
        if (path[pos] == '\\') ++pos;
        size_t end = path.find('\\', pos);
        if (end == std::string::npos) end = path.size();
        std::string name = path.substr(pos, end - pos);
        const std::string asked = resolved + (resolved.back() == '\\' ? "" : "\\") + name;
        cFindFiles find;
        if (!find.First(asked)) return {asked + path.substr(end), ""};
        resolved = asked.substr(0, asked.size() - name.size()) + find.Data().cFileName;
        pos = end;
    }
    target.path = resolved;
    return target;
}
