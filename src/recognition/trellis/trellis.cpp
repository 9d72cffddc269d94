#include "recognition/trellis/trellis.h"

#include <algorithm>
#include <new>

#include "base/guarded.h"
#include "base/little_endian.h"

namespace tessarin {
namespace {

constexpr int32_t kGrowthStep = 3600;
constexpr uint64_t kFrameOverhead = 16; ///< bytes that an observation in memory counts for itself
constexpr size_t kPairBytes = 4;
constexpr size_t kTrailerBytes = 6;

} // namespace

trellis::~trellis() {
    for (trellis_mem_hypo* frame : inMemory) {
        delete[] frame->pairs;
        delete frame;
    }
}

error_code trellis::Open(const char* path, uint32_t width, uint32_t numStates, uint32_t budget) {
    const error_code code = Guarded([&] {
        map.assign(std::max(width, numStates), 0);
        pairBuffer.reserve(width);
        bytes.reserve(width * kPairBytes + kTrailerBytes);
    });
    if (code != kNoError || inMemory.SetSize(0, kGrowthStep) == 0) {
        return kOutOfMemory;
    }
    windowWidth = width;
    byteBudget = budget;
    if (path == nullptr || *path == '\0') {
        return kInvalidArgument;
    }
    switch (file.Open(path)) {
    case open_failure::kNone:
        return kNoError;
    case open_failure::kTooManyOpenFiles:
        return kWriteFailed;
    default:
        return kFileInUse;
    }
}

error_code trellis::Push(uint32_t windowStart, const FrameHypoList& list,
                         std::span<double> scores) {
    Collect(windowStart, list, scores);
    // Kept: the budget is soft; the observation that passes it is still kept in memory, so that no
    // search has to know beforehand how large an observation will be.
    if (bytesUsed < byteBudget) {
        if (!Keep(windowStart)) {
            return kOutOfMemory;
        }
        bytesUsed += kPairBytes * pairBuffer.size() + kFrameOverhead;
    } else {
        if (!Write(windowStart)) {
            return kWriteFailed;
        }
        ++numFramesInFile;
    }
    ++numFrames;
    return kNoError;
}

/// Lays out the living hypotheses in the pair buffer.
void trellis::Collect(uint32_t windowStart, const FrameHypoList& list, std::span<double> scores) {
    pairBuffer.clear();
    for (const frame_hypo& entry : list.Entries()) {
        if (entry.state == FrameHypoList::kPruned) {
            continue;
        }
        scores[entry.state] = entry.score;
        pairBuffer.push_back({static_cast<uint16_t>(entry.state - windowStart),
                              static_cast<uint16_t>(entry.predecessor - windowStart)});
    }
}

bool trellis::Keep(uint32_t windowStart) {
    auto* frame = new (std::nothrow) trellis_mem_hypo{windowStart, 0, nullptr};
    if (frame == nullptr) {
        return false;
    }
    frame->pairs = new (std::nothrow) trellis_pair[std::max<size_t>(pairBuffer.size(), 1)];
    if (frame->pairs == nullptr || inMemory.Add(frame) == 0) {
        delete[] frame->pairs;
        delete frame;
        return false;
    }
    frame->count = static_cast<int32_t>(pairBuffer.size());
    std::ranges::copy(pairBuffer, frame->pairs);
    return true;
}

bool trellis::Write(uint32_t windowStart) {
    bytes.resize(pairBuffer.size() * kPairBytes + kTrailerBytes);
    uint8_t* next = bytes.data();
    for (const trellis_pair& pair : pairBuffer) {
        StoreLittleEndian(next, pair.state);
        StoreLittleEndian(next + 2, pair.predecessor);
        next += kPairBytes;
    }
    StoreLittleEndian(next, windowStart);
    StoreLittleEndian(next + 4, static_cast<uint16_t>(pairBuffer.size()));
    return file.Append(bytes.data(), bytes.size());
}

const uint32_t* trellis::BeginRead() {
    isReading = numFrames > 0;
    if (!isReading) {
        return nullptr;
    }
    cursor = numFrames - 1;
    filePosition = file.GetSize();
    return ReadPrevious();
}

const uint32_t* trellis::ReadPrevious() {
    if (!isReading) {
        return nullptr;
    }
    if (cursor < static_cast<uint32_t>(inMemory.GetSize())) {
        const trellis_mem_hypo& frame = *inMemory[static_cast<int32_t>(cursor)];
        FillMap(frame.windowStart, {frame.pairs, static_cast<size_t>(frame.count)});
    } else if (!ReadFromFile()) {
        isReading = false;
        return nullptr;
    }
    isReading = cursor > 0;
    cursor -= isReading ? 1 : 0;
    return map.data();
}

bool trellis::ReadFromFile() {
    uint8_t trailer[kTrailerBytes];
    filePosition -= static_cast<int64_t>(kTrailerBytes);
    if (filePosition < 0 || !file.ReadAt(filePosition, trailer, kTrailerBytes)) {
        return false;
    }
    const uint32_t windowStart = LoadLittleEndian<uint32_t>(trailer);
    const size_t count = LoadLittleEndian<uint16_t>(trailer + 4);
    bytes.resize(count * kPairBytes);
    filePosition -= static_cast<int64_t>(bytes.size());
    if (count > windowWidth || filePosition < 0 ||
        !file.ReadAt(filePosition, bytes.data(), bytes.size())) {
        return false;
    }
    pairBuffer.clear();
    for (size_t i = 0; i < bytes.size(); i += kPairBytes) {
        const trellis_pair pair{LoadLittleEndian<uint16_t>(&bytes[i]),
                                LoadLittleEndian<uint16_t>(&bytes[i + 2])};
        if (pair.state >= windowWidth || pair.predecessor >= windowWidth) {
            return false;
        }
        pairBuffer.push_back(pair);
    }
    FillMap(windowStart, pairBuffer);
    return true;
}

void trellis::FillMap(uint32_t windowStart, std::span<const trellis_pair> pairs) {
    for (const trellis_pair& pair : pairs) {
        map[pair.state] = pair.predecessor + windowStart;
    }
}

} // namespace tessarin
