#include "c_api/weight_track.h"

#include <cstring>
#include <mutex>

namespace tessarin {

namespace {

constexpr uint32_t kKnownFlags = TESSARIN_TRACK_SMOOTH | TESSARIN_TRACK_EXCESS_LEVEL;
constexpr float kHighestFrameRate = 1000.0f;

error_code SetUp(const tessarin_track_options& options, IPhnMixtureArticulator& articulator) {
    const bool hasRules = options.rules != nullptr;
    // Comparisons that hold for no NaN.
    const bool isInRange = options.frame_rate >= 0.0f && options.frame_rate <= kHighestFrameRate &&
                           options.slope >= 0.0f && options.slope <= 1.0f &&
                           options.max_weights >= 0 && options.max_weights <= 10;
    if (options.size != sizeof options || (options.flags & ~kKnownFlags) != 0) {
        return kInvalidArgument;
    }
    if (!isInRange) {
        return kOutOfRange;
    }
    const error_code code =
        articulator.LoadArticulatorRules(options.rules, hasRules ? options.rules_length : 0);
    if (code != kNoError) {
        return code;
    }
    if (options.frame_rate > 0.0f) {
        articulator.SetFrameRate(options.frame_rate);
    }
    if (options.slope > 0.0f) {
        articulator.SetEnvelopeSlope(options.slope);
    }
    if (options.max_weights > 0) {
        articulator.SetMaxContributions(options.max_weights);
    }
    return articulator.SetFlags(articulator.GetFlags() | options.flags);
}

tessarin_frame FrameOf(const articulation& from) {
    tessarin_frame frame{from.start, from.end, from.count, {}};
    static_assert(sizeof frame.weights == sizeof from.entries);
    std::memcpy(frame.weights, from.entries, sizeof frame.weights);
    return frame;
}

} // namespace

error_code MakeTrack(const tessarin_result& result, const tessarin_track_options* options,
                     std::unique_ptr<tessarin_track>& out) {
    IPhnMixtureArticulator* made = nullptr;
    error_code code = CreatePhonemeArticulator(&made, 0);
    if (code != kNoError) {
        return code;
    }
    const articulator_owner articulator(made);
    if (options != nullptr) {
        code = SetUp(*options, *articulator);
        if (code != kNoError) {
            return code;
        }
    }
    {
        const std::lock_guard guard(result.lock);
        code = articulator->GenerateArticulations(result.markers.get(), nullptr);
    }
    if (code != kNoError) {
        return code;
    }
    out = std::make_unique<tessarin_track>();
    const articulation* const end = articulator->GetArticulationsEnd();
    for (const articulation* each = articulator->GetArticulationsBegin(); each != end; ++each) {
        out->frames.push_back(FrameOf(*each));
    }
    return kNoError;
}

} // namespace tessarin
