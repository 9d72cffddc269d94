#include "platform/local_time.h"

#include <ctime>

namespace tessarin {

std::array<char, 32> LocalTimeText() {
    std::array<char, 32> text = {};
    const time_t now = std::time(nullptr);
    tm local = {};
    if (localtime_s(&local, &now) == 0) {
        asctime_s(text.data(), text.size(), &local);
    }
    return text;
}

} // namespace tessarin
