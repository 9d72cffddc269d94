#pragma once

#include <cstddef>
#include <vector>

namespace tessarin {

/// Rows of single-precision values in one block, zero at first, reached as `matrix[row][column]`.
class float_matrix {
public:
    float_matrix() = default;
    float_matrix(size_t numRows, size_t numColumns)
        : values(numRows * numColumns), rows(numRows), columns(numColumns) {}

    bool empty() const { return values.empty(); }
    size_t GetRows() const { return rows; }
    size_t GetColumns() const { return columns; }
    float* operator[](size_t row) { return values.data() + row * columns; }
    const float* operator[](size_t row) const { return values.data() + row * columns; }

private:
    std::vector<float> values;
    size_t rows = 0;
    size_t columns = 0;
};

} // namespace tessarin
