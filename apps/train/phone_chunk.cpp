#include "apps/train/phone_chunk.h"

#include "model/phoneme_alphabet.h"

namespace tessarin::training {
namespace {

/// One more than a digit of a chunk's number can be.
size_t ChunkBase() {
    return PhonemeAlphabet().size() + 1;
}

} // namespace

phone_chunk MakeChunk(std::span<const size_t> phones) {
    size_t number = 0;
    for (const size_t phone : phones) {
        number = number * ChunkBase() + phone + 1;
    }
    return static_cast<phone_chunk>(number);
}

size_t CountPhones(phone_chunk chunk) {
    return (chunk > 0 ? 1 : 0) + (chunk >= ChunkBase() ? 1 : 0);
}

size_t CountChunks() {
    return ChunkBase() * ChunkBase();
}

std::string ChunkText(phone_chunk chunk) {
    std::string text;
    for (size_t rest = chunk; rest > 0; rest /= ChunkBase()) {
        text.insert(0, PhonemeAlphabet()[rest % ChunkBase() - 1].label);
    }
    return text.empty() ? "_" : text;
}

} // namespace tessarin::training
