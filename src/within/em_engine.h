// Parts of the estimation of haplotype frequencies that its drivers share. The drivers themselves
// are operations of Population.
#pragma once

#include <vector>

namespace mnd {

class Population;
class TPhenDB;
class TPopHaploDB;
class settings;

// Result of an estimation that was stopped or could not list the resolutions.
inline constexpr double kEstimationStopped = -1000.0;
// Scale of the random starts: the weights of haplotypes lie between 1 and this plus 1.
inline constexpr int kRandomStartScale = 1000;

// Numbers that are told apart when they differ by at least some tolerance.
class DistinctValues {
public:
    explicit DistinctValues(double tolerance) : tolerance_(tolerance) {}
    // Enters the value unless one within the tolerance, or an equal one, was entered before.
    // Cost: O(log n) to find, O(n) to enter
    void add(double value);
    int count() const;

private:
    double tolerance_;
    std::vector<double> values_;  // ascending
};

// What goes before the first start: merges equal phenotypes if the settings ask for it, lists the
// resolutions of each, and takes monomorphic loci out of the haplotypes.
//   prev_haplo, prev_loci, compact   as in Population::calc_ML_hapl_freq_hill95_LD
// Returns: false after error 114; the genotypes and haplo are then empty
bool list_resolutions(const Population& sample, TPhenDB& phen, TPopHaploDB& haplo, const settings& s,
                      TPopHaploDB* prev_haplo, int* prev_loci, bool compact);

}  // namespace mnd
