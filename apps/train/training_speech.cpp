#include "apps/train/training_speech.h"

#include <algorithm>
#include <utility>

#include "apps/train/parallel.h"

namespace tessarin::training {
namespace {

constexpr size_t kBabbleVoices = 64;

/// Recordings from all over the list, to make babble of.
std::vector<recording> ReadVoices(const std::vector<utterance>& utterances) {
    std::vector<recording> voices;
    const size_t step = std::max<size_t>(utterances.size() / kBabbleVoices, 1);
    for (size_t i = 0; i < utterances.size(); i += step) {
        recording voice;
        if (ReadRecording(utterances[i].path, voice)) {
            voices.push_back(std::move(voice));
        }
    }
    return voices;
}

labelled_speech Label(const utterance& source, const recording& speech, double speed,
                      const CSpectralFeatureDescriptor& descriptor) {
    labelled_speech labelled;
    labelled.observations = Analyse(speech, descriptor);
    labelled.runs = FindRuns(source.phones, speed, labelled.observations.GetCount());
    DivideEvenly(labelled);
    return labelled;
}

} // namespace

std::vector<labelled_speech> PrepareSpeech(const std::vector<utterance>& utterances,
                                           const CSpectralFeatureDescriptor& descriptor,
                                           const copy_plan& copies, size_t numThreads,
                                           std::vector<std::string>& omitted) {
    const std::vector<recording> voices = ReadVoices(utterances);
    const size_t perUtterance = 1 + copies.count;
    std::vector<labelled_speech> speech(utterances.size() * perUtterance);
    ParallelFor(utterances.size(), numThreads, [&](size_t i) {
        recording original;
        if (!ReadRecording(utterances[i].path, original)) {
            return;
        }
        labelled_speech* place = &speech[i * perUtterance];
        place[0] = Label(utterances[i], original, 1.0, descriptor);
        for (size_t copy = 1; copy <= copies.count; ++copy) {
            random_source random(utterances[i].name, copy);
            const changed_copy changed = ChangeSpeech(original, voices, copies.shares, random);
            place[copy] = Label(utterances[i], changed.speech, changed.speed, descriptor);
            place[copy].isChanged = true;
        }
    });
    for (size_t i = 0; i < utterances.size(); ++i) {
        if (speech[i * perUtterance].runs.empty()) {
            omitted.push_back(utterances[i].name);
        }
    }
    std::erase_if(speech, [](const labelled_speech& each) { return each.runs.empty(); });
    return speech;
}

} // namespace tessarin::training
