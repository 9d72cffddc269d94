#include "text/quib_converted_text.h"

#include <iterator>
#include <utility>

#include <utf8.h>

namespace tessarin {

CQuibConvertedText::CQuibConvertedText(std::string narrowText, std::u16string wideText,
                                       uint32_t ofEncoding)
    : encoding(ofEncoding), wide(std::move(wideText)), narrow(std::move(narrowText)) {
    utf8::utf16to8(wide.begin(), wide.end(), std::back_inserter(utf8));
}

int32_t CQuibConvertedText::AddRef() {
    return ++references;
}

int32_t CQuibConvertedText::Release() {
    if (--references > 0) {
        return references;
    }
    delete this;
    return 0;
}

} // namespace tessarin
