#include "apps/train/g2p_alignment.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "text/character_classes.h"

namespace tessarin::training {
namespace {

constexpr int kRounds = 12;
constexpr int kPairRounds = 3;

/// How probable a chunk of so many phonemes is before anything is learnt: a letter has a phoneme of
/// its own, as a rule. Without this a few words are explained as well by vowels that say whole
/// syllables between silent consonants.
constexpr double kFirstGuess[kMaxChunkPhones + 1] = {0.2, 1.0, 0.02};

/// What a letter says with a smaller probability is taken for a mistake.
constexpr double kRarestChunk = 1e-4;

/// Occurrences of a pair of letters that outweigh what is known of the first one alone.
constexpr double kPairTrust = 5.0;

constexpr size_t kNumCodes = 256;

/// Probabilities of chunks, or their counts, by letter.
class chunk_table {
public:
    chunk_table() : values(kNumCodes * CountChunks()) {}

    double& At(char letter, phone_chunk chunk) {
        return values[CodeOf(letter) * CountChunks() + chunk];
    }
    double At(char letter, phone_chunk chunk) const {
        return values[CodeOf(letter) * CountChunks() + chunk];
    }

    /// Makes the probabilities of each letter sum to one; a letter that was not met stays at zero.
    void Normalize() {
        for (auto row = values.begin(); row != values.end();) {
            const auto end = row + static_cast<ptrdiff_t>(CountChunks());
            double sum = 0.0;
            std::for_each(row, end, [&](double value) { sum += value; });
            for (; row != end; ++row) {
                *row /= sum > 0.0 ? sum : 1.0;
            }
        }
    }

private:
    std::vector<double> values;
};

/// The places in the grid of a word: so many letters and so many phonemes lie before each.
class alignment_grid {
public:
    explicit alignment_grid(const spelled_word& word)
        : letters(word.letters), phones(word.pronunciations.front()),
          values((letters.size() + 1) * (phones.size() + 1)) {}

    double& At(size_t letter, size_t phone) { return values[letter * (phones.size() + 1) + phone]; }
    size_t NumLetters() const { return letters.size(); }
    size_t NumPhones() const { return phones.size(); }

