#include "base/live_object.h"

#include <array>
#include <memory>

#include <gtest/gtest.h>

namespace tessarin {
namespace {

struct other_base {
    virtual ~other_base() = default;
    int value = 0;
};

struct IThing {
    virtual ~IThing() = default;
};

/// The interface is not its first base, so the addresses differ.
struct CThing : other_base, IThing {
    live_object<CThing, IThing> self{*this};
};

CThing* Known(const IThing* held) {
    return live_object<CThing, IThing>::Find(held);
}

TEST(LiveObject, IsKnownWhileItLives) {
    std::array<std::unique_ptr<CThing>, 3> things;
    for (size_t removed = 0; removed < things.size(); ++removed) {
        SCOPED_TRACE(removed);
        for (auto& thing : things) {
            thing = std::make_unique<CThing>();
        }
        const IThing* const gone = things[removed].get();
        things[removed].reset();
        EXPECT_EQ(Known(gone), nullptr);
        for (const auto& thing : things) {
            EXPECT_EQ(Known(thing.get()), thing.get());
        }
    }
}

TEST(LiveObject, DoesNotTouchWhatAHostHolds) {
    alignas(IThing) char bytes[sizeof(IThing)] = {}; // without a virtual table
    EXPECT_EQ(Known(reinterpret_cast<const IThing*>(bytes)), nullptr);
    EXPECT_EQ(Known(nullptr), nullptr);
}

} // namespace
} // namespace tessarin
