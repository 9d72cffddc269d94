#include "text/lexicon/cm_dict.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

using namespace tessarin;

namespace {

constexpr int kMostLookups = 50;
constexpr int32_t kMostVariants = 50;

/// Every variant that is found is one of the word that was asked for.
void LookUp(ISpeakDict& dict, std::string_view word, std::vector<char>& out) {
    CPronunciationRec record;
    const auto length = static_cast<uint16_t>(word.size());
    for (int32_t variant = 0; variant < kMostVariants; ++variant) {
        if (!dict.GetPronunciation(word.data(), length, variant, &record)) {
            break;
        }
        if (!IsSameWord(WordOf(record), word.substr(0, length))) {
            std::abort();
        }
    }
    dict.LookupFirst(word.data(), static_cast<int32_t>(word.size()), out.data());
}

} // namespace

// A lexicon text from outside, and the words that it seems to hold.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    const speak_dict_ptr dict = MakeSpeakDict(rest.data(), static_cast<int32_t>(size));
    std::vector<char> out(size + 1);
    for (int lookup = 0; lookup < kMostLookups && !rest.empty(); ++lookup) {
        LookUp(*dict, rest.substr(0, rest.find('=')), out);
        rest.remove_prefix(std::min(rest.find('\n'), rest.size() - 1) + 1);
    }
    return 0;
}
