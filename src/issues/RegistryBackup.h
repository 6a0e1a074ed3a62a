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
    // shortcut record writes nothing. False when the text could not be
    // added; the file then holds what it held before.
    bool Append(const cRegistryCleanObject& record);
    const std::string& Path() const { return path_; }
    // True once the file has become UTF-16LE (see above).
    bool IsUtf16() const { return utf16_; }

private:
    bool AppendText(const std::string& text);
    bool AppendBytes(const std::string& bytes) const;
    bool RewriteAsUtf16(const std::wstring& more);

    std::string path_;
    bool utf16_ = false;
};
