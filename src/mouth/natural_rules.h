#pragma once

namespace tessarin {

/// The text of data/rules/natural.rules, which is built into the library.
struct natural_rules {
    const char* text;
};
extern const natural_rules kNaturalRules;

} // namespace tessarin
