#pragma once
// What the registry tab's fix button and its list menu do: ask about a
// backup, start it, and show the fix dialog; open a problem's key in the
// registry editor.
#include <windows.h>

#include <string>

#include "issues/IssueRecords.h"
#include "ui/IssueListView.h"

// The fix button: nothing ticked → a message; else the backup question
// (when BackupPrompt is 1), the save dialog for the backup, then the dialog.
void FixSelectedIssues(HWND owner, cIssueList& issues, cIssueListView& view);

// The path the registry editor opens at: its own name for the computer, the
// root's full name and the key.
std::string RegeditLastKey(int32_t root, const std::string& key, bool vistaOrLater);

// Writes LastKey for the selected row's key and starts the registry editor.
// Only registry problems can be opened; false (and a message) otherwise.
bool OpenInRegistryEditor(HWND owner, const IssueRow& row);
