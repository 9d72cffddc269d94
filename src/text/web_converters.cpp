#include "base/flog.h"
#include "text/character_classes.h"
#include "text/transcriber.h"

#include <algorithm>

namespace tessarin {

void CTranscriber::convert_url(const std::string& padded, bool spelled) {
    flog scope("CTranscriber::convert_url");
    if (spelled) {
        SpellWord(padded);
        SpellWord(" :// ");
        reader.Advance();
        reader.Advance(); // the second slash is left: convert_web steps over one separator
    } else {
        TranscribeWord(padded);
    }
    convert_web();
}

void CTranscriber::convert_email(const std::string& padded) {
    flog scope("CTranscriber::convert_email");
    TranscribeWord(padded);
    TranscribeWord(" AT ");
    convert_web();
}

/// Says the rest of an address up to white space, piece by piece. A piece ends at a stop, which is
/// said too, and may hold any other character; the language module skips what it cannot say.
void CTranscriber::convert_web() {
    flog scope("CTranscriber::convert_web");
    const auto isAtEnd = [this] { return reader.Cur() == 0 || IsSpace(reader.Cur()); };
    while (!isAtEnd()) {
        if (reader.Cur() == '.') {
            TranscribeWord(" DOT ");
        }
        reader.Advance();
        std::string piece;
        for (; !isAtEnd() && reader.Cur() != '.'; reader.Advance()) {
            piece += ToUpper(reader.Cur());
        }
        if (std::any_of(piece.begin(), piece.end(), [](char c) { return IsLetter(CodeOf(c)); })) {
            TranscribeInPieces(piece);
        }
    }
}

} // namespace tessarin
