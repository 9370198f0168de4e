// Permutation tests of the variance components of a design.
//
// A test shuffles what the level of its component holds, over and over, and counts how often
// the component comes out as extreme as observed. The shuffle goes on from one permutation to
// the next; each test begins with the data as observed.
//
// Source: Excoffier, Smouse and Quattro 1992, Genetics 131:479-491
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include "between/amova.h"
#include "foundation/batch_stat.h"

namespace mnd {

// The side on which values speak against the hypothesis of no structure.
enum class Tail { kLower, kUpper };

// Counters of one test.
class HitCounter {
public:
    // plan   the permutations of the test, and the batches that give its error
    HitCounter(double observed, Tail tail, const BatchPlan& plan);

    // Counts the component of the next permutation: as equal when it is closer than
    // kAmovaEpsilon to the observed one, else as beyond when it lies on the side of the tail.
    void add(double value);

    // Proportions of the permutations of the plan.
    double beyond() const { return proportion(nb_beyond()); }
    double equal() const { return proportion(equal_); }
    double p_value() const { return proportion(nb_beyond() + equal_); }
    // Standard deviation of p_value from its variation among the batches, to which the
    // permutations go in turn; in single precision. 0 with a single batch.
    float error() const;

private:
    double observed_;
    Tail tail_;
    BatchPlan plan_;
    std::int64_t less_ = 0;
    std::int64_t equal_ = 0;
    std::int64_t greater_ = 0;
    std::int64_t cell_ = 0;    // batch of the next permutation
    std::vector<float> hits_;  // hits of each batch, two cells more than batches

    std::int64_t nb_beyond() const { return tail_ == Tail::kLower ? less_ : greater_; }
    double proportion(std::int64_t hits) const;
};

// Heading of all tests of a design.
void print_tests_heading(std::ostream& out, std::int64_t num_perm);

// The three lines of one test.
//   prefix   component and index, 12 characters
void print_test(std::ostream& out, const char* prefix, Tail tail, const HitCounter& hits);

// Runs all tests of a design, whose observed results stand:
//
//   design        tested in this order, by the shuffle named
//   G_P_H         Vc by PHAPAG, Vb by PHAPWG, Va by PPAG
//   G_P_IH        Vc by PIAPAG, Vb by PIAPWG, Va by PPAG
//   1G_P_H        Va by PHAPWG
//   1G_P_IH       Va by PIAPWG
//   1G_P_I        Vb by PHAIWP, Va by PIAPWG, Vc by PHAPWG
//   G_P_I         Vd by PHAPAG, Vc by PHAIWP, Vb by PIAPWG, Va by PPAG
//   1G_1P_I       Va by PHAIWP
//
// Reads:    num_perm (the number asked for), df, n, SSDT, SSDWP, SSDWI, SSD_total, SSD_pops,
//           group_SSD, group_size, N_genes, N_units, Va to Vd, pop_Fis; haplo_index for the
//           first test of G_P_H; the SSD_div_n of the samples for their FIS
// Writes:   num_perm (the number done, 0 when no test is run); haplo_index and the tallies as the
//           last permutation left them; after PPAG these as observed, and all_pops, group_pops,
//           group_size, n, n_prime, n_second as left; pop_Fis_hits and the SSD_within_ind of the
//           samples in PHAIWP, where PopSpecificFIS is set; P-values and null distributions
//           in `results`, if there is one; with print_results the tests in the document, and
//           where KeepNullDistrib is set the null distribution files and the histogram; the end
//           of the row in the batch summary, also when no test runs
// Draws:    those of the shuffles, num_perm times each; none when num_perm is below 1
// Reports:  kNotEnoughMemory (Memory) or kTooManyElementsToPermute (Error), by design, when there
//           are more elements than can be permuted: no test is run
// Returns:  1; 0 when the work was stopped or a null distribution has no file
int test_components(Amova& analysis, std::int32_t design);

}  // namespace mnd
