#include "base/inflater.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <zlib.h>

namespace tessarin {
namespace {

using bytes = std::vector<uint8_t>;

bytes Deflated(const bytes& plain, int level, int strategy) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, level, Z_DEFLATED, MAX_WBITS, 8, strategy), Z_OK);
    bytes packed(deflateBound(&stream, static_cast<uLong>(plain.size())));
    stream.next_in = const_cast<Bytef*>(plain.data());
    stream.avail_in = static_cast<uInt>(plain.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

std::optional<bytes> Inflated(const bytes& packed, size_t room) {
    bytes plain(room);
    const std::optional<size_t> size = Inflater(packed, plain).Run();
    if (!size) {
        return std::nullopt;
    }
    plain.resize(*size);
    return plain;
}

bytes Words(size_t size) {
    std::minstd_rand random(7);
    bytes text;
    while (text.size() < size) {
        const std::string word = "word" + std::to_string(random() % 300 * (random() % 300));
        text.insert(text.end(), word.begin(), word.end());
    }
    return text;
}

TEST(Inflater, UnpacksWhatZlibPacks) {
    bytes noise(70000);
    std::minstd_rand random(3);
    for (uint8_t& each : noise) {
        each = static_cast<uint8_t>(random() >> 8);
    }
    for (const bytes& plain : {bytes(), bytes{65}, Words(200000), noise, bytes(100000, 7)}) {
        for (const int level : {0, 1, 9}) {
            for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_HUFFMAN_ONLY}) {
                SCOPED_TRACE(testing::Message() << plain.size() << " " << level << strategy);
                bytes packed = Deflated(plain, level, strategy);
                EXPECT_EQ(Inflated(packed, plain.size()), plain);
                EXPECT_EQ(Inflated(packed, plain.size() + 9), plain);
                if (!plain.empty()) {
                    EXPECT_EQ(Inflated(packed, plain.size() - 1), std::nullopt);
                }
                packed.insert(packed.end(), 99, uint8_t{0x5A});
                EXPECT_EQ(Inflated(packed, plain.size()), plain) << "with filler after it";
            }
        }
    }
}

TEST(Inflater, RefusesWhatIsCutOrDamaged) {
    const bytes plain = Words(3000);
    for (const int strategy : {Z_DEFAULT_STRATEGY, Z_FIXED}) {
        const bytes packed = Deflated(plain, 9, strategy);
        for (size_t size = 0; size < packed.size(); ++size) {
            EXPECT_EQ(Inflated({packed.begin(), packed.begin() + static_cast<ptrdiff_t>(size)},
                               plain.size()),
                      std::nullopt)
                << size;
            for (const int bit : {0, 5}) {
                bytes damaged = packed;
                damaged[size] ^= static_cast<uint8_t>(1 << bit);
                const auto unpacked = Inflated(damaged, plain.size());
                EXPECT_TRUE(!unpacked || unpacked == plain) << size << " " << bit;
            }
        }
    }
}

} // namespace
} // namespace tessarin
