#include "within/mismatch_spatial.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "foundation/random.h"
#include "foundation/special_functions.h"
#include "model/population.h"
#include "run/errors.h"

namespace mnd {

namespace {

constexpr double kLeastTheta = 0.01;
constexpr double kLeastMigration = 1e-05;
constexpr double kLeastTime = 1e-05;
constexpr double kExponentLimit = 300.0;    // beyond, an exponential is left out
constexpr double kMostMigration = 99999.0;  // what the simulations of replicates can bear
constexpr double kMigrationWithoutIdentity = 100.0;
constexpr double kGain = 4.0;             // factor of a step that gained
constexpr double kLoss = 0.5;             // and of one that did not
constexpr double kMigrationScale = 20.0;  // weight of the step of M in the global step

void raise(double& value, double least) {
    if (!(value > 0.0)) value = least;
}

// T^k / k!
double poisson_term(int k, double log_tau) {
    return std::exp(k * log_tau - factln(k));
}

void fill_poisson_terms(double tau, int top, double* values) {
    const double log_tau = std::log(tau);
    for (int k = 0; k <= top; ++k)
        values[k] = poisson_term(k, log_tau);
}

// Share of pairs with i differences that coalesce within their deme, were there no end to it:
// theta^i / D^(i + 1).
double within_deme(int i, double log_theta, double log_d) {
    return std::exp(i * log_theta - (i + 1) * log_d);
}

void fill_within_deme(double theta, double D, int top, double* values) {
    const double log_theta = std::log(theta);
    const double log_d = std::log(D);
    for (int i = 0; i <= top; ++i)
        values[i] = within_deme(i, log_theta, log_d);
}

}  // namespace

mismatchSpatialExpansion::mismatchSpatialExpansion() : sum_(kTableSize) {
    Theta0 = Theta1 = Tau = 0.0;
}

mismatchSpatialExpansion::mismatchSpatialExpansion(PopGenetics* sample, mnd::settings* run_settings)
    : mismatchSpatialExpansion() {
    pop = sample;
    settings = run_settings;
}

void mismatchSpatialExpansion::init_data(double const& theta0, double const& theta1, double const& tau,
                                         double const& migrants, double const& r_value) {
    ann_missmatch::init_data(theta0, theta1, tau, r_value);
    M = migrants;
}

// --- The curve

// What all classes of a curve have in common. The share of pairs with i differences is that of
// pairs that coalesce within their deme, and of those that do not and go back to the founders, less
// what of the first would lie before the expansion.
struct mismatchSpatialExpansion::Curve {
    double D;             // theta + M + 1, theta of the demes
    double before_ratio;  // theta0 / (theta0 + 1), of the founders
    double within_ratio;  // theta / D
    double before_scale;  // of the founders' sum
    double within_scale;  // of the sum that is taken off
    double before_share;  // before_scale without exp(-T)
    double after;         // exponent of within_scale; without end where that is cut
};

void mismatchSpatialExpansion::raise_parameters() {
    raise(Theta0, kLeastTheta);
    raise(Theta1, kLeastTheta);
    raise(M, kLeastMigration);
    raise(Tau, kLeastTime);
}

// The parameters are positive.
//   cut_after   the scale of the last sum is 0 beyond the limit of exponents
mismatchSpatialExpansion::Curve mismatchSpatialExpansion::curve(bool cut_after) const {
    const double t = Theta1;
    const double D = t + M + 1.0;
    Curve c{};
    c.D = D;
    c.before_ratio = Theta0 / (Theta0 + 1.0);
    c.within_ratio = t / D;
    const double exponent = Tau * (M + 1.0) / t;
    const double not_yet = exponent >= kExponentLimit ? M : M + std::exp(-exponent);
    c.before_scale = std::exp(-Tau) * not_yet / ((M + 1.0) * (Theta0 + 1.0));
    c.before_share = not_yet / ((M + 1.0) * (Theta0 + 1.0));
    const double after = Tau * D / t;
    const bool cut = cut_after && after > kExponentLimit;
    c.within_scale = cut ? 0.0 : std::exp(-after) / D;
    c.after = cut ? std::numeric_limits<double>::infinity() : after;
    return c;
}

double mismatchSpatialExpansion::share(const Curve& c, int i) const {
    const double a = within_deme(i, std::log(Theta1), std::log(c.D));
    const double log_tau = std::log(Tau);
    double s1 = 0.0;
    for (int j = 0; j <= i; ++j)
        s1 += std::pow(c.before_ratio, j) * poisson_term(i - j, log_tau);
    double s2 = 0.0;
    for (int j = 0; j <= i; ++j)
        s2 += std::pow(c.within_ratio, i - j) * poisson_term(j, log_tau);
    const double result = a + c.before_scale * s1 - c.within_scale * s2;
    return std::isfinite(result) ? result : share_after_long_time(c, i);
}

double mismatchSpatialExpansion::share_after_long_time(const Curve& c, int i) const {
    const double log_tau = std::log(Tau);
    double s1 = 0.0;
    double s2 = 0.0;
    for (int j = 0; j <= i; ++j) {
        const double log_term = j * log_tau - factln(j);
        s1 += std::pow(c.before_ratio, i - j) * std::exp(log_term - Tau);
        s2 += std::pow(c.within_ratio, i - j) * std::exp(log_term - c.after);
    }
    return within_deme(i, std::log(Theta1), std::log(c.D)) + c.before_share * s1 - s2 / c.D;
}

double mismatchSpatialExpansion::f_i_spatial_exp_3p(int const& i) {
    raise_parameters();
    return share(curve(true), i);
}

double mismatchSpatialExpansion::f_i_spatial_exp_4p(int const& i) {
    raise_parameters();
    return share(curve(false), i);
}

void mismatchSpatialExpansion::fill_curve(const Curve& c, int top) {
    const CurveTable p =
        poisson_.get(Tau, 0.0, top, [=, this](double* v) { fill_poisson_terms(Tau, top, v); });
    const CurveTable before =
        before_.get(c.before_ratio, 0.0, top, [&](double* v) { fill_powers(c.before_ratio, top, v); });
    const CurveTable within =
        within_.get(c.within_ratio, 0.0, top, [&](double* v) { fill_powers(c.within_ratio, top, v); });
    const CurveTable still =
        still_.get(Theta1, c.D, top, [&, this](double* v) { fill_within_deme(Theta1, c.D, top, v); });
    double* const s1 = f_vect.data();
    double* const s2 = sum_.data();
    add_products(before, p, top, s1);
    add_products(p, within, top, s2);
    for (int i = 0; i <= top; ++i) {
        s1[i] = still.values[i] + c.before_scale * s1[i] - c.within_scale * s2[i];
        if (!std::isfinite(s1[i])) s1[i] = share_after_long_time(c, i);
    }
}

void mismatchSpatialExpansion::compute_curve_3p(int top) {
    raise_parameters();
    fill_curve(curve(true), top);
}

void mismatchSpatialExpansion::compute_curve_4p(int top) {
    raise_parameters();
    fill_curve(curve(false), top);
}

double mismatchSpatialExpansion::f_S_Spatial_Exp_3p(double* diff, double* freq, int const& count) {
    return squared_deviations(
        diff, freq, count, [this](int top) { compute_curve_3p(top); },
        [this](int i) { return f_i_spatial_exp_3p(i); });
}

double mismatchSpatialExpansion::f_S_Spatial_Exp_4p(double* diff, double* freq, int const& count) {
    return squared_deviations(
        diff, freq, count, [this](int top) { compute_curve_4p(top); },
        [this](int i) { return f_i_spatial_exp_4p(i); });
}

// --- The searches

namespace {

// One parameter of a search; a theta that stands for both sizes moves both fields.
struct Coordinate {
    double* value;  // not owned
    double* twin;   // not owned; null: none
    double step;
    double weight = 1.0;  // divisor of its step in the global step

