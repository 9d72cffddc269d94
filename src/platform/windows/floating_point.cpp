#include "platform/floating_point.h"

#include <float.h>

namespace tessarin {

void MaskFloatUnderflow() {
    unsigned int control = 0;
    _controlfp_s(&control, _EM_UNDERFLOW, _EM_UNDERFLOW);
}

} // namespace tessarin
