// The blocks of standard and of molecular diversity in the result document. They print from
// the fields of a sample and compute nothing but percentages.
#pragma once

#include <ostream>

namespace mnd {

class PopGenetics;
class PopulDNA;
class PopulMicrosat;
class PopulRFLP;
class PopulStandard;
class settings;

// Haplotypes stand for what the project file writes side by side: said where gametic phase is
// unknown, since what rests on them then depends on that writing.
void print_phase_caution(std::ostream& out, const PopGenetics& sample);

// Sizes, numbers of loci and polymorphic loci, gene diversity.
//   polymorphic_label   line of the number of polymorphic sites or loci
void print_standard_indices(std::ostream& out, const PopGenetics& sample, const char* polymorphic_label);

// What molecular diversity rests on: sizes, weights and counts of differences.
void print_molecular_basis(std::ostream& out, const PopulDNA& sample);
void print_molecular_basis(std::ostream& out, const PopulRFLP& sample);
void print_molecular_basis(std::ostream& out, const PopulMicrosat& sample);
void print_molecular_basis(std::ostream& out, const PopulStandard& sample);

// The distance method, and the gamma correction if it is one of the methods that have it.
void print_method(std::ostream& out, const PopGenetics& sample, settings& s);

// In place of what distances give, for frequencies whose haplotypes have no content.
void print_no_distances(std::ostream& out);

// Mean number of pairwise differences; for sequences also nucleotide diversity.
void print_pairwise_differences(std::ostream& out, const PopGenetics& sample, bool nucleotide_diversity);

// Estimators of theta. A number that is not finite is printed as "N.A.", here and above.
void print_theta_Hom(std::ostream& out, const PopGenetics& sample);
void print_theta_S(std::ostream& out, const PopGenetics& sample);
void print_theta_pi(std::ostream& out, const PopGenetics& sample);
//   computed   false: the sample is beyond what the estimator can serve, which is said
void print_theta_k(std::ostream& out, const PopGenetics& sample, bool computed);

// The matrix of distances between the haplotypes of the sample, with their names.
void print_haplotype_distances(std::ostream& out, const PopGenetics& sample);

// Publications of the methods of each block.
void cite_standard_indices(std::ostream& out, bool microsatellites);
void cite_molecular_diversity(std::ostream& out, const PopGenetics& sample);
void cite_theta(std::ostream& out, const PopGenetics& sample);

}  // namespace mnd
