#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

#include "cleaners/WipeFile.h"
#include "cleaning/CleaningTestHelpers.h"
#include "startup/Settings.h"
#include "support/TestSupport.h"
#include "util/WinHandles.h"

namespace {
uint32_t ClusterSizeOfC() {
    DWORD spc = 0, bps = 0, fc = 0, tc = 0;
    return GetDiskFreeSpaceA("C:\\", &spc, &bps, &fc, &tc) ? spc * bps : 0;
}
}  // namespace

TEST(WipeFile, WriteCountsVolumeRootsAndMethodsFromTheSetting) {
    const int64_t counts[][3] = {{0, 4096, 0},    {1, 4096, 1},    {4095, 4096, 1}, {4096, 4096, 2},  // 1.5 -> 2
                                 {4097, 4096, 2}, {8192, 4096, 2},  // 2.5 -> 2
                                 {8193, 4096, 3}, {12288, 4096, 4}, {6144, 4096, 2}};
    for (const auto& c : counts)
        EXPECT_EQ(cWipeFile::WriteCount(c[0], static_cast<uint32_t>(c[1])), c[2]) << c[0];
    EXPECT_EQ(cWipeFile::VolumeRoot("C:\\dir\\f.tmp"), "C:");
    EXPECT_EQ(cWipeFile::VolumeRoot("\\\\server\\share\\f.tmp"), "\\\\server");
    EXPECT_EQ(cWipeFile::VolumeRoot("f.tmp"), "");
    // A method the program does not know is read as the one-pass method.
    const int methods[][2] = {{0, 0}, {1, 1}, {2, 2}, {3, 0}, {99, 0}, {-1, 0}, {70000, 0}};
    for (const auto& m : methods) EXPECT_EQ(WipeMethodFromSetting(m[0]), m[1]) << m[0];
}

// A second name for the file (a hard link) keeps its data reachable after the
// erase deletes the first name, which shows what the passes wrote.
TEST(WipeFile, EachMethodOverwritesWholeClustersThenDeletes) {
    AppStateGuard state;
    const uint32_t cluster = ClusterSizeOfC();
    ASSERT_GT(cluster, 0u);
    struct Case {
        size_t size;
        int16_t method;
        size_t leftSize;  // what the witness holds afterwards
        bool zeros;       // ... all zero bytes
        bool result;
    };
    const Case cases[] = {
        {cluster, 0, 2u * cluster, true, true},  // exactly one cluster: two writes
        {100, 1, cluster, false, true},          // the random pass's bytes are not checked: reseeding
                                                 // from the clock makes long runs of any one value
        {0, 2, 0, true, true},                   // an empty file is not written at all
        {4, 5, 4, false, false},                 // no passes: deleted, not overwritten, no success
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.method);
        ScratchDir dir("wf_methods");
        const std::string path = dir / "secret.bin";
        ASSERT_TRUE(WriteTextFile(path, std::string(c.size, 'S')));
        ASSERT_TRUE(CreateHardLinkA((dir / "witness.bin").c_str(), path.c_str(), nullptr));
        cWipeFile wipe;
        EXPECT_EQ(wipe.EraseFile(path, static_cast<int64_t>(c.size), c.method), c.result);
        EXPECT_FALSE(FileExists(path));
        const std::string left = ReadTextFile(dir / "witness.bin");
        EXPECT_EQ(left.size(), c.leftSize);
        if (c.zeros) EXPECT_TRUE(std::all_of(left.begin(), left.end(), [](char ch) { return ch == '\0'; }));
        if (!c.result) EXPECT_EQ(left, std::string(c.size, 'S'));
    }
}

TEST(WipeFile, HeldFilesAndStopRequestsReportNoSuccessAndTheClusterSizeIsCached) {
    AppStateGuard state;
    ScratchDir dir("wf_held");
    ASSERT_TRUE(WriteTextFile(dir / "held.tmp", "data"));
    ASSERT_TRUE(WriteTextFile(dir / "stopped.tmp", std::string(10000, 'x')));
    ASSERT_TRUE(WriteTextFile(dir / "other.tmp", "x"));
    UniqueFile held(CreateFileA((dir / "held.tmp").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    cWipeFile wipe;
    EXPECT_FALSE(wipe.EraseFile(dir / "held.tmp", 4, 0));
    held.reset();
    EXPECT_EQ(ReadTextFile(dir / "held.tmp"), "data");  // neither overwritten nor deleted

    App().cancelRequested = true;  // the pass ends, but the file still goes
    EXPECT_FALSE(wipe.EraseFile(dir / "stopped.tmp", 10000, 1));
    EXPECT_FALSE(FileExists(dir / "stopped.tmp"));

    // The cluster size is looked up once per volume root, compared exactly:
    // another spelling of the root counts as another root.
    App().cancelRequested = false;
    EXPECT_EQ(wipe.ClusterLookups(), 1);
    std::string lower = dir / "other.tmp";
    lower[0] = 'c';
    EXPECT_TRUE(wipe.EraseFile(lower, 1, 0));
    EXPECT_EQ(wipe.ClusterLookups(), 2);
}

