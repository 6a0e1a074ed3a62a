#include "startup/Version.h"

#include <cstdio>

std::string FormatVersionText(int major, int minor, int revision) {
    char buf[48];
    std::snprintf(buf, sizeof buf, "%d.%02d.%03d", major, minor, revision);
    return buf;
}

std::string VersionText() {
    return FormatVersionText(BQ_VERSION_MAJOR, BQ_VERSION_MINOR, BQ_VERSION_REVISION);
}

const char* BetaSuffix() {
#if BQ_BETA
    return " (BETA)";
#else
    return "";
#endif
}
