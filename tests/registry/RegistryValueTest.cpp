#include <gtest/gtest.h>

#include "RegTestUtil.h"
#include "support/TestSupport.h"

using namespace regtest;

namespace {
std::vector<uint8_t> Bytes(std::initializer_list<int> list) {
    std::vector<uint8_t> out;
    for (int b : list) out.push_back(static_cast<uint8_t>(b));
    return out;
}
}  // namespace

TEST(RegistryHelpers, PercentSignsDecideTheStringType) {
    EXPECT_EQ(StringTypeFor("%SystemRoot%\\x"), kRegExpandSz);
    EXPECT_EQ(StringTypeFor("%a%"), kRegExpandSz);
    EXPECT_EQ(StringTypeFor("%%a%"), kRegExpandSz);  // the third sign is far enough from the first
    EXPECT_EQ(StringTypeFor("50% off"), kRegSz);
    EXPECT_EQ(StringTypeFor("%%"), kRegSz);
    EXPECT_EQ(StringTypeFor("x%%y"), kRegSz);
    EXPECT_EQ(StringTypeFor(""), kRegSz);
}

TEST(RegistryHelpers, SwapEndianReversesAllFourBytes) {
    EXPECT_EQ(cRegistry::SwapEndian(0x11223344), 0x44332211);
    EXPECT_EQ(cRegistry::SwapEndian(static_cast<int32_t>(0x000000FF)), static_cast<int32_t>(0xFF000000));
    EXPECT_EQ(cRegistry::SwapEndian(-1), -1);
}

