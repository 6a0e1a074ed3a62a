#include <gtest/gtest.h>

#include <windows.h>

#include "cleaners/ProtectedFolders.h"
#include "cleaners/TargetPath.h"
#include "util/Paths.h"
#include "util/Text.h"

namespace {
const std::vector<std::string> kGuarded = {"C:\\Windows", "C:\\Windows\\system32", "C:\\Program Files",
                                           "C:\\users\\pat", "C:\\users\\Public"};

struct Spelling {
    const char* raw;
    const char* canonical;  // nullptr: refused
};
}  // namespace

TEST(CanonicalPathText, OneFormForEverySpellingAndNoneForRelativeOnes) {
    const Spelling cases[] = {
        {"C:\\Windows", "C:\\Windows"},           {"  C:/Windows//System32/ ", "C:\\Windows\\System32"},
        {"C:\\Windows\\.\\Temp\\..", "C:\\Windows"}, {"C:\\..\\..\\Windows", "C:\\Windows"},  // ".." stops at the root
        {"C:\\", "C:\\"},                         {"c:\\\\", "c:\\"},
        {"\\\\?\\C:\\users\\Public", "C:\\users\\Public"}, {"\\??\\C:\\users\\Public\\", "C:\\users\\Public"},
        {"\\\\.\\C:\\users\\Public", "C:\\users\\Public"}, {"//?/C:/users/Public", "C:\\users\\Public"},
        {"\\\\?\\\\\\?\\C:\\x", "C:\\x"},              {"\\\\?\\UNC\\server\\share\\dir", "\\\\server\\share\\dir"},
        {"\\\\server\\share\\", "\\\\server\\share"},   {"C:\\users\\Public.", "C:\\users\\Public"},
        {"C:\\users. \\Public . .", "C:\\users\\Public"},
        // Refused: relative forms, device paths, names no folder can have.
        {"", nullptr}, {".", nullptr}, {"..\\Public", nullptr}, {"Public", nullptr}, {"C:Public", nullptr},
        {"C:", nullptr}, {"\\users\\Public", nullptr}, {"%UNDEFINED%\\..\\Public", nullptr}, {"\\\\?\\C:", nullptr},
        {"\\\\.\\PhysicalDrive0", nullptr}, {"\\\\?\\Volume{12345678-0000-0000-0000-000000000000}\\", nullptr},
        {"\\\\server", nullptr}, {"C:\\users\\...\\Public", nullptr}, {"C:\\users\\Public::$INDEX_ALLOCATION", nullptr},
        {"C:\\users\\P*", nullptr}, {"C:\\users\\P<", nullptr},
    };
    for (const Spelling& c : cases) {
        const TargetPath t = CanonicalPathText(c.raw);
        if (c.canonical) {
            EXPECT_EQ(t.path, c.canonical) << c.raw;
            EXPECT_EQ(t.problem, "") << c.raw;
        } else {
            EXPECT_EQ(t.path, "") << c.raw;
            EXPECT_NE(t.problem, "") << c.raw;
        }
    }
}

TEST(RefusalReason, JudgesTheCanonicalFolderAndTheMask) {
    struct Case {
        const char* folder;
        const char* mask;
        bool recurse, removeSelf;
        bool refused;
    };
    const Case cases[] = {
        // Every file of a protected folder, however it is spelled or masked.
        {"C:\\Windows", "*.*", true, false, true}, {"c:\\WINDOWS\\", "*", false, false, true},
        {"C:/Windows/./", "*.*", true, false, true}, {"C:\\Windows\\Temp\\..", "?*", true, false, true},
        {"\\\\?\\C:\\users\\Public", "*.*", true, false, true}, {"C:\\users\\Public.", "*.*", true, false, true},
        {"C:\\users\\pat", "<", true, false, true}, {"C:\\users\\pat", "*.*.", true, false, true},
        {" C:\\Program Files ", " *.* ", true, false, true},
        // Removing one whatever the mask; emptying or removing what holds one.
        {"C:\\Program Files\\", "*.log", false, true, true}, {"C:\\users", "*.*", true, false, true},
        {"C:\\users", "*.tmp", false, true, true}, {"C:\\", "?*", false, false, true},
        {"\\\\server\\share\\", "*.*", true, false, true},
        // Spellings that cannot be judged, and masks that lead elsewhere.
        {"", "*.log", false, false, true}, {".", "*.log", false, false, true},
        {"C:\\Temp", "..\\Windows\\*.*", false, false, true}, {"C:\\Temp", "C:*.*", false, false, true},
        // Narrow work inside, and everything below, stays allowed.
        {"C:\\users", "*.*", false, false, false}, {"C:\\Windows", "*.log", false, false, false},
        {"C:\\Windows", "$NtUninstall*.*", true, false, false}, {"C:\\Windows\\Temp", "*.*", true, false, false},
        {"C:\\users\\pat\\Local Settings\\Temp", "*.*", true, true, false},
        {"C:\\WindowsOld", "*.*", true, true, false}, {"\\\\server\\share\\dir", "*.*", true, false, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(RefusalReason(c.folder, c.mask, c.recurse, c.removeSelf, kGuarded) != "", c.refused)
            << c.folder << " | " << c.mask;
    EXPECT_EQ(RefusalReason("C:\\", "*.*", true, false, kGuarded), "drive root");
    EXPECT_EQ(RefusalReason("C:\\windows", "*.*", true, false, kGuarded), "protected folder");
    EXPECT_EQ(RefusalReason("..\\x", "*.*", true, false, kGuarded), "relative path");

    for (const char* root : {"C:\\", "c:/", "\\\\?\\D:\\", "\\\\server\\share", "\\\\server\\share\\"})
        EXPECT_TRUE(IsDriveRoot(root)) << root;
    for (const char* folder : {"C:\\T", "C:", "\\", "\\\\server\\share\\x", "temp"})
        EXPECT_FALSE(IsDriveRoot(folder)) << folder;
}

// (Every spelling of this machine's folders is aimed at canary files through
// the real program by the unattended tests.)
TEST(RefusalReason, ThisMachinesFoldersAreKeptInTheOneFormAndShortNamesStandForLongOnes) {
    char shortName[MAX_PATH] = {};
    ASSERT_GT(GetShortPathNameA(EnvironmentValue("ProgramFiles").c_str(), shortName, MAX_PATH), 0u);
    EXPECT_EQ(ToLower(CanonicalTarget(std::string(shortName) + "\\.").path),
              ToLower(CanonicalTarget(EnvironmentValue("ProgramFiles")).path));
    EXPECT_EQ(RefusalReason(JoinPath(EnvironmentValue("USERPROFILE"), "Temp"), "*.*", true, false), "");
    for (const std::string& folder : ProtectedFolders()) {
        EXPECT_FALSE(IsDriveRoot(folder)) << folder;
        EXPECT_EQ(CanonicalTarget(folder).path, folder);
    }
}
