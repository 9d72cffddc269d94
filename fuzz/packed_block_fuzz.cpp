#include "base/packed_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

using namespace tessarin;

namespace {

void CheckRoundTrip(std::span<const uint8_t> plain) {
    uint32_t packedSize = 0;
    const auto packed = PackBytes(plain, &packedSize);
    uint32_t size = 0;
    const auto again = UnpackBytes({packed.get(), packedSize}, &size);
    if (again == nullptr || !std::ranges::equal(plain, std::span(again.get(), size))) {
        std::abort();
    }
}

} // namespace

// A packed block from outside, and the same bytes packed: what goes in comes out.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    uint32_t plainSize = 0;
    const auto plain = UnpackBytes({data, size}, &plainSize);
    if (plain != nullptr) {
        CheckRoundTrip({plain.get(), plainSize});
    }
    CheckRoundTrip({data, size});
    return 0;
}
