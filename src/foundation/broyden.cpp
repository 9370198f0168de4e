#include "foundation/broyden.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "foundation/message_codes.h"

namespace mnd {

namespace {

constexpr int kMaxIterations = 200;             // steps of a run
constexpr long double kRoundoff = 1e-7L;        // relative error taken for noise
constexpr long double TOLF = 1e-4L;             // residuals below this are a root
constexpr long double kFirstTestShare = 0.01L;  // of TOLF, for the start itself
constexpr long double TOLX = 1e-7L;             // relative steps below this end the search
constexpr long double TOLMIN = 1e-6L;           // gradients below this are a minimum that is no root
constexpr long double kStepMax = 100.0L;        // longest step, in lengths of x
constexpr long double ALF = 1e-4L;              // share of the expected fall that is enough
constexpr long double kShortest = 0.1L;         // share of a step kept at least when it is shortened
constexpr long double kLongest = 0.5L;          // and at most
constexpr long double kDifference = 1e-4L;      // relative step of the differences

long double square(long double z) {
    return z * z;
}

// Size of `magnitude` with the sign of `sign`, where 0 counts as positive.
long double with_sign(long double magnitude, long double sign) {
    return sign >= 0.0L ? std::fabs(magnitude) : -std::fabs(magnitude);
}

// sqrt(1 + z^2), for |z| of at most 1.
long double hypotenuse(long double z) {
    return my_sqrtl(1.0L + square(z));
}

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

// One point of a line search: the length of the step and what fmin is there.
struct SearchPoint {
    long double lambda = 0.0L;
    long double f = 0.0L;
};

// Minimum of the parabola, or of the cubic through a second point, that models fmin along the
// direction; at most half of the last step.
long double model_minimum(const SearchPoint& last, const SearchPoint& before, long double fold,
                          long double slope) {
    const long double rise = last.f - fold - last.lambda * slope;
    if (last.lambda == 1.0L) return -slope / (2.0L * rise);
    const long double rise_before = before.f - fold - before.lambda * slope;
    const long double q = rise / square(last.lambda);
    const long double q_before = rise_before / square(before.lambda);
    const long double span = last.lambda - before.lambda;
    const long double a = (q - q_before) / span;
    const long double b = (-before.lambda * q + last.lambda * q_before) / span;
    if (a == 0.0L) return -slope / (2.0L * b);
    const long double discriminant = square(b) - 3.0L * a * slope;
    if (discriminant < 0.0L) return kLongest * last.lambda;
    if (b <= 0.0L) return (-b + my_sqrtl(discriminant)) / (3.0L * a);
    return -slope / (b + my_sqrtl(discriminant));
}

// The next step to try; a model that gives no number shortens as far as may be.
long double next_step(const SearchPoint& last, const SearchPoint& before, long double fold,
                      long double slope) {
    const long double lambda = model_minimum(last, before, fold, slope);
    if (lambda > kLongest * last.lambda) return kLongest * last.lambda;
    return lambda > kShortest * last.lambda ? lambda : kShortest * last.lambda;
}

}  // namespace

LongVector my_vector(int n) {
    return LongVector(at(std::max(n, 0)) + 1, 0.0L);
}

LongMatrix my_matrix(int n) {
    return LongMatrix(at(std::max(n, 0)) + 1, my_vector(n));
}

void my_free_vector(LongVector& v) {
    LongVector().swap(v);
}

void my_free_matrix(LongMatrix& m) {
    LongMatrix().swap(m);
}

long double my_expl(long double z) {
    return static_cast<long double>(std::exp(static_cast<double>(z)));
}

long double my_sqrtl(long double z) {
    return z < 0.0L ? 0.0L : std::sqrt(z);
}

TBroyden::TBroyden(int dimension, long double* unknowns, Function system)
    : n(dimension), x(unknowns), function(system) {
    allocate(dimension);
}

TBroyden::TBroyden(int dimension, long double* unknowns, Function system, Jacobian derivatives)
    : TBroyden(dimension, unknowns, system) {
    jacobian = derivatives;
    analytic_jacobian = derivatives != nullptr ? 1 : 0;
}

void TBroyden::allocate(int dimension) {
    n = dimension;
    for (LongVector* v : {&fvec, &c_, &d_, &g_, &p_, &s_, &t_, &w_, &xold_, &fvcold_})
        *v = my_vector(n);
    r_ = my_matrix(n);
    qt_ = my_matrix(n);
}

void TBroyden::clean() {
    for (LongVector* v : {&fvec, &c_, &d_, &g_, &p_, &s_, &t_, &w_, &xold_, &fvcold_})
        my_free_vector(*v);
    my_free_matrix(r_);
    my_free_matrix(qt_);
}

void TBroyden::broydn(long double* start, int dimension, int* check) {
    x = start;
    if (dimension != n || fvec.size() != at(dimension) + 1) allocate(dimension);
    failure = kNoFailure;
    f_ = fmin(x);
    const bool is_root = largest_residual() < kFirstTestShare * TOLF;
    converged = is_root || search() ? 1 : 0;
    *check = converged != 0 ? 0 : 1;
}

// Returns: true at a root, or where the steps vanish
bool TBroyden::search() {
    long double length = 0.0L;
    for (int i = 1; i <= n; ++i)
        length += square(x[i]);
    const long double step_max = kStepMax * std::max(my_sqrtl(length), static_cast<long double>(n));
    bool restart = true;
    for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
        if (!(restart ? start_factors() : update_factors())) return false;
        set_direction();
        std::copy(x, x + n + 1, xold_.begin());
        fvcold_ = fvec;
        const long double fold = f_;
        int stuck = 0;
        if (!lnsrch(xold_, fold, g_, p_, &f_, step_max, &stuck)) return fail(kRoundoffProblemInLineSearch);
        if (largest_residual() < TOLF) return true;
        if (stuck != 0) {
            if (restart || gradient_vanishes()) return false;
            restart = true;
        } else {
            restart = false;
            if (step_vanishes()) return true;
        }
    }
    return fail(kEquationSolvingDidNotConverge);
}

