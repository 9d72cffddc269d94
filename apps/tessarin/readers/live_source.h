#pragma once

#include <cstdint>
#include <memory>
#include <string>

/// The layout of raw samples: 8-bit unsigned or 16-bit signed little-endian.
struct raw_format {
    int rateHz = 16000;
    int bits = 16;
    int channels = 1;

    size_t BytesPerFrame() const { return static_cast<size_t>(bits / 8 * channels); }
};

/// "RATE,BITS,CHANNELS". Throws Failure.
raw_format ReadRawFormat(const std::string& text);

/// Audio for a live recognizer, piece by piece.
class LiveSource {
public:
    virtual ~LiveSource() = default;

    /// Replaces `bytes` by what has come, at most `limit` bytes, or by nothing when nothing came
    /// for a short while. False at the end. Throws Failure.
    virtual bool Read(std::string* bytes, size_t limit) = 0;

    raw_format format;
};

/// Raw samples from a file, or from standard input for "-". Throws Failure.
std::unique_ptr<LiveSource> OpenRawSource(const std::string& path, const raw_format& format);

/// The first channel of a file of any format. Throws Failure.
std::unique_ptr<LiveSource> OpenRecordingSource(const std::string& path);
