#include "support/allocation_budget.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

thread_local int allocationBudget = std::numeric_limits<int>::max();

void* AllocateWithinBudget(size_t bytes) {
    return allocationBudget-- > 0 ? std::malloc(bytes != 0 ? bytes : 1) : nullptr;
}

} // namespace

int& tessarin::test::AllocationBudget() {
    return allocationBudget;
}

// All forms without an alignment, so that each is freed by the function that belongs to it.
void* operator new(size_t bytes) {
    if (void* memory = AllocateWithinBudget(bytes)) {
        return memory;
    }
    throw std::bad_alloc();
}
void* operator new[](size_t bytes) {
    return operator new(bytes);
}
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
    return AllocateWithinBudget(bytes);
}
void* operator new[](size_t bytes, const std::nothrow_t&) noexcept {
    return AllocateWithinBudget(bytes);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    std::free(memory);
}
