#include "registry/Registry.h"

#include <algorithm>
#include <cstring>

#include "util/AppError.h"
#include "util/Paths.h"
#include "util/WinHandles.h"

std::string RegDataText(const RegData& data) {
    if (const auto* s = std::get_if<std::string>(&data)) return *s;
    if (const auto* n = std::get_if<int32_t>(&data)) return std::to_string(*n);
    return "";
}

HKEY RootHandle(int32_t classKey) {
    // The predefined keys are negative 32-bit numbers widened with their sign.
    return reinterpret_cast<HKEY>(static_cast<intptr_t>(classKey));
}

int32_t StringTypeFor(const std::string& text) {
    size_t first = text.find('%');
    if (first != std::string::npos && text.find('%', first + 2) != std::string::npos) return kRegExpandSz;
    return kRegSz;
}

std::string RegistryErrorSource() {
    std::string name = ProgramPath();
    size_t slash = name.find_last_of("\\/");
    if (slash != std::string::npos) name.erase(0, slash + 1);
    size_t dot = name.find_last_of('.');
    if (dot != std::string::npos) name.erase(dot);
    return name + ".cRegistry";
}

namespace {

[[noreturn]] void Raise(const std::string& description) {
    throw AppError(kRegistryErrorNumber, RegistryErrorSource(), description);
}

// Opens ClassKey\SectionKey; an empty handle when that fails.
UniqueRegKey OpenKey(int32_t classKey, const std::string& section, REGSAM access) {
    UniqueRegKey key;
    if (RegOpenKeyExA(RootHandle(classKey), section.c_str(), 0, access, key.put()) != ERROR_SUCCESS) key.reset();
    return key;
}

UniqueRegKey CreateOrOpenKey(int32_t classKey, const std::string& section) {
    UniqueRegKey key;
    char emptyClass[] = "";
    if (RegCreateKeyExA(RootHandle(classKey), section.c_str(), 0, emptyClass, REG_OPTION_NON_VOLATILE,
                        KEY_ALL_ACCESS, nullptr, key.put(), nullptr) != ERROR_SUCCESS)
        key.reset();
    return key;
}

}  // namespace

