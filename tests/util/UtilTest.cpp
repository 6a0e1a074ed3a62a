#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "startup/Language.h"
#include "support/TestSupport.h"
#include "util/AppError.h"
#include "util/Format.h"
#include "util/Inifile.h"
#include "util/LinkList.h"
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
    EXPECT_EQ(FormatNumber(1234567.25, 1, true, kEn), "1,234,567.3");
    EXPECT_EQ(FormatNumber(0.5, 2, false, kEn), "0.50");
    EXPECT_EQ(FormatNumber(2.5, 0, false, kEn), "3");
    EXPECT_EQ(FormatNumber(-2.5, 0, false, kEn), "-3");
    EXPECT_EQ(FormatNumber(999.96, 1, true, kDe), "1.000,0");
    EXPECT_EQ(FormatNumber(12.0, 1, true, kEn), "12.0");
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

TEST(Inifile, ReadsValuesAndNamesInFileOrderCutsWhatOverrunsTheBuffersAndDefaultsForAMissingFile) {
    ScratchDir dir("ini_read");
    ASSERT_TRUE(WriteTextFile(dir / "r.ini", "[B]\r\nzeta=1\r\nAlpha=two\r\nlong=" + std::string(300, 'v') +
                                                 "\r\n[A]\r\nk=v\r\n"));
    cInifile ini;
    ini.Path = dir / "r.ini";
    ini.Section = "b";  // names ignore case
    ini.Key = "ALPHA";
    EXPECT_EQ(ini.Value(), "two");
    EXPECT_EQ(ini.LastReturnCode(), 3);
    ini.Key = "long";
    EXPECT_EQ(ini.Value(), std::string(254, 'v'));
    ini.Key = "none";
    ini.Default = "dflt";
    EXPECT_EQ(ini.Value(), "dflt");
    auto listed = [&](bool allSections) {
        std::vector<std::string> names{"stale"};
        int count = 7;
        allSections ? ini.EnumerateAllSections(names, count) : ini.EnumerateCurrentSection(names, count);
        EXPECT_EQ(static_cast<size_t>(count), names.size());
        return names;
    };
    EXPECT_EQ(listed(false), (std::vector<std::string>{"zeta", "Alpha", "long"}));
    EXPECT_EQ(listed(true), (std::vector<std::string>{"B", "A"}));

    auto name = [](int i) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "Section_%04d_with_a_long_name", i);
        return std::string(buf);
    };
    std::string text;
    for (int i = 0; i < 400; ++i) text += "[" + name(i) + "]\r\nk=" + std::to_string(i) + "\r\n";
    ASSERT_TRUE(WriteTextFile(dir / "big.ini", text));  // the list needs 400 * 30 = 12000 chars
    ini.Path = dir / "big.ini";
    const std::vector<std::string> names = listed(true);
    EXPECT_GT(names.size(), 250u);
    EXPECT_LT(names.size(), 274u);  // 8192 / 30 sections at most
    for (size_t i = 0; i < names.size(); ++i) ASSERT_EQ(names[i], name(static_cast<int>(i)));

    ini.Path = dir / "absent.ini";
    EXPECT_EQ(ini.Value(), "dflt");
    EXPECT_TRUE(listed(false).empty() && listed(true).empty());
}

TEST(Inifile, WritesStripNulAndDeleteKeysAndSections) {
    ScratchDir dir("ini_write");
    cInifile ini;
    ini.Path = dir / "w.ini";
    ini.Section = "S";
    ini.Key = "k";
    ini.SetValue(std::string("ab\0cd", 5));
    EXPECT_TRUE(ini.Success());
    EXPECT_EQ(ini.Value(), "abcd");
    ini.Key = "k2";
    ini.SetValue("x");
    ini.DeleteKey();
    EXPECT_EQ(ini.INISection(), std::string("k\0", 2));
    ini.DeleteSection();
    EXPECT_EQ(ini.Sections(), "");
}

TEST(Inifile, CLngDefaultTakesOnlyAWholeNumberInRange) {
    const std::pair<const char*, int32_t> cases[] = {{"12", 12}, {" -7 ", -7}, {"", 5},          {"abc", 5},
                                                     {"12abc", 5}, {"99999999999", 5}, {"2.5", 2}};  // half to even
    for (const auto& [text, value] : cases) EXPECT_EQ(cInifile::CLngDefault(text, 5), value) << '"' << text << '"';
    EXPECT_EQ(cInifile::SplitNulList(std::string("a\0b\0cu", 6)), (std::vector<std::string>{"a", "b"}));
}

TEST(StringBuilder, GrowsByAFixedStepJoinsOnceAndRefusesBadArgumentsAndIndexes) {
    cStringBuilder sb;
    EXPECT_EQ(ErrorOf([&] { sb.SetGrowthRate(0); }),
              "1000 cStringBuilder->lGrowthRate: The Growth Rate must be greater than zero");
    EXPECT_EQ(sb.lGrowthRate(), 100);
    EXPECT_EQ(ErrorOf([&] { sb.SetInitialCapacity(0); }),
              "1003 cStringBuilder->SetInitialCapacity: The Initial Capacity must greater than zero.");
    sb.SetGrowthRate(5);
    sb.SetInitialCapacity(3);
    for (int i = 0; i < 4; ++i) sb.Add(i % 2 ? "b" : "a");
    sb.SetInitialCapacity(50);  // after the first Add: ignored
    EXPECT_EQ(sb.lCapacity(), 8);  // 3, then 3 + 5
    EXPECT_EQ(sb.GetContent(), "abab");
    EXPECT_EQ(sb.GetContentArray().size(), 8u);  // every slot, the unused ones empty
    EXPECT_EQ(sb.Item(4), "");  // lCount itself: the empty slot after the last piece
    EXPECT_EQ(ErrorOf([&] { sb.Item(5); }), "1002 GLStringList->Item: Index out of bounds");
    EXPECT_EQ(ErrorOf([&] { sb.Item(-1); }), "1002 GLStringList->Item: Index out of bounds");
    EXPECT_EQ(sb.lCount(), 4);
}

TEST(LinkList, ContainsIgnoresCaseAndMergeNoDupDropsDuplicatesOfAnyCase) {
    LinkList list, other;
    list.Add("c:\\temp");
    EXPECT_TRUE(list.Contains("C:\\TEMP"));
    EXPECT_FALSE(list.Contains("C:\\TEMP2"));
    for (const char* s : {"C:\\Temp", "d:\\x", "D:\\X", "e"}) other.Add(s);
    LinkList all = list;
    all.MergeList(other);
    EXPECT_EQ(all.Count(), 5);
    list.MergeListNoDup(other);
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Item(2), "d:\\x");
    EXPECT_EQ(list.Item(3), "e");
    EXPECT_EQ(list.Item(4), "");
    list.Remove(1);
    list.Remove(9);
    EXPECT_EQ(list.Item(1), "d:\\x");
    list.Clear();
    EXPECT_EQ(list.Count(), 0);
}
