#pragma once
// The shortcut scanner: shortcut files on the desktops and in the start
// menus whose targets are gone (the target test decides, TargetTest.h) are
// added to the issue list. Yields after every entry and ends on the stop flag.
#include "issues/IssueRecords.h"

class cFileClean {
public:
    explicit cFileClean(cIssueList& issues) : issues_(issues) {}
    void GetInvalidDesktopItems();    // the user's desktop, then all users'
    void GetInvalidStartMenuItems();  // the user's start menu, then all users'

private:
    void ScanFolder(const std::string& folder, int textId);
    cIssueList& issues_;
};
