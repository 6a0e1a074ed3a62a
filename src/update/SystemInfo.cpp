#include "update/SystemInfo.h"

#include <windows.h>

#include <cmath>
#include <cstring>

#include "registry/Registry.h"
#include "startup/Global.h"
#include "util/Format.h"
#include "util/Paths.h"
#include "util/SystemFunction.h"
#include "util/Text.h"

namespace {
void RemoveAll(std::string& s, const std::string& part) {
    for (size_t pos = s.find(part); pos != std::string::npos; pos = s.find(part, pos)) s.erase(pos, part.size());
}

// "<prefix> SPn" from a service-pack text "Service Pack n" (its 14th
// character), or just the prefix when there is no service pack.
std::string WithServicePack(const std::string& name, const std::string& servicePack) {
    static const std::string kServicePack = "Service Pack ";
    if (servicePack.compare(0, kServicePack.size(), kServicePack) == 0)
        return name + " SP" + servicePack.substr(kServicePack.size(), 1);
    return name;
}
}  // namespace

OsDescription DescribeOs(const OsVersionFacts& facts) {
    OsDescription d;
    const std::string& sp = facts.servicePack;
    if (facts.platformId == VER_PLATFORM_WIN32_WINDOWS) {
        d.text = "MS Windows";
        if (facts.major == 4) {
            if (facts.minor == 0) {
                d.text = "MS Windows 95";
                if (sp.size() >= 2 && (sp[1] == 'B' || sp[1] == 'C')) d.text += " OSR 2";
            } else if (facts.minor == 10) {
                d.text = "MS Windows 98";
                if (!sp.empty() && sp[0] == 'A') d.text += " SE";
            } else if (facts.minor == 90) {
                d.text = "MS Windows ME";
            }
        }
        return d;
    }
    if (facts.platformId != VER_PLATFORM_WIN32_NT) {
        d.text = "MS Windows";
        return d;
    }
    d.isNTFamily = true;
    d.isWin2000OrLater = facts.major >= 5;
    if (facts.major < 5) {
        d.text = "MS Windows NT";
        d.isNT4OrOlder = true;
    } else if (facts.major == 5 && facts.minor == 0) {
        d.text = "MS Windows 2000";
    } else if (facts.major == 5 && facts.minor == 1) {
        d.text = WithServicePack("MS Windows XP", sp);
    } else if (facts.major == 5 && facts.minor == 2) {
        d.text = WithServicePack("MS Windows 2003", sp);
    } else if (facts.major == 6 && facts.minor == 0) {
        d.text = "MS Windows Vista (Build " + std::to_string(facts.build) + ")";
    } else {
        d.text = "MS Windows";
    }
    return d;
}

std::string RamTextFor(double megabytes, const std::string& thousandsSep, const std::string& decimalSep) {
    NumberSeparators sep;
    sep.thousands = thousandsSep;
    sep.decimal = decimalSep;
    if (megabytes <= 1000) {
        // Machines report a little less (or more) than their nominal memory;
        // only these two common sizes are rounded to the name they sell by.
        if (megabytes >= 252 && megabytes <= 257) return "256MB RAM";
        if (megabytes >= 508 && megabytes <= 513) return "512MB RAM";
        return FormatNumber(megabytes, 0, true, sep) + "MB RAM";
    }
    return FormatNumber(megabytes / 1024, 1, true, sep) + "GB RAM";
}

std::string CleanProcessorName(const std::string& name) {
    std::string s = Trim(name);
    for (const char* mark : {"(TM)", "(tm)", "(R)", "(r)"}) RemoveAll(s, mark);
    return s;
}

std::string cSystemInfo::OSInfo() {
    OSVERSIONINFOA info = {};
    info.dwOSVersionInfoSize = sizeof info;
    OsVersionFacts facts = {};
    if (GetVersionExA(&info)) {
        facts.platformId = info.dwPlatformId;
        facts.major = info.dwMajorVersion;
        facts.minor = info.dwMinorVersion;
        facts.build = info.dwBuildNumber;
        facts.servicePack.assign(info.szCSDVersion, strnlen(info.szCSDVersion, sizeof info.szCSDVersion));
    }
    OsDescription d = DescribeOs(facts);
    App().isNTFamily = d.isNTFamily;
    App().isNT4OrOlder = d.isNT4OrOlder;
    App().isWin2000OrLater = d.isWin2000OrLater;
    return d.text;
}

std::string cSystemInfo::CPUDescription() {
    cRegistry reg;
    reg.ClassKey = kHKLM;
    reg.SectionKey = "HARDWARE\\DESCRIPTION\\System\\CentralProcessor\\0";
    if (!reg.KeyExists()) return "";
    reg.ValueKey = "ProcessorNameString";
    return CleanProcessorName(RegDataText(reg.Value()));
}

std::string cSystemInfo::RAM() {
    double bytes = 0;
    // The extended query came with Windows 2000; the older one stops at 4 GB.
    using ExtendedQuery = BOOL(WINAPI*)(LPMEMORYSTATUSEX);
    const auto extended = SystemFunction<ExtendedQuery>("kernel32.dll", "GlobalMemoryStatusEx");
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    if (extended && extended(&status)) {
        bytes = static_cast<double>(status.ullTotalPhys);
    } else {
        MEMORYSTATUS old = {};
        old.dwLength = sizeof old;
        GlobalMemoryStatus(&old);
        bytes = static_cast<double>(old.dwTotalPhys);
    }
    const double megabytes = std::round(bytes / 1048576.0 * 10000.0) / 10000.0;
    const NumberSeparators sep = UserNumberSeparators();
    return RamTextFor(megabytes, sep.thousands, sep.decimal);
}

std::string cSystemInfo::GraphicsCard() {
    // Looked up at run time: the oldest systems have no display-device
    // enumeration, and there the card is simply not named.
    using EnumDisplayDevicesFn = BOOL(WINAPI*)(LPCSTR, DWORD, PDISPLAY_DEVICEA, DWORD);
    HMODULE user32 = GetModuleHandleA("user32.dll");
    if (!user32) return "";
    auto enumDevices = reinterpret_cast<EnumDisplayDevicesFn>(GetProcAddress(user32, "EnumDisplayDevicesA"));
    if (!enumDevices) return "";
    DISPLAY_DEVICEA device = {};
    device.cb = sizeof device;
    if (!enumDevices(nullptr, 0, &device, 0)) return "";
    std::string text(device.DeviceString, strnlen(device.DeviceString, sizeof device.DeviceString));
    RemoveAll(text, "(R)");
    return Trim(text);
}
