// The text front end with the lexicon that the project ships.

#include "base/whole_file.h"
#include "text/lexicon/cm_dict.h"
#include "text/lexicon/lexicon_file.h"
#include "text/script/script_reader.h"
#include "text/transcriber.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <fstream>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

using namespace tessarin;

namespace {

std::span<const uint8_t> LexiconFile() {
    static uint32_t size = 0;
    static const auto file = ReadWholeFile(TESSARIN_SOURCE_DIR "/data/en-us.lexicon", &size, false);
    return {file.get(), size};
}

struct shipped_language {
    counted_ptr<CTranscriber> transcriber;
    CCmDict* dict = nullptr; ///< the transcriber's
};

shipped_language ShippedLanguage() {
    shipped_language language;
    const auto size = static_cast<uint32_t>(LexiconFile().size());
    if (LoadTranscriberAndDict(LexiconFile().data(), size, language.transcriber, language.dict) !=
        kNoError) {
        throw std::runtime_error("no lexicon");
    }
    return language;
}

/// Words of the lexicon, in an order that is far from its own.
std::vector<std::string> ScatteredWords(const CCmDict& dict, size_t count) {
    constexpr size_t kStride = 1000003;
    const auto entries = dict.GetEntries();
    std::vector<std::string> words;
    for (size_t index = 0; index < count; ++index) {
        words.emplace_back(WordOf(entries[index * kStride % entries.size()]));
    }
    return words;
}

void LoadLexiconFile(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(ShippedLanguage());
    }
}
BENCHMARK(LoadLexiconFile)->Unit(benchmark::kMillisecond);

void LookUpWords(benchmark::State& state) {
    const shipped_language language = ShippedLanguage();
    const std::vector<std::string> words = ScatteredWords(*language.dict, 10000);
    CPronunciationRec record;
    int64_t found = 0;
    for (auto _ : state) {
        for (const std::string& word : words) {
            const auto length = static_cast<uint16_t>(word.size());
            found += language.dict->GetPronunciation(word.data(), length, 0, &record) ? 1 : 0;
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
    std::vector<std::string> words = ScatteredWords(*ShippedLanguage().dict, 1000);
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
    const shipped_language language = ShippedLanguage();
    CTranscriber& transcriber = *language.transcriber;
    std::string text;
    for (const std::string& word : ScatteredWords(*language.dict, 2000)) {
        text += word + (text.size() % 7 == 0 ? ", 1,984 " : " ");
    }
    for (auto _ : state) {
        transcriber.Transcribe(text.c_str());
    }
    uint32_t count = 0;
    transcriber.GetOutputMarkers(&count);
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(TranscribeText)->Unit(benchmark::kMicrosecond);

/// A megabyte of lines as people write them.
void ReadScriptText(benchmark::State& state) {
    constexpr size_t kSize = 1 << 20;
    std::ifstream lines(TESSARIN_SOURCE_DIR "/tests/text/script_lines.tsv");
    std::string once;
    for (std::string line; std::getline(lines, line);) {
        once += line.substr(0, line.find('\t')) + "\n";
    }
    std::string text;
    while (text.size() < kSize) {
        text += once;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(ReadScript(text, BuiltInEnglishScript(), {}, {}));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(ReadScriptText)->Unit(benchmark::kMillisecond);

} // namespace
