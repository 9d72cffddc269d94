#pragma once

#include <cstdint>

namespace tessarin {

/// The bytes "mmhz", at the head of a model image, before each phoneme's model and before the
/// transition matrix.
inline constexpr uint32_t kModelMagic = 0x7A686D6D;

/// The newest version of the image.
inline constexpr int16_t kModelVersion = 1;

} // namespace tessarin
