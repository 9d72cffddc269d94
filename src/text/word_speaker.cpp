#include "text/word_speaker.h"

#include "base/flog.h"
#include "base/text_copy.h"
#include "tessarin/speak_dict.h"
#include "text/character_classes.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"
#include "text/pronunciation/pronunciation_builder.h"

namespace tessarin {
namespace {

/// Phonemes of all ways to say a word, from where on no further way is taken: as many as one can
/// have. Variants in a lexicon may share their texts, and every token gets copies.
constexpr size_t kMaxChoiceLength = UINT16_MAX;

} // namespace

void word_speaker::TranscribeWord(const std::string& padded) {
    flog scope("CTranscriber::TranscribeWord");
    if (!LookupWord(Unpadded(padded))) {
        module.ApplyRules(builder, padded);
    }
}

bool word_speaker::LookupWord(std::string_view word) {
    flog scope("CTranscriber::LookupWord");
    if (dict == nullptr) {
        return false;
    }
    const std::string_view letters = module.SubstituteLetters(word);
    if (letters.size() > UINT16_MAX) {
        return false;
    }
    const auto length = static_cast<uint16_t>(letters.size());
    CPronunciationRec found;
    if (!dict->GetPronunciation(letters.data(), length, 0, &found)) {
        return false;
    }
    builder.BeginAlternatives();
    int32_t variant = 0;
    size_t total = 0;
    do {
        builder.AddAlternative({found.pronunciation, found.pronunciation_length});
        total += found.pronunciation_length;
        ++variant;
    } while (total <= kMaxChoiceLength &&
             dict->GetPronunciation(letters.data(), length, variant, &found));
    builder.CommitAlternatives();
    return true;
}

void word_speaker::TranscribeInPieces(std::string_view word) {
    for (size_t start = 0; start < word.size(); start += kMaxWordLength) {
        std::string padded = " ";
        padded += word.substr(start, kMaxWordLength);
        padded += ' ';
        TranscribeWord(padded);
    }
}

void word_speaker::SpellWord(const std::string& padded) {
    flog scope("CTranscriber::SpellWord");
    for (const char character : Unpadded(padded)) {
        SpeakAsciiChar(CodeOf(character));
    }
}

void word_speaker::SpeakAsciiChar(uint32_t code) {
    flog scope("CTranscriber::SpeakAsciiChar");
    if (static_cast<int64_t>(code) < module.character_name_count) {
        SpeakWordOf(module.character_names, code);
    }
}

void word_speaker::SpeakWordOf(const char* const* words, uint32_t index) {
    if (words != nullptr && words[index] != nullptr) {
        builder.AppendPhonemes(BoundedText(words[index], kMaxPhonemesLength), false);
    }
}

} // namespace tessarin