    /// Calls `visit(from, chunk)` for each step that letter number `letter` can take to `phone`.
    template <class Visit> void ForStepsTo(size_t phone, Visit visit) const {
        for (size_t count = 0; count <= std::min(kMaxChunkPhones, phone); ++count) {
            visit(phone - count, MakeChunk(std::span(phones).subspan(phone - count, count)));
        }
    }

private:
    std::string_view letters;
    const phone_string& phones;
    std::vector<double> values;
};

bool HasTooManyPhones(const spelled_word& word) {
    return word.pronunciations.front().size() > kMaxChunkPhones * word.letters.size();
}

/// Adds to `counts` how often each letter is to be expected to say each chunk. A word that cannot
/// be aligned adds nothing.
void CountExpected(const spelled_word& word, const chunk_table& table, chunk_table& counts) {
    if (HasTooManyPhones(word)) {
        return;
    }
    alignment_grid forward(word);
    alignment_grid backward(word);
    const size_t numLetters = forward.NumLetters();
    const size_t numPhones = forward.NumPhones();
    forward.At(0, 0) = 1.0;
    for (size_t letter = 0; letter < numLetters; ++letter) {
        for (size_t phone = 0; phone <= numPhones; ++phone) {
            forward.ForStepsTo(phone, [&](size_t from, phone_chunk chunk) {
                forward.At(letter + 1, phone) +=
                    forward.At(letter, from) * table.At(word.letters[letter], chunk);
            });
        }
    }
    const double total = forward.At(numLetters, numPhones);
    if (total < std::numeric_limits<double>::min()) {
        return; // too improbable for what follows to be finite
    }
    backward.At(numLetters, numPhones) = 1.0 / total;
    for (size_t letter = numLetters; letter-- > 0;) {
        for (size_t phone = 0; phone <= numPhones; ++phone) {
            const double after = backward.At(letter + 1, phone);
            backward.ForStepsTo(phone, [&](size_t from, phone_chunk chunk) {
                const double way = table.At(word.letters[letter], chunk) * after;
                backward.At(letter, from) += way;
                counts.At(word.letters[letter], chunk) += forward.At(letter, from) * way;
            });
        }
    }
}

chunk_table FirstGuess() {
    chunk_table table;
    for (size_t code = 0; code < kNumCodes; ++code) {
        for (size_t number = 0; number < CountChunks(); ++number) {
            const auto chunk = static_cast<phone_chunk>(number);
            table.At(static_cast<char>(code), chunk) = kFirstGuess[CountPhones(chunk)];
        }
    }
    return table;
}

chunk_table LearnChunks(std::span<const spelled_word> words) {
    chunk_table table = FirstGuess();
    for (int round = 0; round < kRounds; ++round) {
        chunk_table counts;
        for (const spelled_word& word : words) {
            CountExpected(word, table, counts);
        }
        counts.Normalize();
        table = std::move(counts);
    }
    return table;
}

/// The likeliest alignment, where `probability(i, chunk)` is that of a chunk for letter number `i`;
/// nothing when all are impossible.
template <class Probability>
std::optional<aligned_word> Align(const spelled_word& word, Probability probability) {
    if (HasTooManyPhones(word)) {
        return std::nullopt;
    }
    alignment_grid best(word);
    const size_t numLetters = best.NumLetters();
    const size_t numPhones = best.NumPhones();
    std::vector<size_t> origins((numLetters + 1) * (numPhones + 1));
    best.At(0, 0) = 1.0;
    for (size_t letter = 0; letter < numLetters; ++letter) {
        for (size_t phone = 0; phone <= numPhones; ++phone) {
            best.ForStepsTo(phone, [&](size_t from, phone_chunk chunk) {
                const double way = best.At(letter, from) * probability(letter, chunk);
                if (way > best.At(letter + 1, phone)) {
                    best.At(letter + 1, phone) = way;
                    origins[(letter + 1) * (numPhones + 1) + phone] = from;
                }
            });
        }
    }
    if (!(best.At(numLetters, numPhones) > 0.0)) {
        return std::nullopt;
    }
    aligned_word aligned{word.letters, std::vector<phone_chunk>(numLetters)};
    const std::span<const size_t> phones(word.pronunciations.front());
    for (size_t letter = numLetters, phone = numPhones; letter-- > 0;) {
        const size_t from = origins[(letter + 1) * (numPhones + 1) + phone];
        aligned.chunks[letter] = MakeChunk(phones.subspan(from, phone - from));
        phone = from;
    }
    return aligned;
}

/// Aligns the words by what `probability(letters, i, chunk)` gives for letter number `i`.
template <class Probability>
std::vector<aligned_word> AlignAll(std::span<const spelled_word> words, Probability probability) {
    std::vector<aligned_word> aligned;
    for (const spelled_word& word : words) {
        auto alignment = Align(
            word, [&](size_t i, phone_chunk chunk) { return probability(word.letters, i, chunk); });
        if (alignment) {
            aligned.push_back(std::move(*alignment));
        }
    }
    return aligned;
}

/// How often each letter says each chunk before each next letter.
class pair_counts {
public:
    explicit pair_counts(std::span<const aligned_word> words) : totals(kNumCodes * kNumCodes) {
        for (const aligned_word& word : words) {
            for (size_t i = 0; i < word.letters.size(); ++i) {
                const size_t pair = PairAt(word.letters, i);
                ++totals[pair];
                ++counts[pair * CountChunks() + word.chunks[i]];
            }
        }
    }

    /// `alone` is the probability of the chunk for the letter before any other.
    double Probability(std::string_view letters, size_t i, phone_chunk chunk, double alone) const {
        const size_t pair = PairAt(letters, i);
        const auto found = counts.find(pair * CountChunks() + chunk);
        const double count = found != counts.end() ? found->second : 0.0;
        return (count + kPairTrust * alone) / (totals[pair] + kPairTrust);
    }

private:
    /// The end of a word counts as a letter of its own.
    static size_t PairAt(std::string_view letters, size_t i) {
        const size_t next = i + 1 < letters.size() ? CodeOf(letters[i + 1]) : 0;
        return CodeOf(letters[i]) * kNumCodes + next;
    }

    std::vector<double> totals;
    std::unordered_map<size_t, double> counts;
};

} // namespace

std::vector<aligned_word> AlignLetters(std::span<const spelled_word> words) {
    const chunk_table table = LearnChunks(words);
    const auto alone = [&](std::string_view letters, size_t i, phone_chunk chunk) {
        const double probability = table.At(letters[i], chunk);
        return probability >= kRarestChunk ? probability : 0.0;
    };
    std::vector<aligned_word> aligned = AlignAll(words, alone);
    for (int round = 0; round < kPairRounds; ++round) {
        const pair_counts pairs(aligned);
        aligned = AlignAll(words, [&](std::string_view letters, size_t i, phone_chunk chunk) {
            const double probability = alone(letters, i, chunk);
            return probability > 0.0 ? pairs.Probability(letters, i, chunk, probability) : 0.0;
        });
    }
    return aligned;
}

} // namespace tessarin::training
