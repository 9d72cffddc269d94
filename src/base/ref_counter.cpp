#include "base/ref_counter.h"

namespace tessarin {

int32_t CRefCounter::AddRef() {
    return ++count;
}

int32_t CRefCounter::Release() {
    if (--count > 0) {
        return count;
    }
    delete this;
    return 0;
}

} // namespace tessarin
