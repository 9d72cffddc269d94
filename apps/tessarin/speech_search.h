#pragma once

#include <cstdint>
#include <string>

#include "apps/tessarin/commands/recording_command.h"
#include "apps/tessarin/options/engine_data.h"

/// How a text is looked for.
struct text_search_options {
    int beam = 0;               ///< states; 0 is the engine's own
    bool retry = false;         ///< the window slides ahead where it loses the text
    std::string match = "auto"; ///< or exact, or loose
};

/// --beam, --retry and --match.
void AddTextSearchOptions(CLI::App& command, text_search_options* options);

/// The search for the sounds of a text that is said, with what is known of the scores of the model
/// that `data` names. `text` and `transcriber` must outlive it. Throws Failure.
recording_search SearchForText(const SpokenText& text, tessarin::IVisemixTranscriber& transcriber,
                               const data_options& data, const text_search_options& options = {});

/// The search for sounds without a text. Throws Failure.
recording_search SearchForSounds();

/// Statistics of phoneme sequences, and limits of their lengths, for SearchForSounds.
struct sound_search_options {
    std::string trigrams;    ///< empty: the project's own
    bool areCounts = false;  ///< the numbers of the file are counts
    bool noTrigrams = false; ///< search without statistics
    std::string limits;
};

/// --trigrams, --counts, --no-trigrams and --limits.
void AddSoundSearchOptions(CLI::App& command, sound_search_options* options);

/// The model for hearing without a text, with its statistics. Throws Failure.
tessarin::model_owner LoadSoundModel(const sound_search_options& options, const data_options& data);
