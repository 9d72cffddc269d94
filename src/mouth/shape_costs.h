#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "mouth/shape_map.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// What it costs to show one shape alone in a frame: the share of the mouth that it hides, 0 to 1,
/// and more where rest would come into a word or closed lips would be missed. Borrows the frames
/// and the map.
class ShapeCosts {
public:
    ShapeCosts(std::span<const tessarin_frame> allFrames, const ShapeMap& shapeMap);

    size_t GetNumFrames() const { return frames.size(); }
    size_t GetNumShapes() const { return map.GetShapes().size(); }
    bool IsClosed(size_t shape) const { return map.IsClosed(shape); }

    /// The cost of each shape in frame number `frame`.
    void Find(size_t frame, std::vector<double>& costs) const;

private:
    void FindPauses();

    std::span<const tessarin_frame> frames;
    const ShapeMap& map;
    std::vector<bool> isPause; ///< by frame
};

} // namespace tessarin
