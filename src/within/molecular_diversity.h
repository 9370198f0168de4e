// Molecular diversity of a sample from the distances between its haplotypes.
#pragma once

namespace mnd {

struct MolecularDiversity {
    double mean_pairwise_diff = 0.0;
    double sd_pairwise_diff = 0.0;
    double nucl_diversity = 0.0;  // mean number of differences per usable locus
    double sd_nucl_diversity = 0.0;
};

// The mean number of pairwise differences pi and the nucleotide diversity d = pi/L,
//
//   Var(pi) = (2 (n^2 + n + 3) pi^2 + 3 (n^2 + n) pi) / (11 n^2 - 7 n + 6)
//   Var(d)  = 2 (n^2 + n + 3) d^2 / (9 (n^2 - n)) + (n + 1) d / (3 (n - 1) L)
//
//   total            sum of the distances over all pairs of gene copies
//   n                gene copies; 1 or less gives zeros
//   nb_usable_loci   L; 0 gives zeros
// Source: Tajima 1993, in Mechanisms of Molecular Evolution (Takahata and Clark, eds), 37-59
//         (variance of pi); Tajima 1983, Genetics 105:437-460; Nei 1987, Molecular
//         Evolutionary Genetics, eq. 10.9 (variance of d)
MolecularDiversity molecular_diversity(double total, double n, int nb_usable_loci);

}  // namespace mnd
