#include "apps/tessarin/readers/live_source.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/system.h"
#include "apps/tessarin/readers/audio_file_stream.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#else
#include <poll.h>
#include <unistd.h>
#endif

namespace {

struct file_closer {
    void operator()(std::FILE* file) const {
        if (file != stdin) {
            std::fclose(file);
        }
    }
};

/// Reads without the buffer of the C library, which would wait until it is full.
class RawSource final : public LiveSource {
public:
    RawSource(const std::string& path, const raw_format& rawFormat) : name(path) {
        format = rawFormat;
        file.reset(path == "-" ? stdin : OpenForReading(path));
        if (!file) {
            throw Failure(kExitFailed, path + ": " + std::strerror(errno));
        }
#if defined(_WIN32)
        _setmode(_fileno(file.get()), _O_BINARY);
#endif
    }

    bool Read(std::string* bytes, size_t limit) override {
        bytes->resize(limit);
        const long count = ReadSome(bytes->data(), limit);
        bytes->resize(count > 0 ? static_cast<size_t>(count) : 0);
        if (count < 0 && errno != EINTR) {
            throw Failure(kExitFailed, name + ": " + std::strerror(errno));
        }
        return count != 0;
    }

private:
#if defined(_WIN32)
    long ReadSome(char* out, size_t limit) {
        return _read(_fileno(file.get()), out, static_cast<unsigned>(limit));
    }
#else
    // Comes back now and then without anything, so that Ctrl-C is seen while no audio comes.
    long ReadSome(char* out, size_t limit) {
        constexpr int kPatienceMs = 20;
        pollfd input{fileno(file.get()), POLLIN, 0};
        if (poll(&input, 1, kPatienceMs) <= 0) {
            errno = EINTR;
            return -1;
        }
        return read(input.fd, out, limit);
    }
#endif

    std::string name;
    std::unique_ptr<std::FILE, file_closer> file;
};

class RecordingSource final : public LiveSource {
public:
    explicit RecordingSource(const std::string& path) : stream(path, 1) {
        tessarin::PCMFormat read{};
        stream.GetFormat(&read);
        format = {static_cast<int>(read.sampleRate >> 16), 16, 1};
    }

    bool Read(std::string* bytes, size_t limit) override {
        bytes->resize(limit);
        const int32_t count = stream.Read(bytes->data(), static_cast<int32_t>(limit));
        bytes->resize(count > 0 ? static_cast<size_t>(count) : 0);
        return count > 0;
    }

private:
    AudioFileStream stream;
};

} // namespace

raw_format ReadRawFormat(const std::string& text) {
    raw_format format;
    int read = 0;
    if (std::sscanf(text.c_str(), "%9d,%9d,%9d%n", &format.rateHz, &format.bits, &format.channels,
                    &read) != 3 ||
        static_cast<size_t>(read) != text.size() || format.rateHz < 4000 || format.rateHz > 50000 ||
        (format.bits != 8 && format.bits != 16) || format.channels < 1 || format.channels > 1024) {
        throw Failure(kExitUsage, "--raw " + text +
                                      ": give RATE,BITS,CHANNELS: 4000 to 50000 Hz, 8 or 16 bits, "
                                      "such as 16000,16,1");
    }
    return format;
}

std::unique_ptr<LiveSource> OpenRawSource(const std::string& path, const raw_format& format) {
    return std::make_unique<RawSource>(path, format);
}

std::unique_ptr<LiveSource> OpenRecordingSource(const std::string& path) {
    return std::make_unique<RecordingSource>(path);
}
