#include "apps/tessarin/commands/sentence_command.h"

#include <cstdio>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/options/engine_data.h"
#include "apps/tessarin/readers/recording_samples.h"

namespace {

using json = nlohmann::ordered_json;

/// A sentence in the user's spelling, and its place in the user's text.
struct searched_sentence {
    std::string text;
    SpokenText::place place;
    tessarin_sentence found; ///< its text and place are those in UTF-8
};

std::string ScoreText(double score) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.3f", score);
    return text;
}

std::string WriteJson(const std::string& audio, int64_t durationMs,
                      const std::vector<searched_sentence>& sentences) {
    json list = json::array();
    for (const searched_sentence& each : sentences) {
        json entry{{"text", each.text},
                   {"text_offset", each.place.offset},
                   {"text_length", each.place.length},
                   {"found", each.found.is_found != 0}};
        if (each.found.is_found != 0) {
            entry["start_ms"] = each.found.start_ms;
            entry["end_ms"] = each.found.end_ms;
            entry["score"] = std::stod(ScoreText(each.found.score));
        }
        list.push_back(std::move(entry));
    }
    const json document{
        {"audio", audio}, {"duration_ms", durationMs}, {"sentences", std::move(list)}};
    return document.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string WriteTsv(const std::vector<searched_sentence>& sentences) {
    std::string rows = "start_ms\tend_ms\tscore\ttext\n";
    for (const searched_sentence& each : sentences) {
        if (each.found.is_found != 0) {
            rows += std::to_string(each.found.start_ms) + "\t" + std::to_string(each.found.end_ms) +
                    "\t" + ScoreText(each.found.score);
        } else {
            rows += "\t\tnot found";
        }
        std::string text = each.text;
        for (char& character : text) {
            character =
                character == '\t' || character == '\n' || character == '\r' ? ' ' : character;
        }
        rows += "\t" + text + "\n";
    }
    return rows;
}

/// The one output: its file, and whether it is a table.
struct sentence_output {
    explicit sentence_output(const output_options& options) {
        if (options.files.size() > 1 || options.formats.size() > 1) {
            throw Failure(kExitUsage, "--sentences writes one output");
        }
        if (!options.files.empty()) {
            file = options.files.front();
        }
        const std::string format = options.formats.empty() ? "" : options.formats.front();
        isTable = format == "tsv" || (format.empty() && file.ends_with(".tsv"));
        if (!format.empty() && format != "tsv" && format != "json") {
            throw Failure(kExitUsage, "--sentences writes json or tsv, not " + format);
        }
    }

    std::string file = "-";
    bool isTable = false;
};

float LeastScore(double wanted) {
    constexpr float kSmallest = 1e-30f; // 0 stands for the usual score
    return wanted == 0.0 ? kSmallest : static_cast<float>(wanted);
}

std::vector<searched_sentence> Search(const recording_options& options,
                                      const sentence_options& search, const SpokenText& text,
                                      const tessarin_script_options& script,
                                      const tessarin_audio& audio, tessarin_language& language) {
    const tessarin::flat::model_owner model = LoadFlatModel(options.data);
    const tessarin_search_options range{
        sizeof range,         search.beam, options.stretch.fromMs, options.stretch.toMs, 0,
        TESSARIN_MATCH_EXACT, &script,     TESSARIN_ADAPT_OFF};
    ProgressBar bar(options.quiet);
    const tessarin_progress progress = bar.GetFlat();
    tessarin::flat::sentence_search_owner found;
    const int32_t code = tessarin_create_sentence_search(
        model.get(), &language, &audio, text.GetUtf8().c_str(), LeastScore(search.leastScore),
        &range, &progress, tessarin::Out(found));
    if (code != TESSARIN_OK) {
        throw EngineFailure(options.audio, code);
    }
    std::vector<searched_sentence> sentences;
    uint32_t count = 0;
    const tessarin_sentence* const all = tessarin_get_sentences(found.get(), &count);
    for (uint32_t i = 0; i < count; ++i) {
        sentences.push_back(
            {all[i].text, text.FindOfUtf8(all[i].text_offset, all[i].text_length), all[i]});
    }
    return sentences;
}

} // namespace

void FindSentences(const recording_options& options, const sentence_options& search,
                   const SpokenText& text, const tessarin_script_options& script,
                   tessarin_language& language) {
    const sentence_output output(options.outputs);
    CatchInterrupts();
    const data_source_handle samples =
        LoadSamples(options.audio, ChannelNumber(options.channel), nullptr);
    FindStretch(options.audio, options.stretch, *samples); // says what is wrong with it
    const tessarin::flat::audio_owner audio = FlatAudio(options.audio, *samples);
    const auto durationMs = static_cast<int64_t>(samples->SamplesToMs(samples->GetNumSamples()));
    const std::vector<searched_sentence> sentences =
        Search(options, search, text, script, *audio, language);
    WriteOutput(output.file, output.isTable ? WriteTsv(sentences)
                                            : WriteJson(options.audio, durationMs, sentences));
}
