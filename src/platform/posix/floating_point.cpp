#include "platform/floating_point.h"

#include <cfenv>

namespace tessarin {

void MaskFloatUnderflow() {
#if defined(__GLIBC__)
    fedisableexcept(FE_UNDERFLOW);
#endif
    // Other C libraries offer no traps to begin with.
}

} // namespace tessarin
