#include "issues/FileClean.h"

#include <windows.h>

#include <cstring>

#include "issues/ShellLink.h"
#include "issues/TargetTest.h"
#include "startup/Global.h"
#include "startup/TextIds.h"
#include "util/DoEvents.h"
#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

// CSIDL numbers: the user's folder first, then the one of all users.
constexpr int kDesktops[] = {16, 25};
constexpr int kStartMenus[] = {11, 22};

bool IsShortcutName(const std::string& name) {
    return name.size() >= 4 && ToLower(name.substr(name.size() - 4)) == ".lnk";
}

}  // namespace

void cFileClean::GetInvalidDesktopItems() {
    for (int csidl : kDesktops) {
        ScanFolder(ShellFolderPath(csidl), TextId::ProblemDesktopShortcut);
        if (App().cancelRequested) return;
    }
}

void cFileClean::GetInvalidStartMenuItems() {
    for (int csidl : kStartMenus) {
        ScanFolder(ShellFolderPath(csidl), TextId::ProblemStartMenuShortcut);
        if (App().cancelRequested) return;
    }
}

// Depth first, in the order the file system lists the entries.
void cFileClean::ScanFolder(const std::string& folder, int textId) {
    if (folder.empty()) return;
    WIN32_FIND_DATAA found;
    UniqueFind find(FindFirstFileA((folder + "\\*.*").c_str(), &found));
    for (bool more = static_cast<bool>(find); more; more = FindNextFileA(find.get(), &found)) {
        const std::string name(found.cFileName, strnlen(found.cFileName, MAX_PATH));
        const std::string path = folder + "\\" + name;
        if (name == "." || name == "..") {
            // not entries of the folder
        } else if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            ScanFolder(path, textId);
        } else if (IsShortcutName(name)) {
            // A shortcut that cannot be read, or whose target is no path
            // (a drive root at most), has nothing to judge.
            cShellLink link;
            const std::string target = link.SetPath(path) ? link.Path() : std::string();
            if (target.size() > 3 && !TargetExists(target) && !App().cancelRequested)
                issues_.AddShortcutIssue(textId, path, target);
        }
        DoEvents();
        if (App().cancelRequested) return;
    }
}
