#include "audio/files/mmio_file.h"

#include <algorithm>
#include <limits>

namespace tessarin {

namespace {

constexpr uint32_t kRiff = FourCC("RIFF");
constexpr uint32_t kData = FourCC("data");
constexpr int64_t kHeaderSize = 8;
constexpr int64_t kFormSize = 4;
constexpr int kMaxChunks = 16384; ///< that a search looks at; real files have a few dozen

int32_t ErrorOf(open_failure failure) {
    switch (failure) {
    case open_failure::kNone:
        return kMmioNoError;
    case open_failure::kNoSuchFile:
        return kMmioFileNotFound;
    case open_failure::kNoSuchPath:
        return kMmioPathNotFound;
    case open_failure::kAccessDenied:
        return kMmioAccessDenied;
    case open_failure::kSharingViolation:
        return kMmioSharingViolation;
    case open_failure::kTooManyOpenFiles:
        return kMmioTooManyOpenFiles;
    case open_failure::kNoMemory:
        return kMmioOutOfMemory;
    case open_failure::kOther:
        break;
    }
    return kMmioCannotOpen;
}

uint32_t LoadU32(const uint8_t* bytes) {
    return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16 |
           uint32_t{bytes[3]} << 24;
}

bool IsOpenEnded(const mmio_chunk& chunk, bool isParentOpenEnded) {
    constexpr uint32_t kUnknown = std::numeric_limits<uint32_t>::max();
    return (chunk.id == kRiff && (chunk.size == 0 || chunk.size == kUnknown)) ||
           (chunk.id == kData &&
            (chunk.size == kUnknown || (chunk.size == 0 && isParentOpenEnded)));
}

} // namespace

int32_t MmioFile::Open(const char* path) {
    position = 0;
    isInStep = true;
    headersSize = 0;
    return ErrorOf(file.Open(path));
}

int32_t MmioFile::DescendForm(uint32_t form, mmio_chunk* found) {
    for (int i = 0; i < kMaxChunks; ++i) {
        mmio_chunk chunk;
        if (const int32_t error = ReadHeader(file.GetSize(), false, &chunk)) {
            return error;
        }
        uint8_t name[kFormSize];
        if (chunk.id == kRiff && chunk.end - chunk.dataStart >= kFormSize &&
            Read(name, sizeof(name)) == kFormSize && LoadU32(name) == form) {
            chunk.form = form;
            *found = chunk;
            return kMmioNoError;
        }
        if (const int32_t error = Ascend(chunk)) {
            return error;
        }
    }
    return kMmioChunkNotFound;
}

int32_t MmioFile::DescendChunk(uint32_t id, const mmio_chunk& parent, mmio_chunk* found) {
    for (int i = 0; i < kMaxChunks; ++i) {
        mmio_chunk chunk;
        if (const int32_t error = ReadHeader(parent.end, parent.isOpenEnded, &chunk)) {
            return error;
        }
        if (chunk.id == id) {
            *found = chunk;
            return kMmioNoError;
        }
        if (const int32_t error = Ascend(chunk)) {
            return error;
        }
    }
    return kMmioChunkNotFound;
}

// The file follows at the next read: of a chunk that is passed over, nothing may be needed at all.
int32_t MmioFile::Ascend(const mmio_chunk& chunk) {
    position = chunk.end + (chunk.end - chunk.dataStart) % 2;
    isInStep = false;
    return kMmioNoError;
}

int32_t MmioFile::Seek(int64_t to) {
    isInStep = file.Seek(to);
    position = isInStep ? to : position;
    return isInStep ? kMmioNoError : kMmioCannotSeek;
}

int64_t MmioFile::Read(void* buffer, size_t bytes) {
    if (!isInStep && Seek(position) != kMmioNoError) {
        return -1;
    }
    const int64_t got = file.Read(buffer, bytes);
    position += std::max<int64_t>(got, 0);
    isInStep = got >= 0;
    return got;
}

/// Has `headers` hold the `bytes` bytes at `start`. Returns whether the file has them.
bool MmioFile::Load(int64_t start, size_t bytes) {
    const auto needed = static_cast<int64_t>(bytes);
    if (start >= headersStart && start + needed <= headersStart + headersSize) {
        return true;
    }
    isInStep = false;
    headersStart = start;
    headersSize = file.Seek(start) ? file.Read(headers.data(), headers.size()) : 0;
    return headersSize >= needed;
}

/// Reads the header that stands at the present position, before `limit` and the end of the file.
int32_t MmioFile::ReadHeader(int64_t limit, bool isParentOpenEnded, mmio_chunk* chunk) {
    const int64_t start = position;
    if (start + kHeaderSize > std::min(limit, file.GetSize()) || !Load(start, kHeaderSize)) {
        return kMmioChunkNotFound;
    }
    const uint8_t* const header = headers.data() + (start - headersStart);
    position = start + kHeaderSize;
    isInStep = false;
    chunk->id = LoadU32(header);
    chunk->size = LoadU32(header + 4);
    chunk->dataStart = start + kHeaderSize;
    chunk->end = chunk->dataStart + chunk->size;
    chunk->isOpenEnded = IsOpenEnded(*chunk, isParentOpenEnded);
    if (chunk->isOpenEnded) {
        constexpr int64_t kLargest = std::numeric_limits<uint32_t>::max();
        chunk->end = file.GetSize();
        chunk->size = static_cast<uint32_t>(std::min(chunk->end - chunk->dataStart, kLargest));
    }
    return kMmioNoError;
}

} // namespace tessarin
