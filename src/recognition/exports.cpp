#include <memory>
#include <new>

#include "base/flog.h"
#include "base/guarded.h"
#include "recognition/live/live_search.h"
#include "recognition/live/realtime_phn_recognizer.h"
#include "recognition/loose/match_aligner.h"
#include "recognition/textbased_phn_recognizer.h"
#include "recognition/textless_phn_recognizer.h"
#include "tessarin/match_aligner.h"
#include "tessarin/realtime_recognizer.h"
#include "tessarin/text_based_recognizer.h"
#include "tessarin/textless_recognizer.h"

using namespace tessarin;

int32_t CreateTextBasedRecognizer(ITextBasedPhnRecognizer** out) {
    flog scope("CTextbasedPhnRecognizer::CreateTextBasedRecognizer");
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = new (std::nothrow) CTextbasedPhnRecognizer;
    return kNoError;
}

void DestroyTextBasedRecognizer(ITextBasedPhnRecognizer* recognizer) {
    flog scope("CTextbasedPhnRecognizer::DestroyTextBasedRecognizer");
    delete recognizer;
}

int32_t CreateTextlessPhnRecognizer(ITextlessPhnRecognizer** out) {
    flog scope("CTextlessPhnRecognizer::CreateTextlessPhnRecognizer");
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = new (std::nothrow) CTextlessPhnRecognizer;
    return kNoError;
}

void DestroyTextlessPhnRecognizer(ITextlessPhnRecognizer* recognizer) {
    flog scope("CTextlessPhnRecognizer::DestroyTextlessPhnRecognizer");
    delete recognizer;
}

int32_t CreateMatchAligner(IMatchAligner** out) {
    flog scope("CreateMatchAligner");
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = new (std::nothrow) CMatchAligner;
    return *out != nullptr ? kNoError : kOutOfMemory;
}

void DestroyMatchAligner(IMatchAligner* aligner) {
    flog scope("DestroyMatchAligner");
    delete aligner;
}

int32_t CreateRealtimePhnRecognizer(int32_t sample_rate, int32_t bits, int32_t channels,
                                    double latency, CAccousticHMM* model,
                                    IRealtimePhnRecognizer** out) {
    flog scope("CreateRealtimePhnRecognizer");
    if (out == nullptr) {
        return kInvalidArgument;
    }
    *out = nullptr;
    return Guarded([&] {
        auto recognizer = std::make_unique<CRealtimePhnRecognizer>();
        const error_code code = recognizer->Init(sample_rate, bits, channels, latency, model);
        if (code == kNoError) {
            *out = recognizer.release();
        }
        return code;
    });
}

void DestroyRealtimePhnRecognizer(IRealtimePhnRecognizer* recognizer) {
    flog scope("DestroyRealtimePhnRecognizer");
    delete recognizer;
}

int64_t GetPerfCount() {
    return RealtimeSearchNs();
}
