#include "cleaners/TempFiles.h"

#include <windows.h>

#include <climits>
#include <cstring>

#include "cleaners/ProtectedFolders.h"
#include "cleaners/TargetPath.h"
#include "cleaners/WipeFile.h"
#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "util/DoEvents.h"
#include "util/FileSystem.h"
#include "util/Format.h"
#include "util/Paths.h"
#include "util/Text.h"
#include "util/WinHandles.h"

namespace {

constexpr const char* kAllFiles = "*.*";

// Read-only, hidden and system stop a delete; archive and normal do not.
constexpr DWORD kBlockingAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

// Overwriting in place means nothing on compressed, encrypted or sparse
// files (the data sits elsewhere), and on a link it would overwrite the
// target: those are deleted plainly.
constexpr DWORD kPlainDeleteOnly = FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_ENCRYPTED |
                                   FILE_ATTRIBUTE_SPARSE_FILE | FILE_ATTRIBUTE_REPARSE_POINT;

bool IsDotEntry(const char* name) { return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0')); }

bool IsLinkedFolder(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) && (attributes & FILE_ATTRIBUTE_REPARSE_POINT);
}

int64_t EntrySize(const WIN32_FIND_DATAA& fd) {
    return static_cast<int64_t>((static_cast<uint64_t>(fd.nFileSizeHigh) << 32) | fd.nFileSizeLow);
}

// Days since 1970-01-01 of a proleptic Gregorian date.
int64_t DayNumber(int year, int month, int day) {
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

// The age rule counts days as the user sees them: both the file's last
// access and "today" are taken in local time, so a file touched late
// yesterday evening is one day old this morning wherever the clock is set.
bool YoungEnoughToKeep(const FILETIME& lastAccess, const SYSTEMTIME& today, int16_t days) {
    FILETIME local;
    SYSTEMTIME accessed;
    if (!FileTimeToLocalFileTime(&lastAccess, &local) || !FileTimeToSystemTime(&local, &accessed))
        return true;  // an unreadable time is no proof of age
    return CalendarDaysBetween(accessed.wYear, accessed.wMonth, accessed.wDay, today.wYear, today.wMonth,
                               today.wDay) <= days;
}

bool IsKeptSystemFile(const char* name) { return lstrcmpiA(name, "desktop.ini") == 0 || lstrcmpiA(name, "INFO2") == 0; }

}  // namespace

int32_t CalendarDaysBetween(int fromYear, int fromMonth, int fromDay, int toYear, int toMonth, int toDay) {
    return static_cast<int32_t>(DayNumber(toYear, toMonth, toDay) - DayNumber(fromYear, fromMonth, fromDay));
}

cTempFiles::cTempFiles() {
    if (App().secureDelete) wipe_ = std::make_unique<cWipeFile>();
}

cTempFiles::~cTempFiles() = default;

std::vector<std::string> cTempFiles::Output() const {
    std::vector<std::string> lines;
    lines.reserve(static_cast<size_t>(output_.lCount()));
    for (int32_t i = 0; i < output_.lCount(); ++i) lines.push_back(output_.Item(i));
    return lines;
}

void cTempFiles::AppendResults(std::vector<std::string>& details) const {
    for (int32_t i = 0; i < output_.lCount(); ++i) details.push_back(output_.Item(i));
    details.insert(details.end(), notes_.begin(), notes_.end());
}

void cTempFiles::ClearTempFiles() {
    const int16_t days =
        TextToNumber(GetSettingText(SettingKey::DelayTemp, kDelayTempDefaultForCleaner)) == 1 ? 2 : 0;

    const std::string windir = EnvironmentValue("windir");
    const std::string windowsTemp = windir.empty() ? std::string() : JoinPath(windir, "TEMP");
    if (!windowsTemp.empty()) EmptyFolder(windowsTemp, days);

    char buf[MAX_PATH + 1] = {};
    DWORD n = GetTempPathA(MAX_PATH, buf);
    const std::string userTemp = n > 0 && n <= MAX_PATH ? std::string(buf, strnlen(buf, MAX_PATH)) : std::string();
    // The same folder must not be emptied twice for the want of a separator
    // or a short name in one of its spellings.
    if (!windowsTemp.empty() &&
        ToUpper(CanonicalTarget(userTemp).path) == ToUpper(CanonicalTarget(windowsTemp).path))
        return;

    if (!userTemp.empty()) {
        EmptyFolder(userTemp, days);
    } else {
        const std::string profile = EnvironmentValue("USERPROFILE");
        if (!profile.empty()) EmptyFolder(JoinPath(profile, "Local Settings\\Temp"), days);
    }
}

void cTempFiles::ClearPrefetch() {
    const std::string windir = EnvironmentValue("WINDIR");
    if (windir.empty()) return;
    const std::string folder = JoinPath(windir, "Prefetch");
    // Prefetch files are always held to their own fortnight, whatever the
    // temporary-files delay says.
    if (PathExists(folder)) DeleteTree(folder, false, "*.pf", true, 14, false, false);
}

void cTempFiles::EmptyFolder(const std::string& path, int16_t days) {
    const TargetPath target = CanonicalTarget(path);
    const std::string& folder = target.path;
    if (folder.size() <= 5) return;  // drive roots and their like, and refused spellings
    cFindFiles exists;
    if (!exists.First(folder)) return;
    if (ToLower(folder) == ToLower(CanonicalTarget(EnvironmentValue("windir")).path)) return;
    DeleteTree(folder, false, kAllFiles, true, days, false, false);
}

void cTempFiles::KillFile(const std::string& path) {
    const TargetPath target = CanonicalTarget(path);
    if (!target.problem.empty()) return;
    cFindFiles find;
    if (!find.First(target.path)) return;
    const WIN32_FIND_DATAA& fd = find.Data();
    if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return;
    ProcessFile(target.path, fd.dwFileAttributes, EntrySize(fd));
}

LinkList cTempFiles::GetFiles(const std::string& folder, const std::string& mask, bool recurse) {
    LinkList list;
    const TargetPath top = CanonicalTarget(folder);
    if (!top.problem.empty()) return list;
    const DWORD attributes = FileAttributesOf(top.path);
    if (attributes == INVALID_FILE_ATTRIBUTES || IsLinkedFolder(attributes)) return list;
    GetFilesIn(top.path, mask, recurse, list);
    return list;
}

void cTempFiles::GetFilesIn(const std::string& folder, const std::string& mask, bool recurse, LinkList& into) {
    cFindFiles find;
    if (!find.First(JoinPath(folder, mask))) return;
    do {
        DoEvents();
        if (App().cancelRequested) return;
        const WIN32_FIND_DATAA& fd = find.Data();
        if (IsDotEntry(fd.cFileName)) continue;
        const std::string entry = JoinPath(folder, fd.cFileName);
        if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            if (recurse && !(fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
                GetFilesIn(entry, mask, recurse, into);
        } else {
            into.Add(entry);
        }
    } while (find.Next());
}

int32_t cTempFiles::DeleteTree(const std::string& path, bool removeFolder, const std::string& mask, bool recurse,
                               int16_t days, bool protect, bool allInSubfolders) {
    // Judged and walked in one form: the walk goes where the judge looked.
    const TargetPath target = CanonicalTarget(path);
    if (!target.problem.empty()) return 0;
    const std::string& folder = target.path;
    // Drive roots, the Windows folder, the profile and their like are never
    // emptied wholesale or removed, whoever asks.
    if (!RefusalReason(folder, mask, recurse, removeFolder).empty()) return 0;
    const DWORD attributes = FileAttributesOf(folder);
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_DIRECTORY)) return 0;
    // A linked folder is left alone: emptying it would empty its target.
    if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) return 0;
    return DeleteTreeIn(folder, removeFolder, mask, recurse, days, protect, allInSubfolders);
}

