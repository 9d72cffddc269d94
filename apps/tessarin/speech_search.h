#pragma once

#include <string>

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/options/engine_data.h"

/// The search for the sounds of a text that is said. `text` and `transcriber` must outlive it; a
/// `beam` of 0 is the engine's own; with `retry` the window slides ahead where it loses the text.
/// Throws Failure.
recording_search SearchForText(const SpokenText& text, tessarin::IVisemixTranscriber& transcriber,
                               int beam, bool retry = false);

/// The search for sounds without a text. Throws Failure.
recording_search SearchForSounds();

/// Statistics of phoneme sequences for SearchForSounds.
struct trigram_options {
    std::string file;    ///< empty: the project's own
    bool counts = false; ///< the numbers of the file are counts
};

/// Loads the statistics into `model`. Throws Failure.
void LoadTrigrams(const trigram_options& options, const data_options& data,
                  tessarin::CAccousticHMM& model);
