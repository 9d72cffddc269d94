#pragma once

#include <cstdint>

#include "tessarin/export.h"

namespace tessarin {

/// An acoustic model: hidden Markov models of the phonemes with diagonal Gaussian mixtures, their
/// labels, and the analysis that they were trained with. Hosts only pass it around. After loading
/// it may be read by several threads at once.
class CAccousticHMM;

/// Room for the longest message that CreateAccHMM writes, its terminator included.
inline constexpr int32_t kModelErrorTextSize = 88;

} // namespace tessarin

/// Reads a model from the `size` bytes at `data`, which need not outlive the call. Returns 0 with
/// the model in `*out`, to be freed by DestroyAccHMM, or 12 with `*out` null. `errorText` may be
/// null; otherwise it has room for kModelErrorTextSize bytes and receives a message where the
/// header is at fault.
TESSARIN_API int32_t CreateAccHMM(const void* data, uint32_t size, char* errorText,
                                  tessarin::CAccousticHMM** out);

/// Frees a model; null is allowed. Streams and recognizers that use it must be gone.
TESSARIN_API void DestroyAccHMM(tessarin::CAccousticHMM* model);
