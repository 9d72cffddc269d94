#pragma once

#include "base/packed_file.h"
#include "support/byte_builder.h"
#include "tessarin/transcriber.h"
#include "text/language_sections.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tessarin::test {

/// A lexicon file in its parts.
struct lexicon_image {
    uint16_t version = 2;
    std::string name = "Tiny";
    uint32_t language = 9;
    uint32_t flags = kCodePageKnown;
    std::string locale = "C";
    std::string infoString = "made by hand";
    uint32_t codePage = 1252;
    std::string comment = "for tests";
    bytes section = RuleLanguage().Take();
    std::vector<std::pair<std::string, std::string>> entries = {
        {"at", "AEt"}, {"KAT", "kAEt"}, {"kat", "kAHt"}, {"TAKE", "tEYk"}};

    bytes Header() const {
        ByteBuilder header;
        header.Text("TCID").U16(version).String(name).U32(language).U32(flags);
        if ((flags & kLocaleStored) != 0) {
            header.String(locale);
        }
        if ((flags & kInfoStringStored) != 0) {
            header.String(infoString);
        }
        if ((flags & kCodePageKnown) != 0) {
            header.U32(codePage);
        }
        if ((flags & kCommentStored) != 0) {
            header.String(comment);
        }
        return header.Take();
    }

    bytes Lexicon() const {
        std::string block;
        ByteBuilder places;
        for (const auto& [word, pronunciation] : entries) {
            for (const std::string& text : {word, pronunciation}) {
                places.U32(static_cast<uint32_t>(block.size()));
                places.U16(static_cast<uint16_t>(text.size()));
                block += text;
            }
        }
        return ByteBuilder()
            .U32(static_cast<uint32_t>(block.size()))
            .Text(block)
            .U32(static_cast<uint32_t>(entries.size()))
            .Bytes(places.Take())
            .Take();
    }

    bytes Payload() const {
        return ByteBuilder().Bytes(section).U32(language).Bytes(Lexicon()).Take();
    }

    bytes Take() const { return WithPayload(Payload()); }

    bytes WithPayload(const bytes& payload) const {
        uint32_t size = 0;
        const auto packed = PackBytes(payload, &size);
        return ByteBuilder().Bytes(Header()).Bytes({packed.get(), size}).Take();
    }
};

} // namespace tessarin::test
