#include "recognition/live/realtime_phn_recognizer.h"

#include <optional>
#include <utility>

#include "base/flog.h"
#include "base/guarded.h"
#include "base/trunc_sat.h"
#include "platform/floating_point.h"
#include "recognition/live/live_search.h"
#include "recognition/markers/time_base.h"
#include "results/concrete_sync_marker_collection.h"

namespace tessarin {

namespace {

constexpr uint32_t kAboveNormal = 2;
constexpr uint32_t kStartPollMs = 2;
constexpr uint32_t kIdleMs = 30;
constexpr size_t kMaxStates = 256; // a back-pointer is a byte

} // namespace

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
    const error_code code = Guarded([&] {
        const error_code initialised = InitChain(sampleRateHz, bits, channels);
        if (initialised == kNoError) {
            BeginRun(TruncSat<uint32_t>(latency * 1000.0 / periodMs));
        }
        return initialised;
    });
    ready = code == kNoError;
    stopped = stopped || !ready;
    return code;
}

error_code CRealtimePhnRecognizer::InitChain(int32_t sampleRateHz, int32_t bits, int32_t channels) {
    constexpr int32_t kMaxChannels = 65535;
    if (model == nullptr || sampleRateHz < 4000 || sampleRateHz > 50000 ||
        (bits != 8 && bits != 16) || channels < 1 || channels > kMaxChannels) {
        return kInvalidArgument;
    }
    const PCMFormat format{static_cast<uint32_t>(sampleRateHz) << 16, static_cast<uint16_t>(bits),
                           static_cast<uint16_t>(channels)};
    const error_code code = chain.Init(format, model->descriptor);
    if (code != kNoError) {
        return code;
    }
    const int32_t total = model->GetTotalStates();
    if (total < 1 || static_cast<size_t>(total) > kMaxStates) {
        return kOutOfRange;
    }
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
        // Kept: the latency holds flushes back before the first Start only. A host that polls
        // decides by the delay that it asks for.
        BeginRun(0);
        started = false;
        stopped = false;
        if (!hasWorker) {
            return BeginInlineSearch();
        }
        if (!StartThread()) {
            return kOutOfMemory;
        }
        while (IsRunning() && !started) {
            Sleep(kStartPollMs);
        }
        return kNoError;
    });
}

error_code CRealtimePhnRecognizer::BeginInlineSearch() {
    // From the beginning, as the meter does: a rational conversion would go on from its phase.
    PCMFormat format{};
    error_code code = chain.input.GetFormat(&format);
    if (code == kNoError) {
        code = chain.Init(format, model->descriptor);
    }
    if (code != kNoError) {
        return code;
    }
    chain.spectral.Restart();
    run->search = std::make_unique<inline_search>(
        chain, *model, MakeLoop(model->hasLongTransitions != 0), run->heard);
    code = run->search->Open();
    started = code == kNoError;
    return code;
}

void CRealtimePhnRecognizer::BeginRun(uint64_t latency) {
    run = std::make_unique<live_run>(*model, periodMs, latency, section);
}

void CRealtimePhnRecognizer::Stop() {
    flog trace("CRealtimePhnRecognizer::Stop");
    const crit_section_scope scope(callers);
    stopped = true;
    chain.input.CloseStream();
    CancelThread();
    run.reset();
}

error_code CRealtimePhnRecognizer::WriteBytes(const void* bytes, uint32_t count) {
    flog trace("WriteBytes");
    if (count > static_cast<uint32_t>(INT32_MAX)) {
        return kOutOfRange;
    }
    return Guarded([&] {
        const error_code code = chain.input.AddBuffer(bytes, static_cast<int32_t>(count));
        if (code == kNoError && !hasWorker) {
            const crit_section_scope scope(callers);
            if (run != nullptr && run->search != nullptr) {
                MaskFloatUnderflow();
                run->search->GoOn();
            }
        }
        return code;
    });
}

