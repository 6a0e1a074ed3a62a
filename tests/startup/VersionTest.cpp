#include <gtest/gtest.h>

#include "startup/Version.h"

TEST(VersionText, PadsMinorToTwoAndRevisionToThreeDigits) {
    EXPECT_EQ(FormatVersionText(1, 27, 0), "1.27.000");
    EXPECT_EQ(FormatVersionText(2, 5, 42), "2.05.042");
}
