#include "apps/tessarin/commands/sentence_command.h"

#include <cstdio>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/console/progress_bar.h"
#include "apps/tessarin/sentence_search.h"

namespace {

using json = nlohmann::ordered_json;

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
                   {"found", each.found.has_value()}};
        if (each.found) {
            entry["start_ms"] = each.found->startMs;
            entry["end_ms"] = each.found->endMs;
            entry["score"] = std::stod(ScoreText(each.found->score));
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
        if (each.found) {
            rows += std::to_string(each.found->startMs) + "\t" + std::to_string(each.found->endMs) +
                    "\t" + ScoreText(each.found->score);
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

} // namespace

void FindSentences(const recording_options& options, const sentence_options& search,
                   tessarin::CAccousticHMM& model, const SpokenText& text,
                   tessarin::IVisemixTranscriber& transcriber) {
    const sentence_output output(options.outputs);
    CatchInterrupts();
    ProgressBar progress(options.quiet);
    const int channel = options.channel == "mix" ? 0 : std::stoi(options.channel);
    const auto open = [&](const recording_stretch& stretch) {
        return OpenRecording(options.audio, channel, stretch, model);
    };
    recording_stretch stretch = options.stretch;
    const int64_t durationMs = open(stretch).durationMs;
    stretch.toMs = stretch.toMs == 0 ? static_cast<int>(durationMs) : stretch.toMs;
    const std::vector<searched_sentence> sentences = SearchForSentences(
        open, stretch, model, text, transcriber, search.beam, search.leastScore, progress);
    WriteOutput(output.file, output.isTable ? WriteTsv(sentences)
                                            : WriteJson(options.audio, durationMs, sentences));
}
