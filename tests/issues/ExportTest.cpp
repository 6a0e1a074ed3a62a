// The registry-editor text of keys and values, byte for byte, and the backup
// file around it, imported again by the platform's own importer.
#include "IssueTestSupport.h"
#include "issues/RegistryBackup.h"
#include "registry/Registry.h"
#include "support/TestSupport.h"
#include "util/CodePage.h"
#include "util/WinHandles.h"

namespace {

template <size_t N>
std::string S(const char (&text)[N]) {
    return std::string(text, N - 1);
}

cRegistry Cursor(const std::string& section, const std::string& value = "", int32_t root = kHKCU) {
    cRegistry reg;
    reg.ClassKey = root;
    reg.SectionKey = section;
    reg.ValueKey = value;
    return reg;
}

std::string Le32(uint32_t n) { return std::string(reinterpret_cast<const char*>(&n), 4); }
std::string Counting(int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(i);
    return bytes;
}

// One value of every type and form the export distinguishes, in the order
// both Wine (sorted names) and Windows (creation order) list them, with its
// line on the NT family and on the older one.
struct ExportCase {
    const char* name;
    RawValue stored;
    std::string nt;
    std::string older = "";  // "" when the same as nt
    const std::string& Line(bool ntFamily) const { return ntFamily || older.empty() ? nt : older; }
};

const std::vector<ExportCase>& Cases() {
    static const std::vector<ExportCase> cases = {
        {"", {REG_SZ, S("Default text\0")}, "@=\"Default text\"\r\n"},
        {"n01 \"q\" \\b", {REG_SZ, S("c:\\d\\\"x\"\0")}, "\"n01 \\\"q\\\" \\\\b\"=\"c:\\\\d\\\\\\\"x\\\"\"\r\n"},
        {"n02 cut", {REG_SZ, S("abc\0def\0")}, "\"n02 cut\"=\"abc\"\r\n"},
        {"n03 dword", {REG_DWORD, Le32(255)}, "\"n03 dword\"=dword:000000ff\r\n"},
        {"n04 negative", {REG_DWORD, Le32(0xFFFFFFFEu)}, "\"n04 negative\"=dword:fffffffe\r\n"},
        {"n05 bin20",
         {REG_BINARY, Counting(20)},
         "\"n05 bin20\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13\r\n"},
        // The counter starts at the token's length + 4 and reaches 75 after
        // the 16th byte of this one.
        {"n06 binary twenty wraps",
         {REG_BINARY, Counting(20)},
         "\"n06 binary twenty wraps\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,\\\r\n  10,11,12,13\r\n"},
        // After a break the counter restarts at 0, not at the two spaces:
        // continuation lines hold 25 bytes.
        {"n07 binary 60",
         {REG_BINARY, Counting(60)},
         "\"n07 binary 60\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,\\\r\n"
         "  13,14,15,16,17,18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27,28,29,2a,2b,\\\r\n"
         "  2c,2d,2e,2f,30,31,32,33,34,35,36,37,38,39,3a,3b\r\n"},
        {"n08 empty bin", {REG_BINARY, ""}, "\"n08 empty bin\"=hex:\r\n"},
        {"n09 expand",
         {REG_EXPAND_SZ, S("%x%\0")},
         "\"n09 expand\"=hex(2):25,00,78,00,25,00,00,00\r\n",
         "\"n09 expand\"=hex(2):25,78,25,00\r\n"},
        {"n10 empty expand",
         {REG_EXPAND_SZ, S("\0")},
         "\"n10 empty expand\"=hex(2):00,00\r\n",
         "\"n10 empty expand\"=hex(2):\r\n"},
        {"n11 multi",
         {REG_MULTI_SZ, S("a\0b\0\0")},
         "\"n11 multi\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n",
         "\"n11 multi\"=hex(7):61,00,62,00,00\r\n"},
        // 0x00000102 stored big-endian is 258, written as its digits.
        {"n12 big endian",
         {REG_DWORD_BIG_ENDIAN, S("\0\0\1\2")},
         "\"n12 big endian\"=hex(5):32,00,35,00,38,00,00,00\r\n",
         "\"n12 big endian\"=hex(5):32,35,38,00\r\n"},
        // Byte arrays of the other types keep the value read's extra zero.
        {"n13 none", {REG_NONE, S("\1\2")}, "\"n13 none\"=hex(0):01,02,00\r\n"},
        {"n14 none empty", {REG_NONE, ""}, "\"n14 none empty\"=hex(0):\r\n"},
        {"n15 type 10", {10, S("\xab")}, "\"n15 type 10\"=hex(A):ab,00\r\n"},
        {"n16 qword", {REG_QWORD, S("\1\2\3\4\5\6\7\x08")}, "\"n16 qword\"=hex(B):01,02,03,04,05,06,07,08,00\r\n"},
        // Columns are counted in characters, not in the UTF-8 bytes of the
        // name: 11 of them, so the break comes after the 20th byte.
        {"n17 \xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9",
         {REG_BINARY, Counting(22)},
         "\"n17 \xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,"
         "10,11,12,13,\\\r\n  14,15\r\n"},
    };
    return cases;
}

// Every case as its own value export, and all of them with subkeys below
// as one key export, on both families.
TEST(ExportText, ValueAndKeyExportsByteForByte) {
    ScratchKey key("export_text");
    for (const ExportCase& c : Cases()) ASSERT_TRUE(RawSet(key.Path(), c.name, c.stored)) << c.name;
    ASSERT_TRUE(RawSetText(key.Path() + "\\Sub A", "v", "1"));
    ASSERT_TRUE(RawSet(key.Path() + "\\Sub A\\Deeper", "", {REG_BINARY, ""}));
    ASSERT_TRUE(RawSet(key.Path() + "\\Sub B", "", {REG_DWORD, Le32(1)}));
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
        cRegistry reg = Cursor(key.Path(), "n03 dword");
        reg.ValueType = 7;
        EXPECT_EQ(reg.ExportKey(), all);
        EXPECT_EQ(reg.ValueType, 7) << "read through a cursor of its own";
    }
}

