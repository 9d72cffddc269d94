#include "mouth/key_reduction.h"

#include <algorithm>
#include <limits>

namespace tessarin {

namespace {

/// Bounds the time for a long track that hardly bends.
constexpr size_t kMaxReach = 1024;

/// Lines that are exact but for rounding are within a tolerance of 0.
constexpr double kRounding = 1e-9;

/// Times of which an end of a line may be chosen, and the columns that change at all.
struct sparse_track {
    std::vector<uint32_t> rows;
    std::vector<double> timesMs;
    std::vector<double> weights; ///< a row of `width` for each
    size_t width = 0;
};

std::vector<size_t> ChangingColumns(std::span<const double> weights, size_t width) {
    std::vector<size_t> columns;
    for (size_t column = 0; column < width; ++column) {
        for (size_t place = column; place < weights.size(); place += width) {
            if (weights[place] != weights[column]) {
                columns.push_back(column);
                break;
            }
        }
    }
    return columns;
}

/// Leaves out the inside of stretches in which nothing changes: a line that is near to both ends of
/// such a stretch is as near to what is between them.
sparse_track LeaveOutStillStretches(std::span<const int32_t> timesMs,
                                    std::span<const double> weights, size_t width) {
    const std::vector<size_t> columns = ChangingColumns(weights, width);
    const auto areSame = [&](size_t a, size_t b) {
        return std::ranges::all_of(columns, [&](size_t column) {
            return weights[a * width + column] == weights[b * width + column];
        });
    };
    sparse_track track;
    track.width = columns.size();
    for (size_t row = 0; row < timesMs.size(); ++row) {
        if (row > 0 && row + 1 < timesMs.size() && areSame(row - 1, row) && areSame(row, row + 1)) {
            continue;
        }
        track.rows.push_back(static_cast<uint32_t>(row));
        track.timesMs.push_back(timesMs[row]);
        for (const size_t column : columns) {
            track.weights.push_back(weights[row * width + column]);
        }
    }
    return track;
}

/// The slopes with which a line from one row passes all rows that it was narrowed by.
struct cone {
    double low = -std::numeric_limits<double>::infinity();
    double high = std::numeric_limits<double>::infinity();
};

/// Imai and Iri, "Polygonal approximations of a curve: formulations and algorithms" (1988): rows
/// are nodes, lines that stay within the tolerance are edges, and the fewest keys are the shortest
/// path. For functions of time, whether a line does is known from a cone of slopes that narrows row
/// by row.
class ShortestPath {
public:
    ShortestPath(const sparse_track& whole, double distance)
        : track(whole), tolerance(distance + kRounding), cones(whole.width),
          steps(whole.rows.size(), std::numeric_limits<uint32_t>::max()),
          previous(whole.rows.size()) {}

    std::vector<uint32_t> Find() {
        steps.front() = 0;
        for (size_t from = 0; from + 1 < track.rows.size(); ++from) {
            FollowLinesFrom(from);
        }
        std::vector<uint32_t> kept;
        for (size_t at = track.rows.size() - 1; at > 0; at = previous[at]) {
            kept.push_back(track.rows[at]);
        }
        kept.push_back(track.rows.front());
        std::reverse(kept.begin(), kept.end());
        return kept;
    }

private:
    void FollowLinesFrom(size_t from) {
        std::ranges::fill(cones, cone{});
        const size_t end = std::min(track.rows.size(), from + 1 + kMaxReach);
        bool isOpen = true;
        for (size_t to = from + 1; to < end && isOpen; ++to) {
            const double ms = track.timesMs[to] - track.timesMs[from];
            bool fits = true;
            for (size_t i = 0; i < track.width; ++i) {
                const double rise =
                    track.weights[to * track.width + i] - track.weights[from * track.width + i];
                cone& slopes = cones[i];
                fits = fits && rise / ms >= slopes.low && rise / ms <= slopes.high;
                slopes.low = std::max(slopes.low, (rise - tolerance) / ms);
                slopes.high = std::min(slopes.high, (rise + tolerance) / ms);
                isOpen = isOpen && slopes.low <= slopes.high;
            }
            if (fits && steps[from] + 1 < steps[to]) {
                steps[to] = steps[from] + 1;
                previous[to] = from;
            }
        }
    }

    const sparse_track& track;
    double tolerance;
    std::vector<cone> cones;
    std::vector<uint32_t> steps; ///< lines on the shortest path to a row
    std::vector<size_t> previous;
};

} // namespace

std::vector<uint32_t> ReduceKeys(std::span<const int32_t> timesMs, std::span<const double> weights,
                                 size_t width, double tolerance) {
    if (timesMs.empty()) {
        return {};
    }
    const sparse_track track = LeaveOutStillStretches(timesMs, weights, width);
    return ShortestPath(track, tolerance).Find();
}

} // namespace tessarin
