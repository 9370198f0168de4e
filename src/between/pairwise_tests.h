// Permutation tests of the statistics of one pair of samples.
//
// The gene copies, or the individuals, of the two samples are shuffled between them over and
// over; a statistic is the more significant the more rarely it comes out as large as observed.
// The shuffle goes on from one permutation to the next.
#pragma once

#include <cstdint>
#include <vector>

#include "between/amova_tests.h"
#include "between/divergence_times.h"
#include "between/pairwise_block.h"
#include "between/pairwise_statistics.h"

namespace mnd {

class settings;

// Divergence of two samples, as the solver of TSolveDivTimes found it.
struct PairDivergence {
    double tau = 0.0;
    double k_ratio = 0.0;
    double theta0 = 0.0;
    double not_converged = 0.0;  // 1 when it found no root
};

// The divergence that the differences of two samples tell; all 0 when one of them is 0.
// Draws:    those of TSolveDivTimes::solve, at most 50 attempts
PairDivergence pair_divergence(const PairDifferences& differences);

// What was observed in a pair of samples.
struct PairObserved {
    PairVariance variance;
    PairDifferences differences;
    PairDivergence divergence;
};

// Proportions of permutations with a statistic not below the observed one.
struct PairTestResult {
    double fst_p = 0.0;      // of Va, which stands for FST: hits / (permutations + 1)
    double fst_sd = 0.0;     // error of fst_p from its variation among batches; 0 with one batch
    double pi_p = 0.0;       // of pi_XY: hits / permutations
    double pi_corr_p = 0.0;  // of the corrected difference
    double tau_p = 0.0;      // of the divergence: hits / permutations that were solved, 0 if none was
    double k_p = 0.0;
    double theta0_p = 0.0;
};

// Counters of the tests of one pair.
class PairTestCounters {
public:
    PairTestCounters(const PairObserved& observed, const BatchPlan& plan);

    // Counts the component of the next permutation: a hit when it is above the observed one or
    // closer to it than kAmovaEpsilon.
    void count_component(double Va);
    // Counts its differences: hits when the observed ones are not above them. No tolerance: both
    // come from the same expressions. The corrected ones are compared by their multiples.
    void count_differences(const PairDifferences& differences);
    // Counts a permutation whose divergence was found: a hit of k and of theta when they are not
    // below the observed ones.
    // Kept on purpose: tau is compared with the observed mark of failure, 0 or 1, not with the
    // observed tau. Test: PairTestCounters.TauIsComparedWithTheMarkOfFailure
    void count_divergence(double tau, double k, double theta);

    PairTestResult result() const;

private:
    PairObserved observed_;
    BatchPlan plan_;
    std::vector<double> batch_hits_;  // hits of each batch, two cells more than batches
    std::int64_t cell_ = 0;           // batch of the next permutation
    std::int64_t hits_ = 0;
    std::int64_t pi_hits_ = 0;
    std::int64_t corrected_hits_ = 0;
    std::int64_t solved_ = 0;
    std::int64_t tau_hits_ = 0;
    std::int64_t k_hits_ = 0;
    std::int64_t theta_hits_ = 0;

    double error(double p) const;
};

// How the tests of a pair run.
struct PairTestPlan {
    BatchPlan permutations;
    bool shuffles_individuals = false;
    bool solves_divergence = false;
};

// Runs the tests of one pair, whose block is in the observed arrangement.
//   result   written unless the work was stopped
// Writes:   block, as the last permutation left it; the progress of the work
// Draws:    those of the shuffle for each permutation, and with solves_divergence those of at most
//           20 attempts of TSolveDivTimes::solve
// Returns:  false when the work was stopped
bool test_pair(PairBlock& block, const PairDesign& design, const PairObserved& observed,
               const PairTestPlan& plan, const settings& s, PairTestResult& result);

}  // namespace mnd
