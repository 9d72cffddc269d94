#include "apps/tessarin/options/gate_options.h"

#include <cmath>
#include <cstdlib>

#include "apps/tessarin/console/failure.h"

namespace {

/// The number that `text` is, and nothing but it; not-a-number otherwise.
float WholeNumber(const std::string& text) {
    char* end = nullptr;
    const float number = std::strtof(text.c_str(), &end);
    return text.empty() || *end != '\0' ? std::nanf("") : number;
}

} // namespace

void AddGateOption(CLI::App& command, gate_options* options) {
    command
        .add_option("--gate", options->gate,
                    "Silence what is quieter than a level in dB of full scale, such as -40; with "
                    "0, the level that the quietest SHARE of the recording stays below [0.28]")
        ->option_text("dB[,SHARE]");
}

gate_threshold ReadGate(const gate_options& options) {
    const size_t comma = options.gate.find(',');
    gate_threshold threshold;
    threshold.db = WholeNumber(options.gate.substr(0, comma));
    if (comma != std::string::npos) {
        threshold.percentile = WholeNumber(options.gate.substr(comma + 1));
    }
    if (!std::isfinite(threshold.db) || threshold.db > 0 ||
        !(threshold.percentile >= 0 && threshold.percentile <= 1)) {
        throw Failure(kExitUsage,
                      "--gate " + options.gate +
                          ": give a level of at most 0 dB, and after a comma a share from 0 to 1");
    }
    return threshold;
}

void AddGate(const gate_options& options, const std::string& path,
             tessarin::IObservationStream& stream) {
    if (options.gate.empty()) {
        return;
    }
    const gate_threshold threshold = ReadGate(options);
    const int32_t code =
        AddNoiseGate(&stream, threshold.db, threshold.percentile, options.rampMs, 0, 0);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
}
