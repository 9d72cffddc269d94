#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <map>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

/// The order of face capture apps, which is not that of the blend shapes: the right comes first of
/// the jaw and of the mouth.
constexpr std::array kColumns = {
    "eyeBlinkLeft",
    "eyeLookDownLeft",
    "eyeLookInLeft",
    "eyeLookOutLeft",
    "eyeLookUpLeft",
    "eyeSquintLeft",
    "eyeWideLeft",
    "eyeBlinkRight",
    "eyeLookDownRight",
    "eyeLookInRight",
    "eyeLookOutRight",
    "eyeLookUpRight",
    "eyeSquintRight",
    "eyeWideRight",
    "jawForward",
    "jawRight",
    "jawLeft",
    "jawOpen",
    "mouthClose",
    "mouthFunnel",
    "mouthPucker",
    "mouthRight",
    "mouthLeft",
    "mouthSmileLeft",
    "mouthSmileRight",
    "mouthFrownLeft",
    "mouthFrownRight",
    "mouthDimpleLeft",
    "mouthDimpleRight",
    "mouthStretchLeft",
    "mouthStretchRight",
    "mouthRollLower",
    "mouthRollUpper",
    "mouthShrugLower",
    "mouthShrugUpper",
    "mouthPressLeft",
    "mouthPressRight",
    "mouthLowerDownLeft",
    "mouthLowerDownRight",
    "mouthUpperUpLeft",
    "mouthUpperUpRight",
    "browDownLeft",
    "browDownRight",
    "browInnerUp",
    "browOuterUpLeft",
    "browOuterUpRight",
    "cheekPuff",
    "cheekSquintLeft",
    "cheekSquintRight",
    "noseSneerLeft",
    "noseSneerRight",
    "tongueOut",
};
constexpr std::array kTurns = {"HeadYaw",     "HeadPitch",     "HeadRoll",
                               "LeftEyeYaw",  "LeftEyePitch",  "LeftEyeRoll",
                               "RightEyeYaw", "RightEyePitch", "RightEyeRoll"};
constexpr size_t kNumValues = kColumns.size() + kTurns.size();
static_assert(kNumValues == 61);

/// Frames a second of a track, whose frames begin at whole milliseconds; timecodes count them.
int RateOf(const timed_result& result) {
    const size_t last = result.frames.size() - 1;
    const double ms = result.frames.size() > 1 ? result.frames[last].startMs : 0.0;
    const double rate = ms > 0 ? 1000.0 * static_cast<double>(last) / ms : 30.0;
    const int whole = static_cast<int>(std::lround(rate));
    // The last frame is within half a millisecond of its number.
    const double expectedMs = 1000.0 * static_cast<double>(last) / std::max(whole, 1);
    if ((whole != 30 && whole != 60) || (ms > 0 && std::abs(expectedMs - ms) > 1.0)) {
        throw Failure(kExitUsage, "--format capture: face capture apps record 30 or 60 frames a "
                                  "second; give --fps 30 or --fps 60");
    }
    return whole;
}

std::string Timecode(size_t frame, int rate) {
    const auto number = static_cast<int>(frame);
    const int seconds = number / rate;
    char text[48];
    std::snprintf(text, sizeof(text), "%02d:%02d:%02d:%02d.000", seconds / 3600 % 24,
                  seconds / 60 % 60, seconds % 60, number % rate);
    return text;
}

std::string Capitalised(std::string name) {
    name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
    return name;
}

} // namespace

std::string WriteCaptureCsv(const timed_result& result, const MouthShapes& shapes) {
    std::string table = "Timecode,BlendShapeCount";
    for (const char* column : kColumns) {
        table += "," + Capitalised(column);
    }
    for (const char* turn : kTurns) {
        table += std::string(",") + turn;
    }
    table += "\n";
    if (result.frames.empty()) {
        return table;
    }
    const int rate = RateOf(result);
    const std::vector<std::string> names = shapes.GetNames();
    const std::vector<std::vector<double>> rows = shapes.Mix(result.frames);
    for (size_t frame = 0; frame < rows.size(); ++frame) {
        std::map<std::string, double> weights;
        for (size_t i = 0; i < names.size(); ++i) {
            weights[names[i]] = rows[frame][i];
        }
        table += Timecode(frame, rate) + "," + std::to_string(kNumValues);
        for (size_t i = 0; i < kNumValues; ++i) {
            const auto found = i < kColumns.size() ? weights.find(kColumns[i]) : weights.end();
            char value[32];
            std::snprintf(value, sizeof(value), ",%.10f",
                          found != weights.end() ? found->second : 0.0);
            table += value;
        }
        table += "\n";
    }
    return table;
}
