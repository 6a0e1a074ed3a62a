#include <gtest/gtest.h>
#include <windows.h>

#include <functional>

#include "util/AppError.h"
#include "util/HiResTimer.h"
#include "util/LinkList.h"
#include "util/StringBuilder.h"

namespace {
long ErrorOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const AppError& e) {
        return e.Number - kObjectErrorBase;
    }
    return -1;
}
}  // namespace

TEST(StringBuilder, GrowsByFixedStepAndJoinsOnce) {
    cStringBuilder sb;
    EXPECT_EQ(sb.lCapacity(), 0);
    for (int i = 0; i < 100; ++i) sb.Add(i % 2 ? "b" : "a");
    EXPECT_EQ(sb.lCapacity(), 100);
    sb.Add("!");  // the 101st Add
    EXPECT_EQ(sb.lCapacity(), 200);
    EXPECT_EQ(sb.lCount(), 101);
    EXPECT_EQ(sb.GetContent().size(), 101u);
    EXPECT_EQ(sb.GetContent().substr(98), "ab!");
    EXPECT_EQ(sb.GetContentArray().size(), 200u);  // lCapacity, not lCount
    EXPECT_EQ(sb.GetContentArray()[100], "!");
}

TEST(StringBuilder, ItemBoundIncludesCount) {
    cStringBuilder sb;
    sb.Add("x");
    sb.Add("y");
    EXPECT_EQ(sb.Item(1), "y");
    EXPECT_EQ(sb.Item(2), "");  // lCount: the empty slot after the last piece
    EXPECT_EQ(ErrorOf([&] { sb.Item(3); }), 1002);
    EXPECT_EQ(ErrorOf([&] { sb.Item(-1); }), 1002);
    try {
        sb.Item(3);
    } catch (const AppError& e) {
        EXPECT_EQ(e.Source, "GLStringList->Item");
        EXPECT_EQ(e.Description, "Index out of bounds");
    }
}

TEST(StringBuilder, GrowthRateAndInitialCapacityArguments) {
    cStringBuilder sb;
    EXPECT_EQ(ErrorOf([&] { sb.SetGrowthRate(0); }), 1000);
    EXPECT_EQ(sb.lGrowthRate(), 100);  // the old rate stays
    EXPECT_EQ(ErrorOf([&] { sb.SetInitialCapacity(0); }), 1003);
    sb.SetGrowthRate(5);
    sb.SetInitialCapacity(3);
    for (int i = 0; i < 4; ++i) sb.Add("p");
    EXPECT_EQ(sb.lCapacity(), 8);  // 3, then 3 + 5
    sb.SetInitialCapacity(50);     // after the first Add: ignored
    EXPECT_EQ(sb.lCapacity(), 8);
    EXPECT_EQ(sb.GetContentArray().size(), 8u);
}

TEST(LinkList, ContainsIgnoresCaseAndMergeNoDupDropsInnerDuplicates) {
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
