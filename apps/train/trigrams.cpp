#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "apps/train/sequence_counts.h"
#include "apps/train/sequence_statistics.h"
#include "base/counted_ptr.h"
#include "text/default_transcriber.h"

#include "model/phoneme_alphabet.h"

using namespace tessarin;
using namespace tessarin::training;

namespace {

constexpr const char* kUsage =
    "usage: tessarin-trigrams LEXICON TEXT... [options]\n"
    "\n"
    "Counts how phonemes follow each other in the sentences of the texts, one a line, and in the\n"
    "words of the lexicon, and writes the statistics that hearing without a text uses.\n"
    "\n"
    "  -o FILE             the statistics (trigrams.txt)\n"
    "  --lone-words N      how often a pronunciation of the lexicon counts besides the texts "
    "(0.05)\n"
    "  --word-pause N      probability of a pause after a word (0.03)\n"
    "  --comma-pause N     probability of a pause at a punctuation within a sentence (0.6)\n"
    "  --pair-trust N      occurrences that outweigh what single phonemes say (5)\n"
    "  --triple-trust N    occurrences that outweigh what pairs of phonemes say (20)\n"
    "  --exponent N        power of the probabilities (4)\n"
    "  --scale N           factor of the probabilities (1)\n";

struct options {
    std::string lexicon;
    std::vector<std::string> texts;
    std::string output = "trigrams.txt";
    double loneWords = 0.05;
    double wordPause = 0.03;
    double commaPause = 0.6;
    statistics_shape shape;
};

bool ReadNumber(const char* text, double& out) {
    char* end = nullptr;
    out = std::strtod(text, &end);
    return end != text && *end == '\0' && out >= 0.0 && out <= 1e6;
}

bool ReadOptions(int count, char** arguments, options& out) {
    for (int i = 1; i < count; ++i) {
        const std::string name = arguments[i];
        if (!name.starts_with('-')) {
            if (out.lexicon.empty()) {
                out.lexicon = name;
            } else {
                out.texts.push_back(name);
            }
            continue;
        }
        if (++i == count) {
            return false;
        }
        const char* value = arguments[i];
        if (name == "-o") {
            out.output = value;
        } else if (!(name == "--lone-words" && ReadNumber(value, out.loneWords)) &&
                   !(name == "--word-pause" && ReadNumber(value, out.wordPause)) &&
                   !(name == "--comma-pause" && ReadNumber(value, out.commaPause)) &&
                   !(name == "--pair-trust" && ReadNumber(value, out.shape.pairTrust)) &&
                   !(name == "--triple-trust" && ReadNumber(value, out.shape.tripleTrust)) &&
                   !(name == "--exponent" && ReadNumber(value, out.shape.exponent)) &&
                   !(name == "--scale" && ReadNumber(value, out.shape.scale))) {
            return false;
        }
    }
    return !out.texts.empty();
}

std::optional<std::string> ReadContent(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string content{std::istreambuf_iterator<char>(file), {}};
    if (!file || content.size() > 0x7fffffff) {
        return std::nullopt;
    }
    return content;
}

/// A token ends with the pause that belongs to it; the last one of a sentence with a sure one.
void CountSentence(const std::string& sentence, const options& settings, CTranscriber& transcriber,
                   CSpeechCounter& counter) {
    transcriber.Transcribe(sentence.c_str());
    uint32_t count = 0;
    const CTxMarker* tokens = transcriber.GetOutputMarkers(&count);
    for (uint32_t t = 0; t < count; ++t) {
        if (tokens[t].kind == kPunctuationToken) {
            counter.EndWord(settings.commaPause);
            continue;
        }
        if (tokens[t].kind != kWordToken || tokens[t].group_count == 0) {
            continue;
        }
        for (int32_t g = 0; g < tokens[t].group_count; ++g) {
            const PhonemeGroup& group = tokens[t].groups[g];
            std::vector<phone_string> alternatives;
            for (int32_t a = 0; a < group.alternative_count; ++a) {
                alternatives.push_back(ReadPhones(group.alternatives[a]));
            }
            if (!alternatives.empty()) {
                counter.Say(alternatives);
            }
        }
        counter.EndWord(settings.wordPause);
    }
    counter.EndWord(1.0);
}

void CountLexicon(const std::string& lexicon, double times, CSpeechCounter& counter) {
    std::istringstream lines(lexicon);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t sign = line.find('=');
        if (sign != std::string::npos) {
            counter.AddLoneWord(ReadPhones(line.substr(sign + 1)), times);
        }
    }
}

} // namespace

int main(int count, char** arguments) {
    options settings;
    if (!ReadOptions(count, arguments, settings)) {
        std::fputs(kUsage, stderr);
        return 1;
    }
    const std::optional<std::string> lexicon = ReadContent(settings.lexicon);
    if (!lexicon) {
        std::fprintf(stderr, "%s cannot be read\n", settings.lexicon.c_str());
        return 2;
    }
    const counted_ptr<CTranscriber> transcriber =
        MakeDefaultTranscriber(lexicon->data(), static_cast<int32_t>(lexicon->size()));
    sequence_counts counts(PhonemeAlphabet().size());
    CSpeechCounter counter(counts);
    for (const std::string& path : settings.texts) {
        const std::optional<std::string> text = ReadContent(path);
        if (!text) {
            std::fprintf(stderr, "%s cannot be read\n", path.c_str());
            return 2;
        }
        std::istringstream lines(*text);
        std::string sentence;
        while (std::getline(lines, sentence)) {
            CountSentence(sentence, settings, *transcriber, counter);
        }
    }
    CountLexicon(*lexicon, settings.loneWords, counter);
    std::ofstream output(settings.output, std::ios::binary);
    output << WriteStatistics(counts, settings.shape);
    output.close();
    if (!output) {
        std::fprintf(stderr, "%s cannot be written\n", settings.output.c_str());
        return 2;
    }
    return 0;
}
