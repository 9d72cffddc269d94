#include "recognition/live/live_search.h"

#include <atomic>
#include <utility>

#include "features/spectral_stream.h"
#include "platform/clock.h"
#include "recognition/live/heard_frames.h"

namespace tessarin {

namespace {

std::atomic<int64_t> searchNs = 0;

} // namespace

int64_t RealtimeSearchNs() {
    return searchNs;
}

live_search::live_search(CSpectralStream& observations, int32_t featureCount,
                         phone_loop<uint8_t> phones, heard_frames& frames)
    : stream(observations), source(observations, featureCount), loop(std::move(phones)),
      heard(frames) {
    searchNs = 0;
}

bool live_search::Read() {
    return source.Next() == kNoError;
}

void live_search::Seed() {
    loop.Seed(source.GetFeatures());
    Push(heard.TakeRow(loop.GetScores().size()), 0);
}

void live_search::Advance() {
    pending_path::row row = heard.TakeRow(loop.GetScores().size());
    const uint64_t begin = PerformanceCounterNs();
    const uint8_t best = loop.Advance(source.GetFeatures(), row.data());
    workedNs += static_cast<int64_t>(PerformanceCounterNs() - begin);
    searchNs = workedNs;
    Push(std::move(row), best);
}

void live_search::Push(pending_path::row row, uint8_t best) {
    heard_frames::energy_range range;
    stream.GetEnergyRange(&range.lowest, &range.highest);
    heard.Push(std::move(row), best, source.GetEnergy(), range);
}

} // namespace tessarin
