#include "session/model_facts.h"

#include "base/byte_cursor.h"
#include "model/accoustic_hmm.h"
#include "session/search_run.h"

namespace tessarin {

namespace {

/// The engine does not keep it; it follows the magic number.
int32_t VersionOf(const std::string& image) {
    ByteCursor cursor(image.data(), image.size());
    cursor.Skip(sizeof(uint32_t));
    return cursor.ReadI16();
}

} // namespace

void CollectFacts(tessarin_model& model) {
    const CAccousticHMM& hmm = *model.hmm;
    model.labels.clear();
    for (const std::string& label : hmm.labels) {
        model.labels.push_back(label.c_str());
    }
    model.facts.version = VersionOf(model.image);
    model.facts.num_phonemes = hmm.numModels;
    model.facts.num_states = hmm.numStates;
    model.facts.num_mixtures = hmm.numMixtures;
    model.facts.num_features = hmm.descriptor.numFeatures;
    model.facts.num_cepstra = hmm.descriptor.numCepstra;
    model.facts.num_bands = hmm.descriptor.numBands;
    model.facts.flags = hmm.descriptor.flags;
    model.facts.window_size = hmm.descriptor.windowSize;
    model.facts.window_overlap = hmm.descriptor.windowOverlap;
    model.facts.rate_hz = hmm.descriptor.sampleRate;
    model.facts.pre_emphasis = hmm.descriptor.preEmphasis;
    model.facts.labels = model.labels.data();
}

} // namespace tessarin
