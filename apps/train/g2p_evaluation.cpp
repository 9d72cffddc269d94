#include "apps/train/g2p_evaluation.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "text/pronunciation/pronunciation_builder.h"

namespace tessarin::training {
namespace {

/// The fewest phonemes that are to be changed, left out or added to make one of the other.
size_t Distance(const phone_string& first, const phone_string& second) {
    std::vector<size_t> row(second.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (const size_t phone : first) {
        size_t diagonal = row[0]++;
        for (size_t i = 0; i < second.size(); ++i) {
            const size_t changed = diagonal + (phone != second[i] ? 1 : 0);
            diagonal = row[i + 1];
            row[i + 1] = std::min({changed, row[i] + 1, row[i + 1] + 1});
        }
    }
    return row.back();
}

double Percent(size_t part, size_t whole) {
    return whole > 0 ? 100.0 * static_cast<double>(part) / static_cast<double>(whole) : 0.0;
}

} // namespace

double pronunciation_errors::PhoneErrorPercent() const {
    return Percent(numWrongPhones, numPhones);
}

double pronunciation_errors::RightWordPercent() const {
    return Percent(numWords - numWrongWords, numWords);
}

phone_string Pronounce(CGraphemeToPhoneRules<char>& module, const std::string& letters) {
    PronunciationBuilder builder;
    module.ApplyRules(builder, " " + letters + " ");
    std::string phonemes;
    for (const PronunciationBuilder::group& group : builder.GetGroups()) {
        phonemes += group.front();
    }
    return ReadPhones(phonemes);
}

pronunciation_errors MeasureErrors(CGraphemeToPhoneRules<char>& module,
                                   std::span<const spelled_word> words) {
    pronunciation_errors errors;
    for (const spelled_word& word : words) {
        const phone_string said = Pronounce(module, word.letters);
        size_t fewest = std::numeric_limits<size_t>::max();
        size_t length = 0;
        for (const phone_string& pronunciation : word.pronunciations) {
            const size_t distance = Distance(said, pronunciation);
            if (distance < fewest) {
                fewest = distance;
                length = pronunciation.size();
            }
        }
        ++errors.numWords;
        errors.numWrongWords += fewest > 0 ? 1 : 0;
        errors.numPhones += length;
        errors.numWrongPhones += fewest;
    }
    return errors;
}

} // namespace tessarin::training
