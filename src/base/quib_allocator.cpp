#include "base/quib_allocator.h"

#include <new>

#include "base/allocation.h"

namespace tessarin {

quib_allocator::quib_allocator(int32_t blockBytes) : blockSize(blockBytes) {
    if (blockSize > 0) {
        AppendBlock(blockSize, false); // a failure shows in the first Alloc
    }
}

quib_allocator::~quib_allocator() {
    Reset();
}

// Kept: an exact fit opens a new block, and a large record ends the block that was being filled;
// what memory a graph takes, and so how large a graph can be, follows from it.
void* quib_allocator::Alloc(int32_t size) {
    if (size < 0) {
        return nullptr;
    }
    if (size >= blockSize) {
        char* block = AppendBlock(size, true);
        if (block != nullptr) {
            used = blockSize; // the next small record opens a block of its own
        }
        return block;
    }
    if (blocks.empty() || int64_t{size} + used >= blockSize) {
        if (AppendBlock(blockSize, false) == nullptr) {
            return nullptr;
        }
        used = 0;
    }
    char* record = blocks.back() + used;
    used += size;
    return record;
}

void quib_allocator::Reset() {
    for (char* block : blocks) {
        tessarin::free(block);
    }
    blocks.clear();
    used = 0;
}

char* quib_allocator::AppendBlock(int32_t bytes, bool zero) {
    char* block = static_cast<char*>(alloc(static_cast<size_t>(bytes), zero));
    if (block == nullptr) {
        return nullptr;
    }
    try {
        blocks.push_back(block);
    } catch (const std::bad_alloc&) {
        tessarin::free(block);
        return nullptr;
    }
    return block;
}

} // namespace tessarin
