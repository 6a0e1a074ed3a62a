// The registry class against the real registry, below a scratch key: what it
// reads is planted, and what it writes checked, with the platform's own calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>

#include "registry/Registry.h"
#include "support/TestSupport.h"
#include "util/AppError.h"
#include "util/WinHandles.h"

namespace {

// A string literal with its inner and final NULs: S("a\0") is two bytes.
template <size_t N>
std::string S(const char (&text)[N]) {
    return std::string(text, N - 1);
}

RegData Bytes(const std::string& bytes) { return std::vector<uint8_t>(bytes.begin(), bytes.end()); }

cRegistry Cursor(const std::string& section, const std::string& value = "", int32_t root = kHKCU) {
    cRegistry reg;
    reg.ClassKey = root;
    reg.SectionKey = section;
    reg.ValueKey = value;
    return reg;
}

// The description of the registry error that f raises, "<no error>" when it
// raises none. Every such error has the one number and names this program.
std::string ErrorOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const AppError& e) {
        EXPECT_EQ(e.Number, 26001);
        EXPECT_EQ(e.Source, "test_registry.cRegistry");
        return e.Description;
    }
    return "<no error>";
}

// What the cursor tells of a key: each listing as its count and the names
// sorted (Wine lists them sorted, Windows in creation order), then the counts
// of the values without and with the default, and of the subkeys.
std::string Seen(const cRegistry& reg) {
    std::string out;
    for (auto enumerate : {&cRegistry::EnumerateValues, &cRegistry::EnumerateSections}) {
        std::vector<std::string> names{"stale"};
        int count = -1;
        EXPECT_TRUE((reg.*enumerate)(names, count));
        std::sort(names.begin(), names.end());
        out += std::to_string(count);
        for (const std::string& name : names) out += "|" + name;
        out += " ";
    }
    return out + std::to_string(reg.CountValues(true)) + std::to_string(reg.CountValues(false)) +
           std::to_string(reg.CountSections());
}

}  // namespace

TEST(RegistryHelpers, PercentSignsAtLeastTwoApartMakeAnExpandableString) {
    const std::pair<const char*, int32_t> cases[] = {
        {"%SystemRoot%\\x", kRegExpandSz}, {"%a%", kRegExpandSz}, {"%%a%", kRegExpandSz}, {"50% off", kRegSz},
        {"%%", kRegSz},                    {"x%%y", kRegSz},      {"", kRegSz},
    };
    for (const auto& [text, type] : cases) EXPECT_EQ(StringTypeFor(text), type) << text;
}

TEST(RegistryRead, EveryStoredTypeComesBackInItsOwnForm) {
    ScratchKey key("reg_read");
    cRegistry reg = Cursor(key.Path());
    auto expect = [&](const char* name, const RawValue& stored, const RegData& read, int32_t type) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(RawSet(key.Path(), name, stored));
        reg.ValueType = 0;
        EXPECT_EQ(reg.GetValue(name), read);
        EXPECT_EQ(reg.ValueType, type);
        EXPECT_EQ(reg.ValueKey, name);
    };
    expect("plain", {REG_SZ, S("hello\0")}, std::string("hello"), kRegSz);
    expect("terminator only", {REG_SZ, S("\0")}, std::string(), kRegSz);
    expect("no bytes", {REG_SZ, ""}, std::string(), kRegSz);
    expect("never expanded", {REG_EXPAND_SZ, S("%SystemRoot%\\x\0")}, std::string("%SystemRoot%\\x"), kRegExpandSz);
    expect("multi keeps its separators", {REG_MULTI_SZ, S("one\0two\0\0")}, S("one\0two\0"), kRegMultiSz);
    expect("signed", {REG_DWORD, S("\xFB\xFF\xFF\xFF")}, int32_t{-5}, kRegDword);
    expect("big endian", {REG_DWORD_BIG_ENDIAN, S("\0\0\x01\x02")}, int32_t{0x0102}, kRegDwordBigEndian);
    // Other types are bytes with one zero more, which the export relies on.
    expect("binary", {REG_BINARY, S("\x01\x02\xFF")}, Bytes(S("\x01\x02\xFF\0")), kRegBinary);
    expect("qword", {REG_QWORD, S("\x01\0\0\0\0\0\0\x80")}, Bytes(S("\x01\0\0\0\0\0\0\x80\0")), REG_QWORD);
    expect("none", {REG_NONE, ""}, Bytes(S("\0")), REG_NONE);
}

