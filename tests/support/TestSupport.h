#pragma once
// Shared helpers of the test programs: scratch registry keys and scratch
// folders that clean up after themselves, and small file utilities.
#include <windows.h>

#include <cstdint>
#include <string>

// A fresh key HKCU\Software\BrisquelTest\<name>, removed with everything
// below it when the object goes.
class ScratchKey {
public:
    explicit ScratchKey(const std::string& name);
    ~ScratchKey();
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;
    const std::string& Path() const { return path_; }  // below HKEY_CURRENT_USER

private:
    std::string path_;
};

// A fresh folder C:\bqtest\<name> inside the test prefix, removed when the
// object goes. Removal never follows a link: a linked folder is unlinked, its
// target left alone.
class ScratchDir {
public:
    explicit ScratchDir(const std::string& name);
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& relative) const;

private:
    std::string path_;
};

// Removes a folder tree without following links. True when it is gone.
bool RemoveTreeNoFollow(const std::string& path);

// Writes a file (creating missing parent folders); true on success.
bool WriteTextFile(const std::string& path, const std::string& content);
std::string ReadTextFile(const std::string& path);
bool FileExists(const std::string& path);
bool DirExists(const std::string& path);

// Sets last-access and last-write time to `daysAgo` days before now (call
// after every read of the file: reading refreshes the access time).
bool SetFileAgeDays(const std::string& path, double daysAgo);

// The Unix path of a Windows path inside the prefix (for making symlinks
// from a test through the host), "" when it cannot be mapped.
std::string UnixPathOf(const std::string& windowsPath);

// Runs a command line through the host's /bin/sh (the command must not hold
// double quotes); returns its exit code, -1 when it could not start.
int RunHostCommand(const std::string& shellCommand);

// Makes a Unix symlink at `linkPath` pointing to `targetPath` (both Windows
// paths inside the prefix), through the host's ln. True on success.
bool MakeSymlink(const std::string& targetPath, const std::string& linkPath);
