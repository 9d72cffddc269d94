#pragma once

#include <mutex>
#include <shared_mutex>

#include "tessarin/transcriber.h"

namespace tessarin {

/// Held while a text is converted or transcribed. A language that names a locale switches the whole
/// process to it meanwhile, so it works alone; languages without one work side by side.
class LocaleUse {
public:
    explicit LocaleUse(const TranscriberInfo& info) {
        static std::shared_mutex lock;
        if (info.locale[0] != '\0') {
            alone = std::unique_lock(lock);
        } else {
            together = std::shared_lock(lock);
        }
    }

private:
    std::unique_lock<std::shared_mutex> alone;
    std::shared_lock<std::shared_mutex> together;
};

} // namespace tessarin
