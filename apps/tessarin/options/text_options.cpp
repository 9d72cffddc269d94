#include "apps/tessarin/options/text_options.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string_view>
#include <utility>
#include <vector>

#include <utf8.h>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/readers/word_list.h"

namespace {

/// For a text whose code page is found out: where it stops being UTF-8 and so is read as the
/// lexicon's code page. Every other accent may then be wrong.
void WarnOfBadUtf8(const std::string& source, std::string_view bytes,
                   tessarin::IVisemixTranscriber& transcriber, const text_warning& warn) {
    const bool isUtf16 = bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF") ||
                         bytes.find('\0') != std::string_view::npos;
    const auto* const bad = utf8::find_invalid(bytes.begin(), bytes.end());
    if (isUtf16 || bad == bytes.end()) {
        return;
    }
    const std::string_view before(bytes.begin(), bad);
    const std::string_view line = before.substr(before.rfind('\n') + 1); // npos + 1 is 0
    tessarin::TranscriberInfo info = {};
    transcriber.getTranscriberInfo(&info);
    char place[128];
    std::snprintf(place, sizeof place, ": line %td, column %td: the byte %02X is not UTF-8",
                  std::ranges::count(before, '\n') + 1,
                  utf8::distance(line.begin(), line.end()) + 1,
                  static_cast<unsigned>(static_cast<unsigned char>(*bad)));
    warn(source + place + ", so the whole text is read in code page " +
         std::to_string(info.code_page) + "; save it as UTF-8, or say --encoding local");
}

void PrintWarning(const std::string& warning) {
    std::fprintf(stderr, "tessarin: %s\n", warning.c_str());
}

/// In the order of tessarin_script_format.
const std::vector<std::string> kForms = {"auto", "plain", "fountain", "srt", "vtt", "textgrid"};

uint32_t FormOf(const text_options& options) {
    std::string form = options.form;
    if (form == "auto" && options.file) {
        const size_t stop = options.file->rfind('.');
        std::string ending = stop != std::string::npos ? options.file->substr(stop + 1) : "";
        std::ranges::transform(ending, ending.begin(), [](unsigned char letter) {
            return static_cast<char>(std::tolower(letter));
        });
        form = ending == "fountain" || ending == "srt" || ending == "vtt" || ending == "textgrid"
                   ? ending
                   : form;
    }
    return static_cast<uint32_t>(std::ranges::find(kForms, form) - kForms.begin());
}

/// The user's own words, which are never spelled, as entries of a table.
std::string ReadAcronyms(const EngineLanguage& language) {
    const std::string& path = language.GetOptions().words;
    if (path.empty()) {
        return "";
    }
    const SpokenText words(path, ReadWholeFile(path), "auto", language.GetTranscriber());
    std::string table = "\n[acronyms]\n";
    for (const word_entry& entry : ReadWordList(path, words.GetLocal())) {
        const std::string word = InUpperCase(entry.word);
        if (word.size() <= 32 &&
            std::ranges::all_of(word, [](char letter) { return letter >= 'A' && letter <= 'Z'; })) {
            table += word + "\n";
        }
    }
    return table;
}

/// The user's table; empty without one.
std::string ReadTable(const text_options& options) {
    std::string table = options.table.empty() ? "" : ReadWholeFile(options.table);
    if (table.find('\0') != std::string::npos) {
        throw Failure(kExitFailed, options.table + ": is not a text; data/en-us.script shows the "
                                                   "form of a table");
    }
    return table;
}

/// Throws Failure with the line and the reason where the table does not read.
void RequireTable(const std::string& path, const std::string& table) {
    char reason[200];
    if (tessarin_check_script_table(table.c_str(), reason, sizeof reason) != tessarin::kNoError) {
        throw Failure(kExitFailed, path + ": " + reason + "; data/en-us.script shows the form");
    }
}

/// Whether texts of the language are read as scripts: English ones are, and all for which the user
/// has a table. Throws Failure for a table that does not read.
bool ReadsScripts(const std::string& path, const std::string& table,
                  const EngineLanguage& language) {
    RequireTable(path, table);
    tessarin_script_options options{};
    options.size = sizeof options;
    options.table = path.empty() ? nullptr : table.c_str();
    tessarin_script* made = nullptr;
    const int32_t code = tessarin_create_script(&language.GetFlat(), "", &options, &made);
    tessarin_free_script(made);
    if (code != TESSARIN_OK && code != TESSARIN_NOT_AVAILABLE) {
        throw EngineFailure(path.empty() ? "script" : path, code);
    }
    return code == TESSARIN_OK;
}

/// A text that is not read as a script has none of its parts. Throws Failure for an option that
/// asks for them.
void RequireNoScriptOptions(const text_options& options) {
    const std::pair<const char*, bool> wanted[] = {{"--speaker", !options.speaker.empty()},
                                                   {"--text-format", options.form != "auto"},
                                                   {"--cue-times", options.hasCueTimes},
                                                   {"--script-table", !options.table.empty()}};
    for (const auto& [name, isWanted] : wanted) {
        if (isWanted) {
            throw Failure(kExitUsage,
                          name + std::string(options.isLiteral
                                                 ? ": does not go with --literal, which reads the "
                                                   "text as it stands; leave one of them out"
                                                 : ": there is no table of scripts for the "
                                                   "language; give one with --script-table"));
        }
    }
}

} // namespace

