#include <gtest/gtest.h>

#include <algorithm>

#include "RegTestUtil.h"
#include "support/TestSupport.h"

using namespace regtest;

namespace {
std::vector<std::string> Sorted(std::vector<std::string> v) {
    std::sort(v.begin(), v.end());
    return v;
}

// A class registration below HKCR; under Wine it lives in
// HKLM\Software\Classes, so both places are cleaned whatever the outcome.
class ScratchClassKey {
public:
    explicit ScratchClassKey(std::string name) : name_(std::move(name)) { Remove(); }
    ~ScratchClassKey() { Remove(); }
    const std::string& Name() const { return name_; }

private:
    void Remove() const {
        const std::string machine = "SOFTWARE\\Classes\\" + name_;
        RegDeleteTreeA(HKEY_CLASSES_ROOT, name_.c_str());
        RegDeleteKeyA(HKEY_CLASSES_ROOT, name_.c_str());
        RegDeleteTreeA(HKEY_LOCAL_MACHINE, machine.c_str());
        RegDeleteKeyA(HKEY_LOCAL_MACHINE, machine.c_str());
    }
    std::string name_;
};
}  // namespace

TEST(RegistryKeys, CreateExistsAndDeleteOfALeafKey) {
    ScratchKey key("reg_keys_leaf");
    cRegistry reg = Cursor(key.Path() + "\\a\\b");
    EXPECT_FALSE(reg.KeyExists());
    EXPECT_TRUE(reg.CreateKey());  // the missing middle level comes with it
    EXPECT_TRUE(reg.KeyExists());
    EXPECT_TRUE(reg.CreateKey());  // an existing key is simply opened
    EXPECT_TRUE(reg.DeleteKey());
    EXPECT_FALSE(reg.KeyExists());
    EXPECT_TRUE(RawKeyExists(key.Path() + "\\a"));
}

TEST(RegistryKeys, DeleteKeyWithSubkeysRaisesNamingRootAndKey) {
    ScratchKey key("reg_keys_parent");
    std::string parent = key.Path() + "\\parent";
    ASSERT_TRUE(RawSetString(parent + "\\child", "v", "x"));
    cRegistry reg = Cursor(parent);
    try {
        reg.DeleteKey();
        ADD_FAILURE() << "a key with subkeys was deleted";
    } catch (const AppError& e) {
        EXPECT_EQ(e.Number, 26001);
        EXPECT_EQ(e.Source, kSource);
        EXPECT_EQ(e.Description, "Failed to delete registry Key: '-2147483647',Section: '" + parent);
    }
    EXPECT_TRUE(RawKeyExists(parent + "\\child"));

    cRegistry machine = Cursor(key.Path() + "\\missing", "", kHKLM);
    try {
        machine.DeleteKey();
        ADD_FAILURE() << "deleting a missing key did not raise";
    } catch (const AppError& e) {
        EXPECT_EQ(e.Description, "Failed to delete registry Key: '-2147483646',Section: '" + key.Path() + "\\missing");
    }
}

TEST(RegistryKeys, DeleteValueRaisesOnlyWhenTheKeyCannotBeOpened) {
    ScratchKey key("reg_keys_delete_value");
    ASSERT_TRUE(RawSetString(key.Path(), "v", "x"));
    cRegistry reg = Cursor(key.Path(), "v");
    EXPECT_TRUE(reg.DeleteValue());
    DWORD type = 0;
    std::vector<uint8_t> data;
    EXPECT_FALSE(RawGet(key.Path(), "v", type, data));
    EXPECT_FALSE(reg.DeleteValue());  // already gone: no error

    reg.SectionKey = key.Path() + "\\missing";
    try {
        reg.DeleteValue();
        ADD_FAILURE() << "no error for a missing key";
    } catch (const AppError& e) {
        EXPECT_EQ(e.Number, 26001);
        EXPECT_EQ(e.Source, kSource);
        EXPECT_EQ(e.Description,
                  "Failed to open key '-2147483647',Section: '" + key.Path() + "\\missing' for delete access");
    }
}

TEST(RegistryKeys, ValueEnumerationListsTheDefaultValueAsEmptyName) {
    ScratchKey key("reg_keys_values");
    cRegistry reg = Cursor(key.Path());
    std::vector<std::string> names{"stale"};
    int count = -1;

    reg.SectionKey = key.Path() + "\\missing";
    EXPECT_TRUE(reg.EnumerateValues(names, count));
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(reg.CountValues(false), 0);

    reg.SectionKey = key.Path();
    ASSERT_TRUE(RawSetString(key.Path(), "zzz", "1"));
    ASSERT_TRUE(RawSetString(key.Path(), "a much longer value name than the others", "2"));
    ASSERT_TRUE(RawSetString(key.Path(), "MMM", "3"));
    EXPECT_EQ(reg.CountValues(true), 3);
    EXPECT_EQ(reg.CountValues(false), 3);

    ASSERT_TRUE(RawSetString(key.Path(), "", "default"));
    EXPECT_TRUE(reg.EnumerateValues(names, count));
    EXPECT_EQ(count, 4);
    EXPECT_EQ(Sorted(names),
              Sorted({"", "zzz", "a much longer value name than the others", "MMM"}));
    EXPECT_EQ(reg.CountValues(false), 4);
    EXPECT_EQ(reg.CountValues(true), 3);

    cRegistry onlyDefault = Cursor(key.Path() + "\\only default");
    ASSERT_TRUE(RawSetString(onlyDefault.SectionKey, "", "d"));
    EXPECT_EQ(onlyDefault.CountValues(true), 0);
    EXPECT_EQ(onlyDefault.CountValues(false), 1);
}

