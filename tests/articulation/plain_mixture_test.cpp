// Holds the articulator to a plain version of the method: a walk over all phonemes at every frame,
// on maps of texts.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "articulation/rule_text.h"
#include "sounds.h"

namespace tessarin::test {
namespace {

using mixture = std::map<std::string, float>;

struct plain_articulator {
    articulator_rules rules;
    uint32_t flags = 0;
    size_t most = 10;
    mixture previous;

    const articulator_rule* Find(const phn_marker& m) const {
        return rules.Find(phoneme_label(m.label));
    }

    void Add(const phn_marker& m, int32_t t, mixture& into) const {
        const articulator_rule& rule = *Find(m);
        float level = m.score / 100.0f + rules.global_gain + rule.gain;
        const float excess = level > 1.0f && (flags & kExcessLevel) ? level - 1.0f : 0.0f;
        level = std::min(level, 1.0f);
        float rest = 1.0f - level;
        for (const float factor :
             {StrengthAt(rule, m.start, m.end, t), FadeAt(rule, m.start, m.end, t)}) {
            level *= factor;
            rest *= factor;
        }
        if (excess + level > 0.0f) {
            into[m.label] += excess + level;
        }
        if (rest > 0.0f) {
            into["x"] += rest;
        }
    }

    mixture At(int32_t t, const phn_marker_list& markers) const {
        const phn_marker* current = nullptr;
        std::vector<const phn_marker*> before, after;
        for (const phn_marker& m : markers) {
            if (m.start > t + rules.largest_release && !m.moved) {
                break;
            }
            if (m.start <= t && m.end > t) {
                current = &m;
            } else if (m.start >= t - rules.largest_attack && m.start <= t) {
                before.push_back(&m);
            } else if (m.start >= t && m.start <= t + rules.largest_release) {
                after.push_back(&m);
            }
        }
        if (current && Find(*current) &&
            StrengthAt(*Find(*current), current->start, current->end, t) >= 1.0f) {
            const bool late = t >= (current->start + current->end) / 2;
            if (!(flags & kSmoothFrames) || late) {
                before.clear();
            }
            if (!(flags & kSmoothFrames) || !late) {
                after.clear();
            }
        }
        std::reverse(before.begin(), before.end());
        for (auto* group : {&before, &after}) {
            bool blocked = false;
            std::erase_if(*group, [&](const phn_marker* m) {
                const articulator_rule* rule = Find(*m);
                if (!rule) {
                    return true;
                }
                const bool gone =
                    group == &before ? m->end + rule->release < t : t < m->start - rule->attack;
                const bool erased = blocked || gone;
                blocked |= rule->strength >= 1.0f;
                return erased;
            });
        }
        mixture mixed;
        if (current && Find(*current)) {
            Add(*current, t, mixed);
        }
        for (auto* group : {&before, &after}) {
            for (const phn_marker* m : *group) {
                if (!mixed.contains(m->label)) {
                    Add(*m, t, mixed);
                }
            }
        }
        const auto initial = static_cast<float>(mixed.size());
        while (mixed.size() > most) {
            const auto rank = [&](const auto& entry) {
                return entry.first == "x"               ? entry.second / initial
                       : previous.contains(entry.first) ? entry.second * 1.5f
                                                        : entry.second;
            };
            mixed.erase(std::min_element(mixed.begin(), mixed.end(),
                                         [&](auto& a, auto& b) { return rank(a) < rank(b); }));
        }
        float sum = 0.0f;
        for (auto& [label, weight] : mixed) {
            sum += weight;
        }
        for (auto& [label, weight] : mixed) {
            weight /= sum;
        }
        return mixed;
    }

