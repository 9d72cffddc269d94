#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "tessarin/pcm_stream.h"

namespace tessarin::test {

/// A host's audio in memory. Counts its references, and lives where the test puts it.
class HostStream : public IInstallableAudioStream {
public:
    HostStream(PCMFormat pcmFormat, std::vector<uint8_t> samples)
        : format(pcmFormat), content(std::move(samples)) {}
    virtual ~HostStream() = default;

    void GetFormat(PCMFormat* out) override { *out = format; }
    uint32_t GetSize() override { return static_cast<uint32_t>(content.size()); }
    int32_t Read(void* buffer, int32_t wanted) override {
        lastAsked = wanted;
        if (answer) {
            return *answer;
        }
        const size_t size = std::min(static_cast<size_t>(wanted), content.size() - position);
        std::copy_n(content.data() + position, size, static_cast<uint8_t*>(buffer));
        position += size;
        return static_cast<int32_t>(size);
    }
    error_code Start() override {
        position = 0;
        return kNoError;
    }
    int32_t AddRef() override { return ++references; }
    int32_t Release() override { return --references; }

    int32_t references = 1;
    int32_t lastAsked = 0;
    std::optional<int32_t> answer; ///< what `Read` says instead of reading

private:
    PCMFormat format;
    std::vector<uint8_t> content;
    size_t position = 0;
};

} // namespace tessarin::test
