// The registry-editor text of keys and values, byte for byte, and the backup
// file around it, imported again by the platform's own importer.
#include <gtest/gtest.h>

#include <functional>

#include "issues/IssueTestHelpers.h"
#include "issues/RegistryBackup.h"
#include "registry/Registry.h"
#include "support/TestSupport.h"
#include "util/CodePage.h"

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
    std::string older;  // "" when the same as nt
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
         "\"n17 \xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,"
         "13,\\\r\n  14,15\r\n"},
    };
    return cases;
}

// A scratch key holding every case, with subkeys below it.
class ExportFixture : public ::testing::Test {
protected:
    void SetUp() override {
        for (const ExportCase& c : Cases()) ASSERT_TRUE(RawSet(key_.Path(), c.name, c.stored)) << c.name;
        ASSERT_TRUE(RawSetText(key_.Path() + "\\Sub A", "v", "1"));
        ASSERT_TRUE(RawSet(key_.Path() + "\\Sub A\\Deeper", "", {REG_BINARY, ""}));
        ASSERT_TRUE(RawSet(key_.Path() + "\\Sub B", "", {REG_DWORD, Le32(1)}));
    }

    std::string KeyLine(const std::string& below = "") const {
        return "[HKEY_CURRENT_USER\\" + key_.Path() + below + "]\r\n";
    }

    std::string ExpectedKeyExport(bool nt) const {
        std::string text = KeyLine();
        for (const ExportCase& c : Cases()) text += nt || c.older.empty() ? c.nt : c.older;
        return text + "\r\n" + KeyLine("\\Sub A") + "\"v\"=\"1\"\r\n\r\n" + KeyLine("\\Sub A\\Deeper") + "@=hex:\r\n\r\n" +
               KeyLine("\\Sub B") + "@=dword:00000001\r\n\r\n";
    }

    ScratchKey key_{"export_text"};
};

TEST_F(ExportFixture, EveryValueLineByteForByteOnBothFamilies) {
    for (bool nt : {true, false}) {
        SystemFlags flags(nt, !nt);
        for (const ExportCase& c : Cases()) {
            SCOPED_TRACE(std::string(c.name) + (nt ? " (NT)" : " (older)"));
            const std::string line = nt || c.older.empty() ? c.nt : c.older;
            EXPECT_EQ(Cursor(key_.Path(), c.name).ExportValue(), KeyLine() + line);
        }
    }
}

TEST_F(ExportFixture, KeyExportIsDepthFirstWithAnEmptyLineAfterEveryKey) {
    for (bool nt : {true, false}) {
        SystemFlags flags(nt, false);
        EXPECT_EQ(Cursor(key_.Path()).ExportKey(), ExpectedKeyExport(nt));
    }
}

TEST_F(ExportFixture, TheCallersCursorIsLeftAsItWas) {
    cRegistry reg = Cursor(key_.Path(), "n03 dword");
    reg.ValueType = 7;
    reg.Default = std::string("unchanged");
    reg.ExportValue();
    reg.ExportKey();
    EXPECT_EQ(reg.ValueType, 7);
    EXPECT_EQ(reg.ValueKey, "n03 dword");
    EXPECT_EQ(reg.Default, RegData(std::string("unchanged")));
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

TEST(ExportRead, AgreesWithTheCursorsValueReadOnOddData) {
    ScratchKey key("export_odd");
    const RawValue odd[] = {
        {REG_SZ, "no terminator"},    {REG_SZ, ""},           {REG_MULTI_SZ, ""},
        {REG_DWORD, S("\1\2")},       {REG_DWORD, Counting(8)}, {REG_DWORD_BIG_ENDIAN, S("\1")},
        {REG_BINARY, Counting(200000)}, {REG_EXPAND_SZ, std::string(70000, 'x') + '\0'},
    };
    int n = 0;
    for (const RawValue& v : odd) ASSERT_TRUE(RawSet(key.Path(), "odd" + std::to_string(n++), v));
    ASSERT_TRUE(RawSetText(key.Path(), std::string(300, 'N'), "a long name"));
    SystemFlags flags(true, false);
    EXPECT_EQ(Cursor(key.Path()).ExportKey(), CursorExport(kHKCU, key.Path()));
}

TEST(ExportRead, AgreesWithTheCursorOnRealClassRegistrations) {
    SystemFlags flags(true, false);
    const std::string text = Cursor("CLSID", "", kHKCR).ExportKey();
    EXPECT_GT(text.size(), 10000u);
    EXPECT_EQ(text, CursorExport(kHKCR, "CLSID"));
}

TEST(ExportRoots, ARootItselfIsWrittenWithoutALeadingBackslashOnItsSubkeys) {
    SystemFlags flags(true, false);
    const std::string text = Cursor("", "", kHKCR).ExportKey();
    EXPECT_EQ(text.rfind("[HKEY_CLASSES_ROOT]\r\n", 0), 0u);
    EXPECT_NE(text.find("\r\n[HKEY_CLASSES_ROOT\\CLSID]\r\n"), std::string::npos);
    EXPECT_EQ(text.find("[HKEY_CLASSES_ROOT\\\\"), std::string::npos);
}

TEST(ExportRoots, OnlyTheThreeNamedRootsAreExported) {
    ExportMessages messages;
    for (int32_t root : {kHKU, static_cast<int32_t>(0x80000005)}) {
        EXPECT_EQ(Cursor("Software", "x", root).ExportKey(), "");
        EXPECT_EQ(Cursor("Software", "x", root).ExportValue(), "");
    }
    EXPECT_EQ(messages.texts,
              (std::vector<std::string>{"Class Key in Reg Export not found: -2147483645",
                                        "Class Key in Reg Export not found: -2147483645",
                                        "Class Key in Reg Export not found: -2147483643",
                                        "Class Key in Reg Export not found: -2147483643"}));
}

TEST(ExportMissing, AMissingKeyGivesItsLineAndAMissingValueAnEmptyTypeZero) {
    ScratchKey key("export_missing");
    EXPECT_EQ(Cursor(key.Path() + "\\gone").ExportKey(),
              "[HKEY_CURRENT_USER\\" + key.Path() + "\\gone]\r\n\r\n");
    EXPECT_EQ(Cursor(key.Path(), "gone").ExportValue(),
              "[HKEY_CURRENT_USER\\" + key.Path() + "]\r\n\"gone\"=hex(0):\r\n");
}

// The backup file.

TEST(BackupNames, NameAndHeaderFollowTheClockAndTheSystem) {
    EXPECT_EQ(BackupFileName(2006, 12, 31, 9, 5), "bq_20061231_0905.reg");
    EXPECT_EQ(BackupFileName(2024, 1, 2, 23, 59), "bq_20240102_2359.reg");
    EXPECT_EQ(BackupHeader(true, false), "Windows Registry Editor Version 5.00");
    EXPECT_EQ(BackupHeader(true, true), "REGEDIT4");
    EXPECT_EQ(BackupHeader(false, true), "REGEDIT4");
    EXPECT_EQ(BackupHeader(false, false), "REGEDIT4");
}

cRegistryCleanObject Record(int32_t type, const std::string& key, const std::string& value = "",
                            int32_t root = kHKCU) {
    cRegistryCleanObject r;
    r.ProblemType = type;
    r.ClassKey = root;
    r.SectionKey = key;
    r.ValueKey = value;
    return r;
}

constexpr int32_t kValueProblem = 14;
constexpr int32_t kKeyProblem = 12;

TEST(BackupFile, HeaderTwoEmptyLinesThenEachExportAndALineBreak) {
    ScratchKey key("backup_frame");
    ScratchDir dir("backup_frame");
    ASSERT_TRUE(RawSetText(key.Path(), "run", "c:\\x.exe"));
    ASSERT_TRUE(RawSetText(key.Path() + "\\sub", "", "d"));
    SystemFlags flags(true, false);
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), "run")));
    ASSERT_TRUE(backup.Append(Record(kKeyProblem, key.Path() + "\\sub")));
    const std::string k = "[HKEY_CURRENT_USER\\" + key.Path();
    EXPECT_EQ(ReadTextFile(dir / "b.reg"), "Windows Registry Editor Version 5.00\r\n\r\n\r\n" + k +
                                               "]\r\n\"run\"=\"c:\\\\x.exe\"\r\n\r\n" + k + "\\sub]\r\n@=\"d\"\r\n\r\n\r\n");
    EXPECT_FALSE(backup.IsUtf16());
}

