#include "apps/train/g2p_tree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "apps/train/parallel.h"
#include "text/character_classes.h"

namespace tessarin::training {
namespace {

/// What the engine finds beyond the ends of a word.
constexpr uint8_t kOutside = '-';
constexpr size_t kNumCodes = 256;

/// Letters in a node that outweigh what its parent says.
constexpr double kParentTrust = 2.0;

/// A letter at a place of all words' letters, and what it says: a number of its own list.
struct sample {
    size_t place;
    uint32_t chunk;
};

/// Words one after the other, with room between them for all that may be asked.
struct letter_row {
    std::vector<uint8_t> codes;   ///< numbers of letters
    std::vector<uint8_t> letters; ///< by their numbers
};

/// n times the logarithm of n, for whole numbers.
class entropy_terms {
public:
    explicit entropy_terms(size_t count) : terms(count + 1) {
        for (size_t n = 2; n <= count; ++n) {
            const auto value = static_cast<double>(n);
            terms[n] = std::llround(value * std::log2(value) * static_cast<double>(kBit));
        }
    }
    information operator()(size_t n) const { return terms[n]; }

private:
    std::vector<information> terms;
};

struct question {
    information gain = 0;
    int16_t offset = 0;
    uint8_t code = 0;
};

/// Grows the tree of one letter.
class CTreeGrower {
public:
    CTreeGrower(const letter_row& letterRow, int16_t farthest, std::vector<sample> letterSamples,
                std::vector<phone_chunk> letterChunks)
        : row(letterRow), reach(farthest), samples(std::move(letterSamples)),
          chunks(std::move(letterChunks)), terms(samples.size()),
          counts(row.letters.size() * chunks.size()), totals(row.letters.size()) {}

    std::vector<grown_node> Grow() {
        GrowNode(samples, std::vector<double>(chunks.size()));
        return std::move(nodes);
    }

private:
    size_t GrowNode(std::span<sample> part, std::span<const double> parentShares);
    question FindQuestion(std::span<const sample> part, std::span<const uint32_t> said);
    void CountAt(int16_t offset, std::span<const sample> part);
    information Gain(uint8_t code, std::span<const uint32_t> said, size_t total) const;
    std::vector<uint32_t> CountSaid(std::span<const sample> part) const;
    std::vector<double> Shares(std::span<const uint32_t> said, size_t total,
                               std::span<const double> parentShares) const;
    information Uncertainty(std::span<const uint32_t> said, size_t total) const;

    uint8_t CodeAt(const sample& each, int16_t offset) const {
        return row.codes[each.place + static_cast<size_t>(offset)];
    }

