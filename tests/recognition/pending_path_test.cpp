#include "recognition/live/pending_path.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_budget.h"

namespace tessarin::test {
namespace {

using testing::ElementsAre;

/// Calls `work` with room for ever more allocations until it ends. Returns how often it ran out.
template <class Work> int TimesOutOfMemory(Work&& work) {
    for (int failures = 0;; ++failures) {
        AllocationBudget() = failures;
        try {
            work();
            AllocationBudget() = std::numeric_limits<int>::max();
            return failures;
        } catch (const std::bad_alloc&) {
            AllocationBudget() = std::numeric_limits<int>::max();
        }
    }
}

TEST(PendingPath, IsTracedBackAgainAtEachFlush) {
    pending_path pending;
    const auto push = [&](const std::vector<uint8_t>& cells, uint8_t best) {
        pending_path::row row = pending.TakeRow(3);
        EXPECT_THAT(row, ElementsAre(0, 0, 0)); // used ones too
        std::copy(cells.begin(), cells.end(), row.begin());
        pending.Push(row, best, best);
    };
    std::vector<uint8_t> path;
    std::vector<float> energies;
    push({0, 0, 0}, 0);
    push({0, 0, 1}, 1);
    push({2, 1, 2}, 2);
    pending.TakePath(1, path, energies);
    EXPECT_THAT(path, ElementsAre(1)); // row 1 at (row 2 at the best of the last)
    EXPECT_THAT(energies, ElementsAre(0));
    EXPECT_EQ(pending.Size(), 2u);
    push({1, 1, 1}, 1); // changes what the rest was
    pending.TakePath(3, path, energies);
    EXPECT_THAT(path, ElementsAre(1, 1, 1));
    EXPECT_THAT(energies, ElementsAre(1, 2, 1));
    pending.TakePath(0, path, energies);
    EXPECT_THAT(path, ElementsAre());
}

TEST(PendingPath, LosesNothingWhenMemoryEnds) {
    constexpr uint8_t kObservations = 100; // more than a block of a queue
    pending_path pending;
    int failures = 0;
    for (uint8_t t = 0; t < kObservations; ++t) {
        failures += TimesOutOfMemory([&] {
            pending_path::row row = pending.TakeRow(kObservations);
            row[t] = static_cast<uint8_t>(t - 1); // a chain through the states in their order
            pending.Push(std::move(row), t, t);
        });
        ASSERT_EQ(pending.Size(), t + 1u);
    }
    EXPECT_GE(failures, kObservations);

    std::vector<uint8_t> whole;
    for (size_t left = kObservations; left > 0; left -= 50) {
        std::vector<uint8_t> path;
        std::vector<float> energies;
        EXPECT_GT(TimesOutOfMemory([&] { pending.TakePath(50, path, energies); }), 0);
        ASSERT_EQ(pending.Size(), left - 50);
        EXPECT_EQ(energies.front(), static_cast<float>(whole.size()));
        whole.insert(whole.end(), path.begin(), path.end());
    }
    ASSERT_EQ(whole.size(), kObservations);
    for (uint8_t t = 0; t < kObservations; ++t) {
        EXPECT_EQ(whole[t], t);
    }
}

} // namespace
} // namespace tessarin::test
