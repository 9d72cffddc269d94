#pragma once

#include <cstdint>

namespace tessarin {

/// Linear prediction by the autocorrelation method, x[i] ~ sum over j of a[j] x[i - j] (Makhoul,
/// "Linear prediction: a tutorial review").
class LPC {
public:
    virtual ~LPC() = default;

    /// Analyses the `n` values at `x` with a predictor of `order` coefficients, at most 31; those
    /// from n on are 0. Each output may be null: `residual` receives `n` values, the first order +
    /// 1 of them 0; `coefficients` and `reflection` order + 1 values with index 0 unused;
    /// `logAreas` order + 1 values, the first of which stays unset. Returns 0.
    virtual int32_t Analyse(const float* x, int32_t n, int32_t order, float* residual,
                            float* coefficients, float* reflection, float* logAreas);
};

} // namespace tessarin
