#pragma once

#include <cstdint>

#include "tessarin/export.h"

namespace tessarin {

/// An acoustic model: hidden Markov models of the phonemes with diagonal Gaussian mixtures, their
/// labels, and the analysis that they were trained with. Hosts only pass it around. After loading
/// it may be read by several threads at once.
class CAccousticHMM;

/// Room for the longest message that CreateAccHMM writes, its terminator included.
inline constexpr int32_t kModelErrorTextSize = 87;

} // namespace tessarin

/// Reads a model from the `size` bytes at `data`, which need not outlive the call. Returns 0 with
/// the model in `*out`, to be freed by DestroyAccHMM; or, with `*out` null, 12 when the bytes are
/// no model and 1 when memory is short. A null `out` answers 2. `errorText` may be null; otherwise
/// it has room for kModelErrorTextSize bytes and receives a message, unless the fault is in the
/// model of a phoneme.
TESSARIN_API int32_t CreateAccHMM(const void* data, uint32_t size, char* errorText,
                                  tessarin::CAccousticHMM** out);

/// Frees a model; null is allowed. Streams and recognizers that use it must be gone.
TESSARIN_API void DestroyAccHMM(tessarin::CAccousticHMM* model);
