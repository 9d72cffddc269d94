// The text front end with the lexicon that the project ships.

#include "text/default_transcriber.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using namespace tessarin;

namespace {

const std::string& LexiconText() {
    static const std::string text = [] {
        std::ifstream file(TESSARIN_SOURCE_DIR "/data/en-us.lexicon.txt", std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }();
    return text;
}

speak_dict_ptr ShippedLexicon() {
    return MakeSpeakDict(LexiconText().data(), static_cast<int32_t>(LexiconText().size()));
}

/// Words of the lexicon, in an order that is far from its own.
std::vector<std::string> ScatteredWords(size_t count) {
    constexpr size_t kStride = 1000003;
    const std::string& text = LexiconText();
    std::vector<std::string> words;
    for (size_t index = 0; index < count && !text.empty(); ++index) {
        const size_t start = text.find('\n', index * kStride % (text.size() / 2)) + 1;
        words.push_back(text.substr(start, text.find('=', start) - start));
    }
    return words;
}

void LoadLexiconText(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(ShippedLexicon());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(LexiconText().size()));
}
BENCHMARK(LoadLexiconText)->Unit(benchmark::kMillisecond);

void LookUpWords(benchmark::State& state) {
    const speak_dict_ptr dict = ShippedLexicon();
    const std::vector<std::string> words = ScatteredWords(10000);
    CPronunciationRec record;
    int64_t found = 0;
    for (auto _ : state) {
        for (const std::string& word : words) {
            const auto length = static_cast<uint16_t>(word.size());
            found += dict->GetPronunciation(word.data(), length, 0, &record) ? 1 : 0;
        }
    }
    benchmark::DoNotOptimize(found);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(words.size()));
}
BENCHMARK(LookUpWords)->Unit(benchmark::kMicrosecond);

/// One word after the other through the rules alone.
void PronounceByRules(benchmark::State& state) {
    CGraphemeToPhoneRules<char> english;
    english.LoadBuiltinEnglish();
    std::vector<std::string> words = ScatteredWords(1000);
    for (std::string& word : words) {
        word = " " + word + " ";
    }
    PronunciationBuilder builder;
    for (auto _ : state) {
        for (const std::string& word : words) {
            builder.Clear();
            english.ApplyRules(builder, word);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(words.size()));
}
BENCHMARK(PronounceByRules)->Unit(benchmark::kMicrosecond);

/// A text of many words, of which some are in the lexicon twice, and numbers.
void TranscribeText(benchmark::State& state) {
    const auto transcriber =
        MakeDefaultTranscriber(LexiconText().data(), static_cast<int32_t>(LexiconText().size()));
    std::string text;
    for (const std::string& word : ScatteredWords(2000)) {
        text += word + (text.size() % 7 == 0 ? ", 1,984 " : " ");
    }
    for (auto _ : state) {
        transcriber->Transcribe(text.c_str());
    }
    uint32_t count = 0;
    transcriber->GetOutputMarkers(&count);
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(TranscribeText)->Unit(benchmark::kMicrosecond);

} // namespace
