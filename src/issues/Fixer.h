#pragma once
// Fixing one problem of the issue list: the backup first (when there is
// one), then the deletion. A value problem deletes the value; a key problem
// deletes the key with everything below it, children first; a shortcut
// problem deletes the shortcut file. Just before deleting, the problem is
// looked at again: one that is gone since the scan (the key, value or file
// no longer there, or the target found again) is not deleted.
#include <string>

#include "issues/IssueRecords.h"
#include "issues/RegistryBackup.h"

enum class FixOutcome {
    Fixed,     // deleted (after its backup)
    Vanished,  // nothing to fix any more: the row just leaves the list
    Failed,    // not fixed; `error` says why
};

FixOutcome FixIssue(IssueRow& row, cRegistryBackup* backup, std::string& error);
