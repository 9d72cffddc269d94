#include "apps/train/sequence_counts.h"

#include <numeric>

#include "model/phoneme_alphabet.h"

namespace tessarin::training {
namespace {

/// Stands before the first phoneme of all.
constexpr size_t kNothing = static_cast<size_t>(-1);

double Sum(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

} // namespace

phone_string ReadPhones(std::string_view labels) {
    std::vector<const phoneme_symbol*> symbols;
    ParsePhonemeString(labels, symbols, nullptr);
    phone_string phones;
    for (const phoneme_symbol* symbol : symbols) {
        phones.push_back(static_cast<size_t>(symbol - PhonemeAlphabet().data()));
    }
    return phones;
}

CSpeechCounter::CSpeechCounter(sequence_counts& out)
    : counts(out), last{{{kNothing, kSilencePhone}, 1.0}}, beforeWords(out.numPhones),
      behindWords(out.numPhones) {
    counts.Single(kSilencePhone) += 1.0;
}

void CSpeechCounter::Say(const std::vector<phone_string>& alternatives) {
    const double share = 1.0 / static_cast<double>(alternatives.size());
    history after;
    for (const phone_string& phones : alternatives) {
        history way;
        for (const auto& [pair, probability] : last) {
            way[pair] = probability * share;
        }
        if (atWordStart && !phones.empty()) {
            MeetWord(phones.front(), share);
        }
        for (const size_t phone : phones) {
            Append(way, phone);
        }
        for (const auto& [pair, probability] : way) {
            after[pair] += probability;
        }
    }
    last = std::move(after);
    atWordStart = false;
}

/// Counts `phone` after each history and makes it the last of them.
void CSpeechCounter::Append(history& before, size_t phone) {
    history after;
    for (const auto& [pair, probability] : before) {
        const auto& [a, b] = pair;
        if (b == phone) {
            after[pair] += probability;
            continue;
        }
        counts.Single(phone) += probability;
        counts.Pair(b, phone) += probability;
        if (a != kNothing) {
            counts.Triple(a, b, phone) += probability;
        }
        after[{b, phone}] += probability;
    }
    before = std::move(after);
}

void CSpeechCounter::MeetWord(size_t phone, double share) {
    for (const auto& [pair, probability] : last) {
        beforeWords[pair.second] += probability * share;
        if (pair.second != kSilencePhone) {
            behindWords[phone] += probability * share;
        }
    }
}

void CSpeechCounter::EndWord(double pauseProbability) {
    history paused = last;
    for (auto& [pair, probability] : paused) {
        probability *= pauseProbability;
    }
    for (auto& [pair, probability] : last) {
        probability *= 1.0 - pauseProbability;
    }
    Append(paused, kSilencePhone);
    for (const auto& [pair, probability] : paused) {
        last[pair] += probability;
        behindWords[kSilencePhone] += probability;
    }
    atWordStart = true;
}

void CSpeechCounter::AddLoneWord(const phone_string& phones, double times) {
    const double before = Sum(beforeWords);
    const double after = Sum(behindWords);
    if (phones.empty() || before == 0.0 || after == 0.0) {
        return;
    }
    for (size_t i = 0; i < phones.size(); ++i) {
        counts.Single(phones[i]) += times;
        if (i + 1 < phones.size()) {
            counts.Pair(phones[i], phones[i + 1]) += times;
        }
        if (i + 2 < phones.size()) {
            counts.Triple(phones[i], phones[i + 1], phones[i + 2]) += times;
        }
    }
    const size_t size = phones.size();
    for (size_t edge = 0; edge < counts.numPhones; ++edge) {
        const double timesBehind = times * behindWords[edge] / after;
        counts.Pair(phones[size - 1], edge) += timesBehind;
        if (size > 1) {
            counts.Triple(phones[size - 2], phones[size - 1], edge) += timesBehind;
            counts.Triple(edge, phones[0], phones[1]) += times * beforeWords[edge] / before;
        }
    }
}

} // namespace tessarin::training
