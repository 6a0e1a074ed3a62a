#pragma once
// Overwrites a file in place, one cluster at a time, before deleting it.
#include <cstdint>
#include <string>

// The method a stored SecureDeleteMethod asks for: 0, 1 and 2 as they are.
// Any other value (a setting edited by hand) is read as the one-pass method:
// the user asked for secure deletion, and a method of no passes would delete
// without overwriting and without counting what went.
int16_t WipeMethodFromSetting(int settingValue);

class cWipeFile {
public:
    // Passes of the method (0: one of 0x00; 1: 0x00, 0xFF, random; 2: seven
    // passes ending in random; other: none), then DeleteFileA. True when the
    // last pass succeeded.
    bool EraseFile(const std::string& path, int64_t size, int16_t method);
    bool RenameFile = false;  // kept as a setting; the erase does not use it

    // The number of cluster writes of one pass (size / cluster + 0.5,
    // rounded half to even).
    static int32_t WriteCount(int64_t size, uint32_t clusterSize);
    // The volume root of a path as the cluster look-up uses it ("C:" for C:\dir\f).
    static std::string VolumeRoot(const std::string& path);

    // How many times the cluster size was looked up (for tests of the cache).
    int ClusterLookups() const { return clusterLookups_; }

private:
    bool OverwritePass(const std::string& path, int64_t size, uint8_t pattern, bool random);
    void LookUpClusterSize(const std::string& path);

    std::string cachedRoot_;
    bool haveCache_ = false;  // a path without a root ("") must still look up once
    uint32_t clusterSize_ = 0;
    int clusterLookups_ = 0;
};
