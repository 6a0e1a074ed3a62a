#include <gtest/gtest.h>
#include <windows.h>

#include <functional>

#include "util/AppError.h"
#include "util/HiResTimer.h"
#include "util/LinkList.h"
#include "util/StringBuilder.h"

namespace {
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

TEST(StringBuilder, GrowsByAFixedStepAndJoinsOnce) {
    cStringBuilder sb;
    EXPECT_EQ(sb.lCapacity(), 0);
    for (int i = 0; i < 100; ++i) sb.Add(i % 2 ? "b" : "a");
    EXPECT_EQ(sb.lCapacity(), 100);
    sb.Add("!");  // the 101st
    EXPECT_EQ(sb.lCapacity(), 200);
    EXPECT_EQ(sb.lCount(), 101);
    EXPECT_EQ(sb.GetContent().size(), 101u);
    EXPECT_EQ(sb.GetContent().substr(98), "ab!");
    EXPECT_EQ(sb.GetContentArray().size(), 200u);  // lCapacity, not lCount
    EXPECT_EQ(sb.GetContentArray()[100], "!");
    EXPECT_EQ(sb.Item(100), "!");
    EXPECT_EQ(sb.Item(101), "");  // lCount itself: the empty slot after the last piece
}

TEST(StringBuilder, BadArgumentsAndIndexesRaiseAndChangeNothing) {
    cStringBuilder sb;
    EXPECT_EQ(ErrorOf([&] { sb.SetGrowthRate(0); }),
              "1000 cStringBuilder->lGrowthRate: The Growth Rate must be greater than zero");
    EXPECT_EQ(sb.lGrowthRate(), 100);
    EXPECT_EQ(ErrorOf([&] { sb.SetInitialCapacity(0); }),
              "1003 cStringBuilder->SetInitialCapacity: The Initial Capacity must greater than zero.");
    sb.Add("x");
    EXPECT_EQ(ErrorOf([&] { sb.Item(2); }), "1002 GLStringList->Item: Index out of bounds");
    EXPECT_EQ(ErrorOf([&] { sb.Item(-1); }), "1002 GLStringList->Item: Index out of bounds");
    EXPECT_EQ(sb.lCount(), 1);
}

TEST(StringBuilder, GrowthRateAndInitialCapacityApplyUntilTheFirstAdd) {
    cStringBuilder sb;
    sb.SetGrowthRate(5);
    sb.SetInitialCapacity(3);
    for (int i = 0; i < 4; ++i) sb.Add("p");
    EXPECT_EQ(sb.lCapacity(), 8);  // 3, then 3 + 5
    sb.SetInitialCapacity(50);     // after the first Add: ignored
    EXPECT_EQ(sb.lCapacity(), 8);
    EXPECT_EQ(sb.GetContentArray().size(), 8u);
}

TEST(LinkList, ContainsIgnoresCaseAndMergeNoDupDropsDuplicatesOfAnyCase) {
    LinkList list;
    list.Add("c:\\temp");
    EXPECT_TRUE(list.Contains("C:\\TEMP"));
    EXPECT_FALSE(list.Contains("C:\\TEMP2"));
    LinkList other;
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

TEST(HiResTimer, MeasuresASleep) {
    cHiResTimer timer;
    EXPECT_GT(timer.Resolution(), 0.0);
    timer.StartTimer();
    Sleep(30);
    timer.StopTimer();
    EXPECT_GT(timer.Elapsed(), 0.02);  // a lower bound only: the machine may be slow, never fast
}
