#include <algorithm>
#include <cstdio>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/options/gate_options.h"
#include "apps/tessarin/readers/audio_file_stream.h"
#include "tessarin/owned.h"
#include "tessarin/tessarin_c.h"

namespace {

struct gate_command_options {
    std::string audio;
    std::string output;
    std::string channel = "1";
    gate_options gate;
    int32_t maxBlipMs = 150;
    int32_t minQuietMs = 220;
};

using audio_owner = std::unique_ptr<tessarin_audio, tessarin::destroyer<tessarin_free_audio>>;

std::vector<int16_t> ReadSamples(AudioFileStream& stream) {
    std::vector<int16_t> samples(stream.GetSize() / sizeof(int16_t));
    size_t count = 0;
    while (count < samples.size()) {
        const size_t wanted = std::min<size_t>(samples.size() - count, 1 << 20);
        const int32_t bytes =
            stream.Read(samples.data() + count, static_cast<int32_t>(wanted * sizeof(int16_t)));
        if (bytes <= 0) {
            break;
        }
        count += static_cast<size_t>(bytes) / sizeof(int16_t);
    }
    samples.resize(count);
    return samples;
}

void AddNumber(std::string& out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
        out += static_cast<char>(value >> (8 * i) & 0xff);
    }
}

std::string MonoWav(std::span<const int16_t> samples, uint32_t rateHz) {
    const auto dataBytes = static_cast<uint32_t>(samples.size() * sizeof(int16_t));
    std::string wav = "RIFF";
    AddNumber(wav, dataBytes + 36, 4);
    wav += "WAVEfmt ";
    AddNumber(wav, 16, 4); // of the format
    AddNumber(wav, 1, 2);  // PCM
    AddNumber(wav, 1, 2);  // channel
    AddNumber(wav, rateHz, 4);
    AddNumber(wav, 2 * rateHz, 4);
    AddNumber(wav, 2, 2); // bytes a sample
    AddNumber(wav, 16, 2);
    wav += "data";
    AddNumber(wav, dataBytes, 4);
    for (const int16_t sample : samples) {
        AddNumber(wav, static_cast<uint16_t>(sample), 2);
    }
    return wav;
}

void RunGate(const gate_command_options& options) {
    const gate_threshold threshold = ReadGate(options.gate);
    AudioFileStream stream(options.audio,
                           options.channel == "mix" ? 0 : std::stoi(options.channel));
    tessarin::PCMFormat format{};
    stream.GetFormat(&format);
    const uint32_t rateHz = format.sampleRate >> 16;
    const std::vector<int16_t> read = ReadSamples(stream);
    tessarin_audio* made = nullptr;
    int32_t code = tessarin_create_audio_from_int16(read.data(), static_cast<uint32_t>(read.size()),
                                                    rateHz, &made);
    const audio_owner audio(made);
    const tessarin_gate_options settings{sizeof settings,      threshold.db,
                                         threshold.percentile, options.gate.rampMs,
                                         options.maxBlipMs,    options.minQuietMs};
    float levelDb = 0;
    made = nullptr;
    if (code == TESSARIN_OK) {
        code = tessarin_create_gated_audio(audio.get(), &settings, &levelDb, &made);
    }
    const audio_owner gated(made);
    if (code != TESSARIN_OK) {
        throw EngineFailure(options.audio, code);
    }
    uint32_t count = 0;
    const int16_t* const samples = tessarin_get_audio_samples(gated.get(), &count);
    WriteOutput(options.output, MonoWav({samples, count}, rateHz));
    std::fprintf(stderr, "silenced below %.1f dB\n", static_cast<double>(levelDb));
}

} // namespace

void AddGateCommand(CLI::App& app) {
    auto options = std::make_shared<gate_command_options>();
    options->gate.gate = "0";
    CLI::App* command = app.add_subcommand(
        "gate", "Silence the noise between the words of a recording, to hear what --gate does");
    command->add_option("AUDIO", options->audio, "Recording: WAV, FLAC, Ogg, AIFF, MP3, Sphere ...")
        ->required()
        ->option_text(" ");
    command
        ->add_option("-o,--output", options->output, "Mono WAV file to write; - is standard output")
        ->required()
        ->option_text("OUT.wav");
    AddGateOption(*command, &options->gate);
    command->add_option("--channel", options->channel, "Channel to gate, from 1, or mix [1]")
        ->check(CLI::Range(1, 1024) | CLI::IsMember({"mix"}))
        ->option_text("N|mix");
    command->add_option("--ramp", options->gate.rampMs, "How long each fade lasts, in ms [10]")
        ->check(CLI::Range(0, 10000))
        ->option_text("MS");
    command
        ->add_option("--max-blip", options->maxBlipMs,
                     "Louder sounds that are shorter than this, in ms, are silenced with the quiet "
                     "around them [150]")
        ->check(CLI::Range(1, 100000))
        ->option_text("MS");
    command
        ->add_option("--min-quiet", options->minQuietMs,
                     "How long that quiet must be on both sides, in ms [220]")
        ->check(CLI::Range(1, 100000))
        ->option_text("MS");
    command->callback([options] { RunGate(*options); });
}
