#include "apps/tessarin/writers/caption_breaks.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "apps/tessarin/writers/caption_words.h"

namespace {

constexpr size_t kLongestLine = 42; ///< characters that are read at a glance
constexpr int64_t kLongestCaptionMs = 6000;
constexpr int64_t kPauseMs = 600; ///< begins a new caption
constexpr size_t kShortWord = 6;  ///< letters; a caption of one such word flashes by

// What a caption and the break after it cost, in units of an empty line. The values were set by
// looking at the captions of some hundred recorded sentences.
constexpr double kCostOfJoinedSentence = 1.6;
constexpr double kCostOfShortTime = 1.0;
constexpr double kCostOfNoTime = 4.0; ///< besides, for a caption of 0 s; less for more
constexpr double kCostOfOneShortWord = 1.0;
constexpr double kCostAtClauseEnd = 0.05;
constexpr double kCostBeforeClause = 0.25;
constexpr double kCostBeforePhrase = 0.5;
constexpr double kCostWithinPhrase = 0.8;
constexpr double kCostOfLeaningWord = 0.6;
constexpr double kCostOfArticle = 1.5; ///< or another word that never ends a phrase
constexpr double kCostWithinWord = 10.0;
constexpr double kGainOfPause = 0.5; ///< at most, for a pause that is heard
constexpr double kHeardPauseMs = 400.0;

template <size_t count> bool IsOneOf(const std::string_view (&list)[count], std::string_view word) {
    return std::ranges::find(list, word) != std::end(list);
}

/// In small letters and with plain apostrophes, as the lists have it.
std::string Plain(std::string word) {
    constexpr std::string_view kCurled = "\xE2\x80\x99";
    for (size_t at; (at = word.find(kCurled)) != std::string::npos;) {
        word.replace(at, kCurled.size(), "'");
    }
    std::ranges::transform(word, word.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return word;
}

size_t NumCharacters(std::string_view utf8) {
    return static_cast<size_t>(
        std::ranges::count_if(utf8, [](char c) { return (c & 0xC0) != 0x80; }));
}

bool EndsSentence(const caption_word& word) {
    return word.punctuation.find_first_of(".!?") != std::string::npos &&
           !(word.punctuation == "." && IsOneOf(kTitles, Plain(word.word)));
}

/// What it costs to end a line after `word` because it leans on the next one.
double CostOfLeaning(const caption_word& word) {
    const std::string plain = Plain(word.word);
    if (IsOneOf(kTitles, plain) && word.punctuation == ".") {
        return kCostOfArticle;
    }
    if (!word.punctuation.empty()) {
        return 0.0;
    }
    if (IsOneOf(kArticles, plain) || IsOneOf(kClauseOpeners, plain) ||
        IsOneOf(kPrepositions, plain)) {
        return kCostOfArticle;
    }
    const bool leans =
        IsOneOf(kLeaningWords, plain) || std::ranges::any_of(kLeaningEndings, [&](auto ending) {
            return std::string_view(plain).ends_with(ending);
        });
    return leans ? kCostOfLeaningWord : 0.0;
}

double CostOfPlace(const caption_word& last, const caption_word& next) {
    if (!last.punctuation.empty() && CostOfLeaning(last) == 0.0) {
        return kCostAtClauseEnd;
    }
    const std::string opener = Plain(next.word);
    if (IsOneOf(kClauseOpeners, opener)) {
        return kCostBeforeClause;
    }
    return IsOneOf(kPrepositions, opener) ? kCostBeforePhrase : kCostWithinPhrase;
}

double CostOfBreak(const caption_word& last, const caption_word& next) {
    if (last.isHyphenated) {
        return kCostWithinWord;
    }
    if (EndsSentence(last)) {
        return 0.0;
    }
    const double gapMs = static_cast<double>(int64_t{next.startMs} - last.endMs);
    return CostOfPlace(last, next) + CostOfLeaning(last) -
           kGainOfPause * std::clamp(gapMs / kHeardPauseMs, 0.0, 1.0);
}

/// The search for the cheapest way through the words.
struct break_search {
    std::span<const caption_word> words;
    int64_t endMs;

    struct place {
        double cost = std::numeric_limits<double>::infinity();
        size_t first = 0; ///< where the caption that ends here begins
    };
    std::vector<place> places; ///< before each word, and after the last

    bool IsPause(size_t next) const {
        return next == words.size() ||
               int64_t{words[next].startMs} - words[next - 1].endMs >= kPauseMs;
    }

    double CostOfCaption(size_t first, size_t end, size_t length) const {
        // Squares share the words evenly among as few lines as will do.
        const double room = 1.0 - static_cast<double>(length) / kLongestLine;
        double cost = room * room;
        const int64_t nextMs = end < words.size() ? words[end].startMs : endMs;
        const int64_t shownMs =
            std::max<int64_t>(nextMs, words[end - 1].endMs) - int64_t{words[first].startMs};
        if (shownMs < kShortestCaptionMs) {
            const double shown = static_cast<double>(shownMs) / kShortestCaptionMs;
            cost += kCostOfShortTime + kCostOfNoTime * (1.0 - std::max(shown, 0.0));
        }
        if (end - first == 1 && NumCharacters(words[first].word) <= kShortWord) {
            cost += kCostOfOneShortWord;
        }
        return cost;
    }

    void EndAt(size_t end) {
        const double costOfBreak = IsPause(end) ? 0.0 : CostOfBreak(words[end - 1], words[end]);
        size_t length = 0;
        double costOfJoins = 0.0;
        for (size_t first = end; first-- > 0;) {
            const caption_word& word = words[first];
            length += NumCharacters(word.word) + NumCharacters(word.punctuation);
            const bool isAlone = first + 1 == end;
            if (!isAlone) {
                length += word.isHyphenated ? 0 : 1;
                if (IsPause(first + 1) || length > kLongestLine ||
                    int64_t{words[end - 1].endMs} - word.startMs > kLongestCaptionMs) {
                    return;
                }
                costOfJoins += EndsSentence(word) ? kCostOfJoinedSentence : 0.0;
            }
            const double cost = places[first].cost + costOfJoins + costOfBreak +
                                CostOfCaption(first, end, std::min(length, kLongestLine));
            if (cost < places[end].cost) {
                places[end] = {cost, first};
            }
        }
    }
};

} // namespace

std::vector<caption> BreakIntoCaptions(std::span<const caption_word> words, int64_t endMs) {
    break_search search{words, endMs, std::vector<break_search::place>(words.size() + 1)};
    search.places[0].cost = 0.0;
    for (size_t end = 1; end <= words.size(); ++end) {
        search.EndAt(end);
    }
    std::vector<caption> captions;
    for (size_t end = words.size(); end > 0; end = search.places[end].first) {
        const size_t first = search.places[end].first;
        captions.push_back(words.subspan(first, end - first));
    }
    std::ranges::reverse(captions);
    return captions;
}
