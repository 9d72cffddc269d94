#include "recognition/loose/calibration.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <span>
#include <string>

#include "model/accoustic_hmm.h"

namespace tessarin {
namespace {

constexpr std::string_view kFirstLine = "tessarin calibration 1";
/// Stands for that of a text none of whose phonemes has a length.
constexpr double kUnusualDuration = 2.0;
constexpr std::string_view kBlanks = " \t\r";

double Logistic(double value) {
    return 1.0 / (1.0 + std::exp(-value));
}

std::string_view NextLine(std::string_view& text) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line.substr(0, line.find('#'));
}

std::vector<std::string_view> Words(std::string_view line) {
    std::vector<std::string_view> words;
    for (size_t at = line.find_first_not_of(kBlanks); at != std::string_view::npos;) {
        const size_t end = std::min(line.find_first_of(kBlanks, at), line.size());
        words.push_back(line.substr(at, end - at));
        at = line.find_first_not_of(kBlanks, end);
    }
    return words;
}

template <class Number, class... Base>
bool Parse(std::string_view word, Number& out, Base... base) {
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), out, base...);
    return error == std::errc{} && end == word.data() + word.size();
}

/// False unless there are as many words as numbers, and all are finite.
bool ParseAll(std::span<const std::string_view> words, std::span<double> numbers) {
    if (words.size() != numbers.size()) {
        return false;
    }
    for (size_t i = 0; i < words.size(); ++i) {
        if (!Parse(words[i], numbers[i]) || !std::isfinite(numbers[i])) {
            return false;
        }
    }
    return true;
}

/// FNV-1a.
class fingerprint {
public:
    void Add(uint64_t value) {
        for (int shift = 0; shift < 64; shift += 8) {
            state = (state ^ ((value >> shift) & 0xFF)) * 0x100000001B3;
        }
    }
    void Add(const std::vector<float>& values) {
        for (const float value : values) {
            Add(std::bit_cast<uint32_t>(value));
        }
    }
    uint64_t Get() const { return state; }

private:
    uint64_t state = 0xCBF29CE484222325;
};

} // namespace

uint64_t ModelFingerprint(const CAccousticHMM& model) {
    fingerprint print;
    print.Add(static_cast<uint64_t>(model.numModels));
    print.Add(static_cast<uint64_t>(model.numStates));
    for (const CSingleAccHmm& phone : model.models) {
        for (const CAccousticHMMState& state : phone.states) {
            print.Add(state.transitions);
            for (const CGaussMixture& mixture : state.mixtures) {
                print.Add(std::bit_cast<uint64_t>(mixture.weight));
                print.Add(mixture.mean);
                print.Add(mixture.inverseCovariance);
            }
        }
    }
    return print.Get();
}

/// One reading of a calibration's text.
class calibration_reader {
public:
    explicit calibration_reader(const CAccousticHMM& acousticModel) : model(acousticModel) {
        made.durations.resize(static_cast<size_t>(model.numModels));
    }

    error_code Read(std::string_view text, std::optional<calibration>& out) {
        if (Words(NextLine(text)) != Words(kFirstLine)) {
            return kInvalidFile;
        }
        while (!text.empty()) {
            const std::vector<std::string_view> words = Words(NextLine(text));
            if (!words.empty() && !ReadLine(words)) {
                return kInvalidFile;
            }
        }
        if (!isModelNamed || !made.wordOffset || made.fileWeights.empty()) {
            return kInvalidFile;
        }
        if (!isOfModel) {
            return kInvalidArgument;
        }
        out = std::move(made);
        return kNoError;
    }

private:
    bool ReadLine(std::span<const std::string_view> words) {
        const std::string_view name = words.front();
        const auto values = words.subspan(1);
        double numbers[5];
        if (name == "model") {
            uint64_t given = 0;
            // One model for one calibration; and the fingerprint of a large one takes its time.
            const bool isFirst = !isModelNamed;
            isModelNamed = values.size() == 1 && Parse(values.front(), given, 16);
            isOfModel = isFirst && isModelNamed && given == ModelFingerprint(model);
            return isFirst && isModelNamed;
        }
        if (name == "word" && ParseAll(values, {numbers, 2}) && numbers[1] > 0.0) {
            made.wordOffset = numbers[0];
            made.wordSlope = numbers[1];
            return true;
        }
        if (name == "heard" && ParseAll(values, {numbers, 1}) && IsShare(numbers[0])) {
            made.heard = static_cast<float>(numbers[0]);
            return true;
        }
        if (name == "file" && ParseAll(values, {numbers, 5})) {
            made.fileWeights.assign(numbers, numbers + 5);
            return true;
        }
        if (name == "verdict" && ParseAll(values, {numbers, 2}) && IsShare(numbers[0]) &&
            numbers[1] >= numbers[0]) {
            made.poorBelow = numbers[0];
            made.goodFrom = numbers[1];
            return true;
        }
        return name == "duration" && ReadDuration(values);
    }

    static bool IsShare(double number) { return number >= 0.0 && number <= 1.0; }

    bool ReadDuration(std::span<const std::string_view> values) {
        double numbers[2];
        uint32_t phone = CAccousticHMM::kNoPhoneme;
        if (values.size() != 3 || !ParseAll(values.subspan(1), numbers) || !(numbers[1] > 0.0)) {
            return false;
        }
        const std::string label(values.front());
        if (model.FindLabel(label.c_str(), &phone) == static_cast<int32_t>(label.size())) {
            made.durations[phone] = {numbers[0], numbers[1]};
        }
        return true; // that of another model, or too early to know
    }

    const CAccousticHMM& model;
    calibration made;
    bool isModelNamed = false;
    bool isOfModel = false;
};

error_code calibration::Read(std::string_view text, const CAccousticHMM& model,
                             std::optional<calibration>& out) {
    out.reset();
    return calibration_reader(model).Read(text, out);
}

float calibration::WordConfidence(double margin) const {
    return static_cast<float>(Logistic(wordOffset.value_or(0.0) + wordSlope * margin));
}

double calibration::DurationDistance(size_t phone, double ms) const {
    const usual_duration& usual = durations[phone];
    return usual.deviation > 0.0 && ms > 0.0 ? std::abs(std::log(ms) - usual.mean) / usual.deviation
                                             : 0.0;
}

float calibration::FileScore(const match_summary& summary) const {
    if (summary.unsaid == summary.words) {
        return 0.0f; // silence has no other evidence against a text
    }
    const double said =
        summary.words > 0 ? 1.0 - static_cast<double>(summary.unsaid) / summary.words : 0.0;
    const double evidence[] = {
        1.0, static_cast<double>(summary.margin), said, static_cast<double>(summary.fit),
        summary.duration >= 0.0f ? static_cast<double>(summary.duration) : kUnusualDuration};
    double sum = 0.0;
    for (size_t i = 0; i < fileWeights.size(); ++i) {
        sum += fileWeights[i] * evidence[i];
    }
    return std::isnan(sum) ? 0.0f : static_cast<float>(Logistic(sum)); // of absurd weights
}

match_verdict calibration::Verdict(float score, bool departs) const {
    if (!(static_cast<double>(score) >= poorBelow)) {
        return kMatchPoor;
    }
    return departs || static_cast<double>(score) < goodFrom ? kMatchDoubtful : kMatchGood;
}

} // namespace tessarin
