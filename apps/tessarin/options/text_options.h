#pragma once

#include <functional>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/readers/spoken_text.h"

/// The text of a command: given on the command line, or in a file.
struct text_options {
    std::optional<std::string> text;
    std::optional<std::string> file;
    std::string encoding = "auto";
    bool isLiteral = false;
    std::string form = "auto"; ///< of a script
    bool hasOneReading = false;
    std::string speaker; ///< whose lines are said; empty: everybody's
    std::string table;   ///< entries on top of the built-in ones
    bool hasCueTimes = false;

    bool IsGiven() const { return text || file; }
};

/// How the library is to read the text. Keeps what its options borrow.
class ScriptOptions {
public:
    /// Throws Failure for a table that does not read.
    ScriptOptions(const text_options& options, const EngineLanguage& language);
    ScriptOptions(const ScriptOptions&) = delete;
    ScriptOptions& operator=(const ScriptOptions&) = delete;

    const tessarin_script_options& GetFlat() const { return flat; }

private:
    std::string speaker;
    std::string table;
    tessarin_script_options flat{};
};

/// Adds --text and --text-file, of which only one may be given, --encoding, and how a script is
/// read.
void AddTextOptions(CLI::App& command, text_options* options);
/// Of these, all but the text itself.
void AddReadingOptions(CLI::App& command, text_options* options);

/// The text of `bytes`. Warns where a text whose encoding is found out stops being UTF-8. Throws
/// Failure, which names `source`.
SpokenText ReadSpokenText(const std::string& source, std::string bytes, const std::string& encoding,
                          tessarin::IVisemixTranscriber& transcriber);

/// Receives what is to be said of a text that can be read all the same.
using text_warning = std::function<void(const std::string& warning)>;

/// What is said of the text that was given. Warns of characters that the language cannot read, on
/// standard error unless `warn` receives that. Throws Failure, also for a text that is blank, and
/// for options that do not go together.
SpokenText ReadText(const text_options& options, const EngineLanguage& language);
SpokenText ReadText(const text_options& options, const EngineLanguage& language,
                    const text_warning& warn);
