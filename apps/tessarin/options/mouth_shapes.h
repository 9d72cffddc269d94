#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "apps/tessarin/timed_result.h"
#include "tessarin/owned.h"

/// A map from phonemes to mouth shapes, as the library reads it.
class MouthShapes {
public:
    MouthShapes() = default; ///< no shapes
    /// A map that the library has built in.
    static MouthShapes BuiltIn(const std::string& set);
    /// The user's own. Throws Failure, which names the file and the line.
    static MouthShapes FromFile(const std::string& path);
    /// A map from its text; `name` stands for it in the Failure.
    static MouthShapes FromText(const std::string& name, const std::string& text);

    std::string GetSet() const;
    std::vector<std::string> GetNames() const;
    std::string GetRestName() const;
    std::vector<std::string> GetClosedNames() const;

    /// The weight of each shape in each of the frames, 0 to 1, a row for each frame.
    std::vector<std::vector<double>> Mix(const std::vector<mouth_frame>& frames) const;

    /// From `startMs` on, one mouth shape is shown.
    struct shape_switch {
        int32_t startMs;
        std::string shape;
    };
    /// One shape at a time for the frames; a shape stays at least `holdMs`.
    std::vector<shape_switch> FindSwitches(const std::vector<mouth_frame>& frames,
                                           int holdMs) const;

private:
    std::shared_ptr<const tessarin_shapes> shapes;
};
