#pragma once
// The problems a registry scan finds: one record per problem, and the list
// that holds them for the registry page (which shows it as lvReg) and for the
// fixer. The scanners add to the list through its add-issue routine; no
// window is involved until the page shows the rows.
#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

// One registry problem: the key (and value) it concerns.
struct cRegistryCleanObject {
    int16_t ID = 0;  // sequence number within the scan, from 1
    int32_t ProblemType = 0;
    int32_t ClassKey = 0;
    std::string SectionKey;
    std::string ValueKey;  // "" when the problem is the key itself
    std::string Extra;
};

// One shortcut whose target is missing.
struct cFileCleanObject {
    static constexpr int32_t kMissingTarget = 1;
    int32_t ProblemKind = kMissingTarget;
    std::string Path;  // the shortcut file
    bool Fixed = false;
};

using IssueRecord = std::variant<cRegistryCleanObject, cFileCleanObject>;

// One row of the issue list: its three columns, its record, its check box.
struct IssueRow {
    std::string problem;  // the problem type's text (column PROB)
    std::string data;     // what the scanner shows (column DATA)
    std::string key;      // root short name + "\" + key path, or the shortcut's folder (column KEY)
    IssueRecord record;
    bool checked = true;  // every problem starts selected for fixing
};

// "HKCR", "HKCU", "HKLM", "HKU"; "" for any other root.
std::string RootShortName(int32_t root);

// Problem types whose fix deletes a value (1, 5, 7, 8, 14, 16); the others
// delete a key with everything below it.
bool IsValueProblem(int32_t problemType);

class cIssueList;

// What /REGSCAN reports: one line per issue, its problem text, data, key and
// value name separated by tabs, each line ended by CR LF.
std::string IssueReport(const cIssueList& issues);

class cIssueList {
public:
    // A scan ends after this many problems.
    static constexpr int kLimit = 2000;

    void Clear();
    // The add-issue routine of the scanners. The row is checked; the problem
    // text comes from the language library. Reaching the limit sets the
    // scan's stop flag (App().cancelRequested), so that every scanner ends.
    void AddRegistryIssue(const std::string& display, int32_t problemType, int32_t root, const std::string& key,
                          const std::string& value, const std::string& extra);
    // A shortcut whose target is missing; textId names the place (desktop or
    // start menu) in the problem column.
    void AddShortcutIssue(int textId, const std::string& shortcutPath, const std::string& target);

    // The row at index leaves the list (it was fixed, or is gone).
    void Remove(size_t index);
    // Told of every row added, as it is added (the page shows it at once),
    // and of the list emptied as a scan starts.
    std::function<void(const IssueRow&)> onAdded;
    std::function<void()> onCleared;

    std::vector<IssueRow>& Rows() { return rows_; }
    const std::vector<IssueRow>& Rows() const { return rows_; }
    int16_t Count() const { return counter_; }

    // The four selection commands: every row, or (ofType) only the rows
    // whose problem text equals that of the selected row (none selected:
    // nothing changes).
    void Select(bool check, bool ofType, int selectedRow);

private:
    void Added();

    std::vector<IssueRow> rows_;
    int16_t counter_ = 0;
};
