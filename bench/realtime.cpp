// Live audio, measured: a program of its own, as its runs take as long as their audio.
// usage: realtime latency MODEL AUDIO.wav [DELAY_MS]  from a push to the weight that can be read
//        realtime cost MODEL AUDIO.wav                processor time of both searches
//        realtime hours MODEL AUDIO.wav HOURS         memory and times of a long run
// AUDIO.wav is 16-bit mono at 16 kHz with a header of 44 bytes.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "model/accoustic_hmm.h"
#include "tessarin/tessarin.h"

namespace {

using clock_type = std::chrono::steady_clock;

constexpr int kRateHz = 16000;
constexpr size_t kBytesPerMs = 32;
constexpr int kObservationMs = 10;

std::string Content(const char* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A model, and samples without end.
struct material {
    material(const char* modelPath, const char* audioPath) {
        const std::string image = Content(modelPath);
        const std::string wav = Content(audioPath);
        if (CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, &model) != 0 ||
            wav.size() < 44 + kBytesPerMs * 1000) {
            std::fputs("no model, or no second of audio\n", stderr);
            std::exit(2);
        }
        audio = wav.substr(44, (wav.size() - 44) / kBytesPerMs * kBytesPerMs);
    }
    ~material() { DestroyAccHMM(model); }

    /// `ms` of the audio from `atMs` on, which begins again after its end.
    std::string Piece(int64_t atMs, size_t ms) const {
        std::string piece;
        size_t place = static_cast<size_t>(atMs) * kBytesPerMs % audio.size();
        while (piece.size() < ms * kBytesPerMs) {
            piece += audio.substr(place, ms * kBytesPerMs - piece.size());
            place = 0;
        }
        return piece;
    }

    tessarin::CAccousticHMM* model = nullptr;
    std::string audio;
};

/// A recognizer that is running, and a mouth.
struct listener {
    explicit listener(const material& use) {
        CreateRealtimePhnRecognizer(kRateHz, 16, 1, 0, use.model, &recognizer);
        CreateSyncResultsCollection(tessarin::kPostProcessScores, &results);
        CreatePhonemeArticulator(&articulator, 0);
        articulator->SetFrameRate(60);
        recognizer->Start();
    }
    ~listener() {
        DestroyRealtimePhnRecognizer(recognizer);
        DestroySyncResultsCollection(results);
        DestroyPhonemeArticulator(articulator);
    }

    /// Flushes what lies `delayMs` back and makes its weights. Returns how long it is, in ms.
    int TakeWeights(int delayMs) {
        if (!recognizer->GetMicVisemix(results, delayMs) || results->size() == 0) {
            return 0;
        }
        articulator->GenerateArticulations(results, nullptr);
        return (results->end() - 1)->end - results->begin()->start;
    }

