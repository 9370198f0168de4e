#include "within/mismatch_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "foundation/special_functions.h"
#include "model/population.h"
#include "simulation/mutated_sites.h"

namespace mnd {

namespace {

constexpr double kLeastParameter = 1e-07;  // of Theta0 and Tau
constexpr double kGain = 4.0;              // factor of a step that gained
constexpr double kLoss = 0.5;              // and of one that did not

// Share of pairs with i differences in a stable population. Source: Watterson 1975.
double stable_share(int i, double theta) {
    return std::pow(theta / (theta + 1.0), i) / (theta + 1.0);
}

double log_poisson_term(int j, double log_tau, long double log_factorial) {
    return static_cast<double>(static_cast<long double>(j * log_tau) - log_factorial);
}

// tau^j / j!
double poisson_term(int j, double log_tau, long double log_factorial) {
    return std::exp(log_poisson_term(j, log_tau, log_factorial));
}

// log j! of all classes of a table.
const std::array<long double, ann_missmatch::kTableSize>& log_factorials() {
    static const auto kept = [] {
        std::array<long double, ann_missmatch::kTableSize> values{};
        for (int j = 0; j < ann_missmatch::kTableSize; ++j)
            values[static_cast<std::size_t>(j)] = factlnl(j);
        return values;
    }();
    return kept;
}

void fill_poisson_terms(double tau, int top, double* values) {
    const double log_tau = std::log(tau);
    const auto& log_factorial = log_factorials();
    for (int j = 0; j <= top; ++j)
        values[j] = poisson_term(j, log_tau, log_factorial[static_cast<std::size_t>(j)]);
}

void fill_stable_shares(double theta, int top, double* values) {
    fill_powers(theta / (theta + 1.0), top, values);
    for (int i = 0; i <= top; ++i)
        values[i] /= theta + 1.0;
}

}  // namespace

ann_missmatch::ann_missmatch()
    : f_vect(kTableSize),
      f0_vect(kTableSize),
      f1_vect(kTableSize),
      step_vect_(kTableSize + 2 * CurveTable::kLanes) {}

ann_missmatch::ann_missmatch(PopGenetics* sample, mnd::settings* run_settings) : ann_missmatch() {
    pop = sample;
    settings = run_settings;
}

ann_missmatch::~ann_missmatch() = default;

void ann_missmatch::init_data(double const& theta0, double const& theta1, double const& tau,
                              double const& r_value) {
    Theta0 = theta0;
    Theta1 = theta1;
    Tau = tau;
    r = r_value;
    N = 4000000;
    max_steps = 2000;
    epsilon = 0.001;
}

int ann_missmatch::last_class() const {
    return std::min(pop->last_expected_class > 0 ? pop->last_expected_class : pop->max_diff, pairs - 1);
}

void ann_missmatch::read_mismatch_pop(double* diff, double* freq, int& count, long& total) {
    m1 = 400;
    m2 = 0;
    r = 1.0;
    model = 2;
    alpha = -1.0;
    Tau = 3.0;
    Theta0 = 1.0;
    Theta1 = 5.0;
    const std::vector<std::int64_t>& counts = pop->mm_counts;
    int top = std::min(last_class(), static_cast<int>(counts.size()) - 1);
    while (top > 0 && counts[static_cast<std::size_t>(top)] == 0)
        --top;
    top = std::max(top, 0);
    total = 0;
    for (int k = 0; k < pairs; ++k) {
        const bool present = k <= top && k < static_cast<int>(counts.size());
        const std::int64_t of_class = present ? counts[static_cast<std::size_t>(k)] : 0;
        diff[k + 1] = k;
        freq[k + 1] = static_cast<double>(of_class);
        total += static_cast<long>(of_class);
    }
    count = top + 2;
    sample_size = static_cast<int>((std::sqrt(8.0 * static_cast<double>(total) + 1.0) + 1.0) / 2.0);
}

// --- The curve

double ann_missmatch::f_i_exp(int const& i) {
    const bool without_time = !(Tau > 0.0);
    if (!(Theta0 > 0.0)) Theta0 = kLeastParameter;
    if (without_time) Tau = kLeastParameter;
    if (Theta1 <= Theta0 && without_time) {
        Theta1 = Theta0;
        return stable_share(i, Theta0);
    }
    const double log_tau = std::log(Tau);
    double sum = 0.0;
    for (int j = 0; j <= i; ++j)
        sum += poisson_term(j, log_tau, factlnl(j)) *
               (stable_share(i - j, Theta0) - stable_share(i - j, Theta1));
    const double share = stable_share(i, Theta1) + std::exp(-Tau * (Theta1 + 1.0) / Theta1) * sum;
    return std::isfinite(share) ? share : share_after_long_time(i);
}

double ann_missmatch::share_after_long_time(int i) const {
    const double log_tau = std::log(Tau);
    const double log_none_since = -Tau * (Theta1 + 1.0) / Theta1;
    double sum = 0.0;
    for (int j = 0; j <= i; ++j)
        sum += std::exp(log_poisson_term(j, log_tau, factlnl(j)) + log_none_since) *
               (stable_share(i - j, Theta0) - stable_share(i - j, Theta1));
    return stable_share(i, Theta1) + sum;
}

void ann_missmatch::compute_curve(int top) {
    const bool without_time = !(Tau > 0.0);
    if (!(Theta0 > 0.0)) Theta0 = kLeastParameter;
    if (without_time) Tau = kLeastParameter;
    const bool stays = Theta1 <= Theta0 && without_time;
    if (stays) Theta1 = Theta0;
    const CurveTable w =
        weights_.get(Tau, 0.0, top, [=, this](double* v) { fill_poisson_terms(Tau, top, v); });
    const double* const f0 =
        shares0_.get(Theta0, 0.0, top, [=, this](double* v) { fill_stable_shares(Theta0, top, v); }).values;
    const double* const f1 =
        shares1_.get(Theta1, 0.0, top, [=, this](double* v) { fill_stable_shares(Theta1, top, v); }).values;
    double* const step = step_vect_.data() + CurveTable::kLanes;
    for (int k = 0; k <= top; ++k)
        step[k] = f0[k] - f1[k];
    std::copy_n(f0, top + 1, f0_vect.data());
    std::copy_n(f1, top + 1, f1_vect.data());
    double* const f = f_vect.data();
    if (stays) {
        std::copy_n(f0, top + 1, f);
        return;
    }
    add_products(w, {step, true}, top, f);
    const double none_since = std::exp(-Tau * (Theta1 + 1.0) / Theta1);
    for (int k = 0; k <= top; ++k) {
        f[k] = f1[k] + none_since * f[k];
        if (!std::isfinite(f[k])) f[k] = share_after_long_time(k);
    }
}

double ann_missmatch::f_SRod_Harp(double* diff, double* freq, int const& count) {
    return squared_deviations(
        diff, freq, count, [this](int top) { compute_curve(top); }, [this](int i) { return f_i_exp(i); });
}

// --- The search

namespace {

// One parameter of the search, with the one that it pulls along when it passes it.
struct Trial {
    double* parameter;  // not owned
    double* partner;    // not owned; null: none
    double start;       // value at the top of the round
    double step;
    bool below;  // the parameter must not be below its partner; otherwise not above it

