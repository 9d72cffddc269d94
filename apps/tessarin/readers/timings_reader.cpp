#include "apps/tessarin/readers/timings_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <sstream>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/tessarin/console/failure.h"
#include "apps/tessarin/console/file_io.h"
#include "apps/tessarin/readers/phoneme_names.h"
#include "apps/tessarin/readers/textgrid_reader.h"

namespace {

using nlohmann::json;

/// A sound of which only the time is known opens the mouth as the transcriber's own do.
constexpr float kVowelScore = 75.0f;
constexpr float kOtherScore = 30.0f;

/// Four days; frames beyond it would take more memory than a host has.
constexpr double kLongestMs = 4.0 * 24 * 3600 * 1000;

constexpr int kLoudnessStepMs = 10;

class TimingsReader {
public:
    TimingsReader(const std::string& file, bool sampa) : path(file), isSampa(sampa) {}

    timed_result Read();

private:
    void ReadJson(const std::string& text);
    void ReadTsv(const std::string& text);
    void ReadGrid(const std::string& text);
    void ReadList(const std::string& text);

    [[noreturn]] void Fail(const std::string& what, size_t line = 0) const;
    void AddPhoneme(const std::string& name, double startMs, double endMs,
                    std::optional<float> score, size_t line);
    void AddWord(const timed_span& word);
    void AddLoudness(const json& loudness);
    int32_t Time(double ms, size_t line) const;

    std::string path;
    bool isSampa;
    timed_result result;
};

std::vector<std::string> SplitCells(const std::string& line) {
    std::vector<std::string> cells;
    std::istringstream stream(line);
    for (std::string cell; std::getline(stream, cell, '\t');) {
        cells.push_back(cell);
    }
    return cells;
}

/// The number that `text` is as a whole.
std::optional<double> ReadNumber(const std::string& text) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    const bool isWhole = end != text.c_str() && *end == '\0' && std::isfinite(number);
    return isWhole ? std::optional(number) : std::nullopt;
}

void DropCarriageReturn(std::string* line) {
    if (line->ends_with('\r')) {
        line->pop_back();
    }
}

timed_result TimingsReader::Read() {
    const std::string text = ReadUtf8File(path);
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) {
        Fail("there are no timings in it");
    }
    if (text[first] == '{') {
        ReadJson(text);
    } else if (text.find("ooTextFile") < 64) {
        ReadGrid(text);
    } else if (text.compare(first, 8, "start_ms") == 0) {
        ReadTsv(text);
    } else {
        ReadList(text);
    }
    if (result.phonemes.empty()) {
        Fail("there are no phonemes in it");
    }
    const auto byStart = [](const auto& a, const auto& b) { return a.startMs < b.startMs; };
    std::ranges::stable_sort(result.phonemes, byStart);
    std::ranges::stable_sort(result.words, byStart);
    if (result.durationMs == 0) {
        for (const timed_phoneme& phoneme : result.phonemes) {
            result.durationMs = std::max<int64_t>(result.durationMs, phoneme.endMs);
        }
    }
    return std::move(result);
}

void TimingsReader::Fail(const std::string& what, size_t line) const {
    throw Failure(kExitFailed,
                  path + ": " + (line > 0 ? "line " + std::to_string(line) + ": " : "") + what);
}

int32_t TimingsReader::Time(double ms, size_t line) const {
    if (!(ms >= 0.0 && ms <= kLongestMs)) {
        Fail("a time is negative or later than four days", line);
    }
    return static_cast<int32_t>(std::lround(ms));
}

void TimingsReader::AddPhoneme(const std::string& name, double startMs, double endMs,
                               std::optional<float> score, size_t line) {
    const std::string label = isSampa ? LabelFromSampa(name) : LabelFromName(name);
    if (label.empty()) {
        Fail("not a known phoneme: " + name, line);
    }
    const bool isVowel =
        label.size() == 2 && std::string("AEIOU").find(label[0]) != std::string::npos;
    const timed_phoneme phoneme{label, Time(startMs, line), Time(endMs, line),
                                score.value_or(isVowel ? kVowelScore : kOtherScore)};
    if (phoneme.endMs < phoneme.startMs) {
        Fail("a phoneme ends before it starts", line);
    }
    if (phoneme.endMs > phoneme.startMs) {
        result.phonemes.push_back(phoneme);
    }
}

void TimingsReader::AddWord(const timed_span& word) {
    if (!word.text.empty()) { // else it is a pause
        result.words.push_back(word);
    }
}

