#pragma once

#include <string>
#include <vector>

namespace tessarin::training {

/// Silence, the first phoneme of the alphabet.
inline constexpr size_t kSilencePhone = 0;

struct phone_interval {
    double start_ms;
    double end_ms;
    size_t phone; ///< index in the phoneme alphabet
};

/// A recording of one speaker and what is known of it.
struct utterance {
    std::string path; ///< of the WAV file
    std::string name; ///< the path within the corpus
    std::string speaker;
    std::string purpose; ///< `train`, `dev` or `eval`
    std::string text;
    std::vector<phone_interval> phones; ///< empty when only the text is known
};

/// Reads the list `corpus.tsv` of a directory of speech, and the phone times of its timed
/// recordings. On failure the list is empty and `error` says why.
std::vector<utterance> ReadCorpus(const std::string& directory, std::string& error);

} // namespace tessarin::training
