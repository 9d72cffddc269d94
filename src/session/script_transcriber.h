#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "session/span_text.h"
#include "tessarin/owned.h"
#include "tessarin/script_transcriber.h"
#include "text/pronunciation/pronunciation_builder.h"

namespace tessarin {

/// How a token is said: groups after each other, each a choice.
using token_groups = std::vector<PronunciationBuilder::group>;

/// The ways to say one token in one list of groups. What they begin and end with in common is said
/// once, and what stands between is one choice.
token_groups JoinReadings(const std::vector<token_groups>& readings);

/// Whether `phonemes`, without silence, is one of the things that `groups` say.
bool CanSay(const token_groups& groups, std::string_view phonemes);

class ScriptTranscriber final : public IScriptTranscriber {
public:
    /// `script` is the text with its readings, in the code page of `wrapped`.
    ScriptTranscriber(transcriber_owner wrapped, std::shared_ptr<const SpanText> script);
    virtual ~ScriptTranscriber();
    ScriptTranscriber(const ScriptTranscriber&) = delete;
    ScriptTranscriber& operator=(const ScriptTranscriber&) = delete;

    bool Transcribe(const char* local) override;
    bool Transcribe(IQuibConvertedText* converted) override;
    void getTranscriberInfo(TranscriberInfo* info) override { inner->getTranscriberInfo(info); }
    CTxMarker* GetOutputMarkers(uint32_t* count) override;
    const char* GetTranscription() override { return inner->GetTranscription(); }
    void GenerateTimedMarkers(ISyncResultsCollection* results) override {
        inner->GenerateTimedMarkers(results);
    }
    const char* GetInfoString(uint32_t* length) override { return inner->GetInfoString(length); }
    int32_t AddRef() override { return ++references; }
    int32_t Release() override;
    uint32_t GetInputChar(int32_t index) override { return inner->GetInputChar(index); }

    const char* FindReading(uint32_t textStart, const char* phonemes) override;

private:
    struct reading {
        std::string words;
        token_groups groups;
    };

    void LearnReadings();
    void ReleaseTokens();
    void AddAlternatives(CTxMarker& token, const script_word& word);

    transcriber_owner inner;
    std::shared_ptr<const SpanText> text;
    int32_t references = 1;
    std::map<std::string, token_groups> known;        ///< the other readings of all words
    std::vector<CTxMarker> tokens;                    ///< copies of the last text's
    std::map<uint32_t, std::vector<reading>> choices; ///< by the beginnings of their tokens
    std::vector<size_t> changed;                      ///< tokens with groups of their own
};

/// Around a reference of its own to `inner`.
std::unique_ptr<ScriptTranscriber> MakeScriptTranscriber(IVisemixTranscriber& inner,
                                                         std::shared_ptr<const SpanText> script);

} // namespace tessarin
