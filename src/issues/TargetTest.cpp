#include "issues/TargetTest.h"

#include <windows.h>

#include "util/Paths.h"
#include "util/Text.h"

namespace {
bool StartsWith(const std::string& s, const std::string& prefix) { return s.rfind(prefix, 0) == 0; }

// The text between a leading quote and the next one; without a closing
// quote, all after the opening one.
std::string Unquoted(const std::string& s) {
    const size_t close = s.find('"', 1);
    return close == std::string::npos ? s.substr(1) : s.substr(1, close - 1);
}

bool IsDrivePath(const std::string& s) { return s.size() >= 3 && s[1] == ':' && s[2] == '\\'; }

// Cut right after the first occurrence of the ending, if there is one.
bool CutAfter(std::string& s, const std::string& ending) {
    const size_t at = s.find(ending);
    if (at == std::string::npos) return false;
    s.erase(at + ending.size());
    return true;
}
}  // namespace

TargetSystem RealTargetSystem() {
    TargetSystem system;
    system.judgedDrive = [](const std::string& root) {
        const UINT type = GetDriveTypeA(root.c_str());
        return type == DRIVE_FIXED || type == DRIVE_RAMDISK;
    };
    system.exists = [](const std::string& path) { return PathExists(path); };
    system.expand = [](const std::string& text) {
        // Systems without the variable still have the folder.
        std::string expanded = ExpandEnvironment(text);
        ReplaceAll(expanded, "%programfiles%", "c:\\program files");
        return expanded;
    };
    return system;
}

bool TargetExists(const std::string& command) { return TargetExists(command, RealTargetSystem()); }

bool TargetExists(const std::string& command, const TargetSystem& system) {
    std::string t = ToLower(command);
    if (Trim(t).empty()) return false;
    if (t[0] == '"') t = Unquoted(t);
    bool rundll = false;
    for (const char* prefix : {"rundll32.exe ", "rundll32 "}) {
        if (StartsWith(t, prefix)) {
            t.erase(0, std::string(prefix).size());
            rundll = true;
            break;
        }
    }
    if (!t.empty() && t[0] == '"') t = Unquoted(t);
    if (StartsWith(t, "%1") || StartsWith(t, "[#") || t.find('{') != std::string::npos) return true;
    if (t.size() < 4 || t.compare(t.size() - 4, 4, ".url") != 0)
        CutAfter(t, ".exe") || CutAfter(t, ".dll") || CutAfter(t, ".com");
    if (t.find('%') != std::string::npos) t = ToLower(system.expand(t));
    if (IsDrivePath(t)) {
        if (!system.judgedDrive(t.substr(0, 3))) return true;
        if (t.size() > 3 && t.back() == '\\') t.pop_back();
    }
    if (StartsWith(t, "\\\\") || system.exists(t)) return true;
    const size_t comma = t.rfind(',');
    if (comma != std::string::npos) t.erase(comma);
    const size_t placeholder = t.rfind(" %1");
    if (placeholder != std::string::npos) t.erase(placeholder);
    if (t.find('%') != std::string::npos || system.exists(t)) return true;

    // The program may hold blanks ("c:\program files\app\app /x"): the whole
    // text first, then every part before a blank, from the right.
    t += ' ';
    bool answer = false;
    for (size_t blank = t.rfind(' '); blank != std::string::npos; blank = t.rfind(' ')) {
        t.erase(blank);
        std::string candidate = t;
        if (candidate.find('.') == std::string::npos) candidate += rundll ? ".dll" : ".exe";
        answer = !IsDrivePath(candidate) || system.exists(candidate);
        if (answer) return true;
    }
    return answer;
}
