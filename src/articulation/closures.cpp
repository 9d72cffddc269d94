#include "articulation/closures.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "base/trunc_sat.h"

namespace tessarin {
namespace {

/// As many frames that show nothing but the closure are enough.
constexpr int32_t kClearFrames = 3;

int32_t FrameOf(int32_t ms, float frameMs) {
    return TruncSat<int32_t>((static_cast<float>(ms) + frameMs / 2.0f) / frameMs);
}

std::vector<closure> FindClosures(const phn_marker_list& phonemes,
                                  const std::set<phoneme_label>& closedSet, float frameMs) {
    std::vector<closure> closures;
    for (const phn_marker& marker : phonemes) {
        const phoneme_label label(marker.label);
        if (!closedSet.contains(label)) {
            continue;
        }
        const int32_t first = FrameOf(marker.start, frameMs);
        const int32_t last = FrameOf(marker.end, frameMs);
        int32_t previousLast = std::numeric_limits<int32_t>::min();
        if (!closures.empty()) {
            closure& newest = closures.back();
            if (newest.last_frame >= first) {
                newest.last_frame = last;
                newest.end_ms = marker.end;
                newest.labels.insert(label);
                continue;
            }
            newest.next_first_frame = first;
            previousLast = newest.last_frame;
        }
        closures.push_back({{label},
                            first,
                            marker.start,
                            marker.end,
                            last,
                            previousLast,
                            std::numeric_limits<int32_t>::max(),
                            -1,
                            0.0});
    }
    return closures;
}

/// How a frame shows a closure: the weights of its strongest closed sound and of silence.
struct closure_view {
    double score;
    bool clear; ///< whether there is nothing else
};

closure_view ViewClosure(const phoneme_mixture& frame, const std::set<phoneme_label>& labels) {
    float closed = 0.0f;
    float silent = 0.0f;
    for (const phoneme_mixture::entry& entry : frame) {
        if (labels.contains(entry.label) && entry.weight > closed) {
            closed = entry.weight;
        }
        if (entry.label == kSilence) {
            silent = entry.weight;
        }
    }
    return {static_cast<double>(closed) + static_cast<double>(silent),
            frame.Size() == 2 && closed > 0.0f};
}

/// Finds the frame in which the closure shows best. Returns whether help is needed and possible.
bool FindPeak(closure& closure, const std::vector<phoneme_mixture>& frames) {
    const auto count = static_cast<int32_t>(frames.size());
    closure.first_frame = std::clamp(closure.first_frame, 0, count);
    closure.last_frame = std::min(closure.last_frame, count);
    int32_t clearFrames = 0;
    for (int32_t i = closure.first_frame; i < closure.last_frame && clearFrames < kClearFrames;
         ++i) {
        const closure_view view = ViewClosure(frames[static_cast<size_t>(i)], closure.labels);
        clearFrames += view.clear ? 1 : 0;
        if (view.score > closure.best_score) {
            closure.best_score = view.score;
            closure.peak_frame = i;
        }
    }
    return clearFrames < kClearFrames && closure.peak_frame >= 0;
}

void ShowOnly(const std::set<phoneme_label>& labels, phoneme_mixture& frame) {
    for (phoneme_mixture::entry& entry : frame) {
        if (entry.label != kSilence && !labels.contains(entry.label)) {
            entry.weight = 0.0f;
        }
    }
    frame.Normalize();
}

/// Widens the peak in both directions until `wanted` frames are shown. Kept: each step takes a
/// frame on either side, so that 2 wanted frames become 3 and the peak stays in their middle.
void ShowPeak(const closure& closure, int32_t wanted, std::vector<phoneme_mixture>& frames) {
    const int32_t limit = std::min(closure.last_frame, static_cast<int32_t>(frames.size()));
    int32_t lo = closure.peak_frame - 1;
    int32_t hi = closure.peak_frame + 1;
    ShowOnly(closure.labels, frames[static_cast<size_t>(closure.peak_frame)]);
    int32_t shown = 1;
    for (bool added = true; added && shown < wanted;) {
        added = false;
        if (lo >= closure.first_frame) {
            ShowOnly(closure.labels, frames[static_cast<size_t>(lo--)]);
            ++shown;
            added = true;
        }
        if (hi < limit) {
            ShowOnly(closure.labels, frames[static_cast<size_t>(hi++)]);
            ++shown;
            added = true;
        }
    }
}

} // namespace

void ForceClosures(const phn_marker_list& phonemes, const std::set<phoneme_label>& closedSet,
                   float frameMs, int32_t wanted, std::vector<phoneme_mixture>& frames) {
    std::vector<closure> closures = FindClosures(phonemes, closedSet, frameMs);
    std::erase_if(closures, [&](closure& found) { return !FindPeak(found, frames); });
    for (const closure& found : closures) {
        ShowPeak(found, wanted, frames);
    }
}

} // namespace tessarin
