#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/options/mouth_track.h"
#include "apps/tessarin/readers/live_source.h"
#include "apps/tessarin/writers/live_lines.h"
#include "tessarin/tessarin_c.h"

namespace {

using clock_type = std::chrono::steady_clock;

constexpr int kBlocksPerSecond = 100;
/// How much may wait to be searched before no more is read: faster input must not fill memory.
constexpr int64_t kMostWaitingMs = 5000;

struct live_options {
    std::string input = "-";
    std::string raw;
    int delayMs = 25;
    int lookAheadMs = 20;
    std::vector<std::string> strengths;
    int overlapMs = 0;
    double fps = 0;
    double speed = 1;
    std::string format = "jsonl";
    data_options data;
    bool noTrigrams = false;
};

using hearing_model = std::unique_ptr<tessarin_model, tessarin::destroyer<tessarin_free_model>>;
using live_owner = std::unique_ptr<tessarin_live, tessarin::destroyer<tessarin_free_live>>;

/// One run: audio goes into the library, and lines come out.
class LiveRun {
public:
    LiveRun(const live_options& liveOptions, const tessarin_model& model, LiveSource& liveSource);

    void Listen();

private:
    void Push(const std::string& bytes);
    void KeepPace() const;
    void Require(int32_t code) const;
    void Print(const tessarin_live_stretch& stretch) const;
    static void Write(const std::string& lines);
    int64_t PushedMs() const {
        return static_cast<int64_t>(pushedBytes / source.format.BytesPerFrame() * 1000 /
                                    static_cast<uint64_t>(source.format.rateHz));
    }

    const live_options& options;
    LiveSource& source;
    const bool isPaced;
    live_owner live;
    MouthShapes visemes; ///< empty for other formats
    uint64_t pushedBytes = 0;
    clock_type::time_point begin = clock_type::now();
};

LiveRun::LiveRun(const live_options& liveOptions, const tessarin_model& model,
                 LiveSource& liveSource)
    : options(liveOptions), source(liveSource), isPaced(options.input != "-") {
    if (options.format == "visemes") {
        visemes = MouthShapes::BuiltIn("visemes");
    }
    tessarin_live_options settings{};
    settings.size = sizeof settings;
    settings.rate_hz = static_cast<uint32_t>(source.format.rateHz);
    settings.format = source.format.bits == 8 ? TESSARIN_UINT8 : TESSARIN_INT16;
    settings.channels = static_cast<uint32_t>(source.format.channels);
    settings.delay_ms = options.delayMs;
    settings.overlap_ms = options.overlapMs;
    settings.frame_rate = static_cast<float>(options.fps);
    settings.look_ahead_ms = options.lookAheadMs > 0 ? options.lookAheadMs : -1;
    const std::vector<tessarin_strength> strengths = ReadStrengths(options.strengths);
    settings.strengths = strengths.data();
    settings.strength_count = static_cast<uint32_t>(strengths.size());
    tessarin_live* made = nullptr;
    const int32_t code = tessarin_create_live(&model, &settings, &made);
    live.reset(made);
    Require(code);
}

void LiveRun::Listen() {
    const size_t blockBytes = source.format.BytesPerFrame() *
                              static_cast<size_t>(source.format.rateHz / kBlocksPerSecond);
    std::string bytes;
    if (options.format == "visemes") {
        Write(WriteShapesHeader(visemes));
    }
    tessarin_live_stretch stretch;
    const auto take = [&] {
        Require(tessarin_take_live(live.get(), &stretch));
        Print(stretch);
    };
    while (!WasInterrupted() && source.Read(&bytes, blockBytes)) {
        Push(bytes);
        KeepPace();
        take();
        while (stretch.waiting_ms > kMostWaitingMs + 2 * options.delayMs) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            take();
        }
    }
    Require(tessarin_finish_live(live.get(), &stretch));
    Print(stretch);
}

void LiveRun::Push(const std::string& bytes) {
    Require(
        tessarin_push_live_audio(live.get(), bytes.data(), static_cast<uint32_t>(bytes.size())));
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

void LiveRun::Require(int32_t code) const {
    if (code != TESSARIN_OK) {
        throw EngineFailure(options.input, code);
    }
}

void LiveRun::Print(const tessarin_live_stretch& stretch) const {
    if (stretch.end_ms > stretch.start_ms || stretch.phoneme_count + stretch.frame_count > 0) {
        Write(options.format == "jsonl" ? WriteLiveJson(stretch)
                                        : WriteLiveShapes(stretch, visemes));
    }
}

void LiveRun::Write(const std::string& lines) {
    std::fwrite(lines.data(), 1, lines.size(), stdout);
    if (std::fflush(stdout) != 0) {
        throw Failure(kExitFailed, "standard output cannot be written");
    }
}

hearing_model LoadModel(const live_options& options) {
    std::string path = HearingModelPath(options.data);
    tessarin_model* made = nullptr;
    int32_t code = tessarin_create_model_from_file(path.c_str(), &made);
    hearing_model model(made);
    if (code == TESSARIN_OK && !options.noTrigrams) {
        path = DataPathOr("", options.data, kTrigramsName);
        code = tessarin_read_model_statistics(model.get(), path.c_str(), 1);
    }
    if (code != TESSARIN_OK) {
        throw EngineFailure(path, code);
    }
    return model;
}

void RunLive(const live_options& options) {
    CatchInterrupts();
    const raw_format format = ReadRawFormat(options.raw.empty() ? "16000,16,1" : options.raw);
    const bool isRaw = options.input == "-" || !options.raw.empty();
    const std::unique_ptr<LiveSource> source =
        isRaw ? OpenRawSource(options.input, format) : OpenRecordingSource(options.input);
    const hearing_model model = LoadModel(options);
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
            "Least delay from a sound to its result, in ms [25]; the largest is twice that")
        ->check(CLI::Range(20, 10000))
        ->option_text("MS");
    command
        ->add_option("--overlap", options->overlapMs,
                     "How much of the past each flush of the engine reports again, in ms [0]")
        ->check(CLI::Range(0, 10000))
        ->option_text("MS");
    command
        ->add_option("--look-ahead", options->lookAheadMs,
                     "How far ahead of a sound the mouth prepares for it, in ms [20]; frames wait "
                     "for so long")
        ->check(CLI::Range(0, 120))
        ->option_text("MS");
    AddStrengthOption(*command, &options->strengths);
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
