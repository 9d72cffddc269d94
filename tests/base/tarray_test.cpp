#include "base/tarray.h"

#include <climits>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <vector>

namespace tessarin {

namespace {

using testing::ElementsAre;

void Fill(TArray<int>& array, std::initializer_list<int> values) {
    for (const int value : values) {
        ASSERT_EQ(array.Add(value), 1);
    }
}

std::vector<int> Contents(const TArray<int>& array) {
    return {array.begin(), array.end()};
}

TEST(TArray, HasThePublishedLayout) {
    static_assert(sizeof(TArray<int>) == 32);
    TArray<int> array(7);
    Fill(array, {1, 2, 3});
    int* data = nullptr;
    int32_t counts[3];
    const char* raw = reinterpret_cast<const char*>(&array);
    std::memcpy(&data, raw + 8, sizeof(data));
    std::memcpy(counts, raw + 16, sizeof(counts));
    EXPECT_EQ(data, array.begin());
    EXPECT_THAT(counts, ElementsAre(3, 7, 7));
}

TEST(TArray, ReservesWholeSteps) {
    const std::vector<std::vector<int32_t>> cases = {
        // step, size, capacity
        {4, 0, 4},   {4, 1, 4},    {4, 4, 4},    {4, 5, 8}, {4, 8, 8}, {4, 9, 12},
        {30, 0, 30}, {30, 30, 30}, {30, 31, 60}, {1, 0, 1}, {0, 5, 5}, {-3, 5, 5},
    };
    for (const std::vector<int32_t>& row : cases) {
        SCOPED_TRACE(testing::PrintToString(row));
        TArray<int> array(row[0]);
        EXPECT_EQ(array.Reserve(row[1]), 1);
        EXPECT_EQ(array.GetCapacity(), row[2]);
    }
}

TEST(TArray, GrowsByItsStepAndNeverShrinks) {
    TArray<int> array;
    std::vector<int32_t> capacities;
    for (int i = 0; i < 13; ++i) {
        array.Add(i);
        if (capacities.empty() || capacities.back() != array.GetCapacity()) {
            capacities.push_back(array.GetCapacity());
        }
    }
    EXPECT_THAT(capacities, ElementsAre(4, 8, 12, 16));
    EXPECT_EQ(array.Reserve(1), 1);
    EXPECT_EQ(array.GetCapacity(), 16);
    EXPECT_THAT(Contents(array), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
}

/// Counts how often the array asks for room.
class WatchedArray : public TArray<int> {
public:
    int16_t Reserve(int32_t size) override {
        requests.push_back(size);
        return TArray<int>::Reserve(size);
    }
    std::vector<int32_t> requests;
};

TEST(TArray, AsksForRoomOneElementEarly) {
    WatchedArray array;
    Fill(array, {1, 2, 3, 4, 5});
    EXPECT_THAT(array.requests, ElementsAre(1, 4, 5)) << "with one place left, too";
}

TEST(TArray, SetSizeDropsContentsAndSetsTheStep) {
    TArray<int> array;
    Fill(array, {1, 2, 3});
    EXPECT_EQ(array.SetSize(0, 0), 1);
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(array.GetCapacity(), 1);
    EXPECT_EQ(array.SetSize(6, 0), 1);
    EXPECT_EQ(array.GetSize(), 6);
    EXPECT_EQ(array.GetCapacity(), 6);
    EXPECT_EQ(array.Add(1), 1);
    EXPECT_EQ(array.GetCapacity(), 12) << "the step is the first size";
    EXPECT_EQ(array.SetSize(5, 1024), 1);
    EXPECT_EQ(array.GetCapacity(), 1024);
}

TEST(TArray, SizesThatCannotBeLeaveItUnchanged) {
    TArray<int> array;
    Fill(array, {1, 2, 3});
    EXPECT_EQ(array.SetSize(-1, 4), 0);
    EXPECT_EQ(array.SetSize(INT_MAX, 1000), 0) << "no whole number of steps fits";
    EXPECT_EQ(array.Reserve(-1), 0);
    EXPECT_EQ(array.Reserve(INT_MAX), 0);
    EXPECT_THAT(Contents(array), ElementsAre(1, 2, 3));
    EXPECT_EQ(array.Add(4), 1);
    EXPECT_EQ(array.GetCapacity(), 4) << "the step is the old one";
}

TEST(TArray, ExhaustedMemoryIsAZero) {
    struct megabyte {
        char room[1 << 20];
    };
    TArray<megabyte> array(1);
    EXPECT_EQ(array.Reserve(INT_MAX), 0);
    EXPECT_EQ(array.GetCapacity(), 0);
    EXPECT_EQ(array.SetSize(INT_MAX, 1), 0);
    EXPECT_EQ(array.GetSize(), 0);
}

TEST(TArray, InsertsAndRemovesAtAnyPlace) {
    TArray<int> array;
    Fill(array, {1, 2, 3});
    EXPECT_EQ(array.InsertAt(1, 10), 1);
    EXPECT_EQ(array.InsertAt(-5, 20), 1);
    EXPECT_EQ(array.InsertAt(99, 30), 1);
    EXPECT_THAT(Contents(array), ElementsAre(20, 1, 10, 2, 3, 30));
    EXPECT_EQ(array.RemoveAt(6), 0);
    EXPECT_EQ(array.RemoveAt(-1), 0);
    EXPECT_EQ(array.RemoveAt(5), 1);
    EXPECT_EQ(array.RemoveAt(0), 1);
    EXPECT_EQ(array.RemoveAt(1), 1);
    EXPECT_THAT(Contents(array), ElementsAre(1, 2, 3));
    EXPECT_EQ(array.GetAt(3), nullptr);
    EXPECT_EQ(array.GetAt(-1), nullptr);
    ASSERT_NE(array.GetAt(2), nullptr);
    EXPECT_EQ(*array.GetAt(2), 3);
}

TEST(TArray, InsertsAnElementOfItsOwn) {
    TArray<int> array;
    Fill(array, {1, 2, 3, 4});
    EXPECT_EQ(array.InsertAt(0, array[3]), 1) << "growth moves the element away";
    EXPECT_EQ(array.InsertAt(0, array[2]), 1) << "the shifted tail overwrites it";
    EXPECT_THAT(Contents(array), ElementsAre(2, 4, 1, 2, 3, 4));
}

} // namespace

} // namespace tessarin
