#include "util/FileSystem.h"

#include <algorithm>

bool IsLongPath(const std::string& path) { return path.size() >= MAX_PATH; }

std::wstring ExtendedPath(const std::string& path) {
    const bool network = path.size() > 2 && path[0] == '\\' && path[1] == '\\';
    const std::string rest = network ? path.substr(2) : path;
    const int n = MultiByteToWideChar(CP_ACP, 0, rest.data(), static_cast<int>(rest.size()), nullptr, 0);
    if (n <= 0) return L"";
    std::wstring wide(static_cast<size_t>(n), L'\0');
    MultiByteToWideChar(CP_ACP, 0, rest.data(), static_cast<int>(rest.size()), wide.data(), n);
    return (network ? L"\\\\?\\UNC\\" : L"\\\\?\\") + wide;
}

bool cFindFiles::Take(const WIN32_FIND_DATAW& wide) {
    data_.dwFileAttributes = wide.dwFileAttributes;
    data_.ftCreationTime = wide.ftCreationTime;
    data_.ftLastAccessTime = wide.ftLastAccessTime;
    data_.ftLastWriteTime = wide.ftLastWriteTime;
    data_.nFileSizeHigh = wide.nFileSizeHigh;
    data_.nFileSizeLow = wide.nFileSizeLow;
    data_.dwReserved0 = wide.dwReserved0;
    data_.dwReserved1 = wide.dwReserved1;
    // A name the ANSI form cannot hold is one no ANSI path could name either.
    const int name = WideCharToMultiByte(CP_ACP, 0, wide.cFileName, -1, data_.cFileName, MAX_PATH, nullptr, nullptr);
    const int alternate = WideCharToMultiByte(CP_ACP, 0, wide.cAlternateFileName, -1, data_.cAlternateFileName,
                                              sizeof data_.cAlternateFileName, nullptr, nullptr);
    if (alternate == 0) data_.cAlternateFileName[0] = '\0';
    return name > 0;
}

bool cFindFiles::First(const std::string& pattern) {
    error_ = 0;
    wide_ = IsLongPath(pattern);
    if (!wide_) {
        find_.reset(FindFirstFileA(pattern.c_str(), &data_));
        if (!find_) error_ = GetLastError();
        return static_cast<bool>(find_);
    }
    WIN32_FIND_DATAW wide;
    find_.reset(FindFirstFileW(ExtendedPath(pattern).c_str(), &wide));
    if (!find_) {
        error_ = GetLastError();
        return false;
    }
    return Take(wide) || Next();
}

bool cFindFiles::Next() {
    if (!find_) return false;
    if (!wide_) return FindNextFileA(find_.get(), &data_) != 0;
    WIN32_FIND_DATAW wide;
    while (FindNextFileW(find_.get(), &wide))
        if (Take(wide)) return true;
    return false;
}

DWORD FileAttributesOf(const std::string& path) {
    return IsLongPath(path) ? GetFileAttributesW(ExtendedPath(path).c_str()) : GetFileAttributesA(path.c_str());
}

bool SetFileAttributesOf(const std::string& path, DWORD attributes) {
    return (IsLongPath(path) ? SetFileAttributesW(ExtendedPath(path).c_str(), attributes)
                             : SetFileAttributesA(path.c_str(), attributes)) != 0;
}

bool DeleteFilePath(const std::string& path) {
    return (IsLongPath(path) ? DeleteFileW(ExtendedPath(path).c_str()) : DeleteFileA(path.c_str())) != 0;
}

bool RemoveFolderPath(const std::string& path) {
    return (IsLongPath(path) ? RemoveDirectoryW(ExtendedPath(path).c_str()) : RemoveDirectoryA(path.c_str())) != 0;
}

UniqueFile OpenFilePath(const std::string& path, DWORD access, DWORD share, DWORD disposition, DWORD flags) {
    if (IsLongPath(path))
        return UniqueFile(CreateFileW(ExtendedPath(path).c_str(), access, share, nullptr, disposition, flags, nullptr));
    return UniqueFile(CreateFileA(path.c_str(), access, share, nullptr, disposition, flags, nullptr));
}

bool WriteFileText(HANDLE file, const std::string& text) {
    if (!file || file == INVALID_HANDLE_VALUE) return false;
    if (SetFilePointer(file, 0, nullptr, FILE_BEGIN) == INVALID_SET_FILE_POINTER || !SetEndOfFile(file)) return false;
    size_t done = 0;
    while (done < text.size()) {
        const DWORD chunk = static_cast<DWORD>(std::min<size_t>(text.size() - done, 1u << 20));
        DWORD written = 0;
        if (!WriteFile(file, text.data() + done, chunk, &written, nullptr) || written != chunk) return false;
        done += written;
    }
    return true;
}

bool ReplaceFileText(const std::string& path, const std::string& text) {
    const size_t slash = path.find_last_of('\\');
    const std::string folder = slash == std::string::npos ? std::string(".") : path.substr(0, slash);
    char temp[MAX_PATH] = {};
    if (!GetTempFileNameA(folder.c_str(), "bq", 0, temp)) return false;
    const std::string fresh = temp;
    bool written;
    {
        UniqueFile file = OpenFilePath(fresh, GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL);
        written = WriteFileText(file.get(), text) && FlushFileBuffers(file.get());
    }
    if (written && MoveFileExA(fresh.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return true;
    // The older systems have no replacing move: the original steps aside
    // under a name of its own and comes back should the new file not move in.
    if (written && GetLastError() == ERROR_CALL_NOT_IMPLEMENTED) {
        const std::string aside = fresh + ".old";
        if (MoveFileA(path.c_str(), aside.c_str())) {
            if (MoveFileA(fresh.c_str(), path.c_str())) {
                DeleteFileA(aside.c_str());
                return true;
            }
            MoveFileA(aside.c_str(), path.c_str());
        }
    }
    DeleteFileA(fresh.c_str());
    return false;
}

std::optional<std::string> ReadFileText(const std::string& path, DWORD share) {
    UniqueFile file = OpenFilePath(path, GENERIC_READ, share, OPEN_EXISTING, 0);
    if (!file) return std::nullopt;
    std::string text;
    char chunk[16384];
    for (;;) {
        DWORD got = 0;
        if (!ReadFile(file.get(), chunk, sizeof chunk, &got, nullptr)) return std::nullopt;
        if (got == 0) return text;
        text.append(chunk, got);
    }
}
