#pragma once

#include <cstdint>

struct tessarin_result;

namespace tessarin {

class IMatchAligner;
class SpanText;

/// Adds what `aligner` says of the match to a result that has the markers of the same search: the
/// words that were and were not said, other speech, and the verdict. Nothing of an exact search.
/// `fromMs` is where the searched stretch begins.
void AddMatch(IMatchAligner& aligner, int32_t fromMs, const SpanText& text,
              tessarin_result& result);

} // namespace tessarin
