#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include "apps/train/boundary_training.h"
#include "apps/train/mixture_training.h"
#include "apps/train/model_assembly.h"
#include "apps/train/phone_training.h"
#include "apps/train/state_division.h"
#include "apps/train/text_alignment.h"
#include "apps/train/training_speech.h"
#include "model/accoustic_hmm.h"
#include "model/phoneme_alphabet.h"

using namespace tessarin;
using namespace tessarin::training;

namespace {

constexpr const char* kUsage =
    "usage: tessarin-train CORPUS [options]\n"
    "\n"
    "Trains an acoustic model on the speech in the directory CORPUS, which has the list "
    "corpus.tsv.\n"
    "\n"
    "  -o FILE             the model (model.mmhz)\n"
    "  --lexicon FILE      pronunciations, for the recordings of which only the text is known;\n"
    "                      without it they are left out\n"
    "  --gaussians N       of a state, the broad one not counted (23)\n"
    "  --copies N          changed copies of each recording whose phone times are known (2)\n"
    "  --text-copies N     of each of which only the text is known (18)\n"
    "  --noisy N           of a hundred changed copies in loud noise (45)\n"
    "  --noiseless N       of a hundred changed copies in no noise (0)\n"
    "  --boundary-rounds N rounds of boundary training (4)\n"
    "  --phone-rounds N    rounds of training for hearing without a text (0)\n"
    "  --without SPEAKER   leaves a speaker out; may be repeated\n"
    "  --every N           only every Nth recording, for experiments (1)\n"
    "  --threads N         2 at first; does not change the result\n";

struct options {
    std::string corpus;
    std::string output = "model.mmhz";
    std::string lexicon;
    size_t gaussians = 23;
    size_t copies = 2;
    size_t textCopies = 18;
    size_t noisy = 45;
    size_t noiseless = 0;
    size_t boundaryRounds = 4;
    size_t phoneRounds = 0;
    size_t every = 1;
    size_t threads = 2;
    std::set<std::string> without;
};

bool ReadNumber(const char* text, size_t low, size_t high, size_t& out) {
    char* end = nullptr;
    const unsigned long value = std::strtoul(text, &end, 10);
    out = value;
    return *text >= '0' && *text <= '9' && *end == '\0' && value >= low && value <= high;
}

bool ReadOptions(int count, char** arguments, options& out) {
    for (int i = 1; i < count; ++i) {
        const std::string name = arguments[i];
        if (!name.starts_with('-')) {
            if (!out.corpus.empty()) {
                return false;
            }
            out.corpus = name;
            continue;
        }
        if (++i == count) {
            return false;
        }
        const char* value = arguments[i];
        if (name == "-o") {
            out.output = value;
        } else if (name == "--lexicon") {
            out.lexicon = value;
        } else if (name == "--without") {
            out.without.insert(value);
        } else if (!(name == "--gaussians" && ReadNumber(value, 1, 255, out.gaussians)) &&
                   !(name == "--copies" && ReadNumber(value, 0, 20, out.copies)) &&
                   !(name == "--text-copies" && ReadNumber(value, 0, 100, out.textCopies)) &&
                   !(name == "--noisy" && ReadNumber(value, 0, 100, out.noisy)) &&
                   !(name == "--noiseless" && ReadNumber(value, 0, 100, out.noiseless)) &&
                   !(name == "--boundary-rounds" &&
                     ReadNumber(value, 0, 100, out.boundaryRounds)) &&
                   !(name == "--phone-rounds" && ReadNumber(value, 0, 100, out.phoneRounds)) &&
                   !(name == "--every" && ReadNumber(value, 1, 1000000, out.every)) &&
                   !(name == "--threads" && ReadNumber(value, 1, 256, out.threads))) {
            return false;
        }
    }
    return !out.corpus.empty();
}

struct training_list {
    std::vector<utterance> timed;
    std::vector<utterance> textOnly;
};

training_list ChooseUtterances(std::vector<utterance> corpus, const options& chosen) {
    std::erase_if(corpus, [&](const utterance& each) {
        return each.purpose != "train" || chosen.without.contains(each.speaker);
    });
    training_list list;
    for (size_t i = 0; i < corpus.size(); i += chosen.every) {
        (corpus[i].phones.empty() ? list.textOnly : list.timed).push_back(std::move(corpus[i]));
    }
    return list;
}

bool ReadFile(const std::string& path, std::string& text) {
    std::ifstream file(path, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(file), {});
    return !text.empty();
}

/// The steps of a training, and what they hand on.
class training {
public:
    explicit training(const options& ofUser) : chosen(ofUser) { DescribeFeatures(descriptor); }

