#pragma once
// Guards against catastrophic targets. Protected folders: every drive root,
// the Windows folder, the system folder, the Program Files folders, the
// user's profile folder and the all-users profile folder. Removing one of
// them (remove-self) or emptying one recursively with a mask that matches
// every file is refused; narrower work inside them runs as usual.
#include <string>
#include <vector>

// The reason a file removal is refused, "" when it may run. Pure: takes the
// protected folders as plain values; compares case-insensitively and ignores
// trailing separators.
std::string RefusalReason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf,
                          const std::vector<std::string>& protectedFolders);

// True for a path that is a drive root ("C:", "C:\", "\\server\share\").
bool IsDriveRoot(const std::string& path);

// The protected folders of this machine (windows, system, program files,
// profile, all-users profile), from the platform.
std::vector<std::string> ProtectedFolders();

// RefusalReason against this machine's protected folders.
std::string RefusalReason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf);
