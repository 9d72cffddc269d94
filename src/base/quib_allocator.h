#pragma once

#include <cstdint>
#include <vector>

namespace tessarin {

/// Bump allocator for search graphs: very many small records of different sizes, given back only
/// as a whole. Records are packed end to end without alignment, so a record keeps to 4-byte
/// fields and to a size that is a multiple of 4. Never throws.
class quib_allocator {
public:
    /// Allocates the first block. `blockBytes` is usually 32768.
    explicit quib_allocator(int32_t blockBytes);
    quib_allocator(const quib_allocator&) = delete;
    quib_allocator& operator=(const quib_allocator&) = delete;
    virtual ~quib_allocator();

    /// Memory for one record, with unset contents unless it is as large as a block or larger:
    /// such a record gets a cleared block to itself. Null when `size` is negative or memory is
    /// exhausted.
    [[nodiscard]] void* Alloc(int32_t size);

    /// Frees every block, the first too.
    void Reset();

private:
    char* AppendBlock(int32_t bytes, bool zero);

    std::vector<char*> blocks;
    int32_t blockSize;
    int32_t used = 0;
};

} // namespace tessarin
