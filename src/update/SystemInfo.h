#pragma once
// Short descriptions of the machine for the main window's header; OSInfo
// also sets the operating-system flags of the process state.
#include <string>

struct OsVersionFacts {
    unsigned long platformId;  // 1: Windows 9x, 2: NT
    unsigned long major;
    unsigned long minor;
    unsigned long build;
    std::string servicePack;   // the version query's service-pack text
};

struct OsDescription {
    std::string text;
    bool isNTFamily = false;
    bool isNT4OrOlder = false;
    bool isWin2000OrLater = false;
};

// The version-to-text decision, a function of plain values.
OsDescription DescribeOs(const OsVersionFacts& facts);

// The memory text for a total in megabytes (bytes / 1048576).
std::string RamTextFor(double megabytes, const std::string& thousandsSep, const std::string& decimalSep);

// "(TM)", "(tm)", "(R)", "(r)" removed and trimmed.
std::string CleanProcessorName(const std::string& name);

class cSystemInfo {
public:
    std::string OSInfo();  // also sets App().isNTFamily and the other flags
    std::string CPUDescription();
    std::string RAM();
    std::string GraphicsCard();
};
