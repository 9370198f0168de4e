#include "between/pairwise_tests.h"

#include <cstddef>
#include <span>

#include "run/settings.h"

namespace mnd {

namespace {

constexpr int kAttemptsObserved = 50;               // of the solver, for the observed differences
constexpr int kAttemptsPermuted = 20;               // and for those of a permutation
constexpr std::int64_t kPermutationsPerStep = 100;  // between two looks at the stop flag

// The equations have a root only where all differences are there.
bool can_diverge(const PairDifferences& d) {
    return d.pi_X != 0.0 && d.pi_Y != 0.0 && d.pi_XY != 0.0;
}

double proportion(std::int64_t hits, std::int64_t of) {
    return of > 0 ? static_cast<double>(hits) / static_cast<double>(of) : 0.0;
}

void solve_permutation(TSolveDivTimes& solver, const PairDifferences& d, PairTestCounters& counters) {
    if (!can_diverge(d)) return;
    solver.set_targets(d.pi_X, d.pi_Y, d.pi_XY);
    if (solver.solve(kAttemptsPermuted) != 0) return;
    counters.count_divergence(static_cast<double>(solver.tau), static_cast<double>(solver.k),
                              static_cast<double>(solver.theta));
}

// Returns: false when the work shall stop
bool tell_progress(const settings& s) {
    settings::global_work_done += 1.0;
    settings::print_message();
    return !s.stopped();
}

}  // namespace

PairDivergence pair_divergence(const PairDifferences& d) {
    PairDivergence divergence;
    if (!can_diverge(d)) return divergence;
    TSolveDivTimes solver(d.pi_X, d.pi_Y, d.pi_XY);
    divergence.not_converged = solver.solve(kAttemptsObserved) != 0 ? 1.0 : 0.0;
    divergence.tau = static_cast<double>(solver.tau);
    divergence.k_ratio = static_cast<double>(solver.k);
    divergence.theta0 = static_cast<double>(solver.theta);
    return divergence;
}

PairTestCounters::PairTestCounters(const PairObserved& observed, const BatchPlan& plan)
    : observed_(observed), plan_(plan), batch_hits_(static_cast<std::size_t>(plan.batches) + 2, 0.0) {}

void PairTestCounters::count_component(double Va) {
    if (Va >= observed_.variance.Va - kAmovaEpsilon) {
        ++hits_;
        batch_hits_[static_cast<std::size_t>(cell_)] += 1.0;
    }
    if (++cell_ >= plan_.batches) cell_ = 0;
}

void PairTestCounters::count_differences(const PairDifferences& differences) {
    if (observed_.differences.pi_XY <= differences.pi_XY) ++pi_hits_;
    if (observed_.differences.corrected_multiple <= differences.corrected_multiple) ++corrected_hits_;
}

void PairTestCounters::count_divergence(double tau, double k, double theta) {
    ++solved_;
    if (tau >= observed_.divergence.not_converged) ++tau_hits_;
    if (k >= observed_.divergence.k_ratio) ++k_hits_;
    if (theta >= observed_.divergence.theta0) ++theta_hits_;
}

double PairTestCounters::error(double p) const {
    const auto batches = static_cast<std::size_t>(plan_.batches);
    return batch_error(std::span(batch_hits_).first(batches), plan_.per_batch, p);
}

PairTestResult PairTestCounters::result() const {
    PairTestResult r;
    // Kept on purpose: this P-value alone has one more below the line.
    // Test: PairTestCounters.FstAloneDividesByOneMore
    r.fst_p = proportion(hits_, plan_.total + 1);
    r.fst_sd = error(r.fst_p);
    r.pi_p = proportion(pi_hits_, plan_.total);
    r.pi_corr_p = proportion(corrected_hits_, plan_.total);
    r.tau_p = proportion(tau_hits_, solved_);
    r.k_p = proportion(k_hits_, solved_);
    r.theta0_p = proportion(theta_hits_, solved_);
    return r;
}

bool test_pair(PairBlock& block, const PairDesign& design, const PairObserved& observed,
               const PairTestPlan& plan, const settings& s, PairTestResult& result) {
    PairTestCounters counters(observed, plan.permutations);
    TSolveDivTimes solver(0.0L, 0.0L, 0.0L);
    for (std::int64_t done = 1; done <= plan.permutations.total; ++done) {
        if (plan.shuffles_individuals) {
            block.shuffle_individuals();
        } else {
            block.shuffle_copies();
        }
        const PairSSD ssd = block.sums();
        const PairDifferences differences = pair_differences(design, ssd);
        counters.count_component(permuted_component(design, ssd));
        counters.count_differences(differences);
        if (plan.solves_divergence) solve_permutation(solver, differences, counters);
        if (done % kPermutationsPerStep == 0 && !tell_progress(s)) return false;
    }
    result = counters.result();
    return true;
}

}  // namespace mnd
