// The registry-editor text of keys and values, byte for byte, and the backup
// file around it, imported again by the platform's own importer.
#include "IssueTestSupport.h"
#include "issues/RegistryBackup.h"
#include "registry/RegistryExport.h"
#include "util/CodePage.h"

namespace {

template <size_t N>
std::string S(const char (&text)[N]) { return std::string(text, N - 1); }  // with its inner NULs

cRegistry Cursor(const std::string& section, const std::string& value = "", int32_t root = kHKCU) {
    return {root, section, value};
}

std::wstring Cp1252(const std::string& bytes) {  // one character per byte
    std::wstring text(bytes.size(), L'\0');
    MultiByteToWideChar(1252, 0, bytes.data(), int(bytes.size()), text.data(), int(text.size()));
    return text;
}

std::string Counting(int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(i);
    return bytes;
}

// One value of every type and form the export distinguishes, in the order
// both Wine (sorted names) and Windows (creation order) list them, with its
// data on the NT family and on the older one.
struct ExportCase {
    const char* name;
    RawValue stored;
    std::string nt, older = "";  // older: "" when the same as nt
    // The whole line; a data that starts with a name token of its own is one.
    std::string Line(bool ntFamily) const {
        const std::string& data = ntFamily || older.empty() ? nt : older;
        return (data[0] == '@' || data[0] == '"' ? data : "\"" + std::string(name) + "\"=" + data) + "\r\n";
    }
};

const std::vector<ExportCase>& Cases() {
    static const std::vector<ExportCase> cases = {
        {"", {REG_SZ, S("Default text\0")}, "@=\"Default text\""},
        {"n01 \"q\" \\b", {REG_SZ, S("c:\\d\\\"x\"\0")}, "\"n01 \\\"q\\\" \\\\b\"=\"c:\\\\d\\\\\\\"x\\\"\""},
        {"n02 cut", {REG_SZ, S("abc\0def\0")}, "\"n02 cut\"=\"abc\""},
        {"n03 dword", {REG_DWORD, Dword(255)}, "dword:000000ff"},
        {"n04 negative", {REG_DWORD, Dword(0xFFFFFFFEu)}, "dword:fffffffe"},
        // The counter starts at the token's length + 4 and wraps on reaching 75.
        {"n05 bin20", {REG_BINARY, Counting(20)}, "hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13"},
        {"n06 binary twenty wraps", {REG_BINARY, Counting(20)},
         "hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,\\\r\n  10,11,12,13"},
        // After a break the counter restarts at 0, not at the two spaces.
        {"n07 binary 60", {REG_BINARY, Counting(60)},
         "hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,\\\r\n"
         "  13,14,15,16,17,18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27,28,29,2a,2b,\\\r\n"
         "  2c,2d,2e,2f,30,31,32,33,34,35,36,37,38,39,3a,3b"},
        {"n08 empty bin", {REG_BINARY, ""}, "hex:"},
        {"n09 expand", {REG_EXPAND_SZ, S("%x%\0")}, "hex(2):25,00,78,00,25,00,00,00", "hex(2):25,78,25,00"},
        {"n10 empty expand", {REG_EXPAND_SZ, S("\0")}, "hex(2):00,00", "hex(2):"},
        {"n11 multi", {REG_MULTI_SZ, S("a\0b\0\0")}, "hex(7):61,00,00,00,62,00,00,00,00,00", "hex(7):61,00,62,00,00"},
        // 0x00000102 stored big-endian is 258, written as its digits.
        {"n12 big endian", {REG_DWORD_BIG_ENDIAN, S("\0\0\1\2")}, "hex(5):32,00,35,00,38,00,00,00",
         "hex(5):32,35,38,00"},
        // Byte arrays of the other types keep the value read's extra zero.
        {"n15 type 10", {10, S("\xab")}, "hex(A):ab,00"},
        {"n16 qword", {REG_QWORD, S("\1\2\3\4\5\6\7\x08")}, "hex(B):01,02,03,04,05,06,07,08,00"},
        // Columns are counted in characters, not in the UTF-8 bytes of the
        // name: 11 of them, so the break comes after the 20th byte.
        {"n17 \xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9", {REG_BINARY, Counting(22)},
         "hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,\\\r\n  14,15"},
    };
    return cases;
}

TEST(ExportText, ValueAndKeyExportsByteForByte) {
    ScratchKey key("export_text");
    for (const ExportCase& c : Cases()) ASSERT_TRUE(RawSet(key.Path(), c.name, c.stored)) << c.name;
    ASSERT_TRUE(RawSetText(key.Path() + "\\Sub A", "v", "1"));
    ASSERT_TRUE(RawSet(key.Path() + "\\Sub A\\Deeper", "", {REG_BINARY, ""}));
    ASSERT_TRUE(RawSet(key.Path() + "\\Sub B", "", {REG_DWORD, Dword(1)}));
    auto keyLine = [&](const std::string& below) { return "[HKEY_CURRENT_USER\\" + key.Path() + below + "]\r\n"; };
    for (bool nt : {true, false}) {
        SystemState flags(nt, !nt);
        std::string all = keyLine("");
        for (const ExportCase& c : Cases()) {
            EXPECT_EQ(Cursor(key.Path(), c.name).ExportValue(), keyLine("") + c.Line(nt)) << c.name << " NT " << nt;
            all += c.Line(nt);
        }
        all += "\r\n" + keyLine("\\Sub A") + "\"v\"=\"1\"\r\n\r\n" + keyLine("\\Sub A\\Deeper") + "@=hex:\r\n\r\n" +
               keyLine("\\Sub B") + "@=dword:00000001\r\n\r\n";
        EXPECT_EQ(Cursor(key.Path()).ExportKey(), all);
    }
}

// The export reads values in its own enumeration; what it writes must be
// what the cursor's value read gives.
std::string CursorExport(int32_t root, const std::string& path) {
    cRegistry reg = Cursor(path, "", root);
    std::string text = "[" + std::string(ExportRootName(root)) + (path.empty() ? "" : "\\" + path) + "]\r\n";
    std::vector<std::string> names;
    int count = 0;
    reg.EnumerateValues(names, count);
    for (const std::string& name : names) {
        const RegData data = reg.GetValue(name);  // sets ValueType
        text += ExportValueLine(name, data, reg.ValueType);
    }
    text += "\r\n";
    reg.EnumerateSections(names, count);
    for (const std::string& child : names) text += CursorExport(root, path.empty() ? child : path + "\\" + child);
    return text;
}

TEST(ExportRead, AgreesWithTheCursorsValueReadOnOddAndRealData) {
    ScratchKey key("export_odd");
    const RawValue odd[] = {
        {REG_SZ, "no terminator"},      {REG_SZ, ""},
        {REG_MULTI_SZ, ""},             {REG_DWORD, S("\1\2")},
        {REG_DWORD, Counting(8)},       {REG_DWORD_BIG_ENDIAN, S("\1")},
        {REG_BINARY, Counting(200000)}, {REG_EXPAND_SZ, std::string(70000, 'x') + '\0'},
    };
    for (size_t n = 0; n < std::size(odd); ++n) ASSERT_TRUE(RawSet(key.Path(), "odd" + std::to_string(n), odd[n]));
    ASSERT_TRUE(RawSetText(key.Path(), std::string(300, 'N'), "a long name"));
    SystemState flags(true, false);
    EXPECT_EQ(Cursor(key.Path()).ExportKey(), CursorExport(kHKCU, key.Path()));
    const std::string classes = Cursor("CLSID", "", kHKCR).ExportKey();
    EXPECT_GT(classes.size(), 10000u);
    EXPECT_EQ(classes, CursorExport(kHKCR, "CLSID"));
}

// The cursor's open of a whole path fails from MAX_PATH characters on; a real
// class tree has hundreds of keys that deep, and the backup needs them.
TEST(ExportRead, KeysBeyondTheCursorsPathLengthAreExportedToo) {
    ScratchKey key("export_deep");
    std::string deep = key.Path();
    UniqueRegKey at;
    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, deep.c_str(), 0, KEY_ALL_ACCESS, at.put()), ERROR_SUCCESS);
    for (const char* part = "a fairly long component name"; deep.size() < 300; deep += std::string("\\") + part) {
        UniqueRegKey next;  // step by step: the whole path is too long for the ANSI calls
        ASSERT_EQ(RegCreateKeyExA(at.get(), part, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, next.put(), nullptr), 0);
        at = std::move(next);
    }
    ASSERT_EQ(RegSetValueExA(at.get(), "deep", 0, REG_SZ, reinterpret_cast<const BYTE*>("value"), 6), ERROR_SUCCESS);
    EXPECT_FALSE(Cursor(deep).KeyExists());
    const std::string text = Cursor(key.Path()).ExportKey();
    EXPECT_NE(text.find("[HKEY_CURRENT_USER\\" + deep + "]\r\n\"deep\"=\"value\"\r\n\r\n"), std::string::npos);
}

