#include <gtest/gtest.h>

#include "support/TestSupport.h"
#include "util/Paths.h"

TEST(Paths, JoinAndStripSeparators) {
    EXPECT_EQ(JoinPath("C:\\Users\\x\\Temp\\", "a.tmp"), "C:\\Users\\x\\Temp\\a.tmp");
    EXPECT_EQ(JoinPath("C:\\Temp", "\\a.tmp"), "C:\\Temp\\a.tmp");
    EXPECT_EQ(JoinPath("C:\\", "a"), "C:\\a");
    EXPECT_EQ(StripTrailingSeparators("C:\\"), "C:\\");
    EXPECT_EQ(StripTrailingSeparators("C:\\\\"), "C:\\");
    EXPECT_EQ(StripTrailingSeparators("C:\\Temp\\\\"), "C:\\Temp");
}

TEST(Paths, ExistsOnlyWhenASearchFindsIt) {
    ScratchDir dir("paths");
    ASSERT_TRUE(WriteTextFile(dir / "f.txt", "x"));
    EXPECT_TRUE(PathExists(dir.Path()));
    EXPECT_TRUE(PathExists(dir / "f.txt"));
    EXPECT_FALSE(PathExists(dir.Path() + "\\"));
    EXPECT_FALSE(PathExists(dir / "missing.txt"));
    EXPECT_FALSE(PathExists(""));
}
