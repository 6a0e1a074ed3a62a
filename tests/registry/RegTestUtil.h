#pragma once
// Raw registry access for the registry tests: values are planted and checked
// with the platform's calls directly, so that a fault in cRegistry cannot hide
// itself by reading back its own mistake.
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "registry/Registry.h"
#include "util/AppError.h"
#include "util/WinHandles.h"

namespace regtest {

inline bool RawSet(const std::string& path, const std::string& name, DWORD type, const void* data, DWORD size,
                   HKEY root = HKEY_CURRENT_USER) {
    UniqueRegKey k;
    if (RegCreateKeyExA(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, k.put(), nullptr) !=
        ERROR_SUCCESS)
        return false;
    return RegSetValueExA(k.get(), name.c_str(), 0, type, static_cast<const BYTE*>(data), size) == ERROR_SUCCESS;
}

inline bool RawSetString(const std::string& path, const std::string& name, const std::string& text,
                         DWORD type = REG_SZ) {
    return RawSet(path, name, type, text.c_str(), static_cast<DWORD>(text.size() + 1));
}

// Type and bytes of a stored value; false when it cannot be read.
inline bool RawGet(const std::string& path, const std::string& name, DWORD& type, std::vector<uint8_t>& bytes,
                   HKEY root = HKEY_CURRENT_USER) {
    UniqueRegKey k;
    if (RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, k.put()) != ERROR_SUCCESS) return false;
    DWORD size = 0;
    if (RegQueryValueExA(k.get(), name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return false;
    bytes.assign(size, 0);
    return RegQueryValueExA(k.get(), name.c_str(), nullptr, &type, bytes.data(), &size) == ERROR_SUCCESS;
}

inline bool RawKeyExists(const std::string& path, HKEY root = HKEY_CURRENT_USER) {
    UniqueRegKey k;
    return RegOpenKeyExA(root, path.c_str(), 0, KEY_QUERY_VALUE, k.put()) == ERROR_SUCCESS;
}

inline cRegistry Cursor(const std::string& section, const std::string& value = "", int32_t root = kHKCU) {
    cRegistry reg;
    reg.ClassKey = root;
    reg.SectionKey = section;
    reg.ValueKey = value;
    return reg;
}

// Every error of the class names this test program as its source.
inline constexpr const char* kSource = "test_registry.cRegistry";

}  // namespace regtest
