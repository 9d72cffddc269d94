#include "articulation/common_key_times.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "articulation/sweep_window.h"
#include "base/trunc_sat.h"
#include "results/saturated.h"

namespace tessarin {
namespace {

/// Times that differ by no more than this are one key.
constexpr int64_t kToleranceMs = 2;

/// An envelope that is given keys at rising times. Points after the key given last are done and
/// never looked at again, so that long curves cost no more than their points.
class keyed_envelope {
public:
    keyed_envelope(phn_env_marker&& original, int32_t step);

    /// No key before this time is ever taken.
    int64_t FirstReach() const {
        return std::min({Front(), int64_t{marker.start}, int64_t{marker.end}});
    }
    /// No key after this time is taken, as the envelope stands.
    int64_t LastReach() const {
        return std::max({Back(), int64_t{marker.start}, int64_t{marker.end}});
    }
    /// Makes sure that there is a key at `ms`, if that lies in or next to the envelope.
    bool Take(int32_t ms);
    phn_env_marker Finish();

private:
    int64_t Front() const { return int64_t{marker.start} - stepMs - kToleranceMs; }
    int64_t Back() const { return int64_t{marker.end} + kToleranceMs + stepMs; }
    bool HasKeyAt(int32_t ms);
    void InsertKey(int32_t ms);
    void PutInFront(const envelope_point& point);
    void ReturnDone();

    phn_env_marker marker;
    int32_t stepMs;
    std::vector<envelope_point> done;
    size_t nextPoint = 0;      ///< of the marker's points, those that are not done
    std::vector<int32_t> keys; ///< the times of all points that are not done, rising
    size_t nextKey = 0;
};

keyed_envelope::keyed_envelope(phn_env_marker&& original, int32_t step)
    : marker(std::move(original)), stepMs(step) {
    keys.reserve(marker.points.size());
    for (const envelope_point& point : marker.points) {
        keys.push_back(point.t1);
    }
    std::sort(keys.begin(), keys.end());
}

bool keyed_envelope::Take(int32_t ms) {
    if (ms >= marker.start && ms <= marker.end) {
        if (ms != marker.start && !HasKeyAt(ms)) {
            InsertKey(ms);
        }
        return true;
    }
    if (ms >= Front() && ms <= marker.start) {
        PutInFront({ms, marker.start, 0.0f});
        marker.start = ms;
        return true;
    }
    if (ms >= marker.end && ms <= Back()) {
        marker.points.push_back({marker.end, ms, 0.0f});
        marker.end = ms;
        return true;
    }
    return false;
}

bool keyed_envelope::HasKeyAt(int32_t ms) {
    while (nextKey < keys.size() && keys[nextKey] < ms) {
        ++nextKey;
    }
    return nextKey < keys.size() && keys[nextKey] == ms;
}

/// Splits the first point that ends after `ms` on the straight line from the point before it.
void keyed_envelope::InsertKey(int32_t ms) {
    std::vector<envelope_point>& points = marker.points;
    while (nextPoint < points.size() && points[nextPoint].t1 <= ms) {
        done.push_back(points[nextPoint++]);
    }
    if (nextPoint == points.size()) {
        return;
    }
    const envelope_point from = done.empty() ? envelope_point{0, marker.start, 0.0f} : done.back();
    envelope_point& to = points[nextPoint];
    const float share =
        static_cast<float>(int64_t{ms} - from.t1) / static_cast<float>(int64_t{to.t1} - from.t1);
    done.push_back({from.t1, ms, from.value + (to.value - from.value) * share});
    to.t0 = ms;
}

/// Happens once to an envelope at most, as no later key lies ahead of the new start.
void keyed_envelope::PutInFront(const envelope_point& point) {
    ReturnDone();
    marker.points.insert(marker.points.begin(), point);
    keys.insert(std::lower_bound(keys.begin(), keys.end(), point.t1), point.t1);
}

void keyed_envelope::ReturnDone() {
    std::vector<envelope_point>& points = marker.points;
    done.insert(done.end(), points.begin() + static_cast<std::ptrdiff_t>(nextPoint), points.end());
    points = std::exchange(done, {});
    nextPoint = 0;
}

phn_env_marker keyed_envelope::Finish() {
    ReturnDone();
    return std::move(marker);
}

/// The times of all keys, brought down to multiples of the grid.
std::vector<int32_t> KeyTimes(const envelopes_by_label& envelopes, float frameRate) {
    // Kept: the grid is the frame rate, taken as milliseconds; keys of existing scenes lie on it.
    const int32_t grid = std::max(TruncSat<int32_t>(frameRate), 1);
    std::vector<int32_t> times;
    for (const auto& [label, list] : envelopes) {
        for (const phn_env_marker& envelope : list) {
            times.push_back(envelope.end / grid * grid);
            for (const envelope_point& point : envelope.points) {
                times.push_back(point.t1 / grid * grid);
            }
        }
    }
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

/// A curve of value 0 from `ms` on, for a label that has none there.
phn_env_marker EmptyEnvelope(phoneme_label label, int32_t ms, int32_t stepMs,
                             const int32_t* nextTime) {
    phn_env_marker envelope(ms, Saturated(int64_t{ms} + stepMs), label.Text());
    int32_t keyMs = envelope.end;
    if (nextTime != nullptr && std::abs(int64_t{*nextTime} - keyMs) <= kToleranceMs) {
        keyMs = *nextTime;
    }
    envelope.points.push_back({ms, keyMs, 0.0f});
    return envelope;
}

/// Gives the envelopes of one label a key at each of `times`: the first that can takes it.
std::vector<keyed_envelope> KeyLabel(phoneme_label label, std::vector<phn_env_marker>&& originals,
                                     const std::vector<int32_t>& times, int32_t stepMs) {
    std::vector<keyed_envelope> list;
    sweep_window window;
    const auto append = [&](phn_env_marker&& envelope) {
        list.emplace_back(std::move(envelope), stepMs);
        window.Add(static_cast<int32_t>(list.size()) - 1, list.back().FirstReach());
    };
    for (phn_env_marker& envelope : originals) {
        append(std::move(envelope));
    }
    for (auto time = times.begin(); time != times.end(); ++time) {
        window.Advance(*time, [&](int32_t index) {
            return list[static_cast<size_t>(index)].LastReach() < *time;
        });
        const bool taken = std::ranges::any_of(window.Live(), [&](int32_t index) {
            return list[static_cast<size_t>(index)].Take(*time);
        });
        if (!taken) {
            const auto next = std::next(time);
            append(EmptyEnvelope(label, *time, stepMs, next == times.end() ? nullptr : &*next));
        }
    }
    return list;
}

} // namespace

std::vector<phn_env_marker> GiveCommonKeyTimes(envelopes_by_label envelopes, float frameRate) {
    const int32_t stepMs = TruncSat<int32_t>(1000.0f / frameRate);
    // Kept: the keys lie on the grid and the curves do not, so that no curve changes its shape.
    const std::vector<int32_t> times = KeyTimes(envelopes, frameRate);
    std::vector<phn_env_marker> keyed;
    for (auto& [label, originals] : envelopes) {
        for (keyed_envelope& envelope : KeyLabel(label, std::move(originals), times, stepMs)) {
            keyed.push_back(envelope.Finish());
        }
    }
    return keyed;
}

} // namespace tessarin