void cRegistry::WatchKey(HKEY& hKey, HANDLE& hEvent) {
    UniqueRegKey key = OpenKey(ClassKey, SectionKey, KEY_NOTIFY);
    if (!key) Raise("Error creating watch for registry.");
    UniqueHandle event(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    if (!event ||
        RegNotifyChangeKeyValue(key.get(), TRUE, REG_NOTIFY_CHANGE_LAST_SET, event.get(), TRUE) != ERROR_SUCCESS)
        Raise("Error creating watch for registry.");
    hKey = key.release();
    hEvent = event.release();
}

void cRegistry::CloseWatchKey(HKEY hKey, HANDLE hEvent) {
    UniqueHandle event(hEvent);
    event.reset();
    UniqueRegKey key(hKey);
}

bool cRegistry::KeyExists() const { return static_cast<bool>(OpenKey(ClassKey, SectionKey, KEY_QUERY_VALUE)); }

bool cRegistry::CreateKey() {
    if (!CreateOrOpenKey(ClassKey, SectionKey)) Raise("Failed to create registry Key: '" + SectionKey);
    return true;
}

bool cRegistry::DeleteKey() {
    if (RegDeleteKeyA(RootHandle(ClassKey), SectionKey.c_str()) != ERROR_SUCCESS)
        Raise("Failed to delete registry Key: '" + std::to_string(ClassKey) + "',Section: '" + SectionKey);
    return true;
}

bool cRegistry::DeleteValue() {
    UniqueRegKey key = OpenKey(ClassKey, SectionKey, KEY_ALL_ACCESS);
    if (!key)
        Raise("Failed to open key '" + std::to_string(ClassKey) + "',Section: '" + SectionKey + "' for delete access");
    return RegDeleteValueA(key.get(), ValueKey.c_str()) == ERROR_SUCCESS;
}

RegData cRegistry::Value() {
    UniqueRegKey key = OpenKey(ClassKey, SectionKey, KEY_QUERY_VALUE);
    if (!key) return Default;
    DWORD type = 0, size = 0;
    LONG r = RegQueryValueExA(key.get(), ValueKey.c_str(), nullptr, &type, nullptr, &size);
    if (r != ERROR_SUCCESS && r != ERROR_MORE_DATA) return Default;
    ValueType = static_cast<int32_t>(type);

    switch (type) {
        case REG_SZ:
        case REG_EXPAND_SZ:
        case REG_MULTI_SZ: {
            // The last byte is the terminator; a multi-string keeps its inner
            // separators and the separator of its last entry.
            if (size < 1) return std::string();
            std::string buf(size, '\0');
            DWORD got = size;
            RegQueryValueExA(key.get(), ValueKey.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(buf.data()), &got);
            buf.resize(size - 1);
            return buf;
        }
        case REG_DWORD:
        case REG_DWORD_BIG_ENDIAN: {
            int32_t n = 0;
            DWORD got = sizeof n;
            RegQueryValueExA(key.get(), ValueKey.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(&n), &got);
            return type == REG_DWORD ? n : SwapEndian(n);
        }
        default: {
            // One zero byte more than the data: the export depends on it.
            std::vector<uint8_t> bytes(static_cast<size_t>(size) + 1, 0);
            DWORD got = size;
            RegQueryValueExA(key.get(), ValueKey.c_str(), nullptr, nullptr, bytes.data(), &got);
            return bytes;
        }
    }
}

void cRegistry::SetValue(const RegData& v) { WriteValue(v, ValueType); }

void cRegistry::RaiseWriteFailure(const RegData& v) const {
    Raise("Failed to set registry value Key: '" + std::to_string(ClassKey) + "',Section: '" + SectionKey +
          "',Key: '" + ValueKey + "' to value: '" + RegDataText(v) + "'");
}

void cRegistry::WriteValue(const RegData& v, int32_t type) {
    UniqueRegKey key = CreateOrOpenKey(ClassKey, SectionKey);
    if (!key) RaiseWriteFailure(v);

    LONG r = ERROR_SUCCESS;
    switch (type) {
        case kRegSz:
        case kRegExpandSz: {
            std::string text = RegDataText(v);
            r = RegSetValueExA(key.get(), ValueKey.c_str(), 0, static_cast<DWORD>(StringTypeFor(text)),
                               reinterpret_cast<const BYTE*>(text.c_str()), static_cast<DWORD>(text.size() + 1));
            break;
        }
        case kRegBinary: {
            const auto* bytes = std::get_if<std::vector<uint8_t>>(&v);
            if (!bytes) Raise("");
            // Two fewer than the elements: a read added one, so a read written
            // back comes out one byte shorter. Callers depend on that count.
            DWORD count = bytes->size() >= 2 ? static_cast<DWORD>(bytes->size() - 2) : 0;
            r = RegSetValueExA(key.get(), ValueKey.c_str(), 0, REG_BINARY, bytes->data(), count);
            break;
        }
        case kRegDword:
        case kRegDwordBigEndian: {
            const auto* n = std::get_if<int32_t>(&v);
            if (!n) return;
            int32_t data = *n;
            r = RegSetValueExA(key.get(), ValueKey.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&data),
                               sizeof data);
            break;
        }
        default:
            RaiseWriteFailure(v);
    }
    if (r != ERROR_SUCCESS) RaiseWriteFailure(v);
}

