#include "text/default_transcriber.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

using namespace tessarin;

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// Tokens follow one another, and end one after the text at the latest.
void CheckTokens(CTranscriber& transcriber, size_t textLength) {
    uint32_t count = 0;
    const CTxMarker* first = transcriber.GetOutputMarkers(&count);
    uint32_t place = 0;
    for (const CTxMarker& token : std::span(first, count)) {
        Require(place <= token.text_start && token.text_start <= token.text_end);
        Require(token.text_end <= textLength + 1);
        Require((token.groups != nullptr) == (token.group_count > 0));
        place = token.text_end;
    }
}

} // namespace

// A text from outside: it becomes tokens in order, whatever its bytes are.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static constexpr std::string_view kLexicon = "A=AH\nA=EY\nDOT=dAAt\nAT=AEt\nIT'S=IHts\n";
    static const counted_ptr<CTranscriber> transcriber =
        MakeDefaultTranscriber(kLexicon.data(), static_cast<int32_t>(kLexicon.size()));
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string text = bytes.c_str();
    transcriber->Transcribe(text.c_str());
    CheckTokens(*transcriber, text.size());
    return 0;
}
