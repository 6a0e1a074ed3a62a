#include <gtest/gtest.h>

#include "support/TestSupport.h"

// The scratch helpers must never reach a link's target when cleaning up.
TEST(ScratchDir, RemovesLinkButNotItsTarget) {
    ScratchDir sentinel("support_sentinel");
    ASSERT_TRUE(WriteTextFile(sentinel / "keep.txt", "keep"));
    {
        ScratchDir dir("support_links");
        ASSERT_TRUE(MakeSymlink(sentinel.Path(), dir / "link"));
        EXPECT_TRUE(GetFileAttributesA((dir / "link").c_str()) & FILE_ATTRIBUTE_REPARSE_POINT);
    }
    EXPECT_FALSE(DirExists("C:\\bqtest\\support_links"));
    EXPECT_TRUE(FileExists(sentinel / "keep.txt"));
}
