#include "articulation/markers/phn_marker_list.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace tessarin {
namespace {

/// Shorter than this a phoneme beside a seam is a sliver that its neighbour takes over.
constexpr int32_t kSliverMs = 30;

void MoveStart(phn_marker& marker, int32_t ms) {
    const bool changed = marker.changed;
    marker.set_start(ms);
    marker.changed = changed;
}

void MoveEnd(phn_marker& marker, int32_t ms) {
    const bool changed = marker.changed;
    marker.set_end(ms);
    marker.changed = changed;
}

/// Whether the marker at the seam takes over its neighbour.
bool Absorbs(const phn_marker& marker, const phn_marker& neighbour) {
    return marker.label == neighbour.label || int64_t{neighbour.end} - neighbour.start < kSliverMs;
}

} // namespace

void phn_marker_list::remove_range(int32_t fromMs, int32_t toMs) {
    if (fromMs == -1 && toMs == -1) {
        clear();
    } else {
        cut_range(fromMs, toMs);
    }
}

void phn_marker_list::cut_range(int32_t fromMs, int32_t toMs) {
    if (toMs < fromMs) {
        return;
    }
    std::vector<phn_marker> kept;
    kept.reserve(size() + 1);
    for (phn_marker& marker : *this) {
        const bool reached = marker.end >= fromMs && marker.start <= toMs;
        const bool beginsBefore = marker.start < fromMs;
        const bool endsBehind = marker.end > toMs;
        if (!reached) {
            kept.push_back(std::move(marker));
        } else if (beginsBefore && endsBehind) {
            phn_marker rest = marker;
            rest.marker_id = NextMarkerId();
            MoveEnd(marker, fromMs);
            MoveStart(rest, toMs);
            kept.push_back(std::move(marker));
            kept.push_back(std::move(rest));
        } else if (endsBehind) {
            MoveStart(marker, toMs);
            kept.push_back(std::move(marker));
        } else if (beginsBefore) {
            MoveEnd(marker, fromMs);
            kept.push_back(std::move(marker));
        }
    }
    assign(std::make_move_iterator(kept.begin()), std::make_move_iterator(kept.end()));
}

void phn_marker_list::merge_in(const phn_marker_list& other) {
    for (const phn_marker& marker : other) {
        const auto later = [&](const phn_marker& mine) { return mine.start > marker.start; };
        insert(std::find_if(begin(), end(), later), marker);
    }
}

void phn_marker_list::replace_range(const phn_marker_list& other) {
    int32_t lo = 1000000000;
    int32_t hi = -100000000;
    for (const phn_marker& marker : other) {
        lo = std::min({lo, marker.start, marker.end});
        hi = std::max({hi, marker.start, marker.end});
    }
    cut_range(lo, hi);
    merge_in(other);
    if (hi > lo) {
        JoinBefore(lo);
        JoinBehind(hi);
    }
}

void phn_marker_list::JoinBefore(int32_t seamMs) {
    const auto marker = std::find_if(
        begin(), end(), [&](const phn_marker& candidate) { return candidate.end == seamMs; });
    if (marker == end() || marker == begin() || !Absorbs(*marker, marker[-1])) {
        return;
    }
    MoveStart(*marker, marker[-1].start);
    erase(marker - 1);
}

void phn_marker_list::JoinBehind(int32_t seamMs) {
    const auto marker = std::find_if(
        begin(), end(), [&](const phn_marker& candidate) { return candidate.end == seamMs; });
    if (marker == end() || marker + 1 == end() || !Absorbs(*marker, marker[1])) {
        return;
    }
    MoveEnd(*marker, marker[1].end);
    erase(marker + 1);
}

} // namespace tessarin