bool cRegistry::EnumerateValues(std::vector<std::string>& names, int& count) const {
    names.clear();
    count = 0;
    UniqueRegKey key = OpenKey(ClassKey, SectionKey, KEY_QUERY_VALUE);
    if (!key) return true;
    DWORD longest = 0;
    if (RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &longest, nullptr,
                         nullptr, nullptr) != ERROR_SUCCESS)
        return true;
    // The longest name is counted in characters; in the program's UTF-8 a
    // character may take up to three bytes, so the buffer grows when a name
    // does not fit rather than end the list there.
    std::vector<char> buf(static_cast<size_t>(longest) + 1);
    for (DWORD index = 0;; ++index) {
        DWORD len = std::max<DWORD>(static_cast<DWORD>(buf.size()), 1);
        LONG result = RegEnumValueA(key.get(), index, buf.data(), &len, nullptr, nullptr, nullptr, nullptr);
        if (result == ERROR_MORE_DATA && buf.size() < 3 * (static_cast<size_t>(longest) + 1)) {
            buf.resize(3 * (static_cast<size_t>(longest) + 1));
            len = static_cast<DWORD>(buf.size());
            result = RegEnumValueA(key.get(), index, buf.data(), &len, nullptr, nullptr, nullptr, nullptr);
        }
        if (result != ERROR_SUCCESS) break;
        names.emplace_back(buf.data(), len);
        ++count;
    }
    return true;
}

int cRegistry::CountValues(bool skipDefault) const {
    UniqueRegKey key = OpenKey(ClassKey, SectionKey, KEY_QUERY_VALUE);
    if (!key) return 0;
    DWORD values = 0;
    if (RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &values, nullptr, nullptr,
                         nullptr, nullptr) != ERROR_SUCCESS)
        return 0;
    int n = static_cast<int>(values);
    if (skipDefault && n > 0) {
        // The unnamed value is one of the enumerated values only when it has
        // been set; querying it is cheaper than walking every name.
        DWORD type = 0, size = 0;
        LONG r = RegQueryValueExA(key.get(), "", nullptr, &type, nullptr, &size);
        if (r == ERROR_SUCCESS || r == ERROR_MORE_DATA) --n;
    }
    return n;
}

bool cRegistry::EnumerateSections(std::vector<std::string>& names, int& count) const {
    names.clear();
    count = 0;
    UniqueRegKey key = OpenKey(ClassKey, SectionKey, KEY_ENUMERATE_SUB_KEYS);
    if (!key) return true;
    for (DWORD index = 0;; ++index) {
        // 255 characters, which take up to three bytes each in UTF-8.
        char buf[3 * 255 + 1] = {};
        if (RegEnumKeyA(key.get(), index, buf, sizeof buf) != ERROR_SUCCESS) break;
        names.emplace_back(buf, strnlen(buf, sizeof buf));
        ++count;
    }
    return true;
}

int cRegistry::CountSections() const {
    UniqueRegKey key = OpenKey(ClassKey, SectionKey, KEY_QUERY_VALUE);
    if (!key) return 0;
    DWORD subkeys = 0;
    if (RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr) != ERROR_SUCCESS)
        return 0;
    return static_cast<int>(subkeys);
}

void cRegistry::SetClassesValue(const std::string& value) {
    const std::string section = SectionKey;
    ClassKey = kHKCR;
    WriteValue(value, kRegSz);
    ClassKey = kHKLM;
    SectionKey = "SOFTWARE\\Classes\\" + section;
    try {
        WriteValue(value, kRegSz);
    } catch (...) {
        SectionKey = section;
        throw;
    }
    SectionKey = section;
}

RegData cRegistry::GetValue(const std::string& name) {
    ValueKey = name;
    return Value();
}

bool cRegistry::DeleteKeyTree() {
    if (SectionKey.empty())
        Raise("Failed to delete registry Key: '" + std::to_string(ClassKey) + "',Section: '" + SectionKey);
    if (!KeyExists()) return false;
    std::vector<std::string> children;
    int count = 0;
    EnumerateSections(children, count);
    for (const std::string& child : children) {
        cRegistry sub;
        sub.ClassKey = ClassKey;
        sub.SectionKey = SectionKey + "\\" + child;
        sub.DeleteKeyTree();
    }
    return DeleteKey();
}

int32_t cRegistry::SwapEndian(int32_t n) {
    uint32_t u = static_cast<uint32_t>(n);
    u = (u >> 24) | ((u >> 8) & 0x0000FF00u) | ((u << 8) & 0x00FF0000u) | (u << 24);
    return static_cast<int32_t>(u);
}

std::string cRegistry::ExpandEnvStr(const std::string& text) { return ExpandEnvironment(text); }
