#pragma once

namespace tessarin {

/// One rule of a table: letters, the context that they must stand in, and how they sound then. The
/// first rule of a table that fits wins; a table ends with a rule whose `match` is null.
struct GraphemeRule {
    const char* left;     ///< context pattern that ends where the match begins; empty: anything
    const char* match;    ///< the letters that the rule consumes
    const char* right;    ///< context pattern after the match; empty: anything
    const char* phonemes; ///< empty for silent letters; after a `?` a choice, separated by blanks
};

} // namespace tessarin