void TimingsReader::AddLoudness(const json& loudness) {
    const bool isList = loudness.is_object() && loudness.contains("db") &&
                        loudness["db"].is_array() &&
                        std::ranges::all_of(loudness["db"], &json::is_number);
    if (!isList || loudness.value("step_ms", json()) != kLoudnessStepMs) {
        Fail("\"loudness\" is not {\"step_ms\": 10, \"db\": [a number for each step]}; correct "
             "it, or take it out");
    }
    for (const json& db : loudness["db"]) {
        result.loudness.push_back(db);
    }
}

void TimingsReader::ReadJson(const std::string& text) {
    try {
        const json document = json::parse(text);
        const int version = document.value("version", 1);
        if (version != 1) {
            Fail("version " + std::to_string(version) + " of the JSON is not known");
        }
        result.audio = document.value("audio", "");
        result.durationMs = Time(document.value("duration_ms", 0.0), 0);
        for (const json& phoneme : document.at("phonemes")) {
            const auto score = phoneme.find("score");
            AddPhoneme(phoneme.at("label"), phoneme.at("start_ms"), phoneme.at("end_ms"),
                       score != phoneme.end() ? std::optional<float>(*score) : std::nullopt, 0);
        }
        if (const auto loudness = document.find("loudness"); loudness != document.end()) {
            AddLoudness(*loudness);
        }
        for (const json& word : document.value("words", json::array())) {
            if (!word.value("said", true)) {
                continue; // it has no times
            }
            AddWord({tessarin::kWordMarker, word.at("text"), Time(word.at("start_ms"), 0),
                     Time(word.at("end_ms"), 0), word.value("text_offset", 0),
                     word.value("text_length", 0)});
        }
    } catch (const json::exception& wrong) {
        Fail(wrong.what());
    }
}

void TimingsReader::ReadTsv(const std::string& text) {
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    for (size_t number = 2; std::getline(lines, line); ++number) {
        DropCarriageReturn(&line);
        if (line.empty()) {
            continue;
        }
        const std::vector<std::string> cells = SplitCells(line);
        if (cells.size() > 2 && cells[2] == "unsaid") {
            continue; // it has no times
        }
        const auto startMs = ReadNumber(cells[0]);
        const auto endMs = cells.size() > 1 ? ReadNumber(cells[1]) : std::nullopt;
        if (cells.size() < 4 || !startMs || !endMs) {
            Fail("start_ms, end_ms, type and text are expected", number);
        }
        if (cells[2] == "phoneme") {
            const auto score = cells.size() > 4 ? ReadNumber(cells[4]) : std::nullopt;
            AddPhoneme(cells[3], *startMs, *endMs,
                       score ? std::optional(static_cast<float>(*score)) : std::nullopt, number);
        } else if (cells[2] == "word") {
            AddWord({tessarin::kWordMarker, cells[3], Time(*startMs, number), Time(*endMs, number),
                     0, 0});
        }
    }
}

void TimingsReader::ReadGrid(const std::string& text) {
    std::vector<grid_tier> tiers;
    try {
        tiers = ReadTextGrid(text);
    } catch (const std::invalid_argument& wrong) {
        Fail(wrong.what());
    }
    const auto find = [&](std::initializer_list<const char*> names) {
        return std::ranges::find_if(tiers, [&](const grid_tier& tier) {
            return std::ranges::find(names, tier.name) != names.end();
        });
    };
    auto phones = find({"phones", "phonemes", "phone", "phoneme", "segments"});
    phones = phones == tiers.end() && tiers.size() == 1 ? tiers.begin() : phones;
    if (phones == tiers.end()) {
        Fail("it has no tier called phones");
    }
    for (const grid_interval& each : phones->intervals) {
        AddPhoneme(each.text, each.startMs, each.endMs, std::nullopt, 0);
    }
    if (const auto words = find({"words", "word"}); words != tiers.end()) {
        for (const grid_interval& each : words->intervals) {
            AddWord({tessarin::kWordMarker, each.text, Time(each.startMs, 0), Time(each.endMs, 0),
                     0, 0});
        }
    }
}

void TimingsReader::ReadList(const std::string& text) {
    std::istringstream lines(text);
    double reachedMs = 0.0;
    std::string line;
    for (size_t number = 1; std::getline(lines, line); ++number) {
        std::istringstream words(line);
        std::string name;
        std::string duration;
        if (!(words >> name) || name.front() == ';' || (name.front() == '#' && name.size() > 1)) {
            continue;
        }
        words >> duration;
        const auto ms = ReadNumber(duration);
        if (!ms || *ms < 0.0) {
            Fail("a phoneme and its duration in milliseconds are expected", number);
        }
        AddPhoneme(name, reachedMs, reachedMs + *ms, std::nullopt, number);
        reachedMs += *ms;
    }
}

} // namespace

timed_result ReadTimings(const std::string& path, bool isSampa) {
    return TimingsReader(path, isSampa).Read();
}
