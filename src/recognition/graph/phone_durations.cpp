#include "recognition/graph/phone_durations.h"

#include <algorithm>
#include <string>
#include <vector>

#include "model/accoustic_hmm.h"
#include "tessarin/transcriber.h"

namespace tessarin {
namespace {

constexpr uint32_t kUnknownMs = 200;
constexpr uint32_t kSilenceMs = 250;
constexpr uint32_t kObservationMs = 10; // Kept: whatever the stream's hop is
/// Kept: what a label without limit or class counts is -1 of each state.
constexpr uint32_t kNoLimitMs = static_cast<uint32_t>(-CAccousticHMM::kStatesOfPhoneme);
constexpr std::string_view kSilence = "x";

struct duration_class {
    std::string_view labels;
    uint32_t ms;
};

/// A later class overrides an earlier one where a model knows all of them.
constexpr duration_class kClasses[] = {
    {"mpbvfZHCHjSHszDHTHtNGgkhynd", 90},
    {"gds", 120},
    {"rERwUHUWAWIYIHAEAYEYEHlAAAHAOOWOY", 160},
};

constexpr std::string_view kLabels[] = {"x",  "m",  "p",  "b",  "v",  "f",  "ZH", "CH", "j",  "SH",
                                        "s",  "z",  "DH", "TH", "t",  "NG", "g",  "k",  "h",  "r",
                                        "ER", "w",  "UH", "UW", "AW", "IY", "y",  "IH", "AE", "AY",
                                        "EY", "EH", "n",  "d",  "l",  "AA", "AH", "AO", "OW", "OY"};

/// Observations that a state of each phoneme of `model` lasts, 0 for no limit; empty when the model
/// does not know all of the labels.
std::vector<uint32_t> StateLimits(const CAccousticHMM& model) {
    std::vector<uint32_t> limits(static_cast<size_t>(model.numModels));
    std::vector<uint16_t> phonemes;
    for (const duration_class& each : kClasses) {
        phonemes.clear();
        if (!model.LabelsToIndices(std::string(each.labels).c_str(), phonemes)) {
            return {};
        }
        for (const uint16_t phoneme : phonemes) {
            limits[phoneme] = each.ms / (static_cast<uint32_t>(model.numStates) * kObservationMs);
        }
    }
    return limits;
}

/// Kept: the first class that has the label decides, here, so that "g", "d" and "s" are short.
uint32_t ClassMs(std::string_view label, uint32_t otherwise) {
    for (const duration_class& each : kClasses) {
        if (each.labels.find(label) != std::string_view::npos) {
            return each.ms;
        }
    }
    return label == kSilence ? kSilenceMs : otherwise;
}

} // namespace

void phone_durations::SetUp(CAccousticHMM& model) {
    constexpr auto kStates = static_cast<uint32_t>(CAccousticHMM::kStatesOfPhoneme);
    const std::vector<uint32_t> limits = StateLimits(model);
    // Kept: limits that the host has loaded are lost for good, so that what a search of sentences
    // finds, and the searches after it, does not depend on what came before.
    model.SetConstraints(limits);
    for (const std::string_view label : kLabels) {
        const std::string name(label);
        uint32_t phoneme = CAccousticHMM::kNoPhoneme;
        static_cast<void>(model.FindLabel(name.c_str(), &phoneme));
        const uint32_t limit = phoneme < limits.size() ? limits[phoneme] : 0;
        durationsMs[name] =
            limit != 0 ? limit * kObservationMs * kStates : ClassMs(label, kNoLimitMs);
    }
}

uint32_t phone_durations::LabelDurationMs(std::string_view label) const {
    const auto found = durationsMs.find(label);
    return found != durationsMs.end() ? found->second : kUnknownMs;
}

uint64_t phone_durations::PhonemeStringMs(std::string_view text) const {
    uint64_t sum = 0;
    while (!text.empty()) {
        const bool isPair = text[0] >= 'A' && text[0] <= 'Z' && text.size() > 1;
        const size_t length = isPair ? 2 : 1;
        sum += LabelDurationMs(text.substr(0, length));
        text.remove_prefix(length);
    }
    return sum;
}

uint64_t phone_durations::MarkerFrames(const CTxMarker& marker) const {
    uint64_t sum = 0;
    for (int32_t g = 0; marker.groups != nullptr && g < marker.group_count; ++g) {
        const PhonemeGroup& group = marker.groups[g];
        uint64_t longest = 0;
        for (int32_t i = 0; group.alternatives != nullptr && i < group.alternative_count; ++i) {
            if (group.alternatives[i] != nullptr) {
                longest = std::max(longest, PhonemeStringMs(group.alternatives[i]));
            }
        }
        sum += longest;
    }
    return sum / kObservationMs;
}

} // namespace tessarin
