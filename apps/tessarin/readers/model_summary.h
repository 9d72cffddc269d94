#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// What the image of an acoustic model says of itself.
struct model_summary {
    int32_t version = 0;
    int32_t numModels = 0;
    int32_t numStates = 0;
    int32_t numMixtures = 0;
    float sampleRate = 0;
    float preEmphasis = 0;
    int32_t windowSize = 0;
    int32_t windowOverlap = 0;
    int32_t numFeatures = 0;
    int32_t numBands = 0;
    int32_t numCepstra = 0;
    uint32_t flags = 0;
    std::vector<std::string> labels;
};

/// True when the bytes begin as a model image does.
bool LooksLikeModel(const std::string& image);

/// Reads the summary of an image that the engine accepts; nothing when the image is cut short.
std::optional<model_summary> SummarizeModel(const std::string& image);
