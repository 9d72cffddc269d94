#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "tessarin/error_codes.h"
#include "tessarin/match_aligner.h"

namespace tessarin {

class CAccousticHMM;

/// Tells models apart by what they score with.
uint64_t ModelFingerprint(const CAccousticHMM& model);

/// What the scores of one model mean. Its text has a line for each of these, in any order:
///
///     model FINGERPRINT                  of the model that it belongs to, in hexadecimal
///     word OFFSET SLOPE                  confidence of a word: logistic(OFFSET + SLOPE * margin)
///     heard SHARE                        of the phonemes heard without a text that are right
///     file OFFSET MARGIN SAID FIT DURATION   score of a file: logistic of OFFSET and the weighted
///                                        sum of its evidence
///     verdict POOR GOOD                  scores below which a match is poor, and from which good
///     duration LABEL MEAN DEVIATION      of the logarithm of a phoneme's milliseconds
class calibration {
public:
    /// Returns 12 for a text that is not a calibration, and 2 for one of another model.
    [[nodiscard]] static error_code Read(std::string_view text, const CAccousticHMM& model,
                                         std::optional<calibration>& out);

    float WordConfidence(double margin) const;
    float HeardConfidence() const { return heard; }
    /// How far the length of a phoneme is from its usual one, in deviations.
    double DurationDistance(size_t phone, double ms) const;
    /// From the evidence in `summary`.
    float FileScore(const match_summary& summary) const;
    /// Of a file with that score; `departs` when words are missing or other speech was heard.
    match_verdict Verdict(float score, bool departs) const;

private:
    struct usual_duration {
        double mean = 0.0;
        double deviation = 0.0; ///< 0: not known
    };

    std::optional<double> wordOffset;
    double wordSlope = 0.0;
    float heard = -1.0f;
    std::vector<double> fileWeights; ///< offset, margin, said, fit, duration
    double poorBelow = 0.0;
    double goodFrom = 2.0;
    std::vector<usual_duration> durations;

    friend class calibration_reader;
};

} // namespace tessarin