    tessarin::IRealtimePhnRecognizer* recognizer = nullptr;
    tessarin::ISyncResultsCollection* results = nullptr;
    tessarin::IPhnMixtureArticulator* articulator = nullptr;
};

double Ms(clock_type::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

double CpuSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// One row of the table: audio at its own speed in pushes of `pushMs`, asked for each millisecond.
void MeasureLatency(const material& use, int pushMs, int delayMs) {
    constexpr int64_t kAudioMs = 20000;
    listener live(use);
    std::vector<clock_type::time_point> pushedAt(kAudioMs / kObservationMs + 1000);
    std::atomic<int64_t> pushedMs = 0;
    const double cpuBegin = CpuSeconds();
    const auto begin = clock_type::now();
    std::thread microphone([&] {
        for (int64_t ms = 0; ms < kAudioMs; ms += pushMs) {
            std::this_thread::sleep_until(begin + std::chrono::milliseconds(ms + pushMs));
            const std::string piece = use.Piece(ms, static_cast<size_t>(pushMs));
            const auto now = clock_type::now();
            // The last sample of an observation's hop comes with this push.
            for (int64_t i = ms / kObservationMs; i < (ms + pushMs) / kObservationMs; ++i) {
                pushedAt[static_cast<size_t>(i)] = now;
            }
            live.recognizer->WriteBytes(piece.data(), static_cast<uint32_t>(piece.size()));
            pushedMs = ms + pushMs;
        }
    });
    std::vector<double> delays;
    int64_t heardMs = 0;
    while (pushedMs < kAudioMs) {
        const int newMs = live.TakeWeights(delayMs);
        const auto now = clock_type::now();
        for (int64_t end = heardMs + newMs; heardMs < end; heardMs += kObservationMs) {
            delays.push_back(Ms(now - pushedAt[static_cast<size_t>(heardMs / kObservationMs)]));
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    microphone.join();
    const double cpu = (CpuSeconds() - cpuBegin) / (Ms(clock_type::now() - begin) / 1000);
    std::sort(delays.begin(), delays.end());
    const auto share = [&](double part) {
        return delays[static_cast<size_t>(part * static_cast<double>(delays.size() - 1))];
    };
    std::printf(
        "push %3d ms  delay %3d ms  median %6.1f  95 %% %6.1f  99 %% %6.1f ms  core %4.1f %%\n",
        pushMs, delayMs, share(0.5), share(0.95), share(0.99), 100 * cpu);
    std::fflush(stdout);
}

/// A listener that hears audio as fast as it goes, never more than a minute late.
class fast_run {
public:
    explicit fast_run(const material& audio) : use(audio), live(audio) {}

    /// Goes on to `untilMs`, and reports all but what waits for its future.
    void HearUntil(int64_t untilMs) {
        constexpr int64_t kBehindMs = 60000;
        constexpr size_t kPushMs = 100;
        while (pushedMs < untilMs) {
            const std::string piece = use.Piece(pushedMs, kPushMs);
            live.recognizer->WriteBytes(piece.data(), static_cast<uint32_t>(piece.size()));
            pushedMs += kPushMs;
            Take(kBehindMs);
        }
        Take(3 * kDelayMs);
    }

    int64_t toldMs = 0;

private:
    static constexpr int kDelayMs = 100;

    void Take(int64_t behindMs) {
        for (;;) {
            const int newMs = live.TakeWeights(kDelayMs);
            toldMs += newMs;
            if (newMs == 0 && pushedMs - toldMs <= behindMs) {
                return;
            }
            if (newMs == 0) {
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        }
    }

    const material& use;
    listener live;
    int64_t pushedMs = 0;
};

void MeasureCost(const material& use, const char* name) {
    constexpr int64_t kAudioMs = 300000;
    fast_run run(use);
    const double begin = CpuSeconds();
    run.HearUntil(kAudioMs);
    std::printf("%-14s %5.2f %% of a core, of which the search %5.2f %%\n", name,
                (CpuSeconds() - begin) * 100000 / static_cast<double>(kAudioMs),
                static_cast<double>(GetPerfCount()) / 1e4 / static_cast<double>(kAudioMs));
}

/// Resident memory in KiB, where the system reports it.
long ResidentKib() {
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    file >> size >> resident;
    return resident * 4;
}

void RunHours(const material& use, int hours) {
    constexpr int64_t kHourMs = 3600000;
    fast_run run(use);
    const auto begin = clock_type::now();
    for (int hour = 1; hour <= hours; ++hour) {
        run.HearUntil(hour * kHourMs);
        std::printf("%2d h heard in %7.1f s: %9lld ms reported, %ld KiB resident\n", hour,
                    Ms(clock_type::now() - begin) / 1000, static_cast<long long>(run.toldMs),
                    ResidentKib());
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::string job = argc > 3 ? argv[1] : "";
    if (job == "latency") {
        const material use(argv[2], argv[3]);
        for (const int pushMs : {5, 10, 20, 100}) {
            MeasureLatency(use, pushMs, argc > 4 ? std::atoi(argv[4]) : 50);
        }
    } else if (job == "cost") {
        const material use(argv[2], argv[3]);
        use.model->hasLongTransitions = 0;
        MeasureCost(use, "ViterbiModel0");
        use.model->hasLongTransitions = 1;
        MeasureCost(use, "Viterbi");
    } else if (job == "hours" && argc > 4) {
        RunHours(material(argv[2], argv[3]), std::atoi(argv[4]));
    } else {
        std::fputs("usage: realtime latency|cost|hours MODEL AUDIO.wav [DELAY_MS|HOURS]\n", stderr);
        return 1;
    }
    return 0;
}
