#pragma once

#include <cstdint>
#include <vector>

#include "tessarin/error_codes.h"

namespace tessarin {

class CAccousticHMM;
class forward_graph;
class IObservationStream;
class ISyncResultsCollection;
class ProgressSink;
struct word_span;

/// Whether sentences can be searched for with `model`.
bool FitsSentenceSearch(const CAccousticHMM& model);

/// Finds which sentences were said, and where, in audio that may hold anything else: at each
/// observation the best `beamWidth` hypotheses pass their scores on through `graph`; each that
/// comes to the end of a sentence is compared, by observation, with two searches that know nothing
/// of the text; and of the places found those are chosen that follow each other best (after the
/// token passing of Young, Russell and Thornton, "Token Passing: a Simple Conceptual Model for
/// Connected Speech Recognition Systems", 1989).
///
/// `spans` are the sentences. For each sentence that was found, a word marker goes to `results`,
/// its times beginning with observation `startFrame`, which may be before the audio. Returns 0,
/// also when none was found; 3 when `model` does not suit the search; 5 when `progress` (may be
/// null) cancels; or the code of a failed read. Throws std::bad_alloc.
[[nodiscard]] error_code SentenceViterbi(uint16_t beamWidth, const CAccousticHMM& model,
                                         const forward_graph& graph,
                                         const std::vector<word_span>& spans,
                                         IObservationStream& stream, ProgressSink* progress,
                                         int32_t startFrame, ISyncResultsCollection& results);

} // namespace tessarin
