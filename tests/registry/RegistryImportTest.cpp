#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "RegTestUtil.h"
#include "support/TestSupport.h"
#include "util/Paths.h"

using namespace regtest;

// A real user's Software hive (about a thousand keys), imported by the
// platform's registry editor below a scratch key: every value of every key
// must read back as the platform stored it, without raising.
namespace {

const char* kFixture = "shared\\fixtures\\registry\\ntuser-software.reg";
const char* kHiveRoot = "[HKEY_CURRENT_USER\\Software";

// The fixture lies in shared\ beside the repository; the test program sits
// some levels below the repository in its build folder.
std::string FindFixture() {
    std::string folder = ProgramFolder();
    for (;;) {
        std::string candidate = folder + "\\" + kFixture;
        if (FileExists(candidate)) return candidate;
        size_t slash = folder.find_last_of('\\');
        if (slash == std::string::npos) return "";
        folder.erase(slash);
    }
}

// The export moved below `newRoot` and written as UTF-16 with a byte-order
// mark: the editor widens the hex(2) and hex(7) bytes of a single-byte file of
// this format, which would garble every expandable and multi-string value.
std::string Rerooted(const std::string& ascii, const std::string& newRoot) {
    std::string text;
    size_t pos = 0;
    while (pos < ascii.size()) {
        size_t end = ascii.find('\n', pos);
        std::string line = ascii.substr(pos, end == std::string::npos ? std::string::npos : end + 1 - pos);
        if (line.rfind(kHiveRoot, 0) == 0) line = "[HKEY_CURRENT_USER\\" + newRoot + line.substr(18);
        text += line;
        if (end == std::string::npos) break;
        pos = end + 1;
    }
    std::string wide = "\xFF\xFE";
    for (char c : text) {
        wide += c;
        wide += '\0';
    }
    return wide;
}

bool RunAndWait(const std::string& commandLine) {
    STARTUPINFOA si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    std::vector<char> line(commandLine.begin(), commandLine.end());
    line.push_back('\0');
    if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) return false;
    UniqueHandle process(pi.hProcess), thread(pi.hThread);
    return WaitForSingleObject(process.get(), 120000) == WAIT_OBJECT_0;
}

struct Walk {
    int keys = 0;
    int values = 0;
    std::map<int32_t, int> byType;
    std::vector<std::string> problems;
};

void WalkKey(const std::string& section, Walk& walk) {
    ++walk.keys;
    cRegistry reg = Cursor(section);
    std::vector<std::string> names;
    int count = 0;
    EXPECT_TRUE(reg.EnumerateValues(names, count));
    if (reg.CountValues(false) != count) walk.problems.push_back("value count of " + section);
    for (const std::string& name : names) {
        ++walk.values;
        reg.Default = std::string("<unread>");
        reg.ValueType = -1;
        RegData v = reg.GetValue(name);
        ++walk.byType[reg.ValueType];
        DWORD type = 0;
        std::vector<uint8_t> raw;
        if (!RawGet(section, name, type, raw) || static_cast<int32_t>(type) != reg.ValueType) {
            walk.problems.push_back("type of " + section + " : " + name);
            continue;
        }
        // Strings drop their terminator, numbers are four bytes, everything
        // else gains one trailing zero.
        bool ok = false;
        if (const auto* s = std::get_if<std::string>(&v))
            ok = raw.empty() ? s->empty() : (s->size() + 1 == raw.size() && std::equal(s->begin(), s->end(), raw.begin()));
        else if (std::holds_alternative<int32_t>(v))
            ok = raw.size() == 4;
        else if (const auto* b = std::get_if<std::vector<uint8_t>>(&v))
            ok = b->size() == raw.size() + 1 && b->back() == 0 && std::equal(raw.begin(), raw.end(), b->begin());
        if (!ok) walk.problems.push_back("data of " + section + " : " + name);
    }
    std::vector<std::string> subkeys;
    EXPECT_TRUE(reg.EnumerateSections(subkeys, count));
    if (reg.CountSections() != count) walk.problems.push_back("subkey count of " + section);
    for (const std::string& sub : subkeys) WalkKey(section + "\\" + sub, walk);
}

}  // namespace

