#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "tessarin/observation_stream.h"

/// How noise between the words is silenced, if it is.
struct gate_options {
    std::string gate; ///< dB[,percentile]; empty: no gate
    int rampMs = 10;
};

/// A threshold below 0 is one in decibels of full scale; at 0 the percentile sets it.
struct gate_threshold {
    float db = 0;
    float percentile = 0; ///< 0 to 1; 0 means the engine's
};

/// --gate.
void AddGateOption(CLI::App& command, gate_options* options);

/// What --gate says. Throws Failure.
gate_threshold ReadGate(const gate_options& options);

/// Puts the gate into `stream`, that of the recording `path`, if there is to be one. Throws
/// Failure.
void AddGate(const gate_options& options, const std::string& path,
             tessarin::IObservationStream& stream);
