#pragma once

#include <string_view>
#include <vector>

#include "articulation/articulator_rule.h"
#include "tessarin/error_codes.h"

namespace tessarin {

/// Cuts a run of phonemes such as "CHjzTH" into its labels. An upper-case letter takes the next
/// character with it; what is not a letter is skipped. Labels need not be in the alphabet.
std::vector<phoneme_label> SplitLabels(std::string_view text);

/// Reads a rule text: lines of a phoneme string and its numbers (strength, attack, release and
/// perhaps early_ms, early_strength, late_ms, late_strength), and lines that begin with one of the
/// words version, closed, no_af_phn_smooth, global_gain, global_offset, gain, offset, framerate.
/// The rules that were there give way to those of the text; all else stays unless the text sets it.
/// Returns 0, 12 for a text that is malformed or 21 for a version above 1.6; what was read before
/// stays.
error_code ReadRuleText(std::string_view text, articulator_rules& rules);

} // namespace tessarin
