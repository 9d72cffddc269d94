#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/tarray.h"
#include "platform/scratch_file.h"
#include "recognition/trellis/frame_hypo_list.h"
#include "tessarin/error_codes.h"

namespace tessarin {

/// A hypothesis as it is stored: states less the first state of their search window.
struct trellis_pair {
    uint16_t state;
    uint16_t predecessor;
};
static_assert(sizeof(trellis_pair) == 4);

/// An observation that is kept in memory.
struct trellis_mem_hypo {
    uint32_t windowStart;
    int32_t count;
    trellis_pair* pairs;
};

/// Where the living states of each observation came from: the first observations in memory, up to a
/// budget, and all later ones in a file, from which the way back reads them in reverse.
///
/// In the file an observation has its pairs, two little-endian 16-bit numbers each, then the first
/// state of its window (32 bits) and the number of pairs (16 bits), so that it can be walked from
/// the end.
class trellis {
public:
    trellis() = default;
    trellis(const trellis&) = delete;
    trellis& operator=(const trellis&) = delete;
    virtual ~trellis();

    /// Makes the file for windows of at most `width` states of a graph of `numStates`. `budget` is
    /// in bytes. Returns 0; 1 without memory; 2 without a path; 17 when the process has too many
    /// files open; 11 when the file cannot be made for another reason.
    [[nodiscard]] error_code Open(const char* path, uint32_t width, uint32_t numStates,
                                  uint32_t budget);
    /// Stores the entries of `list` that are not pruned, and their scores in `scores`. Returns 0;
    /// 1 without memory; 17 when the file does not take them. The observation that passes the
    /// budget is still kept in memory.
    [[nodiscard]] error_code Push(uint32_t windowStart, const FrameHypoList& list,
                                  std::span<double> scores);

    /// The predecessors at the last observation, by state less the first state of its window; null
    /// when there is none or it cannot be read.
    const uint32_t* BeginRead();
    /// Those of the observation before; null at the beginning, or when it cannot be read. Only the
    /// entries of living states mean anything.
    const uint32_t* ReadPrevious();

    uint32_t GetNumFrames() const { return numFrames; }
    uint32_t GetNumFramesInFile() const { return numFramesInFile; }

private:
    [[nodiscard]] bool Keep(uint32_t windowStart);
    [[nodiscard]] bool Write(uint32_t windowStart);
    void Collect(uint32_t windowStart, const FrameHypoList& list, std::span<double> scores);
    bool ReadFromFile();
    void FillMap(uint32_t windowStart, std::span<const trellis_pair> pairs);

    std::vector<uint32_t> map;
    std::vector<trellis_pair> pairBuffer;
    std::vector<uint8_t> bytes; ///< of one observation in the file
    uint32_t windowWidth = 0;
    uint32_t byteBudget = 0;
    uint64_t bytesUsed = 0;
    uint32_t numFramesInFile = 0;
    uint32_t numFrames = 0;
    bool isReading = false;
    uint32_t cursor = 0;
    int64_t filePosition = 0; ///< after the next observation to read
    ScratchFile file;
    TArray<trellis_mem_hypo*> inMemory;
};

} // namespace tessarin
