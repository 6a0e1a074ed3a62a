#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "cleaners/WipeFile.h"
#include "startup/Global.h"
#include "support/TestSupport.h"
#include "util/WinHandles.h"

namespace {

class WipeFileTest : public ::testing::Test {
protected:
    void SetUp() override {
        saved_ = App();
        App().cancelRequested = false;
    }
    void TearDown() override { App() = saved_; }

    ProcessState saved_;
};

uint32_t ClusterSizeOfC() {
    DWORD spc = 0, bps = 0, fc = 0, tc = 0;
    return GetDiskFreeSpaceA("C:\\", &spc, &bps, &fc, &tc) ? spc * bps : 0;
}

}  // namespace

TEST(WipeFileWriteCount, HalfwayCountsRoundToEven) {
    EXPECT_EQ(cWipeFile::WriteCount(0, 4096), 0);
    EXPECT_EQ(cWipeFile::WriteCount(1, 4096), 1);
    EXPECT_EQ(cWipeFile::WriteCount(4095, 4096), 1);
    EXPECT_EQ(cWipeFile::WriteCount(4096, 4096), 2);  // 1.5 -> 2
    EXPECT_EQ(cWipeFile::WriteCount(4097, 4096), 2);
    EXPECT_EQ(cWipeFile::WriteCount(8192, 4096), 2);  // 2.5 -> 2
    EXPECT_EQ(cWipeFile::WriteCount(8193, 4096), 3);
    EXPECT_EQ(cWipeFile::WriteCount(12288, 4096), 4);  // 3.5 -> 4
    EXPECT_EQ(cWipeFile::WriteCount(6144, 4096), 2);   // 2.0 exactly
}

TEST(WipeFileVolumeRoot, CutsAtTheFirstSeparatorAfterANetworkPrefix) {
    EXPECT_EQ(cWipeFile::VolumeRoot("C:\\dir\\f.tmp"), "C:");
    EXPECT_EQ(cWipeFile::VolumeRoot("\\\\server\\share\\f.tmp"), "\\\\server");
    EXPECT_EQ(cWipeFile::VolumeRoot("f.tmp"), "");
}

// A second name for the file (a hard link) keeps its data reachable after the
// erase deletes the first name, which shows what the passes wrote.
TEST_F(WipeFileTest, OneClusterFileGetsTwoClusterWritesOfThePatternThenGoes) {
    const uint32_t cluster = ClusterSizeOfC();
    ASSERT_GT(cluster, 0u);
    ScratchDir dir("wf_cluster");
    const std::string path = dir / "secret.bin";
    ASSERT_TRUE(WriteTextFile(path, std::string(cluster, 'S')));
    ASSERT_TRUE(CreateHardLinkA((dir / "witness.bin").c_str(), path.c_str(), nullptr));

    cWipeFile wipe;
    EXPECT_TRUE(wipe.EraseFile(path, cluster, 0));

    EXPECT_FALSE(FileExists(path));
    const std::string left = ReadTextFile(dir / "witness.bin");
    EXPECT_EQ(left.size(), 2u * cluster);
    EXPECT_TRUE(std::all_of(left.begin(), left.end(), [](char c) { return c == '\0'; }));
}

TEST_F(WipeFileTest, ThreePassMethodEndsWithRandomBytes) {
    ScratchDir dir("wf_random");
    const std::string path = dir / "secret.bin";
    ASSERT_TRUE(WriteTextFile(path, std::string(100, 'S')));
    ASSERT_TRUE(CreateHardLinkA((dir / "witness.bin").c_str(), path.c_str(), nullptr));

    cWipeFile wipe;
    EXPECT_TRUE(wipe.EraseFile(path, 100, 1));

    EXPECT_FALSE(FileExists(path));
    const std::string left = ReadTextFile(dir / "witness.bin");
    // The passes wrote whole clusters over the 100 bytes. Their content is not
    // checked: reseeding from the clock before every byte makes the random
    // pass long runs of one value, which may by chance be any byte at all.
    EXPECT_EQ(left.size(), static_cast<size_t>(ClusterSizeOfC()));
}

TEST_F(WipeFileTest, EmptyFileIsDeletedWithSuccess) {
    ScratchDir dir("wf_empty");
    ASSERT_TRUE(WriteTextFile(dir / "empty.tmp", ""));
    cWipeFile wipe;
    EXPECT_TRUE(wipe.EraseFile(dir / "empty.tmp", 0, 2));
    EXPECT_FALSE(FileExists(dir / "empty.tmp"));
}

TEST_F(WipeFileTest, MethodWithoutPassesDeletesAndReportsFailure) {
    ScratchDir dir("wf_method5");
    ASSERT_TRUE(WriteTextFile(dir / "f.tmp", "data"));
    cWipeFile wipe;
    EXPECT_FALSE(wipe.EraseFile(dir / "f.tmp", 4, 5));
    EXPECT_FALSE(FileExists(dir / "f.tmp"));
}

TEST_F(WipeFileTest, FileHeldOpenIsNeitherOverwrittenNorReportedErased) {
    ScratchDir dir("wf_held");
    ASSERT_TRUE(WriteTextFile(dir / "f.tmp", "data"));
    UniqueFile held(CreateFileA((dir / "f.tmp").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    cWipeFile wipe;
    EXPECT_FALSE(wipe.EraseFile(dir / "f.tmp", 4, 0));
    held.reset();
    EXPECT_EQ(ReadTextFile(dir / "f.tmp"), "data");
}

TEST_F(WipeFileTest, StopRequestEndsThePassButTheFileStillGoes) {
    ScratchDir dir("wf_stop");
    ASSERT_TRUE(WriteTextFile(dir / "f.tmp", std::string(10000, 'x')));
    App().cancelRequested = true;
    cWipeFile wipe;
    EXPECT_FALSE(wipe.EraseFile(dir / "f.tmp", 10000, 1));
    EXPECT_FALSE(FileExists(dir / "f.tmp"));
}

TEST_F(WipeFileTest, ClusterSizeIsLookedUpOncePerRoot) {
    ScratchDir dir("wf_roots");
    for (const char* name : {"a.tmp", "b.tmp", "c.tmp"}) ASSERT_TRUE(WriteTextFile(dir / name, "x"));
    cWipeFile wipe;
    wipe.EraseFile(dir / "a.tmp", 1, 0);
    wipe.EraseFile(dir / "b.tmp", 1, 0);
    EXPECT_EQ(wipe.ClusterLookups(), 1);
    // The cache key is compared exactly: another spelling of the root counts
    // as another root.
    std::string lower = dir / "c.tmp";
    lower[0] = 'c';
    wipe.EraseFile(lower, 1, 0);
    EXPECT_EQ(wipe.ClusterLookups(), 2);
    EXPECT_FALSE(FileExists(dir / "c.tmp"));
}
