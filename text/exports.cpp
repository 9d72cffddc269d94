#include "frame/flog.h"
#include "frame/guarded.h"
#include "tessarin/speak_dict.h"
#include "tessarin/transcriber.h"
#include "text/cm_dict.h"
#include "text/default_transcriber.h"

using tessarin::flog;

int32_t CreateDefaultTranscriber(const char* lexiconText, int32_t length,
                                 tessarin::IVisemixTranscriber** out) {
    flog scope("CreateDefaultTranscriber");
    if (out == nullptr) {
        return tessarin::kOutOfMemory;
    }
    *out = nullptr;
    return tessarin::Guarded([&] {
        *out = tessarin::MakeDefaultTranscriber(lexiconText, length).release();
        return tessarin::kNoError;
    });
}

void DestroyTranscriber(tessarin::IVisemixTranscriber* transcriber) {
    flog scope("DestroyTranscriber");
    if (transcriber != nullptr) {
        transcriber->Release();
    }
}

tessarin::ISpeakDict* CreateSpeakDict(const char* source, int32_t size) {
    tessarin::ISpeakDict* dict = nullptr;
    static_cast<void>(
        tessarin::Guarded([&] { dict = tessarin::MakeSpeakDict(source, size).release(); }));
    return dict;
}
