#include "recognition/live/heard_frames.h"

namespace tessarin {

pending_path::row heard_frames::TakeRow(size_t numStates) {
    const crit_section_scope scope(section);
    return pending.TakeRow(numStates);
}

void heard_frames::Push(pending_path::row row, uint8_t best, float energy, energy_range range) {
    const crit_section_scope scope(section);
    pending.Push(std::move(row), best, energy);
    energies = range;
    numPending = pending.Size();
    ++numHeard;
}

heard_frames::energy_range heard_frames::GetEnergyRange() {
    const crit_section_scope scope(section);
    return energies;
}

} // namespace tessarin
