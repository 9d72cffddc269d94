#include "articulation/markers/marker_lists.h"

#include <algorithm>

namespace tessarin {

void gesture_marker_list::remove_range(int32_t fromMs, int32_t toMs) {
    if (fromMs == -1 && toMs == -1) {
        clear();
        return;
    }
    const auto beyond =
        std::find_if(begin(), end(), [&](const FGesture& gesture) { return gesture.start > toMs; });
    erase(std::remove_if(begin(), beyond,
                         [&](const FGesture& gesture) { return Touches(gesture, fromMs, toMs); }),
          beyond);
}

} // namespace tessarin