    void move(double by) const {
        *parameter = start + by;
        if (partner == nullptr) return;
        const bool passed = below ? *parameter < *partner : *parameter > *partner;
        if (!passed) return;
        // The pair meets at a size that there is: the floor of the one would part it from the other.
        if (!(*parameter > 0.0)) *parameter = kLeastParameter;
        *partner = *parameter;
    }
};

// Tries a parameter up and down by its step, from its value at the top of the round. A trial that
// does not gain puts back both values as they stood before it.
//   ssd   the sum to beat; becomes that of a trial that does
template <class Evaluate>
void try_parameter(Trial& trial, double threshold, double& ssd, const Evaluate& evaluate) {
    if (!(trial.step >= threshold)) {
        trial.step = 0.0;
        return;
    }
    const double before = *trial.parameter;
    const double partner_before = trial.partner == nullptr ? 0.0 : *trial.partner;
    bool moved = false;
    for (const double by : {trial.step, -trial.step}) {
        trial.move(by);
        const double reached = evaluate();
        // Written so that a sum that is not a number is taken, and ends the search.
        if (!(reached >= ssd)) {
            ssd = reached;
            moved = true;
            break;
        }
        *trial.parameter = before;
        if (trial.partner != nullptr) *trial.partner = partner_before;
    }
    trial.step *= moved ? kGain : kLoss;
    if (trial.step < threshold) trial.step = 0.0;
}

}  // namespace

bool ann_missmatch::hook_jeeves_rh(double* diff, double* freq, int const& count, int const& step_limit,
                                   double const& threshold) {
    const auto evaluate = [&] { return f_SRod_Harp(diff, freq, count); };
    Trial theta1{&Theta1, &Theta0, Theta1, 10.0, true};
    Trial theta0{&Theta0, &Theta1, Theta0, 0.9, false};
    Trial tau{&Tau, nullptr, Tau, 1.0, false};
    double global_step = 1.0;
    bool finite = true;
    // Always the sum of the point where the search stands, which needs no evaluation in a new round.
    double ssd = evaluate();
    for (int round = 0; round < step_limit && threshold < global_step && finite; ++round) {
        theta1.start = Theta1;
        theta0.start = Theta0;
        tau.start = Tau;
        try_parameter(theta1, threshold, ssd, evaluate);
        try_parameter(theta0, threshold, ssd, evaluate);
        try_parameter(tau, threshold, ssd, evaluate);
        finite = std::isfinite(ssd);
        // That of Theta1 relative to its size, on purpose: large sizes hardly change the curve.
        global_step = std::max({theta1.step / (Theta1 + 1.0), theta0.step, tau.step});
    }
    ssd_work = ssd;
    const bool converged = global_step <= threshold && std::isfinite(ssd_work);
    not_converged = converged ? 0 : 1;
    return converged;
}

// --- Statistics of a distribution

double ann_missmatch::compute_raggedness_index(double*, double* freq, int k) {
    if (k < 1) return 0.0;
    double s = 0.0;
    for (int i = 1; i <= k; ++i)
        s += freq[i];
    double r_index = 0.0;
    for (int i = 2; i <= k; ++i)
        r_index += (freq[i] - freq[i - 1]) * (freq[i] - freq[i - 1]);
    r_index += freq[k] * freq[k];
    return s > 0.0 ? r_index / (s * s) : r_index;
}

double ann_missmatch::calc_mean_mssm(double* diff, double* freq, int const& count) {
    double mean = 0.0;
    for (int k = 1; k <= count; ++k)
        mean += diff[k] * freq[k];
    return mean;
}

ExpansionFit ann_missmatch::result() const {
    ExpansionFit fit;
    fit.fitted = fitted;
    fit.Tau = Tau;
    fit.Theta0 = Theta0;
    fit.Theta1 = Theta1;
    fit.ssd = ssd_obs;
    fit.p_ssd = p_ssd;
    fit.rag = rag_obs;
    fit.p_rag = p_rag;
    fit.replicates = num_boot;
    fit.tau_percentiles = tau_percentiles;
    fit.theta0_percentiles = theta0_percentiles;
    fit.theta1_percentiles = theta1_percentiles;
    return fit;
}

}  // namespace mnd
