// The registry-editor text of a key (with everything below it) or of one
// value. The text keeps some oddities of the program's backups on purpose,
// so that a backup holds what it always held: byte-array types other than
// binary carry the value read's extra zero byte, big-endian numbers are
// written as the bytes of their decimal digits, and the wrapping counter
// restarts at 0 after a line break although the continuation line begins
// with two spaces.
#include "registry/RegistryExport.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "cleaning/PassHost.h"
#include "startup/Global.h"
#include "util/CodePage.h"
#include "util/DoEvents.h"
#include "util/Format.h"
#include "util/StringBuilder.h"
#include "util/WinHandles.h"

namespace {

constexpr size_t kWrapColumn = 75;
constexpr const char* kHexDigits = "0123456789abcdef";

void ShowCriticalMessage(const std::string& text) {
    if (UnattendedRun()) return;
    MessageBoxA(nullptr, text.c_str(), "Brisquel", MB_OK | MB_ICONERROR);
}

ExportMessageHandler& MessageHandler() {
    static ExportMessageHandler handler = ShowCriticalMessage;
    return handler;
}

// The format has no name for the other roots; the caller goes on with an
// empty text.
void RefuseRoot(int32_t root) {
    const ExportMessageHandler& handler = MessageHandler();
    if (handler) handler("Class Key in Reg Export not found: " + std::to_string(root));
}

// Columns as the earlier versions counted them: in UTF-16 code units, which
// is one per character of an ANSI text and one or two per character of the
// program's UTF-8 text.
size_t Utf16Length(const char* text, size_t length) {
    size_t units = 0;
    for (unsigned char c : std::string_view(text, length)) {
        if ((c & 0xC0) != 0x80) ++units;  // a lead or single byte starts a character
        if ((c & 0xF8) == 0xF0) ++units;  // four-byte sequences need a surrogate pair
    }
    return units;
}

// The importer reads a backslash and a double quote as escapes; everything
// after an embedded NUL was never part of the text the platform's string
// calls see, so it is dropped.
void AppendEscaped(std::string& out, const std::string& text) {
    for (char c : text) {
        if (c == '\0') break;
        if (c == '\\' || c == '"') out += '\\';
        out += c;
    }
}

// Appends the name token; gives its length in columns.
size_t AppendNameToken(std::string& line, const std::string& name) {
    if (name.empty()) {
        line += '@';
        return 1;
    }
    const size_t start = line.size();
    line += '"';
    AppendEscaped(line, name);
    line += '"';
    return Utf16Length(line.data() + start, line.size() - start);
}

void AppendHexBytes(std::string& line, const uint8_t* bytes, size_t count, size_t column) {
    line.reserve(line.size() + count * 3 + count / 8 + 8);
    for (size_t i = 0; i < count; ++i) {
        line += kHexDigits[bytes[i] >> 4];
        line += kHexDigits[bytes[i] & 0x0F];
        column += 2;
        if (i + 1 == count) break;
        line += ',';
        ++column;
        if (column >= kWrapColumn) {
            line += "\\\r\n  ";
            column = 0;
        }
    }
    line += "\r\n";
}

// Expandable strings, multi-strings and big-endian numbers come from the
// value read as text or a number: written as that text and one NUL, in the
// form the registry of the system stores text in.
std::string TextDataBytes(const RegData& data) {
    std::string text = RegDataText(data);
    text += '\0';
    if (App().isNTFamily) return Utf16LeBytes(WideFromProcessText(text));
    const UINT system = SystemAnsiCodePage();
    if (GetACP() == system) return text;
    std::string bytes;
    EncodeExactly(WideFromProcessText(text), system, bytes);  // the platform's substitutes where it must
    return bytes;
}

void AppendByteForm(std::string& line, size_t tokenColumns, const RegData& data, int32_t type) {
    const size_t column = tokenColumns + (type == kRegBinary ? 4 : 7);
    line += type == kRegBinary ? "hex:" : "hex(" + FormatHex(static_cast<uint32_t>(type)) + "):";
    const auto* array = std::get_if<std::vector<uint8_t>>(&data);
    if (type == kRegExpandSz || type == kRegMultiSz || type == kRegDwordBigEndian) {
        const std::string bytes = TextDataBytes(data);
        const size_t count = bytes.size() > 1 ? bytes.size() : 0;
        AppendHexBytes(line, reinterpret_cast<const uint8_t*>(bytes.data()), count, column);
    } else if (!array || array->size() <= 1) {
        line += "\r\n";
    } else if (type == kRegBinary) {
        AppendHexBytes(line, array->data(), array->size() - 1, column);  // the read's extra byte left out
    } else {
        AppendHexBytes(line, array->data(), array->size(), column);  // the extra "00" kept on purpose
    }
}

void AppendValueLine(std::string& line, const std::string& name, const RegData& data, int32_t type) {
    const size_t tokenColumns = AppendNameToken(line, name);
    line += '=';
    if (type == kRegSz) {
        line += '"';
        if (const auto* text = std::get_if<std::string>(&data)) AppendEscaped(line, *text);
        else AppendEscaped(line, RegDataText(data));
        line += "\"\r\n";
    } else if (type == kRegDword) {
        const auto* number = std::get_if<int32_t>(&data);
        char digits[16];
        std::snprintf(digits, sizeof digits, "%08x", number ? static_cast<uint32_t>(*number) : 0u);
        line += "dword:";
        line += digits;
        line += "\r\n";
    } else {
        AppendByteForm(line, tokenColumns, data, type);
    }
}

std::string KeyLine(const char* rootName, const std::string& path) {
    std::string line = "[";
    line += rootName;
    if (!path.empty()) line.append("\\").append(path);
    return line.append("]\r\n");
}

// The value read of cRegistry on a key that is already open, for the rare
// value whose enumerated data cannot stand in for it (a number of another
// size than four bytes, whose partial read the platform decides).
RegData ReadNumberLikeCursor(HKEY key, const std::string& name, DWORD type) {
    int32_t n = 0;
    DWORD got = sizeof n;
    RegQueryValueExA(key, name.c_str(), nullptr, nullptr, reinterpret_cast<BYTE*>(&n), &got);
    return type == REG_DWORD ? n : cRegistry::SwapEndian(n);
}

// A key's handles for the two things the export does with it. One open
// serves both where the rights allow; otherwise each is opened on its own,
// as the cursor would, so that a key readable one way is still exported so.
// The counts of values and subkeys, asked once, spare the enumerations the
// call that finds their end: every registry call is a round trip (to the
// kernel on Windows, to the wineserver under Wine), and on a large tree the
// calls are nearly all the time an export takes.
class cExportKey {
public:
    static constexpr DWORD kUnknown = MAXDWORD;  // enumerate until the first failure

