// One alignment of many hours through the plain search or the one with back-pointers on disk:
//
//     long_search MODEL LEXICON CORPUS HOURS plain|trellis [MEGABYTES]
//
// CORPUS is a folder with recordings and a table corpus.tsv (file, voice, set, times, text); they
// are put one after the other until so many hours are reached. MEGABYTES is what the trellis may
// hold in memory. Prints the result, the time, the peak of the memory, the size on disk, and how
// often the path is in the right sentence in the middle of it.

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/quib_allocator.h"
#include "recognition/graph/log_state_graph.h"
#include "recognition/textbased_phn_recognizer.h"
#include "tessarin/tessarin.h"

using namespace tessarin;

namespace {

struct utterance {
    std::string path;
    std::string text;
    uint32_t frames;
    uint32_t textStart;
    uint32_t textEnd;
};

std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Recordings one after the other.
class JoinedRecordings final : public IObservationStream {
public:
    JoinedRecordings(const std::vector<utterance>& all, CAccousticHMM* acousticModel)
        : utterances(all), model(acousticModel) {
        Open();
        for (const utterance& each : utterances) {
            total += each.frames;
        }
    }
    ~JoinedRecordings() override { DestroyObservationStream(stream); }

    uint32_t GetNumObservations() override { return total; }
    error_code GetObservation(float* features, float* energy) override {
        while (left == 0) {
            ++current;
            Open();
        }
        --left;
        return stream->GetObservation(features, energy);
    }
    void GetFrameGeometry(uint32_t* windowSize, uint32_t* overlap) override {
        stream->GetFrameGeometry(windowSize, overlap);
    }
    float GetSampleRate() override { return stream->GetSampleRate(); }
    void GetEnergyRange(float* low, float* high) override { stream->GetEnergyRange(low, high); }
    void SetProcessingFlags(uint32_t) override {}
    error_code GetBandEnergies(float*, uint32_t* count) override {
        *count = 0;
        return kNotAvailable;
    }
    error_code SetNoiseFloor(uint32_t, const float*, int32_t) override { return kNotAvailable; }

private:
    void Open() {
        DestroyObservationStream(stream);
        stream = nullptr;
        const std::string& path = utterances[current].path;
        if (CreateObservationStreamFromAudioFile(path.c_str(), model, &stream) != kNoError) {
            std::fprintf(stderr, "%s cannot be read\n", path.c_str());
            std::exit(2);
        }
        left = utterances[current].frames;
    }

