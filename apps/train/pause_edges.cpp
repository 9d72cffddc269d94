#include "apps/train/pause_edges.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>

#include "model/phoneme_alphabet.h"

namespace tessarin::training {
namespace {

constexpr double kStepMs = 5.0;
constexpr double kLoudestWithinMs = 150.0; ///< of the edge, in the speech
constexpr double kFarthestMs = 150.0;      ///< that an edge moves into the pause
constexpr double kFarthestIntoSpeechMs = 60.0;
constexpr double kLeastPhoneMs = 30.0;
constexpr double kLeastPauseMs = 60.0; ///< in shorter ones the level does not come to rest
constexpr double kLeastRiseDb = 15.0;
constexpr double kClosureMs = 15.0; ///< of a stop, before its burst

bool IsStop(size_t phone) {
    constexpr std::string_view kStops[] = {"p", "b", "t", "d", "k", "g", "CH", "j"};
    return std::ranges::find(kStops, PhonemeAlphabet()[phone].label) != std::end(kStops);
}

/// The level of a recording in dB, every kStepMs.
class level_curve {
public:
    explicit level_curve(const recording& speech) {
        const auto step = static_cast<size_t>(speech.rate * kStepMs / 1000.0);
        for (size_t start = 0; step > 0 && start + step <= speech.samples.size(); start += step) {
            double sum = 0.0;
            for (size_t i = start; i < start + step; ++i) {
                sum +=
                    static_cast<double>(speech.samples[i]) * static_cast<double>(speech.samples[i]);
            }
            levels.push_back(10.0 * std::log10(1.0 + sum / static_cast<double>(step)));
        }
    }

    bool IsEmpty() const { return levels.empty(); }
    size_t At(double time_ms) const {
        const double place =
            std::clamp(std::round(time_ms / kStepMs), 0.0, static_cast<double>(levels.size()));
        return static_cast<size_t>(place);
    }
    double operator[](size_t place) const { return levels[place]; }

    double Highest(double from_ms, double to_ms) const {
        double highest = 0.0;
        for (size_t i = At(from_ms); i < At(to_ms); ++i) {
            highest = std::max(highest, levels[i]);
        }
        return highest;
    }

    double Median(double from_ms, double to_ms) const {
        std::vector<double> part(levels.begin() + static_cast<ptrdiff_t>(At(from_ms)),
                                 levels.begin() + static_cast<ptrdiff_t>(At(to_ms)));
        if (part.empty()) {
            return 0.0;
        }
        const auto middle = part.begin() + static_cast<ptrdiff_t>(part.size() / 2);
        std::ranges::nth_element(part, middle);
        return *middle;
    }

private:
    std::vector<double> levels;
};

/// The level above which there is speech, or none when the two differ too little to be sure.
bool FindThreshold(double rest, double highest, double& threshold) {
    threshold = rest + (highest - rest) / 3.0;
    return highest - rest >= kLeastRiseDb;
}

double FindEnd(const level_curve& level, double edge_ms, double middle_ms, double threshold) {
    const size_t first = level.At(edge_ms);
    for (size_t i = level.At(std::min(edge_ms + kFarthestMs, middle_ms)); i-- > first;) {
        if (level[i] >= threshold) {
            return static_cast<double>(i + 1) * kStepMs;
        }
    }
    return edge_ms;
}

double FindBeginning(const level_curve& level, double edge_ms, double middle_ms, double latest_ms,
                     double threshold) {
    const size_t end = level.At(latest_ms);
    for (size_t i = level.At(std::max(edge_ms - kFarthestMs, middle_ms)); i < end; ++i) {
        if (level[i] >= threshold) {
            return static_cast<double>(i) * kStepMs;
        }
    }
    return edge_ms;
}

} // namespace

void MovePauseEdges(const recording& speech, std::vector<phone_interval>& phones) {
    const level_curve level(speech);
    if (level.IsEmpty()) {
        return;
    }
    for (size_t i = 0; i < phones.size(); ++i) {
        phone_interval& pause = phones[i];
        if (pause.phone != kSilencePhone || pause.end_ms - pause.start_ms < kLeastPauseMs) {
            continue;
        }
        const double quarter_ms = (pause.end_ms - pause.start_ms) / 4.0;
        const double middle_ms = pause.start_ms + 2.0 * quarter_ms;
        const double rest = level.Median(pause.start_ms + quarter_ms, pause.end_ms - quarter_ms);
        double threshold = 0.0;
        if (i > 0 &&
            FindThreshold(rest, level.Highest(pause.start_ms - kLoudestWithinMs, pause.start_ms),
                          threshold)) {
            pause.start_ms = FindEnd(level, pause.start_ms, middle_ms, threshold);
            phones[i - 1].end_ms = pause.start_ms;
        }
        if (i + 1 < phones.size() &&
            FindThreshold(rest, level.Highest(pause.end_ms, pause.end_ms + kLoudestWithinMs),
                          threshold)) {
            phone_interval& next = phones[i + 1];
            const double latest_ms = std::max(
                std::min(next.end_ms - kLeastPhoneMs, pause.end_ms + kFarthestIntoSpeechMs),
                pause.end_ms);
            const double closure_ms = IsStop(next.phone) ? kClosureMs : 0.0;
            pause.end_ms =
                FindBeginning(level, pause.end_ms + closure_ms, middle_ms, latest_ms, threshold) -
                closure_ms;
            next.start_ms = pause.end_ms;
        }
    }
}

} // namespace tessarin::training