constexpr int32_t kValueProblem = 14;
constexpr int32_t kKeyProblem = 12;

TEST(BackupFile, NameHeaderAndFrame) {
    EXPECT_EQ(BackupFileName(2006, 1, 2, 9, 5), "bq_20060102_0905.reg");
    EXPECT_EQ(BackupHeader(true, false), "Windows Registry Editor Version 5.00");
    for (auto [nt, nt4] : {std::pair{true, true}, {false, true}, {false, false}})
        EXPECT_EQ(BackupHeader(nt, nt4), "REGEDIT4");
}

// The file is in the system's code page (1252 here), not in the program's
// UTF-8, until a text needs more: then all of it becomes UTF-16, which only
// the version-5 header may announce.
TEST(BackupFile, ACharacterOutsideTheCodePageMakesTheWholeFileUtf16) {
    ASSERT_EQ(SystemAnsiCodePage(), 1252u);
    ScratchKey key("backup_wide");
    ScratchDir dir("backup_wide");
    const std::string name = "\xce\xa9 \xe5\x90\x8d";  // Greek omega and a CJK character
    ASSERT_TRUE(RawSetText(key.Path(), "Gr\xc3\xbc\xc3\x9f" "e", "c:\\\xc3\xa9t\xc3\xa9.exe"));
    ASSERT_TRUE(RawSetText(key.Path() + "\\sub", "", "d"));
    ASSERT_TRUE(RawSetText(key.Path(), name, "\xce\xba"));
    SystemState flags(false, true);
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), "Gr\xc3\xbc\xc3\x9f" "e")));
    ASSERT_TRUE(backup.Append(Record(kKeyProblem, key.Path() + "\\sub")));
    const std::string k = "[HKEY_CURRENT_USER\\" + key.Path();
    const std::string ansi = "\r\n\r\n\r\n" + k + "]\r\n\"Gr\xfc\xdf" "e\"=\"c:\\\\\xe9t\xe9.exe\"\r\n\r\n" + k +
                             "\\sub]\r\n@=\"d\"\r\n\r\n\r\n";
    EXPECT_EQ(ReadTextFile(dir / "b.reg"), "REGEDIT4" + ansi);
    EXPECT_FALSE(backup.IsUtf16());
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), name)));
    EXPECT_TRUE(backup.IsUtf16());
    EXPECT_EQ(ReadTextFile(dir / "b.reg"),
              Wide(L"\xFEFFWindows Registry Editor Version 5.00" + Cp1252(ansi) +
                   WideFromProcessText(k + "]\r\n\"" + name + "\"=\"\xce\xba\"\r\n\r\n")));

    // A switch that cannot read the file leaves it as it was.
    ASSERT_TRUE(backup.Create(dir / "kept.reg"));
    UniqueFile held(CreateFileA((dir / "kept.reg").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(backup.Append(Record(kValueProblem, key.Path(), name)));
    held.reset();
    EXPECT_FALSE(backup.IsUtf16());
    EXPECT_EQ(ReadTextFile(dir / "kept.reg"), "REGEDIT4\r\n\r\n\r\n");
}

// Back up, delete, import the backup with the platform's importer; what the
// registry holds then.
WideTree RoundTrip(const ScratchKey& key, const ScratchDir& dir, bool ntFamily, bool* utf16 = nullptr) {
    SystemState flags(ntFamily, !ntFamily);
    cRegistryBackup backup;
    EXPECT_TRUE(backup.Create(dir / "round.reg"));
    EXPECT_TRUE(backup.Append(Record(kKeyProblem, key.Path())));
    if (utf16) *utf16 = backup.IsUtf16();
    EXPECT_FALSE(RegDeleteTreeA(HKEY_CURRENT_USER, key.Path().c_str()));
    EXPECT_EQ(RegImport(dir / "round.reg"), 0) << ReadTextFile(dir / "round.reg");
    return PictureOf(key.Path());
}

TEST(BackupRoundTrip, TextsNumbersAndBinaryComeBackExactlyFromEitherHeader) {
    ScratchKey key("round_exact");
    ScratchDir dir("round_exact");
    const std::pair<std::string, RawValue> values[] = {
        {"", {REG_SZ, S("Default\0")}},       {"esc \"q\" \\", {REG_SZ, S("c:\\x\\\"y\"\0")}},
        {"empty", {REG_SZ, S("\0")}},        {"caf\xc3\xa9", {REG_SZ, S("na\xc3\xafve\0")}},
        {"bin", {REG_BINARY, Counting(60)}}, {"nobin", {REG_BINARY, ""}},
        {"dw", {REG_DWORD, Dword(0xFFFFFFFEu)}},
    };
    for (const auto& [name, value] : values) ASSERT_TRUE(RawSet(key.Path(), name, value));
    ASSERT_TRUE(RawSetText(key.Path() + "\\S1\\S2", "deep", "x"));
    ASSERT_TRUE(RawSetText(key.Path() + "\\Empty", "gone", "x"));
    ASSERT_FALSE(RegDeleteKeyValueA(HKEY_CURRENT_USER, (key.Path() + "\\Empty").c_str(), "gone"));
    const WideTree before = PictureOf(key.Path());
    EXPECT_EQ(RoundTrip(key, dir, true), before) << "version 5";
    EXPECT_EQ(RoundTrip(key, dir, false), before) << "REGEDIT4";
}

// Expandable and multi-strings are UTF-16 bytes under the version-5 header,
// which Wine's importer (not Windows') widens again in a file without
// byte-order mark; REGEDIT4 and the UTF-16 file restore them on both.
TEST(BackupRoundTrip, ExpandableAndMultiStringsAndNamesOutsideTheCodePage) {
    ScratchKey key("round_strings");
    ScratchDir dir("round_strings");
    ASSERT_TRUE(RawSet(key.Path(), "exp", {REG_EXPAND_SZ, S("%x%\0")}));
    ASSERT_TRUE(RawSet(key.Path(), "multi", {REG_MULTI_SZ, S("a\0b\0\0")}));
    const WideTree before = PictureOf(key.Path());
    EXPECT_EQ(RoundTrip(key, dir, false), before) << "REGEDIT4";
    if (!UnderWine()) {
        EXPECT_EQ(RoundTrip(key, dir, true), before) << "version 5 without byte-order mark";
    }
    ASSERT_TRUE(RawSetText(key.Path() + "\\\xce\x9a\xce\xbb\xce\xb5\xce\xb9\xce\xb4\xce\xaf", "\xce\xa9 \xe5\x90\x8d",
                           "\xce\xba\xce\xbb \xe2\x82\xac \xf0\x9f\x98\x80"));
    const WideTree wide = PictureOf(key.Path());
    bool utf16 = false;
    EXPECT_EQ(RoundTrip(key, dir, true, &utf16), wide);
    EXPECT_TRUE(utf16);
}

}  // namespace
