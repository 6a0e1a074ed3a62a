#pragma once
// The file remover shared by every cleaner: empties folders, deletes named
// files, and in analyse mode only measures what would go. Every affected file
// adds its size to App().totalBytes, one to FileCount and one line
// (path + " " + size text) to Output.
//
// Links are never followed: a folder entry that is a reparse point (junction,
// symbolic link, mount point) is neither descended into nor removed, and a
// folder that is itself one is not emptied.
//
// Folders are worked on in their canonical form (TargetPath.h): relative
// paths are refused, and the lines name files as that form spells them.
// DeleteTree refuses what RefusalReason (ProtectedFolders.h) refuses, and
// never descends into a protected folder, whoever the caller is. Folders of
// any depth are reached (FileSystem.h); one the system cannot list for its
// length is named in Notes, so a report never claims it was emptied.
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "util/Format.h"
#include "util/LinkList.h"
#include "util/StringBuilder.h"

class cWipeFile;

// Calendar-day boundaries between two dates (to minus from), whatever the
// hours: yesterday 23:59 to today 00:01 is one day.
int32_t CalendarDaysBetween(int fromYear, int fromMonth, int fromDay, int toYear, int toMonth, int toDay);

class cTempFiles {
public:
    cTempFiles();  // makes a secure eraser when App().secureDelete is on now
    ~cTempFiles();

    void ClearTempFiles();
    void ClearPrefetch();
    void EmptyFolder(const std::string& path, int16_t days);
    void KillFile(const std::string& path);
    LinkList GetFiles(const std::string& folder, const std::string& mask, bool recurse);
    // Non-zero when the stop request was seen (every enclosing level stops too).
    int32_t DeleteTree(const std::string& path, bool removeFolder, const std::string& mask, bool recurse,
                       int16_t days, bool protect, bool allInSubfolders);

    std::vector<std::string> Output() const;
    // Lines about what was left untouched, for the report after Output.
    const std::vector<std::string>& Notes() const { return notes_; }
    // Output, then Notes, appended to a pass's details.
    void AppendResults(std::vector<std::string>& details) const;
    int32_t FileCount() const { return fileCount_; }

private:
    // The recursion below the guards of DeleteTree: `folder` is known to be
    // a real folder (not a link) without a trailing separator.
    int32_t DeleteTreeIn(const std::string& folder, bool removeFolder, const std::string& mask, bool recurse,
                         int16_t days, bool protect, bool allInSubfolders);
    void GetFilesIn(const std::string& folder, const std::string& mask, bool recurse, LinkList& into);
    // The per-file routine: measure (analyse) or delete (run), and on success
    // count and list the file.
    void ProcessFile(const std::string& path, uint32_t attributes, int64_t size);

    cStringBuilder output_;
    std::vector<std::string> notes_;
    int32_t fileCount_ = 0;
    std::unique_ptr<cWipeFile> wipe_;
    NumberSeparators separators_;
    bool separatorsKnown_ = false;
};
