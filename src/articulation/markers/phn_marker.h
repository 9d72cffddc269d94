#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "articulation/markers/marker_base.h"

namespace tessarin {

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

/// A phoneme. Its children, if any, lie end to end inside it and keep their shares of its length
/// when it is stretched.
class phn_marker : public marker_baseT<char> {
public:
    phn_marker() = default;
    phn_marker(int32_t startMs, int32_t endMs, std::string phoneme, float strength);

    void set_start(int32_t ms) override;
    void set_end(int32_t ms) override;

    std::vector<marker_baseT<char>> children;
    bool moved = false; ///< shifted by a rule's offset, so that it may be out of order

private:
    int64_t Length() const { return int64_t{end} - start; }
    void RescaleFrom(int64_t oldLengthMs);
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

} // namespace tessarin
