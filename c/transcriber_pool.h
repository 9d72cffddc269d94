#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "c/handles.h"
#include "tessarin/tessarin_c.h"

/// A language that several threads share: a transcriber serves one thread at a time, so each call
/// borrows one, and a new one is made when all are out.
struct tessarin_language {
    explicit tessarin_language(std::string lexicon) : content(std::move(lexicon)) {}

    /// Makes the first transcriber and reads what the lexicon says of itself.
    tessarin::error_code Open();

    tessarin::error_code Borrow(tessarin::transcriber_owner& out);
    void GiveBack(tessarin::transcriber_owner transcriber);

    tessarin::TranscriberInfo info{};

private:
    tessarin::error_code MakeTranscriber(tessarin::transcriber_owner& out) const;

    std::string content; ///< the lexicon's, from which each transcriber is made
    std::mutex lock;
    std::vector<tessarin::transcriber_owner> idle;
};

namespace tessarin {

/// A transcriber on loan.
class BorrowedTranscriber {
public:
    explicit BorrowedTranscriber(tessarin_language& lender) : language(lender) {
        code = language.Borrow(transcriber);
    }
    ~BorrowedTranscriber() {
        if (transcriber) {
            language.GiveBack(std::move(transcriber));
        }
    }
    BorrowedTranscriber(const BorrowedTranscriber&) = delete;
    BorrowedTranscriber& operator=(const BorrowedTranscriber&) = delete;

    /// 0, or why there is none.
    error_code GetCode() const { return code; }
    IVisemixTranscriber* Get() const { return transcriber.get(); }

private:
    tessarin_language& language;
    transcriber_owner transcriber;
    error_code code;
};

} // namespace tessarin
