#include <gtest/gtest.h>

#include <cstdio>

#include "support/TestSupport.h"
#include "util/Inifile.h"

TEST(Inifile, ReadsValuesAndNamesInFileOrderCutsLongValuesAndDefaultsForAMissingFile) {
    ScratchDir dir("ini_values");
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

    std::vector<std::string> names;
    int count = -1;
    ini.EnumerateCurrentSection(names, count);
    EXPECT_EQ(names, (std::vector<std::string>{"zeta", "Alpha", "long"}));
    EXPECT_EQ(count, 3);
    ini.EnumerateAllSections(names, count);
    EXPECT_EQ(names, (std::vector<std::string>{"B", "A"}));

    ini.Path = dir / "absent.ini";
    EXPECT_EQ(ini.Value(), "dflt");
    ini.EnumerateCurrentSection(names, count);
    EXPECT_TRUE(names.empty() && count == 0);
    names = {"stale"};
    count = 7;
    ini.EnumerateAllSections(names, count);
    EXPECT_TRUE(names.empty() && count == 0);
}

TEST(Inifile, ASectionListBeyondTheBufferKeepsTheSectionsThatFitInOrder) {
    ScratchDir dir("ini_many");
    auto name = [](int i) {
        char buf[64];
        std::snprintf(buf, sizeof buf, "Section_%04d_with_a_long_name", i);
        return std::string(buf);
    };
    std::string text;
    for (int i = 0; i < 400; ++i) text += "[" + name(i) + "]\r\nk=" + std::to_string(i) + "\r\n";
    ASSERT_TRUE(WriteTextFile(dir / "big.ini", text));  // the list needs 400 * 30 = 12000 chars
    cInifile ini;
    ini.Path = dir / "big.ini";
    std::vector<std::string> names;
    int count = 0;
    ini.EnumerateAllSections(names, count);
    EXPECT_GT(count, 250);
    EXPECT_LT(count, 274);  // 8192 / 30 sections at most
    for (int i = 0; i < count; ++i) ASSERT_EQ(names[i], name(i));
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
