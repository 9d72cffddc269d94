#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "articulation/markers/marker_base.h"
#include "articulation/markers/marker_list.h"
#include "tessarin/articulator.h"

namespace tessarin {

#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif

/// A video frame among other timed things.
class art_marker : public marker_baseT<char> {
public:
    using marker_baseT<char>::marker_baseT;
    articulation record = {};
};

/// The weight curve of one occurrence of a phoneme while it is built.
class phn_env_marker : public marker_baseT<char> {
public:
    using marker_baseT<char>::marker_baseT;
    std::vector<envelope_point> points;
};

/// A stage between two poses of a gesture.
class tween_gesture_marker : public marker_baseT<char> {
public:
    using marker_baseT<char>::marker_baseT;
    std::string first_text;
    std::string second_text;
    int32_t first_value = 0;
    int32_t second_value = 0;
};

/// A movement that accompanies speech.
class FGesture : public marker_baseT<char> {
public:
    using marker_baseT<char>::marker_baseT;
    std::string first_text;
    std::string second_text;
    std::vector<tween_gesture_marker> tweens;
};

#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

class articulation_list : public marker_list<art_marker> {
public:
    using marker_list<art_marker>::marker_list;
};

class envelope_list : public marker_list<phn_env_marker> {
public:
    using marker_list<phn_env_marker>::marker_list;
};

template <class Char> class og_marker_listT : public marker_list<og_markerT<Char>> {
public:
    using marker_list<og_markerT<Char>>::marker_list;
};

class event_marker_list : public marker_list<og_markerT<char>> {
public:
    using marker_list<og_markerT<char>>::marker_list;
};

class gesture_marker_list : public marker_list<FGesture> {
public:
    using marker_list<FGesture>::marker_list;
    /// Looks no further than the first gesture that starts after the range.
    void remove_range(int32_t fromMs, int32_t toMs) override;
};

} // namespace tessarin