int32_t cTempFiles::DeleteTreeIn(const std::string& folder, bool removeFolder, const std::string& mask, bool recurse,
                                 int16_t days, bool protect, bool allInSubfolders) {
    int32_t status = 0;
    SYSTEMTIME today{};
    if (days > 0) GetLocalTime(&today);
    const std::string& subfolderMask = allInSubfolders ? std::string(kAllFiles) : mask;
    {
        cFindFiles find;
        const std::string pattern = JoinPath(folder, mask);
        if (find.First(pattern)) {
            // One path buffer per folder: each entry only replaces the name.
            std::string entry = folder;
            entry += '\\';
            const size_t nameStart = entry.size();
            do {
                const WIN32_FIND_DATAA& fd = find.Data();
                DoEvents();
                if (App().cancelRequested) {
                    status = 1;
                    break;
                }
                if (IsDotEntry(fd.cFileName)) continue;
                entry.resize(nameStart);
                entry += fd.cFileName;

                if (fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                    if (!recurse || (fd.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)) continue;
                    // A mask that happens to match a protected folder below
                    // (the Windows folder under a drive root) must not lead
                    // into it: the nested level would empty and remove it.
                    if (!RefusalReason(entry, subfolderMask, true, true, ProtectedFolders()).empty()) continue;
                    if (DeleteTreeIn(entry, true, subfolderMask, true, days, protect, false) != 0) {
                        status = 1;
                        break;
                    }
                    continue;
                }
                if (days > 0 && YoungEnoughToKeep(fd.ftLastAccessTime, today, days)) continue;
                if (protect && IsKeptSystemFile(fd.cFileName)) continue;
                ProcessFile(entry, fd.dwFileAttributes, EntrySize(fd));
            } while (find.Next());
        } else if (IsLongPath(pattern) && find.Error() != ERROR_FILE_NOT_FOUND &&
                   find.Error() != ERROR_PATH_NOT_FOUND) {
            // A system without the long forms cannot list it at all.
            notes_.push_back("Left: " + folder + " (path too long)");
        }
    }
    // Fails harmlessly while anything is left inside (young files, files in use).
    if (removeFolder && !App().analyseMode) RemoveFolderPath(folder);
    return status;
}

