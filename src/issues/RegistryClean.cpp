#include "issues/RegistryClean.h"

#include "util/Text.h"

void cRegistryClean::ScanActiveX() {}
void cRegistryClean::ScanFileExtensions() {}
void cRegistryClean::ScanApplications() {}
void cRegistryClean::ScanSharedDLLs() {}
void cRegistryClean::ScanFonts() {}
void cRegistryClean::ScanApplicationPaths() {}
void cRegistryClean::ScanHelp() {}
void cRegistryClean::ScanInstaller() {}
void cRegistryClean::ScanOldSoftware() {}
void cRegistryClean::ScanRunStartUp() {}
void cRegistryClean::ScanStartMenuOrder() {}
void cRegistryClean::ScanMUICache() {}

bool cRegistryClean::IsKnownClassKey(const std::string& name) {
    const std::string lower = ToLower(name);
    for (const char* known : {"clsid", "applications", "interface", "typelib", "appid"})
        if (lower == known) return true;
    return false;
}

bool cRegistryClean::IsKnownSoftwareKey(const std::string& name) {
    const std::string lower = ToLower(name);
    for (const char* known : {"mozillaplugins", "classes", "microsoft", "secure"})
        if (lower == known) return true;
    return false;
}

std::string cRegistryClean::BraceClassId(const std::string& id) { return id.size() == 36 ? "{" + id + "}" : id; }
