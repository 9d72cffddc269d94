#include <algorithm>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "apps/tessarin/commands/commands.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/options/text_options.h"
#include "apps/tessarin/timed_result.h"

namespace {

using json = nlohmann::ordered_json;
using tessarin::CTxMarker;
using tessarin::PhonemeGroup;

struct transcribe_options {
    std::string standardInput;
    text_options text;
    data_options data;
    std::string format = "tsv";
    std::string output = "-";
};

const char* KindName(const SpokenText& text, const CTxMarker& token) {
    const auto part = text.FindPart(static_cast<int32_t>(token.text_start),
                                    static_cast<int32_t>(token.text_end - token.text_start));
    if (part && part->kind >= TESSARIN_SPEAKER) {
        return SpanTypeName(kScriptSpan + static_cast<uint32_t>(part->kind));
    }
    switch (token.kind) {
    case tessarin::kWordToken:
        return "word";
    case tessarin::kTagToken:
        return "tag";
    case tessarin::kCutToken:
        return "cut";
    case tessarin::kPunctuationToken:
        return "punctuation";
    default:
        return "blank";
    }
}

std::string TokenText(const SpokenText& text, const CTxMarker& token) {
    return text.GetUtf8(static_cast<int32_t>(token.text_start),
                        static_cast<int32_t>(token.text_end - token.text_start));
}

SpokenText::place PlaceOf(const SpokenText& text, const CTxMarker& token) {
    return text.FindOriginal(static_cast<int32_t>(token.text_start),
                             static_cast<int32_t>(token.text_end - token.text_start));
}

/// Groups are separated by blanks, the alternatives of a group by bars.
std::string PhonemesOf(const CTxMarker& token) {
    std::string phonemes;
    for (int32_t g = 0; g < token.group_count; ++g) {
        const PhonemeGroup& group = token.groups[g];
        phonemes += g > 0 ? " " : "";
        for (int32_t a = 0; a < group.alternative_count; ++a) {
            phonemes += a > 0 ? "|" : "";
            phonemes += group.alternatives[a];
        }
    }
    return phonemes;
}

std::string TokensAsTsv(const SpokenText& text, const CTxMarker* tokens, uint32_t count) {
    std::string table = "start\tend\tkind\ttext\tphonemes\n";
    for (uint32_t i = 0; i < count; ++i) {
        std::string token = TokenText(text, tokens[i]);
        std::replace_if(
            token.begin(), token.end(), [](char c) { return c == '\t' || c == '\n' || c == '\r'; },
            ' ');
        const SpokenText::place place = PlaceOf(text, tokens[i]);
        table += std::to_string(place.offset) + "\t" + std::to_string(place.offset + place.length) +
                 "\t" + KindName(text, tokens[i]) + "\t" + token + "\t" + PhonemesOf(tokens[i]) +
                 "\n";
    }
    return table;
}

std::string TokensAsJson(const SpokenText& text, const CTxMarker* tokens, uint32_t count) {
    json list = json::array();
    for (uint32_t i = 0; i < count; ++i) {
        json groups = json::array();
        for (int32_t g = 0; g < tokens[i].group_count; ++g) {
            const PhonemeGroup& group = tokens[i].groups[g];
            groups.push_back(std::vector<std::string>(
                group.alternatives, group.alternatives + group.alternative_count));
        }
        const SpokenText::place place = PlaceOf(text, tokens[i]);
        list.push_back({{"text", TokenText(text, tokens[i])},
                        {"kind", KindName(text, tokens[i])},
                        {"text_offset", place.offset},
                        {"text_length", place.length},
                        {"phonemes", std::move(groups)}});
        if (tokens[i].kind == tessarin::kCutToken) {
            list.back()["cut_ms"] = tokens[i].value;
        }
    }
    return json{{"tokens", std::move(list)}}.dump(1, ' ', false, json::error_handler_t::replace) +
           "\n";
}

void RunTranscribe(const transcribe_options& options) {
    text_options source = options.text;
    if (!options.standardInput.empty()) {
        source.file = "-";
    }
    if (!source.IsGiven()) {
        throw Failure(kExitUsage, "transcribe: the text is missing; give it with --text, "
                                  "--text-file, or - for standard input");
    }
    const EngineLanguage language(options.data);
    const SpokenText text = ReadText(source, language);
    tessarin::IVisemixTranscriber& reader = text.TranscriberOr(language.GetTranscriber());
    reader.Transcribe(text.GetLocal().c_str());
    uint32_t count = 0;
    const CTxMarker* tokens = reader.GetOutputMarkers(&count);
    WriteOutput(options.output, options.format == "json" ? TokensAsJson(text, tokens, count)
                                                         : TokensAsTsv(text, tokens, count));
}

} // namespace

void AddTranscribeCommand(CLI::App& app) {
    auto options = std::make_shared<transcribe_options>();
    CLI::App* command = app.add_subcommand(
        "transcribe", "Show how a text is pronounced: its words, with their kinds and phonemes");
    command->add_option("INPUT", options->standardInput, "- reads the text from standard input")
        ->check(CLI::IsMember({"-"}))
        ->option_text(" ");
    AddTextOptions(*command, &options->text);
    AddLexiconOptions(*command, &options->data);
    AddDataFolderOption(*command, &options->data);
    command->add_option("--format", options->format, "tsv or json [tsv]")
        ->check(CLI::IsMember({"json", "tsv"}))
        ->option_text("FORMAT");
    command->add_option("-o,--output", options->output, "File to write [-, standard output]")
        ->option_text("FILE");
    command->callback([options] { RunTranscribe(*options); });
}