ScriptOptions::ScriptOptions(const text_options& options, const EngineLanguage& language)
    : speaker(options.speaker) {
    flat.size = sizeof flat;
    table = ReadTable(options);
    if (options.isLiteral || !ReadsScripts(options.table, table, language)) {
        flat.flags = TESSARIN_SCRIPT_LITERAL;
        return;
    }
    table += ReadAcronyms(language);
    flat.flags = (options.hasCueTimes ? uint32_t{TESSARIN_SCRIPT_CUE_TIMES} : 0) |
                 (options.hasOneReading ? uint32_t{TESSARIN_SCRIPT_ONE_READING} : 0);
    flat.format = FormOf(options);
    flat.speaker = speaker.c_str();
    flat.table = table.c_str();
}

void AddTextOptions(CLI::App& command, text_options* options) {
    auto* text = command.add_option("-t,--text", options->text, "What is said");
    text->option_text("TEXT");
    auto* file = command.add_option("-f,--text-file", options->file,
                                    "File with what is said; - is standard input");
    file->option_text("FILE");
    text->excludes(file);
    AddReadingOptions(command, options);
}

void AddReadingOptions(CLI::App& command, text_options* options) {
    command
        .add_option(
            "--encoding", options->encoding,
            "Encoding of the text: utf-8, utf-16, local (the lexicon's code page) or auto [auto]")
        ->check(CLI::IsMember({"auto", "utf-8", "utf-16", "local"}))
        ->option_text("NAME");
    command.add_flag("--literal", options->isLiteral,
                     "Read the text as it stands: no roles and stage directions, numbers and "
                     "abbreviations as the lexicon's language reads them");
    command
        .add_option("--text-format", options->form,
                    "Form of the text: plain, fountain, srt, vtt, textgrid or auto [auto, by the "
                    "file's name and its marks]")
        ->check(CLI::IsMember(kForms))
        ->option_text("NAME");
    command
        .add_option("--speaker", options->speaker,
                    "Take the lines of this role alone, by the name before them [everybody's]")
        ->option_text("NAME");
    command
        .add_option("--script-table", options->table,
                    "Your own units, titles, abbreviations ..., on top of the project's: a file in "
                    "the form of data/en-us.script")
        ->option_text("FILE");
    command.add_flag("--one-reading", options->hasOneReading,
                     "Say numbers, times and unknown words in the usual way, where otherwise the "
                     "recording chooses: 9:00 as nine o'clock, never as nine");
    command.add_flag("--cue-times", options->hasCueTimes,
                     "Divide subtitles at their pauses, by their times");
}

SpokenText ReadSpokenText(const std::string& source, std::string bytes, const std::string& encoding,
                          tessarin::IVisemixTranscriber& transcriber) {
    if (encoding == "auto") {
        WarnOfBadUtf8(source, bytes, transcriber, PrintWarning);
    }
    return {source, std::move(bytes), encoding, transcriber};
}

SpokenText ReadText(const text_options& options, const EngineLanguage& language) {
    return ReadText(options, language, PrintWarning);
}

SpokenText ReadText(const text_options& options, const EngineLanguage& language,
                    const text_warning& warn) {
    const std::string source = options.file.value_or("--text");
    std::string bytes = options.file ? ReadWholeFile(*options.file) : options.text.value_or("");
    tessarin::IVisemixTranscriber& transcriber = language.GetTranscriber();
    if (options.encoding == "auto") {
        WarnOfBadUtf8(source, bytes, transcriber, warn);
    }
    if (options.isLiteral) {
        RequireNoScriptOptions(options);
    }
    const ScriptOptions script(options, language);
    const bool isScript = (script.GetFlat().flags & TESSARIN_SCRIPT_LITERAL) == 0;
    if (!isScript) {
        RequireNoScriptOptions(options);
    }
    SpokenText text = isScript
                          ? SpokenText(source, std::move(bytes), options.encoding, transcriber,
                                       {&script.GetFlat(), &language.GetFlat()})
                          : SpokenText(source, std::move(bytes), options.encoding, transcriber);
    if (const size_t numUnsaid = text.GetNumUnsaid(); numUnsaid > 0) {
        warn(source + ": " + std::to_string(numUnsaid) + " symbols that have no name are not said");
    }
    if (text.GetNumLost() > 0) {
        warn(source + ": " + std::to_string(text.GetNumLost()) +
             " characters that cannot be read count as blanks");
    }
    if (text.GetLocal().find_first_not_of(" \t\r\n\f\v\xA0") == std::string::npos) {
        throw Failure(options.file ? kExitFailed : kExitUsage,
                      source + (!options.speaker.empty()
                                    ? ": has no line of " + options.speaker +
                                          "; --speaker takes a name that stands before a line"
                                : text.GetNumLost() > 0
                                    ? ": has no character that the lexicon's language can read; "
                                      "give the text in that language, or another --lexicon"
                                    : ": is empty; give the words that are said"));
    }
    return text;
}
