#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tessarin/owned.h"
#include "tessarin/tessarin_c.h"

namespace tessarin {

/// A transcriber, the editor that it looks its words up in, if it has one, and the revision of the
/// user's words that it knows.
struct word_speaker {
    editor_owner editor;
    transcriber_owner transcriber; ///< goes before its editor
    uint32_t revision = 0;
};

/// As a lexicon has its words: letters of ASCII alone become capitals.
std::string InLexiconCase(std::string_view word);

} // namespace tessarin

/// A language that several threads share: a transcriber serves one thread at a time, so each call
/// borrows one, and a new one is made when all are out.
struct tessarin_language {
    explicit tessarin_language(std::string lexicon) : content(std::move(lexicon)) {}

    /// Makes the first transcriber and reads what the lexicon says of itself.
    tessarin::error_code Open();

    /// Has the word said by these pronunciations alone, from the next loan on. Throws
    /// utf8::exception.
    tessarin::error_code SetWord(std::string_view word, std::string_view pronunciations);

    tessarin::error_code Borrow(tessarin::word_speaker& out);
    void GiveBack(tessarin::word_speaker speaker);

    tessarin::TranscriberInfo info{};

private:
    /// Words in upper case with their pronunciations, the preferred one first.
    using word_map = std::map<std::string, std::vector<std::string>>;

    tessarin::error_code Make(const word_map& known, tessarin::word_speaker& out) const;

    std::string content; ///< the lexicon's, from which each transcriber is made
    std::mutex lock;
    word_map words;
    uint32_t revision = 0; ///< of the words
    std::vector<tessarin::word_speaker> idle;
};

namespace tessarin {

/// A transcriber on loan.
class BorrowedTranscriber {
public:
    explicit BorrowedTranscriber(tessarin_language& lender) : language(lender) {
        code = language.Borrow(speaker);
    }
    ~BorrowedTranscriber() {
        if (speaker.transcriber) {
            language.GiveBack(std::move(speaker));
        }
    }
    BorrowedTranscriber(const BorrowedTranscriber&) = delete;
    BorrowedTranscriber& operator=(const BorrowedTranscriber&) = delete;

    /// 0, or why there is none.
    error_code GetCode() const { return code; }
    IVisemixTranscriber* Get() const { return speaker.transcriber.get(); }

private:
    tessarin_language& language;
    word_speaker speaker;
    error_code code;
};

} // namespace tessarin