bool CRealtimePhnRecognizer::SetResultOverlap(int32_t ms) {
    const crit_section_scope scope(section);
    overlapMs = ms;
    return ms >= 0;
}

uint32_t CRealtimePhnRecognizer::IsActive() {
    const crit_section_scope scope(section);
    return IsRunning() || (!hasWorker && started && !stopped) ? 1 : 0;
}

bool CRealtimePhnRecognizer::IsStopped() {
    return stopped || !ready;
}

int32_t CRealtimePhnRecognizer::Run() {
    flog trace("RunSelf");
    MaskFloatUnderflow();
    SetPriority(kAboveNormal);
    started = true;
    if (run == nullptr) {
        return kNotInitialized;
    }
    if (model->hasLongTransitions != 0) {
        Viterbi();
    } else {
        ViterbiModel0();
    }
    return 0;
}

phone_loop<uint8_t> CRealtimePhnRecognizer::MakeLoop(bool triesAll) const {
    return triesAll ? phone_loop<uint8_t>{*model, AllTransitions(*model)}
                    : phone_loop<uint8_t>{*model, StepTransitions(*model), true};
}

void CRealtimePhnRecognizer::Viterbi() {
    Search(MakeLoop(true));
}

void CRealtimePhnRecognizer::ViterbiModel0() {
    flog trace("Vitirbi Model 0");
    Search(MakeLoop(false));
}

void CRealtimePhnRecognizer::Search(phone_loop<uint8_t> loop) {
    live_search search(chain.spectral, model->descriptor.numFeatures, std::move(loop), run->heard);
    if (search.Open() != kNoError) {
        return;
    }
    // What a read gives after the stream was closed is silence that nobody recorded.
    if (!search.Read() || IsStopped()) {
        return;
    }
    search.Seed();
    while (!IsStopped()) {
        if (!search.Read()) {
            Sleep(kIdleMs);
        } else if (!IsStopped()) {
            search.Advance();
        }
    }
}

size_t CRealtimePhnRecognizer::GetPendingFrames() {
    const crit_section_scope scope(callers);
    return run != nullptr ? run->heard.GetNumPending() : 0;
}

int32_t CRealtimePhnRecognizer::GetOverlapMs() {
    const crit_section_scope scope(section);
    return overlapMs;
}

bool CRealtimePhnRecognizer::FlushResults(ISyncResultsCollection* results, int32_t end_ms) {
    const crit_section_scope scope(callers);
    return FlushUntil(results, end_ms);
}

bool CRealtimePhnRecognizer::GetMicVisemix(ISyncResultsCollection* results, int32_t delay_ms) {
    flog trace("GetMicVisemix");
    const crit_section_scope scope(callers);
    if (results == nullptr) {
        return false;
    }
    if (run == nullptr) {
        if (delay_ms <= 0) { // as of a run that has heard nothing
            results->clear();
        }
        return false;
    }
    const std::optional<int64_t> until = run->flusher.EndBefore(delay_ms);
    if (!until) {
        return false;
    }
    results->clear();
    return FlushUntil(results, *until);
}

bool CRealtimePhnRecognizer::FlushUntil(ISyncResultsCollection* results, int64_t endMs) {
    auto* markers = CConcreteSyncMarkerCollection::Find(results);
    if (markers == nullptr || run == nullptr || run->IsHeldBack()) {
        return false;
    }
    size_t taken = 0;
    const error_code code = Guarded([&] {
        taken = run->flusher.TakePath(endMs, GetOverlapMs());
        if (taken != 0) {
            static_cast<void>(BuildMarkers(static_cast<int32_t>(taken), *markers));
            markers->PostProcessMarkers();
        }
    });
    return code == kNoError && taken != 0;
}

error_code CRealtimePhnRecognizer::BuildMarkers(int32_t frames,
                                                CConcreteSyncMarkerCollection& results) {
    return run != nullptr ? run->flusher.BuildMarkers(frames, GetOverlapMs(), results)
                          : kNotInitialized;
}

} // namespace tessarin
