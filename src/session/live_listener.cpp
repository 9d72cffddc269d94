#include "session/live_listener.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <thread>

#include "mouth/mouth_classes.h"
#include "session/audio_samples.h"

namespace tessarin {

namespace {

constexpr uint32_t kUsualRateHz = 16000;
constexpr uint32_t kMaxChannels = 1024;
constexpr int32_t kUsualDelayMs = 25;
constexpr int32_t kUsualLookAheadMs = 20;
constexpr int32_t kNoLookAhead = -1;
constexpr int32_t kMaxLookAheadMs = 120; // the furthest reach of the rules
constexpr float kUsualFrameRate = 30.0f;
/// The options of before, which ended with the frame rate.
constexpr uint32_t kFirstSize = offsetof(tessarin_live_options, look_ahead_ms);
constexpr int32_t kMinDelayMs = 20;
constexpr int32_t kMaxDelayMs = 10000;
constexpr float kMaxFrameRate = 1000.0f;
/// What the analysis needs to see of the silence after the end.
constexpr int64_t kAnalysisMs = 200;
constexpr std::chrono::milliseconds kPause{2};
/// What a callback pushed waits in its ring while more than this is on its way through the search,
/// so that a host that stops taking fills no memory.
constexpr int64_t kMostWaitingMs = 5000;

bool IsInRange(const tessarin_live_options& options) {
    return options.rate_hz >= 4000 && options.rate_hz <= 50000 && options.channels >= 1 &&
           options.channels <= kMaxChannels && options.delay_ms >= kMinDelayMs &&
           options.delay_ms <= kMaxDelayMs && options.look_ahead_ms >= 0 &&
           options.look_ahead_ms <= kMaxLookAheadMs && options.overlap_ms >= 0 &&
           options.overlap_ms <= kMaxDelayMs && options.frame_rate >= 1.0f &&
           options.frame_rate <= kMaxFrameRate;
}

/// From one observation of `model` to the next.
error_code FindPeriod(CAccousticHMM& model, double& periodMs) {
    SampleStream nothing({}, kUsualRateHz);
    IObservationStream* made = nullptr;
    const error_code code = CreateObservationStreamFromQuibStream(&nothing, &model, &made);
    const observations_owner stream(made);
    if (code != kNoError) {
        return code;
    }
    uint32_t windowSize = 0;
    uint32_t overlap = 0;
    stream->GetFrameGeometry(&windowSize, &overlap);
    periodMs = static_cast<double>(windowSize - overlap) /
               static_cast<double>(stream->GetSampleRate()) * 1000.0;
    return kNoError;
}

} // namespace

error_code LiveListener::Open(std::shared_ptr<CAccousticHMM> acousticModel,
                              const tessarin_live_options* given) {
    if (given != nullptr) {
        if ((given->size != kFirstSize && given->size != sizeof options) ||
            given->format > TESSARIN_FLOAT) {
            return kInvalidArgument;
        }
        std::memcpy(&options, given, given->size);
        if (options.strength_count > 0 && options.strengths == nullptr) {
            return kInvalidArgument;
        }
    }
    options.rate_hz = options.rate_hz > 0 ? options.rate_hz : kUsualRateHz;
    options.channels = options.channels > 0 ? options.channels : 1;
    options.delay_ms = options.delay_ms != 0 ? options.delay_ms : kUsualDelayMs;
    options.frame_rate = options.frame_rate != 0.0f ? options.frame_rate : kUsualFrameRate;
    if (options.look_ahead_ms == 0) {
        options.look_ahead_ms = kUsualLookAheadMs;
    } else if (options.look_ahead_ms == kNoLookAhead) {
        options.look_ahead_ms = 0;
    }
    live_mouth_settings mouthSettings{options.frame_rate, options.look_ahead_ms, {}};
    const error_code strengthCode =
        ReadStrength({options.strengths, options.strength_count}, mouthSettings.strength);
    options.strengths = nullptr; // they are the caller's
    if (strengthCode != kNoError) {
        return strengthCode;
    }
    if (!IsInRange(options)) {
        return kOutOfRange;
    }
    model = std::move(acousticModel);
    error_code code = FindPeriod(*model, periodMs);
    if (code == kNoError) {
        loudness.Open(options.rate_hz);
        code = mouth.Open(mouthSettings, loudness);
    }
    return code == kNoError ? Start(options.format == TESSARIN_UINT8 ? 8 : 16) : code;
}

error_code LiveListener::Start(int32_t bits) {
    frameBytes = static_cast<size_t>(bits) / 8 * options.channels;
    IRealtimePhnRecognizer* made = nullptr;
    error_code code = CreateRealtimePhnRecognizer(static_cast<int32_t>(options.rate_hz), bits,
                                                  static_cast<int32_t>(options.channels),
                                                  options.delay_ms / 1000.0, model.get(), &made);
    recognizer.reset(made);
    if (code != kNoError) {
        return code;
    }
    ISyncResultsCollection* collection = nullptr;
    code = CreateSyncResultsCollection(kPostProcessScores, &collection);
    results.reset(collection);
    if (code != kNoError) {
        return code;
    }
    recognizer->SetResultOverlap(options.overlap_ms);
    feed.Open(
        options.rate_hz, [this](std::span<const int16_t> samples) { return Carry(samples); },
        [this] { return GetPushedMs() - heardMs < kMostWaitingMs + 2 * options.delay_ms; });
    return recognizer->Start();
}

error_code LiveListener::Push(const void* samples, uint32_t size) {
    if (isFinished) {
        return kNotAvailable;
    }
    if (size > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
        return kOutOfRange;
    }
    const std::lock_guard guard(pushLock);
    return options.format == TESSARIN_FLOAT ? PushFloats(static_cast<const char*>(samples), size)
                                            : PushBytes(samples, size);
}

error_code LiveListener::PushFromCallback(const void* samples, uint32_t count) {
    if (isFinished) {
        return kNotAvailable;
    }
    const size_t channels = options.channels;
    const auto* const bytes = static_cast<const uint8_t*>(samples);
    const auto sampleAt = [&]<class Sample>(size_t i, Sample sample) {
        std::memcpy(&sample, bytes + i * channels * sizeof sample, sizeof sample);
        return sample;
    };
    bool tookAll = false;
    switch (options.format) {
    case TESSARIN_FLOAT:
        tookAll = feed.Push(count, [&](size_t i) { return SampleFromFloat(sampleAt(i, 0.0f)); });
        break;
    case TESSARIN_UINT8:
        tookAll = feed.Push(count, [&](size_t i) {
            return static_cast<int16_t>((sampleAt(i, uint8_t{0}) - 128) * 256);
        });
        break;
    default:
        tookAll = feed.Push(count, [&](size_t i) {
            const uint8_t* const sample = bytes + i * channels * 2;
            return static_cast<int16_t>(sample[0] | sample[1] << 8);
        });
        break;
    }
    return tookAll ? kNoError : kOutOfRange;
}

/// The recognizer takes all channels, of which it hears the first.
bool LiveListener::Carry(std::span<const int16_t> samples) {
    const std::lock_guard guard(pushLock);
    carried.assign(samples.size() * frameBytes, 0);
    for (size_t i = 0; i < samples.size(); ++i) {
        uint8_t* const sample = carried.data() + i * frameBytes;
        if (options.format == TESSARIN_UINT8) {
            sample[0] = static_cast<uint8_t>(samples[i] / 256 + 128);
        } else {
            sample[0] = static_cast<uint8_t>(samples[i] & 0xFF);
            sample[1] = static_cast<uint8_t>(samples[i] >> 8 & 0xFF);
        }
    }
    return PushBytes(carried.data(), carried.size()) == kNoError;
}

error_code LiveListener::PushBytes(const void* bytes, size_t size) {
    // Measured first, so that no sound is heard before its loudness is known.
    MeasureBytes(static_cast<const uint8_t*>(bytes), size);
    const error_code code = recognizer->WriteBytes(bytes, static_cast<uint32_t>(size));
    if (code == kNoError) {
        pushedBytes += size;
    }
    return code;
}

/// Measures the first channel. A block may end within a sample, as the recognizer takes it.
void LiveListener::MeasureBytes(const uint8_t* bytes, size_t size) {
    cutFrame.insert(cutFrame.end(), bytes, bytes + size);
    const size_t count = cutFrame.size() / frameBytes;
    const bool isByte = options.format == TESSARIN_UINT8;
    heard.resize(count);
    for (size_t i = 0; i < count; ++i) {
        const uint8_t* const sample = cutFrame.data() + i * frameBytes;
        heard[i] =
            static_cast<int16_t>(isByte ? (sample[0] - 128) * 256 : sample[0] | sample[1] << 8);
    }
    cutFrame.erase(cutFrame.begin(),
                   cutFrame.begin() + static_cast<std::ptrdiff_t>(count * frameBytes));
    loudness.Push(heard);
}

error_code LiveListener::PushFloats(const char* bytes, size_t size) {
    std::string whole = std::move(cutFloat);
    whole.append(bytes, size);
    const size_t count = whole.size() / sizeof(float);
    cutFloat = whole.substr(count * sizeof(float));
    scaled.resize(count);
    for (size_t i = 0; i < count; ++i) {
        float sample = 0.0f;
        std::memcpy(&sample, whole.data() + i * sizeof sample, sizeof sample);
        scaled[i] = SampleFromFloat(sample);
    }
    return PushBytes(scaled.data(), count * sizeof(int16_t));
}

error_code LiveListener::PushSilence(int64_t ms) {
    constexpr int64_t kBlockMs = 10;
    const std::string block(frameBytes * options.rate_hz * kBlockMs / 1000,
                            options.format == TESSARIN_UINT8 ? '\x80' : '\0');
    error_code code = kNoError;
    for (int64_t doneMs = 0; doneMs < ms && code == kNoError; doneMs += kBlockMs) {
        code = PushBytes(block.data(), block.size());
    }
    return code;
}

int64_t LiveListener::ToMs(uint64_t frames) const {
    return static_cast<int64_t>(frames * 1000 / options.rate_hz);
}

int64_t LiveListener::GetPushedMs() const {
    return ToMs(pushedBytes / frameBytes);
}

/// What waits in the ring of the callback counts as well.
int64_t LiveListener::GetComeMs() const {
    return ToMs(std::max<uint64_t>(pushedBytes / frameBytes, feed.GetTaken()));
}

int64_t LiveListener::GetLostMs() const {
    return ToMs(feed.GetLost());
}

int64_t LiveListener::GetWaitingMs() const {
    return isFinished ? 0 : std::max<int64_t>(GetComeMs() - mouth.GetHeardMs(), 0);
}

/// Takes what the recognizer is sure of by now. Returns whether there was anything.
bool LiveListener::Flush() {
    if (!recognizer->GetMicVisemix(results.get(), options.delay_ms) || results->size() == 0) {
        return false;
    }
    const int32_t spanMs = (results->end() - 1)->end - results->begin()->start;
    const auto ms = std::llround(std::round(spanMs / periodMs) * periodMs);
    const int64_t tailMs = std::min<int64_t>(options.overlap_ms / 2, lastFlushMs);
    mouth.Add(*results, ms, options.overlap_ms > 0 ? tailMs : 0);
    lastFlushMs = ms;
    heardMs = mouth.GetHeardMs();
    return true;
}

error_code LiveListener::Take(live_stretch& out) {
    givesStretches = true;
    return Hear(out);
}

/// Replaces `out` by what became final, and weighs its frames.
error_code LiveListener::Hear(live_stretch& out) {
    out = {};
    if (!isFinished) {
        const error_code startCode = feed.Start();
        if (startCode != kNoError) {
            return startCode;
        }
        const bool isActive = recognizer->IsActive() != 0;
        while (Flush()) {
        }
        if (!isActive) {
            return kOutOfMemory;
        }
    }
    const error_code code = mouth.TakeFinal(isFinished, out);
    weights.Add(out.frames);
    return code;
}

error_code LiveListener::Weigh(int64_t timeMs, std::span<float, LiveWeights::kVisemes> out,
                               int64_t& atMs) {
    if (!givesStretches) {
        live_stretch taken;
        const error_code code = Hear(taken);
        if (code != kNoError) {
            return code;
        }
    }
    if (timeMs < 0) {
        const int64_t endMs = isFinished ? mouth.GetHeardMs() : GetComeMs();
        timeMs = std::max<int64_t>(timeMs + endMs, 0);
    }
    return weights.At(timeMs, out, atMs);
}

/// The end is heard in silence that follows it, as everything else is before its future.
error_code LiveListener::Finish(live_stretch& out) {
    out = {};
    if (!isFinished) {
        isFinished = true;
        feed.Drain();
        const int64_t audioMs = GetPushedMs();
        mouth.SetEnd(std::max(audioMs, mouth.GetHeardMs()));
        // The silence also completes what was cut within a sample.
        const error_code code = PushSilence(2 * int64_t{options.delay_ms} + kAnalysisMs);
        if (code != kNoError) {
            return code;
        }
        while (mouth.GetHeardMs() < audioMs) {
            if (Flush()) {
                continue;
            }
            if (recognizer->IsActive() == 0) {
                return kOutOfMemory;
            }
            std::this_thread::sleep_for(kPause);
        }
        recognizer->Stop();
    }
    const error_code code = mouth.TakeFinal(true, out);
    weights.Add(out.frames);
    return code;
}

} // namespace tessarin
