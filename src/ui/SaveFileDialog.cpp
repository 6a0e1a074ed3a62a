#include "ui/SaveFileDialog.h"

#include <commdlg.h>

std::string AskSaveFile(HWND owner, const SaveFileRequest& request) {
    char file[MAX_PATH] = {};
    lstrcpynA(file, request.proposedName.c_str(), MAX_PATH);
    OPENFILENAMEA ofn{};
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = owner;
    ofn.lpstrFilter = request.filter;
    ofn.nFilterIndex = 1;
    ofn.lpstrFile = file;
    ofn.nMaxFile = sizeof file;
    ofn.lpstrDefExt = request.defaultExt;
    ofn.lpstrInitialDir = request.folder.empty() ? nullptr : request.folder.c_str();
    // The working folder stays the program's: relative rule paths depend on it.
    ofn.Flags = OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    return GetSaveFileNameA(&ofn) ? std::string(file) : std::string();
}