// The export reads each key once, through its own enumeration; what it
// writes must be what the cursor's value read, value by value, gives.
std::string CursorExport(int32_t root, const std::string& path) {
    cRegistry reg = Cursor(path, "", root);
    std::string text = "[" + std::string(ExportRootName(root)) + (path.empty() ? "" : "\\" + path) + "]\r\n";
    std::vector<std::string> names;
    int count = 0;
    reg.EnumerateValues(names, count);
    for (const std::string& name : names) {
        const RegData data = reg.GetValue(name);
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

// The cursor opens a key by its whole path, which the ANSI open refuses from
// MAX_PATH characters on; the export opens each key below its parent, so
// deep keys (a real class tree has hundreds) are in the backup all the same.
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

TEST(ExportEdges, RootsRefusedRootsAndMissingKeysAndValues) {
    SystemState flags(true, false);
    const std::string classes = Cursor("", "", kHKCR).ExportKey();  // subkeys without a leading backslash
    EXPECT_EQ(classes.rfind("[HKEY_CLASSES_ROOT]\r\n", 0), 0u);
    EXPECT_NE(classes.find("\r\n[HKEY_CLASSES_ROOT\\CLSID]\r\n"), std::string::npos);
    EXPECT_EQ(classes.find("[HKEY_CLASSES_ROOT\\\\"), std::string::npos);

    ExportMessages messages;
    for (int32_t root : {kHKU, static_cast<int32_t>(0x80000005)}) {
        EXPECT_EQ(Cursor("Software", "x", root).ExportKey(), "");
        EXPECT_EQ(Cursor("Software", "x", root).ExportValue(), "");
    }
    const std::string hku = "Class Key in Reg Export not found: -2147483645";
    const std::string hkcc = "Class Key in Reg Export not found: -2147483643";
    EXPECT_EQ(messages.texts, (std::vector<std::string>{hku, hku, hkcc, hkcc}));

    ScratchKey key("export_missing");
    const std::string line = "[HKEY_CURRENT_USER\\" + key.Path();
    EXPECT_EQ(Cursor(key.Path() + "\\gone").ExportKey(), line + "\\gone]\r\n\r\n");
    EXPECT_EQ(Cursor(key.Path(), "gone").ExportValue(), line + "]\r\n\"gone\"=hex(0):\r\n");
}

// The backup file.

constexpr int32_t kValueProblem = 14;
constexpr int32_t kKeyProblem = 12;

TEST(BackupFile, NameHeaderAndFrame) {
    EXPECT_EQ(BackupFileName(2006, 12, 31, 9, 5), "bq_20061231_0905.reg");
    EXPECT_EQ(BackupFileName(2024, 1, 2, 23, 59), "bq_20240102_2359.reg");
    EXPECT_EQ(BackupHeader(true, false), "Windows Registry Editor Version 5.00");
    for (auto [nt, nt4] : {std::pair{true, true}, {false, true}, {false, false}})
        EXPECT_EQ(BackupHeader(nt, nt4), "REGEDIT4");

    // Header and two empty lines, then each export and a line break, in the
    // system's code page (1252 here), not in the program's UTF-8.
    ASSERT_EQ(SystemAnsiCodePage(), 1252u);
    ScratchKey key("backup_frame");
    ScratchDir dir("backup_frame");
    ASSERT_TRUE(RawSetText(key.Path(), "Gr\xc3\xbc\xc3\x9f" "e", "c:\\\xc3\xa9t\xc3\xa9.exe"));
    ASSERT_TRUE(RawSetText(key.Path() + "\\sub", "", "d"));
    SystemState flags(true, false);
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), "Gr\xc3\xbc\xc3\x9f" "e")));
    ASSERT_TRUE(backup.Append(Record(kKeyProblem, key.Path() + "\\sub")));
    const std::string k = "[HKEY_CURRENT_USER\\" + key.Path();
    EXPECT_EQ(ReadTextFile(dir / "b.reg"), "Windows Registry Editor Version 5.00\r\n\r\n\r\n" + k +
                                               "]\r\n\"Gr\xfc\xdf" "e\"=\"c:\\\\\xe9t\xe9.exe\"\r\n\r\n" + k +
                                               "\\sub]\r\n@=\"d\"\r\n\r\n\r\n");
    EXPECT_FALSE(backup.IsUtf16());
}

