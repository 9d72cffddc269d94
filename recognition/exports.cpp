#include <new>

#include "frame/flog.h"
#include "recognition/textbased_phn_recognizer.h"
#include "recognition/textless_phn_recognizer.h"
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
