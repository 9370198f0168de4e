#include "between/haplotype_matrix.h"

#include <cstddef>
#include <iomanip>
#include <memory>
#include <new>
#include <string>

#include "between/spanning_tree.h"
#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/rect_mat.h"
#include "foundation/report.h"
#include "input/dist_mat.h"
#include "model/haplotypes.h"
#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "model/samples.h"
#include "run/errors.h"
#include "run/settings.h"
#include "within/sample_analyses.h"
#include "within/sample_distances.h"

namespace mnd {

namespace {

// All definitions of a project as one sample, whose loci are compared.
class PooledDefinitions {
public:
    PooledDefinitions(Haplo_DB& definitions, TAlleleDB& alleles, const ProfileSettings& profile,
                      int data_type)
        : sites_(PopGenetics::globalSubstPolymSites),
          pool_(Samples::new_sample(data_type, Population(my_string("all haplotypes"), 0, profile))) {
        pool_->allele_db = &alleles;
        pool_->phen_to_gam_done = 1;  // its haplotypes are all there is of it
        pool_->haplotype_transf(definitions);
        // A locus is usable by its share of missing data among all gene copies.
        for (const PHaploDef* entry : pool_->hapl_list)
            pool_->sample_size += entry->freq;
    }
    // The polymorphic sites of the pass are those of its samples.
    ~PooledDefinitions() { PopGenetics::globalSubstPolymSites = sites_; }
    PooledDefinitions(const PooledDefinitions&) = delete;
    PooledDefinitions& operator=(const PooledDefinitions&) = delete;

    // Null when there is nothing to compare.
    PopGenetics* compared(const settings& s) {
        auto* sample = dynamic_cast<PopGenetics*>(pool_.get());
        if (sample == nullptr || sample->hapl_list.count == 0) return nullptr;
        copy_weights(*sample, s);
        return sample->evaluate_polymorphism(s) != 0 ? sample : nullptr;
    }

private:
    static void copy_weights(PopGenetics& sample, const settings& s) {
        if (auto* dna = dynamic_cast<PopulDNA*>(&sample)) {
            dna->ts_weight = s.TransitionWeight;
            dna->tv_weight = s.TranversionWeight;
            dna->del_weight = s.DeletionWeight;
        } else if (auto* rflp = dynamic_cast<PopulRFLP*>(&sample)) {
            rflp->del_weight = s.DeletionWeight;
        }
    }

