#include "articulation/rule_text.h"

#include <algorithm>
#include <cstddef>
#include <locale>
#include <sstream>
#include <string>

#include "base/trunc_sat.h"
#include "model/phoneme_alphabet.h"

namespace tessarin {
namespace {

constexpr float kLatestVersion = 1.6f;

/// The text as tokens between white space; line ends matter where a reader says so.
class rule_reader {
public:
    rule_reader(std::string_view text, articulator_rules& destination)
        : stream(std::string(text)), rules(destination) {
        stream.imbue(std::locale::classic());
    }

    error_code Read() {
        std::string token;
        while (stream >> token) {
            const error_code code = ReadEntry(token);
            if (code != kNoError) {
                return code;
            }
        }
        return kNoError;
    }

private:
    error_code ReadEntry(const std::string& token);
    error_code ReadVersion();
    error_code ReadClosed();
    template <class Field> error_code ReadForLabels(Field articulator_rule::*field);
    error_code ReadRow(const std::string& labels);
    error_code ReadFurtherNumbers(articulator_rule& rule);
    void SkipLine();
    bool LineEnds();

    template <class... Number> error_code ReadNumbers(Number&... numbers) {
        return (stream >> ... >> numbers) ? kNoError : kInvalidFile;
    }

    /// A number of the text for a field: whole fields take the truncated number.
    template <class Field> error_code ReadSetting(Field& field) {
        float number = 0.0f;
        const error_code code = ReadNumbers(number);
        if (code == kNoError) {
            if constexpr (std::is_same_v<Field, float>) {
                field = number;
            } else {
                field = TruncSat<Field>(number);
            }
        }
        return code;
    }

    std::istringstream stream;
    articulator_rules& rules;
};

error_code rule_reader::ReadEntry(const std::string& token) {
    if (token.starts_with("//")) {
        SkipLine();
        return kNoError;
    }
    if (token == "version") {
        return ReadVersion();
    }
    if (token == "closed") {
        return ReadClosed();
    }
    if (token == "no_af_phn_smooth") {
        rules.no_smoothing = true;
        return kNoError;
    }
    if (token == "global_gain") {
        return ReadSetting(rules.global_gain);
    }
    if (token == "global_offset") {
        return ReadSetting(rules.global_offset);
    }
    if (token == "gain") {
        return ReadForLabels(&articulator_rule::gain);
    }
    if (token == "offset") {
        return ReadForLabels(&articulator_rule::offset);
    }
    if (token == "framerate") {
        return ReadSetting(rules.frame_rate);
    }
    // Kept: a misspelt word is a row like any other run of letters, so that texts may name phonemes
    // that the alphabet does not have.
    return ReadRow(token);
}

error_code rule_reader::ReadVersion() {
    float version = 0.0f;
    const error_code code = ReadNumbers(version);
    return code == kNoError && version > kLatestVersion ? kNewerVersion : code;
}

error_code rule_reader::ReadClosed() {
    std::string token;
    stream >> token;
    std::vector<const phoneme_symbol*> symbols;
    const bool known = ParsePhonemeString(token, symbols, nullptr);
    for (const phoneme_symbol* symbol : symbols) {
        rules.closed.insert(phoneme_label(symbol->label));
    }
    return known ? kNoError : kInvalidFile;
}

template <class Field> error_code rule_reader::ReadForLabels(Field articulator_rule::*field) {
    std::string token;
    stream >> token;
    Field value = {};
    const error_code code = ReadSetting(value);
    if (code == kNoError) {
        for (const phoneme_label label : SplitLabels(token)) {
            rules.rules[label].*field = value;
        }
    }
    return code;
}

error_code rule_reader::ReadRow(const std::string& labels) {
    articulator_rule rule = {};
    error_code code = ReadNumbers(rule.strength, rule.attack, rule.release);
    if (code == kNoError) {
        code = ReadFurtherNumbers(rule);
    }
    if (code != kNoError) {
        return code;
    }
    rules.largest_attack = std::max(rules.largest_attack, rule.attack);
    rules.largest_release = std::max(rules.largest_release, rule.release);
    // Kept: a row takes back the gain and offset that its phonemes had; texts give those after it.
    for (const phoneme_label label : SplitLabels(labels)) {
        label.CopyTo(rule.label);
        rules.rules[label] = rule;
    }
    return kNoError;
}

error_code rule_reader::ReadFurtherNumbers(articulator_rule& rule) {
    if (LineEnds()) {
        rule.early_strength = rule.strength;
        rule.late_strength = rule.strength;
        return kNoError;
    }
    const error_code code =
        ReadNumbers(rule.early_ms, rule.early_strength, rule.late_ms, rule.late_strength);
    // Kept: at the end of the text what is missing is 0, since only a line end brings the defaults.
    return stream.eof() ? kNoError : code;
}

void rule_reader::SkipLine() {
    while (stream && !LineEnds()) {
        stream.get();
    }
}

/// Passes blanks and returns whether a line end follows.
bool rule_reader::LineEnds() {
    constexpr auto kEnd = std::istringstream::traits_type::eof();
    for (int next = stream.peek(); next != kEnd; next = stream.peek()) {
        if (next == '\r' || next == '\n') {
            return true;
        }
        if (!std::isspace(static_cast<char>(next), std::locale::classic())) {
            return false;
        }
        stream.get();
    }
    return false;
}

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

} // namespace

std::vector<phoneme_label> SplitLabels(std::string_view text) {
    std::vector<phoneme_label> labels;
    for (size_t place = 0; place < text.size(); ++place) {
        if (!IsLetter(text[place])) {
            continue;
        }
        const bool takesNext = text[place] <= 'Z';
        labels.emplace_back(text.substr(place, takesNext ? 2 : 1));
        place += takesNext ? 1 : 0;
    }
    return labels;
}

error_code ReadRuleText(std::string_view text, articulator_rules& rules) {
    rules.rules.clear();
    return rule_reader(text, rules).Read();
}

} // namespace tessarin
