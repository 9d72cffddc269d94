#include "text/default_transcriber.h"

#include <memory>
#include <utility>

namespace tessarin {

counted_ptr<CTranscriber> MakeDefaultTranscriber(const char* lexiconText, int32_t length) {
    speak_dict_ptr lexicon = MakeSpeakDict(lexiconText, length);
    auto language = std::make_unique<CGraphemeToPhoneRules<char>>();
    language->LoadBuiltinEnglish();
    return counted_ptr<CTranscriber>::Adopt(
        new CTranscriber(std::move(lexicon), std::move(language)));
}

} // namespace tessarin
