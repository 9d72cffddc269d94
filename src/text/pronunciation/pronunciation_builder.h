#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tessarin {

/// The longest phoneme string of a language file that is said; the rest of a longer one is left
/// out. Each letter of a text may ask for it again. Those of real languages have some tens of
/// characters.
inline constexpr size_t kMaxPhonemesLength = 1024;

/// Collects the pronunciation of one token: groups that are said one after the other, each a
/// phoneme string or several to choose from.
class PronunciationBuilder {
public:
    using group = std::vector<std::string>;

    /// Adds phonemes, without the white space in them. They run on in the last group, unless that
    /// is a choice or `startNew` asks for a group of their own. White space alone adds nothing.
    void AppendSegment(std::string_view text, bool startNew);

    /// As AppendSegment; a text that ends in white space is a whole word and starts a group.
    void AppendPhonemes(std::string_view text, bool startNew);

    /// A choice is collected apart and becomes one group when it is committed.
    void BeginAlternatives();
    void AddAlternative(std::string_view text);
    void CommitAlternatives();

    /// Adds a choice of ways to breathe, or none of them `withSilence`.
    void AddBreathAlternatives(bool withSilence);

    /// Drops all groups and the choice at hand.
    void Clear();

    const std::vector<group>& GetGroups() const { return groups; }

private:
    std::vector<group> groups;
    group pending;
};

} // namespace tessarin
