#include "group_analysis/exp_projection.h"

#include <algorithm>
#include <cmath>

#include <gsl/gsl_linalg.h>

namespace vess::group {

namespace {
// Below this ratio of the largest diagonal element of R the exponentials are
// taken as linearly dependent, and the solve goes through a truncated SVD.
constexpr double kRankTolerance = 1e-12;
// On evenly spaced x the exponentials are powers, taken by multiplication
// from an exact value every so many points (rounding stays near 1e-15).
constexpr std::size_t kExactEvery = 32;
constexpr double kEvenSpacing = 1e-9;

// exp(-x[i] * rate) for every i into out.
void Exponential(std::span<const double> x, double step, double rate, double* out) {
    const std::size_t m = x.size();
    if (step == 0) {
        for (std::size_t i = 0; i < m; ++i) out[i] = std::exp(-x[i] * rate);
        return;
    }
    const double factor = std::exp(-step * rate);
    for (std::size_t i = 0; i < m; ++i) out[i] = i % kExactEvery ? out[i - 1] * factor : std::exp(-x[i] * rate);
}
}  // namespace

// The truncated SVD of dependent columns: A = U S V'.
struct ExpProjection::Workspace {
    gsl_matrix* a = nullptr;   // the columns, then U
    gsl_matrix* v = nullptr;
    gsl_vector* s = nullptr;
    ~Workspace() {
        if (s) gsl_vector_free(s);
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
    if (m >= 2) {
        const double step = (x.back() - x.front()) / double(m - 1);
        bool even = step > 0;
        for (std::size_t i = 0; i < m && even; ++i)
            even = std::fabs(x[i] - (x.front() + step * double(i))) <= kEvenSpacing * std::fabs(x.back() - x.front());
        step_ = even ? step : 0;
    }
    if (linear_ > 0 && m >= linear_) {
        work_->a = gsl_matrix_alloc(m, linear_);
        work_->v = gsl_matrix_alloc(linear_, linear_);
        work_->s = gsl_vector_alloc(linear_);
    }
}

ExpProjection::~ExpProjection() = default;

void ExpProjection::Solve(std::span<const double> logTau) {
    const std::size_t m = x_.size(), n = std::size_t(model_.exponentials);
    for (std::size_t k = 0; k < n; ++k) Exponential(x_, step_, std::exp(-logTau[k]), &columns_[k * m]);
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
    if (SolveOrthogonal()) return;
    degenerate_ = true;
    SolveBySvd();
}

void ExpProjection::SolveBySvd() {
    // Dependent exponentials: the minimum-norm solution of a truncated SVD.
    Workspace& w = *work_;
    Fill(w.a->data, w.a->tda, fixed_ ? 0 : std::size_t(model_.exponentials));
    gsl_linalg_SV_decomp_jacobi(w.a, w.v, w.s);
    std::fill(coefficients_.begin(), coefficients_.end(), 0.0);
    const double top = gsl_vector_get(w.s, 0);
    for (std::size_t j = 0; j < linear_; ++j) {
        const double sj = gsl_vector_get(w.s, j);
        if (!(sj > kRankTolerance * top)) continue;
        double dot = 0;
        for (std::size_t i = 0; i < x_.size(); ++i) dot += gsl_matrix_get(w.a, i, j) * target_[i];
        for (std::size_t k = 0; k < linear_; ++k) coefficients_[k] += dot / sj * gsl_matrix_get(w.v, k, j);
    }
}

bool ExpProjection::SolveOrthogonal() {
    // Gram-Schmidt on the (at most four) contiguous columns, each
    // orthogonalised twice, so that Q is orthonormal to rounding; then
    // R c = Q'b.
    const std::size_t m = x_.size(), k = linear_, expColumns = fixed_ ? 0 : std::size_t(model_.exponentials);
    q_.resize(k * m);
    double r[4][4] = {};
    double largest = 0;
    for (std::size_t j = 0; j < k; ++j) {
        double* v = &q_[j * m];
        if (j < expColumns) std::copy_n(&columns_[j * m], m, v);
        else std::fill_n(v, m, 1.0);
        double norm = 0;
        for (std::size_t i = 0; i < m; ++i) norm += v[i] * v[i];
        largest = std::max(largest, std::sqrt(norm));
        for (int pass = 0; pass < 2; ++pass)
            for (std::size_t c = 0; c < j; ++c) {
                const double* qc = &q_[c * m];
                double dot = 0;
                for (std::size_t i = 0; i < m; ++i) dot += qc[i] * v[i];
                r[c][j] += dot;
                for (std::size_t i = 0; i < m; ++i) v[i] -= dot * qc[i];
            }
        norm = 0;
        for (std::size_t i = 0; i < m; ++i) norm += v[i] * v[i];
        r[j][j] = std::sqrt(norm);
        if (!(r[j][j] > kRankTolerance * largest)) return false;
        for (std::size_t i = 0; i < m; ++i) v[i] /= r[j][j];
    }
    double qb[4];
    for (std::size_t j = 0; j < k; ++j) {
        qb[j] = 0;
        for (std::size_t i = 0; i < m; ++i) qb[j] += q_[j * m + i] * target_[i];
    }
    for (std::size_t j = k; j-- > 0;) {
        double v = qb[j];
        for (std::size_t c = j + 1; c < k; ++c) v -= r[j][c] * coefficients_[c];
        coefficients_[j] = v / r[j][j];
    }
    return true;
}

void ExpProjection::Fill(double* rows, std::size_t stride, std::size_t expColumns) const {
    const std::size_t m = x_.size();
    for (std::size_t i = 0; i < m; ++i) {
        double* row = rows + i * stride;
        for (std::size_t k = 0; k < expColumns; ++k) row[k] = columns_[k * m + i];
        if (model_.offset) row[linear_ - 1] = 1.0;
    }
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