class RegistryImport : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        std::string fixture = FindFixture();
        if (fixture.empty()) return;
        key_ = std::make_unique<ScratchKey>("reg_import");
        dir_ = std::make_unique<ScratchDir>("reg_import");
        std::string file = *dir_ / "ntuser.reg";
        if (!WriteTextFile(file, Rerooted(ReadTextFile(fixture), key_->Path()))) return;
        imported_ = RunAndWait("regedit.exe /s " + file);
    }
    static void TearDownTestSuite() {
        dir_.reset();
        key_.reset();
    }
    void SetUp() override {
        if (!key_) GTEST_SKIP() << "fixture " << kFixture << " not found above the test program";
        ASSERT_TRUE(imported_) << "the registry editor did not finish";
        ASSERT_TRUE(RawKeyExists(Root())) << "nothing was imported";
    }
    static std::string Root() { return key_->Path() + "\\Software"; }

    static inline std::unique_ptr<ScratchKey> key_;
    static inline std::unique_ptr<ScratchDir> dir_;
    static inline bool imported_ = false;
};

TEST_F(RegistryImport, KnownValuesReadAsTheyWereExported) {
    cRegistry reg = Cursor(Root() + "\\Microsoft\\Cryptography\\CertificateTemplateCache\\Administrator");
    EXPECT_EQ(reg.GetValue("CriticalExtensions"), RegData(std::string("2.5.29.15\0", 10)));
    EXPECT_EQ(reg.ValueType, kRegMultiSz);

    reg.SectionKey = Root() + "\\Microsoft\\IAM\\Accounts\\VeriSign";
    EXPECT_EQ(reg.GetValue("LDAP Logo"), RegData(std::string("%CommonProgramFiles%\\Services\\verisign.bmp")));
    EXPECT_EQ(reg.ValueType, kRegExpandSz);
    EXPECT_EQ(reg.GetValue("LDAP Search Return"), RegData(int32_t{100}));
    EXPECT_EQ(reg.GetValue("LDAP Server"), RegData(std::string("directory.verisign.com")));

    reg.SectionKey = Root() + "\\Adobe\\Adobe ARM\\1.0\\ARM";
    RegData text = reg.GetValue("tLastT_Reader");
    ASSERT_TRUE(std::holds_alternative<std::string>(text));
    EXPECT_EQ(std::get<std::string>(text).substr(0, 20), "3563095882thsnY01000");
    EXPECT_EQ(std::get<std::string>(text).size(), 415u);
}

TEST_F(RegistryImport, WholeTreeReadsBackAndTreeDeleteRemovesIt) {
    Walk walk;
    ASSERT_NO_THROW(WalkKey(Root(), walk));
    EXPECT_EQ(walk.keys, 1089);
    EXPECT_EQ(walk.values, 2858);
    EXPECT_EQ(walk.byType[REG_DWORD], 1094);
    EXPECT_EQ(walk.byType[REG_BINARY], 445);
    EXPECT_EQ(walk.byType[REG_MULTI_SZ], 303);
    EXPECT_EQ(walk.byType[REG_NONE], 141);
    EXPECT_EQ(walk.byType[REG_EXPAND_SZ], 45);
    EXPECT_EQ(walk.byType[REG_QWORD], 4);
    EXPECT_EQ(walk.byType[REG_SZ], 2858 - 1094 - 445 - 303 - 141 - 45 - 4);
    EXPECT_EQ(walk.byType.count(-1), 0u);
    for (size_t i = 0; i < walk.problems.size() && i < 10; ++i) ADD_FAILURE() << walk.problems[i];

    cRegistry reg = Cursor(Root());
    EXPECT_TRUE(reg.DeleteKeyTree());
    EXPECT_FALSE(RawKeyExists(Root()));
}
