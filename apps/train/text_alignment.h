#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "apps/train/corpus.h"

namespace tessarin {
class CAccousticHMM;
}

namespace tessarin::training {

/// Finds the phones of utterances of which only the text is known: the engine aligns each to its
/// text with `model`, and the lexicon and the search choose among pronunciations and pauses.
/// Pauses end where the level says so. Utterances that it cannot align keep no phones.
void AlignToText(CAccousticHMM& model, const std::string& lexicon, size_t numThreads,
                 std::vector<utterance>& utterances);

} // namespace tessarin::training
