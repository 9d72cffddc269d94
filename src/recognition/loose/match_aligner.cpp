#include "recognition/loose/match_aligner.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "base/flog.h"
#include "base/guarded.h"
#include "base/text_copy.h"
#include "base/trunc_sat.h"
#include "model/accoustic_hmm.h"
#include "platform/floating_point.h"
#include "recognition/aligner/region_markers.h"
#include "recognition/loose/watched_aligner.h"
#include "recognition/markers/time_base.h"
#include "results/concrete_sync_marker_collection.h"
#include "results/saturated.h"
#include "results/sync_marker.h"

namespace tessarin {
namespace {

constexpr float kNoMargin = -1e9f;
constexpr double kMostFileMargin = 100.0; ///< of one word, so that a long one does not decide alone

template <class T> const T* ItemsOf(const std::vector<T>& items, uint32_t* count) {
    if (count != nullptr) {
        *count = static_cast<uint32_t>(items.size());
    }
    return items.empty() ? nullptr : items.data();
}

const region_match::word* FindWord(const watched_region& region, size_t token) {
    const auto& words = region.match.words;
    const auto found = std::ranges::lower_bound(words, token, {}, &region_match::word::token);
    return region.isMatched && found != words.end() && found->token == token ? &*found : nullptr;
}

/// Milliseconds at which a region begins, as the exact search has it.
int32_t OffsetMs(const watched_region& region, double periodMs) {
    const bool isAfterCut = !region.tokens.empty() && region.tokens.front().kind == kCutToken;
    const int32_t firstFrame =
        isAfterCut ? TruncSat<int32_t>(region.tokens.front().value / periodMs) : 0;
    return TruncSat<int32_t>(periodMs * firstFrame);
}

} // namespace

/// One call, after its searches.
struct CMatchAligner::watched_run {
    const std::vector<watched_region>& regions;
    CConcreteSyncMarkerCollection& plain; ///< markers of the exact search
    const char* text;                     ///< may be null
    int64_t textLength;
    double periodMs;
    uint32_t mode;
    std::string silence; ///< label

