#include "base/crit_section.h"

namespace tessarin {

void CCritSection::Lock() {
    mutex.lock();
}

void CCritSection::Unlock() {
    mutex.unlock();
}

} // namespace tessarin
