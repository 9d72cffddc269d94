#pragma once

#include <cstddef>

#include "text/script/script_layout.h"

namespace tessarin {

/// Adds the regions of a layout in the order of the text. Lines that follow each other and are said
/// by one speaker become one region.
class RegionBuilder {
public:
    explicit RegionBuilder(script_layout& layout) : out(layout) {}

    void AddSpeech(size_t from, size_t to, uint32_t speaker) {
        if (!isOpen) {
            open = {static_cast<uint32_t>(from), 0, true, {}, speaker};
            isOpen = true;
        }
        open.end = static_cast<uint32_t>(to);
    }
    void AddEvent(script_event_kind kind, size_t from, size_t to, uint32_t speaker = 0) {
        EndSpeech();
        out.regions.push_back(
            {static_cast<uint32_t>(from), static_cast<uint32_t>(to), false, kind, speaker});
    }
    /// What is said next is a region of its own.
    void EndSpeech() {
        if (isOpen) {
            out.regions.push_back(open);
            isOpen = false;
        }
    }

private:
    script_layout& out;
    script_region open{}; ///< while isOpen
    bool isOpen = false;
};

} // namespace tessarin
