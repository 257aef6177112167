#include "group_analysis/exp_projection.h"

#include <algorithm>
#include <cmath>

#include <gsl/gsl_linalg.h>

namespace vess::group {

namespace {
// Below this ratio of the largest diagonal element of R the exponentials are
// taken as linearly dependent, and the solve goes through a truncated SVD.
constexpr double kRankTolerance = 1e-12;
}  // namespace

struct ExpProjection::Workspace {
    gsl_matrix* a = nullptr;   // the columns, then their QR or U
    gsl_vector* tau = nullptr;
    gsl_vector* b = nullptr;
    gsl_vector* c = nullptr;
    gsl_vector* r = nullptr;
    gsl_matrix* v = nullptr;
    gsl_vector* s = nullptr;
    ~Workspace() {
        for (gsl_vector* p : {tau, b, c, r, s})
            if (p) gsl_vector_free(p);
        if (a) gsl_matrix_free(a);
        if (v) gsl_matrix_free(v);
    }
};

ExpProjection::ExpProjection(const ExpModel& model, std::span<const double> x,
                             std::span<const double> y, std::optional<ExpParameters> fixedAmplitudes)
    : model_(model), x_(x), y_(y), fixed_(fixedAmplitudes), work_(std::make_unique<Workspace>()) {
    const std::size_t m = x.size(), n = std::size_t(model.exponentials);
    linear_ = (fixed_ ? 0 : n) + (model.offset ? 1 : 0);
    columns_.resize(n * m);
    target_.resize(m);
    residuals_.resize(m);
    coefficients_.assign(linear_, 0.0);
    if (linear_ > 0 && m >= linear_) {
        work_->a = gsl_matrix_alloc(m, linear_);
        work_->tau = gsl_vector_alloc(linear_);
        work_->b = gsl_vector_alloc(m);
        work_->c = gsl_vector_alloc(linear_);
        work_->r = gsl_vector_alloc(m);
        work_->v = gsl_matrix_alloc(linear_, linear_);
        work_->s = gsl_vector_alloc(linear_);
    }
}

ExpProjection::~ExpProjection() = default;

void ExpProjection::Solve(std::span<const double> logTau) {
    const std::size_t m = x_.size(), n = std::size_t(model_.exponentials);
    for (std::size_t k = 0; k < n; ++k) {
        const double rate = std::exp(-logTau[k]);
        for (std::size_t i = 0; i < m; ++i) columns_[k * m + i] = std::exp(-x_[i] * rate);
    }
    std::copy(y_.begin(), y_.end(), target_.begin());
    if (fixed_)
        for (std::size_t k = 0; k < n; ++k)
            for (std::size_t i = 0; i < m; ++i)
                target_[i] -= (*fixed_)[2 * k + 1] * columns_[k * m + i];
    degenerate_ = false;
    if (linear_ == 0 || !work_->a) {
        std::fill(coefficients_.begin(), coefficients_.end(), 0.0);
        return;
    }
    Workspace& w = *work_;
    const std::size_t expColumns = fixed_ ? 0 : n;
    for (std::size_t i = 0; i < m; ++i) {
        for (std::size_t k = 0; k < expColumns; ++k) gsl_matrix_set(w.a, i, k, columns_[k * m + i]);
        if (model_.offset) gsl_matrix_set(w.a, i, linear_ - 1, 1.0);
        gsl_vector_set(w.b, i, target_[i]);
    }
    gsl_linalg_QR_decomp(w.a, w.tau);
    double largest = 0, smallest = HUGE_VAL;
    for (std::size_t k = 0; k < linear_; ++k) {
        const double d = std::fabs(gsl_matrix_get(w.a, k, k));
        largest = std::max(largest, d);
        smallest = std::min(smallest, d);
    }
    if (smallest > kRankTolerance * largest) {
        gsl_linalg_QR_lssolve(w.a, w.tau, w.b, w.c, w.r);
    } else {
        // Dependent exponentials: the minimum-norm solution of a truncated SVD.
        degenerate_ = true;
        for (std::size_t i = 0; i < m; ++i) {
            for (std::size_t k = 0; k < expColumns; ++k) gsl_matrix_set(w.a, i, k, columns_[k * m + i]);
            if (model_.offset) gsl_matrix_set(w.a, i, linear_ - 1, 1.0);
        }
        gsl_linalg_SV_decomp_jacobi(w.a, w.v, w.s);
        gsl_vector_set_zero(w.c);
        const double top = gsl_vector_get(w.s, 0);
        for (std::size_t j = 0; j < linear_; ++j) {
            const double sj = gsl_vector_get(w.s, j);
            if (!(sj > kRankTolerance * top)) continue;
            double dot = 0;
            for (std::size_t i = 0; i < m; ++i) dot += gsl_matrix_get(w.a, i, j) * target_[i];
            for (std::size_t k = 0; k < linear_; ++k)
                gsl_vector_set(w.c, k, gsl_vector_get(w.c, k) + dot / sj * gsl_matrix_get(w.v, k, j));
        }
    }
    for (std::size_t k = 0; k < linear_; ++k) coefficients_[k] = gsl_vector_get(w.c, k);
}

double ExpProjection::Residuals(std::span<const double> logTau, std::span<double> residuals) {
    Solve(logTau);
    const std::size_t m = x_.size(), n = std::size_t(model_.exponentials);
    const std::size_t expColumns = fixed_ ? 0 : n;
    double rss = 0;
    for (std::size_t i = 0; i < m; ++i) {
        double fitted = model_.offset ? coefficients_[linear_ - 1] : 0.0;
        for (std::size_t k = 0; k < expColumns; ++k) fitted += coefficients_[k] * columns_[k * m + i];
        const double r = fitted - target_[i];
        residuals[i] = r;
        rss += r * r;
    }
    return std::isfinite(rss) ? rss : HUGE_VAL;
}

double ExpProjection::Rss(std::span<const double> logTau) { return Residuals(logTau, residuals_); }

ExpParameters ExpProjection::Parameters(std::span<const double> logTau) {
    Solve(logTau);
    ExpParameters p{};
    for (int k = 0; k < model_.exponentials; ++k) {
        p[std::size_t(2 * k)] = std::exp(logTau[std::size_t(k)]);
        p[std::size_t(2 * k + 1)] = fixed_ ? (*fixed_)[std::size_t(2 * k + 1)] : coefficients_[std::size_t(k)];
    }
    if (model_.offset) p[6] = coefficients_[linear_ - 1];
    return p;
}

}  // namespace vess::group
