#include <algorithm>
#include <cstdio>
#include <iterator>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <utf8.h>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/options/text_options.h"
#include "apps/tessarin/readers/lexicon_summary.h"
#include "apps/tessarin/readers/near_characters.h"
#include "apps/tessarin/readers/spoken_text.h"
#include "apps/tessarin/readers/word_list.h"

namespace {

using tessarin::ILexiconEditor;
using tessarin::IVisemixTranscriber;

tessarin::transcriber_owner FromText(const std::string& path, const std::string& text) {
    RequireSize(path, text);
    IVisemixTranscriber* transcriber = nullptr;
    const int32_t code =
        CreateDefaultTranscriber(text.data(), static_cast<int32_t>(text.size()), &transcriber);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
    return tessarin::transcriber_owner(transcriber);
}

/// A word of the lexicon's code page as UTF-8.
std::string Spelled(const std::string& word, IVisemixTranscriber& transcriber) {
    const SpokenText text("word", word, "local", transcriber);
    return text.GetUtf8(0, static_cast<int32_t>(word.size()));
}

/// The word with plain letters in place of those with accents: so a language that folds accents
/// away looks it up.
std::string WithoutAccents(const std::string& word, IVisemixTranscriber& transcriber) {
    const std::string spelled = Spelled(word, transcriber);
    std::string plain;
    for (auto at = spelled.begin(); at != spelled.end();) {
        const char32_t character = utf8::next(at, spelled.end());
        if (const auto near = FindNearCharacters(character)) {
            plain += *near;
        } else {
            utf8::append(character, std::back_inserter(plain));
        }
    }
    return plain;
}

bool IsAscii(const std::string& word) {
    return std::ranges::all_of(word, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// The words that a user adds, in the lexicon's code page, in the order of preference. Those with
/// accents are there without them too.
std::vector<word_entry> ReadUserWords(const std::string& path, const SpokenText& text,
                                      IVisemixTranscriber& transcriber) {
    std::vector<word_entry> entries = ReadWordList(path, text.GetLocal());
    std::vector<word_entry> plain;
    for (const word_entry& entry : entries) {
        if (!IsAscii(entry.word)) {
            plain.push_back({WithoutAccents(entry.word, transcriber), entry.phonemes});
        }
    }
    std::ranges::move(plain, std::back_inserter(entries));
    return entries;
}

/// The same, with a warning for a text that stops being UTF-8.
std::vector<word_entry> ReadUserWords(const std::string& path, IVisemixTranscriber& transcriber) {
    return ReadUserWords(path, ReadSpokenText(path, ReadWholeFile(path), "auto", transcriber),
                         transcriber);
}

/// The engine takes all up to a `=` for a word, so that of prose it would make a lexicon of
/// nothing, and of a stray line a false word. Throws Failure for a text that is not WORD=phonemes
/// throughout.
void RequireLexiconText(const std::string& path, std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    bool isEmpty = true;
    for (size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const size_t first = line.find_first_not_of(kBlanks);
        if (first == std::string_view::npos) {
            continue;
        }
        const size_t equals = line.find('=');
        if (equals <= first || equals == std::string_view::npos ||
            line.find_first_not_of(kBlanks, equals + 1) == std::string_view::npos) {
            throw Failure(kExitFailed,
                          path + ": line " + std::to_string(number) +
                              " is not WORD=phonemes, such as HELLO=hEHlOW; a lexicon is a text "
                              "of such lines, or a lexicon file that `tessarin lexicon` makes");
        }
        isEmpty = false;
    }
    if (isEmpty) {
        throw Failure(kExitFailed, path + ": has no words; give lines WORD=phonemes, or leave "
                                          "--lexicon out to use the project's own");
    }
}

/// Whether a text that has the word asks the lexicon for it.
bool IsAskedFor(const word_entry& entry, IVisemixTranscriber& transcriber) {
    transcriber.Transcribe(entry.word.c_str());
    uint32_t count = 0;
    const tessarin::CTxMarker* tokens = transcriber.GetOutputMarkers(&count);
    if (count != 1 || tokens[0].kind != tessarin::kWordToken || tokens[0].group_count != 1) {
        return false;
    }
    const tessarin::PhonemeGroup& said = tokens[0].groups[0];
    return std::ranges::find(said.alternatives, said.alternatives + said.alternative_count,
                             entry.phonemes) != said.alternatives + said.alternative_count;
}

void WarnOfUselessWords(const std::string& path, std::span<const word_entry> entries,
                        IVisemixTranscriber& transcriber) {
    for (const word_entry& entry : entries) {
        if (entry.line != 0 && !IsAskedFor(entry, transcriber)) {
            std::fprintf(stderr,
                         "tessarin: %s: %s changes nothing, since it is not read as one word\n",
                         PlaceOf(path, entry).c_str(), entry.word.c_str());
        }
    }
}

/// Puts words in place of what the lexicon says of them. A new record goes in front of its word, so
/// the last one is added first.
void ReplaceWords(ILexiconEditor& editor, std::span<const word_entry> entries) {
    for (const word_entry& entry : entries) {
        while (editor.RemoveRecord(entry.word.c_str(), nullptr) == tessarin::kNoError) {
        }
    }
    for (size_t left = entries.size(); left > 0; --left) {
        const word_entry& entry = entries[left - 1];
        const int32_t code = editor.AddRecord(entry.word.c_str(), entry.phonemes.c_str());
        if (code != tessarin::kNoError) {
            throw EngineFailure(entry.word, code);
        }
    }
}

tessarin::transcriber_owner FromImage(const std::string& path, const std::string& image) {
    IVisemixTranscriber* transcriber = nullptr;
    const int32_t code = CreateTranscriberFromLexicon(
        image.data(), static_cast<uint32_t>(image.size()), &transcriber);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
    return tessarin::transcriber_owner(transcriber);
}

/// The lexicon file with the user's words. Its transcriber lives on the editor's records.
tessarin::transcriber_owner FromFileWithWords(const std::string& path, const std::string& words) {
    ILexiconEditor* editor = nullptr;
    const int32_t code = CreateLexiconEditor(path.c_str(), &editor);
    if (code != tessarin::kNoError) {
        throw EngineFailure(path, code);
    }
    tessarin::editor_owner owner(editor);
    tessarin::transcriber_owner transcriber(editor->GetTranscriber(), {std::move(owner)});
    const std::vector<word_entry> entries = ReadUserWords(words, *transcriber);
    ReplaceWords(*editor, entries);
    WarnOfUselessWords(words, entries, *transcriber);
    return transcriber;
}

/// Of a text, the first entry of a word and its neighbours count, so the user's words go in front,
/// each with its variants together and none next to what the text itself begins with.
tessarin::transcriber_owner FromTextWithWords(const std::string& path, const std::string& lexicon,
                                              const std::string& words) {
    constexpr const char* kBorder = "\x7F=x\n"; // no text asks for this
    const tessarin::transcriber_owner language = FromText(path, "");
    std::vector<word_entry> entries = ReadUserWords(words, *language);
    std::ranges::stable_sort(entries, {},
                             [](const word_entry& each) { return InUpperCase(each.word); });
    tessarin::transcriber_owner transcriber =
        FromText(path, WriteWordList(entries, false) + kBorder + lexicon);
    WarnOfUselessWords(words, entries, *transcriber);
    return transcriber;
}

std::string ReadLexicon(const std::string& path) {
    std::string content = ReadWholeFile(path);
    RequireSize(path, content);
    if (!LooksLikeLexicon(content)) {
        RequireLexiconText(path, content);
    }
    return content;
}

/// A word, and all ways to say it, separated by bars.
using user_word = std::pair<std::string, std::string>;

/// In their order, but those with accents come first: each also sets the word without them, for
/// which what the user says of that counts.
std::vector<user_word> GroupByWord(std::span<const word_entry> entries) {
    std::vector<user_word> words;
    std::unordered_map<std::string, size_t> known;
    for (const word_entry& entry : entries) {
        const std::string upper = InUpperCase(entry.word);
        const auto [place, isNew] = known.try_emplace(upper, words.size());
        if (isNew) {
            words.emplace_back(upper, entry.phonemes);
        } else {
            words[place->second].second += "|" + entry.phonemes;
        }
    }
    std::ranges::stable_partition(words,
                                  [](const user_word& each) { return !IsAscii(each.first); });
    return words;
}

tessarin::transcriber_owner MakeTranscriber(const std::string& path, const std::string& content,
                                            const std::string& words) {
    const bool isText = !LooksLikeLexicon(content);
    if (words.empty()) {
        return isText ? FromText(path, content) : FromImage(path, content);
    }
    return isText ? FromTextWithWords(path, content, words) : FromFileWithWords(path, words);
}

} // namespace

EngineLanguage::EngineLanguage(const data_options& options)
    : data(options), path(DataPathOr(options.lexicon, options, kLexiconName)),
      content(ReadLexicon(path)), transcriber(MakeTranscriber(path, content, options.words)) {}

tessarin_language& EngineLanguage::GetFlat() const {
    if (flat != nullptr) {
        return *flat;
    }
    tessarin::flat::language_owner made;
    int32_t code = tessarin_create_language_from_memory(
        content.data(), static_cast<uint32_t>(content.size()), tessarin::Out(made));
    if (code != TESSARIN_OK) {
        throw EngineFailure(path, code);
    }
    if (!data.words.empty()) {
        const SpokenText text(data.words, ReadWholeFile(data.words), "auto", *transcriber);
        for (const auto& [word, phonemes] :
             GroupByWord(ReadUserWords(data.words, text, *transcriber))) {
            const std::string spelled = Spelled(word, *transcriber);
            code = tessarin_set_word(made.get(), spelled.c_str(), phonemes.c_str());
            if (code != TESSARIN_OK) {
                throw EngineFailure(data.words + ": " + spelled, code);
            }
        }
    }
    flat = std::move(made);
    return *flat;
}

void AddLexiconOptions(CLI::App& command, data_options* options) {
    command
        .add_option("--lexicon", options->lexicon,
                    "Lexicon file, or a text of lines WORD=phonemes [the project's own]")
        ->option_text("FILE");
    command
        .add_option("--words", options->words,
                    "Your own words, used in place of the lexicon's: lines WORD=phonemes, or lines "
                    "in the form of the CMU dictionary")
        ->option_text("FILE");
}
