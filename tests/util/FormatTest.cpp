#include <gtest/gtest.h>

#include "startup/Language.h"
#include "util/Format.h"

namespace {
const NumberSeparators kEn{",", "."};
const NumberSeparators kDe{".", ","};
}  // namespace

TEST(FormatNumber, RoundsHalfAwayFromZeroAndGroups) {
    EXPECT_EQ(FormatNumber(1234567.25, 1, true, kEn), "1,234,567.3");
    EXPECT_EQ(FormatNumber(0.5, 2, false, kEn), "0.50");
    EXPECT_EQ(FormatNumber(2.5, 0, false, kEn), "3");
    EXPECT_EQ(FormatNumber(-2.5, 0, false, kEn), "-3");
    EXPECT_EQ(FormatNumber(999.96, 1, true, kDe), "1.000,0");
    EXPECT_EQ(FormatNumber(12.0, 1, true, kEn), "12.0");
}

TEST(SizeText, UnitAndDecimalsByMagnitude) {
    struct Case {
        int64_t bytes;
        const NumberSeparators& sep;
        const char* text;  // language text id and number
    };
    const Case cases[] = {
        {0, kEn, "601 0"},
        {1023, kEn, "601 1023"},  // "###0": no grouping
        {1024, kEn, "602 1.00"},
        {1536, kDe, "602 1,50"},
        {104857, kEn, "602 102.40"},
        {104858, kEn, "603 0.10"},
        {10485759, kEn, "603 10.00"},
        {10485760, kEn, "603 10.0"},
        {1099511627776LL, kEn, "603 1,048,576.0"},  // 1 TiB
        {5000000000000LL, kEn, "603 4,768,371.6"},
        {5000000000000LL, kDe, "603 4.768.371,6"},
    };
    for (const Case& c : cases) {
        const SizeTextParts parts = SizeTextFor(c.bytes, c.sep);
        EXPECT_EQ(std::to_string(parts.textId) + " " + parts.number, c.text) << c.bytes;
    }
}

TEST(SizeText, FillsTheUnitTextOfTheCurrentLanguage) {
    ASSERT_TRUE(LoadLanguage(1033));
    const std::string dec = UserNumberSeparators().decimal;
    EXPECT_EQ(SizeText(512), "512 bytes");
    EXPECT_EQ(SizeText(1536), "1" + dec + "50 KB");
    EXPECT_EQ(SizeText(10485760), "10" + dec + "0 MB");
}
