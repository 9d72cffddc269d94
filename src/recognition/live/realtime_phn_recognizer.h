#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/crit_section.h"
#include "base/worker_thread.h"
#include "platform/thread.h"
#include "recognition/graph/phone_loop.h"
#include "recognition/live/heard_frames.h"
#include "recognition/live/inline_search.h"
#include "recognition/live/live_flusher.h"
#include "recognition/live/realtime_audio_chain.h"
#include "tessarin/realtime_recognizer.h"

namespace tessarin {

class CConcreteSyncMarkerCollection;

/// What lasts from Start to Stop. Each Start makes one, so that nothing of a run reaches the next;
/// the search belongs to the worker thread.
struct live_run {
    /// Flushes are held back until `latency` observations were heard.
    live_run(const CAccousticHMM& model, double periodMs, uint64_t latency, CCritSection& lock)
        : heard(lock), flusher(model, heard, periodMs), latencyFrames(latency) {}

    bool IsHeldBack() const { return heard.GetNumHeard() < latencyFrames; }

    heard_frames heard;
    live_flusher flusher;
    const uint64_t latencyFrames;
    std::unique_ptr<inline_search> search; ///< only where there is no worker
};

/// The recognizer of live audio. The lock of the worker thread guards what the search has found and
/// nobody has asked for, and the overlap; the search holds it for the length of an append. A second
/// lock, which the search never takes, keeps callers of the other operations out of each other's
/// way. Where there are no threads, writing goes on with the search instead.
class CRealtimePhnRecognizer : public IRealtimePhnRecognizer, public CWorkerThread {
public:
    explicit CRealtimePhnRecognizer(bool withWorker = HasThreads()) : hasWorker(withWorker) {}
    ~CRealtimePhnRecognizer() override;

    error_code Start() override;
    void Stop() override;
    error_code WriteBytes(const void* bytes, uint32_t count) override;
    bool FlushResults(ISyncResultsCollection* results, int32_t end_ms) override;
    bool SetResultOverlap(int32_t ms) override;
    bool GetMicVisemix(ISyncResultsCollection* results, int32_t delay_ms) override;
    uint32_t IsActive() override;

    /// As CreateRealtimePhnRecognizer. May be called again; it stops a run.
    virtual error_code Init(int32_t sampleRateHz, int32_t bits, int32_t channels, double latency,
                            CAccousticHMM* acousticModel);
    /// Whether the worker is to end, or was never ready to begin.
    virtual bool IsStopped();
    /// The search over all transitions of the model.
    virtual void Viterbi();
    /// The search for models that lead from a state to itself and the next one only.
    virtual void ViterbiModel0();
    /// Replaces `results` by the markers of the first `frames` observations of the path that was
    /// traced last.
    virtual error_code BuildMarkers(int32_t frames, CConcreteSyncMarkerCollection& results);

    int32_t Run() override;

    /// How many observations wait for a flush.
    size_t GetPendingFrames();

private:
    error_code InitChain(int32_t sampleRateHz, int32_t bits, int32_t channels);
    void BeginRun(uint64_t latency);
    error_code BeginInlineSearch();
    phone_loop<uint8_t> MakeLoop(bool triesAll) const;
    void Search(phone_loop<uint8_t> loop);
    bool FlushUntil(ISyncResultsCollection* results, int64_t endMs);
    int32_t GetOverlapMs();

    const bool hasWorker;
    std::atomic<bool> stopped = false;
    std::atomic<bool> ready = false;
    std::atomic<bool> started = false;
    CAccousticHMM* model = nullptr;
    realtime_audio_chain chain;
    float periodMs = 0.0f;
    int32_t overlapMs = 0; ///< guarded by the worker's lock

    CCritSection callers;
    std::unique_ptr<live_run>
        run; ///< replaced under the callers' lock, only while the worker stands still
};

} // namespace tessarin
