#include "within/fu_fs.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "model/integer_part.h"
#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/settings.h"
#include "within/ewens_sampling.h"
#include "within/ewens_watterson.h"
#include "within/indels_left_out.h"
#include "within/neutral_samples.h"
#include "within/neutrality_tables.h"
#include "within/replicate_progress.h"

namespace mnd {

namespace {

constexpr const char* kReporter = "PopGenetics::Fu_Fs()";

void warn(bool report_it, MessageCode code) {
    if (report_it) mnd::report(Warning, kReporter, code);
}

}  // namespace

int PopGenetics::Fu_Fs(double const& theta, int const& k, double& Fs, bool report) {
    if (theta <= 0.0) {
        Fs = kNumericalInfinity;
        warn(report, kNoDiversityInFuTest);
        return 0;
    }
    const int n = integer_part(sample_size);
    if (n >= kNeutralityCopyLimit || k >= kNeutralityAlleleLimit || n < 1 || k < 1 || !ensure_B(n, k)) {
        warn(report, kTooManyAllelesOrTooLargeSample);
        return 0;
    }
    const double S = static_cast<double>(1.0L - probability_below_k(k, n, theta, BMat));
    if (S > 0.0 && S < 1.0) {
        Fs = std::log(S / (1.0 - S));
        return 1;
    }
    if (S == 0.0) {
        Fs = -kNumericalInfinity;
    } else if (S == 1.0) {
        Fs = kNumericalInfinity;
        warn(report, kNoDiversityInFuTest);
    } else {
        warn(report, kNegativeSInFs);
    }
    return 0;
}

// --- The test of a sample

namespace {

constexpr double kNotKnown = std::numeric_limits<double>::quiet_NaN();

// What is known without distances. A single allele has no differences.
template <class Sample>
FuReport count(const Sample& sample, const settings& s) {
    FuReport report;
    report.n = integer_part(sample.sample_size);
    report.k = number_of_alleles(sample);
    report.original_k = sample.nb_orig_hapl > 0 ? sample.nb_orig_hapl : report.k;
    report.checked = s.InferHaplotypeDefinitionFromDistanceMatrix != 0;
    report.weighted = has_weights(sample);
    report.theta_pi = report.k == 1 && report.n > 1 ? 0.0 : kNotKnown;
    report.k_est = report.k == 1 ? 1.0 : kNotKnown;
    return report;
}

// The observed values. Returns: false when there are none, as was reported
template <class Sample>
bool observe(Sample& sample, settings& s, FuReport& report) {
    const IndelsLeftOut differences(sample, s);
    if (!differences.computed()) return false;
    sample.calc_theta_pi(sample.mean_pairwise_diff);
    sample.fu_theta_pi = report.theta_pi = sample.theta_pi;
    report.k_est = sample.k_est(report.theta_pi, report.n);
    // Fs stays as it is when it can't be computed.
    report.Fs = kNotKnown;
    sample.Fu_Fs(report.theta_pi, report.k, report.Fs, true);
    sample.fu_Fs = std::isnan(report.Fs) ? 0.0 : report.Fs;
    return true;
}

// The block of the observed values, or why there are none. Returns: whether Fs can be tested
template <class Sample>
bool print_observed(Sample& sample, settings& s, std::ostream& out, FuReport& report) {
    if (report.n < 2) {
        out << "Fu's Fs test cannot be computed if only one gene in sample\n";
    } else if (report.k < 2) {
        out << "Fu's Fs test cannot be computed if only one allele in sample\n";
    } else if (observe(sample, s, report)) {
        if (!s.stopped()) print_fu(out, report);
        return !std::isnan(report.Fs) && report.theta_pi > 0.0;
    } else if (!s.stopped()) {
        print_no_distances_for_test(out);
    }
    return false;
}

// P-value and moments from simulated samples. Returns: false when the run was stopped
template <class Sample>
bool simulate(Sample& sample, const settings& s, FuReport& report) {
    const int num_sim = std::max(s.NumSimulFuTest, 0);
    RunningSums theta_pi;
    RunningSums k;
    int not_above_observed = 0;
    NeutralSamples samples(sample, report.theta_pi);
    const bool finished = samples.simulate(num_sim, s, [&](NeutralSamples& replicate) {
        const double theta = replicate.mean_pairwise_differences();
        const int alleles = replicate.alleles();
        double Fs = 0.0;
        sample.Fu_Fs(theta, alleles, Fs, false);
        if (Fs <= report.Fs) ++not_above_observed;
        theta_pi.add(theta);
        k.add(alleles);
    });
    if (!finished || num_sim == 0) return finished;
    report.num_sim = num_sim;
    report.mean_theta_pi = theta_pi.mean();
    report.sd_theta_pi = theta_pi.sd();
    report.mean_k = k.mean();
    report.sd_k = k.sd();
    report.P = static_cast<double>(not_above_observed) / num_sim;
    sample.fu_p = report.P;
    return true;
}

template <class Sample>
void test_sample(Sample& sample, settings& s, std::ostream& out) {
    sample.fu_Fs = sample.fu_theta_pi = 0.0;
    sample.fu_p = -1.0;
    if (s.stopped()) return;
    FuReport report = count(sample, s);
    const bool testable = print_observed(sample, s, out, report);
    if (s.stopped()) return;
    if (testable) {
        if (!simulate(sample, s, report)) return;
        print_fu_simulations(out, report);
    } else {
        kSequenceTestProgress.skip(s.NumSimulFuTest);
    }
    write_fu_row(sample, report);
}

}  // namespace

void fu_test(PopulDNA& sample, settings& s, std::ostream& out) {
    test_sample(sample, s, out);
}
void fu_test(PopulRFLP& sample, settings& s, std::ostream& out) {
    test_sample(sample, s, out);
}

}  // namespace mnd
