#pragma once

#include "base/tarray.h"
#include "tessarin/transcriber.h"
#include "text/lexicon/cm_dict.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"
#include "text/pronunciation/pronunciation_builder.h"
#include "text/text_reader.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tessarin {

struct token_converters;

/// Cuts a text into tokens and pronounces them: first by the lexicon, then by the language module.
/// Numbers, money, addresses, abbreviations and tags are converted to words before. The converters
/// read from the text and speak; of the transcriber they change nothing else but that a tag may ask
/// for breaths.
class CTranscriber : public IVisemixTranscriber {
public:
    /// Without a lexicon only the language module speaks; without a module there are no rules and
    /// no words.
    CTranscriber(speak_dict_ptr lexicon, std::unique_ptr<CGraphemeToPhoneRules<char>> language);
    CTranscriber(const CTranscriber&) = delete;
    CTranscriber& operator=(const CTranscriber&) = delete;

    bool Transcribe(const char* text) override;
    bool Transcribe(IQuibConvertedText* converted) override;
    void getTranscriberInfo(TranscriberInfo* out) override;
    CTxMarker* GetOutputMarkers(uint32_t* count) override;
    const char* GetTranscription() override;
    void GenerateTimedMarkers(ISyncResultsCollection* results) override;
    const char* GetInfoString(uint32_t* length) override;
    int32_t AddRef() override;
    int32_t Release() override;
    uint32_t GetInputChar(int32_t index) override;

    virtual ~CTranscriber();
    /// Replaces the lexicon, which may be null and belongs to the transcriber when `owned`.
    virtual void SetSpeakDict(ISpeakDict* newDict, bool owned);
    virtual void setTranscriberInfo(const TranscriberInfo* newInfo);

    /// The text that GetInfoString gives.
    void SetInfoString(std::string_view text) { infoString = text; }
    const CGraphemeToPhoneRules<char>& GetLanguageModule() const { return *module; }
    /// Whether the lexicon has a word, which is in any case.
    bool Knows(std::string_view word) const;

private:
    void SetInput(const char* text);
    void ReleaseMarkers();

    void Translate();
    void ReadToken(CTxMarker& marker, token_converters& converters);
    void SkipBehind(char closing);
    void ConvertTag(CTxMarker& marker, token_converters& converters);
    void ConvertPunctuation(CTxMarker& marker);
    void AppendMarker(CTxMarker& marker);

    bool automaticBreath = false;
    int32_t references = 1;
    TranscriberInfo info = {};
    PronunciationBuilder builder;
    speak_dict_ptr ownDict; ///< null when the lexicon belongs to somebody else
    ISpeakDict* dict = nullptr;
    text_reader reader;
    TArray<CTxMarker> markers;
    std::unique_ptr<CGraphemeToPhoneRules<char>> module; ///< never null
    std::unique_ptr<char[]> transcription;               ///< what GetTranscription gave out last
    std::string infoString;
};

} // namespace tessarin
