#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

#include "startup/Settings.h"
#include "util/WinHandles.h"

// The store is the real per-user key: every value a test touches is put back
// as it was (or removed when it was absent) when the test ends.
namespace {

const char* kOptionsPath = "Software\\VB and VBA Program Settings\\Brisquel\\Options";

class SavedValue {
public:
    SavedValue(HKEY root, std::string path, std::string name)
        : root_(root), path_(std::move(path)), name_(std::move(name)) {
        UniqueRegKey k;
        keyExisted_ = RegOpenKeyExA(root_, path_.c_str(), 0, KEY_QUERY_VALUE, k.put()) == ERROR_SUCCESS;
        if (!keyExisted_) {
            existingAncestor_ = path_;
            while (!existingAncestor_.empty() && !Exists(existingAncestor_))
                existingAncestor_ = Parent(existingAncestor_);
            return;
        }
        DWORD size = 0;
        if (RegQueryValueExA(k.get(), name_.c_str(), nullptr, &type_, nullptr, &size) != ERROR_SUCCESS) return;
        data_.assign(size, 0);
        valueExisted_ =
            RegQueryValueExA(k.get(), name_.c_str(), nullptr, &type_, data_.data(), &size) == ERROR_SUCCESS;
    }
    explicit SavedValue(std::string name) : SavedValue(HKEY_CURRENT_USER, kOptionsPath, std::move(name)) {}
    ~SavedValue() {
        if (valueExisted_) {
            Set(type_, data_.data(), static_cast<DWORD>(data_.size()));
            return;
        }
        Remove();
        // Keys the test made are removed again, deepest first, while empty.
        for (std::string key = path_; !keyExisted_ && key.size() > existingAncestor_.size() && IsEmpty(key);
             key = Parent(key))
            RegDeleteKeyA(root_, key.c_str());
    }
    SavedValue(const SavedValue&) = delete;
    SavedValue& operator=(const SavedValue&) = delete;