    void set(double x) const {
        *value = x;
        if (twin != nullptr) *twin = x;
    }
};

// Tries a parameter up and down by its step; neither gains: its old value stays.
//   ssd   the sum to beat; becomes that of a trial that does
template <class Evaluate>
void try_coordinate(Coordinate& c, double threshold, double& ssd, const Evaluate& evaluate) {
    if (!(c.step >= threshold)) return;
    const double before = *c.value;
    for (const double by : {c.step, -c.step}) {
        c.set(before + by);
        const double reached = evaluate();
        if (reached < ssd) {
            ssd = reached;
            c.step *= kGain;
            return;
        }
    }
    c.set(before);
    c.step *= kLoss;
}

// What one start of a search came to.
struct StartResult {
    double global_step;
    double ssd;
    int rounds;
};

// From the present parameters on, in the order of the coordinates.
template <std::size_t Size, class Evaluate>
StartResult search_from(std::array<Coordinate, Size>& coordinates, double global_step, int step_limit,
                        double threshold, const Evaluate& evaluate) {
    int round = 0;
    // Always the sum of the point where the search stands, which needs no evaluation in a new round.
    double ssd = evaluate();
    for (; round < step_limit && threshold < global_step; ++round) {
        for (Coordinate& c : coordinates)
            try_coordinate(c, threshold, ssd, evaluate);
        global_step = 0.0;
        for (const Coordinate& c : coordinates)
            global_step = std::max(global_step, c.step / c.weight);
    }
    return {global_step, ssd, round};
}

// Where starts lie: the mean number of differences, and M by the share of identical pairs.
struct StartRange {
    double mean;
    double migrants;
};

StartRange start_range(double* diff, double* freq, int count) {
    const double migrants = freq[1] > 0.0 ? 1.0 / freq[1] - 1.0 : kMigrationWithoutIdentity;
    return {ann_missmatch::calc_mean_mssm(diff, freq, count), migrants};
}

}  // namespace

bool mismatchSpatialExpansion::hook_jeeves_spatial_exp_3_par(double* diff, double* freq, int const& count,
                                                             int const& step_limit, double const& threshold) {
    constexpr int kStarts = 3;
    const auto evaluate = [&] { return f_S_Spatial_Exp_3p(diff, freq, count); };
    const auto [m0, M0] = start_range(diff, freq, count);
    double best = kNumericalInfinity;
    Parameters best_values = parameters();
    bool converged = false;
    for (int start = 0; start < kStarts; ++start) {
        Theta0 = Theta1 = 5.0 * ran3();
        Tau = ran3() * m0 * 1.5 + m0 * 0.5;
        M = ran3() * M0 * 1.5 + M0 * 0.5;
        std::array<Coordinate, 3> coordinates = {{{&M, nullptr, M0 * 0.5 + 0.5, kMigrationScale},
                                                  {&Theta1, &Theta0, 0.95},
                                                  {&Tau, nullptr, m0 * 0.5 + 0.5}}};
        const StartResult reached = search_from(coordinates, 0.95, step_limit, threshold, evaluate);
        converged = reached.global_step < threshold;
        if (reached.ssd < best) {
            best = reached.ssd;
            best_values = parameters();
        }
    }
    set_parameters(best_values);
    M = std::min(M, kMostMigration);
    ssd_work = best;
    not_converged = converged ? 0 : 1;
    return converged;
}

bool mismatchSpatialExpansion::hook_jeeves_spatial_exp_4_par(double* diff, double* freq, int const& count,
                                                             int const& step_limit, double const& threshold) {
    constexpr int kStarts = 10;
    const auto evaluate = [&] { return f_S_Spatial_Exp_4p(diff, freq, count); };
    const auto [m0, M0] = start_range(diff, freq, count);
    double best = kNumericalInfinity;
    Parameters best_values = parameters();
    bool converged = false;
    not_converged = 0;
    for (int start = 0; start < kStarts; ++start) {
        Theta1 = 5.0 * ran3();
        Theta0 = 2.0 * ran3();
        Tau = ran3() * m0 * 1.5 + m0 * 0.5;
        M = ran3() * M0 * 1.5 + M0 * 0.5;
        std::array<Coordinate, 4> coordinates = {{{&Theta1, nullptr, 0.95},
                                                  {&Tau, nullptr, 0.89},
                                                  {&M, nullptr, 1.1, kMigrationScale},
                                                  {&Theta0, nullptr, 1.0}}};
        const StartResult reached = search_from(coordinates, 0.95, step_limit, threshold, evaluate);
        converged = reached.global_step <= threshold;
        if (!converged) {
            *_AOS_ << "\t\tno convergence after " << reached.rounds << " steps (#=" << reached.ssd << ")\n";
            not_converged = 1;
        }
        if (reached.ssd < best) {
            best = reached.ssd;
            best_values = parameters();
        }
    }
    set_parameters(best_values);
    M = std::min(M, kMostMigration);
    ssd_work = best;
    return converged;
}

ExpansionFit mismatchSpatialExpansion::result() const {
    ExpansionFit fit = ann_missmatch::result();
    fit.M = M;
    fit.m_percentiles = m_percentiles;
    return fit;
}

}  // namespace mnd
