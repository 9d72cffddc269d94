#pragma once

#include <string>

#include "articulation/articulator_rule.h"

namespace tessarin {

/// The text of data/rules/natural.rules, which is built into the library.
struct natural_rules {
    const char* text;
};
extern const natural_rules kNaturalRules;

/// These rules, in which no phoneme is prepared for more than `lookAheadMs` before it begins: what
/// a mouth can do that knows only so much of what comes.
std::string NaturalRulesWithin(int32_t lookAheadMs);

} // namespace tessarin
