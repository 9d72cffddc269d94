#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/crit_section.h"
#include "base/worker_thread.h"
#include "recognition/graph/phone_loop.h"
#include "recognition/live/pending_path.h"
#include "recognition/live/realtime_audio_chain.h"
#include "recognition/markers/flush_markers.h"
#include "tessarin/realtime_recognizer.h"

namespace tessarin {

class CConcreteSyncMarkerCollection;

/// The recognizer of live audio. The lock of the worker thread guards what the search has found and
/// nobody has asked for; the search holds it for the length of an append. A second lock, which the
/// search never takes, keeps callers of the other operations out of each other's way.
class CRealtimePhnRecognizer : public IRealtimePhnRecognizer, public CWorkerThread {
public:
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
    size_t GetPendingFrames() const { return pendingFrames; }

protected:
    int64_t baseFrame = 0; ///< observations that were flushed since Start

private:
    error_code InitChain(int32_t sampleRateHz, int32_t bits, int32_t channels);
    void Search(phone_loop<uint8_t> loop);
    pending_path::row TakeRow();
    void PushFrame(pending_path::row row, uint8_t best, float energy);
    bool FlushUntil(ISyncResultsCollection* results, int64_t endMs);
    size_t TakePath(int64_t endMs);
    bool IsHeldBack() const { return processed < latencyFrames; }

    std::atomic<bool> stopped = false;
    std::atomic<bool> ready = false;
    std::atomic<bool> started = false;
    CAccousticHMM* model = nullptr;
    realtime_audio_chain chain;
    size_t numStates = 0;
    float periodMs = 0.0f;
    std::atomic<uint64_t> processed = 0; ///< observations since Start
    uint64_t latencyFrames = 0;

    // Guarded by the worker's lock.
    pending_path pending;
    std::atomic<size_t> pendingFrames = 0; ///< also read without the lock
    float lowestEnergy = 0.0f;
    float highestEnergy = 0.0f;
    int32_t overlapMs = 0;

    // Guarded by the callers' lock.
    CCritSection callers;
    std::vector<uint8_t> path;
    std::vector<float> pathEnergies;
    flush_overlap overlap;
};

/// What GetPerfCount tells.
int64_t RealtimeSearchNs();

} // namespace tessarin
