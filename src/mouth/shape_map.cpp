#include "mouth/shape_map.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <sstream>

#include "model/phoneme_alphabet.h"

namespace tessarin {

namespace {

std::vector<std::string> SplitLine(std::string_view line) {
    std::istringstream words{std::string(line.substr(0, line.find('#')))};
    std::vector<std::string> split;
    for (std::string word; words >> word;) {
        split.push_back(word);
    }
    return split;
}

/// Whatever the locale of the host is.
bool ReadWeight(const std::string& word, double* weight) {
    const char* const wordEnd = word.data() + word.size();
    const auto [end, error] = std::from_chars(word.data(), wordEnd, *weight);
    return error == std::errc() && end == wordEnd && *weight >= 0.0 && *weight <= 1.0;
}

} // namespace

ShapeMap ShapeMap::Parse(std::string_view text) {
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
        } catch (const shape_map_error& wrong) {
            throw shape_map_error("line " + std::to_string(number) + ": " + wrong.what());
        }
    }
    if (map.shapes.empty() || map.shown.empty()) {
        throw shape_map_error("not a map of mouth shapes: it lists no shapes or no phonemes");
    }
    return map;
}

void ShapeMap::ReadLine(const std::vector<std::string>& words) {
    const std::string& first = words.front();
    if (first == "set" && words.size() == 2) {
        set = words[1];
    } else if (first == "shapes") {
        shapes.insert(shapes.end(), words.begin() + 1, words.end());
        closed.resize(shapes.size());
    } else if (first == "closed") {
        for (size_t i = 1; i < words.size(); ++i) {
            closed[FindShape(words[i])] = true;
        }
    } else if (first == "rest" && words.size() == 2) {
        rest = FindShape(words[1]);
    } else if (FindPhonemeSymbol(first) != nullptr) {
        ReadPhoneme(words);
    } else {
        throw shape_map_error("neither a phoneme nor set, shapes, closed or rest: " + first);
    }
}

void ShapeMap::ReadPhoneme(const std::vector<std::string>& words) {
    auto& parts = shown[words.front()];
    for (size_t i = 1; i < words.size(); ++i) {
        parts.emplace_back(FindShape(words[i]), 1.0);
        if (i + 1 < words.size() && ReadWeight(words[i + 1], &parts.back().second)) {
            ++i;
        }
    }
}

size_t ShapeMap::FindShape(const std::string& shape) const {
    const auto found = std::ranges::find(shapes, shape);
    if (found == shapes.end()) {
        throw shape_map_error("there is no shape " + shape);
    }
    return static_cast<size_t>(found - shapes.begin());
}

std::vector<double> ShapeMap::Mix(const tessarin_frame& frame) const {
    std::vector<double> mixed(shapes.size());
    for (int32_t i = 0; i < frame.count; ++i) {
        const tessarin_weight& entry = frame.weights[i];
        const auto* const labelEnd = std::find(entry.label, std::end(entry.label), '\0');
        const std::string_view label(entry.label, static_cast<size_t>(labelEnd - entry.label));
        if (const auto parts = shown.find(label); parts != shown.end()) {
            for (const auto& [shape, share] : parts->second) {
                mixed[shape] += static_cast<double>(entry.weight) * share;
            }
        }
    }
    for (double& weight : mixed) {
        weight = std::clamp(weight, 0.0, 1.0);
    }
    return mixed;
}

} // namespace tessarin
