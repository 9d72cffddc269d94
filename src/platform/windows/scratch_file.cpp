#include "platform/scratch_file.h"

#include <algorithm>
#include <windows.h>

#include "platform/windows/wide_text.h"

namespace tessarin {

namespace {

constexpr size_t kLargestPiece = size_t{1} << 30;

HANDLE AsHandle(intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

OVERLAPPED At(int64_t position) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(position & 0xFFFFFFFF);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    return place;
}

} // namespace

open_failure ScratchFile::Open(const char* path) {
    Close();
    const HANDLE opened =
        CreateFileW(WidePath(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return GetLastError() == ERROR_TOO_MANY_OPEN_FILES ? open_failure::kTooManyOpenFiles
                                                           : open_failure::kOther;
    }
    handle = reinterpret_cast<intptr_t>(opened);
    return open_failure::kNone;
}

void ScratchFile::Close() {
    if (handle != -1) {
        CloseHandle(AsHandle(handle));
    }
    handle = -1;
    size = 0;
}

bool ScratchFile::Append(const void* data, size_t bytes) {
    const auto* next = static_cast<const char*>(data);
    while (bytes > 0) {
        OVERLAPPED place = At(size);
        DWORD written = 0;
        if (!WriteFile(AsHandle(handle), next, static_cast<DWORD>(std::min(bytes, kLargestPiece)),
                       &written, &place) ||
            written == 0) {
            return false;
        }
        next += written;
        size += written;
        bytes -= written;
    }
    return true;
}

bool ScratchFile::ReadAt(int64_t position, void* data, size_t bytes) {
    auto* next = static_cast<char*>(data);
    while (bytes > 0) {
        OVERLAPPED place = At(position);
        DWORD got = 0;
        if (!ReadFile(AsHandle(handle), next, static_cast<DWORD>(std::min(bytes, kLargestPiece)),
                      &got, &place) ||
            got == 0) {
            return false;
        }
        next += got;
        position += got;
        bytes -= got;
    }
    return true;
}

} // namespace tessarin
