#include "apps/tessarin/readers/audio_file_stream.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <mutex>

#include <sndfile.h>
#include <soxr.h>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/recording_failure.h"
#include "tessarin/error_codes.h"

namespace {

constexpr int kHighestRate = 65535; // what 16.16 fixed point holds
constexpr int kReducedRate = 48000;
constexpr size_t kBlockFrames = 4096;

struct sndfile_closer {
    void operator()(SNDFILE* file) const { sf_close(file); }
};
using sndfile_handle = std::unique_ptr<SNDFILE, sndfile_closer>;

struct soxr_closer {
    void operator()(soxr_t resampler) const { soxr_delete(resampler); }
};
using soxr_handle = std::unique_ptr<std::remove_pointer_t<soxr_t>, soxr_closer>;

std::string FormatName(int command, int format) {
    SF_FORMAT_INFO info{};
    info.format = format;
    const bool known = sf_command(nullptr, command, &info, sizeof(info)) == 0 && info.name;
    return known ? info.name : "unknown";
}

/// Opens a file; null, with the reason, when that fails. The audio library keeps the reason in one
/// place for all threads.
sndfile_handle OpenSound(const std::string& path, SF_INFO* info, std::string* reason) {
    static std::mutex lock;
    const std::lock_guard guard(lock);
#if defined(_WIN32)
    sndfile_handle file(sf_wchar_open(std::filesystem::path(path).c_str(), SFM_READ, info));
#else
    sndfile_handle file(sf_open(path.c_str(), SFM_READ, info));
#endif
    if (!file) {
        *reason = sf_strerror(nullptr);
    }
    return file;
}

bool HasExtension(const std::string& path, const std::string& extension) {
    return path.size() >= extension.size() &&
           std::equal(extension.rbegin(), extension.rend(), path.rbegin(), [](char a, char b) {
               return a == std::tolower(static_cast<unsigned char>(b));
           });
}

/// The engine converts only the first half of a 24-bit block of two channels, takes no float and
/// no 32-bit samples, and ignores the byte order of a Sphere file: only what it reads exactly is
/// left to it.
bool IsBuiltIn(const std::string& path, const SF_INFO& info) {
    const int container = info.format & SF_FORMAT_TYPEMASK;
    const int encoding = info.format & SF_FORMAT_SUBMASK;
    const bool wav = container == SF_FORMAT_WAV || container == SF_FORMAT_WAVEX;
    const bool exact = encoding == SF_FORMAT_PCM_U8 || encoding == SF_FORMAT_PCM_16 ||
                       (encoding == SF_FORMAT_PCM_24 && info.channels == 1);
    return wav && exact && HasExtension(path, ".wav") && info.samplerate <= kHighestRate;
}

} // namespace

bool ProbeRecording(const std::string& path, recording_info* info) {
    SF_INFO found{};
    std::string reason;
    const sndfile_handle file = OpenSound(path, &found, &reason);
    if (!file) {
        return false;
    }
    info->frames = found.frames;
    info->sampleRate = found.samplerate;
    info->channels = found.channels;
    info->container = FormatName(SFC_GET_FORMAT_INFO, found.format & SF_FORMAT_TYPEMASK);
    info->encoding = FormatName(SFC_GET_FORMAT_INFO, found.format & SF_FORMAT_SUBMASK);
    info->builtIn = IsBuiltIn(path, found);
    return true;
}

struct AudioFileStream::decoder {
    sndfile_handle file;
    SF_INFO info{};
    int channel = 0;
    soxr_handle resampler; // null when the rate fits
    int outRate = 0;
    uint64_t outFrames = 0;
    bool inputEnded = false;
};

