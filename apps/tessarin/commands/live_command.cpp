#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/live_mouth.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/readers/live_source.h"
#include "apps/tessarin/speech_search.h"
#include "apps/tessarin/writers/live_lines.h"

namespace {

using clock_type = std::chrono::steady_clock;

constexpr int kBlocksPerSecond = 100;
constexpr int kFlagsOfResults = tessarin::kPostProcessScores;
/// How much may wait to be searched before no more is read: faster input must not fill memory.
constexpr int64_t kMostWaitingMs = 5000;

struct live_options {
    std::string input = "-";
    std::string raw;
    int delayMs = 100;
    int overlapMs = 0;
    double fps = 0;
    double speed = 1;
    std::string format = "jsonl";
    data_options data;
    bool noTrigrams = false;
};

/// One run: audio goes into the recognizer, and lines come out.
class LiveRun {
public:
    LiveRun(const live_options& liveOptions, tessarin::CAccousticHMM& model,
            LiveSource& liveSource);

    void Listen();

private:
    void Push(const std::string& bytes);
    void KeepPace() const;
    bool Flush();
    void WaitForSearch(int64_t untilMs);
    void Finish();
    void Print(bool atEnd);
    static void Write(const std::string& lines);
    int64_t PushedMs() const {
        return static_cast<int64_t>(pushedBytes / source.format.BytesPerFrame() * 1000 /
                                    static_cast<uint64_t>(source.format.rateHz));
    }

