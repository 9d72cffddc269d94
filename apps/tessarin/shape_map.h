#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/tessarin/timed_result.h"

/// How the phonemes of a track show in a set of mouth shapes. The text of a map has lines
///
///     set NAME                    what the set is called
///     shapes NAME NAME ...        the shapes, in the order of the outputs; may be repeated
///     closed NAME ...             shapes of closed lips, which no hold suppresses
///     rest NAME                   the shape of a resting mouth
///     PHONEME SHAPE [WEIGHT] ...  what a phoneme shows, each with the weight 1 if not said
///
/// and comments behind #.
class ShapeMap {
public:
    /// Throws Failure, which names `path` and the line.
    static ShapeMap Parse(const std::string& path, std::string_view text);

    const std::string& GetName() const { return name; }
    const std::vector<std::string>& GetShapes() const { return shapes; }
    bool IsClosed(size_t shape) const { return closed[shape]; }
    size_t GetRest() const { return rest; }

    /// The weight of each shape in a frame, 0 to 1.
    std::vector<double> Mix(const mouth_frame& frame) const;
    /// The shape with the largest weight, the first of equals. Soft sounds are mixed with much
    /// rest: it shows only where it outweighs all others together, and never in place of a closed
    /// sound.
    size_t FindStrongest(const mouth_frame& frame) const;

private:
    void ReadLine(const std::vector<std::string>& words);
    size_t FindShape(const std::string& shape) const;

    std::string name;
    std::vector<std::string> shapes;
    std::vector<bool> closed;
    size_t rest = 0;
    std::map<std::string, std::vector<std::pair<size_t, double>>> shown; ///< by phoneme
};
