#include "articulation/frames_from_envelopes.h"

#include <algorithm>
#include <cstddef>

#include "articulation/phoneme_label.h"
#include "base/text_copy.h"
#include "base/trunc_sat.h"

namespace tessarin {
namespace {

class envelope_sampler {
public:
    explicit envelope_sampler(float lengthMs) : frameMs(lengthMs) {}

    void Add(phoneme_label label, const envelope_point& point);
    std::vector<phoneme_mixture> Finish();

private:
    phoneme_mixture* Find(int32_t frame);

    float frameMs;
    std::vector<phoneme_mixture> frames;
    int32_t lowest = 134217727;
    int32_t highest = -1;
};

/// The mixture of a frame, or null when it lies before frame 0 or after all that is made.
phoneme_mixture* envelope_sampler::Find(int32_t frame) {
    if (frame < 0 || frame >= kMostFrames) {
        return nullptr;
    }
    if (static_cast<size_t>(frame) >= frames.size()) {
        frames.resize(static_cast<size_t>(frame) + 1);
    }
    return &frames[static_cast<size_t>(frame)];
}

void envelope_sampler::Add(phoneme_label label, const envelope_point& point) {
    const auto t0 = static_cast<float>(point.t0);
    int32_t last = -1;
    const auto first = TruncSat<int32_t>((t0 + frameMs / 2.0f) / frameMs);
    if (phoneme_mixture* frame = Find(first)) {
        (*frame)[label] += point.value;
        last = first;
    }
    const auto lengthMs = static_cast<float>(int64_t{point.t1} - point.t0);
    const auto count = TruncSat<int32_t>(lengthMs / frameMs);
    // What lies far ahead of frame 0 is passed in one step.
    const int32_t ahead = std::max(TruncSat<int32_t>(-t0 / frameMs * 0.99f), 2) - 1;
    for (int32_t k = ahead; k < count; ++k) {
        const auto offsetMs = TruncSat<int64_t>(static_cast<float>(k) * frameMs);
        const auto index = TruncSat<int32_t>(static_cast<float>(offsetMs + point.t0) / frameMs);
        if (index >= kMostFrames) {
            break;
        }
        if (phoneme_mixture* frame = Find(index)) {
            (*frame)[label] = point.value;
            last = index;
        }
    }
    if (last >= 0) {
        lowest = std::min(lowest, last);
        highest = std::max(highest, last);
    }
}

std::vector<phoneme_mixture> envelope_sampler::Finish() {
    frames.resize(static_cast<size_t>(highest + 1));
    for (int32_t i = 0; i <= highest; ++i) {
        phoneme_mixture& frame = frames[static_cast<size_t>(i)];
        if (i < lowest) {
            frame.Clear(); // Kept: only the last frame of each point counts for the lowest
            continue;
        }
        const float sum = frame.Sum();
        if (sum < 1.0f) {
            frame[kSilence] += 1.0f - sum;
        }
        frame.Normalize();
    }
    return std::move(frames);
}

} // namespace

std::vector<phoneme_mixture> SampleEnvelopes(std::span<const articulation_envelope> envelopes,
                                             float frameMs) {
    if (!(frameMs > 0.0f)) {
        return {};
    }
    envelope_sampler sampler(frameMs);
    for (const articulation_envelope& envelope : envelopes) {
        const phoneme_label label(FieldText(envelope.label));
        for (const envelope_point& point :
             std::span(envelope.points, static_cast<size_t>(envelope.count))) {
            sampler.Add(label, point);
        }
    }
    return sampler.Finish();
}

} // namespace tessarin