    const live_options& options;
    LiveSource& source;
    const bool isPaced;
    double periodMs = 0;
    tessarin::realtime_recognizer_owner recognizer;
    tessarin::results_owner results;
    LiveMouth mouth;
    MouthShapes visemes; ///< empty for other formats
    uint64_t pushedBytes = 0;
    int64_t lastFlushMs = 0; ///< length of the flush before, its tail included
    clock_type::time_point begin = clock_type::now();
};

/// From one observation of `model` to the next.
double PeriodMs(tessarin::CAccousticHMM& model) {
    struct silence final : tessarin::IQuibPCMStream {
        void GetFormat(tessarin::PCMFormat* out) override { *out = {16000u << 16, 16, 1}; }
        uint32_t GetSize() override { return 0; }
        int32_t Read(void*, int32_t) override { return 0; }
        tessarin::error_code Start() override { return tessarin::kNoError; }
    } nothing;
    tessarin::IObservationStream* made = nullptr;
    const int32_t code = CreateObservationStreamFromQuibStream(&nothing, &model, &made);
    if (code != tessarin::kNoError) {
        throw EngineFailure("model", code);
    }
    const tessarin::observations_owner stream(made);
    uint32_t windowSize = 0;
    uint32_t overlap = 0;
    stream->GetFrameGeometry(&windowSize, &overlap);
    return static_cast<double>(windowSize - overlap) /
           static_cast<double>(stream->GetSampleRate()) * 1000.0;
}

LiveRun::LiveRun(const live_options& liveOptions, tessarin::CAccousticHMM& model,
                 LiveSource& liveSource)
    : options(liveOptions), source(liveSource), isPaced(options.input != "-"),
      periodMs(PeriodMs(model)), mouth(options.fps) {
    if (options.format == "visemes") {
        visemes = MouthShapes::BuiltIn("visemes");
    }
    const raw_format& format = source.format;
    tessarin::IRealtimePhnRecognizer* made = nullptr;
    int32_t code = CreateRealtimePhnRecognizer(format.rateHz, format.bits, format.channels,
                                               options.delayMs / 1000.0, &model, &made);
    recognizer.reset(made);
    tessarin::ISyncResultsCollection* collection = nullptr;
    if (code == tessarin::kNoError) {
        code = CreateSyncResultsCollection(kFlagsOfResults, &collection);
        results.reset(collection);
    }
    if (code == tessarin::kNoError) {
        recognizer->SetResultOverlap(options.overlapMs);
        code = recognizer->Start();
    }
    if (code != tessarin::kNoError) {
        throw EngineFailure(options.input, code);
    }
}

void LiveRun::Listen() {
    const size_t blockBytes = source.format.BytesPerFrame() *
                              static_cast<size_t>(source.format.rateHz / kBlocksPerSecond);
    std::string bytes;
    if (options.format == "visemes") {
        Write(WriteShapesHeader(visemes));
    }
    while (!WasInterrupted() && source.Read(&bytes, blockBytes)) {
        Push(bytes);
        KeepPace();
        WaitForSearch(PushedMs() - kMostWaitingMs - 2 * options.delayMs);
        while (Flush()) {
            Print(false);
        }
    }
    Finish();
}

void LiveRun::Push(const std::string& bytes) {
    const int32_t code = recognizer->WriteBytes(bytes.data(), static_cast<uint32_t>(bytes.size()));
    if (code != tessarin::kNoError) {
        throw EngineFailure(options.input, code);
    }
    pushedBytes += bytes.size();
}

/// A file comes as fast as it was recorded, or as `speed` says.
void LiveRun::KeepPace() const {
    if (isPaced) {
        const auto due = std::chrono::duration<double, std::milli>(static_cast<double>(PushedMs()) /
                                                                   options.speed);
        std::this_thread::sleep_until(begin +
                                      std::chrono::duration_cast<clock_type::duration>(due));
    }
}

/// Takes what the recognizer is sure of by now. Returns whether there was anything.
bool LiveRun::Flush() {
    if (!recognizer->GetMicVisemix(results.get(), options.delayMs) || results->size() == 0) {
        return false;
    }
    const int32_t spanMs = (results->end() - 1)->end - results->begin()->start;
    const auto ms = std::llround(std::round(spanMs / periodMs) * periodMs);
    const int64_t tailMs = std::min<int64_t>(options.overlapMs / 2, lastFlushMs);
    mouth.Add(*results, ms, options.overlapMs > 0 ? tailMs : 0);
    lastFlushMs = ms;
    return true;
}

/// Flushes until what was heard reaches `untilMs`.
void LiveRun::WaitForSearch(int64_t untilMs) {
    while (mouth.GetHeardMs() < untilMs) {
        if (Flush()) {
            Print(false);
        } else if (recognizer->IsActive() == 0) {
            throw EngineFailure(options.input, tessarin::kOutOfMemory);
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
    }
}

/// The end is heard in silence that is put behind it, as everything else before its future.
void LiveRun::Finish() {
    constexpr int kAnalysisMs = 200;
    const int64_t audioMs = PushedMs();
    mouth.SetEnd(std::max(audioMs, mouth.GetHeardMs()));
    const int silenceMs = 2 * options.delayMs + kAnalysisMs;
    const size_t frameBytes = source.format.BytesPerFrame();
    pushedBytes -= pushedBytes % frameBytes; // the recognizer completes what was cut by itself
    Push(std::string(frameBytes * static_cast<size_t>(source.format.rateHz) *
                         static_cast<size_t>(silenceMs) / 1000,
                     source.format.bits == 8 ? '\x80' : '\0'));
    WaitForSearch(audioMs);
    Print(true);
}

void LiveRun::Print(bool atEnd) {
    const live_stretch stretch = mouth.TakeFinal(atEnd);
    const std::string lines =
        options.format == "jsonl" ? WriteLiveJson(stretch) : WriteLiveShapes(stretch, visemes);
    Write(lines);
}

void LiveRun::Write(const std::string& lines) {
    std::fwrite(lines.data(), 1, lines.size(), stdout);
    if (std::fflush(stdout) != 0) {
        throw Failure(kExitFailed, "standard output cannot be written");
    }
}

void RunLive(const live_options& options) {
    CatchInterrupts();
    const raw_format format = ReadRawFormat(options.raw.empty() ? "16000,16,1" : options.raw);
    const bool isRaw = options.input == "-" || !options.raw.empty();
    const std::unique_ptr<LiveSource> source =
        isRaw ? OpenRawSource(options.input, format) : OpenRecordingSource(options.input);
    const tessarin::model_owner model = LoadHearingModel(options.data);
    if (!options.noTrigrams) {
        LoadTrigrams({}, options.data, *model);
    }
    LiveRun(options, *model, *source).Listen();
}

} // namespace

void AddLiveCommand(CLI::App& app) {
    auto options = std::make_shared<live_options>();
    CLI::App* command = app.add_subcommand(
        "live", "Find phonemes while audio comes in, and make the mouth shapes from them");
    command
        ->add_option(
            "INPUT", options->input,
            "- for raw samples on standard input, or a file, which is played at its own speed [-]")
        ->option_text("-|FILE");
    command
        ->add_option("--raw", options->raw,
                     "Format of raw samples [16000,16,1]; without it, a FILE is a recording")
        ->option_text("RATE,BITS,CHANNELS");
    command
        ->add_option(
            "--delay", options->delayMs,
            "Least delay from a sound to its result, in ms [100]; the largest is twice that")
        ->check(CLI::Range(20, 10000))
        ->option_text("MS");
    command
        ->add_option("--overlap", options->overlapMs,
                     "How much of the past each flush of the engine reports again, in ms [0]")
        ->check(CLI::Range(0, 10000))
        ->option_text("MS");
    command->add_option("--fps", options->fps, "Frames per second of the mouth track [30]")
        ->check(CLI::Range(1.0, 1000.0))
        ->option_text("N");
    command
        ->add_option("--speed", options->speed,
                     "How many times faster than real time a FILE is played [1]")
        ->check(CLI::Range(0.01, 1e6))
        ->option_text("N");
    command
        ->add_option("--format", options->format,
                     "jsonl: one line of JSON per stretch; visemes: one row per frame with the "
                     "weights of fifteen visemes [jsonl]")
        ->check(CLI::IsMember({"jsonl", "visemes"}))
        ->option_text("FORMAT");
    command->add_option("--model", options->data.model, "Acoustic model [the project's own]")
        ->option_text("FILE");
    AddDataFolderOption(*command, &options->data);
    command->add_flag("--no-trigrams", options->noTrigrams,
                      "Search without statistics of phoneme sequences");
    command->callback([options] { RunLive(*options); });
}
