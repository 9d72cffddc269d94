#include "base/flog.h"
#include "base/text_copy.h"
#include "text/character_classes.h"
#include "text/transcriber.h"

namespace tessarin {
namespace {

/// A longer word is said in pieces of this length, which keeps the time for one word bounded.
constexpr size_t kMaxWordLength = 254;

constexpr bool IsQuote(uint32_t code) {
    return code == '\'' || code == '"';
}

/// Phonemes of all ways to say a word, from where on no further way is taken: as many as one can
/// have. Variants in a lexicon may share their texts, and every token gets copies.
constexpr size_t kMaxChoiceLength = UINT16_MAX;

/// The word between the two blanks.
std::string_view Unpadded(const std::string& padded) {
    return std::string_view(padded).substr(1, padded.size() - 2);
}

struct abbreviation {
    std::string_view padded;
    const char* spokenAs; ///< null: by its letters
};

constexpr abbreviation kAbbreviations[] = {
    {" DR ", " DOCTOR "},
    {" MR ", " MISTER "},
    {" MRS ", " MISSUS "},
    {" PHD ", nullptr},
};

} // namespace

void CTranscriber::TranscribeWord(const std::string& padded) {
    flog scope("CTranscriber::TranscribeWord");
    if (!LookupWord(Unpadded(padded))) {
        module->ApplyRules(builder, padded);
    }
}

/// Adds all pronunciations that the lexicon has of the word as one choice.
bool CTranscriber::LookupWord(std::string_view word) {
    flog scope("CTranscriber::LookupWord");
    if (dict == nullptr) {
        return false;
    }
    const std::string_view letters = module->SubstituteLetters(word);
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

/// Says a word of any length.
void CTranscriber::TranscribeInPieces(std::string_view word) {
    for (size_t start = 0; start < word.size(); start += kMaxWordLength) {
        std::string padded = " ";
        padded += word.substr(start, kMaxWordLength);
        padded += ' ';
        TranscribeWord(padded);
    }
}

void CTranscriber::SpellWord(const std::string& padded) {
    flog scope("CTranscriber::SpellWord");
    for (const char character : Unpadded(padded)) {
        SpeakAsciiChar(CodeOf(character));
    }
}

void CTranscriber::SpeakAsciiChar(uint32_t code) {
    flog scope("CTranscriber::SpeakAsciiChar");
    if (static_cast<int64_t>(code) < module->character_name_count) {
        SpeakWordOf(module->character_names, code);
    }
}

/// Says one word of a table, if the language has it.
void CTranscriber::SpeakWordOf(const char* const* words, uint32_t index) {
    if (words != nullptr && words[index] != nullptr) {
        builder.AppendPhonemes(BoundedText(words[index], kMaxPhonemesLength), false);
    }
}

void CTranscriber::convert_word() {
    flog scope("CTranscriber::convert_word");
    std::string padded = " ";
    const bool isDotted = IsDottedAbbreviation();
    ReadWord(padded, isDotted);
    const uint32_t cur = reader.Cur();
    const uint32_t next = reader.Next();
    if (padded == " HTTP " && cur == ':' && next == '/' && reader.Next2() == '/') {
        convert_url(padded, true);
    } else if (padded == " WWW " && !IsSpace(cur)) {
        convert_url(padded, false);
    } else if (cur == '@' && !IsSpace(next)) {
        convert_email(padded);
    } else if (cur == '.') {
        convert_abbreviation(padded);
    } else if (LookupWord(Unpadded(padded))) {
        return;
    } else if (isDotted || IsDigit(cur)) {
        SpellWord(padded);
    } else if (Unpadded(padded).size() == 1) {
        SpeakAsciiChar(CodeOf(padded[1]));
    } else {
        TranscribeWord(padded);
    }
}

/// Whether the token has the form of U.S., letters that are each followed by a stop.
bool CTranscriber::IsDottedAbbreviation() const {
    return reader.Next() == '.' && IsLetter(reader.Next2()) && reader.Next3() == '.';
}

/// Whether the character belongs into a word: a letter, or what is substituted by letters.
bool CTranscriber::IsWordLetter(uint32_t code) const {
    return IsLetter(code) ||
           (code != 0 && module->letter_substitutions.contains(static_cast<char>(code)));
}

/// Reads the token behind the blank in `padded`, and adds the closing blank. Quotes around the word
/// and the stops of a dotted one are left out; what is longer than a word may be has been said.
void CTranscriber::ReadWord(std::string& padded, bool isDotted) {
    uint32_t last = 0;
    const auto store = [&](uint32_t code) {
        padded += ToUpper(code);
        last = code;
        if (padded.size() > kMaxWordLength) {
            padded += ' ';
            TranscribeWord(padded);
            padded = " ";
        }
    };
    if (!IsQuote(reader.Cur())) {
        store(reader.Cur());
    }
    reader.Advance();
    for (;; reader.Advance()) {
        const uint32_t cur = reader.Cur();
        if (IsWordLetter(cur) || cur == '\'' || (cur == '"' && !isDotted)) {
            store(cur);
        } else if (cur != '.' || !isDotted) {
            break;
        }
    }
    if (!isDotted && IsQuote(last) && padded.size() > 1) {
        padded.pop_back();
    }
    padded += ' ';
}

/// A word with a stop behind it. The stop of an abbreviation belongs to the word; any other ends a
/// sentence and becomes a token of its own.
void CTranscriber::convert_abbreviation(const std::string& padded) {
    flog scope("CTranscriber::convert_abbreviation");
    for (const abbreviation& known : kAbbreviations) {
        if (padded == known.padded) {
            if (known.spokenAs != nullptr) {
                TranscribeWord(known.spokenAs);
            } else {
                SpellWord(padded);
            }
            reader.Advance();
            return;
        }
    }
    TranscribeWord(padded);
}

/// A character of no class, such as a control code, is said by its name.
void CTranscriber::convert_ascii() {
    flog scope("CTranscriber::convert_ascii");
    if (reader.Cur() != '\n') {
        SpeakAsciiChar(reader.Cur());
    }
    reader.Advance();
}

} // namespace tessarin
