#include "mouth/natural_rules.h"

#include <algorithm>
#include <locale>
#include <sstream>

#include "articulation/rule_text.h"

namespace tessarin {

std::string NaturalRulesWithin(int32_t lookAheadMs) {
    articulator_rules rules;
    (void)ReadRuleText(kNaturalRules.text, rules); // a test reads it
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "framerate " << rules.frame_rate << "\nclosed ";
    for (const phoneme_label label : rules.closed) {
        text << label.Text();
    }
    for (const auto& [label, rule] : rules.rules) {
        text << '\n'
             << label.Text() << ' ' << rule.strength << ' ' << std::min(rule.attack, lookAheadMs)
             << ' ' << rule.release << ' ' << rule.early_ms << ' ' << rule.early_strength << ' '
             << rule.late_ms << ' ' << rule.late_strength;
    }
    // An articulator looks back for sounds that linger as far as the largest attack reaches, so one
    // stays large, of a label that no sound has.
    text << "\nQQ 0 " << rules.largest_attack << " 0\n";
    return text.str();
}

} // namespace tessarin
