#include "text/text_reader.h"

#include "text/character_classes.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace tessarin {

void text_reader::SetInput(const char* text) {
    const size_t size = std::strlen(text) + 1;
    if (size > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        throw std::bad_alloc();
    }
    const auto count = static_cast<int32_t>(size);
    if (input.SetSize(count, count) == 0) {
        throw std::bad_alloc();
    }
    std::transform(text, text + size, input.begin(), CodeOf);
}

void text_reader::Start(const uint8_t* table) {
    foldTable = table;
    readIndex = 0;
    position = 0;
    for (uint32_t& code : lookahead) {
        code = Fetch();
    }
}

void text_reader::Advance() {
    lookahead = {lookahead[1], lookahead[2], lookahead[3], 0};
    if (lookahead[2] != 0) {
        lookahead[3] = Fetch();
    }
    ++position;
}

uint32_t text_reader::Fetch() {
    if (readIndex >= input.GetSize()) {
        return 0;
    }
    const uint32_t code = input[readIndex++];
    return foldTable != nullptr ? foldTable[code] : code;
}

uint32_t text_reader::RawAt(int32_t index) const {
    const uint32_t* code = input.GetAt(index);
    return code != nullptr ? *code : 0;
}

std::string text_reader::RawText(uint32_t start, uint32_t end) const {
    const auto last = static_cast<uint32_t>(std::max(input.GetSize() - 1, 0));
    std::string text;
    for (uint32_t place = start; place < std::min(end, last); ++place) {
        text += static_cast<char>(input[static_cast<int32_t>(place)]);
    }
    return text;
}

} // namespace tessarin
