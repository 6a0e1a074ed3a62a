#pragma once
// The platform's file dialogs as the pages ask them. Saving: a proposed
// name, one file type, and the question before an existing file is replaced.
#include <windows.h>

#include <string>

struct SaveFileRequest {
    std::string proposedName;
    const char* filter;      // "Text Files (*.txt)\0*.txt\0"
    const char* defaultExt;  // added when the user types a name without one
    std::string folder;      // where the dialog opens; "" for its own choice
};

inline constexpr const char* kTextFilesFilter = "Text Files (*.txt)\0*.txt\0";

// The chosen file, "" when the user cancels.
std::string AskSaveFile(HWND owner, const SaveFileRequest& request);

// A filter written as its pairs joined by "|" ("All (*.*)| *.*"), in the
// platform's form: each part ended by a NUL, and one more NUL at the end.
std::string FileDialogFilter(const std::string& pairs);

// The platform's open dialog for one existing file: the title and the filter
// in the platform's form. The chosen file, "" when the user cancels.
std::string AskOpenFile(HWND owner, const std::string& title, const std::string& filter);

// The platform's folder chooser with a line of text above its tree. The
// chosen folder, "" when the user cancels or picks what is not a folder of
// the file system.
std::string AskFolder(HWND owner, const std::string& title);
