#include "text/pronunciation/rule_matching.h"

#include "text/character_classes.h"

#include <array>
#include <cstdint>
#include <set>
#include <utility>

namespace tessarin {
namespace {

constexpr ptrdiff_t kForward = 1;
constexpr ptrdiff_t kBackward = -1;
constexpr ptrdiff_t kClassNameLength = 4;

/// Most patterns are settled after a few tries. One that takes more remembers from then on what has
/// failed, so that its time is linear in its length and in that of the word instead of exponential.
constexpr int kTriesWithoutMemory = 64;

/// Steps that it takes to find a class by its name.
constexpr size_t kClassSteps = 16;

/// States that are cleared in one step.
constexpr size_t kStatesPerStep = 64;

/// The symbols that stand for letters of a kind, as bits.
enum letter_kind : uint8_t {
    kVowel = 1,
    kConsonant = 2,
    kVoicedConsonant = 4,
    kFrontVowel = 8,
};

/// The kinds of each character, by its code.
constexpr std::array<uint8_t, 256> kLetterKinds = [] {
    constexpr std::pair<letter_kind, std::string_view> kMembers[] = {
        {kVowel, "AEIOU"},
        {kConsonant, "BCDFGHJKLMNPQRSTVWXYZ"},
        {kVoicedConsonant, "BDVGJLMNRWZ"},
        {kFrontVowel, "EIY"},
    };
    std::array<uint8_t, 256> kinds = {};
    for (const auto& [kind, letters] : kMembers) {
        for (const char letter : letters) {
            kinds[CodeOf(letter)] = static_cast<uint8_t>(kinds[CodeOf(letter)] | kind);
        }
    }
    return kinds;
}();

bool Is(letter_kind kind, char letter) {
    return (kLetterKinds[CodeOf(letter)] & kind) != 0;
}
bool IsVowel(char letter) {
    return Is(kVowel, letter);
}
bool IsConsonant(char letter) {
    return Is(kConsonant, letter);
}

/// One pattern held against one word. Both are walked in steps of +1, for the context on the right,
/// or -1, for that on the left; the pattern fits when its end in that direction is reached.
class pattern_match {
public:
    pattern_match(const CGraphemeToPhoneRules<char>& languageModule,
                  std::string_view contextPattern, const std::string& paddedWord,
                  step_budget& stepBudget)
        : module(languageModule), pattern(contextPattern), word(paddedWord), budget(stepBudget) {}

    bool Fits(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step);

private:
    bool InPattern(ptrdiff_t at) const { return at >= 0 && at < std::ssize(pattern); }
    /// The terminating zero counts as a character of the word.
    bool InWord(ptrdiff_t place) const { return place >= 0 && place <= std::ssize(word); }
    char Letter(ptrdiff_t place) const { return word.c_str()[place]; }

    /// The index of a place in the pattern and one in the word, by direction.
    size_t State(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step) const {
        const size_t row = static_cast<size_t>(at) + (step == kForward ? 0 : pattern.size());
        return row * (word.size() + 1) + static_cast<size_t>(place);
    }

    bool Walk(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step);
    bool FitsOne(char symbol, ptrdiff_t& place, ptrdiff_t step) const;
    bool FitsSuffix(ptrdiff_t& place, ptrdiff_t step) const;
    bool FitsNoConsonant(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step);
    bool FitsClass(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step);
    const std::set<char>* FindLetterClass(ptrdiff_t at, ptrdiff_t step) const;
    template <class Test>
    bool FitsRun(Test isMember, ptrdiff_t at, ptrdiff_t rest, ptrdiff_t start, ptrdiff_t step);

