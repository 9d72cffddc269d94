#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "base/whole_file.h"
#include "c_api/create.h"
#include "c_api/weight_track.h"
#include "mouth/built_in_shapes.h"
#include "mouth/key_reduction.h"
#include "mouth/loudness.h"
#include "mouth/shape_map.h"
#include "mouth/switches.h"
#include "tessarin/tessarin_c.h"

using namespace tessarin;

struct tessarin_shapes {
    ShapeMap map;
};

struct tessarin_switches {
    std::vector<tessarin_switch> items;
};

static_assert(sizeof(void*) != 8 || (sizeof(tessarin_gain) == 16 && sizeof(tessarin_key) == 8 &&
                                     sizeof(tessarin_curve) == 32 && sizeof(tessarin_switch) == 8));
static_assert(+TESSARIN_TRACK_COMMON_KEYS == +kCommonKeyTimes);

namespace {

constexpr int32_t kMaxHoldMs = 10000;

error_code ParseShapes(std::string_view text, char* reason, uint32_t reasonSize,
                       std::unique_ptr<tessarin_shapes>& out) {
    try {
        out.reset(new tessarin_shapes{ShapeMap::Parse(text)});
        return kNoError;
    } catch (const shape_map_error& wrong) {
        WriteReason(wrong.what(), reason, reasonSize);
        return kInvalidFile;
    }
}

bool AreFrames(const tessarin_frame* frames, uint32_t count) {
    return (frames != nullptr || count == 0) &&
           std::all_of(frames, frames + count, [](const tessarin_frame& frame) {
               return frame.count >= 0 && frame.count <= std::ssize(frame.weights);
           });
}

bool AreRising(std::span<const int32_t> timesMs) {
    return std::adjacent_find(timesMs.begin(), timesMs.end(), std::greater_equal<>()) ==
           timesMs.end();
}

bool HasShape(const tessarin_shapes* shapes, uint32_t shape) {
    return shapes != nullptr && shape < shapes->map.GetShapes().size();
}

} // namespace

int32_t tessarin_create_result_from_phonemes(const tessarin_phoneme* phonemes, uint32_t count,
                                             tessarin_result** out) {
    return Create(phonemes != nullptr || count == 0, out,
                  [&](std::unique_ptr<tessarin_result>& made) {
                      return MakeResult({phonemes, count}, made);
                  });
}

const float* tessarin_get_loudness(const tessarin_result* result, uint32_t* count) {
    return Items(result != nullptr ? &result->loudness : nullptr, count);
}

int32_t tessarin_set_loudness(tessarin_result* result, const float* db, uint32_t count) {
    if (result == nullptr || (db == nullptr && count > 0)) {
        return kInvalidArgument;
    }
    if (std::any_of(db, db + count, [](float value) { return std::isnan(value); })) {
        return kOutOfRange;
    }
    return Guarded([&] {
        std::vector<float> loudness(db, db + count);
        std::ranges::transform(loudness, loudness.begin(),
                               [](float value) { return std::clamp(value, kSilenceDb, 0.0f); });
        result->loudness = std::move(loudness);
        return kNoError;
    });
}

int32_t tessarin_measure_loudness(const int16_t* samples, uint32_t count, uint32_t rate_hz,
                                  float* db, uint32_t* values) {
    constexpr uint32_t kMinRateHz = 100;
    if ((samples == nullptr && count > 0) || values == nullptr || (db == nullptr && *values > 0)) {
        return kInvalidArgument;
    }
    const size_t wanted = rate_hz >= kMinRateHz ? CountLoudnessSteps(count, rate_hz) : 0;
    const bool isRoomy = rate_hz >= kMinRateHz && wanted <= *values;
    *values = static_cast<uint32_t>(wanted);
    if (!isRoomy) {
        return kOutOfRange;
    }
    return Guarded([&] {
        std::ranges::copy(MeasureLoudness({samples, count}, rate_hz), db);
        return kNoError;
    });
}

const tessarin_curve* tessarin_get_curves(const tessarin_track* track, uint32_t* count) {
    return Items(track != nullptr ? &track->curves : nullptr, count);
}

int32_t tessarin_quantize_track(const tessarin_track* track, int32_t from_ms, int32_t to_ms,
                                int32_t max_weights, tessarin_frame* out) {
    if (track == nullptr || out == nullptr) {
        return kInvalidArgument;
    }
    return Guarded([&] { return Quantize(*track, from_ms, to_ms, max_weights, *out); });
}

int32_t tessarin_create_shapes(const char* set, tessarin_shapes** out) {
    return Create(set != nullptr, out, [&](std::unique_ptr<tessarin_shapes>& made) -> error_code {
        const char* const text = FindBuiltInShapes(set);
        return text != nullptr ? ParseShapes(text, nullptr, 0, made) : kNotAvailable;
    });
}

