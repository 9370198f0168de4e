// Gene diversity and the estimators of theta = 4 N u (2 N u in haploids), as plain functions.
#pragma once

#include <vector>

#include "foundation/bnum_mat.h"

namespace mnd {

// An estimate and its standard deviation.
struct Estimate {
    double value = 0.0;
    double sd = 0.0;
};

// Sum of p^2, in the order given.
double sum_of_squares(const std::vector<double>& frequencies);

// Expected homozygosity of a sample and its complement, the gene diversity.
struct GeneDiversity {
    double homozygosity = 0.0;
    double heterozygosity = 0.0;
};

// Gene diversity H = n/(n - 1) (1 - sum p^2), at most 1.
//   sum_sq      sum p^2 of the haplotypes
//   nb_alleles  distinct haplotypes; as many as gene copies: exactly 1, whatever the sum
//   n           gene copies; 1 or less gives 0
// Source: Nei 1987, Molecular Evolutionary Genetics, eq. 8.4
GeneDiversity gene_diversity(double sum_sq, int nb_alleles, double n);

// Standard deviation of the gene diversity for the sampling process,
//
//   2/((n - 1) n) { 2 (n - 2) (sum p^3 - (sum p^2)^2) + sum p^2 - (sum p^2)^2 }, its root
//
// and 0 for n of 1 or less.
// Source: Nei 1987, eq. 8.12
double sd_gene_diversity(const std::vector<double>& frequencies, double n);

// theta from homozygosity under the infinite-allele model: solves
//
//   1/h - 1 = theta (1 + 2 (theta + 1)/((theta + 2)(theta + 3)))
//
// by false position, to 1e-07 in 1/h - 1 or 1000 steps.
//   h      homozygosity; 1 gives 0, and 0 or less kNumericalInfinity, for value and sd
//   sd_h   standard deviation of the gene diversity
// Source: Zouros 1979, Genetics 92:623-646; Chakraborty and Weiss 1991, American Journal of
//         Physical Anthropology 86:497-506 (standard deviation)
Estimate theta_from_homozygosity(double h, double sd_h);

// theta from S segregating sites among n gene copies, without recombination; 0 for n below 2.
// Of sequences the sites with substitutions count, as in Tajima's test, and not those with
// indels alone.
//
//   S/a1,  s.d. = sqrt((a1^2 S + a2 S^2) / (a1^2 (a1^2 + a2))),  a1 = sum 1/i, a2 = sum 1/i^2, i < n
//
// Source: Watterson 1975, Theoretical Population Biology 7:256-276; Tajima 1989, Genetics
//         123:585-595 (variance)
Estimate theta_from_segregating_sites(int n, int S);

// theta from the mean number of pairwise differences; 0 for n below 2.
//
//   pi,  s.d. = sqrt((n + 1)/(3 (n - 1)) pi + 2 (n^2 + n + 3)/(9 n (n - 1)) pi^2)
//
// Source: Tajima 1983, Genetics 105:437-460
Estimate theta_from_pairwise_differences(double pi, double n);

// Expected number of alleles among n gene copies, sum of theta/(theta + i) for i = 0 .. n - 1;
// 1 for theta of 0 or less, 0 for n below 1.
// Source: Ewens 1972, Theoretical Population Biology 3:87-112
double expected_number_of_alleles(double theta, int n);

// theta from the number of alleles, with the limits of its 95 % confidence interval.
struct ThetaK {
    double theta = 0.0;
    double lower = 0.0;
    double upper = 0.0;
};

// Largest samples for which theta is estimated from the number of alleles: fewer gene copies
// and fewer alleles than these.
inline constexpr int kThetaKCopyLimit = 5000;
inline constexpr int kThetaKAlleleLimit = 1000;

// Solves E(K) = k for theta by bisection, and P(K <= k | theta) = 0.975 and 0.025 for the
// lower and the upper limit, where
//
//   P(K = j | theta) = |s(n, j)| theta^j / (theta (theta + 1) ... (theta + n - 1))
//
// k = 1 gives theta and the lower limit 0.
//   k   observed alleles, 1 <= k < n
//   B   table with at least n rows and k columns
// Source: Ewens 1972
ThetaK theta_from_number_of_alleles(int k, int n, const BnumMat& B);

}  // namespace mnd
