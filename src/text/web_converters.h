#pragma once

#include "text/text_reader.h"
#include "text/word_speaker.h"

#include <string>

namespace tessarin {

/// The converters of addresses: each takes the word that an address begins with and reads the rest.
class web_converters {
public:
    web_converters(text_reader& text, word_speaker& wordSpeaker)
        : reader(text), speaker(wordSpeaker) {}

    void convert_url(const std::string& padded, bool spelled);
    void convert_email(const std::string& padded);

private:
    void convert_web();

    text_reader& reader;
    word_speaker& speaker;
};

} // namespace tessarin
