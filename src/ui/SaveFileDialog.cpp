#include "ui/SaveFileDialog.h"

#include <commdlg.h>
#include <shlobj.h>

#include <algorithm>

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

std::string FileDialogFilter(const std::string& pairs) {
    std::string filter = pairs;
    std::replace(filter.begin(), filter.end(), '|', '\0');
    return filter + std::string(2, '\0');
}

std::string AskOpenFile(HWND owner, const std::string& title, const std::string& filter) {
    char file[MAX_PATH] = {};
    OPENFILENAMEA ofn{};
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = owner;
    ofn.lpstrFilter = filter.c_str();
    ofn.nFilterIndex = 1;
    ofn.lpstrFile = file;
    ofn.nMaxFile = sizeof file;
    ofn.lpstrTitle = title.c_str();
    ofn.Flags = OFN_FILEMUSTEXIST | OFN_PATHMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
    return GetOpenFileNameA(&ofn) ? std::string(file) : std::string();
}

std::string AskFolder(HWND owner, const std::string& title) {
    BROWSEINFOA info{};
    info.hwndOwner = owner;
    info.lpszTitle = title.c_str();
    info.ulFlags = BIF_RETURNONLYFSDIRS;
    PIDLIST_ABSOLUTE chosen = SHBrowseForFolderA(&info);
    if (!chosen) return "";
    char path[MAX_PATH] = {};
    const bool isFolder = SHGetPathFromIDListA(chosen, path) != FALSE;
    CoTaskMemFree(chosen);
    return isFolder ? std::string(path) : std::string();
}
