#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "tessarin/owned.h"

/// Where the model and the lexicon come from; empty paths mean the project's own.
struct data_options {
    std::string folder;
    std::string model;
    std::string lexicon;
    std::string words; ///< the user's own
};

inline constexpr const char* kModelName = "en-us.model";
inline constexpr const char* kHearingModelName = "en-us-hearing.model";
inline constexpr const char* kLexiconName = "en-us.lexicon";
inline constexpr const char* kTrigramsName = "en-us.trigrams";

void AddDataFolderOption(CLI::App& command, data_options* options);
/// --lexicon and --words.
void AddLexiconOptions(CLI::App& command, data_options* options);

/// `given`, or the project's own file `name` when nothing was given. Throws Failure.
std::string DataPathOr(const std::string& given, const data_options& options, const char* name);

/// Throws Failure for a file that is too large for the engine's 32-bit sizes.
void RequireSize(const std::string& path, const std::string& content);

/// Where no model is named, that for hearing without a text is one of its own, if the data folder
/// has it. Throws Failure.
std::string HearingModelPath(const data_options& options);

/// What is known of the scores of the model that aligns, in the file beside it: its name with the
/// ending .calibration. Empty when there is none.
std::string CalibrationPath(const data_options& options);

/// All throw Failure.
tessarin::model_owner LoadModel(const data_options& options);
tessarin::model_owner LoadHearingModel(const data_options& options);

/// The same for calls of the flat interface.
tessarin::flat::model_owner LoadFlatModel(const data_options& options);

/// The language of a lexicon with the user's words, for the classes and for calls of the flat
/// interface, of one reading of its file.
class EngineLanguage {
public:
    /// Warns of what the user's words say in vain. Throws Failure.
    explicit EngineLanguage(const data_options& options);

    tessarin::IVisemixTranscriber& GetTranscriber() const { return *transcriber; }
    /// Made at the first call. Throws Failure.
    tessarin_language& GetFlat() const;
    const data_options& GetOptions() const { return data; }

private:
    data_options data;
    std::string path;
    std::string content; ///< of the file
    tessarin::transcriber_owner transcriber;
    mutable tessarin::flat::language_owner flat;
};
