#include "recognition/live/pending_path.h"

#include <utility>

namespace tessarin {

pending_path::row pending_path::TakeRow(size_t numStates) {
    row taken;
    if (!spareRows.empty()) {
        taken = std::move(spareRows.front());
        spareRows.pop_front();
    }
    taken.assign(numStates, 0);
    return taken;
}

void pending_path::Push(row backPointers, uint8_t best, float energy) {
    rows.push_back(std::move(backPointers));
    bestStates.push_back(best);
    energies.push_back(energy);
}

// Kept: the path ends in the state before the best one, as the free search of recordings does. What
// stays is traced anew next time, so that audio to come can still change the recent past.
void pending_path::TakePath(size_t count, std::vector<uint8_t>& path,
                            std::vector<float>& pathEnergies) {
    path.resize(rows.size());
    if (!rows.empty()) {
        path.back() = bestStates.back();
    }
    for (size_t t = rows.size(); t-- > 1;) {
        path[t - 1] = rows[t][path[t]];
    }
    const auto taken = static_cast<std::ptrdiff_t>(count);
    path.resize(count);
    pathEnergies.assign(energies.begin(), energies.begin() + taken);
    for (size_t i = 0; i < count; ++i) {
        spareRows.push_back(std::move(rows[i]));
    }
    rows.erase(rows.begin(), rows.begin() + taken);
    bestStates.erase(bestStates.begin(), bestStates.begin() + taken);
    energies.erase(energies.begin(), energies.begin() + taken);
}

void pending_path::Clear() {
    rows.clear();
    bestStates.clear();
    energies.clear();
    spareRows.clear();
}

} // namespace tessarin
