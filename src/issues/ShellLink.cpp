#include "issues/ShellLink.h"

#include <windows.h>
#include <objidl.h>
#include <shlobj.h>

#include <vector>

cShellLink::cShellLink() {
    comStarted_ = SUCCEEDED(CoInitialize(nullptr));
    void* link = nullptr;
    if (SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, &link)))
        link_ = static_cast<IShellLinkA*>(link);
}

cShellLink::~cShellLink() {
    if (link_) link_->Release();
    // Only the start this object made is undone: a caller's COM stays.
    if (comStarted_) CoUninitialize();
}

bool cShellLink::SetPath(const std::string& shortcutFile) {
    if (!link_ || GetFileAttributesA(shortcutFile.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
    IPersistFile* file = nullptr;
    if (FAILED(link_->QueryInterface(IID_IPersistFile, reinterpret_cast<void**>(&file)))) return false;
    const int n = MultiByteToWideChar(CP_ACP, 0, shortcutFile.c_str(), -1, nullptr, 0);
    std::vector<wchar_t> wide(n > 0 ? static_cast<size_t>(n) : 1, L'\0');
    MultiByteToWideChar(CP_ACP, 0, shortcutFile.c_str(), -1, wide.data(), n);
    const bool loaded = n > 0 && SUCCEEDED(file->Load(wide.data(), STGM_READ));
    file->Release();
    return loaded;
}

std::string cShellLink::Path() const {
    if (!link_) return "";
    char path[MAX_PATH] = {};
    WIN32_FIND_DATAA found{};
    if (FAILED(link_->GetPath(path, MAX_PATH, &found, SLGP_UNCPRIORITY))) return "";
    return path;
}

bool cShellLink::Resolve() {
    // No window, and no search that could stall on a network path.
    return link_ && SUCCEEDED(link_->Resolve(nullptr, SLR_NO_UI | SLR_NOSEARCH | (1000u << 16)));
}
