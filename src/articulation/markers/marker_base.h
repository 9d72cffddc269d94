#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

namespace tessarin {

/// The number of a new marker, unique in the process.
inline uint32_t NextMarkerId() {
    static std::atomic<uint32_t> lastId{0};
    return lastId.fetch_add(1, std::memory_order_relaxed) + 1;
}

// Markers are values in lists and are never destroyed through their base.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

/// A timed thing: a phoneme, a span of text, a frame, a curve. A copy has the number of its
/// original.
template <class Char> class marker_baseT {
public:
    marker_baseT() = default;
    marker_baseT(int32_t startMs, int32_t endMs, std::basic_string<Char> text)
        : start(startMs), end(endMs), label(std::move(text)) {}

    virtual void set_start(int32_t ms) {
        start = ms;
        changed = true;
    }
    virtual void set_end(int32_t ms) {
        end = ms;
        changed = true;
    }
    virtual const Char* label_text() const { return label.c_str(); }
    virtual const std::basic_string<Char>& label_string() const { return label; }

    int32_t start = 0; ///< milliseconds
    int32_t end = 0;   ///< milliseconds
    std::basic_string<Char> label;
    float score = 0.0f; ///< 0 to 100
    uint32_t marker_id = NextMarkerId();
    int32_t link = -1;
    bool changed = false; ///< whether a time was set since it was made
};

/// A word or another span of text, which is its label.
template <class Char> class og_markerT : public marker_baseT<Char> {
public:
    using marker_baseT<Char>::marker_baseT;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

} // namespace tessarin
