#include "recognition/live/pending_path.h"

#include <utility>

namespace tessarin {

pending_path::row pending_path::TakeRow(size_t numStates) {
    row taken;
    if (!spareRows.empty()) {
        taken = std::move(spareRows.back());
        spareRows.pop_back();
    }
    taken.assign(numStates, 0);
    return taken;
}

void pending_path::Push(row backPointers, uint8_t best, float energy) {
    observations.push_back({std::move(backPointers), best, energy});
}

// Kept: the path ends in the state before the best one, as the free search of recordings does. What
// stays is traced again next time, so that audio to come can still change the recent past.
void pending_path::TakePath(size_t count, std::vector<uint8_t>& path,
                            std::vector<float>& pathEnergies) {
    // All that may want memory comes before anything moves.
    path.resize(observations.size());
    pathEnergies.resize(count);
    spareRows.reserve(spareRows.size() + count);

    if (!observations.empty()) {
        path.back() = observations.back().best;
    }
    for (size_t t = observations.size(); t-- > 1;) {
        path[t - 1] = observations[t].backPointers[path[t]];
    }
    path.resize(count);
    for (size_t i = 0; i < count; ++i) {
        pathEnergies[i] = observations.front().energy;
        spareRows.push_back(std::move(observations.front().backPointers));
        observations.pop_front();
    }
}

} // namespace tessarin