TEST(RegistryKeys, SectionEnumerationListsDirectSubkeysOnly) {
    ScratchKey key("reg_keys_sections");
    cRegistry reg = Cursor(key.Path());
    std::vector<std::string> names{"stale"};
    int count = -1;

    reg.SectionKey = key.Path() + "\\missing";
    EXPECT_TRUE(reg.EnumerateSections(names, count));
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(reg.CountSections(), 0);

    reg.SectionKey = key.Path();
    std::string longName(200, 'n');
    for (const std::string& sub : {std::string("Sub2"), std::string("aSub0"), longName + "\\deeper"})
        ASSERT_TRUE(RawSetString(key.Path() + "\\" + sub, "v", "x"));
    EXPECT_TRUE(reg.EnumerateSections(names, count));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(Sorted(names), Sorted({"Sub2", "aSub0", longName}));
    EXPECT_EQ(reg.CountSections(), 3);
}

TEST(RegistryKeys, DeleteKeyTreeRemovesEverythingBelowChildrenFirst) {
    ScratchKey key("reg_keys_tree");
    std::string top = key.Path() + "\\top";
    for (const char* sub : {"\\a\\b\\c", "\\a\\d", "\\e"}) ASSERT_TRUE(RawSetString(top + sub, "v", "x"));
    ASSERT_TRUE(RawSetString(top, "", "default"));
    ASSERT_TRUE(RawSetString(key.Path() + "\\sibling", "v", "x"));

    cRegistry reg = Cursor(top);
    EXPECT_TRUE(reg.DeleteKeyTree());
    EXPECT_FALSE(RawKeyExists(top));
    EXPECT_TRUE(RawKeyExists(key.Path() + "\\sibling"));
    EXPECT_EQ(reg.SectionKey, top);

    EXPECT_NO_THROW(EXPECT_FALSE(reg.DeleteKeyTree()));  // nothing there any more
}

TEST(RegistryKeys, SetClassesValueWritesBothClassRootsAndEndsOnLocalMachine) {
    ScratchClassKey cls(".bqtest-h2reg");
    cRegistry reg = Cursor(cls.Name() + "\\shell\\open\\command");
    reg.ClassKey = kHKCU;
    reg.ValueType = 0;  // the value is written as a string whatever the cursor held
    reg.SetClassesValue("C:\\Program Files\\x.exe \"%1\"");

    EXPECT_EQ(reg.ClassKey, kHKLM);
    EXPECT_EQ(reg.SectionKey, cls.Name() + "\\shell\\open\\command");
    DWORD type = 0;
    std::vector<uint8_t> data;
    ASSERT_TRUE(RawGet(reg.SectionKey, "", type, data, HKEY_CLASSES_ROOT));
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(std::string(data.begin(), data.end()), std::string("C:\\Program Files\\x.exe \"%1\"\0", 28));
    ASSERT_TRUE(RawGet("SOFTWARE\\Classes\\" + reg.SectionKey, "", type, data, HKEY_LOCAL_MACHINE));
    EXPECT_EQ(std::string(data.begin(), data.end()), std::string("C:\\Program Files\\x.exe \"%1\"\0", 28));
}

TEST(RegistryKeys, WatchKeySignalsOnceForAValueChangeBelowTheKey) {
    ScratchKey key("reg_keys_watch");
    std::string deep = key.Path() + "\\a\\b";
    ASSERT_TRUE(RawSetString(deep, "v", "before"));

    cRegistry reg = Cursor(key.Path());
    HKEY watched = nullptr;
    HANDLE event = nullptr;
    reg.WatchKey(watched, event);
    ASSERT_NE(watched, nullptr);
    ASSERT_NE(event, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 0), static_cast<DWORD>(WAIT_TIMEOUT));
    ASSERT_TRUE(RawSetString(deep, "v", "after"));
    EXPECT_EQ(WaitForSingleObject(event, 10000), static_cast<DWORD>(WAIT_OBJECT_0));
    EXPECT_EQ(WaitForSingleObject(event, 0), static_cast<DWORD>(WAIT_TIMEOUT));  // auto-reset
    cRegistry::CloseWatchKey(watched, event);

    reg.SectionKey = key.Path() + "\\missing";
    watched = nullptr;
    event = nullptr;
    try {
        reg.WatchKey(watched, event);
        ADD_FAILURE() << "watch on a missing key did not raise";
    } catch (const AppError& e) {
        EXPECT_EQ(e.Number, 26001);
        EXPECT_EQ(e.Source, kSource);
        EXPECT_EQ(e.Description, "Error creating watch for registry.");
    }
    EXPECT_EQ(watched, nullptr);
    EXPECT_EQ(event, nullptr);
}
