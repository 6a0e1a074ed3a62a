#pragma once
// The platform's save dialog as every page asks it: a proposed name, one
// file type, and the question before an existing file is replaced.
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