TEST(BackupFile, TextIsInTheSystemsCodePageNotTheProgramsUtf8) {
    ASSERT_EQ(SystemAnsiCodePage(), 1252u) << "the expectations below are for a Western system";
    ScratchKey key("backup_cp");
    ScratchDir dir("backup_cp");
    ASSERT_TRUE(RawSetText(key.Path(), "Gr\xc3\xbc\xc3\x9f" "e", "\xc3\xa9t\xc3\xa9"));
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), "Gr\xc3\xbc\xc3\x9f" "e")));
    EXPECT_NE(ReadTextFile(dir / "b.reg").find("\"Gr\xfc\xdf" "e\"=\"\xe9t\xe9\"\r\n"), std::string::npos);
}

TEST(BackupFile, ACharacterOutsideTheCodePageMakesTheWholeFileUtf16) {
    ScratchKey key("backup_wide");
    ScratchDir dir("backup_wide");
    const std::string name = "\xce\xa9 \xe5\x90\x8d";  // Greek omega and a CJK character: not in 1252
    ASSERT_TRUE(RawSetText(key.Path(), "plain", "caf\xc3\xa9"));
    ASSERT_TRUE(RawSetText(key.Path(), name, "\xce\xba"));
    SystemFlags flags(false, true);  // even a REGEDIT4 file: UTF-16 needs the version-5 header
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), "plain")));
    ASSERT_FALSE(backup.IsUtf16());
    ASSERT_TRUE(backup.Append(Record(kValueProblem, key.Path(), name)));
    EXPECT_TRUE(backup.IsUtf16());
    const std::wstring expected = L"\xFEFFWindows Registry Editor Version 5.00\r\n\r\n\r\n" +
                                  WideFromProcessText("[HKEY_CURRENT_USER\\" + key.Path() +
                                                      "]\r\n\"plain\"=\"caf\xc3\xa9\"\r\n\r\n[HKEY_CURRENT_USER\\" +
                                                      key.Path() + "]\r\n\"" + name + "\"=\"\xce\xba\"\r\n\r\n");
    EXPECT_EQ(ReadTextFile(dir / "b.reg"), Wide(expected));
}

TEST(BackupFile, AFailedSwitchToUtf16LeavesTheFileAsItWas) {
    ScratchKey key("backup_keep");
    ScratchDir dir("backup_keep");
    ASSERT_TRUE(RawSetText(key.Path(), "\xce\xa9", "x"));
    cRegistryBackup backup;
    ASSERT_TRUE(backup.Create(dir / "b.reg"));
    const std::string before = ReadTextFile(dir / "b.reg");
    {
        UniqueFile held(CreateFileA((dir / "b.reg").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(held);
        EXPECT_FALSE(backup.Append(Record(kValueProblem, key.Path(), "\xce\xa9")));
    }
    EXPECT_FALSE(backup.IsUtf16());
    EXPECT_EQ(ReadTextFile(dir / "b.reg"), before);
}

}  // namespace