    const CGraphemeToPhoneRules<char>& module;
    std::string_view pattern;
    const std::string& word;
    step_budget& budget;
    int tries = 0;
    std::vector<bool> failed;     ///< by State: the pattern from there on does not fit
    std::vector<bool> failedRuns; ///< by State: nor does a run of one letter or more from there on
};

bool pattern_match::Fits(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step) {
    if (!InPattern(at)) {
        return true;
    }
    if (!InWord(place)) {
        return false;
    }
    if (tries < kTriesWithoutMemory) {
        ++tries;
        return Walk(at, place, step);
    }
    if (failed.empty()) {
        const size_t numStates = 2 * pattern.size() * (word.size() + 1);
        if (!budget.Take(numStates / kStatesPerStep)) {
            return false;
        }
        failed.resize(numStates);
        failedRuns.resize(numStates);
    }
    const size_t state = State(at, place, step);
    if (failed[state]) {
        return false;
    }
    failed[state] = !Walk(at, place, step);
    return !failed[state];
}

bool pattern_match::Walk(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step) {
    for (; InPattern(at); at += step) {
        if (!InWord(place) || !budget.Take()) {
            return false;
        }
        switch (const char symbol = pattern[static_cast<size_t>(at)]) {
        case '#':
            return FitsRun(IsVowel, at, at + step, place, step);
        case ':':
            return FitsNoConsonant(at, place, step) ||
                   FitsRun(IsConsonant, at, at + step, place, step);
        case '&':
        case '!':
        case '*':
            return FitsClass(at, place, step);
        default:
            if (!FitsOne(symbol, place, step)) {
                return false;
            }
        }
    }
    return true;
}

/// Tests a symbol of one length and moves over what it fits.
bool pattern_match::FitsOne(char symbol, ptrdiff_t& place, ptrdiff_t step) const {
    if (symbol == '%') {
        return FitsSuffix(place, step);
    }
    const char letter = Letter(place);
    place += step;
    switch (symbol) {
    case '^':
        return IsConsonant(letter);
    case '.':
        return Is(kVoicedConsonant, letter);
    case '+':
        return Is(kFrontVowel, letter);
    default:
        return letter == symbol && (IsLetter(CodeOf(symbol)) || symbol == '\'' || symbol == ' ');
    }
}

bool pattern_match::FitsSuffix(ptrdiff_t& place, ptrdiff_t step) const {
    const char* text = word.c_str() + place;
    const trie<int, char>* suffix = step == kForward
                                        ? module.suffixes.FindLongestPrefix(text)
                                        : module.suffixes.FindLongestPrefixBackward(text, ' ');
    if (suffix == nullptr) {
        return false;
    }
    place += step * suffix->GetValue();
    return true;
}

/// The attempt of `:` to stand for nothing.
// Kept: on the left it reads the pattern forwards, from the symbol before the `:` and over the `:`
// itself, against the letters forwards; rule tables of languages are tuned to what that accepts.
bool pattern_match::FitsNoConsonant(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step) {
    return Fits(at + step, place, kForward);
}

bool pattern_match::FitsClass(ptrdiff_t at, ptrdiff_t place, ptrdiff_t step) {
    const std::set<char>* letters = budget.Take(kClassSteps) ? FindLetterClass(at, step) : nullptr;
    if (letters == nullptr) {
        return false;
    }
    const auto isMember = [letters](char letter) { return letters->contains(letter); };
    const ptrdiff_t rest = at + kClassNameLength * step;
    switch (pattern[static_cast<size_t>(at)]) {
    case '&':
        return isMember(Letter(place)) && Fits(rest, place + step, step);
    case '*':
        return Fits(rest, place, step) || FitsRun(isMember, at, rest, place, step);
    default:
        return FitsRun(isMember, at, rest, place, step);
    }
}

/// The class whose name stands at `at`, or ends there on the way to the left: one without letters
/// when there is none of this name, and null when the pattern has no room for a name.
const std::set<char>* pattern_match::FindLetterClass(ptrdiff_t at, ptrdiff_t step) const {
    const ptrdiff_t start = step == kForward ? at : at - (kClassNameLength - 1);
    if (start < 0 || start + kClassNameLength > std::ssize(pattern)) {
        return nullptr;
    }
    std::string name(pattern.substr(static_cast<size_t>(start), kClassNameLength));
    if (name.front() != '&') {
        name.front() = name.back() = '&';
    }
    static const std::set<char> noLetters;
    const auto found = module.letter_classes.find(name);
    return found == module.letter_classes.end() ? &noLetters : &found->second;
}

/// Moves over one letter after the other, and tries `rest`, the pattern after the symbol at `at`,
/// after each.
template <class Test>
bool pattern_match::FitsRun(Test isMember, ptrdiff_t at, ptrdiff_t rest, ptrdiff_t start,
                            ptrdiff_t step) {
    const auto hasFailed = [&](ptrdiff_t place) {
        return !failedRuns.empty() && failedRuns[State(at, place, step)];
    };
    ptrdiff_t place = start;
    while (InWord(place) && isMember(Letter(place)) && !hasFailed(place)) {
        place += step;
        if (!budget.Take()) {
            return false;
        }
        if (Fits(rest, place, step)) {
            return true;
        }
    }
    if (!failedRuns.empty()) { // a run that starts further on would end at the same letters
        for (; start != place; start += step) {
            failedRuns[State(at, start, step)] = true;
        }
    }
    return false;
}

} // namespace

bool MatchLeftContext(const CGraphemeToPhoneRules<char>& module, std::string_view left,
                      const std::string& word, ptrdiff_t place, step_budget& budget) {
    return left.empty() ||
           (left.size() <= kMaxContextLength &&
            pattern_match(module, left, word, budget).Fits(std::ssize(left) - 1, place, kBackward));
}

bool MatchRightContext(const CGraphemeToPhoneRules<char>& module, std::string_view right,
                       const std::string& word, ptrdiff_t place, step_budget& budget) {
    return right.empty() || (right.size() <= kMaxContextLength &&
                             pattern_match(module, right, word, budget).Fits(0, place, kForward));
}

} // namespace tessarin