bool TBroyden::fail(int code) {
    failure = code;
    return false;
}

// QR factors of the Jacobian at x.
bool TBroyden::start_factors() {
    if (analytic_jacobian != 0 && jacobian != nullptr) {
        jacobian(n, x, r_);
    } else {
        approx_fdjac(r_);
    }
    if (qrdcmp(r_, n, c_, d_)) return fail(kSingularJacobian);
    form_q();
    form_r();
    return true;
}

// The transpose of Q, as the product of the reflections.
void TBroyden::form_q() {
    for (int i = 1; i <= n; ++i) {
        std::fill(qt_[at(i)].begin(), qt_[at(i)].end(), 0.0L);
        qt_[at(i)][at(i)] = 1.0L;
    }
    for (int k = 1; k < n; ++k) {
        if (c_[at(k)] == 0.0L) continue;
        for (int j = 1; j <= n; ++j) {
            long double sum = 0.0L;
            for (int i = k; i <= n; ++i)
                sum += r_[at(i)][at(k)] * qt_[at(i)][at(j)];
            sum /= c_[at(k)];
            for (int i = k; i <= n; ++i)
                qt_[at(i)][at(j)] -= sum * r_[at(i)][at(k)];
        }
    }
}

void TBroyden::form_r() {
    for (int i = 1; i <= n; ++i) {
        r_[at(i)][at(i)] = d_[at(i)];
        for (int j = 1; j < i; ++j)
            r_[at(i)][at(j)] = 0.0L;
    }
}

// Leaves in w_ by how much the factors fail the secant condition of the last step s_; components
// within roundoff count as none.
// Returns: false when there are none
bool TBroyden::secant_error() {
    for (int i = 1; i <= n; ++i)
        s_[at(i)] = x[i] - xold_[at(i)];
    for (int i = 1; i <= n; ++i) {
        t_[at(i)] = 0.0L;
        for (int j = i; j <= n; ++j)
            t_[at(i)] += r_[at(i)][at(j)] * s_[at(j)];
    }
    bool differs = false;
    for (int i = 1; i <= n; ++i) {
        long double sum = 0.0L;
        for (int j = 1; j <= n; ++j)
            sum += qt_[at(j)][at(i)] * t_[at(j)];
        w_[at(i)] = fvec[at(i)] - fvcold_[at(i)] - sum;
        const long double noise = kRoundoff * (std::fabs(fvec[at(i)]) + std::fabs(fvcold_[at(i)]));
        if (std::fabs(w_[at(i)]) >= noise) {
            differs = true;
        } else {
            w_[at(i)] = 0.0L;
        }
    }
    return differs;
}

