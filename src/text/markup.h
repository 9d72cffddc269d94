#pragma once

#include "tessarin/transcriber.h"
#include "text/pronunciation/pronunciation_builder.h"
#include "text/text_reader.h"
#include "text/word_speaker.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace tessarin {

/// Reads a tag of the form `<name attribute="value" ...>` from `position` on and leaves `position`
/// where reading stopped. False when there is no tag, or no white space after its name. Attributes
/// that are not in double quotes are not seen.
bool ParseTagAttributes(std::string_view text, std::string& name,
                        std::map<std::string, std::string>& attributes, size_t& position);

/// What tags do. Every handler sees every tag; the one that knows the tag changes the marker.
class tag_handlers {
public:
    /// `breathAtPunctuation` is set by a tag that asks for it.
    tag_handlers(text_reader& text, word_speaker& wordSpeaker, PronunciationBuilder& pronunciation,
                 bool& breathAtPunctuation)
        : reader(text), speaker(wordSpeaker), builder(pronunciation),
          automaticBreath(breathAtPunctuation) {}

    /// Takes the marker of a tag that has been read.
    void Handle(CTxMarker& marker);

private:
    // Each returns whether the tag is its own.
    bool CheckPronunciationXML(CTxMarker& marker);
    bool CheckCutMarkerXML(CTxMarker& marker);
    bool CheckPauseXML(CTxMarker& marker);
    bool CheckSoundXML(const CTxMarker& marker);

    text_reader& reader;
    word_speaker& speaker;
    PronunciationBuilder& builder;
    bool& automaticBreath;
};

} // namespace tessarin
