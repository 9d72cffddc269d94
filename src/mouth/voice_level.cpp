#include "mouth/voice_level.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "base/text_copy.h"
#include "mouth/mouth_classes.h"

namespace tessarin {

namespace {

/// A usual vowel is not the widest that there is: louder ones have room above it.
constexpr float kUsualOpening = 0.88f;
constexpr float kOpeningPerDb = 0.025f;
/// However softly it is said, a vowel opens the mouth more than it rests.
constexpr float kLeastOpening = 0.55f;

/// Consonants are said fully in a voice that is much softer than usual, and never lost.
constexpr float kSoftDb = -8.0f;
constexpr float kLevelPerDb = 0.025f;
constexpr float kLeastLevel = 0.5f;

/// What is said within that time belongs to one phrase.
constexpr int64_t kPhraseMs = 500;

struct vowel_loudness {
    int64_t startMs;
    int64_t endMs;
    float db;

    int64_t LengthMs() const { return endMs - startMs; }
};

/// The loudness above and below which vowels last equally long.
float MedianOf(std::vector<vowel_loudness> vowels) {
    std::ranges::sort(vowels, {}, &vowel_loudness::db);
    int64_t rest = 0;
    for (const vowel_loudness& vowel : vowels) {
        rest += vowel.LengthMs();
    }
    rest /= 2;
    for (const vowel_loudness& vowel : vowels) {
        rest -= vowel.LengthMs();
        if (rest < 0) {
            return vowel.db;
        }
    }
    return vowels.empty() ? 0.0f : vowels.back().db;
}

/// How loud the phrase around a time is, in dB: near and long vowels say more than others. NaN
/// where there are none.
class PhraseLoudness {
public:
    explicit PhraseLoudness(std::span<const vowel_loudness> all) : vowels(all) {}

    /// Times must not go back.
    float At(int64_t ms) {
        while (first < vowels.size() && vowels[first].endMs < ms - kPhraseMs) {
            ++first;
        }
        double sum = 0.0;
        double weights = 0.0;
        for (size_t i = first; i < vowels.size() && vowels[i].startMs <= ms + kPhraseMs; ++i) {
            const int64_t middleMs = (vowels[i].startMs + vowels[i].endMs) / 2;
            const int64_t nearness = std::max<int64_t>(kPhraseMs - std::abs(middleMs - ms), 1);
            const auto weight = static_cast<double>(nearness * vowels[i].LengthMs());
            sum += weight * static_cast<double>(vowels[i].db);
            weights += weight;
        }
        return weights > 0.0 ? static_cast<float>(sum / weights)
                             : std::numeric_limits<float>::quiet_NaN();
    }

private:
    std::span<const vowel_loudness> vowels;
    size_t first = 0;
};

float DecibelsOfScore(float score) {
    return score > 0.0f ? 20.0f * std::log10(std::min(score, 100.0f) / 100.0f) : kSilenceDb;
}

} // namespace

float OpeningOf(float relativeDb) {
    return std::clamp(kUsualOpening + relativeDb * kOpeningPerDb, kLeastOpening, 1.0f);
}

float ConsonantLevelOf(float phraseDb) {
    return std::isnan(phraseDb)
               ? 1.0f
               : std::clamp(1.0f + (phraseDb - kSoftDb) * kLevelPerDb, kLeastLevel, 1.0f);
}

VoiceLevels::VoiceLevels(std::span<const tessarin_phoneme> phonemes,
                         const LoudnessCurve& loudness) {
    std::vector<vowel_loudness> vowels;
    for (const tessarin_phoneme& each : phonemes) {
        if (ClassOf(FieldText(each.label)) == mouth_class::vowel && each.end_ms > each.start_ms) {
            const float db = loudness.IsEmpty() ? DecibelsOfScore(each.score)
                                                : loudness.Mean(each.start_ms, each.end_ms);
            vowels.push_back({each.start_ms, each.end_ms, db});
        }
    }
    usualDb = MedianOf(vowels);
    for (vowel_loudness& vowel : vowels) {
        vowel.db -= usualDb;
    }
    PhraseLoudness phrase(vowels);
    auto vowel = vowels.begin();
    levels.reserve(phonemes.size());
    for (const tessarin_phoneme& each : phonemes) {
        switch (ClassOf(FieldText(each.label))) {
        case mouth_class::vowel:
            levels.push_back(each.end_ms > each.start_ms ? OpeningOf((vowel++)->db)
                                                         : OpeningOf(0.0f));
            break;
        case mouth_class::consonant:
            levels.push_back(
                ConsonantLevelOf(phrase.At((int64_t{each.start_ms} + each.end_ms) / 2)));
            break;
        default:
            levels.push_back(1.0f);
            break;
        }
    }
}

} // namespace tessarin