    const std::vector<utterance>& utterances;
    CAccousticHMM* model;
    IObservationStream* stream = nullptr;
    size_t current = 0;
    uint32_t left = 0;
    uint32_t total = 0;
};

/// Follows the largest size of files of this process that have no name any more.
class DiskWatch {
public:
    DiskWatch() : worker([this] { Run(); }) {}
    ~DiskWatch() { Stop(); }
    uintmax_t Stop() {
        ended = true;
        if (worker.joinable()) {
            worker.join();
        }
        return most;
    }

private:
    void Run() {
        while (!ended) {
            std::error_code ignored;
            for (const auto& each : std::filesystem::directory_iterator("/proc/self/fd", ignored)) {
                struct stat info {};
                if (stat(each.path().c_str(), &info) == 0 && info.st_nlink == 0) {
                    most = std::max(most, static_cast<uintmax_t>(info.st_size));
                }
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
    }

    std::atomic<bool> ended = false;
    uintmax_t most = 0;
    std::thread worker;
};

std::vector<utterance> ReadCorpus(const std::string& folder, double hours, CAccousticHMM* model,
                                  std::string* text) {
    std::vector<utterance> all;
    std::ifstream table(folder + "/corpus.tsv");
    for (std::string line; std::getline(table, line);) {
        all.push_back({folder + "/" + line.substr(0, line.find('\t')),
                       line.substr(line.rfind('\t') + 1), 0, 0, 0});
    }
    std::vector<utterance> chosen;
    double seconds = 0.0;
    for (size_t i = 0; !all.empty() && seconds < hours * 3600; ++i) {
        utterance each = all[i * 7 % all.size()]; // the voices are mixed
        IObservationStream* stream = nullptr;
        if (CreateObservationStreamFromAudioFile(each.path.c_str(), model, &stream) != kNoError) {
            continue;
        }
        each.frames = stream->GetNumObservations();
        seconds += each.frames / 100.0;
        DestroyObservationStream(stream);
        each.textStart = static_cast<uint32_t>(text->size());
        *text += each.text;
        each.textEnd = static_cast<uint32_t>(text->size());
        *text += '\n';
        chosen.push_back(each);
    }
    return chosen;
}

/// How many utterances have the path in their own words at their middle.
size_t CountRight(const std::vector<utterance>& utterances, const TArray<uint32_t>& path,
                  const CTxMarker* first, const CTxMarker* last) {
    size_t right = 0;
    int64_t begin = 0;
    const CTxMarker* token = first;
    for (const utterance& each : utterances) {
        uint32_t from = UINT32_MAX;
        uint32_t to = 0;
        for (; token != last && token->text_start < each.textEnd; ++token) {
            from = std::min(from, token->first_state);
            to = std::max(to, token->last_state);
        }
        const int64_t middle = begin + each.frames / 2;
        if (middle < path.GetSize()) {
            const uint32_t position = path[static_cast<int32_t>(middle)] / 3;
            right += position >= from && position <= to ? 1 : 0;
        }
        begin += each.frames;
    }
    return right;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 6) {
        std::fputs("usage: long_search MODEL LEXICON CORPUS HOURS plain|trellis [MEGABYTES]\n",
                   stderr);
        return 1;
    }
    const bool isPlain = std::string(argv[5]) == "plain";
    const uint32_t megabytes = argc > 6 ? static_cast<uint32_t>(std::atoi(argv[6])) : 500;
    const std::string image = Content(argv[1]);
    CAccousticHMM* model = nullptr;
    IVisemixTranscriber* transcriber = nullptr;
    if (CreateAccHMM(image.data(), static_cast<uint32_t>(image.size()), nullptr, &model) != 0 ||
        CreateTranscriberFromLexiconFile(argv[2], &transcriber) != 0) {
        std::fputs("no model or no lexicon\n", stderr);
        return 2;
    }
    std::string text;
    const std::vector<utterance> utterances = ReadCorpus(argv[3], std::atof(argv[4]), model, &text);
    if (utterances.empty()) {
        std::fputs("no recordings\n", stderr);
        return 2;
    }
    transcriber->Transcribe(text.c_str());
    uint32_t count = 0;
    CTxMarker* const first = transcriber->GetOutputMarkers(&count);

    CTextbasedPhnRecognizer recognizer;
    static_cast<void>(recognizer.SetSearchOptions(0, 0, megabytes * 1000000, 0.0, nullptr));
    quib_allocator pool(32768);
    std::vector<uint32_t> starts;
    std::vector<uint32_t> ends;
    uint32_t states = 0;
    state_rec** const graph =
        recognizer.BuildStateGraph(*model, pool, first, first + count, starts, ends, &states);
    JoinedRecordings stream(utterances, model);
    std::printf("%zu recordings, %.2f hours, %u states\n", utterances.size(),
                stream.GetNumObservations() / 360000.0, states);
    std::fflush(stdout);

    DiskWatch disk;
    TArray<uint32_t> path;
    TArray<float> energies;
    if (energies.SetSize(static_cast<int32_t>(stream.GetNumObservations()), 0) == 0) {
        return 2;
    }
    double score = 0.0;
    const auto begin = std::chrono::steady_clock::now();
    error_code code = kNoError;
    if (isPlain) {
        code = recognizer.Viterbi(*model, graph, states / 3, starts, ends, stream, nullptr, &path,
                                  energies, &score);
    } else {
        const log_state_graph logGraph = log_state_graph::FromProbabilities(graph, states);
        code = recognizer.ViterbiTrellis(*model, logGraph, starts, ends, stream, nullptr, &path,
                                         energies, &score);
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%s: code %d, %d of %u observations, %zu of %zu recordings right\n", argv[5], code,
                path.GetSize(), stream.GetNumObservations(),
                CountRight(utterances, path, first, first + count), utterances.size());
    std::printf("%.1f s (%.0f times real time), memory at most %ld MB, on disk %ju MB\n",
                taken.count(), stream.GetNumObservations() / 100.0 / taken.count(),
                usage.ru_maxrss / 1024, disk.Stop() / 1000000);
    DestroyTranscriber(transcriber);
    DestroyAccHMM(model);
    return code == kNoError || code == kRecognitionFailed ? 0 : 2;
}
