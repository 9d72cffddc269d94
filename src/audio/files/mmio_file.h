#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/binary_file.h"

namespace tessarin {

/// The numbers by which multimedia file functions report what went wrong.
enum mmio_error : int32_t {
    kMmioNoError = 0,
    kMmioFileNotFound = 257,
    kMmioOutOfMemory = 258,
    kMmioCannotOpen = 259,
    kMmioCannotRead = 261,
    kMmioCannotWrite = 262,
    kMmioCannotSeek = 263,
    kMmioChunkNotFound = 265,
    kMmioPathNotFound = 267,
    kMmioAccessDenied = 268,
    kMmioSharingViolation = 269,
    kMmioNetworkError = 270,
    kMmioTooManyOpenFiles = 271,
    kMmioInvalidFile = 272,
};

/// The four letters of a chunk's name as they stand in the file.
constexpr uint32_t FourCC(const char (&name)[5]) {
    uint32_t code = 0;
    for (int i = 3; i >= 0; --i) {
        code = code << 8 | static_cast<uint8_t>(name[i]);
    }
    return code;
}

/// Where a chunk lies.
struct mmio_chunk {
    uint32_t id = 0;
    uint32_t size = 0;        ///< bytes of the body as the file states them; see MmioFile
    uint32_t form = 0;        ///< the first four bytes of a RIFF body
    int64_t dataStart = 0;    ///< position of the body
    int64_t end = 0;          ///< position after the body, without the pad byte of an odd size
    bool isOpenEnded = false; ///< the size was not known to the writer
};

/// Reads a RIFF file: named chunks of a stated size, each padded to an even one, some inside
/// others. A file written to a pipe has a size of 0 or 0xFFFFFFFF for the whole and for its
/// "data", because the writer could not go back: both stand for the rest of the file. A "data" of
/// size 0 in a whole of stated size is just empty. Any other size is believed, even when the file
/// is shorter; a read then ends early. A search gives up after 16384 chunks, so that a large file
/// of zeros, each eight of which read as an empty chunk, costs no more than any other.
class MmioFile {
public:
    [[nodiscard]] int32_t Open(const char* path);
    void Close() { file.Close(); }
    bool IsOpen() const { return file.IsOpen(); }
    /// The size when the file was opened; 0 for what is not a plain file.
    int64_t GetSize() const { return file.GetSize(); }

    /// Finds the next RIFF chunk of `form` from the present position on, which moves past the
    /// form's name.
    [[nodiscard]] int32_t DescendForm(uint32_t form, mmio_chunk* found);

    /// Finds the next chunk named `id` inside `parent` from the present position on, which moves
    /// to its body.
    [[nodiscard]] int32_t DescendChunk(uint32_t id, const mmio_chunk& parent, mmio_chunk* found);

    /// Moves past `chunk` and its padding.
    [[nodiscard]] int32_t Ascend(const mmio_chunk& chunk);

    /// Reads up to `bytes` bytes; fewer only at the end of the file. Returns how many, or -1.
    int64_t Read(void* buffer, size_t bytes);
    [[nodiscard]] int32_t Seek(int64_t to);
    int64_t Tell() const { return position; }

private:
    int32_t ReadHeader(int64_t limit, bool isParentOpenEnded, mmio_chunk* chunk);
    bool Load(int64_t start, size_t bytes);

    BinaryFile file;
    int64_t position = 0;                ///< of the next read
    bool isInStep = false;               ///< the file itself stands there too
    std::array<uint8_t, 4096> headers{}; ///< a part of the file in which headers are looked up
    int64_t headersStart = 0;
    int64_t headersSize = 0;
};

} // namespace tessarin
