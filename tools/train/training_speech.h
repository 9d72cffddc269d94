#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "features/spectral_feature_descriptor.h"
#include "tools/train/corpus.h"
#include "tools/train/labelled_speech.h"

namespace tessarin::training {

/// Analyses each utterance as it is and in `numCopies` changed copies. Those that cannot be read
/// or have too few observations for their phones are left out; `omitted` receives their names.
std::vector<labelled_speech> PrepareSpeech(const std::vector<utterance>& utterances,
                                           const CSpectralFeatureDescriptor& descriptor,
                                           size_t numCopies, size_t numThreads,
                                           std::vector<std::string>& omitted);

} // namespace tessarin::training
