#pragma once

#include <cstdint>

namespace tessarin {

/// How well a command fits an utterance: a logarithm, the higher the better, for commands that are
/// known by their phonemes; a distance, the lower the better, for those that are known by samples.
struct command_score {
    uint32_t id;
    double score;
};

} // namespace tessarin
