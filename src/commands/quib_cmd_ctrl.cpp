#include "commands/quib_cmd_ctrl.h"

#include <cinttypes>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "base/guarded.h"
#include "commands/feature_stream.h"
#include "model/accoustic_hmm.h"
#include "model/phoneme_alphabet.h"
#include "platform/floating_point.h"
#include "recognition/textbased_phn_recognizer.h"

namespace tessarin {
namespace {

constexpr int32_t kPoolBlockBytes = 32768;

/// An utterance below this is not worth a search.
constexpr uint32_t kMinFrames = 3;

bool FitsGraph(const CAccousticHMM& model) {
    return model.numModels <= kMaxGraphPhones && model.numStates <= kMaxGraphPhoneStates;
}

} // namespace

CQuibCmdCtrl::CQuibCmdCtrl(CAccousticHMM& acousticModel, float floor)
    : pool(kPoolBlockBytes), model(acousticModel), energyFloor(floor) {}

int32_t CQuibCmdCtrl::Release() {
    if (references > 1) {
        return --references;
    }
    delete this;
    return 0;
}

uint32_t CQuibCmdCtrl::AddCommandFromTranscriber(const char* text,
                                                 IVisemixTranscriber* transcriber) {
    if (text == nullptr || transcriber == nullptr) {
        return 0;
    }
    static_cast<void>(transcriber->Transcribe(text));
    uint32_t count = 0;
    CTxMarker* first = transcriber->GetOutputMarkers(&count);
    return first != nullptr && count > 0 ? AddCommandFromMarkers(first, first + count) : 0;
}

uint32_t CQuibCmdCtrl::AddCommandFromPhonemes(const char* phonemes) {
    uint32_t id = 0;
    static_cast<void>(Guarded([&]() -> error_code {
        std::vector<const phoneme_symbol*> symbols;
        if (phonemes == nullptr || !ParsePhonemeString(phonemes, symbols, nullptr)) {
            return kInvalidArgument;
        }
        std::string spelling;
        for (const phoneme_symbol* symbol : symbols) {
            spelling += symbol->label;
        }
        char* alternative = spelling.data();
        PhonemeGroup group{1, &alternative};
        CTxMarker word{};
        word.text_end = static_cast<uint32_t>(spelling.size());
        word.kind = kWordToken;
        word.value = -1;
        word.group_count = 1;
        word.groups = &group;
        id = AddCommand(&word, &word + 1);
        return kNoError;
    }));
    return id;
}

uint32_t CQuibCmdCtrl::AddCommandFromMarkers(CTxMarker* first, CTxMarker* last) {
    uint32_t id = 0;
    static_cast<void>(Guarded([&]() -> error_code {
        if (first == nullptr || last == nullptr || std::less<>()(last, first)) {
            return kInvalidArgument;
        }
        id = AddCommand(first, last);
        return kNoError;
    }));
    return id;
}

uint32_t CQuibCmdCtrl::AddCommand(CTxMarker* first, CTxMarker* last) {
    if (!FitsGraph(model)) {
        return 0;
    }
    auto added = std::make_unique<command>();
    CTextbasedPhnRecognizer builder;
    std::vector<uint32_t> endStates;
    uint32_t stateCount = 0;
    state_rec** graph =
        builder.BuildStateGraph(model, pool, first, last, added->positions, endStates, &stateCount);
    added->graph = log_state_graph::FromProbabilities(graph, stateCount);
    return commands.Add(std::move(added));
}

uint32_t CQuibCmdCtrl::RecognizeCommand(IObservationStream* stream, ProgressSink* progress,
                                        double* score) {
    MaskFloatUnderflow();
    uint32_t id = 0;
    static_cast<void>(Guarded([&]() -> error_code {
        if (stream == nullptr) {
            return kInvalidArgument;
        }
        CFeatureStream utterance;
        const error_code code =
            utterance.Record(*stream, model.descriptor.numFeatures, energyFloor);
        if (code != kNoError || utterance.GetNumObservations() < kMinFrames) {
            return code;
        }
        std::vector<command_score> scores;
        // Kept: asked to stop, it goes on with the next command.
        static_cast<void>(ScoreAll(utterance, progress, scores));
        command_score best{0, kImpossibleLog};
        for (const command_score& each : scores) {
            std::fprintf(stdout, "mdl %" PRIu32 " %g\n", each.id, each.score);
            best = each.score > best.score ? each : best;
        }
        if (score != nullptr) {
            *score = best.score;
        }
        id = best.id;
        return kNoError;
    }));
    return id;
}

error_code CQuibCmdCtrl::ScoreCommands(IObservationStream& stream, ProgressSink* progress,
                                       std::vector<command_score>& out) {
    MaskFloatUnderflow();
    out.clear();
    CFeatureStream utterance;
    const error_code code = utterance.Record(stream, model.descriptor.numFeatures, energyFloor);
    return code == kNoError && utterance.GetNumObservations() >= kMinFrames
               ? ScoreAll(utterance, progress, out)
               : code;
}

/// Returns why the search of a command ended early, if one did; the others were searched all the
/// same.
error_code CQuibCmdCtrl::ScoreAll(CFeatureStream& utterance, ProgressSink* progress,
                                  std::vector<command_score>& out) {
    error_code ended = kNoError;
    CTextbasedPhnRecognizer recognizer;
    for (const command* each : commands) {
        if (!each->enabled) {
            continue;
        }
        utterance.Rewind();
        TArray<float> energies;
        double score = 0.0;
        const error_code code =
            recognizer.ViterbiTrellis(model, each->graph, each->positions, {}, utterance, progress,
                                      nullptr, energies, &score);
        if (code == kNoError) {
            out.push_back({each->id, score});
        } else if (code == kUserCancelled || code == kOutOfMemory) {
            ended = code;
        }
    }
    return ended;
}

} // namespace tessarin
