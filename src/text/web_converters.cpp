#include "text/web_converters.h"

#include "base/flog.h"
#include "text/character_classes.h"

#include <algorithm>

namespace tessarin {

void web_converters::convert_url(const std::string& padded, bool spelled) {
    flog scope("CTranscriber::convert_url");
    if (spelled) {
        speaker.SpellWord(padded);
        speaker.SpellWord(" :// ");
        reader.Advance();
        reader.Advance(); // the second slash is left: convert_web steps over one separator
    } else {
        speaker.TranscribeWord(padded);
    }
    convert_web();
}

void web_converters::convert_email(const std::string& padded) {
    flog scope("CTranscriber::convert_email");
    speaker.TranscribeWord(padded);
    speaker.TranscribeWord(" AT ");
    convert_web();
}

/// Says the rest of an address up to white space, piece by piece. A piece ends at a stop, which is
/// said too, and may hold any other character; the language module skips what it cannot say.
void web_converters::convert_web() {
    flog scope("CTranscriber::convert_web");
    const auto isAtEnd = [this] { return reader.Cur() == 0 || IsSpace(reader.Cur()); };
    while (!isAtEnd()) {
        if (reader.Cur() == '.') {
            speaker.TranscribeWord(" DOT ");
        }
        reader.Advance();
        std::string piece;
        for (; !isAtEnd() && reader.Cur() != '.'; reader.Advance()) {
            piece += ToUpper(reader.Cur());
        }
        if (std::any_of(piece.begin(), piece.end(), [](char c) { return IsLetter(CodeOf(c)); })) {
            speaker.TranscribeInPieces(piece);
        }
    }
}

} // namespace tessarin
