#include <algorithm>
#include <istream>
#include <numeric>
#include <utility>

#include "base/flog.h"
#include "model/accoustic_hmm.h"
#include "model/whole_text.h"

namespace tessarin {
namespace {

/// Three tables of the phonemes: counts or weights while they are read, then probabilities. Sums
/// are taken in double precision.
struct phoneme_statistics {
    explicit phoneme_statistics(size_t count)
        : numPhonemes(count), trigrams(count, float_matrix(count, count)), bigrams(count, count),
          unigrams(count) {}

    void NormaliseCounts();
    void NormaliseTrigramCounts();
    void NormaliseWeights();

    size_t numPhonemes;
    std::vector<float_matrix> trigrams;
    float_matrix bigrams;
    std::vector<float> unigrams;
    double total = 0.0; ///< of all unigrams that were read
    bool isVersion1 = false;
};

/// Several times the phonemes of any language, tones and stresses included. The tables ask for
/// memory by the third power of it, whatever the text holds.
constexpr int32_t kMaxPhonemes = 256;

float Ratio(double numerator, double denominator) {
    return denominator == 0.0 ? 0.0f : static_cast<float>(numerator / denominator);
}

/// The text holds counts of all three kinds: each is divided by the count of what it extends.
void phoneme_statistics::NormaliseCounts() {
    for (size_t a = 0; a < numPhonemes; ++a) {
        for (size_t b = 0; b < numPhonemes; ++b) {
            for (size_t c = 0; c < numPhonemes; ++c) {
                trigrams[a][b][c] = Ratio(trigrams[a][b][c], bigrams[a][b]);
            }
        }
        for (size_t b = 0; b < numPhonemes; ++b) {
            bigrams[a][b] = Ratio(bigrams[a][b], unigrams[a]);
        }
    }
    if (total != 0.0) {
        for (float& unigram : unigrams) {
            unigram = Ratio(unigram, total);
        }
    }
}

/// Only the trigrams count; the bigrams say which of them to use, and both bigrams and unigrams
/// are summed up again.
void phoneme_statistics::NormaliseTrigramCounts() {
    for (size_t a = 0; a < numPhonemes; ++a) {
        double sumOfFirst = 0.0;
        for (size_t b = 0; b < numPhonemes; ++b) {
            float* row = trigrams[a][b];
            if (bigrams[a][b] == 0.0f) {
                std::fill(row, row + numPhonemes, 0.0f);
            }
            const double sum = std::accumulate(row, row + numPhonemes, 0.0);
            if (sum != 0.0) {
                bigrams[a][b] = static_cast<float>(sum);
                for (size_t c = 0; c < numPhonemes; ++c) {
                    row[c] = Ratio(row[c], sum);
                }
            }
            sumOfFirst += sum;
        }
        unigrams[a] = Ratio(sumOfFirst, total);
        for (size_t b = 0; b < numPhonemes; ++b) {
            bigrams[a][b] = Ratio(bigrams[a][b], sumOfFirst);
        }
    }
}

/// Each table holds weights that are made to sum up to 1 for themselves.
void phoneme_statistics::NormaliseWeights() {
    if (total == 0.0) {
        return;
    }
    for (size_t a = 0; a < numPhonemes; ++a) {
        unigrams[a] = Ratio(unigrams[a], total);
        const double rowSum = std::accumulate(bigrams[a], bigrams[a] + numPhonemes, 0.0);
        if (rowSum != 0.0) {
            for (size_t b = 0; b < numPhonemes; ++b) {
                bigrams[a][b] = Ratio(bigrams[a][b], rowSum);
            }
        }
        for (size_t b = 0; b < numPhonemes; ++b) {
            // Kept: entries that are not positive neither count nor change; a text may hold
            // negative entries as marks of its own.
            float* row = trigrams[a][b];
            double sum = 0.0;
            for (size_t c = 0; c < numPhonemes; ++c) {
                sum += row[c] > 0.0f ? row[c] : 0.0f;
            }
            for (size_t c = 0; c < numPhonemes; ++c) {
                row[c] = row[c] > 0.0f ? Ratio(row[c], sum) : row[c];
            }
        }
    }
}

void ReadEntries(std::istream& text, CAccousticHMM& model, phoneme_statistics& statistics) {
    bool atHead = true;
    std::string key;
    float value = 0.0f;
    while (text >> key >> value) {
        if (atHead && key == "version") {
            statistics.isVersion1 = value == 1.0f;
            continue;
        }
        atHead = false;
        uint32_t a = 0;
        uint32_t b = 0;
        uint32_t c = 0;
        if (!model.ParseLabelSequence(key.c_str(), &a, &b, &c)) {
            continue;
        }
        if (c != CAccousticHMM::kNoPhoneme) {
            statistics.trigrams[a][b][c] = value;
        } else if (b != CAccousticHMM::kNoPhoneme) {
            statistics.bigrams[a][b] = value;
        } else {
            statistics.unigrams[a] = value;
            statistics.total += static_cast<double>(value);
        }
    }
}

} // namespace

bool CAccousticHMM::ReadTrigrams(std::istream& text, bool normalise) {
    flog scope("CAccousticHMM::ReadTrigrams");
    trigramVersion = false;
    trigrams.clear();
    bigrams = {};
    unigrams.clear();
    if (numModels > kMaxPhonemes) {
        return false;
    }
    phoneme_statistics statistics(static_cast<size_t>(numModels));
    if (!ReadsWhole(text, [&](std::istream& whole) { ReadEntries(whole, *this, statistics); })) {
        return false;
    }
    if (normalise) {
        statistics.NormaliseCounts();
    } else if (statistics.isVersion1) {
        statistics.NormaliseTrigramCounts();
    } else {
        statistics.NormaliseWeights();
    }
    trigramVersion = statistics.isVersion1;
    trigrams = std::move(statistics.trigrams);
    bigrams = std::move(statistics.bigrams);
    unigrams = std::move(statistics.unigrams);
    return true;
}

} // namespace tessarin
