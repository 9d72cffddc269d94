#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tessarin/error_codes.h"
#include "tessarin/tessarin_c.h"
#include "tessarin/transcriber.h"

/// What was found in a lexicon file, and the texts that the facts point to.
struct tessarin_lexicon {
    tessarin::TranscriberInfo info{};
    std::string information;
    tessarin_lexicon_facts facts{};
};

namespace tessarin {

[[nodiscard]] error_code LookIntoLexicon(const void* data, uint32_t size,
                                         std::unique_ptr<tessarin_lexicon>& out);

} // namespace tessarin