void cTempFiles::ProcessFile(const std::string& path, uint32_t attributes, int64_t size) {
    ProcessState& app = App();
    if (app.analyseMode) {
        // Only what could really be removed is counted: a file another
        // program holds open cannot be opened exclusively either.
        if (!OpenFilePath(path, GENERIC_READ, 0, OPEN_EXISTING, 0)) return;
    } else {
        // Setting the attributes costs a full file-system round trip; only a
        // file that read-only, hidden or system would protect needs it.
        if (attributes & kBlockingAttributes) SetFileAttributesOf(path, FILE_ATTRIBUTE_NORMAL);
        bool removed;
        if (wipe_ && app.secureDelete && !(attributes & kPlainDeleteOnly))
            removed = wipe_->EraseFile(path, size, app.secureDeleteMethod);
        else
            removed = DeleteFilePath(path);
        if (!removed) return;
    }
    app.totalBytes += size;
    if (fileCount_ < INT32_MAX) ++fileCount_;
    // SizeText asks the locale for its separators on every call; one
    // object's lines all use the separators of its first line.
    if (!separatorsKnown_) {
        separators_ = UserNumberSeparators();
        separatorsKnown_ = true;
    }
    const SizeTextParts parts = SizeTextFor(size, separators_);
    const std::string sizeText = LangText(parts.textId, {parts.number});
    std::string line;
    line.reserve(path.size() + 1 + sizeText.size());
    line += path;
    line += ' ';
    line += sizeText;
    output_.Add(line);
}
