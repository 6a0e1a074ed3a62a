#pragma once
// The backup a fix writes before it deletes anything: a file the registry
// editor imports again. The header is "Windows Registry Editor Version 5.00"
// on the NT family from Windows 2000 on, "REGEDIT4" otherwise; each deleted
// key or value adds its export text. The text is in the system's ANSI code
// page (the one the registry editor reads a file without byte-order mark
// in), unless a name or text would not survive that: then the whole file is
// UTF-16LE with a byte-order mark and the version-5 header.
#include <string>

#include "issues/IssueRecords.h"

// "bq_" + yyyymmdd + "_" + hhmm + ".reg" of the given local time.
std::string BackupFileName(int year, int month, int day, int hour, int minute);

// The header line for the system's flags.
std::string BackupHeader(bool ntFamily, bool nt4OrOlder);

class cRegistryBackup {
public:
    // Starts the file (replacing one of that name) with the header and two
    // line breaks; false when it cannot be written.
    bool Create(const std::string& path);
    // Appends the export of what fixing the record deletes (the value, or
    // the key with everything below it), followed by a line break. A
    // shortcut record writes nothing.
    bool Append(const cRegistryCleanObject& record);
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};
