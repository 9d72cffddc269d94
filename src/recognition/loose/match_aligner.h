#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "recognition/loose/calibration.h"
#include "recognition/textbased_phn_recognizer.h"
#include "tessarin/match_aligner.h"

namespace tessarin {

/// The aligner that hosts hold as IMatchAligner: it watches the published one at work, searches
/// each region again, with words that may be missing and other speech, and chooses between the two.
class CMatchAligner : public IMatchAligner {
public:
    CMatchAligner() { Forget(); }

    error_code SetMode(uint32_t newMode) override;
    void SetBeamWidth(int32_t width) override { beamWidth = width; }
    void SetRetry(uint8_t newRetry) override { retry = newRetry; }
    error_code SetCalibration(CAccousticHMM* model, const char* text, uint32_t length) override;
    error_code Align(IObservationStream* stream, CAccousticHMM* model, const char* text,
                     IVisemixTranscriber* transcriber, ProgressSink* progress,
                     ISyncResultsCollection* results) override;
    const match_word* GetWords(uint32_t* count) override;
    const match_stretch* GetUnscripted(uint32_t* count) override;
    const float* GetPhonemeConfidences(uint32_t* count) override;
    void GetSummary(match_summary* out) override;
    uint64_t GetFingerprint(const CAccousticHMM* model) override;

private:
    struct watched_run;

    void Forget();
    void JudgeWords(const watched_run& run);
    void JudgeFile(const watched_run& run);
    void JudgePhonemes(const CConcreteSyncMarkerCollection& markers, std::string_view silence);

    uint32_t mode = kMatchAuto;
    int32_t beamWidth = 0;
    uint8_t retry = 0;
    std::optional<calibration> known;
    std::vector<match_word> words;
    std::vector<match_stretch> unscripted;
    std::vector<float> phonemes;
    match_summary summary{};
};

} // namespace tessarin