    bool AddSpeech(const std::vector<utterance>& utterances, size_t copies);
    void TrainFromEvenDivision();
    void AddTextOnly(std::vector<utterance> utterances, const std::string& lexicon);
    void TrainFromLikelihood();
    bool Write();

private:
    std::vector<state_mixture> Mixtures(size_t gaussians) const {
        return TrainMixtures(speech, statistics, numPhones * kStates, gaussians, chosen.threads);
    }

    const options& chosen;
    CSpectralFeatureDescriptor descriptor;
    size_t numPhones = PhonemeAlphabet().size();
    std::vector<labelled_speech> speech;
    observation_statistics statistics;
    std::vector<state_mixture> mixtures;
    transition_model transitions;
};

bool training::AddSpeech(const std::vector<utterance>& utterances, size_t copies) {
    std::vector<std::string> omitted;
    const noise_shares shares = {static_cast<double>(chosen.noisy) / 100.0,
                                 static_cast<double>(chosen.noiseless) / 100.0};
    std::vector<labelled_speech> added =
        PrepareSpeech(utterances, descriptor, {copies, shares}, chosen.threads, omitted);
    for (const std::string& name : omitted) {
        std::fprintf(stderr, "left out: %s\n", name.c_str());
    }
    size_t observations = 0;
    for (const labelled_speech& each : added) {
        observations += each.state.size();
    }
    std::fprintf(stderr, "%zu recordings, %.1f hours with their copies\n",
                 utterances.size() - omitted.size(), static_cast<double>(observations) / 360000.0);
    std::ranges::move(added, std::back_inserter(speech));
    return !speech.empty();
}

void training::TrainFromEvenDivision() {
    std::fprintf(stderr, "mixtures on phones divided evenly\n");
    constexpr size_t kFewGaussians = 8;
    statistics = MeasureObservations(speech);
    mixtures = Mixtures(std::min(chosen.gaussians, kFewGaussians));
    transitions = CountTransitions(speech, numPhones);
}

void training::AddTextOnly(std::vector<utterance> utterances, const std::string& lexicon) {
    std::fprintf(stderr, "alignment of recordings with texts alone\n");
    AlignToText(*AssembleModel(mixtures, transitions), lexicon, chosen.threads, utterances);
    AddSpeech(utterances, chosen.textCopies);
}

void training::TrainFromLikelihood() {
    std::fprintf(stderr, "mixtures on phones divided by likelihood\n");
    DivideByLikelihood(speech, mixtures, transitions, chosen.threads);
    transitions = CountTransitions(speech, numPhones);
    statistics = MeasureObservations(speech);
    mixtures = Mixtures(chosen.gaussians);
    std::fprintf(stderr, "boundaries\n");
    std::vector<double> floors = statistics.variance;
    std::ranges::transform(floors, floors.begin(), [](double variance) { return 0.01 * variance; });
    for (const double share : TrainBoundaries(speech, transitions, floors, chosen.boundaryRounds,
                                              chosen.threads, mixtures)) {
        std::fprintf(stderr, "  %.3f\n", share);
    }
    if (chosen.phoneRounds > 0) {
        std::fprintf(stderr, "phones\n");
        for (const double share : TrainPhones(speech, transitions, floors, chosen.phoneRounds,
                                              chosen.threads, mixtures)) {
            std::fprintf(stderr, "  %.4f\n", share);
        }
    }
}

bool training::Write() {
    return AssembleModel(mixtures, transitions)->Write(chosen.output.c_str());
}

int Train(const options& chosen) {
    std::string error;
    std::string lexicon;
    const training_list list = ChooseUtterances(ReadCorpus(chosen.corpus, error), chosen);
    if (error.empty() && !chosen.lexicon.empty() && !ReadFile(chosen.lexicon, lexicon)) {
        error = chosen.lexicon + ": cannot be read";
    }
    training run(chosen);
    if (error.empty() && !run.AddSpeech(list.timed, chosen.copies)) {
        error = "no recording with phone times can be used";
    }
    if (error.empty()) {
        run.TrainFromEvenDivision();
        if (!lexicon.empty()) {
            run.AddTextOnly(list.textOnly, lexicon);
        }
        run.TrainFromLikelihood();
        if (!run.Write()) {
            error = chosen.output + ": cannot be written";
        }
    }
    if (!error.empty()) {
        std::fprintf(stderr, "tessarin-train: %s\n", error.c_str());
    }
    return error.empty() ? 0 : 2;
}

} // namespace

int main(int count, char** arguments) {
    options chosen;
    if (!ReadOptions(count, arguments, chosen)) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    return Train(chosen);
}