int32_t tessarin_create_shapes_from_text(const char* text, char* reason, uint32_t reason_size,
                                         tessarin_shapes** out) {
    WriteReason("", reason, reason_size);
    return Create(text != nullptr, out, [&](std::unique_ptr<tessarin_shapes>& made) {
        return ParseShapes(text, reason, reason_size, made);
    });
}

int32_t tessarin_create_shapes_from_file(const char* path, char* reason, uint32_t reason_size,
                                         tessarin_shapes** out) {
    WriteReason("", reason, reason_size);
    return Create(path != nullptr, out, [&](std::unique_ptr<tessarin_shapes>& made) -> error_code {
        uint32_t size = 0;
        const auto content = ReadWholeFile(path, &size, false);
        if (content == nullptr) {
            return kFileNotFound;
        }
        const std::string_view text(reinterpret_cast<const char*>(content.get()), size);
        return ParseShapes(text, reason, reason_size, made);
    });
}

const char* tessarin_get_shape_set(const tessarin_shapes* shapes) {
    return shapes != nullptr ? shapes->map.GetSet().c_str() : "";
}

uint32_t tessarin_get_shape_count(const tessarin_shapes* shapes) {
    return shapes != nullptr ? static_cast<uint32_t>(shapes->map.GetShapes().size()) : 0;
}

const char* tessarin_get_shape_name(const tessarin_shapes* shapes, uint32_t shape) {
    return HasShape(shapes, shape) ? shapes->map.GetShapes()[shape].c_str() : nullptr;
}

int32_t tessarin_is_closed_shape(const tessarin_shapes* shapes, uint32_t shape) {
    return HasShape(shapes, shape) && shapes->map.IsClosed(shape) ? 1 : 0;
}

uint32_t tessarin_get_rest_shape(const tessarin_shapes* shapes) {
    return shapes != nullptr ? static_cast<uint32_t>(shapes->map.GetRest()) : 0;
}

int32_t tessarin_mix_shapes(const tessarin_shapes* shapes, const tessarin_frame* frames,
                            uint32_t count, double* weights) {
    if (shapes == nullptr || weights == nullptr || !AreFrames(frames, count)) {
        return kInvalidArgument;
    }
    return Guarded([&]() -> error_code {
        for (const tessarin_frame& frame : std::span(frames, count)) {
            const std::vector<double> mixed = shapes->map.Mix(frame);
            weights = std::copy(mixed.begin(), mixed.end(), weights);
        }
        return kNoError;
    });
}

int32_t tessarin_reduce_keys(const int32_t* times_ms, const double* weights, uint32_t count,
                             uint32_t width, double tolerance, uint32_t* kept,
                             uint32_t* kept_count) {
    if (kept_count == nullptr) {
        return kInvalidArgument;
    }
    *kept_count = 0;
    const bool hasInput =
        width > 0 && (count == 0 || (times_ms != nullptr && weights != nullptr && kept != nullptr));
    if (!hasInput || !AreRising({times_ms, count})) {
        return kInvalidArgument;
    }
    const std::span<const double> all(weights, size_t{count} * width);
    if (!(tolerance >= 0.0 && tolerance <= 1.0) ||
        !std::ranges::all_of(all, [](double weight) { return std::isfinite(weight); })) {
        return kOutOfRange;
    }
    return Guarded([&] {
        const std::vector<uint32_t> reduced = ReduceKeys({times_ms, count}, all, width, tolerance);
        std::ranges::copy(reduced, kept);
        *kept_count = static_cast<uint32_t>(reduced.size());
        return kNoError;
    });
}

void tessarin_free_shapes(tessarin_shapes* shapes) {
    delete shapes;
}

int32_t tessarin_create_switches(const tessarin_shapes* shapes, const tessarin_frame* frames,
                                 uint32_t count, int32_t hold_ms, tessarin_switches** out) {
    const bool hasInput = shapes != nullptr && AreFrames(frames, count);
    return Create(hasInput, out, [&](std::unique_ptr<tessarin_switches>& made) -> error_code {
        if (hold_ms < 0 || hold_ms > kMaxHoldMs) {
            return kOutOfRange;
        }
        made = std::make_unique<tessarin_switches>();
        made->items = FindSwitches({frames, count}, shapes->map, hold_ms);
        return kNoError;
    });
}

const tessarin_switch* tessarin_get_switches(const tessarin_switches* switches, uint32_t* count) {
    return Items(switches != nullptr ? &switches->items : nullptr, count);
}

void tessarin_free_switches(tessarin_switches* switches) {
    delete switches;
}
