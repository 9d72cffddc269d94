#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "base/byte_writer.h"
#include "text/pronunciation/grapheme_to_phone_rules.h"
#include "text/pronunciation/pronunciation_builder.h"

using namespace tessarin;

namespace {

error_code Load(CGraphemeToPhoneRules<char>& module, std::span<const uint8_t> section) {
    const uint8_t* position = section.data();
    auto remaining = static_cast<uint32_t>(section.size());
    char message[kLetterToSoundMessageSize];
    return module.LoadLetterToSound(&position, &remaining, message);
}

} // namespace

// A letter-to-sound section from outside: it reads or it answers a code. What reads pronounces
// words, and is written so that it reads the same again.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CGraphemeToPhoneRules<char> module;
    if (Load(module, {data, size}) != kNoError) {
        return 0;
    }
    for (const char* word : {" TAKE ", " KAATT ", " A ", "  "}) {
        PronunciationBuilder builder;
        module.ApplyRules(builder, word);
        module.SubstituteLetters(word);
    }
    ByteWriter written;
    module.WriteLetterToSound(written);
    CGraphemeToPhoneRules<char> copy;
    ByteWriter again;
    if (Load(copy, written.Content()) != kNoError) {
        std::abort();
    }
    copy.WriteLetterToSound(again);
    if (!std::ranges::equal(written.Content(), again.Content())) {
        std::abort();
    }
    return 0;
}
