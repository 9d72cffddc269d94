#pragma once

#include <cstddef>
#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/train/corpus.h"

namespace tessarin::training {

/// Places in the phoneme alphabet.
using phone_string = std::vector<size_t>;

/// The phonemes written in `labels`, up to what is not in the alphabet.
phone_string ReadPhones(std::string_view labels);

/// How often phonemes follow each other. What may be said in several ways is counted in each of
/// them in part, so these are the counts to be expected, not whole numbers.
struct sequence_counts {
    explicit sequence_counts(size_t phones)
        : numPhones(phones), singles(phones), pairs(phones * phones),
          triples(phones * phones * phones) {}

    double& Single(size_t a) { return singles[a]; }
    double& Pair(size_t a, size_t b) { return pairs[a * numPhones + b]; }
    double& Triple(size_t a, size_t b, size_t c) {
        return triples[(a * numPhones + b) * numPhones + c];
    }

    size_t numPhones;
    std::vector<double> singles;
    std::vector<double> pairs;
    std::vector<double> triples;
};

/// Counts a text as it is spoken, stretch by stretch, and then words that stand alone. A phoneme
/// that meets itself between two words is counted once, because the two are said as one.
class CSpeechCounter {
public:
    /// The text starts after a pause.
    explicit CSpeechCounter(sequence_counts& out);

    /// The next stretch of a word, in alternatives that are equally probable.
    void Say(const std::vector<phone_string>& alternatives);
    /// The end of a word, after which the speaker pauses with this probability.
    void EndWord(double pauseProbability);

    /// A word out of context, `times` times: between the sounds that stood before and after the
    /// words of the text so far.
    void AddLoneWord(const phone_string& phones, double times);

private:
    /// The last two phonemes, and how probable it is that they were said.
    using history = std::map<std::pair<size_t, size_t>, double>;

    void Append(history& before, size_t phone);
    void MeetWord(size_t phone, double share);

    sequence_counts& counts;
    history last;
    bool atWordStart = true;
    std::vector<double> beforeWords;
    std::vector<double> behindWords;
};

} // namespace tessarin::training
