#pragma once

#include <cstdint>

#include "tessarin/export.h"

namespace tessarin {

/// The numeric result of most exports and operations: the library's one error vocabulary.
using error_code = int32_t;

inline constexpr error_code kNoError = 0;
inline constexpr error_code kOutOfMemory = 1;
/// A null interface, or an option outside its range.
inline constexpr error_code kInvalidArgument = 2;
inline constexpr error_code kOutOfRange = 3;
/// A failure without a text of its own, such as an audio file that does not exist.
inline constexpr error_code kInternalError = 4;
/// The host's ProgressSink asked to stop.
inline constexpr error_code kUserCancelled = 5;
/// The object does not offer this operation.
inline constexpr error_code kNotAvailable = 6;
inline constexpr error_code kBrokenPath = 7;
/// The search lost the text: the recording and the text differ, or the beam is too narrow.
inline constexpr error_code kRecognitionFailed = 8;
inline constexpr error_code kFileLocked = 9;
inline constexpr error_code kFileNotFound = 10;
inline constexpr error_code kFileInUse = 11;
/// A malformed file of any kind: audio, model, lexicon, rules. The text speaks of a WAV file.
inline constexpr error_code kInvalidFile = 12;
inline constexpr error_code kCompressedFile = 13;
inline constexpr error_code kNotInitialized = 14;
inline constexpr error_code kMissingComponent = 15;
inline constexpr error_code kWriteFailed = 17;
inline constexpr error_code kInvalidUtf8 = 20;
/// The file was written by a later version of its format.
inline constexpr error_code kNewerVersion = 21;
inline constexpr error_code kException = 22;

} // namespace tessarin

/// The constant text of `code`, owned by the library and never null. A code without a text of its
/// own gives the text of an internal error. May be called from any thread.
TESSARIN_API const char* GetVisemixErrorMessage(int32_t code);
