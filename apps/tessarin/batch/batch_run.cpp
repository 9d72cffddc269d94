#include "apps/tessarin/batch/batch_run.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "apps/tessarin/batch/batch_list.h"
#include "apps/tessarin/batch/batch_progress.h"
#include "apps/tessarin/batch/batch_report.h"
#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"

namespace {

namespace fs = std::filesystem;

/// What a file is known by without being read: nobody changes a recording and keeps both.
std::string StampOf(const std::string& path) {
    std::error_code failure;
    const auto size = fs::file_size(path, failure);
    if (failure) {
        return "none";
    }
    const auto time = fs::last_write_time(path, failure).time_since_epoch().count();
    return std::to_string(size) + "," + std::to_string(time);
}

std::string ContentOf(const std::string& path) {
    std::ifstream file(fs::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string DataFingerprint(const batch_options& options) {
    const data_options& data = options.line.recording.data;
    std::string all = std::string(TESSARIN_VERSION) + "\n" + options.fingerprint;
    for (const std::string& path :
         {DataPathOr(data.model, data, kModelName), HearingModelPath(data),
          DataPathOr(data.lexicon, data, kLexiconName)}) {
        all += "\n" + StampOf(path);
    }
    return all + "\n" + ContentOf(data.words);
}

/// What the result of a line depends on.
std::string KeyOf(const std::string& common, const batch_line& line) {
    std::string all = common;
    for (const std::string& part :
         {line.audio, StampOf(line.audio), line.text.value_or(""), line.textFile,
          line.textFile.empty() ? "" : ContentOf(line.textFile), line.words,
          line.words.empty() ? "" : ContentOf(line.words), line.speaker, line.options,
          line.fault}) {
        all += '\0' + part;
    }
    return ChecksumOf(all);
}

/// Whether what a record says was written is still there and whole: the machine may have stopped
/// before the disk had it.
bool AreOutputsWhole(const std::string& folder, const batch_record& record) {
    const auto outputs = record.find("outputs");
    return outputs == record.end() ||
           std::ranges::all_of(*outputs, [&folder](const batch_record& output) {
               const std::string content =
                   ContentOf((fs::path(folder) / output.value("file", "")).string());
               return content.size() == output.value("bytes", size_t{0}) &&
                      ChecksumOf(content) == output.value("checksum", "");
           });
}

/// The lines that --only asks for: by what the records say of them, or by their names in a file.
class WantedLines {
public:
    explicit WantedLines(const std::string& only) {
        const std::string list = fs::is_regular_file(only) ? ReadUtf8File(only) : "";
        std::istringstream words(list.empty() ? only : list);
        const char separator = list.empty() ? ',' : '\n';
        for (std::string word; std::getline(words, word, separator);) {
            word.erase(word.find_last_not_of("\r ") + 1);
            (list.empty() ? states : names).insert(word);
        }
        static const std::set<std::string> kStates = {"failed",  "good",  "doubtful", "poor",
                                                      "unknown", "words", "flagged",  "clipped"};
        for (const std::string& state : states) {
            if (!kStates.contains(state)) {
                throw Failure(kExitUsage,
                              "--only " + state +
                                  ": is neither a file of names nor one of good, doubtful, poor, "
                                  "unknown, words, clipped, failed and flagged");
            }
        }
    }

    bool Has(const batch_line& line, BatchJournal& journal) const {
        if (names.contains(line.name)) {
            return true;
        }
        const auto record = states.empty() ? std::nullopt : journal.Find(line.name);
        return record && (states.contains(record->value("verdict", "")) ||
                          (states.contains("failed") && record->value("status", "") == "failed") ||
                          (states.contains("words") && record->contains("unknown")) ||
                          (states.contains("clipped") && record->value("clip_count", 0) > 2) ||
                          (states.contains("flagged") && IsFlagged(*record)));
    }

private:
    std::set<std::string> states;
    std::set<std::string> names;
};

/// A language whose lexicon names a locale switches the whole process to it while a text is read.
bool NeedsOneThread(const EngineLanguage& language) {
    tessarin::TranscriberInfo info{};
    language.GetTranscriber().getTranscriberInfo(&info);
    return info.locale[0] != '\0';
}

/// One run over the lines that are to be done.
class BatchRun {
public:
    BatchRun(const batch_options& given, const batch_shard& part);

    batch_outcome Run();

private:
    void ReadLines();
    std::vector<size_t> FindOpenLines();
    void LoadEngine(const std::vector<size_t>& open);
    void Work(const std::vector<size_t>& open);
    void WorkInThread(const std::vector<size_t>& open, BatchProgress& progress);
    void Stop(std::exception_ptr why);
    uint32_t CountJobs(size_t open) const;

    const batch_options& options;
    batch_shard shard;
    std::string common; ///< the fingerprint of what all lines share
    std::vector<batch_line> lines;
    std::unique_ptr<batch_engine> engine;
    bool needsOneThread = false;
    std::unique_ptr<BatchJournal> journal;
    std::atomic<size_t> next{0};
    std::mutex lock;
    std::condition_variable ended;
    uint32_t running = 0;
    std::exception_ptr trouble; ///< of the batch, not of a line
};

BatchRun::BatchRun(const batch_options& given, const batch_shard& part)
    : options(given), shard(part), common(DataFingerprint(given)) {
    const std::string& folder = options.outputFolder;
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (!fs::is_directory(folder)) {
        throw Failure(kExitFailed, folder + ": is not a folder and cannot be made one");
    }
    ReadLines();
    journal = std::make_unique<BatchJournal>(
        (fs::path(folder) / ("journal" + shard.Suffix() + ".jsonl")).string(),
        options.isResumed || !options.only.empty());
}

void BatchRun::ReadLines() {
    const std::string& input = options.input;
    const bool isFolder = fs::is_directory(input);
    std::error_code failure;
    if (isFolder && fs::equivalent(input, options.outputFolder, failure)) {
        throw Failure(kExitUsage, options.outputFolder +
                                      ": the outputs would be among the recordings; choose another "
                                      "folder with --out");
    }
    lines = isFolder ? ReadBatchFolder(input, options.outputFolder) : ReadBatchList(input);
    NameBatchLines(isFolder ? input : fs::path(input).parent_path().string(), &lines);
    std::erase_if(lines, [this](const batch_line& line) { return !shard.Has(line.name); });
    for (batch_line& line : lines) {
        const auto size = fs::file_size(line.audio, failure);
        line.bytes = failure ? 0 : size;
    }
}

/// In the order of their lengths, the longest first: then no thread has a long one left at the end.
std::vector<size_t> BatchRun::FindOpenLines() {
    const WantedLines wanted(options.only);
    std::vector<size_t> open;
    for (size_t i = 0; i < lines.size(); ++i) {
        if (!options.only.empty()) {
            if (wanted.Has(lines[i], *journal)) {
                open.push_back(i);
            }
            continue;
        }
        const auto record = journal->Find(lines[i].name);
        const bool isDone = record && record->value("status", "") == "done" &&
                            record->value("key", "") == KeyOf(common, lines[i]) &&
                            AreOutputsWhole(options.outputFolder, *record);
        if (!isDone) {
            open.push_back(i);
        }
    }
    std::ranges::stable_sort(open, std::ranges::greater(),
                             [this](size_t index) { return lines[index].bytes; });
    return open;
}

void BatchRun::LoadEngine(const std::vector<size_t>& open) {
    const data_options& data = options.line.recording.data;
    engine = std::make_unique<batch_engine>(
        batch_engine{options.line, options.sounds, options.outputFolder, options.pages,
                     OutputForms(options.line.recording.outputs), nullptr, nullptr});
    if (std::ranges::any_of(open, [this](size_t i) { return lines[i].HasText(); })) {
        engine->model = LoadModel(data);
        // This says what is wrong with the user's words before the long work.
        needsOneThread = NeedsOneThread(EngineLanguage(data));
    }
    if (std::ranges::any_of(open, [this](size_t i) { return !lines[i].HasText(); })) {
        engine->soundModel = LoadSoundModel(options.sounds, data);
    }
}

uint32_t BatchRun::CountJobs(size_t open) const {
    const uint32_t cores = std::max(std::thread::hardware_concurrency(), 1u);
    const uint32_t jobs = options.jobs > 0 ? options.jobs : cores;
    return needsOneThread ? 1 : static_cast<uint32_t>(std::min<size_t>(jobs, open));
}

void BatchRun::Stop(std::exception_ptr why) {
    const std::lock_guard guard(lock);
    next = lines.size(); // none is begun any more
    trouble = trouble ? trouble : why;
}

void BatchRun::WorkInThread(const std::vector<size_t>& open, BatchProgress& progress) {
    try {
        BatchWorker worker(*engine);
        for (size_t at = next++; at < open.size() && !WasInterrupted(); at = next++) {
            const batch_line& line = lines[open[at]];
            batch_record record = worker.Run(line);
            record["key"] = KeyOf(common, line);
            journal->Add(record);
            progress.Add(line.bytes, record.value("status", "") == "failed");
        }
    } catch (const Failure& failure) {
        if (failure.exitCode != kExitCancelled && !WasInterrupted()) {
            Stop(std::current_exception());
        }
    } catch (...) {
        Stop(std::current_exception());
    }
    const std::lock_guard guard(lock);
    --running;
    ended.notify_all();
}

void BatchRun::Work(const std::vector<size_t>& open) {
    uint64_t bytes = 0;
    for (const size_t index : open) {
        bytes += lines[index].bytes;
    }
    BatchProgress progress(open.size(), bytes, options.line.recording.quiet);
    running = CountJobs(open.size());
    std::vector<std::jthread> threads;
    for (uint32_t left = running; left > 0; --left) {
        threads.emplace_back([&] { WorkInThread(open, progress); });
    }
    for (std::unique_lock guard(lock); running > 0;) {
        ended.wait_for(guard, std::chrono::seconds(1), [this] { return running == 0; });
        guard.unlock();
        journal->Sync();
        progress.Show();
        guard.lock();
    }
    progress.Finish();
}

batch_outcome BatchRun::Run() {
    const std::vector<size_t> open = FindOpenLines();
    CatchInterrupts();
    CatchTermination();
    if (!open.empty()) {
        LoadEngine(open);
        Work(open);
    }
    if (trouble) {
        std::rethrow_exception(trouble);
    }
    journal->Sync();
    ReportWriter report(options.outputFolder, shard.Suffix());
    batch_outcome outcome;
    for (const batch_line& line : lines) {
        ++outcome.total;
        auto record = journal->Find(line.name);
        if (!record) {
            ++outcome.open;
            continue;
        }
        outcome.failed += record->value("status", "") == "failed" ? 1 : 0;
        (*record)["line"] = line.number; // the list may have changed around it
        report.Add(std::move(*record));
    }
    report.Finish();
    return outcome;
}

} // namespace

bool batch_shard::Has(const std::string& name) const {
    return std::stoull(ChecksumOf(name), nullptr, 16) % count == index - 1;
}

std::string batch_shard::Suffix() const {
    return count == 1 ? "" : "-" + std::to_string(index) + "-of-" + std::to_string(count);
}

batch_shard ReadShard(const std::string& text) {
    batch_shard shard;
    if (text.empty()) {
        return shard;
    }
    char rest = '\0';
    if (std::sscanf(text.c_str(), "%9u/%9u%c", &shard.index, &shard.count, &rest) != 2 ||
        shard.index < 1 || shard.index > shard.count) {
        throw Failure(kExitUsage,
                      "--shard " + text + ": give K/N, such as 2/8 for the second of eight");
    }
    return shard;
}

batch_outcome RunBatch(const batch_options& options) {
    return BatchRun(options, ReadShard(options.shard)).Run();
}