    const letter_row& row;
    int16_t reach;
    std::vector<sample> samples;
    std::vector<phone_chunk> chunks;
    entropy_terms terms;
    std::vector<uint32_t> counts; ///< of chunks by the letter at the offset that is looked at
    std::vector<uint32_t> totals; ///< of the letters at that offset
    std::vector<grown_node> nodes;
};

size_t CTreeGrower::GrowNode(std::span<sample> part, std::span<const double> parentShares) {
    const std::vector<uint32_t> said = CountSaid(part);
    const std::vector<double> shares = Shares(said, part.size(), parentShares);
    const size_t number = nodes.size();
    grown_node node;
    node.chunk = chunks[static_cast<size_t>(std::ranges::max_element(shares) - shares.begin())];
    node.uncertainty = Uncertainty(said, part.size());
    nodes.push_back(node);
    const question best = node.uncertainty > 0 ? FindQuestion(part, said) : question();
    if (best.gain > 0) {
        const auto no = std::ranges::stable_partition(part, [&](const sample& each) {
                            return CodeAt(each, best.offset) == best.code;
                        }).begin();
        const auto numYes = static_cast<size_t>(no - part.begin());
        node.letter = row.letters[best.code];
        node.offset = best.offset;
        node.yes = GrowNode(part.first(numYes), shares);
        node.no = GrowNode(part.subspan(numYes), shares);
        nodes[number] = node;
    }
    return number;
}

/// How probable each chunk is in a node. What the node's letters say counts besides what those of
/// its parent say, since a few letters may be exceptions.
std::vector<double> CTreeGrower::Shares(std::span<const uint32_t> said, size_t total,
                                        std::span<const double> parentShares) const {
    std::vector<double> shares(said.size());
    for (size_t chunk = 0; chunk < said.size(); ++chunk) {
        shares[chunk] = (said[chunk] + kParentTrust * parentShares[chunk]) /
                        (static_cast<double>(total) + kParentTrust);
    }
    return shares;
}

/// The question that says most; of several the nearest one.
question CTreeGrower::FindQuestion(std::span<const sample> part, std::span<const uint32_t> said) {
    question best;
    for (int16_t distance = 1; distance <= reach; ++distance) {
        for (const int16_t offset : {static_cast<int16_t>(-distance), distance}) {
            CountAt(offset, part);
            for (size_t code = 0; code < totals.size(); ++code) {
                const information gain =
                    totals[code] > 0 ? Gain(static_cast<uint8_t>(code), said, part.size()) : 0;
                if (gain > best.gain) {
                    best = {gain, offset, static_cast<uint8_t>(code)};
                }
            }
        }
    }
    return best;
}

/// Counts what is said by the letter at the offset. Most nodes have few letters there, so only
/// those of the count before are cleared.
void CTreeGrower::CountAt(int16_t offset, std::span<const sample> part) {
    for (size_t code = 0; code < totals.size(); ++code) {
        if (totals[code] > 0) {
            const auto first = counts.begin() + static_cast<ptrdiff_t>(code * chunks.size());
            std::fill_n(first, chunks.size(), 0u);
            totals[code] = 0;
        }
    }
    for (const sample& each : part) {
        const uint8_t code = CodeAt(each, offset);
        ++counts[code * chunks.size() + each.chunk];
        ++totals[code];
    }
}

/// What is known more when it is known whether the letter at the offset is this one.
information CTreeGrower::Gain(uint8_t code, std::span<const uint32_t> said, size_t total) const {
    const size_t numYes = totals[code];
    information gain = terms(total) - terms(numYes) - terms(total - numYes);
    const uint32_t* yes = &counts[code * chunks.size()];
    for (size_t chunk = 0; chunk < said.size(); ++chunk) {
        if (yes[chunk] != 0) {
            gain += terms(yes[chunk]) + terms(said[chunk] - yes[chunk]) - terms(said[chunk]);
        }
    }
    return gain;
}

std::vector<uint32_t> CTreeGrower::CountSaid(std::span<const sample> part) const {
    std::vector<uint32_t> said(chunks.size());
    for (const sample& each : part) {
        ++said[each.chunk];
    }
    return said;
}

information CTreeGrower::Uncertainty(std::span<const uint32_t> said, size_t total) const {
    information uncertainty = terms(total);
    for (const uint32_t count : said) {
        uncertainty -= terms(count);
    }
    return uncertainty;
}

struct letter_samples {
    std::vector<sample> samples;
    std::vector<phone_chunk> chunks; ///< what the letter can say, in order
};

letter_row LayOut(std::span<const aligned_word> words, size_t reach) {
    letter_row row;
    std::array<uint8_t, kNumCodes> numbers = {};
    std::array<bool, kNumCodes> isUsed = {};
    isUsed[kOutside] = true;
    for (const aligned_word& word : words) {
        for (const char letter : word.letters) {
            isUsed[CodeOf(letter)] = true;
        }
    }
    for (size_t code = 0; code < kNumCodes; ++code) {
        if (isUsed[code]) {
            numbers[code] = static_cast<uint8_t>(row.letters.size());
            row.letters.push_back(static_cast<uint8_t>(code));
        }
    }
    row.codes.assign(reach, numbers[kOutside]);
    for (const aligned_word& word : words) {
        for (const char letter : word.letters) {
            row.codes.push_back(numbers[CodeOf(letter)]);
        }
        row.codes.insert(row.codes.end(), reach, numbers[kOutside]);
    }
    return row;
}

/// What was said of each letter, at its places in the row that LayOut makes.
std::map<char, letter_samples> CollectSamples(std::span<const aligned_word> words, size_t reach) {
    std::map<char, std::map<phone_chunk, std::vector<size_t>>> places;
    size_t place = reach;
    for (const aligned_word& word : words) {
        for (size_t i = 0; i < word.letters.size(); ++i, ++place) {
            places[word.letters[i]][word.chunks[i]].push_back(place);
        }
        place += reach;
    }
    std::map<char, letter_samples> byLetter;
    for (const auto& [letter, chunks] : places) {
        letter_samples& collected = byLetter[letter];
        for (const auto& [chunk, placesOfChunk] : chunks) {
            for (const size_t at : placesOfChunk) {
                collected.samples.push_back({at, static_cast<uint32_t>(collected.chunks.size())});
            }
            collected.chunks.push_back(chunk);
        }
    }
    return byLetter;
}

} // namespace

std::vector<grown_tree> GrowTrees(std::span<const aligned_word> words, int16_t reach,
                                  size_t numThreads) {
    const auto room = static_cast<size_t>(reach);
    const letter_row row = LayOut(words, room);
    auto byLetter = CollectSamples(words, room);
    std::vector<grown_tree> trees;
    for (const auto& [letter, collected] : byLetter) {
        trees.push_back({letter, collected.samples.size(), {}});
    }
    std::ranges::stable_sort(trees, std::ranges::greater(), &grown_tree::count);
    ParallelFor(trees.size(), numThreads, [&](size_t i) {
        letter_samples& collected = byLetter.at(trees[i].letter);
        CTreeGrower grower(row, reach, std::move(collected.samples), std::move(collected.chunks));
        trees[i].nodes = grower.Grow();
    });
    return trees;
}

} // namespace tessarin::training
