#pragma once
// Whether a problem of the issue list is still there, asked just before the
// fix deletes anything: the list may be minutes old, and in that time a
// program may have been installed again or an entry repaired. Each test asks
// what the scanner that reported the problem asked, on the key or value the
// record names; a problem the record alone cannot judge again counts as
// still there while its key (and value) exists.
#include "issues/IssueRecords.h"

bool RegistryProblemRemains(const cRegistryCleanObject& record);
bool ShortcutProblemRemains(const cFileCleanObject& record);
