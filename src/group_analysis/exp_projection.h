// Variable projection for sums of exponentials. For given time constants the
// amplitudes and the offset enter the model linearly, so they follow from a
// linear least-squares solve and only the time constants are left to search.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "group_analysis/simplex.h"

namespace vess::group {

class ExpProjection {
public:
    // With fixedAmplitudes the amplitudes stay at those values (tau1, A1, ...
    // order of ExpParameters) and only the offset, if any, is solved for.
    ExpProjection(const ExpModel& model, std::span<const double> x, std::span<const double> y,
                  std::optional<ExpParameters> fixedAmplitudes = std::nullopt);
    ~ExpProjection();
    ExpProjection(const ExpProjection&) = delete;
    ExpProjection& operator=(const ExpProjection&) = delete;

    std::size_t Points() const { return x_.size(); }
    int Exponentials() const { return model_.exponentials; }

    // Residuals model - y for the time constants exp(logTau[k]), with the
    // linear parameters at their least-squares values; returns their sum of
    // squares.
    double Residuals(std::span<const double> logTau, std::span<double> residuals);
    double Rss(std::span<const double> logTau);
    // The full parameter vector at the time constants exp(logTau[k]).
    ExpParameters Parameters(std::span<const double> logTau);
    // Whether the last solve found the exponentials linearly dependent.
    bool Degenerate() const { return degenerate_; }

private:
    void Solve(std::span<const double> logTau);
    // The linear parameters by an orthogonal factorisation; false when the
    // columns are dependent.
    bool SolveOrthogonal();
    void SolveBySvd();
    // The linear columns into a (the exponentials unless fixed, the offset).
    void Fill(double* rows, std::size_t stride, std::size_t expColumns) const;

    struct Workspace;
    ExpModel model_;
    std::span<const double> x_, y_;
    std::optional<ExpParameters> fixed_;
    std::size_t linear_ = 0;                 // number of linear parameters
    double step_ = 0;                        // the spacing of x when it is even, else 0
    std::vector<double> columns_, target_, coefficients_, residuals_, q_;
    bool degenerate_ = false;
    std::unique_ptr<Workspace> work_;
};

}  // namespace vess::group
