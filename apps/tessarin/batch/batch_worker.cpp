#include "apps/tessarin/batch/batch_worker.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <new>
#include <set>

#include "apps/tessarin/batch/batch_facts.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/page/view_page.h"
#include "apps/tessarin/readers/recording_samples.h"
#include "apps/tessarin/readers/spoken_text.h"
#include "apps/tessarin/readers/word_list.h"
#include "apps/tessarin/writers/output_formats.h"

namespace {

namespace fs = std::filesystem;

/// A worker forgets the own words of lines before when there are more files of them than these.
constexpr size_t kMostLanguages = 8;

void SetFailed(const std::string& reason, batch_record* record) {
    (*record)["status"] = "failed";
    (*record)["reason"] = reason;
}

text_options TextOf(const batch_line& line, const text_options& common) {
    text_options text = common;
    if (line.text) {
        text.text = line.text;
        text.encoding = "utf-8"; // that of the list
    } else {
        text.file = line.textFile;
    }
    return text;
}

/// Letters, and what stands within words: what a lexicon could have.
bool IsMadeOfLetters(const std::string& word) {
    const auto isLetter = [](char each) {
        const auto byte = static_cast<unsigned char>(each);
        return byte >= 0x80 || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
    };
    return std::ranges::any_of(word, isLetter) && std::ranges::all_of(word, [&](char each) {
               return isLetter(each) || each == '\'' || each == '-';
           });
}

/// Writes a file, which the record gets with what shows later that it is still there and whole.
void WriteRecorded(const std::string& folder, const std::string& name, const std::string& content,
                   batch_record* record) {
    const fs::path path = fs::path(folder) / name;
    std::error_code failure;
    fs::create_directories(path.parent_path(), failure);
    if (failure) {
        throw Failure(kExitFailed,
                      path.parent_path().string() + ": cannot be made: " + failure.message());
    }
    WriteOutput(path.string(), content);
    (*record)["outputs"].push_back(
        {{"file", name}, {"bytes", content.size()}, {"checksum", ChecksumOf(content)}});
}

/// A pipe would have the batch wait for somebody.
void RequireFile(const std::string& path) {
    std::error_code failure;
    if (fs::is_other(path, failure)) {
        throw Failure(kExitFailed, path + ": is not a file");
    }
}

void RequireOtherFile(const std::string& output, const std::string& input) {
    std::error_code failure;
    if (!input.empty() && fs::equivalent(output, input, failure) && !failure) {
        throw Failure(kExitFailed, output + ": an output would replace what is read; choose "
                                            "another folder with --out");
    }
}

} // namespace

batch_record BatchWorker::Run(const batch_line& line) {
    batch_record record = {{"line", line.number}, {"name", line.name}, {"audio", line.audio}};
    if (!line.speaker.empty()) {
        record["speaker"] = line.speaker;
    }
    record["status"] = "done";
    try {
        if (!line.fault.empty()) {
            throw Failure(kExitFailed, line.fault);
        }
        RequireFile(line.audio);
        RequireFile(line.textFile);
        Work(line, &record);
    } catch (const Failure& failure) {
        if (failure.exitCode == kExitCancelled || WasInterrupted()) {
            throw;
        }
        SetFailed(failure.what(), &record);
    } catch (const std::bad_alloc&) {
        SetFailed(DescribeCode(line.audio, tessarin::kOutOfMemory), &record);
    } catch (const std::exception& error) {
        SetFailed(line.audio + ": " + error.what(), &record);
    }
    return record;
}

void BatchWorker::Work(const batch_line& line, batch_record* record) {
    line_options options = ReadLineOptions(line.options, engine.common);
    options.recording.audio = line.audio;
    const timed_result result = Search(line, options, record);
    AddResultFacts(result, record);
    AddAudioFacts(line.audio, ChannelNumber(options.recording.channel), record);
    Write(line, options, result, record);
    RequireFound(result);
}

timed_result BatchWorker::Search(const batch_line& line, const line_options& options,
                                 batch_record* record) {
    if (!line.HasText()) {
        return FindTimings(options.recording, *engine.soundModel, nullptr, SearchForSounds(),
                           progress);
    }
    const recording_options& recording = options.recording;
    const EngineLanguage& language =
        LanguageWith(line.words.empty() ? recording.data.words : line.words);
    const auto warn = [record](const std::string& warning) {
        (*record)["notes"].push_back(warning);
    };
    const SpokenText text = ReadText(TextOf(line, options.text), language, warn);
    (*record)["text"] = text.GetUtf8();
    timed_result result = FindTimings(
        recording, *engine.model, &text,
        SearchForText(text, language.GetTranscriber(), recording.data, options.search), progress);
    AddUnknownWords(text, language, record);
    return result;
}

const EngineLanguage& BatchWorker::LanguageWith(const std::string& words) {
    const auto known = languages.find(words);
    if (known != languages.end()) {
        return known->second;
    }
    if (languages.size() >= kMostLanguages) {
        languages.clear();
    }
    data_options data = engine.common.recording.data;
    data.words = words;
    return languages.try_emplace(words, data).first->second;
}

void BatchWorker::AddUnknownWords(const SpokenText& text, const EngineLanguage& language,
                                  batch_record* record) {
    tessarin::IVisemixTranscriber& transcriber = language.GetTranscriber();
    transcriber.Transcribe(text.GetLocal().c_str());
    uint32_t count = 0;
    const tessarin::CTxMarker* const tokens = transcriber.GetOutputMarkers(&count);
    std::vector<batch_record> unknown;
    std::set<std::string> seen;
    for (uint32_t i = 0; i < count; ++i) {
        const tessarin::CTxMarker& token = tokens[i];
        if (token.kind != tessarin::kWordToken || token.group_count != 1) {
            continue;
        }
        const std::string word =
            text.GetLocal().substr(token.text_start, token.text_end - token.text_start);
        int32_t isKnown = 0;
        if (!IsMadeOfLetters(word) || !seen.insert(InUpperCase(word)).second ||
            tessarin_has_word(&language.GetFlat(), word.c_str(), &isKnown) != TESSARIN_OK ||
            isKnown != 0) {
            continue;
        }
        unknown.push_back({{"word", word}, {"phonemes", token.groups[0].alternatives[0]}});
    }
    if (!unknown.empty()) {
        (*record)["unknown"] = std::move(unknown);
    }
}

void BatchWorker::Write(const batch_line& line, const line_options& options,
                        const timed_result& result, batch_record* record) {
    const std::string stem = (fs::path(engine.outputFolder) / line.name).string();
    for (const written_form& form : engine.forms.Write(result, stem)) {
        const std::string name = line.name + form.ending;
        const std::string path = stem + form.ending;
        RequireOtherFile(path, line.audio);
        RequireOtherFile(path, line.textFile);
        WriteRecorded(engine.outputFolder, name, form.content, record);
    }
    if (engine.pages == batch_pages::kAll ||
        (engine.pages == batch_pages::kFlagged && IsFlagged(*record))) {
        const page_audio audio =
            ReadPageAudio(line.audio, ChannelNumber(options.recording.channel));
        const std::string name = "pages/" + line.name + ".html";
        WriteRecorded(
            engine.outputFolder, name,
            MakeViewPage(fs::path(line.audio).filename().string(), WriteJson(result), audio),
            record);
        (*record)["page"] = name;
    }
}

bool IsFlagged(const batch_record& record) {
    return record.value("status", "") != "done" || record.value("verdict", "good") == "doubtful" ||
           record.value("verdict", "good") == "poor" || record.contains("unknown") ||
           record.value("clip_count", 0) > 2;
}
