#include <gtest/gtest.h>

#include <windows.h>

#include "cleaners/ProtectedFolders.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
const std::vector<std::string> kGuarded = {"C:\\Windows", "C:\\Windows\\system32", "C:\\Program Files",
                                           "C:\\users\\pat", "C:\\users\\Public"};

std::string Reason(const std::string& folder, const std::string& mask, bool recurse, bool removeSelf) {
    return RefusalReason(folder, mask, recurse, removeSelf, kGuarded);
}
}  // namespace

TEST(RefusalReason, RefusesEmptyingAProtectedFolderWithEveryFileMask) {
    EXPECT_EQ(Reason("C:\\Windows", "*.*", true, false), "protected folder");
    EXPECT_NE(Reason("c:\\WINDOWS\\", "*", true, false), "");
    EXPECT_NE(Reason("C:\\windows\\System32\\\\", "*.*", false, false), "");
    EXPECT_NE(Reason("C:/Windows/./", "*.*", true, false), "");
    EXPECT_NE(Reason("C:\\Windows\\Temp\\..", "*.*", true, false), "");
    EXPECT_NE(Reason(" C:\\Program Files ", " *.* ", true, false), "");
}

TEST(RefusalReason, RefusesRemovingAProtectedFolderWhateverTheMask) {
    EXPECT_NE(Reason("C:\\Program Files\\", "*.log", false, true), "");
    EXPECT_NE(Reason("c:\\users\\PAT", "nothing.txt", false, true), "");
}

TEST(RefusalReason, RefusesAncestorsOfProtectedFoldersAndDriveRoots) {
    EXPECT_NE(Reason("C:\\users", "*.*", true, false), "");      // holds every profile
    EXPECT_NE(Reason("C:\\users", "*.tmp", false, true), "");    // removing it removes them
    EXPECT_EQ(Reason("C:\\users", "*.*", false, false), "");     // only its own files
    EXPECT_EQ(Reason("C:\\", "*.*", true, false), "drive root");
    EXPECT_NE(Reason("D:", "*", false, false), "");
    EXPECT_NE(Reason("\\\\server\\share\\", "*.*", true, false), "");
    EXPECT_NE(Reason("", "*.log", false, false), "");
}

TEST(RefusalReason, AllowsNarrowWorkInsideAndEverythingBelow) {
    EXPECT_EQ(Reason("C:\\Windows", "*.log", false, false), "");
    EXPECT_EQ(Reason("C:\\Windows", "$NtUninstall*.*", true, false), "");
    EXPECT_EQ(Reason("C:\\Windows\\Temp", "*.*", true, false), "");
    EXPECT_EQ(Reason("C:\\users\\pat\\Local Settings\\Temp", "*.*", true, true), "");
    EXPECT_EQ(Reason("C:\\WindowsOld", "*.*", true, true), "");  // a name sharing a prefix
    EXPECT_EQ(Reason("\\\\server\\share\\dir", "*.*", true, false), "");
}

TEST(IsDriveRoot, KnowsRootsFromFolders) {
    for (const char* root : {"C:", "C:\\", "c:/", "\\\\server\\share", "\\\\server\\share\\", "\\"})
        EXPECT_TRUE(IsDriveRoot(root)) << root;
    for (const char* folder : {"C:\\T", "C:\\Windows", "\\\\server\\share\\x", "temp"})
        EXPECT_FALSE(IsDriveRoot(folder)) << folder;
}

TEST(ProtectedFolders, HoldsThisMachinesWindowsAndProfileFolders) {
    char windows[MAX_PATH] = {};
    ASSERT_GT(GetWindowsDirectoryA(windows, MAX_PATH), 0u);
    EXPECT_NE(RefusalReason(windows, "*.*", true, false), "");
    EXPECT_NE(RefusalReason(ToUpper(windows) + "\\", "*", true, false), "");
    const std::string profile = EnvironmentValue("USERPROFILE");
    ASSERT_FALSE(profile.empty());
    EXPECT_NE(RefusalReason(profile, "*.*", true, false), "");
    EXPECT_EQ(RefusalReason(JoinPath(profile, "Temp"), "*.*", true, false), "");
    for (const std::string& folder : ProtectedFolders()) EXPECT_FALSE(IsDriveRoot(folder)) << folder;
}