    bool IsLoose(const watched_region& region) const {
        return region.isMatched &&
               (mode == kMatchLoose || region.match.departs || region.code == kRecognitionFailed);
    }
    error_code MoveMarkers(CConcreteSyncMarkerCollection& results) const;
    error_code MovePlain(size_t region, CConcreteSyncMarkerCollection& results) const;
    error_code WriteLoose(const watched_region& region,
                          CConcreteSyncMarkerCollection& results) const;
    int32_t EndOf(size_t region) const {
        return region + 1 < regions.size() ? regions[region + 1].firstMarker : plain.GetSize();
    }
    bool HasWords(size_t region) const;
    error_code Code() const;
};

error_code CMatchAligner::watched_run::MoveMarkers(CConcreteSyncMarkerCollection& results) const {
    for (size_t i = 0; i < regions.size(); ++i) {
        const error_code code =
            IsLoose(regions[i]) ? WriteLoose(regions[i], results) : MovePlain(i, results);
        if (code != kNoError) {
            return code;
        }
    }
    return kNoError;
}

error_code CMatchAligner::watched_run::MovePlain(size_t region,
                                                 CConcreteSyncMarkerCollection& results) const {
    for (int32_t i = regions[region].firstMarker; i < EndOf(region); ++i) {
        if (results.Add(plain[i]) == 0) {
            return kOutOfMemory;
        }
        plain[i].text = nullptr; // it has gone over
    }
    return kNoError;
}

error_code CMatchAligner::watched_run::WriteLoose(const watched_region& region,
                                                  CConcreteSyncMarkerCollection& results) const {
    TArray<CSyncMarker> phones(16);
    for (const CSyncMarker& phone : region.match.phones) {
        if (phones.Add(phone) == 0) {
            return kOutOfMemory;
        }
    }
    std::vector<CTxMarker> said;
    for (size_t i = 0; i < region.tokens.size(); ++i) {
        const region_match::word* const word = FindWord(region, i);
        if (word == nullptr || word->isSaid) {
            said.push_back(region.tokens[i]);
        }
    }
    return EmitRegionMarkers(results, phones, OffsetMs(region, periodMs), said, text, textLength,
                             true);
}

bool CMatchAligner::watched_run::HasWords(size_t region) const {
    for (int32_t i = regions[region].firstMarker; i < EndOf(region); ++i) {
        if (plain[i].type == kWordMarker) {
            return true;
        }
    }
    return false;
}

/// The code of the last region that failed, as the exact search's; but one whose text was lost
/// counts as found where most of its words were.
error_code CMatchAligner::watched_run::Code() const {
    error_code last = kNoError;
    for (const watched_region& region : regions) {
        const auto said = std::ranges::count_if(region.match.words, &region_match::word::isSaid);
        const bool isFound = region.code == kRecognitionFailed && IsLoose(region) &&
                             2 * static_cast<size_t>(said) >= region.match.words.size();
        last = region.code != kNoError && !isFound ? region.code : last;
    }
    return last;
}

error_code CMatchAligner::SetMode(uint32_t newMode) {
    if (newMode > kMatchLoose) {
        return kInvalidArgument;
    }
    mode = newMode;
    return kNoError;
}

error_code CMatchAligner::SetCalibration(CAccousticHMM* model, const char* text, uint32_t length) {
    known.reset();
    if (model == nullptr || (text == nullptr && length > 0)) {
        return kInvalidArgument;
    }
    return Guarded([&] { return calibration::Read({text, length}, *model, known); });
}

error_code CMatchAligner::Align(IObservationStream* stream, CAccousticHMM* model, const char* text,
                                IVisemixTranscriber* transcriber, ProgressSink* progress,
                                ISyncResultsCollection* results) {
    flog scope("CMatchAligner::Align");
    MaskFloatUnderflow();
    return Guarded([&]() -> error_code {
        Forget();
        CConcreteSyncMarkerCollection* const markers = CConcreteSyncMarkerCollection::Find(results);
        CConcreteSyncMarkerCollection plain;
        CWatchedAligner watched(plain);
        CTextbasedPhnRecognizer exact;
        const bool isExact = mode == kMatchExact || markers == nullptr || stream == nullptr ||
                             model == nullptr || transcriber == nullptr;
        CTextbasedPhnRecognizer& aligner = isExact ? exact : watched;
        if (beamWidth != 0) {
            aligner.SetBeamWidth(beamWidth);
        }
        aligner.SetOutputOptions(retry, 0);
        if (isExact) {
            return aligner.RecognizePhonemes(stream, model, text, transcriber, progress, results);
        }
        plain.set_flags(markers->get_flags() & kWriteStateMarkers);
        const error_code code =
            aligner.RecognizePhonemes(stream, model, text, transcriber, progress, &plain);
        const char* const silence = model->GetLabel(0, false);
        const watched_run run{.regions = watched.GetRegions(),
                              .plain = plain,
                              .text = text,
                              .textLength =
                                  text != nullptr ? static_cast<int64_t>(std::strlen(text)) : 0,
                              .periodMs = FramePeriodMs(*stream),
                              .mode = mode,
                              .silence = silence != nullptr ? silence : ""};
        const error_code moved = run.MoveMarkers(*markers);
        markers->PostProcessMarkers();
        if (moved != kNoError || (code != kNoError && code != kRecognitionFailed)) {
            return moved != kNoError ? moved : code;
        }
        JudgeWords(run);
        JudgeFile(run);
        JudgePhonemes(*markers, run.silence);
        return run.Code();
    });
}

void CMatchAligner::Forget() {
    words.clear();
    unscripted.clear();
    phonemes.clear();
    summary = {};
    summary.score = summary.duration = -1.0f;
    summary.spread = 1.0f;
}

void CMatchAligner::JudgeWords(const watched_run& run) {
    for (size_t i = 0; i < run.regions.size(); ++i) {
        const watched_region& region = run.regions[i];
        const bool isLoose = run.IsLoose(region);
        const bool hasWords = isLoose || run.HasWords(i);
        for (size_t token = 0; token < region.tokens.size(); ++token) {
            if (region.tokens[token].kind != kWordToken) {
                continue;
            }
            match_word word{region.tokens[token].text_start, region.tokens[token].text_end,
                            hasWords ? 1 : 0, -1.0f, kNoMargin};
            if (const region_match::word* const found = FindWord(region, token)) {
                word.is_said = hasWords && (!isLoose || found->isSaid) ? 1 : 0;
                word.margin = static_cast<float>(found->margin);
                word.confidence = known ? known->WordConfidence(found->margin) : -1.0f;
            }
            words.push_back(word);
        }
        if (!isLoose) {
            continue;
        }
        const int32_t offsetMs = OffsetMs(region, run.periodMs);
        for (const region_match::stretch& each : region.match.unscripted) {
            const auto timeMs = [&](size_t observation) {
                return Saturated(int64_t{offsetMs} +
                                 FrameTimeMs(static_cast<int64_t>(observation), run.periodMs));
            };
            const uint32_t place = each.token < region.tokens.size()
                                       ? region.tokens[each.token].text_start
                                   : region.tokens.empty() ? 0
                                                           : region.tokens.back().text_end;
            unscripted.push_back({timeMs(each.first), timeMs(each.end), place});
        }
    }
}

void CMatchAligner::JudgeFile(const watched_run& run) {
    match_evidence sum;
    double margins = 0.0;
    double distances = 0.0;
    size_t judged = 0;
    size_t phones = 0;
    bool departs = false;
    for (const watched_region& region : run.regions) {
        if (!region.isMatched) {
            continue;
        }
        const match_evidence& evidence = region.match.evidence;
        departs = departs || (run.IsLoose(region) && region.match.departs);
        sum.fit += evidence.fit;
        sum.spoken += evidence.spoken;
        for (const region_match::word& word : region.match.words) {
            margins += std::clamp(word.margin, 0.0, kMostFileMargin);
            ++judged;
        }
        for (size_t i = 0; known && i < evidence.phones.size(); ++i) {
            distances += known->DurationDistance(evidence.phones[i], evidence.phoneMs[i]);
            ++phones;
        }
        summary.is_loose = summary.is_loose != 0 || run.IsLoose(region) ? 1 : 0;
        summary.spread = std::max(summary.spread, static_cast<float>(region.match.spread));
    }
    summary.words = static_cast<uint32_t>(words.size());
    summary.unsaid = static_cast<uint32_t>(std::ranges::count(words, 0, &match_word::is_said));
    for (const match_stretch& each : unscripted) {
        summary.unscripted_ms =
            Saturated(int64_t{summary.unscripted_ms} + each.end_ms - each.start_ms);
    }
    const auto mean = [](double total, size_t count) {
        return count > 0 ? static_cast<float>(total / static_cast<double>(count)) : 0.0f;
    };
    summary.margin = mean(margins, judged);
    summary.fit = mean(sum.fit, sum.spoken);
    summary.duration = phones > 0 ? mean(distances, phones) : -1.0f;
    if (known && judged > 0) {
        summary.score = known->FileScore(summary);
        summary.verdict = known->Verdict(summary.score, departs);
    }
}

void CMatchAligner::JudgePhonemes(const CConcreteSyncMarkerCollection& markers,
                                  std::string_view silence) {
    auto word = words.begin();
    auto stretch = unscripted.begin();
    float confidence = -1.0f;
    int32_t endMs = 0;
    for (int32_t i = 0; i < markers.GetSize(); ++i) {
        const CSyncMarker& marker = markers[i];
        if (marker.type == kWordMarker) {
            word = std::ranges::find(word, words.end(), 1, &match_word::is_said);
            confidence = word != words.end() ? word->confidence : -1.0f;
            endMs = marker.end;
            word += word != words.end() ? 1 : 0;
        } else if (marker.type == kPhonemeMarker) {
            while (stretch != unscripted.end() && stretch->end_ms <= marker.start) {
                ++stretch;
            }
            const bool isHeard = stretch != unscripted.end() && stretch->start_ms <= marker.start;
            const bool isSilence = FieldText(marker.label) == silence;
            float own = marker.start < endMs ? confidence : -1.0f;
            own = isHeard && known ? known->HeardConfidence() : own;
            phonemes.push_back(isSilence ? -1.0f : own);
        }
    }
}

const match_word* CMatchAligner::GetWords(uint32_t* count) {
    return ItemsOf(words, count);
}

const match_stretch* CMatchAligner::GetUnscripted(uint32_t* count) {
    return ItemsOf(unscripted, count);
}

const float* CMatchAligner::GetPhonemeConfidences(uint32_t* count) {
    return ItemsOf(phonemes, count);
}

uint64_t CMatchAligner::GetFingerprint(const CAccousticHMM* model) {
    return model != nullptr ? ModelFingerprint(*model) : 0;
}

void CMatchAligner::GetSummary(match_summary* out) {
    if (out != nullptr) {
        *out = summary;
    }
}

} // namespace tessarin
