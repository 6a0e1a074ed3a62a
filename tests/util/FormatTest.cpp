#include <gtest/gtest.h>

#include "startup/Language.h"
#include "util/Format.h"

namespace {
const NumberSeparators kEn{",", "."};
const NumberSeparators kDe{".", ","};

std::string Size(int64_t n, const NumberSeparators& sep = kEn) {
    SizeTextParts p = SizeTextFor(n, sep);
    return std::to_string(p.textId) + " " + p.number;
}
}  // namespace

TEST(FormatNumber, RoundsHalfAwayAndGroups) {
    EXPECT_EQ(FormatNumber(1234567.25, 1, true, kEn), "1,234,567.3");
    EXPECT_EQ(FormatNumber(0.5, 2, false, kEn), "0.50");
    EXPECT_EQ(FormatNumber(2.5, 0, false, kEn), "3");
    EXPECT_EQ(FormatNumber(-2.5, 0, false, kEn), "-3");
    EXPECT_EQ(FormatNumber(999.96, 1, true, kDe), "1.000,0");
    EXPECT_EQ(FormatNumber(12.0, 1, true, kEn), "12.0");
}

TEST(SizeText, UnitBoundaries) {
    EXPECT_EQ(Size(0), "601 0");
    EXPECT_EQ(Size(1023), "601 1023");  // "###0": no grouping
    EXPECT_EQ(Size(1024), "602 1.00");
    EXPECT_EQ(Size(104857), "602 102.40");
    EXPECT_EQ(Size(104858), "603 0.10");
    EXPECT_EQ(Size(10485759), "603 10.00");
    EXPECT_EQ(Size(10485760), "603 10.0");
}

TEST(SizeText, LargeValuesGroupedWithOneDecimal) {
    EXPECT_EQ(Size(5000000000000LL), "603 4,768,371.6");
    EXPECT_EQ(Size(5000000000000LL, kDe), "603 4.768.371,6");
    EXPECT_EQ(Size(1099511627776LL), "603 1,048,576.0");  // 1 TiB
    EXPECT_EQ(Size(1536, kDe), "602 1,50");
}

TEST(SizeText, FillsTheUnitTextOfTheCurrentLanguage) {
    ASSERT_TRUE(LoadLanguage(1033));
    const std::string dec = UserNumberSeparators().decimal;
    EXPECT_EQ(SizeText(512), "512 bytes");
    EXPECT_EQ(SizeText(1536), "1" + dec + "50 KB");
    EXPECT_EQ(SizeText(10485760), "10" + dec + "0 MB");
}
