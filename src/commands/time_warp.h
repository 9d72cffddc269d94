#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tessarin {

/// What stands for "nothing to compare": the cost of a cell outside the table, and the distance of
/// two recordings that do not go together.
inline constexpr float kNoWarpDistance = 0x1.555554p+127f; // the bits 0x7F2AAAAA

/// The Euclidean distance of the first `count` values, in single precision.
float FrameDistance(const float* a, const float* b, int32_t count);

/// Dynamic time warping of two recordings, a row of the table for each frame of one, a column for
/// each frame of the other (Sakoe and Chiba, "Dynamic programming algorithm optimization for spoken
/// word recognition", 1978, without slope weights). A row needs only the one before it, so no table
/// is kept: each cell carries the length of its own path from (0, 0) along.
class time_warp {
public:
    /// Adds a row. `distances` has the distance of the new frame to each column's frame; all rows
    /// are equally long, and at least 1.
    void AddRow(std::span<const float> distances);
    /// Forgets all rows.
    void Reset();

    uint32_t Rows() const { return rows; }

    /// The column at which the last row is cheapest: the first such, and the last column when all
    /// cost kNoWarpDistance or more.
    size_t CheapestColumn() const;
    /// The cost of the whole of both recordings, in units of the mean distance of their frames and
    /// for each step of the path to the cell of the last row in `pathColumn`. So it can be compared
    /// between recordings of any length and level. Infinite or not a number when there is no step
    /// or no distance at all.
    float Distance(size_t pathColumn) const;

private:
    struct cell {
        float cost;
        uint32_t steps; // from (0, 0)
    };

    std::vector<cell> lastRow;
    uint32_t rows = 0;
    float distanceSum = 0.0f;
};

} // namespace tessarin
