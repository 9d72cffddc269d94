#pragma once

#include <cstddef>

namespace tessarin {

/// Memory of the C library, for records that are moved or filled as raw bytes. Null when there
/// is none; nothing here throws. A size of 0 gives a pointer that may be freed.
[[nodiscard]] void* alloc(size_t size, bool zero);

/// Changes the size of a block and keeps its contents; a null `pointer` allocates. On failure
/// the old block stays valid.
[[nodiscard]] void* realloc(void* pointer, size_t size);

/// Gives a block of `alloc` or `realloc` back; null is tolerated.
void free(void* pointer);

} // namespace tessarin
