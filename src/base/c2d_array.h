#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "base/allocation.h"

namespace tessarin {

/// Rows of equal length in one block, cleared, reached as `array[row][column]` with no bounds
/// test. When there is not enough memory, or a count is negative, the array is not allocated:
/// the caller asks `IsAllocated`. A large array costs only the pages that are touched.
template <class T> class C2DArray {
    static_assert(std::is_trivially_copy_constructible_v<T> && std::is_trivially_destructible_v<T>,
                  "elements begin as cleared bytes");

public:
    C2DArray(int32_t rowCount, int32_t colCount);
    C2DArray(const C2DArray&) = delete;
    C2DArray& operator=(const C2DArray&) = delete;
    virtual ~C2DArray();

    bool IsAllocated() const { return rowTable != nullptr; }
    T* operator[](size_t row) { return rowTable[row]; }
    const T* operator[](size_t row) const { return rowTable[row]; }
    int32_t GetRows() const { return rows; }
    int32_t GetCols() const { return cols; }

private:
    T** rowTable = nullptr;
    T* block = nullptr;
    int32_t rows = 0;
    int32_t cols = 0;
};

template <class T> C2DArray<T>::C2DArray(int32_t rowCount, int32_t colCount) {
    if (rowCount < 0 || colCount < 0) {
        return;
    }
    const size_t numRows = static_cast<size_t>(rowCount);
    const size_t numCols = static_cast<size_t>(colCount);
    if (numRows * numCols > SIZE_MAX / sizeof(T)) {
        return;
    }
    const size_t elements = numRows * numCols;
    block = static_cast<T*>(alloc(elements * sizeof(T), true));
    if (block == nullptr) {
        return;
    }
    rowTable = static_cast<T**>(alloc(numRows * sizeof(T*), false));
    if (rowTable == nullptr) {
        tessarin::free(block);
        block = nullptr;
        return;
    }
    for (size_t row = 0; row < numRows; ++row) {
        rowTable[row] = block + row * numCols;
    }
    rows = rowCount;
    cols = colCount;
}

template <class T> C2DArray<T>::~C2DArray() {
    tessarin::free(block);
    tessarin::free(rowTable);
}

} // namespace tessarin
