#include "text/text_conversion.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <utf8.h>

#include "tessarin/transcriber.h"

using namespace tessarin;

namespace {

constexpr uint32_t kCodePages[] = {1250, 1251, 1252, 0};

/// What was converted converts to the same once more from its UTF-8 form.
void ConvertAgain(const TranscriberInfo& info, IQuibConvertedText& first) {
    const char* const utf8 = first.GetUtf8Text();
    std::vector<char> text(utf8, utf8 + std::strlen(utf8));
    const auto length = static_cast<int32_t>(text.size());
    const counted_ptr<IQuibConvertedText> again =
        ConvertText(&info, text.data(), length, kUtf8Text);
    if (!again || std::strcmp(again->GetText(), first.GetText()) != 0) {
        std::abort();
    }
}

} // namespace

// A host's text, in an encoding and for a code page that the first byte chooses.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    TranscriberInfo info = {};
    info.code_page = kCodePages[data[0] % 4];
    const uint32_t encoding = data[0] / 4 % 5;
    std::vector<char> text(data + 1, data + size);
    try {
        const auto length = static_cast<int32_t>(text.size());
        if (const auto converted = ConvertText(&info, text.data(), length, encoding)) {
            ConvertAgain(info, *converted);
        }
    } catch (const utf8::exception&) {
        return 0; // reported to the host
    }
    return 0;
}
