#include <algorithm>
#include <span>
#include <string_view>

#include "base/byte_cursor.h"
#include "base/flog.h"
#include "model/accoustic_hmm.h"
#include "model/model_image.h"
#include "tessarin/acoustic_model.h"

namespace tessarin {
namespace {

constexpr std::string_view kNotAModel = "[01] The Specified model is not a valid model";
constexpr std::string_view kNewerModel =
    "[02] The Specified model is a newer version than this software supports.";
constexpr std::string_view kShortModel =
    "[03] The specified model is not valid. The size of the model is smaller than expected.";
static_assert(kShortModel.size() + 1 == kModelErrorTextSize, "it is the longest of the messages");

/// The searches count phonemes in 16 bits.
constexpr int32_t kMaxModels = 65535;

bool Fail(char* errorText, std::string_view message) {
    if (errorText != nullptr) {
        errorText[message.copy(errorText, message.size())] = '\0';
    }
    return false;
}

bool ReadMixture(ByteCursor& image, size_t numFeatures, CGaussMixture& mixture) {
    mixture.weight = image.ReadF64();
    if (!image.Holds(numFeatures, 2 * sizeof(float))) {
        return false;
    }
    mixture.mean.resize(numFeatures);
    mixture.inverseCovariance.resize(numFeatures);
    image.ReadAll(std::span(mixture.mean));
    image.ReadAll(std::span(mixture.inverseCovariance));
    mixture.gConst = image.ReadF64();
    return !image.Failed();
}

/// Whether the image has bytes for `numStates` state records.
bool HoldsStates(const ByteCursor& image, const CAccousticHMM& model) {
    const uint64_t mixtures = static_cast<uint64_t>(model.numMixtures);
    const uint64_t states = static_cast<uint64_t>(model.numStates);
    const uint64_t mixtureBytes =
        2 * sizeof(double) +
        2 * sizeof(float) * static_cast<uint64_t>(model.descriptor.numFeatures);
    return image.Holds(mixtures, mixtureBytes) &&
           image.Holds(states, mixtures * mixtureBytes + sizeof(float) * states);
}

std::optional<std::string> ReadInfo(ByteCursor& image) {
    const std::string_view text = image.ReadString();
    return image.Failed() ? std::nullopt : std::optional<std::string>(text);
}

} // namespace

bool CAccousticHMM::Read(const uint8_t** cursor, uint32_t* remaining, char* errorText) {
    flog scope("CAccousticHMM::Read");
    if (!ReadCounts(cursor, remaining, errorText) || !ReadFeatures(cursor, remaining, errorText) ||
        !ReadModels(cursor, remaining) || !ReadTransitionsAndLabels(cursor, remaining, errorText)) {
        return false;
    }
    AnalyseTopology();
    ClearConstraints(); // room for limits, so that a search may set them beside others
    BuildScoring();
    return true;
}

bool CAccousticHMM::ReadCounts(const uint8_t** cursor, uint32_t* remaining, char* errorText) {
    BorrowedByteCursor image(cursor, remaining);
    const uint32_t magic = image.ReadU32();
    flog::Message("HMM Magic %x %d", magic, static_cast<int>(image.Remaining()));
    if (magic != kModelMagic) {
        return Fail(errorText, kNotAModel);
    }
    if (image.ReadI16() > kModelVersion) {
        return Fail(errorText, kNewerModel);
    }
    numModels = image.ReadI32();
    numStates = image.ReadI32();
    numMixtures = std::max(image.ReadI32(), 0);
    if (image.Failed() || numModels < 1 || numModels > kMaxModels || numStates < 1) {
        return Fail(errorText, kShortModel);
    }
    return true;
}

bool CAccousticHMM::ReadFeatures(const uint8_t** cursor, uint32_t* remaining, char* errorText) {
    flog::Message("HMM: Read Features");
    return descriptor.Read(cursor, remaining) || Fail(errorText, "");
}

bool CAccousticHMM::ReadModels(const uint8_t** cursor, uint32_t* remaining) {
    // A phoneme has at least its marker and the one transition of its one state.
    constexpr uint32_t kSmallestModel = sizeof(kModelMagic) + sizeof(float);
    if (static_cast<uint32_t>(numModels) > *remaining / kSmallestModel) {
        return false;
    }
    models = std::vector<CSingleAccHmm>(static_cast<size_t>(numModels));
    // Kept: what is wrong with a phoneme's model is not reported to the caller; hosts distinguish a
    // bad header from a damaged body by the text that stays as they left it.
    char unheard[kModelErrorTextSize];
    return std::ranges::all_of(models, [&](CSingleAccHmm& model) {
        return ReadSingleAccModel(&model, cursor, remaining, unheard);
    });
}

bool CAccousticHMM::ReadSingleAccModel(CSingleAccHmm* model, const uint8_t** cursor,
                                       uint32_t* remaining, char* errorText) {
    flog scope("CAccousticHMM::ReadSingleAccModel");
    BorrowedByteCursor image(cursor, remaining);
    if (image.ReadU32() != kModelMagic || !HoldsStates(image, *this)) {
        return Fail(errorText, kShortModel);
    }
    model->states = std::vector<CAccousticHMMState>(static_cast<size_t>(numStates));
    for (CAccousticHMMState& state : model->states) {
        state.mixtures = std::vector<CGaussMixture>(static_cast<size_t>(numMixtures));
        for (CGaussMixture& mixture : state.mixtures) {
            if (!ReadMixture(image, static_cast<size_t>(descriptor.numFeatures), mixture)) {
                return Fail(errorText, kShortModel);
            }
        }
        state.transitions.resize(static_cast<size_t>(numStates));
        if (!image.ReadAll(std::span(state.transitions))) {
            return Fail(errorText, kShortModel);
        }
    }
    return true;
}

bool CAccousticHMM::ReadTransitionsAndLabels(const uint8_t** cursor, uint32_t* remaining,
                                             char* errorText) {
    BorrowedByteCursor image(cursor, remaining);
    flog::Message("Read State Transitions");
    const uint64_t totalStates =
        static_cast<uint64_t>(numModels) * static_cast<uint64_t>(numStates);
    if (image.ReadU32() != kModelMagic || !image.Holds(totalStates, sizeof(float) * totalStates)) {
        return Fail(errorText, kShortModel);
    }
    const auto states = static_cast<size_t>(totalStates);
    transitions = float_matrix(states, states);
    image.ReadAll(std::span(transitions[0], states * states));

    flog::Message("Read Labels");
    labels.clear();
    for (int32_t i = 0; i < numModels; ++i) {
        labels.emplace_back(image.ReadString());
    }
    if (image.Failed()) {
        return Fail(errorText, kShortModel);
    }
    flog::Message("Read Phoneme Info");
    phonemeInfo1 = ReadInfo(image);
    phonemeInfo2 = ReadInfo(image);
    return true;
}

} // namespace tessarin
