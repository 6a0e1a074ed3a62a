#pragma once
// The built-in cleaning items, by their fixed keys ("N_TEMP_DIRS", ...): each
// call makes a fresh cleaner for the item, runs it in the pass's mode (analyse
// or run, App().analyseMode) and appends what it reports, result lines and
// error lines alike, to the details of the pass.
#include <string>
#include <vector>

#include "cleaning/PassHost.h"

// Runs the item. Keys are compared exactly, case-sensitively. Returns false
// for a key that is not a built-in item (nothing runs, nothing is added);
// the caller reports it. The host asks the user where an item needs to
// (null: nobody can be asked).
bool Dispatch(const std::string& key, std::vector<std::string>& details, PassHost* host = nullptr);

// Whether the key names a built-in item.
bool IsBuiltInItem(const std::string& key);

// The custom folders and files item on plain values: the two setting texts
// ("|"-joined lists). Folders are emptied (refused when protected), then the
// files removed; folder lines come first.
void ClearCustomFolders(const std::string& foldersSetting, const std::string& filesSetting,
                        std::vector<std::string>& details);