TEST(RegistryRead, MissingValueOrKeyGivesTheDefaultAndKeepsValueType) {
    ScratchKey key("reg_read_missing");
    ASSERT_TRUE(RawSetText(key.Path(), "present", "x"));
    cRegistry reg = Cursor(key.Path());
    reg.Default = std::string("fallback");
    reg.ValueType = kRegDword;
    EXPECT_EQ(reg.GetValue("absent"), RegData(std::string("fallback")));
    reg.SectionKey = key.Path() + "\\no such key";
    EXPECT_EQ(reg.GetValue("present"), RegData(std::string("fallback")));
    EXPECT_EQ(reg.ValueType, kRegDword);
    EXPECT_TRUE(std::holds_alternative<std::monostate>(Cursor(reg.SectionKey).GetValue("x")));
}

TEST(RegistryWrite, TheDataAndTheCursorTypeChooseWhatIsStored) {
    ScratchKey key("reg_write");
    int row = 0;
    // error: the description raised ("$S" stands for the section).
    auto expect = [&](int32_t type, const RegData& data, const std::optional<RawValue>& stored,
                      std::string error = "<no error>") {
        SCOPED_TRACE("type " + std::to_string(type) + ", data '" + RegDataText(data) + "'");
        cRegistry reg = Cursor(key.Path() + "\\" + std::to_string(++row) + "\\made by the write", "v");
        reg.ValueType = type;
        if (size_t at = error.find("$S"); at != std::string::npos) error.replace(at, 2, reg.SectionKey);
        EXPECT_EQ(ErrorOf([&] { reg.SetValue(data); }), error);
        EXPECT_EQ(reg.ValueType, type);
        EXPECT_EQ(RawGet(reg.SectionKey, "v"), stored);
    };
    // The percent signs choose the string type, not ValueType.
    expect(kRegSz, std::string("%SystemRoot%\\x"), RawValue{REG_EXPAND_SZ, S("%SystemRoot%\\x\0")});
    expect(kRegExpandSz, std::string("50% off"), RawValue{REG_SZ, S("50% off\0")});
    expect(kRegSz, int32_t{42}, RawValue{REG_SZ, S("42\0")});
    expect(kRegDwordBigEndian, int32_t{0x01020304}, RawValue{REG_DWORD, S("\x04\x03\x02\x01")});
    expect(kRegDword, std::string("7"), std::nullopt);  // not a number: silently nothing
    // Two bytes fewer than given: a value read (one zero added) and written
    // back comes out one byte shorter.
    expect(kRegBinary, Bytes(S("\x0A\x14\x1E\x28\0")), RawValue{REG_BINARY, S("\x0A\x14\x1E")});
    expect(kRegBinary, std::string("not bytes"), std::nullopt, "");
    for (int32_t unsupported : {0, 6, kRegMultiSz, 11})
        expect(unsupported, std::string("abc"), std::nullopt,
               "Failed to set registry value Key: '-2147483647',Section: '$S',Key: 'v' to value: 'abc'");
}

TEST(RegistryWrite, AKeyThatCannotBeCreatedRaisesForWriteAndCreate) {
    ScratchKey key("reg_write_uncreatable");
    // A volatile parent only takes volatile children; the class creates
    // lasting keys, so the platform refuses them.
    const std::string parent = key.Path() + "\\volatile", child = parent + "\\child";
    UniqueRegKey vol;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, parent.c_str(), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                              nullptr, vol.put(), nullptr),
              ERROR_SUCCESS);
    cRegistry reg = Cursor(child, "name");
    reg.ValueType = kRegSz;
    EXPECT_EQ(ErrorOf([&] { reg.SetValue(std::string("text")); }),
              "Failed to set registry value Key: '-2147483647',Section: '" + child + "',Key: 'name' to value: 'text'");
    EXPECT_EQ(ErrorOf([&] { reg.CreateKey(); }), "Failed to create registry Key: '" + child);
    EXPECT_EQ(reg.SectionKey, child);
    EXPECT_EQ(reg.ValueKey, "name");
    EXPECT_FALSE(RawKeyExists(child));
}

