#include <algorithm>
#include <istream>

#include "base/flog.h"
#include "model/accoustic_hmm.h"
#include "model/whole_text.h"

namespace tessarin {
namespace {

constexpr int64_t kObservationMs = 10;

/// What the self-loop of a phoneme past its limit is worth.
constexpr float kPastLimitFactor = 1e-7f;

/// Reads labels and their limits. False when a label is unknown.
bool ReadLimits(std::istream& text, CAccousticHMM& model, std::vector<uint32_t>& limits) {
    bool allKnown = true;
    std::string labelString;
    std::vector<uint16_t> phonemes;
    while (text >> labelString) {
        phonemes.clear();
        if (!model.LabelsToIndices(labelString.c_str(), phonemes)) {
            // Kept: the number is left to be taken for a label string; the load has failed anyway.
            allKnown = false;
            continue;
        }
        int32_t milliseconds = 0;
        if (!(text >> milliseconds)) {
            break;
        }
        const int64_t perState = milliseconds / (model.numStates * kObservationMs);
        for (const uint16_t phoneme : phonemes) {
            limits[phoneme] = static_cast<uint32_t>(std::max<int64_t>(perState, 0));
        }
    }
    return allKnown;
}

} // namespace

void CAccousticHMM::ClearConstraints() {
    SetConstraints({});
}

void CAccousticHMM::SetConstraints(std::span<const uint32_t> limits) {
    constraints.resize(static_cast<size_t>(numModels));
    for (size_t i = 0; i < constraints.size(); ++i) {
        constraints[i] = i < limits.size() ? limits[i] : 0;
    }
}

bool CAccousticHMM::ReadConstraints(std::istream& text) {
    flog scope("CAccousticHMM::ReadConstraints");
    ClearConstraints();
    std::vector<uint32_t> limits(static_cast<size_t>(numModels));
    bool allKnown = true;
    const bool isWhole =
        ReadsWhole(text, [&](std::istream& whole) { allKnown = ReadLimits(whole, *this, limits); });
    if (!isWhole || !allKnown) {
        return false;
    }
    SetConstraints(limits);
    return true;
}

uint32_t CAccousticHMM::LimitOf(int32_t phoneme) const {
    const size_t index = static_cast<size_t>(phoneme);
    return phoneme >= 0 && index < constraints.size() ? uint32_t{constraints[index]} : 0;
}

int32_t CAccousticHMM::GetPhoneLimitMs(const char* label) const {
    uint32_t phoneme = kNoPhoneme;
    FindLabel(label, &phoneme);
    const uint32_t limit = phoneme < constraints.size() ? uint32_t{constraints[phoneme]} : 0;
    return limit == 0 ? -1 : static_cast<int32_t>(limit * uint32_t{kObservationMs});
}

bool CAccousticHMM::IsUnderPhoneLimit(int32_t state, int32_t frames) const {
    const uint32_t limit = state >= 0 ? LimitOf(state / kStatesOfPhoneme) : 0;
    return limit == 0 || frames < int64_t{limit};
}

float CAccousticHMM::GetPhoneDurationFactor(int32_t from, int32_t to, int32_t frames) const {
    const uint32_t limit = from == to ? LimitOf(from) : 0;
    return limit != 0 && frames > int64_t{limit} ? kPastLimitFactor : 1.0f;
}

} // namespace tessarin
