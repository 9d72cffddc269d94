#include "apps/tessarin/page/page_audio.h"

#include <algorithm>
#include <array>
#include <memory>
#include <type_traits>

#include <soxr.h>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/audio_file_stream.h"
#include "apps/tessarin/readers/recording_failure.h"
#include "tessarin/owned.h"

namespace {

constexpr int kPageRate = 16000;
constexpr size_t kBlockSamples = 65536;
/// Three hours: beyond, browsers fail to read the page.
constexpr size_t kMostSamples = size_t{3} * 3600 * kPageRate;

struct soxr_closer {
    void operator()(soxr_t resampler) const { soxr_delete(resampler); }
};
using soxr_handle = std::unique_ptr<std::remove_pointer_t<soxr_t>, soxr_closer>;
using pcm_source_handle =
    std::unique_ptr<tessarin::IPCMDataSource, tessarin::destroyer<DestroyPCMDataSource>>;

[[noreturn]] void FailForLength(const std::string& path) {
    throw Failure(kExitFailed, path + ": is longer than three hours; cut it into parts");
}

/// Brings blocks of one rate to another.
class Resampler {
public:
    Resampler(int from, int to) : ratio(static_cast<double>(to) / from) {
        soxr_io_spec_t io = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
        io.flags = SOXR_NO_DITHER; // which is random, and a page is to be the same each time
        const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_HQ, 0);
        handle.reset(soxr_create(from, to, 1, nullptr, &io, &quality, nullptr));
    }

    bool IsMade() const { return handle != nullptr; }

    /// Appends what comes out for `count` samples; a null `samples` brings out the rest.
    void Process(const int16_t* samples, size_t count, std::vector<int16_t>* out) {
        std::vector<int16_t> block(static_cast<size_t>(static_cast<double>(count) * ratio) +
                                   kBlockSamples);
        size_t produced = 0;
        do {
            size_t consumed = 0;
            soxr_process(handle.get(), samples, count, &consumed, block.data(), block.size(),
                         &produced);
            out->insert(out->end(), block.begin(),
                        block.begin() + static_cast<std::ptrdiff_t>(produced));
            samples = samples != nullptr ? samples + consumed : nullptr;
            count -= std::min(count, consumed);
        } while (count > 0 || (samples == nullptr && produced > 0));
    }

private:
    double ratio;
    soxr_handle handle;
};

int16_t SampleAt(const std::vector<unsigned char>& bytes, size_t index) {
    return static_cast<int16_t>(bytes[2 * index] | bytes[2 * index + 1] << 8);
}

page_audio ReadKnownFile(const std::string& path, int channel) {
    AudioFileStream stream(path, channel);
    tessarin::PCMFormat format{};
    stream.GetFormat(&format);
    const int rate = static_cast<int>(format.sampleRate >> 16);
    page_audio audio{std::min(rate, kPageRate), {}};
    Resampler resampler(rate, audio.sampleRate);
    if (!resampler.IsMade() || stream.Start() != tessarin::kNoError) {
        throw Failure(kExitFailed, path + ": cannot be read");
    }
    std::vector<unsigned char> bytes(kBlockSamples * sizeof(int16_t));
    std::vector<int16_t> block(kBlockSamples);
    while (const int32_t read = stream.Read(bytes.data(), static_cast<int32_t>(bytes.size()))) {
        const size_t count = static_cast<size_t>(read) / sizeof(int16_t);
        for (size_t i = 0; i < count; ++i) {
            block[i] = SampleAt(bytes, i);
        }
        if (rate == audio.sampleRate) {
            audio.samples.insert(audio.samples.end(), block.begin(),
                                 block.begin() + static_cast<std::ptrdiff_t>(count));
        } else {
            resampler.Process(block.data(), count, &audio.samples);
        }
        if (audio.samples.size() > kMostSamples) {
            FailForLength(path);
        }
    }
    if (rate != audio.sampleRate) {
        resampler.Process(nullptr, 0, &audio.samples);
    }
    return audio;
}

/// For a file that only the engine knows.
page_audio ReadWithEngine(const std::string& path) {
    const tessarin::PCMFormat target{static_cast<uint32_t>(kPageRate) << 16, 16, 1};
    tessarin::IPCMDataSource* made = nullptr;
    const int32_t code = CreatePCMDataSource(path.c_str(), &target, nullptr, &made);
    if (code != tessarin::kNoError) {
        throw NotARecording(path, code);
    }
    const pcm_source_handle source(made);
    auto count = static_cast<uint32_t>(std::max(source->GetNumSamples(), 0));
    if (count > kMostSamples) {
        FailForLength(path);
    }
    page_audio audio{kPageRate, std::vector<int16_t>(count)};
    if (count > 0) {
        source->ReadSamplesInt16(audio.samples.data(), 0, &count, 1);
    }
    return audio;
}

void AppendLittleEndian(uint32_t value, int bytes, std::string* out) {
    for (int i = 0; i < bytes; ++i) {
        out->push_back(static_cast<char>(value >> (8 * i) & 0xff));
    }
}

} // namespace

page_audio ReadPageAudio(const std::string& path, int channel) {
    recording_info info;
    page_audio audio =
        ProbeRecording(path, &info) ? ReadKnownFile(path, channel) : ReadWithEngine(path);
    RequireSamples(path, static_cast<int64_t>(audio.samples.size()));
    return audio;
}

std::string MakeWav(const page_audio& audio) {
    const auto rate = static_cast<uint32_t>(audio.sampleRate);
    const auto size = static_cast<uint32_t>(audio.samples.size() * sizeof(int16_t));
    std::string wav = "RIFF";
    wav.reserve(size + 44);
    AppendLittleEndian(size + 36, 4, &wav);
    wav += "WAVEfmt ";
    AppendLittleEndian(16, 4, &wav);
    AppendLittleEndian(1, 2, &wav); // PCM
    AppendLittleEndian(1, 2, &wav); // channels
    AppendLittleEndian(rate, 4, &wav);
    AppendLittleEndian(rate * sizeof(int16_t), 4, &wav);
    AppendLittleEndian(sizeof(int16_t), 2, &wav);
    AppendLittleEndian(16, 2, &wav);
    wav += "data";
    AppendLittleEndian(size, 4, &wav);
    for (const int16_t sample : audio.samples) {
        AppendLittleEndian(static_cast<uint16_t>(sample), 2, &wav);
    }
    return wav;
}
