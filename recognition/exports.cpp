#include "frame/flog.h"
#include "recognition/textbased_phn_recognizer.h"
#include "tessarin/text_based_recognizer.h"

#include <new>

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
