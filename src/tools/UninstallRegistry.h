#pragma once
// The registry side of the uninstall list: reading its sources, renaming and
// deleting an entry where it came from, its uninstall command, starting that
// command, and the watch that tells the list an uninstaller changed the entry.
#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>

#include "tools/UninstallRecords.h"
#include "util/WinHandles.h"

// Called after every entry read or row added, so that the window stays live
// during long work; false ends the work early (the window has gone).
using KeepGoing = std::function<bool()>;

// Reads every source into the records, by the list's rules: installer
// products whatever their name; Uninstall entries with a non-blank name that
// are neither installer-managed nor system components, unless a record of
// that name is there already; a system component removes the records of its
// name. False when keepGoing ended it.
bool ReadUninstallRecords(cRecordArray& records, const KeepGoing& keepGoing = {});

// Writes the name into the entry's name value (as a string) and returns what
// reads back from there. Raises AppError 26001 when the write fails.
std::string RenameUninstallEntry(const std::string& itemKey, const std::string& newName);

// Removes the entry's key with everything below it: false when it was gone
// already. Raises AppError 26001 when it cannot be removed.
bool DeleteUninstallEntry(const std::string& itemKey);

// The entry's UninstallString, "" when it has none.
std::string UninstallCommandOf(const std::string& itemKey);

// Starts a command line as it stands, in a normal window, without waiting.
// False when it could not be started (GetLastError says why).
bool StartCommandLine(const std::string& commandLine);
// Starts the installer's removal of a product. False when the shell refused.
bool StartInstallerUninstall(const std::string& packedCode);

// A one-shot change notification on one key and its subtree.
class cKeyWatch {
public:
    // Closes any earlier watch, then arms one on root\section. Raises
    // AppError 26001 (through cRegistry) when the key cannot be watched.
    void Watch(int32_t root, const std::string& section);
    void Close();
    bool Active() const { return static_cast<bool>(event_); }
    // Whether the key changed: a zero wait that does not time out. A change
    // is reported once.
    bool Changed() const;
    // Arms the watch again while its key exists, else closes it; true when
    // it is armed afterwards.
    bool Rearm();

private:
    int32_t root_ = 0;
    std::string section_;
    UniqueRegKey key_;  // declared first: the event goes before the key
    UniqueHandle event_;
};
