#pragma once

#include <cstdint>
#include <cstdio>
#include <iosfwd>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "features/spectral_feature_descriptor.h"
#include "model/float_matrix.h"
#include "model/gaussian_scoring.h"
#include "model/phone_limit.h"

namespace tessarin {

/// A Gaussian with a diagonal covariance. The numbers are linear, not logarithms.
class CGaussMixture {
public:
    virtual ~CGaussMixture() = default;

    double weight = 0.0;
    std::vector<float> mean;
    std::vector<float> inverseCovariance; ///< 1 / variance
    double gConst = 0.0; ///< normalises the Gaussian: product of sqrt(inverseCovariance / 2 pi)
};

/// A state of a phoneme: its mixture, and its row of transition probabilities to the states of the
/// same phoneme.
class CAccousticHMMState {
public:
    virtual ~CAccousticHMMState() = default;

    std::vector<CGaussMixture> mixtures;
    std::vector<float> transitions;
};

/// The hidden Markov model of a phoneme.
class CSingleAccHmm {
public:
    virtual ~CSingleAccHmm() = default;

    std::vector<CAccousticHMMState> states;
};

/// The logarithm that stands for a probability of 0.
inline constexpr double kImpossibleLog = -1e10;

/// The acoustic model: the phonemes' hidden Markov models, one transition matrix across all states
/// of all phonemes, the phonemes' labels, the analysis that they were trained with and, once
/// loaded, what is known of the language. A global state index is
/// phoneme * numStates + state.
///
/// Immutable once it is read, but for the language constraints, of which a search of sentences
/// replaces the limits. Several threads may search with it.
class CAccousticHMM {
public:
    CAccousticHMM();
    CAccousticHMM(const CAccousticHMM&) = delete;
    CAccousticHMM& operator=(const CAccousticHMM&) = delete;
    virtual ~CAccousticHMM();

    /// A model of its own that says the same, for one that is to be changed.
    std::unique_ptr<CAccousticHMM> Copy() const;

    /// Reads n-gram statistics of the phonemes: pairs of a key (one to three labels) and a number.
    /// `normalise` says that the numbers are counts. False, with no statistics in force, when the
    /// tables would be too large or the text fails to read in the middle.
    virtual bool ReadTrigrams(std::istream& text, bool normalise);
    /// Reads duration limits: pairs of labels and milliseconds. False, with no limit in force, when
    /// a label is unknown or the text fails to read in the middle.
    virtual bool ReadConstraints(std::istream& text);
    virtual void ClearConstraints();
    /// Reads a model image and moves `*cursor` and `*remaining` past it. On false `errorText`,
    /// which may be null, may have received a message.
    virtual bool Read(const uint8_t** cursor, uint32_t* remaining, char* errorText);
    /// Writes the image that Read takes. False when the file cannot be written.
    virtual bool Write(const char* path);
    /// For people: everything that the model holds, as text.
    virtual void WriteTextDump(std::ostream& text);
    /// For people: the models as a description database. False when the file cannot be made.
    virtual bool WriteDatabaseText(const char* path);
    /// Sets `hasLongTransitions`.
    virtual void AnalyseTopology();
    virtual bool ReadSingleAccModel(CSingleAccHmm* model, const uint8_t** cursor,
                                    uint32_t* remaining, char* errorText);
    /// One entry of WriteDatabaseText.
    virtual void WritePhonemeDescription(std::FILE* file, int32_t modelIndex);
    /// Splits a text of one to three labels; the places of labels that it does not have are set to
    /// kNoPhoneme. False, with all three so, when it does not begin with a label or goes on with
    /// something that is none.
    virtual bool ParseLabelSequence(const char* text, uint32_t* first, uint32_t* second,
                                    uint32_t* third);

    /// The likelihood (linear) of the observation `x` of numFeatures values in a global state. The
    /// hot path of every search: runs for each observation and active state.
    double GetStateProbability(const float* x, int32_t state) const {
        return scoring.Likelihood(static_cast<size_t>(state), x);
    }
    /// The logarithm of GetStateProbability plus `base`. `cache` has one place a state for the
    /// current observation, 0 where nothing is known yet.
    double GetCachedLogProbability(double base, double* cache, const float* x, int32_t state) const;

    /// Label of the phoneme `index`, or of the phoneme of the global state `index`; null when there
    /// is none.
    const char* GetLabel(int32_t index, bool byState) const;
    /// The phoneme whose label `text` begins with. Returns the label's length and its index in
    /// `*index`; 0 and kNoPhoneme when none fits.
    int32_t FindLabel(const char* text, uint32_t* index) const;
    /// Appends the phonemes that `text` spells. Unknown characters become phoneme 0 and make the
    /// result false.
    bool LabelsToIndices(const char* text, std::vector<uint16_t>& out) const;
    /// The natural logarithms of `transitions`, -1e10 below 1e-15.
    float_matrix CalcLogTransitions() const;
    /// Lays the Gaussians out for GetStateProbability. Read does this; whoever fills or changes
    /// `models` by hand does it afterwards.
    void BuildScoring();

    /// Replaces the limits by those of each phoneme; empty: none. Other threads may search
    /// meanwhile, as long as the model has had room for its limits since it was read.
    void SetConstraints(std::span<const uint32_t> limits);
    /// Duration limit of a phoneme in milliseconds; -1 without one.
    int32_t GetPhoneLimitMs(const char* label) const;
    /// Whether a stay of `frames` in the global state is within the phoneme's limit.
    bool IsUnderPhoneLimit(int32_t state, int32_t frames) const;
    /// What a search multiplies the step from phoneme `from` to phoneme `to` with after `frames`:
    /// almost 0 for a self-loop past the limit, so that the phoneme is pushed out of its state
    /// without a hard break, else 1.
    float GetPhoneDurationFactor(int32_t from, int32_t to, int32_t frames) const;

    /// numModels * numStates.
    int32_t GetTotalStates() const { return numModels * numStates; }

    static constexpr uint32_t kNoPhoneme = 0xFFFFFFFF;

    /// How many states a phoneme has wherever a global state is led back to its phoneme.
    static constexpr int32_t kStatesOfPhoneme = 3;

    uint32_t reserved = 0; ///< stays 0
    int32_t numModels = 0;
    int32_t numStates = 0;   ///< of one phoneme
    int32_t numMixtures = 0; ///< of one state
    CSpectralFeatureDescriptor descriptor;
    std::vector<CSingleAccHmm> models;
    float_matrix transitions;        ///< linear; GetTotalStates() square
    std::vector<std::string> labels; ///< one a phoneme
    uint32_t hasLongTransitions = 0; ///< 1 when a state leads to others than itself and the next
    std::optional<std::string> phonemeInfo1; ///< kept for the file's sake
    std::optional<std::string> phonemeInfo2;
    std::vector<float_matrix> trigrams; ///< probability of [first][second][third]
    float_matrix bigrams;               ///< [first][second]
    std::vector<float> unigrams;
    bool trigramVersion = false;          ///< the statistics declared version 1
    std::vector<phone_limit> constraints; ///< of each phoneme, or empty: none

private:
    void Destroy();
    bool ReadCounts(const uint8_t** cursor, uint32_t* remaining, char* errorText);
    bool ReadFeatures(const uint8_t** cursor, uint32_t* remaining, char* errorText);
    bool ReadModels(const uint8_t** cursor, uint32_t* remaining);
    bool ReadTransitionsAndLabels(const uint8_t** cursor, uint32_t* remaining, char* errorText);
    uint32_t LimitOf(int32_t phoneme) const;

    gaussian_scoring scoring;
};

} // namespace tessarin
