// Replicates of a fitted model of expansion: their P-values and percentiles.
#include <algorithm>
#include <cmath>
#include <string>

#include "model/population.h"
#include "run/settings.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"
#include "within/mismatch_tables.h"

namespace mnd {

namespace {

// Value of a sorted list at (int)(p n - 1.0), 0 of an empty one.
double percentile(const std::vector<double>& sorted, double p) {
    if (sorted.empty()) return 0.0;
    const auto n = static_cast<int>(sorted.size());
    return sorted[static_cast<std::size_t>(std::clamp(static_cast<int>(p * n - 1.0), 0, n - 1))];
}

// Differences between founders of the replicates, beyond Theta0, from which on they are said.
constexpr double kFoundersApart = 0.1;

ParameterPercentiles percentiles(const std::vector<double>& sorted) {
    return {percentile(sorted, 0.025), percentile(sorted, 0.05), percentile(sorted, 0.95),
            percentile(sorted, 0.975)};
}

}  // namespace

void ReplicateResults::sort() {
    for (std::vector<double>* list : {&Tau, &Theta0, &Theta1, &M, &growth, &mean, &sites})
        std::sort(list->begin(), list->end());
    for (std::vector<double>& list : shares)
        std::sort(list.begin(), list.end());
}

// --- What the models differ in

ann_missmatch::Parameters ann_missmatch::parameters() const {
    return {Theta0, Theta1, Tau, 0.0};
}
void ann_missmatch::set_parameters(const Parameters& values) {
    Theta0 = values.Theta0;
    Theta1 = values.Theta1;
    Tau = values.Tau;
}
bool ann_missmatch::simulate_replicate(double* diff, double* freq, int& count) {
    return simulate_miss(diff, freq, count) != 0;
}
bool ann_missmatch::fit_replicate(double* diff, double* freq, int count) {
    return hook_jeeves_rh(diff, freq, count, max_steps, epsilon);
}
void ann_missmatch::keep_parameters(ReplicateResults& results) const {
    results.Tau.push_back(Tau);
    results.Theta0.push_back(Theta0);
    results.Theta1.push_back(Theta1);
    if (Theta0 > 0.0) results.growth.push_back(Theta1 / Theta0);
    results.sites.push_back(simulated_sites_);
}
double ann_missmatch::largest_share() const {
    return kNumericalInfinity;
}

mismatchSpatialExpansion::Parameters mismatchSpatialExpansion::parameters() const {
    return {Theta0, Theta1, Tau, M};
}
void mismatchSpatialExpansion::set_parameters(const Parameters& values) {
    ann_missmatch::set_parameters(values);
    M = values.M;
}
bool mismatchSpatialExpansion::simulate_replicate(double* diff, double* freq, int& count) {
    return simulate_spatial_exp(diff, freq, count) != 0;
}
bool mismatchSpatialExpansion::fit_replicate(double* diff, double* freq, int count) {
    return hook_jeeves_spatial_exp_3_par(diff, freq, count, max_steps, epsilon);
}
void mismatchSpatialExpansion::keep_parameters(ReplicateResults& results) const {
    results.Tau.push_back(Tau);
    results.M.push_back(M);
    results.Theta1.push_back(Theta1);
}
double mismatchSpatialExpansion::largest_share() const {
    return 1.0;
}

// --- The replicates

void ann_missmatch::keep_replicate(double* diff, double* freq, int count, double raggedness,
                                   ReplicateResults& results) const {
    ++results.kept;
    if (ssd_work >= ssd_obs) ++results.ssd_hits;
    if (raggedness >= rag_obs) ++results.rag_hits;
    keep_parameters(results);
    results.mean.push_back(calc_mean_mssm(diff, freq, count));
    for (int k = 1; k <= count; ++k) {
        if (freq[k] <= largest_share()) results.shares[static_cast<std::size_t>(k - 1)].push_back(freq[k]);
    }
}

bool ann_missmatch::run_replicates(int count, int asked, ReplicateResults& results) {
    const Parameters fitted_values = parameters();
    const int fitted_not_converged = not_converged;
    std::vector<double> diff(static_cast<std::size_t>(count) + 10);
    std::vector<double> freq(diff.size());
    results.shares.assign(static_cast<std::size_t>(count), {});
    bool stopped = false;
    for (int b = 1; b <= asked && !stopped; ++b) {
        mnd::settings::global_work_done += 1.0;
        mnd::settings::print_message();
        stopped = settings->stopped();
        if (stopped) break;
        set_parameters(fitted_values);
        if (!simulate_replicate(diff.data(), freq.data(), count)) continue;
        const double raggedness = compute_raggedness_index(diff.data(), freq.data(), count);
        set_parameters(fitted_values);
        if (!fit_replicate(diff.data(), freq.data(), count)) continue;
        keep_replicate(diff.data(), freq.data(), count, raggedness, results);
    }
    set_parameters(fitted_values);
    not_converged = fitted_not_converged;
    return !stopped;
}

void ann_missmatch::summarise(const ReplicateResults& results) {
    num_boot = results.kept;
    p_ssd = results.kept > 0 ? static_cast<double>(results.ssd_hits) / results.kept : 0.0;
    p_rag = results.kept > 0 ? static_cast<double>(results.rag_hits) / results.kept : 0.0;
    tau_percentiles = percentiles(results.Tau);
    theta0_percentiles = percentiles(results.Theta0);
    theta1_percentiles = percentiles(results.Theta1);
}

bool ann_missmatch::make_bootstrap(double* diff, double* freq, double* fitted_shares, int& count,
                                   long const& total, std::basic_fstream<char>& out, int asked) {
    ReplicateResults results;
    begin_simulations();
    if (!run_replicates(count, asked, results)) return false;
    results.sort();
    summarise(results);
    ReplicateBlock block = {"mismatchDemogExp",
                            "mismatchDemogExpCI",
                            nullptr,
                            std::string(pop->name.view()),
                            {{"Tau:", Tau, &results.Tau},
                             {"Theta0:", Theta0, &results.Theta0},
                             {"Theta1:", Theta1, &results.Theta1},
                             {"Mean No. of pairwise diff.", calc_mean_mssm(diff, freq, count), &results.mean},
                             {"No. pol. sites:", static_cast<double>(pop->nb_polym_loci), &results.sites}}};
    if (founder_theta() > Theta0 + kFoundersApart) {
        block.founder_theta = founder_theta();
        block.founders_of = N;
    }
    print_replicates(out, block, result(), results, {diff, freq, fitted_shares, count, total}, asked);
    return true;
}

bool mismatchSpatialExpansion::make_bootstrap_spatial_exp(double* diff, double* freq, double* fitted_shares,
                                                          int& count, long const& total,
                                                          std::basic_fstream<char>& out, int asked) {
    ReplicateResults results;
    begin_simulations();
    if (!run_replicates(count, asked, results)) return false;
    results.sort();
    summarise(results);
    m_percentiles = percentiles(results.M);
    const ReplicateBlock block = {
        "mismatchSpatialExp",
        "mismatchSpatialExpCI",
        "\nConfidence region for the observed mismatch:\n",
        std::string(pop->name.view()),
        {{"Tau:", Tau, &results.Tau},
         {"M:", M, &results.M},
         {"Theta:", Theta1, &results.Theta1},
         {"Mean No. of pairwise diff.", calc_mean_mssm(diff, freq, count), &results.mean}}};
    print_replicates(out, block, result(), results, {diff, freq, fitted_shares, count, total}, asked);
    return true;
}

}  // namespace mnd
