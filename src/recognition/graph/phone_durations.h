#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace tessarin {

class CAccousticHMM;
struct CTxMarker;

/// How long phonemes last, by a built-in table of their classes. It limits the model's states, and
/// says how long a stretch of text can be.
class phone_durations {
public:
    /// Makes the table the limits of `model`, and takes each phoneme's milliseconds from there; a
    /// model that does not know all phonemes of the table has no limits then, and they are those of
    /// the classes. What was there before stays where nothing takes its place.
    void SetUp(CAccousticHMM& model);

    /// Milliseconds of a phoneme; 200 for one that is not in the table.
    uint32_t LabelDurationMs(std::string_view label) const;
    /// The sum over a phoneme string. An upper-case letter takes the character after it along.
    uint64_t PhonemeStringMs(std::string_view text) const;
    /// Observations of 10 ms that a token lasts in its longest pronunciation.
    uint64_t MarkerFrames(const CTxMarker& marker) const;

private:
    std::map<std::string, uint32_t, std::less<>> durationsMs;
};

} // namespace tessarin
