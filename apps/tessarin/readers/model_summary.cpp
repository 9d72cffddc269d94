#include "apps/tessarin/readers/model_summary.h"

#include "apps/tessarin/readers/image_reader.h"

namespace {

constexpr uint32_t kModelMagic = 0x7A686D6D;      // "mmhz"
constexpr uint32_t kDescriptorMagic = 0x66656174; // "taef"
constexpr uint64_t kMarkerSize = 4;

void ReadDescriptor(ImageReader& reader, model_summary* summary) {
    int32_t version = 0;
    if (reader.ReadU32() == kDescriptorMagic) {
        version = reader.ReadU16();
    } else {
        reader.StepBack(4);
    }
    summary->sampleRate = reader.ReadF32();
    summary->preEmphasis = reader.ReadF32();
    summary->windowSize = reader.ReadI32();
    summary->windowOverlap = reader.ReadI32();
    summary->numFeatures = reader.ReadI32();
    summary->numBands = reader.ReadI32();
    reader.Skip(static_cast<uint64_t>(static_cast<uint32_t>(summary->numBands)) * 16);
    summary->numCepstra = reader.ReadI32();
    summary->flags = version > 0 ? reader.ReadU32() : 0;
}

/// The bytes of all model records and of the global transition matrix.
uint64_t ParameterSize(const model_summary& s) {
    const uint64_t mixture = 16 + 8 * static_cast<uint64_t>(s.numFeatures);
    const uint64_t mixtures = s.numMixtures > 0 ? static_cast<uint64_t>(s.numMixtures) : 0;
    const uint64_t states = static_cast<uint64_t>(s.numStates);
    const uint64_t models = static_cast<uint64_t>(s.numModels);
    const uint64_t model = kMarkerSize + states * (mixtures * mixture + 4 * states);
    return models * model + kMarkerSize + 4 * models * states * models * states;
}

} // namespace

bool LooksLikeModel(const std::string& image) {
    return ImageReader(image).ReadU32() == kModelMagic;
}

std::optional<model_summary> SummarizeModel(const std::string& image) {
    ImageReader reader(image);
    model_summary summary;
    reader.Skip(kMarkerSize);
    summary.version = reader.ReadU16();
    summary.numModels = reader.ReadI32();
    summary.numStates = reader.ReadI32();
    summary.numMixtures = reader.ReadI32();
    ReadDescriptor(reader, &summary);
    reader.Skip(ParameterSize(summary));
    for (int32_t i = 0; i < summary.numModels && !reader.Failed(); ++i) {
        summary.labels.push_back(reader.ReadString());
    }
    return reader.Failed() ? std::nullopt : std::optional(summary);
}
