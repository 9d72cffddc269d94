#include "recognition/live/realtime_phn_recognizer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/flog.h"
#include "base/guarded.h"
#include "base/trunc_sat.h"
#include "platform/clock.h"
#include "platform/floating_point.h"
#include "recognition/markers/time_base.h"
#include "recognition/observation_source.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin {

namespace {

constexpr uint32_t kAboveNormal = 2;
constexpr uint32_t kStartPollMs = 2;
constexpr uint32_t kIdleMs = 30;
constexpr size_t kMostStates = 256; // a back-pointer is a byte

std::atomic<int64_t> searchNs = 0;

/// How long the search has worked since it began.
class search_clock {
public:
    search_clock() { searchNs = 0; }

    template <class Work> auto Time(Work&& work) {
        const uint64_t begin = PerformanceCounterNs();
        auto result = work();
        total += static_cast<int64_t>(PerformanceCounterNs() - begin);
        searchNs = total;
        return result;
    }

private:
    int64_t total = 0;
};

} // namespace

int64_t RealtimeSearchNs() {
    return searchNs;
}

CRealtimePhnRecognizer::~CRealtimePhnRecognizer() {
    CRealtimePhnRecognizer::Stop();
}

error_code CRealtimePhnRecognizer::Init(int32_t sampleRateHz, int32_t bits, int32_t channels,
                                        double latency, CAccousticHMM* acousticModel) {
    MaskFloatUnderflow();
    const crit_section_scope scope(callers);
    if (started) { // a new object has nothing to stop, and does not count as stopped
        Stop();
    }
    model = acousticModel;
    const error_code code = Guarded([&] { return InitChain(sampleRateHz, bits, channels); });
    ready = code == kNoError;
    if (ready) {
        latencyFrames = TruncSat<uint32_t>(latency * 1000.0 / periodMs);
    } else {
        stopped = true;
    }
    return code;
}

error_code CRealtimePhnRecognizer::InitChain(int32_t sampleRateHz, int32_t bits, int32_t channels) {
    constexpr int32_t kMostChannels = 65535;
    if (model == nullptr || sampleRateHz < 4000 || sampleRateHz > 50000 ||
        (bits != 8 && bits != 16) || channels < 1 || channels > kMostChannels) {
        return kInvalidArgument;
    }
    const PCMFormat format{static_cast<uint32_t>(sampleRateHz) << 16, static_cast<uint16_t>(bits),
                           static_cast<uint16_t>(channels)};
    const error_code code = chain.Init(format, model->descriptor);
    if (code != kNoError) {
        return code;
    }
    const int32_t total = model->GetTotalStates();
    if (total < 1 || static_cast<size_t>(total) > kMostStates) {
        return kOutOfRange;
    }
    numStates = static_cast<size_t>(total);
    periodMs = static_cast<float>(FramePeriodMs(chain.spectral));
    return kNoError;
}

error_code CRealtimePhnRecognizer::Start() {
    flog trace("CRealtimePhnRecognizer::Start");
    MaskFloatUnderflow();
    const crit_section_scope scope(callers);
    if (!ready) {
        flog::Message("CRealtimePhnRecognizer:: not initialized");
        return kNotInitialized;
    }
    Stop();
    return Guarded([&]() -> error_code {
        chain.spectral.Restart(); // which opens the buffer at the other end
        baseFrame = 0;
        processed = 0;
        // Kept: the latency holds flushes back before the first Start only. A host that polls
        // decides by the delay that it asks for.
        latencyFrames = 0;
        started = false;
        stopped = false;
        if (!StartThread()) {
            return kOutOfMemory;
        }
        while (IsRunning() && !started) {
            Sleep(kStartPollMs);
        }
        return kNoError;
    });
}

void CRealtimePhnRecognizer::Stop() {
    flog trace("CRealtimePhnRecognizer::Stop");
    const crit_section_scope scope(callers);
    stopped = true;
    chain.input.CloseStream();
    CancelThread();
    const crit_section_scope workerScope(section);
    pending.Clear();
    pendingFrames = 0;
    path.clear();
    pathEnergies.clear();
}

error_code CRealtimePhnRecognizer::WriteBytes(const void* bytes, uint32_t count) {
    flog trace("WriteBytes");
    if (count > static_cast<uint32_t>(INT32_MAX)) {
        return kOutOfRange;
    }
    return Guarded([&] { return chain.input.AddBuffer(bytes, static_cast<int32_t>(count)); });
}

bool CRealtimePhnRecognizer::SetResultOverlap(int32_t ms) {
    const crit_section_scope scope(section);
    overlapMs = ms;
    return ms >= 0;
}

uint32_t CRealtimePhnRecognizer::IsActive() {
    const crit_section_scope scope(section);
    return IsRunning() ? 1 : 0;
}

bool CRealtimePhnRecognizer::IsStopped() {
    return stopped || !ready;
}

int32_t CRealtimePhnRecognizer::Run() {
    flog trace("RunSelf");
    MaskFloatUnderflow();
    SetPriority(kAboveNormal);
    started = true;
    if (model->hasLongTransitions != 0) {
        Viterbi();
    } else {
        ViterbiModel0();
    }
    return 0;
}

