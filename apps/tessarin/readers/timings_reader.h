#pragma once

#include <string>

#include "apps/tessarin/timed_result.h"

/// Reads timings that somebody else has found: phonemes, and words where the file has them. The
/// content shows which of these it is:
///
///  - JSON as WriteJson writes it;
///  - TSV as WriteTsv writes it;
///  - a Praat TextGrid in its long or short text form, UTF-8 or UTF-16, with a tier of phones
///    (`phones`, `phonemes` or `segments`; the only tier, whatever its name) and one of words;
///  - lines of a phoneme and the milliseconds that it lasts, as speech synthesizers give them;
///    what follows on a line, and lines that begin with `;` or `#`, are not read.
///
/// Phonemes may be written in our own alphabet or in ARPAbet, with or without stress; with
/// `isSampa` in the SAMPA of American English. Throws Failure, which names `path`, and the line
/// where there is one.
timed_result ReadTimings(const std::string& path, bool isSampa);
