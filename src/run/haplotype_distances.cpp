// The distances between all haplotypes of a project, and the haplotypes that they tell to be one.
#include <ostream>
#include <vector>

#include "between/haplotype_matrix.h"
#include "foundation/data_type.h"
#include "results/tree_script.h"
#include "results/xml_tags.h"
#include "run/errors.h"
#include "run/project.h"

namespace mnd {

void Project::calc_dist_matrix(int const& method, double const& gamma) {
    settings& s = the_settings;
    UsableLoci usable;
    // Without content there is nothing but the names to tell haplotypes apart.
    if (s.ComputeConventionalFST != 0 || DataType == FREQUENCY) {
        usable = find_usable_loci(haplo_db, allele_db, *this, s);
        make_conventional_matrix(dist_mat, haplo_db);
    } else {
        mnd::compute_haplotype_matrix(dist_mat, haplo_db, allele_db, *this, s, {DataType, method, gamma},
                                      usable);
    }
    dist_matrix_computed = true;
    if (s.result_stream != nullptr) print_usable_loci(*s.result_stream, usable);
}

void Project::print_distance_matrix() {
    settings& s = the_settings;
    if (s.result_stream == nullptr || dist_mat.MatrixSize == 0) return;
    std::ostream& out = *s.result_stream;
    if (s.PrintDistanceMatrix != 0) out << '\n' << dist_mat << '\n';
    if (s.PrintMinSpannNetworkGlob == 0) return;
    const bool group_level = !samples->output_by_sample;
    print_js_doc_entry(s, 2, group_level ? "_gr_glob_spann" : "_pop_glob_spann", "Minimum spanning network");
    print_global_network(out, dist_mat, haplo_db);
}

// Fills `dist_mat` with distances that are 0 between haplotypes which are one and the same, and binds
// the haplotypes to its rows.
bool Project::measure_redundancy() {
    settings& s = the_settings;
    if (DataType == FREQUENCY) {
        if (s.ComputeDistanceMatrixAMOVA == 0) return haplo_db.associate_with1(dist_mat);
        make_conventional_matrix(dist_mat, haplo_db);
        return haplo_db.associate_with2(dist_mat);
    }
    UsableLoci usable;
    constexpr int kDifferentAlleles = 0;
    mnd::compute_haplotype_matrix(dist_mat, haplo_db, allele_db, *this, s, {STANDARD, kDifferentAlleles, 0.0},
                                  usable);
    return haplo_db.associate_with2(dist_mat);
}

void Project::eliminate_redond_haplodef() {
    settings& s = the_settings;
    const DistMat given(dist_mat);
    const int was_conventional = dist_mat.conventional;  // a copy never is
    if (!measure_redundancy()) {
        E.error(Error, "Project::eliminate_redond_haplodef()", kHaplotypeListIncompatibleWithMatrix);
    } else {
        const std::vector<int> class_of = classes_of_identical_haplotypes(dist_mat, haplo_db);
        if (s.result_stream != nullptr)
            print_shared_haplotypes(*s.result_stream, *samples, haplo_db, class_of);
        if (s.InferHaplotypeDefinitionFromDistanceMatrix != 0 && DataType != FREQUENCY)
            samples->IdentifyIdenticalHaplotypes(class_of, dist_mat);
    }
    if (s.ComputeDistanceMatrixAMOVA != 0) return;
    dist_mat = given;
    dist_mat.conventional = was_conventional;
}

}  // namespace mnd
