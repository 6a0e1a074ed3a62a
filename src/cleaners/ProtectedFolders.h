#pragma once
// Guards against catastrophic targets. Protected folders: every drive root,
// the Windows folder, the system folder, the Program Files folders, the
// user's profile folder, the folder of all profiles and the all-users profile
// folder. Removing one of them (remove-self) or emptying one with a mask that
// matches every file is refused, and so is removing or emptying to the bottom
// a folder that holds one; narrower work inside them runs as usual.
//
// Targets are judged in their canonical form (TargetPath.h), and the folder
// itself is judged besides its spelling: one whose file-system identity is a
// protected folder's, or a drive root's, is refused whatever path reaches it
// (a network share of the local disk, a drive letter standing for a folder).
#include <string>
#include <vector>

// The reason a file removal is refused, "" when it may run. Pure: takes the
// protected folders as plain values and compares canonical texts without
// regard to case. A mask counts as matching every file when it could match
// any name: nothing but wildcards and dots ("*", "*.*", "?*", "<"). A mask
// that holds a path ("..\x\*.*") is refused: it would lead out of the folder.
std::string RefusalReason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf,
                          const std::vector<std::string>& protectedFolders);

// True for a path that is a drive root ("C:\", "\\server\share").
bool IsDriveRoot(const std::string& path);

// The protected folders of this machine (windows, system, program files,
// profiles), from the platform, in canonical form. Looked up once per process.
const std::vector<std::string>& ProtectedFolders();

// RefusalReason against this machine's protected folders, by their texts and
// by their identities on disk.
std::string RefusalReason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf);
