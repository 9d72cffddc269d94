#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tessarin::training {

/// The phonemes of one letter, none to two, as a number: none is 0, so that it is the first choice
/// among equals.
using phone_chunk = uint16_t;

inline constexpr size_t kMaxChunkPhones = 2;

/// The chunk of the phonemes, at most kMaxChunkPhones.
phone_chunk MakeChunk(std::span<const size_t> phones);
/// How many phonemes the chunk has.
size_t CountPhones(phone_chunk chunk);
/// Above all chunks.
size_t CountChunks();
/// As a leaf of a decision tree says it: `_` for none.
std::string ChunkText(phone_chunk chunk);

} // namespace tessarin::training
