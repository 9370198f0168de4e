#include "within/tajima.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/data_type.h"
#include "foundation/special_functions.h"
#include "model/integer_part.h"
#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/settings.h"
#include "within/indels_left_out.h"
#include "within/neutral_samples.h"
#include "within/neutrality_tables.h"
#include "within/replicate_progress.h"

namespace mnd {

namespace {

constexpr double kLeastNumerator = 1e-15;

// Difference of the two estimates of theta.
double numerator_of_D(const TajimaConstants& c, double pi, double S) {
    return pi - S / c.a1;
}

double variance_of_numerator(const TajimaConstants& c, double S) {
    return c.e1 * S + c.e2 * S * (S - 1.0);
}

}  // namespace

TajimaConstants tajima_constants(int n) {
    if (n < 2) return {};
    double a1 = 0.0;
    double a2 = 0.0;
    for (int i = 1; i < n; ++i) {
        const double d = i;
        a1 += 1.0 / d;
        a2 += 1.0 / (d * d);
    }
    const double m = n;
    const double c1 = (m + 1.0) / (3.0 * (m - 1.0)) - 1.0 / a1;
    const double c2 = 2.0 * (m * m + m + 3.0) / (9.0 * m * (m - 1.0)) - (m + 2.0) / (m * a1) + a2 / (a1 * a1);
    return {a1, c1 / a1, c2 / (a1 * a1 + a2)};
}

TajimaD tajima_D(const TajimaConstants& c, double pi, double S) {
    if (S <= 0.0 || c.a1 <= 0.0) return {};
    const double d = numerator_of_D(c, pi, S);
    const double v = variance_of_numerator(c, S);
    if (c.e2 <= 0.0 || !(v > 0.0)) return {};
    return {std::fabs(d) < kLeastNumerator ? 0.0 : d / std::sqrt(v), true};
}

double fast_tajima_D(const TajimaConstants& c, double pi, double S) {
    if (S <= 0.0 || c.a1 <= 0.0) return 0.0;
    const double v = variance_of_numerator(c, S);
    return v > 0.0 ? numerator_of_D(c, pi, S) / std::sqrt(v) : 0.0;
}

double Tajima_D_density(double const& alpha, double const& beta, double const& x, double const& high,
                        double const& low) {
    if (alpha <= 0.0 || beta <= 0.0 || x <= low || x >= high) return 0.0;
    return std::exp(gammln(alpha + beta) - gammln(alpha) - gammln(beta) + (alpha - 1.0) * std::log(high - x) +
                    (beta - 1.0) * std::log(x - low) - (alpha + beta - 1.0) * std::log(high - low));
}

const TajimaResult* PopGenetics::tajimaD(int const& n, double const& pi, double const& S) {
    const TajimaD result = mnd::tajima_D(tajima_constants(n), pi, S);
    tajima_D = result.D;
    if (!result.defined) tajima_p = -1.0;
    return this;
}

const TajimaResult* PopGenetics::fast_tajimaD(int const& n, double const& pi, double const& S) {
    const TajimaConstants constants = tajima_constants(n);
    tajima_D = fast_tajima_D(constants, pi, S);
    if (S <= 0.0 || !(variance_of_numerator(constants, S) > 0.0)) tajima_p = -1.0;
    return this;
}

// --- The test of a sample

namespace {

// The observed values. Without distances there is no pi, and D is not defined.
template <class Sample>
TajimaReport observe(Sample& sample, settings& s) {
    TajimaReport report;
    report.n = integer_part(sample.sample_size);
    report.S = sample.nb_subst_sites;
    report.weighted = has_weights(sample);
    report.restriction_sites = sample.profile.DataType == RFLP;
    sample.calc_theta_S(report.n, report.S);
    report.theta_S = sample.theta_S;
    const IndelsLeftOut differences(sample, s);
    sample.tajima_S = report.S;
    sample.tajima_pi = sample.mean_pairwise_diff;
    report.pi = differences.computed() ? sample.tajima_pi : std::numeric_limits<double>::quiet_NaN();
    if (!differences.computed()) return report;
    report.defined = tajima_D(tajima_constants(report.n), report.pi, report.S).defined;
    report.D = sample.tajimaD(report.n, report.pi, report.S)->tajima_D;
    return report;
}

// P-values and moments from simulated samples. Returns: false when the run was stopped
template <class Sample>
bool simulate(Sample& sample, const settings& s, TajimaReport& report) {
    const int num_sim = std::max(s.NumSimulFuTest, 0);
    const TajimaConstants constants = tajima_constants(report.n);
    RunningSums D;
    RunningSums theta_S;
    int not_above_observed = 0;
    int not_positive = 0;
    NeutralSamples samples(sample, report.theta_S);
    const bool finished = samples.simulate(num_sim, s, [&](const NeutralSamples& replicate) {
        const double S = replicate.segregating_sites();
        const double D_sim = fast_tajima_D(constants, replicate.mean_pairwise_differences(), S);
        if (D_sim <= 0.0) ++not_positive;
        if (D_sim <= report.D) ++not_above_observed;
        D.add(D_sim);
        theta_S.add(S / constants.a1);
    });
    if (!finished || num_sim == 0) return finished;
    report.num_sim = num_sim;
    report.mean_theta_S = theta_S.mean();
    report.sd_theta_S = theta_S.sd();
    report.mean_D = D.mean();
    report.P_not_positive = static_cast<double>(not_positive) / num_sim;
    report.P = static_cast<double>(not_above_observed) / num_sim;
    sample.tajima_p = report.P;
    return true;
}

template <class Sample>
void test_sample(Sample& sample, settings& s, std::ostream& out) {
    sample.tajima_D = 0.0;
    sample.tajima_p = -1.0;
    TajimaReport report = observe(sample, s);
    if (s.stopped()) return;
    if (std::isnan(report.pi)) {
        print_no_distances_for_test(out);
    } else {
        print_tajima(out, report);
    }
    if (report.defined) {
        if (!simulate(sample, s, report)) return;
        print_tajima_simulations(out, report);
    } else {
        kSequenceTestProgress.skip(s.NumSimulFuTest);
    }
    write_tajima_row(sample, report);
}

}  // namespace

void tajima_test(PopulDNA& sample, settings& s, std::ostream& out) {
    test_sample(sample, s, out);
}
void tajima_test(PopulRFLP& sample, settings& s, std::ostream& out) {
    test_sample(sample, s, out);
}

}  // namespace mnd