bool TBroyden::update_factors() {
    if (!secant_error()) return true;
    long double denominator = 0.0L;
    for (int i = 1; i <= n; ++i) {
        t_[at(i)] = 0.0L;
        for (int j = 1; j <= n; ++j)
            t_[at(i)] += qt_[at(i)][at(j)] * w_[at(j)];
        denominator += square(s_[at(i)]);
    }
    for (int i = 1; i <= n; ++i)
        s_[at(i)] /= denominator;
    qrupdt(r_, qt_, n, t_, s_);
    for (int i = 1; i <= n; ++i) {
        if (r_[at(i)][at(i)] == 0.0L) return fail(kSingularRInBroyden);
        d_[at(i)] = r_[at(i)][at(i)];
    }
    return true;
}

// Direction p_ that solves the linear system, and gradient g_ of fmin.
void TBroyden::set_direction() {
    for (int i = 1; i <= n; ++i) {
        p_[at(i)] = 0.0L;
        for (int j = 1; j <= n; ++j)
            p_[at(i)] -= qt_[at(i)][at(j)] * fvec[at(j)];
    }
    for (int i = n; i >= 1; --i) {
        g_[at(i)] = 0.0L;
        for (int j = 1; j <= i; ++j)
            g_[at(i)] -= r_[at(j)][at(i)] * p_[at(j)];
    }
    rsolv(r_, n, d_, p_);
}

// Infinite when a residual is not a number, so that such a point is never taken for a root.
long double TBroyden::largest_residual() const {
    long double largest = 0.0L;
    for (int i = 1; i <= n; ++i) {
        const long double residual = std::fabs(fvec[at(i)]);
        if (std::isnan(residual)) return std::numeric_limits<long double>::infinity();
        largest = std::max(largest, residual);
    }
    return largest;
}

// Whether no unknown has moved by as much as TOLX, relative to its size where that is above 1.
bool TBroyden::step_vanishes() const {
    for (int i = 1; i <= n; ++i) {
        const long double step = std::fabs(x[i] - xold_[at(i)]) / std::max(std::fabs(x[i]), 1.0L);
        if (step >= TOLX) return false;
    }
    return true;
}

bool TBroyden::gradient_vanishes() const {
    const long double scale = std::max(f_, 0.5L * n);
    long double largest = 0.0L;
    for (int i = 1; i <= n; ++i)
        largest = std::max(largest, std::fabs(g_[at(i)]) * std::max(std::fabs(x[i]), 1.0L) / scale);
    return largest < TOLMIN;
}

long double TBroyden::fmin(const long double* point) {
    function(n, point, fvec.data());
    long double sum = 0.0L;
    for (int i = 1; i <= n; ++i)
        sum += square(fvec[at(i)]);
    return 0.5L * sum;
}

bool TBroyden::lnsrch(const LongVector& xold, long double fold, const LongVector& g, LongVector& p,
                      long double* f, long double step_max, int* check) {
    *check = 0;
    long double length = 0.0L;
    for (int i = 1; i <= n; ++i)
        length += square(p[at(i)]);
    length = my_sqrtl(length);
    long double slope = 0.0L;
    long double relative = 0.0L;
    for (int i = 1; i <= n; ++i) {
        if (length > step_max) p[at(i)] *= step_max / length;
        slope += g[at(i)] * p[at(i)];
        relative = std::max(relative, std::fabs(p[at(i)]) / std::max(std::fabs(xold[at(i)]), 1.0L));
    }
    // Also when the slope is not a number.
    if (!(slope < 0.0L)) return false;
    const long double smallest = TOLX / relative;
    SearchPoint before;
    SearchPoint last;
    last.lambda = 1.0L;
    for (;;) {
        for (int i = 1; i <= n; ++i)
            x[i] = xold[at(i)] + last.lambda * p[at(i)];
        *f = last.f = fmin(x);
        if (last.lambda < smallest) {
            std::copy(xold.begin() + 1, xold.begin() + n + 1, x + 1);
            *check = 1;
            return true;
        }
        if (last.f <= fold + ALF * last.lambda * slope) return true;
        const long double lambda = next_step(last, before, fold, slope);
        before = last;
        last.lambda = lambda;
    }
}

