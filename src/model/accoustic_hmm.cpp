#include "model/accoustic_hmm.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

#include "base/flog.h"

namespace tessarin {

CAccousticHMM::CAccousticHMM() {
    flog scope("CAccousticHMM::CAccousticHMM");
}

CAccousticHMM::~CAccousticHMM() {
    flog scope("CAccousticHMM::~CAccousticHMM");
    Destroy();
}

std::unique_ptr<CAccousticHMM> CAccousticHMM::Copy() const {
    auto copy = std::make_unique<CAccousticHMM>();
    copy->reserved = reserved;
    copy->numModels = numModels;
    copy->numStates = numStates;
    copy->numMixtures = numMixtures;
    copy->descriptor.CopyFrom(descriptor);
    copy->models = models;
    copy->transitions = transitions;
    copy->labels = labels;
    copy->hasLongTransitions = hasLongTransitions;
    copy->phonemeInfo1 = phonemeInfo1;
    copy->phonemeInfo2 = phonemeInfo2;
    copy->trigrams = trigrams;
    copy->bigrams = bigrams;
    copy->unigrams = unigrams;
    copy->trigramVersion = trigramVersion;
    copy->constraints = constraints;
    copy->scoring = scoring;
    return copy;
}

void CAccousticHMM::Destroy() {
    flog scope("CAccousticHMM::Destroy");
    models.clear();
    scoring = {};
    transitions = {};
    labels.clear();
    phonemeInfo1.reset();
    phonemeInfo2.reset();
    trigrams.clear();
    bigrams = {};
    unigrams.clear();
    constraints.clear();
}

void CAccousticHMM::AnalyseTopology() {
    hasLongTransitions = 0;
    const int32_t totalStates = GetTotalStates();
    for (int32_t from = 0; from < totalStates; ++from) {
        if (from % numStates == numStates - 1) {
            continue; // leads out of its phoneme
        }
        const float* row = transitions[static_cast<size_t>(from)];
        for (int32_t to = 0; to < totalStates; ++to) {
            if (row[to] != 0.0f && to != from && to != from + 1) {
                hasLongTransitions = 1;
                return;
            }
        }
    }
}

float_matrix CAccousticHMM::CalcLogTransitions() const {
    constexpr float kSmallest = 1e-15f;
    float_matrix logarithms(transitions.GetRows(), transitions.GetColumns());
    for (size_t from = 0; from < transitions.GetRows(); ++from) {
        std::transform(transitions[from], transitions[from] + transitions.GetColumns(),
                       logarithms[from], [](float probability) {
                           return probability < kSmallest ? static_cast<float>(kImpossibleLog)
                                                          : std::log(probability);
                       });
    }
    return logarithms;
}

void CAccousticHMM::BuildScoring() {
    scoring = gaussian_scoring(models, static_cast<size_t>(std::max(descriptor.numFeatures, 0)));
}

// Kept: `base` is added where the logarithm is computed, not where the cache has it, nor is it when
// it says impossible; the searches that share a cache are made for that.
double CAccousticHMM::GetCachedLogProbability(double base, double* cache, const float* x,
                                              int32_t state) const {
    if (cache[state] != 0.0) {
        return cache[state];
    }
    const double probability = GetStateProbability(x, state);
    if (probability == 0.0) {
        cache[state] = kImpossibleLog;
        return kImpossibleLog;
    }
    cache[state] = std::log(probability);
    return base == kImpossibleLog ? cache[state] : cache[state] + base;
}

// Kept: a state divides by 3 whatever numStates says; searches and constraints know models of three
// states only, and all go from a state to its phoneme in this way.
const char* CAccousticHMM::GetLabel(int32_t index, bool byState) const {
    const int32_t phoneme = byState ? index / kStatesOfPhoneme : index;
    if (index < 0 || static_cast<size_t>(phoneme) >= labels.size()) {
        return nullptr;
    }
    return labels[static_cast<size_t>(phoneme)].c_str();
}

// Kept: the first label in file order wins, not the longest; a one-letter label takes its letter
// from longer labels that stand after it, and model files are written for that.
int32_t CAccousticHMM::FindLabel(const char* text, uint32_t* index) const {
    *index = kNoPhoneme;
    for (size_t i = 0; text != nullptr && i < labels.size(); ++i) {
        // Not to the end of the text: whoever splits a long one asks at each of its places.
        if (!labels[i].empty() && std::strncmp(text, labels[i].c_str(), labels[i].size()) == 0) {
            *index = static_cast<uint32_t>(i);
            return static_cast<int32_t>(labels[i].size());
        }
    }
    return 0;
}

bool CAccousticHMM::LabelsToIndices(const char* text, std::vector<uint16_t>& out) const {
    flog scope("CAccousticHMM::LabelsToIndices");
    bool allKnown = true;
    while (text != nullptr && *text != '\0') {
        uint32_t index = 0;
        const int32_t length = FindLabel(text, &index);
        if (length == 0) {
            allKnown = false;
        }
        out.push_back(length == 0 ? uint16_t{0} : static_cast<uint16_t>(index));
        text += std::max(length, 1);
    }
    return allKnown;
}

bool CAccousticHMM::ParseLabelSequence(const char* text, uint32_t* first, uint32_t* second,
                                       uint32_t* third) {
    uint32_t found[3] = {kNoPhoneme, kNoPhoneme, kNoPhoneme};
    *first = *second = *third = kNoPhoneme;
    for (uint32_t& label : found) {
        if (text == nullptr || *text == '\0') {
            break;
        }
        const int32_t length = FindLabel(text, &label);
        if (length == 0) {
            return false;
        }
        text += length;
    }
    *first = found[0];
    *second = found[1];
    *third = found[2];
    return *first != kNoPhoneme;
}

} // namespace tessarin
