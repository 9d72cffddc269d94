#include "apps/tessarin/shape_map.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <sstream>
#include <stdexcept>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/readers/arpabet.h"

namespace {

std::vector<std::string> SplitLine(std::string_view line) {
    std::istringstream words{std::string(line.substr(0, line.find('#')))};
    std::vector<std::string> split;
    for (std::string word; words >> word;) {
        split.push_back(word);
    }
    return split;
}

bool ReadWeight(const std::string& word, double* weight) {
    char* end = nullptr;
    *weight = std::strtod(word.c_str(), &end);
    return end != word.c_str() && *end == '\0' && *weight >= 0.0 && *weight <= 1.0;
}

/// Lips rest closed, so rest does not speak against a closed sound, however soft it is; from this
/// weight on it is there.
constexpr double kClosedWeight = 0.1;

/// A phoneme is one label, not a string of them.
bool IsPhoneme(const std::string& word) {
    const std::string phones = ArpabetFromLabels(word);
    return !phones.empty() && phones.find(' ') == std::string::npos;
}

} // namespace

ShapeMap ShapeMap::Parse(const std::string& path, std::string_view text) {
    ShapeMap map;
    for (size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::vector<std::string> words = SplitLine(line);
        if (words.empty()) {
            continue;
        }
        try {
            map.ReadLine(words);
        } catch (const std::invalid_argument& wrong) {
            throw Failure(kExitFailed,
                          path + ": line " + std::to_string(number) + ": " + wrong.what());
        }
    }
    if (map.shapes.empty() || map.shown.empty()) {
        throw Failure(kExitFailed, path + ": is no map of mouth shapes");
    }
    return map;
}

void ShapeMap::ReadLine(const std::vector<std::string>& words) {
    const std::string& first = words.front();
    if (first == "set" && words.size() == 2) {
        name = words[1];
    } else if (first == "shapes") {
        shapes.insert(shapes.end(), words.begin() + 1, words.end());
        closed.resize(shapes.size());
    } else if (first == "closed") {
        for (size_t i = 1; i < words.size(); ++i) {
            closed[FindShape(words[i])] = true;
        }
    } else if (first == "rest" && words.size() == 2) {
        rest = FindShape(words[1]);
    } else if (IsPhoneme(first)) {
        auto& parts = shown[first];
        for (size_t i = 1; i < words.size(); ++i) {
            parts.emplace_back(FindShape(words[i]), 1.0);
            if (i + 1 < words.size() && ReadWeight(words[i + 1], &parts.back().second)) {
                ++i;
            }
        }
    } else {
        throw std::invalid_argument("neither a phoneme nor set, shapes, closed or rest: " + first);
    }
}

size_t ShapeMap::FindShape(const std::string& shape) const {
    const auto found = std::ranges::find(shapes, shape);
    if (found == shapes.end()) {
        throw std::invalid_argument("there is no shape " + shape);
    }
    return static_cast<size_t>(found - shapes.begin());
}

std::vector<double> ShapeMap::Mix(const mouth_frame& frame) const {
    std::vector<double> mixed(shapes.size());
    for (const auto& [label, weight] : frame.weights) {
        if (const auto parts = shown.find(label); parts != shown.end()) {
            for (const auto& [shape, share] : parts->second) {
                mixed[shape] += static_cast<double>(weight) * share;
            }
        }
    }
    for (double& weight : mixed) {
        weight = std::clamp(weight, 0.0, 1.0);
    }
    return mixed;
}

size_t ShapeMap::FindStrongest(const mouth_frame& frame) const {
    std::vector<double> mixed = Mix(frame);
    const double resting = std::exchange(mixed[rest], 0.0);
    const double moving = std::accumulate(mixed.begin(), mixed.end(), 0.0);
    const auto strongest = std::ranges::max_element(mixed);
    const auto shape = static_cast<size_t>(strongest - mixed.begin());
    const bool isShown = IsClosed(shape) ? *strongest >= kClosedWeight : moving > resting;
    return isShown ? shape : rest;
}
