#include "base/allocation.h"

#include <algorithm>
#include <cstdlib>

namespace tessarin {

void* alloc(size_t size, bool zero) {
    const size_t bytes = std::max<size_t>(size, 1);
    return zero ? std::calloc(bytes, 1) : std::malloc(bytes);
}

void* realloc(void* pointer, size_t size) {
    return std::realloc(pointer, std::max<size_t>(size, 1));
}

void free(void* pointer) {
    std::free(pointer);
}

} // namespace tessarin
