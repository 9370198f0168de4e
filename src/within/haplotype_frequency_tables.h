// The blocks of haplotype frequencies in the result document.
#pragma once

#include <ostream>
#include <vector>

namespace mnd {

class Population;

// What an estimation was made with, and what it gave besides the frequencies.
struct EmSummary {
    double gene_copies = 0.0;
    int random_starts = 0;
    int num_likelihoods = 0;     // different ones among the starts
    double epsilon = 0.0;        // change of all frequencies below which a start ends
    double ln_likelihood = 0.0;  // of the best start; "N.A." where no start led to one
    bool with_inbreeding = false;
    double F = 0.0;  // inbreeding coefficient, estimated or held
};

// How an estimation went from window to window.
struct ZipperSummary {
    int wanted_window = 0;  // loci of a step, as the settings have it
    int window = 0;         // the same, as it was done; all loci for what is not within them
    int orders = 0;         // orders of the loci that were tried
    std::vector<int> loci;  // those of the best order, from 0, as they were added
};

// Head of the estimation window by window.
void print_zipper_head(std::ostream& out, const EmSummary& summary, const ZipperSummary& zipper);

// Head of the estimation over all loci at once, with the publication of the method.
void print_one_pass_head(std::ostream& out, const EmSummary& summary);

// Publication of the method.
void cite_em(std::ostream& out);

// Head of the estimation over a subset of the loci.
//   subset     [0] number of loci, 1 or 2, [1..] their positions, from 0
//   num_boot   bootstrap replicates
void print_subset_head(std::ostream& out, const int* subset, const EmSummary& summary, int num_boot);

// In place of the table, when an individual has too many resolutions.
void print_not_resolvable(std::ostream& out);

// Haplotype frequencies of a sample whose haplotypes are known, by counting: number, name,
// frequency, standard deviation sqrt(p (1 - p) / n), count and content of each one, in the order
// of the data.
//   threshold   only haplotypes with a frequency above it get a row
void print_counted_haplotypes(std::ostream& out, const Population& sample, double threshold);

}  // namespace mnd
