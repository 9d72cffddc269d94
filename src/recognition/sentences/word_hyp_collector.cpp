#include "recognition/sentences/word_hyp_collector.h"

#include <algorithm>
#include <cstddef>

#include "model/accoustic_hmm.h"
#include "tessarin/progress_sink.h"

namespace tessarin {
namespace {

/// Kept: a sentence is held to less than all of its observations, so that it can be believed
/// although the search for any speech is never worse than it.
constexpr double kFrameShare = 0.85;

/// How far below the best place another one may be.
constexpr double kFloorMargin = double{1.45f};

/// A place with the best chain of places that leads to it.
struct trellis_entry {
    const full_word_hypothesis* hypothesis;
    const trellis_entry* earlier; // null at the first sentence
    double total;
};

/// Entries of one sentence, in the order of their ends.
class trellis_column {
public:
    void Reserve(size_t room) { entries.reserve(room); }
    void Add(const trellis_entry& entry) {
        const bool isBest = records.empty() || entry.total > entries[records.back()].total;
        if (isBest) {
            records.push_back(entries.size());
        }
        entries.push_back(entry);
    }
    bool IsEmpty() const { return entries.empty(); }
    const std::vector<trellis_entry>& Entries() const { return entries; }

    /// The entry that ends early enough for a place from `start` on and gives it the highest total;
    /// the first of equals; null for none. As no later entry ends earlier, only those are looked at
    /// that are better than all before them.
    const trellis_entry* BestBefore(const full_word_hypothesis& place) const {
        const auto inTime = std::partition_point(records.begin(), records.end(), [&](size_t i) {
            return place.start > uint64_t{entries[i].hypothesis->end} + 1;
        });
        if (inTime == records.begin()) {
            return nullptr;
        }
        auto best = inTime - 1;
        const double total = entries[*best].total + place.score;
        while (best != records.begin() && entries[*(best - 1)].total + place.score == total) {
            --best; // sums can be equal where the parts are not
        }
        return &entries[*best];
    }

    /// The entry with the highest total, the first of equals; null for none.
    const trellis_entry* Best() const {
        return records.empty() ? nullptr : &entries[records.back()];
    }

private:
    std::vector<trellis_entry> entries;
    std::vector<size_t> records; // entries with a higher total than all before
};

/// The column of a sentence, given that of the one before.
trellis_column NextColumn(const WordHypCollector& collector, const trellis_column& before) {
    trellis_column column;
    column.Reserve(collector.Hypotheses().size());
    for (const full_word_hypothesis& place : collector.Hypotheses()) {
        if (const trellis_entry* earlier = before.BestBefore(place)) {
            column.Add({&place, earlier, earlier->total + place.score});
        }
    }
    return column.IsEmpty() ? before : column;
}

bool IsCancelled(ProgressSink* progress, size_t done, size_t total) {
    return progress != nullptr &&
           progress->OnProgress(static_cast<uint32_t>(done), static_cast<uint32_t>(total));
}

} // namespace

WordHypCollector::WordHypCollector(uint32_t span, const WordHypCollector* precedingSentence)
    : index(span), preceding(precedingSentence), floor(kImpossibleLog), bestScore(kImpossibleLog) {}

void WordHypCollector::Add(const word_end& place) {
    const auto frames = static_cast<float>(place.end - place.start);
    if (!(frames > 0.0f)) {
        return; // a sentence without phonemes ends where it begins
    }
    const double background = place.noiseGain - place.freeGain;
    double total = (place.pathGain - place.freeGain) / (double{frames} * kFrameShare) -
                   background / double{frames};
    if (preceding != nullptr) {
        const double* best = preceding->BestUpTo(place.start);
        if (best == nullptr) {
            return; // Kept: a first sentence that was nowhere takes all the others with it
        }
        total += *best;
    }
    if (!(total > floor)) {
        return;
    }
    hypotheses.push_back({index, place.start, place.end, total, background});
    bestScores.push_back(bestScores.empty() ? total : std::max(bestScores.back(), total));
    if (total > bestScore) {
        bestScore = total;
        floor = total - kFloorMargin; // what was taken before stays
    }
}

const double* WordHypCollector::BestUpTo(uint32_t frame) const {
    const auto after =
        std::partition_point(hypotheses.begin(), hypotheses.end(),
                             [&](const full_word_hypothesis& each) { return each.end <= frame; });
    return after == hypotheses.begin() ? nullptr : &bestScores[after - hypotheses.begin() - 1];
}

error_code ChooseHypotheses(const std::vector<WordHypCollector>& collectors, ProgressSink* progress,
                            std::vector<full_word_hypothesis>& chosen) {
    chosen.clear();
    if (IsCancelled(progress, 0, collectors.size())) {
        return kUserCancelled;
    }
    std::vector<trellis_column> columns(collectors.size());
    for (size_t i = 0; i < collectors.size(); ++i) {
        if (i == 0) {
            columns[0].Reserve(collectors[0].Hypotheses().size());
            for (const full_word_hypothesis& place : collectors[0].Hypotheses()) {
                columns[0].Add({&place, nullptr, place.score});
            }
            continue;
        }
        columns[i] = NextColumn(collectors[i], columns[i - 1]);
        if (IsCancelled(progress, i, collectors.size())) {
            return kUserCancelled;
        }
    }
    const trellis_entry* entry = columns.empty() ? nullptr : columns.back().Best();
    for (; entry != nullptr; entry = entry->earlier) {
        chosen.push_back(*entry->hypothesis);
    }
    std::reverse(chosen.begin(), chosen.end());
    return kNoError;
}

} // namespace tessarin
