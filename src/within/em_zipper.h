// Haplotype frequencies over many loci, window by window: each step adds some loci to those
// estimated before, and keeps only the phases that the haplotypes found so far allow.
#pragma once

#include <memory>
#include <vector>

#include "model/phenotypes.h"
#include "model/pop_haplotypes.h"

namespace mnd {

class Population;
class settings;

// The result of one order of the loci.
struct ZipperEstimate {
    std::vector<int> order;      // all loci, from 0; those used stand first, as they were added
    int loci_used = 0;           // multiple of the window; the last loci of order may be left out
    double ln_likelihood = 0.0;  // of the last step, over all loci used
    int num_likelihoods = 0;     // different ones among the starts of the last step
    double F = 0.0;              // inbreeding coefficient of the last step
    TPopHaploDB haplotypes;      // over the loci used, in ascending order of loci
    TPhenDB phenotypes;          // individuals; their genotypes point into haplotypes
};

// Loci of a window: the number wanted, or all loci when it is below 1 or above their number.
int zipper_window(int wanted, int loci);

// Orders that are tried: EMNumZipRandOrders, or the one given.
int zipper_orders(const settings& s);

// Shuffles so that no element keeps its place: an element changes places only with one before it.
// Draws: one less than there are elements
// Source: Sattolo 1986, Inf. Process. Lett. 22:315-317
void shuffle_loci(std::vector<int>& order);

// Estimates the haplotypes of a sample along EMNumZipRandOrders random orders of its loci, or once
// in the order given when that is 0. Windows of EMWinSize loci; random starts, threshold and
// inbreeding are those of the settings. The sample itself is left as it is.
// Returns: the order of highest likelihood, the first one of several; null when none could be
//          estimated, be it that the work was stopped or that the phases of no order can be listed
// Draws:   per order those of shuffle_loci, then those of each step
std::unique_ptr<ZipperEstimate> estimate_by_zipper(Population& sample, settings& s);

}  // namespace mnd
