#include "text/pronunciation/pronunciation_builder.h"

#include "text/character_classes.h"

#include <utility>

namespace tessarin {

void PronunciationBuilder::AppendSegment(std::string_view text, bool startNew) {
    std::string phonemes;
    for (const char character : text) {
        if (!IsSpace(CodeOf(character))) {
            phonemes += character;
        }
    }
    if (phonemes.empty()) {
        return;
    }
    if (startNew || groups.empty() || groups.back().size() > 1) {
        groups.emplace_back().push_back(std::move(phonemes));
    } else {
        groups.back().front() += phonemes;
    }
}

void PronunciationBuilder::AppendPhonemes(std::string_view text, bool startNew) {
    const bool isWholeWord = !text.empty() && IsSpace(CodeOf(text.back()));
    AppendSegment(text, startNew || isWholeWord);
}

void PronunciationBuilder::BeginAlternatives() {
    pending.clear();
}

void PronunciationBuilder::AddAlternative(std::string_view text) {
    pending.emplace_back(text);
}

void PronunciationBuilder::CommitAlternatives() {
    if (!pending.empty()) {
        groups.push_back(std::exchange(pending, {}));
    }
}

void PronunciationBuilder::AddBreathAlternatives(bool withSilence) {
    BeginAlternatives();
    for (const char* breath : {"hEY", "hAEhAE", "hUHh", "hEYhEYhEY"}) {
        AddAlternative(breath);
    }
    if (withSilence) {
        AddAlternative("x");
    }
    CommitAlternatives();
}

void PronunciationBuilder::Clear() {
    groups.clear();
    pending.clear();
}

} // namespace tessarin