void TBroyden::approx_fdjac(LongMatrix& df) {
    LongVector moved = my_vector(n);
    for (int j = 1; j <= n; ++j) {
        const long double kept = x[j];
        long double step = kDifference * std::fabs(kept);
        if (step == 0.0L) step = kDifference;
        x[j] = kept + step;
        step = x[j] - kept;
        function(n, x, moved.data());
        x[j] = kept;
        for (int i = 1; i <= n; ++i)
            df[at(i)][at(j)] = (moved[at(i)] - fvec[at(i)]) / step;
    }
}

bool TBroyden::qrdcmp(LongMatrix& a, int n, LongVector& c, LongVector& d) {
    bool singular = false;
    for (int k = 1; k < n; ++k) {
        long double scale = 0.0L;
        for (int i = k; i <= n; ++i)
            scale = std::max(scale, std::fabs(a[at(i)][at(k)]));
        if (scale == 0.0L) {
            singular = true;
            c[at(k)] = d[at(k)] = 0.0L;
            continue;
        }
        long double sum = 0.0L;
        for (int i = k; i <= n; ++i) {
            a[at(i)][at(k)] /= scale;
            sum += square(a[at(i)][at(k)]);
        }
        const long double sigma = with_sign(my_sqrtl(sum), a[at(k)][at(k)]);
        a[at(k)][at(k)] += sigma;
        c[at(k)] = sigma * a[at(k)][at(k)];
        d[at(k)] = -scale * sigma;
        for (int j = k + 1; j <= n; ++j) {
            sum = 0.0L;
            for (int i = k; i <= n; ++i)
                sum += a[at(i)][at(k)] * a[at(i)][at(j)];
            const long double tau = sum / c[at(k)];
            for (int i = k; i <= n; ++i)
                a[at(i)][at(j)] -= tau * a[at(i)][at(k)];
        }
    }
    d[at(n)] = a[at(n)][at(n)];
    return singular || d[at(n)] == 0.0L;
}

void TBroyden::qrupdt(LongMatrix& r, LongMatrix& qt, int n, LongVector& u, const LongVector& v) {
    int k = n;
    while (k > 1 && u[at(k)] == 0.0L)
        --k;
    // R + u v^T is made upper Hessenberg, and then upper triangular again.
    for (int i = k - 1; i >= 1; --i)
        u[at(i)] = rotate(r, qt, n, i, u[at(i)], -u[at(i + 1)]);
    for (int j = 1; j <= n; ++j)
        r[1][at(j)] += u[1] * v[at(j)];
    for (int i = 1; i < k; ++i)
        rotate(r, qt, n, i, r[at(i)][at(i)], -r[at(i + 1)][at(i)]);
}

void TBroyden::rsolv(const LongMatrix& a, int n, const LongVector& d, LongVector& b) {
    b[at(n)] /= d[at(n)];
    for (int i = n - 1; i >= 1; --i) {
        long double sum = 0.0L;
        for (int j = i + 1; j <= n; ++j)
            sum += a[at(i)][at(j)] * b[at(j)];
        b[at(i)] = (b[at(i)] - sum) / d[at(i)];
    }
}

long double TBroyden::rotate(LongMatrix& r, LongMatrix& qt, int n, int i, long double a, long double b) {
    long double cosine = 0.0L;
    long double sine = 0.0L;
    long double length = 0.0L;
    if (a == 0.0L) {
        sine = b >= 0.0L ? 1.0L : -1.0L;
        length = std::fabs(b);
    } else if (std::fabs(a) > std::fabs(b)) {
        const long double ratio = b / a;
        const long double relative = hypotenuse(ratio);
        cosine = with_sign(1.0L / relative, a);
        sine = ratio * cosine;
        length = std::fabs(a) * relative;
    } else {
        const long double ratio = a / b;
        const long double relative = hypotenuse(ratio);
        sine = with_sign(1.0L / relative, b);
        cosine = ratio * sine;
        length = std::fabs(b) * relative;
    }
    const auto rotate_columns = [cosine, sine, n](long double* upper_row, long double* lower_row, int first) {
        for (int j = first; j <= n; ++j) {
            const long double upper = upper_row[j];
            const long double lower = lower_row[j];
            upper_row[j] = cosine * upper - sine * lower;
            lower_row[j] = sine * upper + cosine * lower;
        }
    };
    rotate_columns(r[at(i)].data(), r[at(i + 1)].data(), i);
    rotate_columns(qt[at(i)].data(), qt[at(i + 1)].data(), 1);
    return length;
}

}  // namespace mnd
