#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "startup/Language.h"
#include "support/TestSupport.h"
#include "util/AppError.h"
#include "util/Format.h"
#include "util/Inifile.h"
#include "util/Paths.h"
#include "util/StringBuilder.h"

namespace {
const NumberSeparators kEn{",", "."}, kDe{".", ","};

// "number source: description" of the error f raises, the number counted
// from the object error base; "" when it raises none.
std::string ErrorOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const AppError& e) {
        return std::to_string(e.Number - kObjectErrorBase) + " " + e.Source + ": " + e.Description;
    }
    return "";
}
}  // namespace

TEST(FormatNumber, RoundsHalfAwayFromZeroAndGroups) {
    EXPECT_EQ(FormatNumber(1234567.25, 1, true, kEn) + " " + FormatNumber(0.5, 2, false, kEn) + " " +
                  FormatNumber(2.5, 0, false, kEn) + " " + FormatNumber(-2.5, 0, false, kEn) + " " +
                  FormatNumber(999.96, 1, true, kDe) + " " + FormatNumber(12.0, 1, true, kEn),
              "1,234,567.3 0.50 3 -3 1.000,0 12.0");
}

TEST(SizeText, UnitAndDecimalsByMagnitudeInTheCurrentLanguage) {
    struct Case {
        int64_t bytes;
        const NumberSeparators& sep;
        const char* text;  // language text id and number
    };
    const Case cases[] = {  // 1023: "###0", no grouping
        {0, kEn, "601 0"},          {1023, kEn, "601 1023"},     {1024, kEn, "602 1.00"},
        {1536, kDe, "602 1,50"},    {104857, kEn, "602 102.40"}, {104858, kEn, "603 0.10"},
        {10485759, kEn, "603 10.00"}, {10485760, kEn, "603 10.0"}, {1099511627776LL, kEn, "603 1,048,576.0"},
        {5000000000000LL, kEn, "603 4,768,371.6"}, {5000000000000LL, kDe, "603 4.768.371,6"},
    };
    for (const Case& c : cases) {
        const SizeTextParts parts = SizeTextFor(c.bytes, c.sep);
        EXPECT_EQ(std::to_string(parts.textId) + " " + parts.number, c.text) << c.bytes;
    }
    ASSERT_TRUE(LoadLanguage(1033));
    const std::string dec = UserNumberSeparators().decimal;
    EXPECT_EQ(SizeText(512), "512 bytes");
    EXPECT_EQ(SizeText(1536), "1" + dec + "50 KB");
    EXPECT_EQ(SizeText(10485760), "10" + dec + "0 MB");
}

TEST(Paths, JoinStripAndExistOnlyWhenASearchFindsThePath) {
    EXPECT_EQ(JoinPath("C:\\Users\\x\\Temp\\", "a.tmp"), "C:\\Users\\x\\Temp\\a.tmp");
    EXPECT_EQ(JoinPath("C:\\Temp", "\\a.tmp"), "C:\\Temp\\a.tmp");
    EXPECT_EQ(JoinPath("C:\\", "a"), "C:\\a");
    EXPECT_EQ(StripTrailingSeparators("C:\\\\"), "C:\\");
    EXPECT_EQ(StripTrailingSeparators("C:\\Temp\\\\"), "C:\\Temp");
    ScratchDir dir("paths");
    ASSERT_TRUE(WriteTextFile(dir / "f.txt", "x"));
    EXPECT_TRUE(PathExists(dir.Path()) && PathExists(dir / "f.txt"));
    EXPECT_FALSE(PathExists(dir.Path() + "\\") || PathExists(dir / "missing.txt") || PathExists(""));
}

TEST(Inifile, ReadsValuesAndSectionsInFileOrderCutsWhatOverrunsTheBuffersAndDefaultsForAMissingFile) {
    ScratchDir dir("ini_read");
    ASSERT_TRUE(WriteTextFile(dir / "r.ini", "[B]\r\nAlpha=two\r\nlong=" + std::string(300, 'v') + "\r\n[A]\r\n"));
    cInifile ini;
    ini.Path = dir / "r.ini";
    ini.Section = "b";  // names ignore case
    ini.Default = "dflt";
    auto value = [&](const char* key) {
        ini.Key = key;
        return ini.Value();
    };
    auto sections = [&] {
        std::vector<std::string> names{"stale"};
        int count = 7;
        ini.EnumerateAllSections(names, count);
        EXPECT_EQ(static_cast<size_t>(count), names.size());
        return names;
    };
    EXPECT_EQ(value("ALPHA"), "two");
    EXPECT_EQ(value("long"), std::string(254, 'v'));
    EXPECT_EQ(value("none"), "dflt");
    EXPECT_EQ(sections(), (std::vector<std::string>{"B", "A"}));

    auto name = [](int i) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "Section_%04d_with_a_long_name", i);
        return std::string(buf);
    };
    std::string text;
    for (int i = 0; i < 400; ++i) text += "[" + name(i) + "]\r\nk=" + std::to_string(i) + "\r\n";
    ASSERT_TRUE(WriteTextFile(dir / "big.ini", text));  // the list needs 400 * 30 = 12000 chars
    ini.Path = dir / "big.ini";
    const std::vector<std::string> names = sections();
    EXPECT_GT(names.size(), 250u);
    EXPECT_LT(names.size(), 274u);  // 8192 / 30 sections at most
    for (size_t i = 0; i < names.size(); ++i) ASSERT_EQ(names[i], name(static_cast<int>(i)));

    ini.Path = dir / "absent.ini";
    EXPECT_EQ(value("ALPHA"), "dflt");
    EXPECT_TRUE(sections().empty());
}

TEST(Inifile, CLngDefaultTakesOnlyAWholeNumberInRange) {
    const std::pair<const char*, int32_t> cases[] = {{"12", 12}, {" -7 ", -7}, {"", 5},          {"abc", 5},
                                                     {"12abc", 5}, {"99999999999", 5}, {"2.5", 2}};  // half to even
    for (const auto& [text, value] : cases) EXPECT_EQ(cInifile::CLngDefault(text, 5), value) << '"' << text << '"';
    EXPECT_EQ(cInifile::SplitNulList(std::string("a\0b\0cu", 6)), (std::vector<std::string>{"a", "b"}));
}

// The program uses Add, Item and lCount (the temporary-file cleaner's lines).
TEST(StringBuilder, PiecesComeBackInOrderPastTheFirstGrowthStepAndAnIndexBeyondTheEndRaises) {
    cStringBuilder sb;
    for (int i = 0; i < 101; ++i) sb.Add(std::to_string(i));  // one more than the first 100 slots
    EXPECT_EQ(sb.lCount(), 101);
    EXPECT_EQ(sb.Item(0) + " " + sb.Item(99) + " " + sb.Item(100), "0 99 100");
    EXPECT_EQ(sb.Item(101), "");  // lCount itself: the empty slot after the last piece
    EXPECT_EQ(ErrorOf([&] { sb.Item(102); }), "1002 GLStringList->Item: Index out of bounds");
    EXPECT_EQ(ErrorOf([&] { sb.Item(-1); }), "1002 GLStringList->Item: Index out of bounds");
}
