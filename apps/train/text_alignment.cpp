#include "apps/train/text_alignment.h"

#include "apps/train/observations.h"
#include "apps/train/parallel.h"
#include "apps/train/pause_edges.h"
#include "features/observation_chain.h"
#include "features/spectral_stream.h"
#include "model/accoustic_hmm.h"
#include "model/phoneme_alphabet.h"
#include "recognition/textbased_phn_recognizer.h"
#include "results/concrete_sync_marker_collection.h"
#include "text/default_transcriber.h"

namespace tessarin::training {
namespace {

/// The phonemes among the markers of an alignment, without gaps from the beginning.
std::vector<phone_interval> TakePhones(CConcreteSyncMarkerCollection& markers) {
    std::vector<phone_interval> phones;
    for (int32_t i = 0; i < markers.size(); ++i) {
        const CSyncMarker& marker = markers.begin()[i];
        const phoneme_symbol* symbol = FindPhonemeSymbol(marker.label);
        if (marker.type != kPhonemeMarker || symbol == nullptr) {
            continue;
        }
        const auto phone = static_cast<size_t>(symbol - PhonemeAlphabet().data());
        const double start = phones.empty() ? 0.0 : phones.back().end_ms;
        phones.push_back({start, static_cast<double>(marker.end), phone});
    }
    return phones;
}

std::vector<phone_interval> Align(CAccousticHMM& model, CTranscriber& transcriber,
                                  const utterance& source) {
    std::unique_ptr<CSpectralStream> stream;
    CTextbasedPhnRecognizer recognizer;
    CConcreteSyncMarkerCollection markers;
    if (OpenObservationChain(source.path.c_str(), model.descriptor, stream) != kNoError ||
        recognizer.RecognizePhonemes(stream.get(), &model, source.text.c_str(), &transcriber,
                                     nullptr, &markers) != kNoError) {
        return {};
    }
    return TakePhones(markers);
}

} // namespace

void AlignToText(CAccousticHMM& model, const std::string& lexicon, size_t numThreads,
                 std::vector<utterance>& utterances) {
    // A transcriber serves one thread.
    ParallelFor(numThreads, numThreads, [&](size_t share) {
        const auto transcriber =
            MakeDefaultTranscriber(lexicon.data(), static_cast<int32_t>(lexicon.size()));
        for (size_t i = share; i < utterances.size(); i += numThreads) {
            utterance& each = utterances[i];
            each.phones = Align(model, *transcriber, each);
            if (recording speech; ReadRecording(each.path, speech)) {
                MovePauseEdges(speech, each.phones);
            }
        }
    });
}

} // namespace tessarin::training
