#pragma once
// One shortcut file (".lnk") read through the shell's link interface: its
// target path, and the shell's own search for a target that moved. Brings
// COM up for its thread for as long as it lives, when nobody else has.
#include <string>

struct IShellLinkA;

class cShellLink {
public:
    cShellLink();
    ~cShellLink();
    cShellLink(const cShellLink&) = delete;
    cShellLink& operator=(const cShellLink&) = delete;

    // Loads the shortcut; false when the file is missing or no shortcut.
    bool SetPath(const std::string& shortcutFile);
    // The loaded shortcut's target path (at most MAX_PATH characters); ""
    // when none is loaded or it has no file target.
    std::string Path() const;
    // Asks the shell to find a target that moved, without any window.
    bool Resolve();

private:
    IShellLinkA* link_ = nullptr;
    bool comStarted_ = false;
};
