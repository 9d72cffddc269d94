#include "articulation/markers/phn_marker.h"

#include <utility>

#include "base/trunc_sat.h"
#include "results/saturated.h"

namespace tessarin {

phn_marker::phn_marker(int32_t startMs, int32_t endMs, std::string phoneme, float strength)
    : marker_baseT<char>(startMs, endMs, std::move(phoneme)) {
    score = strength;
}

void phn_marker::set_start(int32_t ms) {
    const int64_t oldLengthMs = Length();
    marker_baseT<char>::set_start(ms);
    RescaleFrom(oldLengthMs);
}

void phn_marker::set_end(int32_t ms) {
    const int64_t oldLengthMs = Length();
    marker_baseT<char>::set_end(ms);
    RescaleFrom(oldLengthMs);
}

void phn_marker::RescaleFrom(int64_t oldLengthMs) {
    if (oldLengthMs == 0 || children.empty()) {
        return;
    }
    const float factor = static_cast<float>(Length()) / static_cast<float>(oldLengthMs);
    int32_t time = start;
    for (marker_baseT<char>& child : children) {
        const float length = static_cast<float>(int64_t{child.end} - child.start);
        child.start = time;
        child.end = Saturated(int64_t{time} + TruncSat<int32_t>(length * factor));
        time = child.end;
    }
    children.front().start = start;
    children.back().end = end;
    std::erase_if(children,
                  [](const marker_baseT<char>& child) { return child.end <= child.start; });
}

} // namespace tessarin
