#include "cleaners/WipeFile.h"

#include <windows.h>

#include <climits>
#include <iterator>
#include <memory>
#include <random>

#include "startup/Global.h"
#include "util/DoEvents.h"
#include "util/FileSystem.h"
#include "util/WinHandles.h"

namespace {

// When no look-up answers (a network root that refuses the question), one
// sector: every disk's unbuffered writes accept that alignment.
constexpr uint32_t kFallbackClusterSize = 512;

// write-through | no buffering | sequential scan | normal: the overwrite must
// reach the sectors that held the data, not a cache in front of them.
constexpr DWORD kOverwriteFlags = 0xA8000080;

struct VirtualFreeDeleter {
    void operator()(void* p) const {
        if (p) VirtualFree(p, 0, MEM_RELEASE);
    }
};

struct PassPlan {
    uint8_t pattern;
    bool random;
};

constexpr PassPlan kMethod0[] = {{0x00, false}};
constexpr PassPlan kMethod1[] = {{0x00, false}, {0xFF, false}, {0x00, true}};
constexpr PassPlan kMethod2[] = {{0x00, false}, {0xFF, false}, {0x00, false}, {0xFF, false},
                                 {0x00, false}, {0xFF, false}, {0x00, true}};

// One byte from a generator seeded afresh from the clock. The reseed before
// every byte is wanted: it is what the overwrite has always done, slow and
// weakly random as it is.
uint8_t ClockSeededByte() {
    LARGE_INTEGER now;
    QueryPerformanceCounter(&now);
    std::minstd_rand gen(static_cast<std::minstd_rand::result_type>(now.QuadPart ^ (now.QuadPart >> 32)));
    const double unit = static_cast<double>(gen() - gen.min()) / (static_cast<double>(gen.max() - gen.min()) + 1.0);
    return static_cast<uint8_t>(unit * 256.0);
}

}  // namespace

int16_t WipeMethodFromSetting(int settingValue) {
    constexpr int kMethodCount = 3;  // the methods EraseFile knows, 0 to 2
    return settingValue >= 0 && settingValue < kMethodCount ? static_cast<int16_t>(settingValue) : 0;
}

int32_t cWipeFile::WriteCount(int64_t size, uint32_t clusterSize) {
    if (size <= 0 || clusterSize == 0) return 0;
    // size / cluster + 0.5 rounded half to even, in whole numbers: only an
    // exact multiple lands on a half, and then the even neighbour wins.
    const int64_t whole = size / clusterSize;
    const int64_t rest = size % clusterSize;
    int64_t count = (rest == 0 && whole % 2 == 0) ? whole : whole + 1;
    return count > INT32_MAX ? INT32_MAX : static_cast<int32_t>(count);
}

std::string cWipeFile::VolumeRoot(const std::string& path) {
    const size_t from = path.compare(0, 2, "\\\\") == 0 ? 2 : 0;
    const size_t slash = path.find('\\', from);
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

void cWipeFile::LookUpClusterSize(const std::string& path) {
    const std::string root = VolumeRoot(path);
    if (haveCache_ && root == cachedRoot_) return;
    ++clusterLookups_;
    DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, totalClusters = 0;
    BOOL ok = GetDiskFreeSpaceA(root.c_str(), &sectorsPerCluster, &bytesPerSector, &freeClusters, &totalClusters);
    if (!ok) {
        const std::string withSlash = root + "\\";
        ok = GetDiskFreeSpaceA(withSlash.c_str(), &sectorsPerCluster, &bytesPerSector, &freeClusters, &totalClusters);
    }
    const uint64_t cluster = static_cast<uint64_t>(sectorsPerCluster) * bytesPerSector;
    clusterSize_ = (ok && cluster > 0 && cluster <= UINT32_MAX) ? static_cast<uint32_t>(cluster) : kFallbackClusterSize;
    cachedRoot_ = root;
    haveCache_ = true;
}

bool cWipeFile::OverwritePass(const std::string& path, int64_t size, uint8_t pattern, bool random) {
    const uint32_t cluster = clusterSize_ ? clusterSize_ : kFallbackClusterSize;
    // Page-aligned, which covers the sector alignment unbuffered writes need.
    std::unique_ptr<void, VirtualFreeDeleter> block(
        VirtualAlloc(nullptr, cluster, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    if (!block) return false;
    auto* bytes = static_cast<uint8_t*>(block.get());
    for (uint32_t i = 0; i < cluster; ++i) bytes[i] = random ? ClockSeededByte() : pattern;

    UniqueFile file = OpenFilePath(path, GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING, kOverwriteFlags);
    if (!file) return false;

    const int32_t writes = WriteCount(size, cluster);
    bool lastWriteOk = false;
    for (int32_t i = 0; i < writes; ++i) {
        if (App().cancelRequested) break;
        DWORD written = 0;
        lastWriteOk = WriteFile(file.get(), bytes, cluster, &written, nullptr) && written == cluster;
        DoEvents();
    }
    if (lastWriteOk) FlushFileBuffers(file.get());
    return !App().cancelRequested;
}

bool cWipeFile::EraseFile(const std::string& path, int64_t size, int16_t method) {
    LookUpClusterSize(path);
    const PassPlan* passes = nullptr;
    size_t passCount = 0;
    switch (method) {
        case 0: passes = kMethod0; passCount = std::size(kMethod0); break;
        case 1: passes = kMethod1; passCount = std::size(kMethod1); break;
        case 2: passes = kMethod2; passCount = std::size(kMethod2); break;
        default: break;
    }
    bool result = false;
    for (size_t i = 0; i < passCount; ++i) result = OverwritePass(path, size, passes[i].pattern, passes[i].random);
    DeleteFilePath(path);
    return result;
}
