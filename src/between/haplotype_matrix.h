// The matrix of distances between all haplotypes of a project, and what is told of it.
//
// The haplotypes of all samples are compared as if they were one sample: which loci are usable,
// and the base composition that some distances need, are therefore those of the whole project.
#pragma once

#include <ostream>
#include <vector>

namespace mnd {

class DistMat;
class Haplo_DB;
class ProfileSettings;
class Samples;
class TAlleleDB;
class settings;

// The distance to compute between haplotypes.
struct HaplotypeDistance {
    int data_type = 0;  // compared as data of this type
    int method = 0;     // number as in the settings file
    double gamma = 0.0;
};

// The loci that distances were computed from.
struct UsableLoci {
    std::vector<int> loci;         // numbers from 0, ascending
    double allowed_missing = 0.0;  // largest share of missing data at a usable locus
};

// Fills `matrix` with the distances between the definitions, in their order, labelled by their
// names. Distances are per haplotype, not per site or locus, unless the method is a proportion.
//   profile   how the data are written
// Returns: false after a report (136 and that of the distance), and `matrix` is empty
// Cost:     O(h^2 L) for h definitions of L loci
bool compute_haplotype_matrix(DistMat& matrix, Haplo_DB& definitions, TAlleleDB& alleles,
                              const ProfileSettings& profile, settings& s, const HaplotypeDistance& distance,
                              UsableLoci& usable);

// Makes `matrix` the one of conventional F-statistics, a row per definition: 0 on the diagonal,
// 1 elsewhere, without cells.
void make_conventional_matrix(DistMat& matrix, const Haplo_DB& definitions);

// The usable loci of the definitions alone.
UsableLoci find_usable_loci(Haplo_DB& definitions, TAlleleDB& alleles, const ProfileSettings& profile,
                            settings& s);

// Number and list of the usable loci, by numbers from 1.
void print_usable_loci(std::ostream& out, const UsableLoci& usable);

// The minimum spanning network of the whole matrix, with the names of the definitions. Without the
// memory for it the document and the log say so instead.
void print_global_network(std::ostream& out, const DistMat& matrix, const Haplo_DB& definitions);

// Classes of definitions at distance 0 from one another, by matrix row: the row of the last
// definition before that is equal, or its own. A definition that is not at distance 0 from another
// one of its class, which missing data may bring about, has its own. The definitions are bound
// to their rows.
// Returns: one class for each row, and one entry more
// Cost:     O(h^2)
std::vector<int> classes_of_identical_haplotypes(const DistMat& matrix, const Haplo_DB& definitions);

// What the samples share: a block for each of them, then the classes of identical definitions.
void print_shared_haplotypes(std::ostream& out, const Samples& samples, const Haplo_DB& definitions,
                             const std::vector<int>& class_of);

}  // namespace mnd
