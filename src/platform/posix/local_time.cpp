#include "platform/local_time.h"

#include <ctime>

namespace tessarin {

std::array<char, 32> LocalTimeText() {
    std::array<char, 32> text = {};
    const time_t now = std::time(nullptr);
    tm local = {};
    if (localtime_r(&now, &local) != nullptr) {
        asctime_r(&local, text.data());
    }
    return text;
}

} // namespace tessarin