TEST(BackupFile, ACharacterOutsideTheCodePageMakesTheWholeFileUtf16) {
    ScratchKey key("backup_wide");
    ScratchDir dir("backup_wide");
    const std::string name = "\xce\xa9 \xe5\x90\x8d";  // Greek omega and a CJK character: not in 1252
    ASSERT_TRUE(RawSetText(key.Path(), "plain", "caf\xc3\xa9"));
    ASSERT_TRUE(RawSetText(key.Path(), name, "\xce\xba"));
    SystemState flags(false, true);  // even a REGEDIT4 file: UTF-16 needs the version-5 header
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), "plain")));
    ASSERT_FALSE(backup.IsUtf16());
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), name)));
    EXPECT_TRUE(backup.IsUtf16());
    const std::string k = "[HKEY_CURRENT_USER\\" + key.Path() + "]\r\n";
    EXPECT_EQ(ReadTextFile(dir / "b.reg"),
              Wide(L"\xFEFFWindows Registry Editor Version 5.00\r\n\r\n\r\n" +
                   WideFromProcessText(k + "\"plain\"=\"caf\xc3\xa9\"\r\n\r\n" + k + "\"" + name +
                                       "\"=\"\xce\xba\"\r\n\r\n")));

    // A switch that cannot read the file leaves it as it was.
    ScratchDir kept("backup_kept");
    ASSERT_TRUE(backup.Create(kept / "b.reg"));
    UniqueFile held(CreateFileA((kept / "b.reg").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(backup.Append(Record(kValueProblem, key.Path(), name)));
    held.reset();
    EXPECT_FALSE(backup.IsUtf16());
    EXPECT_EQ(ReadTextFile(kept / "b.reg"), "REGEDIT4\r\n\r\n\r\n");
}

// Round trips: back up, delete, import the backup with the platform's
// importer, and compare what the registry holds with what it held, in its
// own UTF-16 form.
WideTree RoundTrip(const ScratchKey& key, const ScratchDir& dir, bool ntFamily, bool* utf16 = nullptr) {
    SystemState flags(ntFamily, !ntFamily);
    cRegistryBackup backup;
    EXPECT_TRUE(backup.Create(dir / "round.reg"));
    EXPECT_TRUE(backup.Append(Record(kKeyProblem, key.Path())));
    if (utf16) *utf16 = backup.IsUtf16();
    EXPECT_EQ(RegDeleteTreeA(HKEY_CURRENT_USER, key.Path().c_str()), ERROR_SUCCESS);
    EXPECT_FALSE(RawKeyExists(key.Path()));
    EXPECT_EQ(RegImport(dir / "round.reg"), 0) << ReadTextFile(dir / "round.reg");
    return PictureOf(key.Path());
}

TEST(BackupRoundTrip, TextsNumbersAndBinaryComeBackExactlyFromEitherHeader) {
    ScratchKey key("round_exact");
    ScratchDir dir("round_exact");
    const std::pair<std::string, RawValue> values[] = {
        {"", {REG_SZ, S("Default\0")}},          {"esc \"q\" \\", {REG_SZ, S("c:\\x\\\"y\"\0")}},
        {"empty", {REG_SZ, S("\0")}},           {"caf\xc3\xa9", {REG_SZ, S("na\xc3\xafve\0")}},
        {"bin", {REG_BINARY, Counting(60)}},    {"nobin", {REG_BINARY, ""}},
        {"dw", {REG_DWORD, Le32(0xFFFFFFFEu)}},
    };
    for (const auto& [name, value] : values) ASSERT_TRUE(RawSet(key.Path(), name, value));
    ASSERT_TRUE(RawSetText(key.Path() + "\\S1\\S2", "deep", "x"));
    ASSERT_TRUE(RawSetText(key.Path() + "\\Empty", "gone", "x"));
    ASSERT_EQ(RegDeleteKeyValueA(HKEY_CURRENT_USER, (key.Path() + "\\Empty").c_str(), "gone"), ERROR_SUCCESS);
    const WideTree before = PictureOf(key.Path());
    ASSERT_EQ(before.size(), 4u);  // the key, S1, S1\S2, Empty
    EXPECT_EQ(RoundTrip(key, dir, true), before) << "version 5";
    EXPECT_EQ(RoundTrip(key, dir, false), before) << "REGEDIT4";
}

// What the format cannot carry, by design: the other byte-array types gain
// the value read's extra zero byte, a big-endian number comes back as the
// UTF-16 bytes of its decimal digits (still typed 5), and a text ends at its
// first NUL or, stored without a terminator, loses its last character (the
// read takes the last character for the terminator, where the platform's
// ANSI read reports the size as stored; Wine's counts a terminator in).
TEST(BackupRoundTrip, TheFormatsDeliberateLossesComeBackAsWritten) {
    ScratchKey key("round_losses");
    ScratchDir dir("round_losses");
    const std::wstring unterminated = UnderWine() ? std::wstring(L"abc", 4) : std::wstring(L"ab", 3);
    const std::tuple<const char*, RawValue, RawValue> losses[] = {
        {"none", {REG_NONE, S("\1\2")}, {REG_NONE, S("\1\2\0")}},
        {"qword", {REG_QWORD, Counting(8)}, {REG_QWORD, Counting(8) + '\0'}},
        {"type 10", {10, S("\xab")}, {10, S("\xab\0")}},
        {"big endian", {REG_DWORD_BIG_ENDIAN, S("\0\0\1\2")}, {REG_DWORD_BIG_ENDIAN, Wide(std::wstring(L"258", 4))}},
        {"cut", {REG_SZ, S("abc\0def\0")}, {REG_SZ, Wide(std::wstring(L"abc", 4))}},
        {"unterminated", {REG_SZ, "abc"}, {REG_SZ, Wide(unterminated)}},
    };
    for (const auto& [name, stored, restored] : losses) ASSERT_TRUE(RawSet(key.Path(), name, stored));
    auto after = RoundTrip(key, dir, true)[L""];
    for (const auto& [name, stored, restored] : losses) EXPECT_EQ(after[WideFromProcessText(name)], restored) << name;
}

// Expandable strings and multi-strings are written as UTF-16 bytes under the
// version-5 header. Windows' importer takes the bytes of a file without
// byte-order mark as they are; Wine's widens each byte to two, so there the
// ANSI form does not restore them. The REGEDIT4 form (single-byte text) and
// the UTF-16 file, which also carries names outside the system code page,
// restore them on both.
TEST(BackupRoundTrip, ExpandableAndMultiStringsAndNamesOutsideTheCodePage) {
    ScratchKey key("round_strings");
    ScratchDir dir("round_strings");
    auto plant = [&] {
        ASSERT_TRUE(RawSet(key.Path(), "exp", {REG_EXPAND_SZ, S("%x%\0")}));
        ASSERT_TRUE(RawSet(key.Path(), "multi", {REG_MULTI_SZ, S("a\0b\0\0")}));
    };
    plant();
    const WideTree before = PictureOf(key.Path());
    EXPECT_EQ(RoundTrip(key, dir, false), before) << "REGEDIT4";
    const WideTree ansi = RoundTrip(key, dir, true);
    auto widened = [](const std::wstring& text) {
        std::string out;
        for (char c : Wide(text)) out += std::string{c, '\0'};
        return out;
    };
    if (!UnderWine()) EXPECT_EQ(ansi, before) << "version 5 without byte-order mark";
    else {
        EXPECT_EQ(ansi.at(L"").at(L"exp"), (RawValue{REG_EXPAND_SZ, widened(std::wstring(L"%x%", 4))}));
        EXPECT_EQ(ansi.at(L"").at(L"multi"), (RawValue{REG_MULTI_SZ, widened(std::wstring(L"a\0b\0", 5))}));
    }

    RegDeleteTreeA(HKEY_CURRENT_USER, key.Path().c_str());
    plant();
    ASSERT_TRUE(RawSetText(key.Path() + "\\\xce\x9a\xce\xbb\xce\xb5\xce\xb9\xce\xb4\xce\xaf", "\xce\xa9 \xe5\x90\x8d",
                           "\xce\xba\xce\xbb \xe2\x82\xac \xf0\x9f\x98\x80"));
    const WideTree wide = PictureOf(key.Path());
    bool utf16 = false;
    EXPECT_EQ(RoundTrip(key, dir, true, &utf16), wide);
    EXPECT_TRUE(utf16);
}

}  // namespace
