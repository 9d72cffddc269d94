#include "apps/tessarin/writers/reduced_keys.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "apps/tessarin/console/failure.h"
#include "tessarin/tessarin_c.h"

std::vector<uint32_t> ReduceKeys(const std::vector<int32_t>& timesMs,
                                 const std::vector<std::vector<double>>& rows, double tolerance) {
    if (rows.empty()) {
        return {};
    }
    std::vector<double> weights;
    for (const std::vector<double>& row : rows) {
        weights.insert(weights.end(), row.begin(), row.end());
    }
    std::vector<uint32_t> kept(rows.size());
    uint32_t count = 0;
    const int32_t code = tessarin_reduce_keys(
        timesMs.data(), weights.data(), static_cast<uint32_t>(rows.size()),
        static_cast<uint32_t>(rows.front().size()), tolerance, kept.data(), &count);
    if (code != TESSARIN_OK) {
        throw EngineFailure("--tolerance", code);
    }
    kept.resize(count);
    return kept;
}

void ReduceCurves(double tolerance, timed_result* result) {
    for (weight_curve& curve : result->curves) {
        std::vector<int32_t> timesMs;
        std::vector<std::vector<double>> rows;
        for (const auto& [ms, weight] : curve.keys) {
            timesMs.push_back(ms);
            rows.push_back({static_cast<double>(weight)});
        }
        // Two keys at one time are a jump, which no line may lead across.
        if (std::ranges::adjacent_find(timesMs, std::greater_equal<>()) != timesMs.end()) {
            continue;
        }
        std::vector<std::pair<int32_t, float>> keys;
        for (const uint32_t each : ReduceKeys(timesMs, rows, tolerance)) {
            keys.push_back(curve.keys[each]);
        }
        curve.keys = std::move(keys);
    }
}