    std::vector<bool> sites_;
    std::unique_ptr<Population> pool_;
};

UsableLoci usable_loci_of(const PopGenetics* sample, const settings& s) {
    UsableLoci usable;
    usable.allowed_missing = s.AllowedLevelOfMissingData;
    if (sample != nullptr) usable.loci = usable_loci(*sample, sample->nb_loci);
    return usable;
}

void label_rows(DistMat& matrix, const Haplo_DB& definitions) {
    matrix.labels.clear();
    for (const HaploDef* definition : definitions.list)
        matrix.labels.push_back(definition->name);
}

// The distances of the sample, which stand below its diagonal.
void copy_triangle(const RectMat& distances, DistMat& matrix) {
    for (int i = 0; i < distances.rows; ++i) {
        for (int j = 0; j <= i; ++j)
            matrix.data[i][j] = distances.data[i][j];
    }
}

}  // namespace

bool compute_haplotype_matrix(DistMat& matrix, Haplo_DB& definitions, TAlleleDB& alleles,
                              const ProfileSettings& profile, settings& s, const HaplotypeDistance& distance,
                              UsableLoci& usable) {
    matrix.reset();
    PooledDefinitions pool(definitions, alleles, profile, distance.data_type);
    PopGenetics* sample = pool.compared(s);
    usable = usable_loci_of(sample, s);
    if (sample != nullptr) {
        sample->distance_method = distance.method;
        sample->gamma_a = distance.gamma;
        sample->compute_distance_matrix(nullptr, &s, 0);
    }
    if (sample == nullptr || sample->dist_mat == nullptr) {
        report(Error, "Project::calc_dist_matrix()", kDistanceMatrixNotComputed);
        return false;
    }
    if (sample->dist_mat->conventional != 0) {
        make_conventional_matrix(matrix, definitions);
        return true;
    }
    matrix.initializeMatrixAndArrays(sample->dist_mat->rows);
    copy_triangle(*sample->dist_mat, matrix);
    label_rows(matrix, definitions);
    return true;
}

void make_conventional_matrix(DistMat& matrix, const Haplo_DB& definitions) {
    matrix.reset();
    matrix.destroy();
    matrix.conventional = 1;
    matrix.MatrixSize = static_cast<int>(definitions.list.count);
    label_rows(matrix, definitions);
}

UsableLoci find_usable_loci(Haplo_DB& definitions, TAlleleDB& alleles, const ProfileSettings& profile,
                            settings& s) {
    PooledDefinitions pool(definitions, alleles, profile, profile.DataType);
    return usable_loci_of(pool.compared(s), s);
}

void print_usable_loci(std::ostream& out, const UsableLoci& usable) {
    constexpr std::size_t kNumbersPerLine = 10;
    constexpr int kWidth = 7;
    const FormatGuard guard(out);
    out << std::dec << std::right << std::fixed << std::setprecision(5)
        << "\nNumber of usable loci for distance computation : " << usable.loci.size()
        << "\nAllowed level of missing data                  : " << usable.allowed_missing
        << "\n\nList of usable loci :\n"
        << "---------------------\n";
    if (usable.loci.empty()) out << "NONE";
    for (std::size_t i = 0; i < usable.loci.size(); ++i) {
        if (i > 0 && i % kNumbersPerLine == 0) out << '\n';
        out << std::setw(kWidth) << usable.loci[i] + 1;
    }
    out << "\n\n";
}

// A tree needs as many cells as the square of its haplotypes, which a conventional matrix never had.
void print_global_network(std::ostream& out, const DistMat& matrix, const Haplo_DB& definitions) {
    const int n = matrix.MatrixSize;
    try {
        RectMat square(n, n);
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j)
                square.data[i][j] = matrix.get(i, j);
        }
        print_spanning_network(out, square, definitions, "MST_AMOVA", "MST_AMOVA");
    } catch (const std::bad_alloc&) {
        for (std::ostream* stream : {&out, _AOS_})
            *stream << "\nUnable to allocate memory for the minimum spanning network of " << n << " OTUs\n";
    }
}

std::vector<int> classes_of_identical_haplotypes(const DistMat& matrix, const Haplo_DB& definitions) {
    std::vector<int> class_of(static_cast<std::size_t>(matrix.MatrixSize) + 1);
    for (std::size_t row = 0; row < class_of.size(); ++row)
        class_of[row] = static_cast<int>(row);
    std::vector<int> rows;
    for (const HaploDef* definition : definitions.list)
        rows.push_back(definition->id);
    const auto its_class = [&class_of](int row) -> int& { return class_of[static_cast<std::size_t>(row)]; };
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = i + 1; j < rows.size(); ++j) {
            if (matrix.get(rows[j], rows[i]) == 0.0) its_class(rows[j]) = its_class(rows[i]);
        }
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (its_class(rows[i]) != its_class(rows[j]) || matrix.get(rows[j], rows[i]) == 0.0) continue;
            its_class(rows[i]) = rows[i];
            its_class(rows[j]) = rows[j];
        }
    }
    return class_of;
}

void print_shared_haplotypes(std::ostream& out, const Samples& samples, const Haplo_DB& definitions,
                             const std::vector<int>& class_of) {
    print_heading(out, "== Checking for haplotypes shared among populations:");
    for (const Population* sample : samples.populations) {
        print_heading(out, "== Population : " + std::string(sample->name.view()));
        for (const Population* other : samples.populations)
            sample->print_out_redondant(out, *other, class_of);
    }
    samples.print_out_haplo_cl(out, definitions, class_of);
}

}  // namespace mnd