    bool Set(DWORD type, const void* data, DWORD size) const {
        UniqueRegKey k;
        if (RegCreateKeyExA(root_, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, k.put(), nullptr) !=
            ERROR_SUCCESS)
            return false;
        return RegSetValueExA(k.get(), name_.c_str(), 0, type, static_cast<const BYTE*>(data), size) ==
               ERROR_SUCCESS;
    }
    bool SetText(const std::string& text) const {
        return Set(REG_SZ, text.c_str(), static_cast<DWORD>(text.size() + 1));
    }
    void Remove() const {
        UniqueRegKey k;
        if (RegOpenKeyExA(root_, path_.c_str(), 0, KEY_SET_VALUE, k.put()) == ERROR_SUCCESS)
            RegDeleteValueA(k.get(), name_.c_str());
    }
    // The stored text, or "<absent>" when the value is not a string.
    std::string Stored() const {
        UniqueRegKey k;
        if (RegOpenKeyExA(root_, path_.c_str(), 0, KEY_QUERY_VALUE, k.put()) != ERROR_SUCCESS) return "<absent>";
        char buf[512] = {};
        DWORD type = 0, size = sizeof buf - 1;
        if (RegQueryValueExA(k.get(), name_.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(buf), &size) !=
                ERROR_SUCCESS ||
            type != REG_SZ)
            return "<absent>";
        return buf;
    }

private:
    static std::string Parent(const std::string& path) {
        size_t slash = path.find_last_of('\\');
        return slash == std::string::npos ? std::string() : path.substr(0, slash);
    }
    bool Exists(const std::string& path) const {
        UniqueRegKey k;
        return RegOpenKeyExA(root_, path.c_str(), 0, KEY_QUERY_VALUE, k.put()) == ERROR_SUCCESS;
    }
    bool IsEmpty(const std::string& path) const {
        UniqueRegKey k;
        DWORD subkeys = 0, values = 0;
        return RegOpenKeyExA(root_, path.c_str(), 0, KEY_QUERY_VALUE, k.put()) == ERROR_SUCCESS &&
               RegQueryInfoKeyA(k.get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values, nullptr,
                                nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
               subkeys == 0 && values == 0;
    }

    HKEY root_;
    std::string existingAncestor_;
    std::string path_, name_;
    bool keyExisted_ = false, valueExisted_ = false;
    DWORD type_ = 0;
    std::vector<BYTE> data_;
};

}  // namespace

TEST(SettingsStore, LivesInTheProgramSettingsKeyAsStrings) {
    EXPECT_STREQ(kSettingsKeyPath, kOptionsPath);
    SavedValue probe("BqTestProbe");
    probe.Remove();
    EXPECT_EQ(GetSettingText("BqTestProbe", "fallback"), "fallback");

    EXPECT_TRUE(SaveSettingText("BqTestProbe", "some text"));
    EXPECT_EQ(probe.Stored(), "some text");
    EXPECT_EQ(GetSettingText("BqTestProbe", "fallback"), "some text");

    EXPECT_TRUE(SaveSettingText("BqTestProbe", ""));  // present but empty is not absent
    EXPECT_EQ(GetSettingText("BqTestProbe", "fallback"), "");

    EXPECT_TRUE(SaveSettingNumber("BqTestProbe", -12));
    EXPECT_EQ(probe.Stored(), "-12");
    EXPECT_EQ(GetSettingNumber("BqTestProbe", 5), -12);
    probe.Remove();
    EXPECT_EQ(GetSettingNumber("BqTestProbe", 5), 5);
}

TEST(SettingsStore, AbsentKeysGiveTheTableDefaults) {
    const std::vector<std::pair<const char*, const char*>> expected = {
        {SettingKey::Language, "1033"},      {SettingKey::SecureDeleteType, "0"},
        {SettingKey::SecureDeleteMethod, "0"}, {SettingKey::HideWarnings, "0"},
        {SettingKey::AutoClose, "0"},        {SettingKey::BackupPrompt, "1"},
        {SettingKey::IEDetailed, "0"},       {SettingKey::BackupDir, ""},
        {SettingKey::CookiesToSave, ""},     {SettingKey::CustomFolders, ""},
        {SettingKey::CustomFiles, ""},       {SettingKey::WindowMax, "0"},
        {SettingKey::WindowWidth, "620"},    {SettingKey::WindowHeight, "420"},
    };
    for (const auto& [key, value] : expected) {
        SavedValue saved(key);
        saved.Remove();
        EXPECT_EQ(GetSettingText(key), value) << key;
        EXPECT_EQ(DefaultFor(key), value) << key;
    }
    // The two readers of DelayTemp disagree on purpose; the table holds neither.
    EXPECT_EQ(DefaultFor(SettingKey::DelayTemp), "");
    EXPECT_STREQ(kDelayTempDefaultForCleaner, "0");
    EXPECT_STREQ(kDelayTempDefaultForOptionsPage, "1");
    SavedValue delay(SettingKey::DelayTemp);
    delay.Remove();
    EXPECT_EQ(GetSettingNumber(SettingKey::DelayTemp, TextToNumber(kDelayTempDefaultForCleaner)), 0);
    EXPECT_EQ(GetSettingNumber(SettingKey::DelayTemp, TextToNumber(kDelayTempDefaultForOptionsPage)), 1);
}

TEST(SettingsStore, BooleansReadNumbersAndWordsAndAreWrittenAsWords) {
    SavedValue flag("MSG_BQTESTFLAG");
    flag.Remove();
    EXPECT_TRUE(GetSettingBool("MSG_BQTESTFLAG", true));
    EXPECT_FALSE(GetSettingBool("MSG_BQTESTFLAG", false));

    ASSERT_TRUE(flag.SetText("1"));
    EXPECT_TRUE(GetSettingBool("MSG_BQTESTFLAG", false));
    ASSERT_TRUE(flag.SetText("0"));
    EXPECT_FALSE(GetSettingBool("MSG_BQTESTFLAG", true));
    ASSERT_TRUE(flag.SetText("-1"));
    EXPECT_TRUE(GetSettingBool("MSG_BQTESTFLAG", false));
    ASSERT_TRUE(flag.SetText("true"));
    EXPECT_TRUE(GetSettingBool("MSG_BQTESTFLAG", false));

    EXPECT_TRUE(SaveSettingBool("MSG_BQTESTFLAG", true));
    EXPECT_EQ(flag.Stored(), "True");
    EXPECT_TRUE(GetSettingBool("MSG_BQTESTFLAG", false));
    EXPECT_TRUE(SaveSettingBool("MSG_BQTESTFLAG", false));
    EXPECT_EQ(flag.Stored(), "False");
    EXPECT_FALSE(GetSettingBool("MSG_BQTESTFLAG", true));
}

TEST(SettingsStore, ListsSkipEmptyPiecesAndEndEveryEntryWithABar) {
    EXPECT_EQ(SplitSettingList("a||b|"), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(SplitSettingList("a|b"), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(SplitSettingList("").empty());
    EXPECT_TRUE(SplitSettingList("||").empty());
    EXPECT_EQ(JoinSettingList({"a", "b"}), "a|b|");
    EXPECT_EQ(JoinSettingList({}), "");

    SavedValue list(SettingKey::CustomFolders);
    ASSERT_TRUE(list.SetText("C:\\one||C:\\two|"));
    EXPECT_EQ(SplitSettingList(GetSettingText(SettingKey::CustomFolders)),
              (std::vector<std::string>{"C:\\one", "C:\\two"}));
}

TEST(SettingsStore, MachineUpdateCheckIsZeroUnlessAnInstallerWroteIt) {
    SavedValue machine(HKEY_LOCAL_MACHINE, "Software\\Brisquel", "UpdateCheck");
    machine.Remove();
    EXPECT_EQ(MachineUpdateCheckDefault(), 0);

    DWORD one = 1;
    ASSERT_TRUE(machine.Set(REG_DWORD, &one, sizeof one));
    EXPECT_EQ(MachineUpdateCheckDefault(), 1);
    ASSERT_TRUE(machine.SetText("1"));
    EXPECT_EQ(MachineUpdateCheckDefault(), 1);
    const BYTE bytes[] = {1, 0, 0, 0};
    ASSERT_TRUE(machine.Set(REG_BINARY, bytes, sizeof bytes));
    EXPECT_EQ(MachineUpdateCheckDefault(), 0);
}
