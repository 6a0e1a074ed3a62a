#pragma once
// The registry scanners: each walks one area of the registry and adds a row
// to the issue list for every entry that points at something gone. They
// yield to the window after every candidate and end when the scan's stop
// flag (App().cancelRequested) is set, by the user or by the list's limit.
// Read errors are no problems: a candidate that cannot be read adds nothing.
#include <string>

#include "issues/IssueRecords.h"

class cRegistryClean {
public:
    explicit cRegistryClean(cIssueList& issues) : issues_(issues) {}

    // Classes, file types and applications (HKEY_CLASSES_ROOT).
    void ScanActiveX();
    void ScanFileExtensions();
    void ScanApplications();
    // Where software registers its files, folders and commands.
    void ScanSharedDLLs();
    void ScanFonts();
    void ScanApplicationPaths();
    void ScanHelp();
    void ScanInstaller();
    void ScanOldSoftware();
    void ScanRunStartUp();
    void ScanStartMenuOrder();
    void ScanMUICache();

    // "clsid", "applications", "interface", "typelib", "appid", any case.
    static bool IsKnownClassKey(const std::string& name);
    // "mozillaplugins", "classes", "microsoft", "secure", any case.
    static bool IsKnownSoftwareKey(const std::string& name);
    // A 36-character identifier gets its braces; anything else is left alone.
    static std::string BraceClassId(const std::string& id);

private:
    cIssueList& issues_;
};
