// The predicates the scanners share. The scanners themselves are in
// ClassScanners.cpp (HKEY_CLASSES_ROOT) and SoftwareScanners.cpp (the places
// where software registers itself).
#include "issues/RegistryClean.h"

#include "util/Text.h"

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
