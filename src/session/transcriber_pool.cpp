#include "session/transcriber_pool.h"

#include <algorithm>
#include <memory>

#include <utf8.h>

#include "model/phoneme_alphabet.h"
#include "session/locale_use.h"
#include "session/near_characters.h"
#include "session/span_text.h"
#include "text/lexicon/lexicon_editor.h"

namespace tessarin {

namespace {

constexpr std::string_view kLexiconMagic = "TCID";
constexpr const char* kBorder = "\x7F=x\n"; ///< no text asks for this
constexpr size_t kLongestWord = 511;        ///< that a lexicon looks up

using word_map = std::map<std::string, std::vector<std::string>>;

/// The word with plain letters in place of those with accents: so a language that folds accents
/// away looks it up.
std::string WithoutAccents(std::string_view word) {
    std::string plain;
    for (const char* at = word.data(); at != word.data() + word.size();) {
        const char* const first = at;
        const char32_t code = utf8::next(at, word.data() + word.size());
        const auto near = code < 0x80 ? std::nullopt : FindNearCharacters(code);
        plain += near ? *near : std::string_view(first, static_cast<size_t>(at - first));
    }
    return plain;
}

/// The pronunciations between the bars; none when one of them is not phonemes.
std::vector<std::string> SplitPronunciations(std::string_view text) {
    std::vector<std::string> all;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find('|', start), text.size());
        const std::string_view one = text.substr(start, end - start);
        std::vector<const phoneme_symbol*> symbols;
        if (!ParsePhonemeString(one, symbols, nullptr) || symbols.empty()) {
            return {};
        }
        std::string labels;
        for (const phoneme_symbol* symbol : symbols) {
            labels += symbol->label;
        }
        all.push_back(std::move(labels));
        start = end + 1;
    }
    return all;
}

bool IsWord(const std::string& word) {
    return !word.empty() && word.size() <= kLongestWord &&
           word.find_first_of("=\r\n") == std::string::npos;
}

error_code MakeFromText(const std::string& lexicon, const word_map& words, word_speaker& out) {
    std::string text;
    for (const auto& [word, pronunciations] : words) {
        for (const std::string& each : pronunciations) {
            text += word + "=" + each + "\n";
        }
    }
    text += words.empty() ? lexicon : kBorder + lexicon;
    IVisemixTranscriber* made = nullptr;
    const error_code code =
        CreateDefaultTranscriber(text.data(), static_cast<int32_t>(text.size()), &made);
    out.transcriber.reset(made);
    return code;
}

error_code MakeFromImage(const std::string& image, word_speaker& out) {
    IVisemixTranscriber* made = nullptr;
    const error_code code =
        CreateTranscriberFromLexicon(image.data(), static_cast<uint32_t>(image.size()), &made);
    out.transcriber.reset(made);
    return code;
}

/// A new record goes in front of its word, so the preferred one comes last.
error_code ReplaceWord(const std::string& word, const std::vector<std::string>& pronunciations,
                       ILexiconEditor& editor) {
    while (editor.RemoveRecord(word.c_str(), nullptr) == kNoError) {
    }
    for (size_t left = pronunciations.size(); left > 0; --left) {
        const error_code code = editor.AddRecord(word.c_str(), pronunciations[left - 1].c_str());
        if (code != kNoError) {
            return code;
        }
    }
    return kNoError;
}

error_code MakeFromImage(const std::string& image, const word_map& words, word_speaker& out) {
    auto loaded = std::make_unique<CLexiconEditor>();
    error_code code = loaded->Load(image.data(), static_cast<uint32_t>(image.size()));
    if (code != kNoError) {
        return code;
    }
    editor_owner editor(loaded.release());
    for (const auto& [word, pronunciations] : words) {
        code = ReplaceWord(word, pronunciations, *editor);
        if (code != kNoError) {
            return code;
        }
    }
    out.transcriber.reset(editor->GetTranscriber());
    out.editor = std::move(editor);
    return kNoError;
}

} // namespace

std::string InLexiconCase(std::string_view word) {
    std::string upper(word);
    std::ranges::transform(upper, upper.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return upper;
}

} // namespace tessarin

using namespace tessarin;

error_code tessarin_language::Make(const word_map& known, word_speaker& out) const {
    if (!content.starts_with(kLexiconMagic)) {
        return MakeFromText(content, known, out);
    }
    return known.empty() ? MakeFromImage(content, out) : MakeFromImage(content, known, out);
}

error_code tessarin_language::Open() {
    word_speaker first;
    const error_code code = Make({}, first);
    if (code == kNoError) {
        first.transcriber->getTranscriberInfo(&info);
        idle.push_back(std::move(first));
    }
    return code;
}

error_code tessarin_language::SetWord(std::string_view word, std::string_view pronunciations) {
    const std::vector<std::string> all = SplitPronunciations(pronunciations);
    const auto convert = [this](std::string_view utf8) {
        const LocaleUse use(info);
        return SpanText(utf8, info);
    };
    const SpanText local = convert(word);
    const SpanText plain = convert(WithoutAccents(word));
    if (all.empty() || !IsWord(local.GetLocal()) || !IsWord(plain.GetLocal())) {
        return kInvalidArgument;
    }
    std::vector<word_speaker> outdated;
    const std::lock_guard guard(lock);
    words[InLexiconCase(local.GetLocal())] = all;
    words[InLexiconCase(plain.GetLocal())] = all;
    ++revision;
    outdated.swap(idle);
    return kNoError;
}

error_code tessarin_language::Borrow(word_speaker& out) {
    word_map known;
    {
        const std::lock_guard guard(lock);
        if (!idle.empty()) {
            out = std::move(idle.back());
            idle.pop_back();
            return kNoError;
        }
        known = words;
        out.revision = revision;
    }
    return Make(known, out);
}

void tessarin_language::GiveBack(word_speaker speaker) {
    const std::lock_guard guard(lock);
    if (speaker.revision == revision) {
        idle.push_back(std::move(speaker));
    }
}
