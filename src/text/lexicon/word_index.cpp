#include "text/lexicon/word_index.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <random>

namespace tessarin {
namespace {

constexpr uint64_t kBytes01 = 0x0101010101010101;
constexpr uint64_t kHighBits = 0x80 * kBytes01;

/// Eight bytes at once with upper-case ASCII letters made lower case.
uint64_t FoldCase(uint64_t bytes) {
    const uint64_t low = bytes & ~kHighBits;
    const uint64_t fromA = low + (0x80 - 'A') * kBytes01;
    const uint64_t pastZ = low + (0x80 - 'Z' - 1) * kBytes01;
    const uint64_t isUpper = fromA & ~pastZ & ~bytes & kHighBits;
    return bytes | (isUpper >> 2);
}

/// Up to eight bytes from `text` on, filled up with zeros.
uint64_t LoadBytes(const char* text, size_t count) {
    uint64_t bytes = 0;
    if (count != 0) {
        std::memcpy(&bytes, text, count);
    }
    return bytes;
}

/// Spreads every bit over all (D. Stafford's variant 13 of the finalizer of A. Appleby's hash).
uint64_t Mix(uint64_t value) {
    value ^= value >> 30;
    value *= 0xBF58476D1CE4E5B9;
    value ^= value >> 27;
    value *= 0x94D049BB133111EB;
    return value ^ (value >> 31);
}

/// Another in each process, so that no file can be made whose words all meet in one slot.
uint64_t Key() {
    static const uint64_t key = [] {
        std::random_device source;
        return uint64_t{source()} << 32 | source();
    }();
    return key;
}

/// Equal for words that are the same.
uint32_t HashWord(std::string_view word) {
    uint64_t hash = Key() + word.size();
    const char* place = word.data();
    size_t left = word.size();
    for (; left > sizeof(uint64_t); left -= sizeof(uint64_t), place += sizeof(uint64_t)) {
        hash = Mix(hash ^ FoldCase(LoadBytes(place, sizeof(uint64_t))));
    }
    return static_cast<uint32_t>(Mix(hash ^ FoldCase(LoadBytes(place, left))) >> 32);
}

/// The bits of a hash that do not choose the slot, unless there are more than 2^24 slots.
uint8_t TagOf(uint32_t hash) {
    return static_cast<uint8_t>(hash >> 24);
}

} // namespace

bool IsSameWord(std::string_view first, std::string_view second) {
    if (first.size() != second.size()) {
        return false;
    }
    for (size_t place = 0; place < first.size(); place += sizeof(uint64_t)) {
        const size_t count = std::min(first.size() - place, sizeof(uint64_t));
        if (FoldCase(LoadBytes(first.data() + place, count)) !=
            FoldCase(LoadBytes(second.data() + place, count))) {
            return false;
        }
    }
    return true;
}

void word_index::Build(std::span<const CPronunciationRec> newEntries) {
    entries = newEntries;
    const size_t numSlots = std::bit_ceil(entries.size() + entries.size() / 2 + 1);
    slots.assign(numSlots, 0);
    tags.assign(numSlots, 0);
    for (uint32_t number = 0; number < entries.size(); ++number) {
        const std::string_view word = WordOf(entries[number]);
        if (number > 0 && IsSameWord(word, WordOf(entries[number - 1]))) {
            continue; // a variant; the word is known
        }
        const uint32_t hash = HashWord(word);
        const size_t place = FindSlot(word, hash);
        if (slots[place] == 0) {
            slots[place] = number + 1;
            tags[place] = TagOf(hash);
        }
    }
}

uint32_t word_index::Find(std::string_view word) const {
    return slots.empty() ? kNone : slots[FindSlot(word, HashWord(word))] - 1;
}

/// The slot that holds the word, or the free one where it belongs.
size_t word_index::FindSlot(std::string_view word, uint32_t hash) const {
    const size_t mask = slots.size() - 1;
    const uint8_t tag = TagOf(hash);
    size_t place = hash & mask;
    while (slots[place] != 0 &&
           (tags[place] != tag || !IsSameWord(word, WordOf(entries[slots[place] - 1])))) {
        place = (place + 1) & mask;
    }
    return place;
}

} // namespace tessarin
