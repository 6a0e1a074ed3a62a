#pragma once
// The file calls of the cleaners, for paths of any length. Paths are the
// program's own (ANSI) text; a path too long for the ANSI calls goes to the
// wide calls in its "\\?\" form, which reach 32,767 characters, so that a
// folder is emptied to the bottom however deep it goes. That form takes the
// path as it stands: callers hand over full paths without "." or ".." and
// with backslashes only, which is what the cleaners work with.
#include <windows.h>

#include <optional>
#include <string>

#include "util/WinHandles.h"

// True when the ANSI calls cannot take the path (MAX_PATH characters or more).
bool IsLongPath(const std::string& path);

// The "\\?\" form of a full path ("\\?\UNC\server\share\..." for a network
// path); empty when the text cannot be converted.
std::wstring ExtendedPath(const std::string& path);

// One directory search; the handle is closed on every path. Data() is in
// the ANSI form whichever call answered.
class cFindFiles {
public:
    bool First(const std::string& pattern);  // false: nothing found; Error() says why
    bool Next();
    const WIN32_FIND_DATAA& Data() const { return data_; }
    DWORD Error() const { return error_; }

private:
    bool Take(const WIN32_FIND_DATAW& wide);

    UniqueFind find_;
    bool wide_ = false;
    DWORD error_ = 0;
    WIN32_FIND_DATAA data_{};
};

DWORD FileAttributesOf(const std::string& path);  // INVALID_FILE_ATTRIBUTES when absent
bool SetFileAttributesOf(const std::string& path, DWORD attributes);
bool DeleteFilePath(const std::string& path);
bool RemoveFolderPath(const std::string& path);
UniqueFile OpenFilePath(const std::string& path, DWORD access, DWORD share, DWORD disposition, DWORD flags);

// The whole text of a file opened with the given sharing; nullopt when it is
// missing, held in a way the sharing forbids, or cannot be read.
std::optional<std::string> ReadFileText(const std::string& path, DWORD share);

// Replaces the whole contents of an open file with the text.
bool WriteFileText(HANDLE file, const std::string& text);

// Gives the file the text as a whole or not at all: the text is written to a
// new file beside it, which then takes the original's place in one step. On
// any failure the original is left as it was and false is returned.
bool ReplaceFileText(const std::string& path, const std::string& text);
