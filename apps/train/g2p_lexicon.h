#pragma once

#include <span>
#include <string>

#include "base/counted_ptr.h"
#include "tessarin/error_codes.h"
#include "text/lexicon/cm_dict.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"
#include "text/transcriber.h"

namespace tessarin::training {

/// A lexicon with its language: all of a lexicon file, or a lexicon text under the built-in
/// English module.
class CLearnerLexicon {
public:
    /// Reads the lexicon file or lexicon text at `path`.
    [[nodiscard]] error_code Open(const char* path);

    /// Writes a lexicon file with `language` in place of the lexicon's own.
    [[nodiscard]] error_code Save(const char* path,
                                  const CGraphemeToPhoneRules<char>& language) const;

    std::span<const CPronunciationRec> GetEntries() const { return dict->GetEntries(); }
    const CGraphemeToPhoneRules<char>& GetLanguage() const {
        return transcriber->GetLanguageModule();
    }

private:
    counted_ptr<CTranscriber> transcriber;
    CCmDict* dict = nullptr; ///< the transcriber's
};

} // namespace tessarin::training
