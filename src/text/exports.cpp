#include "base/flog.h"
#include "base/guarded.h"
#include "base/whole_file.h"
#include "tessarin/converted_text.h"
#include "tessarin/lexicon_editor.h"
#include "tessarin/lexicon_file.h"
#include "tessarin/speak_dict.h"
#include "tessarin/transcriber.h"
#include "text/default_transcriber.h"
#include "text/lexicon/cm_dict.h"
#include "text/lexicon/lexicon_editor.h"
#include "text/lexicon/lexicon_file.h"
#include "text/text_conversion.h"

#include <memory>
#include <string>

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

int32_t GetTranscriberInfo(const void* data, uint32_t size, tessarin::TranscriberInfo* info) {
    if (info == nullptr) {
        return tessarin::kInvalidArgument;
    }
    return tessarin::Guarded([&] {
        auto position = static_cast<const uint8_t*>(data);
        uint32_t remaining = size;
        std::string infoString;
        return tessarin::ReadLexiconHeader(&position, &remaining, info, &infoString);
    });
}

int32_t CreateTranscriberFromLexicon(const void* data, uint32_t size,
                                     tessarin::IVisemixTranscriber** out) {
    if (out == nullptr) {
        return tessarin::kInvalidArgument;
    }
    *out = nullptr;
    return tessarin::Guarded([&] {
        tessarin::counted_ptr<tessarin::CTranscriber> transcriber;
        const int32_t code = tessarin::LoadTranscriber(data, size, transcriber);
        *out = transcriber.release();
        return code;
    });
}

int32_t CreateTranscriberFromLexiconFile(const char* path, tessarin::IVisemixTranscriber** out) {
    if (out == nullptr) {
        return tessarin::kInvalidArgument;
    }
    *out = nullptr;
    return tessarin::Guarded([&] {
        uint32_t size = 0;
        const auto file = tessarin::ReadWholeFile(path, &size, false);
        return file == nullptr ? tessarin::kFileNotFound
                               : CreateTranscriberFromLexicon(file.get(), size, out);
    });
}

int32_t CreateLexiconEditor(const char* path, tessarin::ILexiconEditor** out) {
    if (out == nullptr) {
        return tessarin::kInvalidArgument;
    }
    *out = nullptr;
    return tessarin::Guarded([&] {
        uint32_t size = 0;
        const auto file = tessarin::ReadWholeFile(path, &size, false);
        if (file == nullptr) {
            return tessarin::kFileNotFound;
        }
        auto editor = std::make_unique<tessarin::CLexiconEditor>();
        const int32_t code = editor->Load(file.get(), size);
        if (code == tessarin::kNoError) {
            *out = editor.release();
        }
        return code;
    });
}

void DestroyLexiconEditor(tessarin::ILexiconEditor* editor) {
    delete editor;
}

tessarin::IQuibConvertedText* ConvertTextForAlignment(tessarin::IVisemixTranscriber* transcriber,
                                                      char* text, int32_t length,
                                                      uint32_t encoding) {
    if (transcriber == nullptr) {
        return nullptr;
    }
    tessarin::TranscriberInfo info = {};
    transcriber->getTranscriberInfo(&info);
    return ConvertTextForAlignment2(&info, text, length, encoding);
}

// Kept: no guard stands here. Invalid text differs from a character that the code page lacks by
// the exception alone, since both leave no object.
tessarin::IQuibConvertedText* ConvertTextForAlignment2(const tessarin::TranscriberInfo* info,
                                                       char* text, int32_t length,
                                                       uint32_t encoding) {
    return tessarin::ConvertText(info, text, length, encoding).release();
}
