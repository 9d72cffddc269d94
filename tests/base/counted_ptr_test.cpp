#include "base/counted_ptr.h"

#include <gtest/gtest.h>

#include "base/ref_counter.h"

namespace tessarin {

namespace {

/// Tells when it goes.
class Watched : public CRefCounter {
public:
    explicit Watched(bool& flag) : gone(flag) {}
    ~Watched() override { gone = true; }

private:
    bool& gone;
};

TEST(CRefCounter, DestroysItselfAtZero) {
    bool gone = false;
    CRefCounter* object = new Watched(gone);
    EXPECT_EQ(object->AddRef(), 2);
    EXPECT_EQ(object->Release(), 1);
    EXPECT_FALSE(gone);
    EXPECT_EQ(object->Release(), 0);
    EXPECT_TRUE(gone);
}

TEST(counted_ptr, HoldsExactlyOneReferenceEach) {
    bool gone = false;
    auto first = counted_ptr<Watched>::Adopt(new Watched(gone));
    {
        const counted_ptr<CRefCounter> base = first;
        counted_ptr<Watched> copy = first;
        const auto shared = counted_ptr<Watched>::Share(first.get());
        copy = shared;
        copy = counted_ptr<Watched>(copy);
        copy = std::move(copy);
        EXPECT_EQ(first->AddRef(), 5);
        EXPECT_EQ(first->Release(), 4);
    }
    counted_ptr<Watched> moved = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_EQ(moved->AddRef(), 2);
    Watched* loose = moved.release();
    EXPECT_EQ(loose->Release(), 1);
    moved = counted_ptr<Watched>::Adopt(loose);
    EXPECT_FALSE(gone);
    moved = nullptr;
    EXPECT_TRUE(gone);
}

} // namespace

} // namespace tessarin
