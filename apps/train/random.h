#pragma once

#include <cstdint>
#include <string_view>

namespace tessarin::training {

/// Numbers that look random and are the same on every machine. What is drawn for a recording hangs
/// on its name alone, so it does not matter which thread draws when.
class random_source {
public:
    random_source(std::string_view name, uint64_t stream);

    uint64_t Next();
    /// In [0, 1).
    double Uniform();
    double Uniform(double low, double high) { return low + (high - low) * Uniform(); }
    /// In [low, high), all ratios alike.
    double LogUniform(double low, double high);
    /// Below `count`.
    uint64_t Index(uint64_t count) { return Next() % count; }
    bool Chance(double probability) { return Uniform() < probability; }
    /// Of mean 0 and variance 1, bell-shaped.
    double Gaussian();

private:
    uint64_t state;
};

} // namespace tessarin::training