    /// The frames of all phonemes, by their index; `offsets` are those of the rules.
    std::map<int32_t, mixture> Frames(phn_marker_list markers) {
        int32_t lo = 1000000000, hi = -100000000;
        for (phn_marker& m : markers) {
            const int32_t offset = rules.rules[phoneme_label(m.label)].offset;
            m.moved = offset != 0;
            m.start += offset + rules.global_offset;
            m.end += offset + rules.global_offset;
            lo = std::min({lo, m.start, m.end});
            hi = std::max({hi, m.start, m.end});
        }
        const float frameMs = 1000.0f / rules.frame_rate;
        const auto first = static_cast<int32_t>(static_cast<float>(lo) / frameMs);
        const auto last = static_cast<int32_t>(static_cast<float>(hi) / frameMs) +
                          (std::fmod(static_cast<float>(hi), frameMs) != 0.0f);
        std::map<int32_t, mixture> frames;
        for (int32_t f = first; f <= last; ++f) {
            const float t = static_cast<float>(f) * frameMs + frameMs / 2.0f;
            previous = At(static_cast<int32_t>(t), markers);
            frames[static_cast<int32_t>(static_cast<float>(f) * frameMs)] = previous;
        }
        return frames;
    }
};

class RandomPhonemes {
public:
    explicit RandomPhonemes(uint32_t seed) : random(seed) {}
    int32_t Below(int32_t limit) { return static_cast<int32_t>(random() % limit); }

    /// Mostly one after the other, as speech is; some overlap, stand out of order or last long. No
    /// vowel, which would have a lead-in.
    phn_marker_list Make(int32_t count) {
        static const char* const labels[] = {"b", "s", "x", "m", "ER", "q", "t", "y", "l"};
        phn_marker_list markers;
        int32_t time = Below(200);
        for (int32_t i = 0; i < count; ++i) {
            const int32_t length = Below(20) == 0 ? Below(3000) : Below(120);
            const int32_t shift = Below(12) == 0 ? Below(600) - 300 : 0;
            markers.emplace_back(time + shift, time + shift + length, labels[Below(9)],
                                 static_cast<float>(Below(130)));
            time += Below(15) == 0 ? Below(400) : std::min(length, 120);
        }
        return markers;
    }

private:
    std::mt19937 random;
};

TEST(Articulator, MakesTheFramesOfThePlainMethod) {
    const char* const texts[] = {
        "framerate 30\nb 1 50 50 0 1 10 .5\nm 1 80 90\nsty .5 60 70\nER .7 250 100 30 .2 20 .9\n"
        "l .9 125 125\nx .5 50 50\ngain s .4\n",
        "framerate 59.94\nb 1 50 50 0 1 10 .5\nsty .5 60 70\nER .7 50 100\nl .9 125 40\n"
        "x .5 50 50\noffset s -40\noffset l 300\nglobal_offset 25\nglobal_gain -.1\n"};
    for (uint32_t seed = 0; seed < 40; ++seed) {
        SCOPED_TRACE(seed);
        RandomPhonemes random(seed);
        const phn_marker_list markers = random.Make(seed == 0 ? 1000 : 60);
        plain_articulator plain;
        ASSERT_EQ(ReadRuleText(texts[seed % 2], plain.rules), kNoError);
        plain.flags = seed % 3 == 0 ? uint32_t{kExcessLevel} : 0u;
        plain.most = seed % 5 == 0 ? 2 : 10;

        sounds results;
        for (const phn_marker& m : markers) {
            results.Add(Marker({m.label, m.start, m.end, m.score}));
        }
        ruled_articulator articulator(texts[seed % 2]);
        articulator.SetFlags(plain.flags);
        articulator.SetMaxContributions(static_cast<int32_t>(plain.most));
        ASSERT_EQ(articulator.GenerateArticulations(&results, nullptr), kNoError);

        std::map<int32_t, mixture> made;
        for (const articulation& frame : articulator.Frames()) {
            made[frame.start] = Weights(frame);
        }
        std::map<int32_t, mixture> expected = plain.Frames(markers);
        std::erase_if(expected, [](const auto& frame) { return frame.second.empty(); });
        for (const auto& [start, frame] : expected) {
            ASSERT_EQ(made[start], frame) << start;
        }
        ASSERT_EQ(made.size(), expected.size());
    }
}

} // namespace
} // namespace tessarin::test