void CRealtimePhnRecognizer::Viterbi() {
    Search({*model, AllTransitions(*model)});
}

void CRealtimePhnRecognizer::ViterbiModel0() {
    flog trace("Vitirbi Model 0");
    Search({*model, StepTransitions(*model), true});
}

void CRealtimePhnRecognizer::Search(phone_loop<uint8_t> loop) {
    search_clock clock;
    observation_source source(chain.spectral, model->descriptor.numFeatures);
    if (source.Open(nullptr) != kNoError) {
        return;
    }
    const auto readFrame = [&] { return source.Next() == kNoError; };
    // What a read gives after the stream was closed is silence that nobody recorded.
    if (!readFrame() || IsStopped()) {
        return;
    }
    loop.Seed(source.GetFeatures());
    PushFrame(TakeRow(), 0, source.GetEnergy());
    while (!IsStopped()) {
        if (readFrame()) {
            if (IsStopped()) {
                return;
            }
            pending_path::row row = TakeRow();
            const uint8_t best =
                clock.Time([&] { return loop.Advance(source.GetFeatures(), row.data()); });
            PushFrame(std::move(row), best, source.GetEnergy());
        } else if (!IsStopped()) {
            Sleep(kIdleMs);
        }
    }
}

pending_path::row CRealtimePhnRecognizer::TakeRow() {
    const crit_section_scope scope(section);
    return pending.TakeRow(numStates);
}

void CRealtimePhnRecognizer::PushFrame(pending_path::row row, uint8_t best, float energy) {
    const crit_section_scope scope(section);
    chain.spectral.GetEnergyRange(&lowestEnergy, &highestEnergy);
    pending.Push(std::move(row), best, energy);
    pendingFrames = pending.Size();
    ++processed;
}

bool CRealtimePhnRecognizer::FlushResults(ISyncResultsCollection* results, int32_t end_ms) {
    const crit_section_scope scope(callers);
    return FlushUntil(results, end_ms);
}

bool CRealtimePhnRecognizer::GetMicVisemix(ISyncResultsCollection* results, int32_t delay_ms) {
    flog trace("GetMicVisemix");
    const crit_section_scope scope(callers);
    const double period = periodMs;
    const double head = static_cast<double>(baseFrame) * period;
    const double until = static_cast<double>(pendingFrames) * period + head - delay_ms;
    if (results == nullptr || delay_ms + head > until) {
        return false;
    }
    results->clear();
    return FlushUntil(results, TruncSat<int64_t>(until));
}

bool CRealtimePhnRecognizer::FlushUntil(ISyncResultsCollection* results, int64_t endMs) {
    auto* markers = CConcreteSyncMarkerCollection::Find(results);
    if (markers == nullptr || IsHeldBack()) {
        return false;
    }
    size_t taken = 0;
    const error_code code = Guarded([&] {
        taken = TakePath(endMs);
        if (taken != 0) {
            static_cast<void>(BuildMarkers(static_cast<int32_t>(taken), *markers));
            markers->PostProcessMarkers();
        }
    });
    baseFrame += static_cast<int64_t>(taken);
    return code == kNoError && taken != 0;
}

/// Traces the pending path back, and takes what lies before `endMs` out of it. Returns how many
/// observations that is.
size_t CRealtimePhnRecognizer::TakePath(int64_t endMs) {
    constexpr int64_t kMostFrames = INT32_MAX;
    const crit_section_scope scope(section);
    const auto waiting = std::min(static_cast<int64_t>(pending.Size()), kMostFrames);
    if (waiting == 0) {
        return 0;
    }
    // Kept: -1 is a time as any other, for which only the overlap is left out.
    const double end = static_cast<double>(endMs) + (endMs != -1 ? overlapMs / 2 : 0);
    const double period = periodMs;
    const double begin = static_cast<double>(baseFrame) * period + period * 0.5;
    const int64_t wanted = TruncSat<int32_t>((end - begin) / period) + int64_t{1};
    const int64_t take = wanted < 1 ? waiting : std::min(wanted, waiting);
    pending.TakePath(static_cast<size_t>(take), path, pathEnergies);
    pendingFrames = pending.Size();
    return static_cast<size_t>(take);
}

error_code CRealtimePhnRecognizer::BuildMarkers(int32_t frames,
                                                CConcreteSyncMarkerCollection& results) {
    const auto count = std::min(static_cast<size_t>(std::max(frames, 0)), path.size());
    section.Lock();
    const amplitude_scale amplitudes(lowestEnergy, highestEnergy, pathEnergies);
    const int32_t currentOverlapMs = overlapMs;
    section.Unlock();
    const bool stateMarkers = (results.get_flags() & kWriteStateMarkers) != 0;
    const error_code code = GenerateFlushMarkers({path.data(), count}, *model, amplitudes, periodMs,
                                                 stateMarkers, results);
    return code == kNoError && currentOverlapMs > 0 ? overlap.Join(currentOverlapMs, results)
                                                    : code;
}

} // namespace tessarin