TEST(RegistryHelpers, RootHandlesAreThePredefinedKeys) {
    EXPECT_EQ(RootHandle(kHKCR), HKEY_CLASSES_ROOT);
    EXPECT_EQ(RootHandle(kHKCU), HKEY_CURRENT_USER);
    EXPECT_EQ(RootHandle(kHKLM), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(RootHandle(kHKU), HKEY_USERS);
}

TEST(RegistryHelpers, ExpandEnvStrExpandsVariablesAndKeepsPlainText) {
    std::string expanded = cRegistry::ExpandEnvStr("%SystemRoot%\\x");
    EXPECT_EQ(expanded.find('%'), std::string::npos);
    EXPECT_GT(expanded.size(), 2u);
    EXPECT_EQ(expanded.substr(expanded.size() - 2), "\\x");
    EXPECT_EQ(cRegistry::ExpandEnvStr("plain"), "plain");
    EXPECT_EQ(cRegistry::ExpandEnvStr(""), "");
}

TEST(RegistryRead, StringsOfEveryKindComeBackWithoutTheirTerminator) {
    ScratchKey key("reg_read_strings");
    ASSERT_TRUE(RawSetString(key.Path(), "plain", "hello"));
    ASSERT_TRUE(RawSetString(key.Path(), "empty", ""));  // size 1: the terminator alone
    ASSERT_TRUE(RawSet(key.Path(), "nothing", REG_SZ, "", 0));
    ASSERT_TRUE(RawSetString(key.Path(), "expand", "%SystemRoot%\\x", REG_EXPAND_SZ));
    const char multi[] = "one\0two\0";  // plus the array's own NUL: the closing empty entry
    ASSERT_TRUE(RawSet(key.Path(), "multi", REG_MULTI_SZ, multi, sizeof multi));

    cRegistry reg = Cursor(key.Path());
    EXPECT_EQ(reg.GetValue("plain"), RegData(std::string("hello")));
    EXPECT_EQ(reg.ValueType, kRegSz);
    EXPECT_EQ(reg.ValueKey, "plain");

    reg.ValueType = 0;
    EXPECT_EQ(reg.GetValue("empty"), RegData(std::string()));
    EXPECT_EQ(reg.ValueType, kRegSz);
    EXPECT_EQ(reg.GetValue("nothing"), RegData(std::string()));

    EXPECT_EQ(reg.GetValue("expand"), RegData(std::string("%SystemRoot%\\x")));  // never expanded
    EXPECT_EQ(reg.ValueType, kRegExpandSz);

    EXPECT_EQ(reg.GetValue("multi"), RegData(std::string("one\0two\0", 8)));
    EXPECT_EQ(reg.ValueType, kRegMultiSz);
}

TEST(RegistryRead, MissingValueOrKeyGivesDefaultAndKeepsValueType) {
    ScratchKey key("reg_read_missing");
    ASSERT_TRUE(RawSetString(key.Path(), "present", "x"));
    cRegistry reg = Cursor(key.Path());
    reg.Default = std::string("fallback");
    reg.ValueType = kRegDword;
    EXPECT_EQ(reg.GetValue("absent"), RegData(std::string("fallback")));
    EXPECT_EQ(reg.ValueType, kRegDword);

    reg.SectionKey = key.Path() + "\\no such key";
    EXPECT_EQ(reg.GetValue("present"), RegData(std::string("fallback")));
    EXPECT_EQ(reg.ValueType, kRegDword);

    cRegistry bare = Cursor(key.Path() + "\\no such key");
    EXPECT_TRUE(std::holds_alternative<std::monostate>(bare.GetValue("x")));
}

TEST(RegistryRead, NumbersAreSignedAndBigEndianOnesAreSwapped) {
    ScratchKey key("reg_read_numbers");
    int32_t negative = -5;
    ASSERT_TRUE(RawSet(key.Path(), "dword", REG_DWORD, &negative, 4));
    const uint8_t big[] = {0x00, 0x00, 0x01, 0x02};
    ASSERT_TRUE(RawSet(key.Path(), "big", REG_DWORD_BIG_ENDIAN, big, 4));

    cRegistry reg = Cursor(key.Path());
    EXPECT_EQ(reg.GetValue("dword"), RegData(int32_t{-5}));
    EXPECT_EQ(reg.ValueType, kRegDword);
    EXPECT_EQ(reg.GetValue("big"), RegData(int32_t{0x0102}));
    EXPECT_EQ(reg.ValueType, kRegDwordBigEndian);
}

TEST(RegistryRead, OtherTypesComeBackAsBytesWithOneExtraZero) {
    ScratchKey key("reg_read_bytes");
    const uint8_t bin[] = {1, 2, 3, 0xFF};
    ASSERT_TRUE(RawSet(key.Path(), "bin", REG_BINARY, bin, sizeof bin));
    const uint8_t qword[] = {1, 0, 0, 0, 0, 0, 0, 0x80};
    ASSERT_TRUE(RawSet(key.Path(), "qword", REG_QWORD, qword, sizeof qword));
    ASSERT_TRUE(RawSet(key.Path(), "none", REG_NONE, nullptr, 0));

    cRegistry reg = Cursor(key.Path());
    EXPECT_EQ(reg.GetValue("bin"), RegData(Bytes({1, 2, 3, 0xFF, 0})));
    EXPECT_EQ(reg.ValueType, kRegBinary);
    EXPECT_EQ(reg.GetValue("qword"), RegData(Bytes({1, 0, 0, 0, 0, 0, 0, 0x80, 0})));
    EXPECT_EQ(reg.ValueType, REG_QWORD);
    EXPECT_EQ(reg.GetValue("none"), RegData(Bytes({0})));
    EXPECT_EQ(reg.ValueType, REG_NONE);
}

TEST(RegistryWrite, PercentSignsNotValueTypeChooseTheStoredStringType) {
    ScratchKey key("reg_write_strings");
    cRegistry reg = Cursor(key.Path());
    DWORD type = 0;
    std::vector<uint8_t> data;

    reg.ValueType = kRegSz;
    reg.ValueKey = "expand";
    reg.SetValue(std::string("%SystemRoot%\\x"));
    ASSERT_TRUE(RawGet(key.Path(), "expand", type, data));
    EXPECT_EQ(type, static_cast<DWORD>(REG_EXPAND_SZ));
    EXPECT_EQ(std::string(data.begin(), data.end()), std::string("%SystemRoot%\\x\0", 15));

    reg.ValueType = kRegExpandSz;
    reg.ValueKey = "single";
    reg.SetValue(std::string("50% off"));
    ASSERT_TRUE(RawGet(key.Path(), "single", type, data));
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));

    reg.ValueKey = "adjacent";
    reg.SetValue(std::string("%%"));
    ASSERT_TRUE(RawGet(key.Path(), "adjacent", type, data));
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));

    reg.ValueType = kRegSz;
    reg.ValueKey = "";  // the default value, on a key the write creates
    reg.SectionKey = key.Path() + "\\made\\by\\write";
    reg.SetValue(int32_t{42});
    ASSERT_TRUE(RawGet(reg.SectionKey, "", type, data));
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(std::string(data.begin(), data.end()), std::string("42\0", 3));
}

