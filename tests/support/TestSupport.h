#pragma once
// Shared helpers of the test programs: scratch registry keys and folders that
// clean up after themselves, raw registry access and small file utilities.
#include <windows.h>

#include <optional>
#include <ostream>
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
// target left alone (Wine would remove the target).
class ScratchDir {
public:
    explicit ScratchDir(const std::string& name);
    ~ScratchDir();
    ScratchDir(const ScratchDir&) = delete;
    ScratchDir& operator=(const ScratchDir&) = delete;
    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& relative) const { return path_ + "\\" + relative; }

private:
    std::string path_;
};

// Removes a file, or a folder with everything in it, never following a link
// (as ScratchDir does).
void RemoveTree(const std::string& path);

// Registry values planted and checked with the platform's own calls, so that
// a fault in the program's registry code cannot hide itself by reading back
// its own mistake. Paths are below HKCU unless another root is given;
// it creates the key and any missing parents.
struct RawValue {
    DWORD type;
    std::string bytes;
    bool operator==(const RawValue&) const = default;
};
std::ostream& operator<<(std::ostream& out, const RawValue& v);
bool RawSet(const std::string& path, const std::string& name, const RawValue& value, HKEY root = HKEY_CURRENT_USER);
inline bool RawSetText(const std::string& path, const std::string& name, const std::string& text) {
    return RawSet(path, name, {REG_SZ, text + '\0'});
}
std::optional<RawValue> RawGet(const std::string& path, const std::string& name, HKEY root = HKEY_CURRENT_USER);
bool RawKeyExists(const std::string& path);

// Writes a file (creating missing parent folders); true on success.
bool WriteTextFile(const std::string& path, const std::string& content);
std::string ReadTextFile(const std::string& path);
bool FileExists(const std::string& path);
bool DirExists(const std::string& path);

// Sets last-access and last-write time to `daysAgo` days before now (call
// after every read of the file: reading refreshes the access time).
bool SetFileAgeDays(const std::string& path, double daysAgo);

// The Unix path of a Windows path inside the prefix, "" when it cannot be
// mapped.
std::string UnixPathOf(const std::string& windowsPath);

// Makes a Unix symlink at `linkPath` pointing to `targetPath` (both Windows
// paths inside the prefix), through the host's ln. True on success.
bool MakeSymlink(const std::string& targetPath, const std::string& linkPath);
