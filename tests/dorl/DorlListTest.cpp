#include <dorl/DorlList.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<int> Forward(const CDorlList<int>& list)
{
    std::vector<int> values;
    for (DORLPOSITION at = list.GetHeadPosition(); at;)
        values.push_back(list.GetNext(at));
    return values;
}

std::vector<int> Backward(const CDorlList<int>& list)
{
    std::vector<int> values;
    for (DORLPOSITION at = list.GetTailPosition(); at;)
        values.push_back(list.GetPrev(at));
    return values;
}

} // namespace

TEST(DorlList, KeepsBothDirectionsConsistentThroughEdits)
{
    CDorlList<int> list;
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.RemoveHead(), 0);
    EXPECT_EQ(list.GetTail(), 0);

    DORLPOSITION two = list.AddTail(2);
    list.AddTail(3);
    list.AddHead(1);
    list.AddTail(2);
    EXPECT_EQ(Forward(list), (std::vector<int>{1, 2, 3, 2}));
    EXPECT_EQ(Backward(list), (std::vector<int>{2, 3, 2, 1}));
    EXPECT_EQ(list.GetCount(), 4);

    EXPECT_EQ(list.Find(2), two);
    DORLPOSITION secondTwo = list.Find(2, two);
    EXPECT_EQ(secondTwo, list.GetTailPosition());
    EXPECT_EQ(list.Find(2, secondTwo), nullptr);
    EXPECT_EQ(list.FindIndex(2), list.Find(3));
    EXPECT_EQ(list.FindIndex(4), nullptr);
    EXPECT_EQ(list.FindIndex(-1), nullptr);

    list.SetAt(secondTwo, 4);
    list.RemoveAt(two);
    EXPECT_EQ(Forward(list), (std::vector<int>{1, 3, 4}));
    EXPECT_EQ(Backward(list), (std::vector<int>{4, 3, 1}));

    EXPECT_EQ(list.RemoveTail(), 4);
    EXPECT_EQ(list.RemoveHead(), 1);
    EXPECT_EQ(list.GetHead(), 3);
    EXPECT_EQ(list.GetTail(), 3);
    EXPECT_EQ(list.RemoveHead(), 3);
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(list.GetTailPosition(), nullptr);

    list.AddTail(7);
    list.AddHead(6);
    list.RemoveAll();
    EXPECT_EQ(list.GetCount(), 0);
    DORLPOSITION only = list.AddTail(8);
    EXPECT_EQ(only, list.GetHeadPosition());
    EXPECT_EQ(only, list.GetTailPosition());
}
