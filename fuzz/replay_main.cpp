// Runs a fuzz target over its seeds without a fuzzing engine: each seed whole, cut short at every
// byte, and with a few bytes changed. The changes are the same in every run.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

using bytes = std::vector<uint8_t>;

constexpr size_t kMostTruncations = 5000;
constexpr int kMutations = 500;

void Run(const uint8_t* data, size_t size) {
    // A block of exactly this size lets the address sanitizer see a read past it.
    const std::unique_ptr<uint8_t[]> copy(new uint8_t[size]);
    std::copy_n(data, size, copy.get());
    LLVMFuzzerTestOneInput(copy.get(), size);
}

/// At every byte; in a long seed at every byte of its beginning, then in even steps.
void RunTruncations(const bytes& seed) {
    const size_t dense = std::min(seed.size(), kMostTruncations / 2);
    for (size_t size = 0; size < dense; ++size) {
        Run(seed.data(), size);
    }
    const size_t step = 1 + (seed.size() - dense) / (kMostTruncations / 2);
    for (size_t size = dense; size < seed.size(); size += step) {
        Run(seed.data(), size);
    }
}

/// A random byte, a flipped bit or a number from the edges of its range, one to four times.
bytes Mutate(bytes input, std::mt19937& random) {
    static constexpr uint8_t kEdges[] = {0x00, 0x01, 0x7F, 0x80, 0xFF};
    const auto below = [&random](size_t limit) { return random() % limit; };
    for (size_t changes = 1 + below(4); changes > 0 && !input.empty(); --changes) {
        // Headers stand first, so half of the changes fall on the first 64 bytes.
        const size_t reach = below(2) == 0 ? std::min<size_t>(64, input.size()) : input.size();
        const size_t place = below(reach);
        switch (below(4)) {
        case 0:
            input[place] = static_cast<uint8_t>(random());
            break;
        case 1:
            input[place] ^= static_cast<uint8_t>(1u << below(8));
            break;
        case 2:
            input[place] = kEdges[below(std::size(kEdges))];
            break;
        default:
            for (size_t i = place; i < std::min(place + 4, input.size()); ++i) {
                input[i] = i == place + 3 ? 0x7F : 0xFF;
            }
        }
    }
    return input;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_DIRECTORY\n", argv[0]);
        return 1;
    }
    size_t seeds = 0;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1], error)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const bytes seed{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        std::mt19937 random(1);
        Run(seed.data(), seed.size());
        RunTruncations(seed);
        for (int i = 0; i < kMutations; ++i) {
            const bytes mutant = Mutate(seed, random);
            Run(mutant.data(), mutant.size());
        }
        ++seeds;
    }
    std::printf("%zu seeds\n", seeds);
    return seeds > 0 ? 0 : 1;
}