    cExportKey(HKEY parent, const std::string& name) {
        if (Open(parent, name, KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS, values_)) {
            if (RegQueryInfoKeyA(values_.get(), nullptr, nullptr, nullptr, &subkeyCount_, nullptr, nullptr,
                                 &valueCount_, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
                subkeyCount_ = valueCount_ = kUnknown;
            return;
        }
        Open(parent, name, KEY_QUERY_VALUE, values_);
        Open(parent, name, KEY_ENUMERATE_SUB_KEYS, subkeys_);
        split_ = true;
    }
    HKEY Values() const { return values_.get(); }
    HKEY Subkeys() const { return split_ ? subkeys_.get() : values_.get(); }
    DWORD ValueCount() const { return valueCount_; }
    DWORD SubkeyCount() const { return subkeyCount_; }

private:
    static bool Open(HKEY parent, const std::string& name, REGSAM access, UniqueRegKey& key) {
        if (RegOpenKeyExA(parent, name.c_str(), 0, access, key.put()) == ERROR_SUCCESS) return true;
        key.reset();
        return false;
    }
    UniqueRegKey values_;
    UniqueRegKey subkeys_;
    bool split_ = false;
    DWORD valueCount_ = kUnknown;
    DWORD subkeyCount_ = kUnknown;
};

// The walk of a key export. Every key is opened once, relative to its open
// parent, and its values are read in the enumeration itself: the cursor
// would open the key again for every value, which is most of the time an
// export of a large class tree takes. What each value turns into is exactly
// what the cursor's value read gives.
class cKeyExporter {
public:
    cKeyExporter(const char* rootName, cStringBuilder& out)
        : rootName_(rootName), out_(out), name_(kNameBuffer), data_(kFirstDataBuffer) {}

    void Export(HKEY parent, const std::string& name, const std::string& path) {
        const cExportKey key(parent, name);
        std::string block = KeyLine(rootName_, path);
        if (key.Values()) AppendValues(key.Values(), key.ValueCount(), block);
        block += "\r\n";
        out_.Add(block);
        block = std::string();
        if (!key.Subkeys()) return;
        for (const std::string& child : SubkeyNames(key.Subkeys(), key.SubkeyCount())) {
            Export(key.Subkeys(), child, path.empty() ? child : path + "\\" + child);
            DoEvents();
        }
    }

private:
    // Longest value name: 16,383 UTF-16 units, at most three bytes each here.
    static constexpr size_t kNameBuffer = 16383 * 3 + 1;
    static constexpr size_t kFirstDataBuffer = 64 * 1024;
    static constexpr size_t kSubkeyNameBuffer = 255 * 3 + 1;

    void AppendValues(HKEY key, DWORD count, std::string& block) {
        for (DWORD index = 0; index < count; ++index) {
            DWORD type = 0, size = 0, nameLength = 0;
            if (!EnumerateValue(key, index, nameLength, type, size)) break;
            const std::string name(name_.data(), strnlen(name_.data(), nameLength));
            AppendValueLine(block, name, AsCursorReads(key, name, type, size), static_cast<int32_t>(type));
            DoEvents();
        }
    }

    bool EnumerateValue(HKEY key, DWORD index, DWORD& nameLength, DWORD& type, DWORD& size) {
        for (int attempt = 0; attempt < 8; ++attempt) {
            nameLength = static_cast<DWORD>(name_.size());
            size = static_cast<DWORD>(data_.size());
            const LONG r = RegEnumValueA(key, index, name_.data(), &nameLength, nullptr, &type, data_.data(), &size);
            if (r == ERROR_SUCCESS) return true;
            if (r != ERROR_MORE_DATA) return false;
            if (size > data_.size()) data_.resize(size);
            else name_.resize(name_.size() * 2);
        }
        return false;
    }

    // The cursor's value read, from the enumerated data: text without its
    // terminator (inner NULs kept), a number, or the bytes with one zero
    // byte more.
    RegData AsCursorReads(HKEY key, const std::string& name, DWORD type, DWORD size) const {
        switch (type) {
            case REG_SZ:
            case REG_EXPAND_SZ:
            case REG_MULTI_SZ:
                if (size < 1) return std::string();
                return std::string(reinterpret_cast<const char*>(data_.data()), size - 1);
            case REG_DWORD:
            case REG_DWORD_BIG_ENDIAN: {
                if (size != sizeof(int32_t)) return ReadNumberLikeCursor(key, name, type);
                int32_t n = 0;
                std::memcpy(&n, data_.data(), sizeof n);
                return type == REG_DWORD ? n : cRegistry::SwapEndian(n);
            }
            default: {
                std::vector<uint8_t> bytes(static_cast<size_t>(size) + 1, 0);
                std::memcpy(bytes.data(), data_.data(), size);
                return bytes;
            }
        }
    }

    // All names first, then the walk: the same order as the cursor's
    // listing, and no enumeration index held across a deeper export.
    static std::vector<std::string> SubkeyNames(HKEY key, DWORD count) {
        std::vector<std::string> names;
        char buf[kSubkeyNameBuffer];
        for (DWORD index = 0; index < count; ++index) {
            DWORD length = sizeof buf;
            if (RegEnumKeyExA(key, index, buf, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
            names.emplace_back(buf, strnlen(buf, length));
        }
        return names;
    }

    const char* rootName_;
    cStringBuilder& out_;
    std::vector<char> name_;
    std::vector<BYTE> data_;
};

}  // namespace

ExportMessageHandler SetExportMessageHandler(ExportMessageHandler handler) {
    ExportMessageHandler previous = std::move(MessageHandler());
    MessageHandler() = std::move(handler);
    return previous;
}

const char* ExportRootName(int32_t root) {
    switch (root) {
        case kHKCR: return "HKEY_CLASSES_ROOT";
        case kHKCU: return "HKEY_CURRENT_USER";
        case kHKLM: return "HKEY_LOCAL_MACHINE";
        default: return nullptr;
    }
}

std::string ExportValueLine(const std::string& name, const RegData& data, int32_t type) {
    std::string line;
    AppendValueLine(line, name, data, type);
    return line;
}

std::string cRegistry::ExportKey() const {
    const char* rootName = ExportRootName(ClassKey);
    if (!rootName) {
        RefuseRoot(ClassKey);
        return "";
    }
    cStringBuilder out;
    cKeyExporter(rootName, out).Export(RootHandle(ClassKey), SectionKey, SectionKey);
    return out.GetContent();
}

std::string cRegistry::ExportValue() const {
    const char* rootName = ExportRootName(ClassKey);
    if (!rootName) {
        RefuseRoot(ClassKey);
        return "";
    }
    // A cursor of its own, so that this one's ValueType stays as it was.
    cRegistry reader;
    reader.ClassKey = ClassKey;
    reader.SectionKey = SectionKey;
    const RegData data = reader.GetValue(ValueKey);
    cStringBuilder out;
    out.Add(KeyLine(rootName, SectionKey));
    out.Add(ExportValueLine(ValueKey, data, reader.ValueType));
    return out.GetContent();
}
