#include "apps/train/sequence_statistics.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <vector>

#include "model/phoneme_alphabet.h"

namespace tessarin::training {
namespace {

/// Two of them and a count are a number that single precision still holds.
constexpr double kLeastFactor = 1e-18;

/// Probabilities of what follows: the counts, and as many occurrences as `trust` says that are
/// spread like `shorter`. `self`, the last phoneme so far, does not follow itself.
std::vector<double> Smoothed(const double* counts, const std::vector<double>& shorter, size_t self,
                             double trust) {
    std::vector<double> result(counts, counts + shorter.size());
    const double shorterSum = std::accumulate(shorter.begin(), shorter.end(), -shorter[self]);
    for (size_t i = 0; i < result.size(); ++i) {
        result[i] += trust * shorter[i] / shorterSum;
    }
    result[self] = 0.0;
    const double sum = std::accumulate(result.begin(), result.end(), 0.0);
    for (double& probability : result) {
        probability /= sum;
    }
    return result;
}

void AppendEntry(std::string& text, const std::string& key, double value) {
    char number[32];
    std::snprintf(number, sizeof(number), " %.3g\n", value);
    text += key + number;
}

} // namespace

std::string WriteStatistics(sequence_counts& counts, const statistics_shape& shape) {
    const size_t n = counts.numPhones;
    const auto label = [](size_t phone) { return std::string(PhonemeAlphabet()[phone].label); };
    const auto factor = [&](double probability) {
        return std::max(kLeastFactor, shape.scale * std::pow(probability, shape.exponent));
    };
    std::vector<double> singles = counts.singles;
    for (double& single : singles) {
        single += 1.0;
    }
    std::string text = "version 1\n";
    for (size_t a = 0; a < n; ++a) {
        AppendEntry(text, label(a), singles[a]);
    }
    std::string triples;
    for (size_t a = 0; a < n; ++a) {
        const auto pairs = Smoothed(&counts.Pair(a, 0), singles, a, shape.pairTrust);
        for (size_t b = 0; b < n; ++b) {
            if (b == a) {
                continue;
            }
            const double pair = singles[a] * factor(pairs[b]);
            AppendEntry(text, label(a) + label(b), pair);
            const auto shorter = Smoothed(&counts.Pair(b, 0), singles, b, shape.pairTrust);
            const auto next = Smoothed(&counts.Triple(a, b, 0), shorter, b, shape.tripleTrust);
            for (size_t c = 0; c < n; ++c) {
                if (c != b) {
                    AppendEntry(triples, label(a) + label(b) + label(c), pair * factor(next[c]));
                }
            }
        }
    }
    return text + triples;
}

} // namespace tessarin::training
