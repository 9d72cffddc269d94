#include "text/word_converters.h"

#include "base/flog.h"
#include "text/character_classes.h"

namespace tessarin {
namespace {

constexpr bool IsQuote(uint32_t code) {
    return code == '\'' || code == '"';
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

void word_converters::convert_word() {
    flog scope("CTranscriber::convert_word");
    std::string padded = " ";
    const bool isDotted = IsDottedAbbreviation();
    ReadWord(padded, isDotted);
    const uint32_t cur = reader.Cur();
    const uint32_t next = reader.Next();
    if (padded == " HTTP " && cur == ':' && next == '/' && reader.Next2() == '/') {
        addresses.convert_url(padded, true);
    } else if (padded == " WWW " && !IsSpace(cur)) {
        addresses.convert_url(padded, false);
    } else if (cur == '@' && !IsSpace(next)) {
        addresses.convert_email(padded);
    } else if (cur == '.') {
        convert_abbreviation(padded);
    } else if (speaker.LookupWord(Unpadded(padded))) {
        return;
    } else if (isDotted || IsDigit(cur)) {
        speaker.SpellWord(padded);
    } else if (Unpadded(padded).size() == 1) {
        speaker.SpeakAsciiChar(CodeOf(padded[1]));
    } else {
        speaker.TranscribeWord(padded);
    }
}

/// Whether the token has the form of U.S., letters that are each followed by a stop.
bool word_converters::IsDottedAbbreviation() const {
    return reader.Next() == '.' && IsLetter(reader.Next2()) && reader.Next3() == '.';
}

/// Whether the character belongs into a word: a letter, or what is substituted by letters.
bool word_converters::IsWordLetter(uint32_t code) const {
    return IsLetter(code) ||
           (code != 0 && language.letter_substitutions.contains(static_cast<char>(code)));
}

/// Reads the token after the blank in `padded`, and adds the closing blank. Quotes around the word
/// and the stops of a dotted one are left out; what is longer than a word may be has been said.
void word_converters::ReadWord(std::string& padded, bool isDotted) {
    uint32_t last = 0;
    const auto store = [&](uint32_t code) {
        padded += ToUpper(code);
        last = code;
        if (padded.size() > kMaxWordLength) {
            padded += ' ';
            speaker.TranscribeWord(padded);
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

/// A word with a stop after it. The stop of an abbreviation belongs to the word; any other ends a
/// sentence and becomes a token of its own.
void word_converters::convert_abbreviation(const std::string& padded) {
    flog scope("CTranscriber::convert_abbreviation");
    for (const abbreviation& known : kAbbreviations) {
        if (padded == known.padded) {
            if (known.spokenAs != nullptr) {
                speaker.TranscribeWord(known.spokenAs);
            } else {
                speaker.SpellWord(padded);
            }
            reader.Advance();
            return;
        }
    }
    speaker.TranscribeWord(padded);
}

/// A character of no class, such as a control code, is said by its name.
void word_converters::convert_ascii() {
    flog scope("CTranscriber::convert_ascii");
    if (reader.Cur() != '\n') {
        speaker.SpeakAsciiChar(reader.Cur());
    }
    reader.Advance();
}

} // namespace tessarin
