#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <sndfile.h>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/readers/recording_samples.h"

namespace {

struct cut_options {
    std::string audio;
    recording_stretch stretch;
    std::string channel;
    std::string output;
};

std::vector<data_source_handle> LoadWanted(const cut_options& options) {
    if (options.channel.empty()) {
        return LoadChannels(options.audio);
    }
    std::vector<data_source_handle> one;
    one.push_back(LoadSamples(options.audio, ChannelNumber(options.channel), nullptr));
    return one;
}

std::vector<int16_t> ReadRange(const std::string& path, tessarin::IPCMDataSource& source,
                               sample_range range) {
    auto count = static_cast<uint32_t>(range.end - range.first);
    std::vector<int16_t> samples(count);
    const int32_t code = source.ReadSamplesInt16(samples.data(), range.first, &count, 1);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
    samples.resize(count);
    return samples;
}

/// A file in memory, as the audio library writes it.
struct memory_file {
    std::string content;
    size_t position = 0;

    static memory_file& Of(void* user) { return *static_cast<memory_file*>(user); }
    static sf_count_t Size(void* user) { return static_cast<sf_count_t>(Of(user).content.size()); }
    static sf_count_t Seek(sf_count_t offset, int whence, void* user) {
        memory_file& file = Of(user);
        const sf_count_t from = whence == SEEK_SET   ? 0
                                : whence == SEEK_CUR ? static_cast<sf_count_t>(file.position)
                                                     : Size(user);
        file.position = static_cast<size_t>(std::max<sf_count_t>(from + offset, 0));
        return static_cast<sf_count_t>(file.position);
    }
    static sf_count_t Read(void*, sf_count_t, void*) { return 0; }
    static sf_count_t Write(const void* bytes, sf_count_t count, void* user) {
        memory_file& file = Of(user);
        const auto size = static_cast<size_t>(count);
        file.content.resize(std::max(file.content.size(), file.position + size));
        std::memcpy(file.content.data() + file.position, bytes, size);
        file.position += size;
        return count;
    }
    static sf_count_t Tell(void* user) { return static_cast<sf_count_t>(Of(user).position); }
};

std::string WriteWav(const std::vector<int16_t>& interleaved, int rate, int channels) {
    memory_file file;
    SF_VIRTUAL_IO calls = {memory_file::Size, memory_file::Seek, memory_file::Read,
                           memory_file::Write, memory_file::Tell};
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const out = sf_open_virtual(&calls, SFM_WRITE, &info, &file);
    if (out == nullptr) {
        throw Failure(kExitFailed, std::string("WAV: ") + sf_strerror(nullptr));
    }
    const auto count = static_cast<sf_count_t>(interleaved.size());
    const bool isWhole = sf_write_short(out, interleaved.data(), count) == count;
    if (sf_close(out) != 0 || !isWhole) {
        throw Failure(kExitFailed, DescribeCode("WAV", tessarin::kWriteFailed));
    }
    return std::move(file.content);
}

void RunCut(const cut_options& options) {
    const std::vector<data_source_handle> sources = LoadWanted(options);
    const size_t channels = sources.size();
    const sample_range range = FindStretch(options.audio, options.stretch, *sources.front());
    const auto frames = static_cast<size_t>(range.end - range.first);
    if (frames * channels > std::numeric_limits<uint32_t>::max() / 4) {
        throw Failure(kExitFailed, options.audio + ": is too long for a WAV file");
    }
    std::vector<int16_t> interleaved(frames * channels);
    for (size_t c = 0; c < channels; ++c) {
        const std::vector<int16_t> samples = ReadRange(options.audio, *sources[c], range);
        for (size_t i = 0; i < samples.size(); ++i) {
            interleaved[i * channels + c] = samples[i];
        }
    }
    const int rate = static_cast<int>(sources.front()->GetSampleRate() >> 16);
    WriteOutput(options.output, WriteWav(interleaved, rate, static_cast<int>(channels)));
}

} // namespace

void AddCutCommand(CLI::App& app) {
    auto options = std::make_shared<cut_options>();
    CLI::App* command =
        app.add_subcommand("cut", "Write a stretch of a recording as a 16-bit WAV file");
    command->add_option("AUDIO", options->audio, "Recording: WAV, FLAC, Ogg, AIFF, MP3, Sphere ...")
        ->required()
        ->option_text(" ");
    AddStretchOptions(*command, &options->stretch);
    command->add_option("--channel", options->channel, "Channel to keep, from 1, or mix [all]")
        ->check(CLI::Range(1, 1024) | CLI::IsMember({"mix"}))
        ->option_text("N|mix");
    command->add_option("-o,--output", options->output, "File to write; - is standard output")
        ->required()
        ->option_text("FILE");
    command->callback([options] { RunCut(*options); });
}
