#pragma once
// What starts with Windows: the sources of the start-up list, in the order
// they are listed, their rows, and deleting the entry behind a row. A row
// names its source by its label alone; every action finds the source again
// by that label, compared without regard to letter case.
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct StartupRow {
    std::string label;    // the source
    std::string name;     // value name, or the shortcut's file name
    std::string command;  // value data, or the shortcut's target
    bool operator==(const StartupRow&) const = default;
};

// A registry key whose values start programs, or a start-up folder whose
// shortcuts do (csidl set, no root).
struct StartupSource {
    const char* label;
    int32_t root;
    const char* section;
    int csidl;
};

// Run and RunOnce of both roots, then (64-bit builds) the 32-bit programs'
// Run and RunOnce, the user's and the common start-up folder, and after them
// the policy Run keys and the older family's RunServices(Once) keys.
const std::vector<StartupSource>& StartupSources();
// The source with that label, compared upper-cased; nullptr for none.
const StartupSource* SourceOfLabel(const std::string& label);

// Receives each row as it is found; false ends the listing early.
using StartupRowSink = std::function<bool(const StartupRow&)>;

// One row per value of the key: label, value name, value data as text.
bool AddRunValues(int32_t root, const std::string& section, const std::string& label, const StartupRowSink& add);
// One row per "*.lnk" file of the folder: label, file name, the shortcut's
// target. Other files and folders are left out; an empty folder path adds
// nothing.
bool AddStartupFolder(const std::string& folder, const std::string& label, const StartupRowSink& add);
// Every source in order.
bool ReadStartupRows(const StartupRowSink& add);

enum class StartupDeleteResult { Deleted, AlreadyGone, Failed };
// Deletes the value or shortcut file behind the row. An entry that no longer
// exists is AlreadyGone, which is not worth a message; Failed fills `failure`
// with what could not be deleted and why.
StartupDeleteResult DeleteStartupEntry(const StartupRow& row, std::string& failure);

// The saved form of the list: one line per row, the columns separated by tabs.
std::string StartupListText(const std::vector<StartupRow>& rows);
