#include "articulation/mixture_at.h"

#include <algorithm>

namespace tessarin {
namespace {

/// From this strength on a phoneme hides its neighbours.
constexpr float kDominant = 1.0f;

/// Adds what `phoneme` shows at `t`, and the rest of its level as silence: a quiet phoneme gives
/// way to silence, so that the mouth opens less.
void Contribute(const sounding_phoneme& phoneme, int32_t t, const mixture_settings& settings,
                phoneme_mixture& mixture) {
    float level = phoneme.score / 100.0f + settings.global_gain + phoneme.rule->gain;
    float excess = 0.0f;
    if (level > 1.0f) {
        excess = settings.count_excess ? level - 1.0f : 0.0f;
        level = 1.0f;
    }
    float rest = 1.0f - level;
    const float strength = StrengthAt(*phoneme.rule, phoneme.start, phoneme.end, t);
    const float fade = FadeAt(*phoneme.rule, phoneme.start, phoneme.end, t);
    level = level * strength * fade;
    rest = rest * strength * fade;
    // Kept: the excess is not faded, so that a shout shows over the whole reach of its rule.
    const float share = excess + level;
    if (share > 0.0f) {
        mixture[phoneme.label] += share;
    }
    if (rest > 0.0f) {
        mixture[kSilence] += rest;
    }
}

/// Mixes in the phonemes on one side, nearest first, as far as the first dominant one. A sound
/// shows through its nearest occurrence alone. `reaches(phoneme)` says whether it shows at `t`.
template <class Iterator, class Reaches>
void ContributeSide(Iterator nearest, Iterator end, int32_t t, const mixture_settings& settings,
                    Reaches reaches, phoneme_mixture& mixture) {
    for (; nearest != end; ++nearest) {
        const sounding_phoneme* const phoneme = *nearest;
        if (phoneme->rule == nullptr) {
            continue;
        }
        if (reaches(*phoneme) && !mixture.Contains(phoneme->label)) {
            Contribute(*phoneme, t, settings, mixture);
        }
        if (phoneme->rule->strength >= kDominant) {
            return;
        }
    }
}

/// Drops the least phonemes until `most` are left. Silence is easily dropped, and a phoneme of the
/// frame before not so easily, to avoid flicker.
void KeepStrongest(size_t most, const phoneme_mixture& previous, phoneme_mixture& mixture) {
    const auto initialCount = static_cast<float>(mixture.Size());
    const auto rank = [&](const phoneme_mixture::entry& entry) {
        if (entry.label == kSilence) {
            return entry.weight / initialCount;
        }
        return previous.Contains(entry.label) ? entry.weight * 1.5f : entry.weight;
    };
    while (mixture.Size() > most) {
        auto weakest = mixture.end();
        float lowest = 1e7f;
        for (auto entry = mixture.begin(); entry != mixture.end(); ++entry) {
            if (rank(*entry) < lowest) {
                lowest = rank(*entry);
                weakest = entry;
            }
        }
        if (weakest == mixture.end()) {
            return;
        }
        mixture.Erase(weakest);
    }
}

} // namespace

void MixtureAt(int32_t t, const neighbourhood& around, const mixture_settings& settings,
               const phoneme_mixture& previous, phoneme_mixture& mixture) {
    mixture.Clear();
    bool takesBefore = true;
    bool takesAfter = true;
    if (const sounding_phoneme* current = around.current; current != nullptr && current->rule) {
        if (StrengthAt(*current->rule, current->start, current->end, t) >= kDominant) {
            const bool firstHalf = t < (int64_t{current->start} + current->end) / 2;
            takesBefore = settings.smooth && firstHalf;
            takesAfter = settings.smooth && !firstHalf;
        }
        Contribute(*current, t, settings, mixture);
    }
    if (takesBefore) {
        const auto lingers = [&](const sounding_phoneme& phoneme) {
            return t <= int64_t{phoneme.end} + phoneme.rule->release;
        };
        ContributeSide(around.before.rbegin(), around.before.rend(), t, settings, lingers, mixture);
    }
    if (takesAfter) {
        const auto isPrepared = [&](const sounding_phoneme& phoneme) {
            return t >= int64_t{phoneme.start} - phoneme.rule->attack;
        };
        ContributeSide(around.after.begin(), around.after.end(), t, settings, isPrepared, mixture);
    }
    KeepStrongest(settings.max_contributions, previous, mixture);
    mixture.Normalize();
}

} // namespace tessarin
