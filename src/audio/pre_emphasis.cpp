#include "audio/pre_emphasis.h"

namespace tessarin {

void PreEmphasize(std::span<float> samples, float coefficient, float& previous) {
    for (float& sample : samples) {
        const float input = sample;
        sample = input - coefficient * previous;
        previous = input;
    }
}

} // namespace tessarin
