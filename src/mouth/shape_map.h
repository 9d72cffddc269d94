#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tessarin/tessarin_c.h"

namespace tessarin {

/// Why a text is not a map of mouth shapes; its what() names the line.
class shape_map_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How the phonemes of a track show in a set of mouth shapes. The text of a map has lines
///
///     set NAME                    what the set is called
///     shapes NAME NAME ...        the shapes, in the order of the outputs; may be repeated
///     closed NAME ...             shapes of closed lips, which no hold suppresses
///     rest NAME                   the shape of a resting mouth
///     PHONEME SHAPE [WEIGHT] ...  what a phoneme shows, each with the weight 1 if not said
///
/// and comments that begin with #.
class ShapeMap {
public:
    /// Throws shape_map_error.
    static ShapeMap Parse(std::string_view text);

    const std::string& GetSet() const { return set; }
    const std::vector<std::string>& GetShapes() const { return shapes; }
    bool IsClosed(size_t shape) const { return closed[shape]; }
    size_t GetRest() const { return rest; }

    /// The weight of each shape in a frame, 0 to 1.
    std::vector<double> Mix(const tessarin_frame& frame) const;

private:
    void ReadLine(const std::vector<std::string>& words);
    void ReadPhoneme(const std::vector<std::string>& words);
    size_t FindShape(const std::string& shape) const;

    std::string set;
    std::vector<std::string> shapes;
    std::vector<bool> closed;
    size_t rest = 0;
    std::map<std::string, std::vector<std::pair<size_t, double>>, std::less<>>
        shown; ///< by phoneme
};

} // namespace tessarin
