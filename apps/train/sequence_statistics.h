#pragma once

#include <string>

#include "apps/train/sequence_counts.h"

namespace tessarin::training {

/// How counts become probabilities, and probabilities the factors of a search.
struct statistics_shape {
    /// A context of one phoneme, or of two, that occurred so often gets half of its
    /// probabilities from its own counts and half from the context that is one phoneme shorter.
    double pairTrust = 5.0;
    double tripleTrust = 20.0;
    /// The factor of a phoneme change is `scale * probability ^ exponent`. The observations of one
    /// phoneme depend on each other, which makes a model of speech too sure of itself, and the
    /// exponent gives the language its say back. The scale is what a change is worth as such.
    double exponent = 4.0;
    double scale = 1.0;
};

/// The counts as a text of statistics, each number divided by that of its beginning being the
/// factor of its last phoneme. Every phoneme has an entry after every two others.
std::string WriteStatistics(sequence_counts& counts, const statistics_shape& shape);

} // namespace tessarin::training
