#include "session/spoken_language.h"

#include <cstring>
#include <limits>

#include "session/locale_use.h"

namespace tessarin {

SpokenLanguage::SpokenLanguage(tessarin_language& language, const char* text)
    : info(language.info), borrowed(language), code(borrowed.GetCode()) {
    if (code == kNoError) {
        Read(text);
    }
}

void SpokenLanguage::Read(const char* text) {
    if (std::strlen(text) > static_cast<size_t>(std::numeric_limits<int32_t>::max()) / 4) {
        code = kOutOfRange;
        return;
    }
    const LocaleUse use(info);
    code = RefusingBadUtf8([&] {
        spanText = std::make_unique<SpanText>(text, info);
        borrowed.Get()->Transcribe(spanText->GetLocal().c_str());
        return kNoError;
    });
}

void SpokenLanguage::Transcribe(const std::string& local) {
    const LocaleUse use(info);
    borrowed.Get()->Transcribe(local.c_str());
}

} // namespace tessarin