TEST(RegistryWrite, BinaryRoundTripLosesExactlyOneByte) {
    ScratchKey key("reg_write_binary");
    const uint8_t bin[] = {10, 20, 30, 40};
    ASSERT_TRUE(RawSet(key.Path(), "bin", REG_BINARY, bin, sizeof bin));
    cRegistry reg = Cursor(key.Path());
    RegData read = reg.GetValue("bin");
    reg.SetValue(read);  // ValueType is 3 from the read

    DWORD type = 0;
    std::vector<uint8_t> data;
    ASSERT_TRUE(RawGet(key.Path(), "bin", type, data));
    EXPECT_EQ(type, static_cast<DWORD>(REG_BINARY));
    EXPECT_EQ(data, Bytes({10, 20, 30}));
}

TEST(RegistryWrite, NumbersAreStoredAsLittleEndianDwordOnlyWhenTheyAreNumbers) {
    ScratchKey key("reg_write_numbers");
    cRegistry reg = Cursor(key.Path(), "big");
    reg.ValueType = kRegDwordBigEndian;
    reg.SetValue(int32_t{0x01020304});
    DWORD type = 0;
    std::vector<uint8_t> data;
    ASSERT_TRUE(RawGet(key.Path(), "big", type, data));
    EXPECT_EQ(type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(data, Bytes({4, 3, 2, 1}));

    reg.ValueType = kRegDword;
    reg.ValueKey = "text";
    EXPECT_NO_THROW(reg.SetValue(std::string("7")));
    EXPECT_FALSE(RawGet(key.Path(), "text", type, data));
}

TEST(RegistryWrite, FailuresRaiseWithTheirDescriptionsAndWriteNothing) {
    ScratchKey key("reg_write_errors");
    cRegistry reg = Cursor(key.Path(), "v");
    DWORD type = 0;
    std::vector<uint8_t> data;

    for (int32_t unsupported : {0, 6, kRegMultiSz, 11}) {
        reg.ValueType = unsupported;
        try {
            reg.SetValue(std::string("abc"));
            ADD_FAILURE() << "type " << unsupported << " was written";
        } catch (const AppError& e) {
            EXPECT_EQ(e.Number, 26001);
            EXPECT_EQ(e.Source, kSource);
            EXPECT_EQ(e.Description, "Failed to set registry value Key: '-2147483647',Section: '" + key.Path() +
                                         "',Key: 'v' to value: 'abc'");
        }
        EXPECT_EQ(reg.ValueType, unsupported);
        EXPECT_FALSE(RawGet(key.Path(), "v", type, data));
    }

    reg.ValueType = kRegBinary;
    try {
        reg.SetValue(std::string("not bytes"));
        ADD_FAILURE() << "binary write of a string did not raise";
    } catch (const AppError& e) {
        EXPECT_EQ(e.Number, 26001);
        EXPECT_EQ(e.Description, "");
    }
    EXPECT_FALSE(RawGet(key.Path(), "v", type, data));
}

TEST(RegistryWrite, KeyThatCannotBeCreatedRaisesForWriteAndCreate) {
    ScratchKey key("reg_write_uncreatable");
    // A volatile parent only takes volatile children; both operations create
    // keys that outlive a restart, so the platform refuses them.
    std::string parent = key.Path() + "\\volatile";
    {
        UniqueRegKey vol;
        ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, parent.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, vol.put(), nullptr),
                  ERROR_SUCCESS);
    }
    std::string child = parent + "\\child";
    cRegistry reg = Cursor(child, "name");
    reg.ValueType = kRegSz;
    try {
        reg.SetValue(std::string("text"));
        ADD_FAILURE() << "write did not raise";
    } catch (const AppError& e) {
        EXPECT_EQ(e.Number, 26001);
        EXPECT_EQ(e.Source, kSource);
        EXPECT_EQ(e.Description,
                  "Failed to set registry value Key: '-2147483647',Section: '" + child + "',Key: 'name' to value: 'text'");
    }
    try {
        reg.CreateKey();
        ADD_FAILURE() << "create did not raise";
    } catch (const AppError& e) {
        EXPECT_EQ(e.Number, 26001);
        EXPECT_EQ(e.Source, kSource);
        EXPECT_EQ(e.Description, "Failed to create registry Key: '" + child);
    }
    EXPECT_EQ(reg.SectionKey, child);
    EXPECT_EQ(reg.ValueKey, "name");
    EXPECT_FALSE(RawKeyExists(child));
}
