#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "apps/train/corpus.h"
#include "apps/train/labelled_speech.h"
#include "apps/train/observations.h"
#include "apps/train/parallel.h"
#include "model/accoustic_hmm.h"
#include "model/phoneme_alphabet.h"

using namespace tessarin;
using namespace tessarin::training;

namespace {

constexpr const char* kUsage =
    "usage: tessarin-measure MODEL CORPUS [SPEAKER]\n"
    "\n"
    "Aligns recordings to the phones that are known to be said in them, and shows how far the\n"
    "boundaries are from where they are known to be: as recorded, in noise, by telephone and at\n"
    "other levels. Without SPEAKER, the recordings of the set `eval`, else those of the set "
    "`heard`.\n";

/// The likeliest division of the observations among the states of a chain of phones.
std::vector<size_t> Align(const CAccousticHMM& model, const observation_matrix& observations,
                          const std::vector<phone_interval>& phones) {
    const size_t length = observations.GetCount();
    const size_t chain = phones.size() * kStates;
    std::vector<double> best(chain, -1e300);
    std::vector<uint8_t> entered(length * chain);
    std::vector<double> scores(static_cast<size_t>(model.GetTotalStates()));
    for (size_t t = 0; t < length; ++t) {
        std::ranges::fill(scores, 0.0);
        for (size_t i = chain; i-- > 0;) {
            const size_t state = i % kStates;
            const size_t phone = phones[i / kStates].phone;
            const auto& row = model.models[phone].states[state].transitions;
            const auto global = static_cast<int32_t>(phone * kStates + state);
            double value = best[i] + std::log(static_cast<double>(row[state]));
            if (t == 0) {
                value = i == 0 ? 0.0 : -1e300;
            } else if (i > 0) {
                const size_t before = (i - 1) % kStates;
                const auto& rowBefore =
                    model.models[phones[(i - 1) / kStates].phone].states[before].transitions;
                const double entering =
                    best[i - 1] + std::log(1.0 - static_cast<double>(rowBefore[before]));
                if (entering > value) {
                    value = entering;
                    entered[t * chain + i] = 1;
                }
            }
            best[i] = value < -1e200 ? -1e300
                                     : value + model.GetCachedLogProbability(
                                                   0.0, scores.data(), observations[t], global);
        }
    }
    std::vector<size_t> starts(phones.size());
    size_t i = chain - 1;
    for (size_t t = length; t-- > 0;) {
        if (entered[t * chain + i] != 0) {
            if (i % kStates == 0) {
                starts[i / kStates] = t;
            }
            --i;
        }
    }
    return starts;
}

struct errors {
    std::vector<double> ms; ///< found minus known
    size_t closures = 0;
    size_t closuresFound = 0;
};

void Compare(const std::vector<phone_interval>& known, const std::vector<size_t>& starts,
             double durationMs, errors& out) {
    const auto startMs = [&](size_t i) {
        return i == 0 ? 0.0
               : i < starts.size()
                   ? static_cast<double>(starts[i]) * kObservationMs + kObservationMs / 2
                   : durationMs;
    };
    for (size_t i = 0; i < known.size(); ++i) {
        if (i > 0) {
            out.ms.push_back(startMs(i) - known[i].start_ms);
        }
        const std::string_view label = PhonemeAlphabet()[known[i].phone].label;
        if (label == "p" || label == "b" || label == "m") {
            const double covered =
                std::min(startMs(i + 1), known[i].end_ms) - std::max(startMs(i), known[i].start_ms);
            ++out.closures;
            out.closuresFound += covered >= 0.5 * (known[i].end_ms - known[i].start_ms) ? 1 : 0;
        }
    }
}

double ShareWithin(const std::vector<double>& ms, double limit) {
    const auto within =
        std::ranges::count_if(ms, [&](double error) { return std::abs(error) <= limit; });
    return 100.0 * static_cast<double>(within) / static_cast<double>(ms.size());
}

void Print(const char* condition, const errors& all) {
    std::vector<double> sizes;
    double sum = 0.0;
    double bias = 0.0;
    for (const double error : all.ms) {
        sizes.push_back(std::abs(error));
        sum += std::abs(error);
        bias += error;
    }
    const auto count = static_cast<double>(sizes.size());
    std::ranges::nth_element(sizes, sizes.begin() + static_cast<ptrdiff_t>(sizes.size() / 2));
    std::printf("%-18s %6zu %7.2f %7.2f %7.2f %8.2f %8.2f %8.2f %9.2f\n", condition, all.ms.size(),
                ShareWithin(all.ms, 10.0), ShareWithin(all.ms, 20.0), ShareWithin(all.ms, 50.0),
                sum / count, sizes[sizes.size() / 2], bias / count,
                100.0 * static_cast<double>(all.closuresFound) /
                    static_cast<double>(std::max<size_t>(all.closures, 1)));
}

using change = std::function<void(recording&, random_source&)>;

void Measure(const char* condition, const CAccousticHMM& model,
             const std::vector<utterance>& utterances, const change& apply) {
    std::vector<errors> perUtterance(utterances.size());
    ParallelFor(utterances.size(), 2, [&](size_t i) {
        recording speech;
        if (!ReadRecording(utterances[i].path, speech)) {
            return;
        }
        random_source random(utterances[i].name, 0);
        apply(speech, random);
        const observation_matrix observations = Analyse(speech, model.descriptor);
        if (observations.GetCount() < utterances[i].phones.size() * kStates) {
            return;
        }
        Compare(utterances[i].phones, Align(model, observations, utterances[i].phones),
                1000.0 * static_cast<double>(speech.samples.size()) / speech.rate, perUtterance[i]);
    });
    errors all;
    for (const errors& each : perUtterance) {
        all.ms.insert(all.ms.end(), each.ms.begin(), each.ms.end());
        all.closures += each.closures;
        all.closuresFound += each.closuresFound;
    }
    if (!all.ms.empty()) {
        Print(condition, all);
    }
}

change Noise(noise_kind kind, double snrDb) {
    return [=](recording& speech, random_source& random) {
        AddNoise(speech, kind, snrDb, 0.0, {}, random);
    };
}

change Level(double db) {
    return [=](recording& speech, random_source&) { ChangeLevel(speech, db); };
}

bool ReadModel(const char* path, CAccousticHMM& model) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<uint8_t> image{std::istreambuf_iterator<char>(file), {}};
    const uint8_t* cursor = image.data();
    auto remaining = static_cast<uint32_t>(image.size());
    return model.Read(&cursor, &remaining, nullptr);
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3 && count != 4) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    CAccousticHMM model;
    if (!ReadModel(arguments[1], model)) {
        std::fprintf(stderr, "tessarin-measure: %s is not a model\n", arguments[1]);
        return 2;
    }
    std::string error;
    std::vector<utterance> utterances = ReadCorpus(arguments[2], error);
    std::erase_if(utterances, [&](const utterance& each) {
        return each.phones.empty() || each.purpose != (count == 4 ? "heard" : "eval") ||
               (count == 4 && each.speaker != arguments[3]);
    });
    if (utterances.empty()) {
        std::fprintf(stderr, "tessarin-measure: %s\n",
                     error.empty() ? "no such recordings" : error.c_str());
        return 2;
    }
    std::printf("%-18s %6s %7s %7s %7s %8s %8s %8s %9s\n", "condition", "count", "10 ms", "20 ms",
                "50 ms", "mean", "median", "bias", "closures");
    Measure("as recorded", model, utterances, [](recording&, random_source&) {});
    Measure("noise 20 dB", model, utterances, Noise(noise_kind::kWhite, 20.0));
    Measure("noise 10 dB", model, utterances, Noise(noise_kind::kWhite, 10.0));
    Measure("pink 10 dB", model, utterances, Noise(noise_kind::kPink, 10.0));
    Measure("telephone", model, utterances,
            [](recording& speech, random_source&) { BandLimitToTelephone(speech); });
    Measure("level -20 dB", model, utterances, Level(-20.0));
    return 0;
}