AudioFileStream::AudioFileStream(const std::string& path, int channel)
    : source(std::make_unique<decoder>()) {
    if (!std::filesystem::exists(path)) {
        throw EngineFailure(path, tessarin::kFileNotFound);
    }
    std::string reason;
    source->file = OpenSound(path, &source->info, &reason);
    if (!source->file) {
        throw NotARecording(path, reason);
    }
    const SF_INFO& info = source->info;
    RequireSamples(path, info.frames);
    if (channel > info.channels) {
        throw Failure(kExitFailed, path + ": has " + std::to_string(info.channels) +
                                       " channel(s), so that there is no channel " +
                                       std::to_string(channel));
    }
    source->channel = channel;
    source->outRate = info.samplerate <= kHighestRate ? info.samplerate : kReducedRate;
    source->outFrames = static_cast<uint64_t>(info.frames);
    if (source->outRate != info.samplerate) {
        source->outFrames = static_cast<uint64_t>(
            std::llround(static_cast<double>(info.frames) * source->outRate / info.samplerate));
        source->resampler.reset(
            soxr_create(info.samplerate, source->outRate, 1, nullptr, nullptr, nullptr, nullptr));
        if (!source->resampler) {
            throw Failure(kExitFailed, path + ": no resampler for its sample rate");
        }
    }
    if (source->outFrames > std::numeric_limits<uint32_t>::max() / sizeof(int16_t)) {
        throw Failure(kExitFailed, path + ": is too long; cut it into parts");
    }
    interleaved.resize(kBlockFrames * static_cast<size_t>(info.channels));
}

AudioFileStream::~AudioFileStream() = default;

void AudioFileStream::GetFormat(tessarin::PCMFormat* out) {
    *out = {static_cast<uint32_t>(source->outRate) << 16, 16, 1};
}

uint32_t AudioFileStream::GetSize() {
    return static_cast<uint32_t>(source->outFrames * sizeof(int16_t));
}

tessarin::error_code AudioFileStream::Start() {
    if (source->resampler) {
        soxr_clear(source->resampler.get());
    }
    source->inputEnded = false;
    pending.clear();
    return sf_seek(source->file.get(), 0, SEEK_SET) == 0 ? tessarin::kNoError
                                                         : tessarin::kInternalError;
}

int32_t AudioFileStream::Read(void* buffer, int32_t bytes) {
    const size_t wanted = static_cast<size_t>(std::max(bytes, 0)) / sizeof(int16_t);
    mono.resize(wanted);
    const size_t got =
        source->resampler ? DecodeResampled(mono.data(), wanted) : DecodeMono(mono.data(), wanted);
    auto* out = static_cast<unsigned char*>(buffer);
    for (size_t i = 0; i < got; ++i) {
        const float scaled = std::clamp(std::nearbyint(mono[i] * 32768.0f), -32768.0f, 32767.0f);
        const auto sample = static_cast<uint16_t>(static_cast<int16_t>(scaled));
        out[2 * i] = static_cast<unsigned char>(sample & 0xff);
        out[2 * i + 1] = static_cast<unsigned char>(sample >> 8);
    }
    return static_cast<int32_t>(got * sizeof(int16_t));
}

size_t AudioFileStream::DecodeMono(float* out, size_t frames) {
    const auto channels = static_cast<size_t>(source->info.channels);
    size_t done = 0;
    while (done < frames) {
        const size_t block = std::min(frames - done, kBlockFrames);
        const auto got = static_cast<size_t>(
            sf_readf_float(source->file.get(), interleaved.data(), static_cast<sf_count_t>(block)));
        for (size_t i = 0; i < got; ++i) {
            const float* frame = &interleaved[i * channels];
            float value = 0.0f;
            if (source->channel > 0) {
                value = frame[source->channel - 1];
            } else {
                for (size_t c = 0; c < channels; ++c) {
                    value += frame[c];
                }
                value /= static_cast<float>(channels);
            }
            out[done + i] = std::isfinite(value) ? value : 0.0f;
        }
        done += got;
        if (got < block) {
            break;
        }
    }
    return done;
}

size_t AudioFileStream::DecodeResampled(float* out, size_t frames) {
    size_t done = 0;
    while (done < frames) {
        if (pending.empty() && !source->inputEnded) {
            pending.resize(kBlockFrames);
            pending.resize(DecodeMono(pending.data(), kBlockFrames));
            source->inputEnded = pending.empty();
        }
        size_t consumed = 0;
        size_t produced = 0;
        const bool failed =
            soxr_process(source->resampler.get(), source->inputEnded ? nullptr : pending.data(),
                         pending.size(), &consumed, out + done, frames - done,
                         &produced) != nullptr;
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(consumed));
        done += produced;
        if (failed || (source->inputEnded && produced == 0)) {
            break;
        }
    }
    return done;
}
