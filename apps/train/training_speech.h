#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "apps/train/corpus.h"
#include "apps/train/labelled_speech.h"
#include "apps/train/speech_changes.h"
#include "features/spectral_feature_descriptor.h"

namespace tessarin::training {

/// The changed copies of each recording.
struct copy_plan {
    size_t count;
    noise_shares shares;
};

/// Analyses each utterance as it is and in changed copies. Those that cannot be read
/// or have too few observations for their phones are left out; `omitted` receives their names.
std::vector<labelled_speech> PrepareSpeech(const std::vector<utterance>& utterances,
                                           const CSpectralFeatureDescriptor& descriptor,
                                           const copy_plan& copies, size_t numThreads,
                                           std::vector<std::string>& omitted);

} // namespace tessarin::training