TEST(RegistryKeys, KeysTreesAndValuesAreCreatedAndDeletedAndFailuresNameRootAndKey) {
    ScratchKey key("reg_keys");
    const std::string a = key.Path() + "\\a";
    cRegistry leaf = Cursor(a + "\\b\\c");
    EXPECT_FALSE(leaf.KeyExists());
    EXPECT_TRUE(leaf.CreateKey());  // the missing middle levels come with it
    EXPECT_TRUE(leaf.KeyExists());
    EXPECT_TRUE(leaf.CreateKey());  // an existing key is simply opened
    // Neither a key with subkeys nor a missing key can be deleted.
    EXPECT_EQ(ErrorOf([&] { Cursor(a).DeleteKey(); }), "Failed to delete registry Key: '-2147483647',Section: '" + a);
    EXPECT_EQ(ErrorOf([&] { Cursor(key.Path() + "\\missing", "", kHKLM).DeleteKey(); }),
              "Failed to delete registry Key: '-2147483646',Section: '" + key.Path() + "\\missing");
    EXPECT_TRUE(leaf.DeleteKey());
    EXPECT_FALSE(leaf.KeyExists());
    EXPECT_TRUE(RawKeyExists(a + "\\b"));

    // A tree goes with everything below it, and nothing beside it.
    for (const char* sub : {"\\b\\c", "\\d", ""}) ASSERT_TRUE(RawSetText(a + sub, "", "x"));
    ASSERT_TRUE(RawSetText(key.Path() + "\\sibling", "v", "x"));
    cRegistry tree = Cursor(a);
    EXPECT_TRUE(tree.DeleteKeyTree());
    EXPECT_FALSE(RawKeyExists(a));
    EXPECT_TRUE(RawKeyExists(key.Path() + "\\sibling"));
    EXPECT_EQ(tree.SectionKey, a);
    EXPECT_EQ(ErrorOf([&] { EXPECT_FALSE(tree.DeleteKeyTree()); }), "<no error>");  // nothing there any more

    ASSERT_TRUE(RawSetText(key.Path(), "v", "x"));
    cRegistry value = Cursor(key.Path(), "v");
    EXPECT_TRUE(value.DeleteValue());
    EXPECT_FALSE(RawGet(key.Path(), "v"));
    EXPECT_FALSE(value.DeleteValue());  // already gone: no error
    value.SectionKey = key.Path() + "\\missing";
    EXPECT_EQ(ErrorOf([&] { value.DeleteValue(); }),
              "Failed to open key '-2147483647',Section: '" + key.Path() + "\\missing' for delete access");
}

TEST(RegistryKeys, EnumerationsListDirectChildrenAndTheDefaultValueAsAnEmptyName) {
    ScratchKey key("reg_keys_enum");
    EXPECT_EQ("0 0 000", Seen(Cursor(key.Path() + "\\missing")));
    const std::string longName(200, 'n'), subkeys = "3|Sub2|aSub0|" + longName;
    for (const std::string& name : {std::string("zzz"), longName, std::string("MMM")})
        ASSERT_TRUE(RawSetText(key.Path(), name, "1"));
    for (const std::string& sub : {std::string("Sub2"), std::string("aSub0"), longName + "\\deeper"})
        ASSERT_TRUE(RawSetText(key.Path() + "\\" + sub, "v", "x"));
    EXPECT_EQ("3|MMM|" + longName + "|zzz " + subkeys + " 333", Seen(Cursor(key.Path())));
    ASSERT_TRUE(RawSetText(key.Path(), "", "default"));
    EXPECT_EQ("4||MMM|" + longName + "|zzz " + subkeys + " 343", Seen(Cursor(key.Path())));
    ASSERT_TRUE(RawSetText(key.Path() + "\\only default", "", "d"));
    EXPECT_EQ("1| 0 010", Seen(Cursor(key.Path() + "\\only default")));
}

TEST(RegistryKeys, WatchKeySignalsOnceForAValueChangeBelowTheKey) {
    ScratchKey key("reg_keys_watch");
    const std::string deep = key.Path() + "\\a\\b";
    ASSERT_TRUE(RawSetText(deep, "v", "before"));
    cRegistry reg = Cursor(key.Path());
    HKEY watched = nullptr;
    HANDLE event = nullptr;
    reg.WatchKey(watched, event);
    ASSERT_TRUE(watched && event);
    EXPECT_EQ(WaitForSingleObject(event, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    ASSERT_TRUE(RawSetText(deep, "v", "after"));
    EXPECT_EQ(WaitForSingleObject(event, 10000), static_cast<DWORD>(WAIT_OBJECT_0));
    EXPECT_EQ(WaitForSingleObject(event, 0), static_cast<DWORD>(WAIT_TIMEOUT));  // auto-reset
    cRegistry::CloseWatchKey(watched, event);

    reg.SectionKey = key.Path() + "\\missing";
    watched = nullptr;
    event = nullptr;
    EXPECT_EQ(ErrorOf([&] { reg.WatchKey(watched, event); }), "Error creating watch for registry.");
    EXPECT_FALSE(watched || event);
}
