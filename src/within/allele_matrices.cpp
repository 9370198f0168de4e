// Distance matrices of samples whose haplotypes are lists of alleles.
#include <cstdlib>
#include <ctime>
#include <unordered_map>

#include "foundation/clock_time.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "model/popul_microsat.h"
#include "model/popul_standard.h"
#include "run/errors.h"
#include "within/allele_distances.h"
#include "within/sample_distances.h"

namespace mnd {
namespace {

constexpr char kMicrosatOrigin[] = "PopulMicrosat::compute_distance_matrix()";
constexpr char kStandardOrigin[] = "PopulStandard::compute_distance_matrix()";
constexpr int kNumberOfDifferences = 0;

// The alleles of haplotype h; null for one without a definition.
const HaploDef* definition(const Population& sample, int h) {
    const PHaploDef* entry = sample.hapl_list[h];
    return entry == nullptr ? nullptr : entry->def;
}

int loci_of_first_definition(const Population& sample) {
    const HaploDef* first = definition(sample, 0);
    return first == nullptr ? 0 : static_cast<int>(first->num_alleles());
}

// The allele of a haplotype at a locus; null where it has none.
const TAllele* allele_at(const HaploDef* def, int locus) {
    return def == nullptr ? nullptr : def->at_const(locus);
}

// Alleles are told apart by their address; missing ones are all alike.
AlleleDifferences::Table identity_table(const Population& sample, const std::vector<int>& loci) {
    const char missing = sample.profile.MissingData;
    std::unordered_map<const TAllele*, std::int32_t> numbers;
    AlleleDifferences::Table table(static_cast<std::size_t>(sample.hapl_list.count));
    for (std::size_t h = 0; h < table.size(); ++h) {
        const HaploDef* def = definition(sample, static_cast<int>(h));
        table[h].reserve(loci.size());
        for (const int locus : loci) {
            const TAllele* allele = allele_at(def, locus);
            std::int32_t number = AlleleDifferences::kMissing;
            if (allele != nullptr && !allele->is_char(missing)) {
                number =
                    numbers.try_emplace(allele, static_cast<std::int32_t>(numbers.size()) + 1).first->second;
            }
            table[h].push_back(number);
        }
    }
    return table;
}

RepeatDistances::Table repeat_table(const Population& sample, const std::vector<int>& loci) {
    const char missing = sample.profile.MissingData;
    RepeatDistances::Table table(static_cast<std::size_t>(sample.hapl_list.count));
    for (std::size_t h = 0; h < table.size(); ++h) {
        const HaploDef* def = definition(sample, static_cast<int>(h));
        table[h].reserve(loci.size());
        for (const int locus : loci) {
            const TAllele* allele = allele_at(def, locus);
            RepeatAllele repeat;
            repeat.missing = allele == nullptr || allele->is_char(missing);
            if (!repeat.missing) repeat.size = std::atof(allele->c_str());
            table[h].push_back(repeat);
        }
    }
    return table;
}

// Fills the cells below the diagonal by compare(i, j, distance); false, without a matrix, when
// that fails or the work shall stop.
template <class Compare>
bool fill_below_diagonal(PopGenetics& sample, const settings* s, Compare compare) {
    for (int i = 0; i < sample.nb_hapl; ++i) {
        double* row = sample.dist_mat->data[i];
        for (int j = 0; j < i; ++j) {
            if (!compare(i, j, row[j])) {
                sample.dist_mat.reset();
                return false;
            }
            note_distance(sample, row[j]);
        }
        if (!row_is_done(s)) {
            sample.dist_mat.reset();
            return false;
        }
    }
    return true;
}

// The frame of both types: refusal of an empty sample, progress, table.
//   fill   fills the matrix over the loci given; false when it can't
template <class Fill>
int make_matrix(PopGenetics& sample, const char* origin, std::fstream* out, Fill fill) {
    if (sample.hapl_list.count == 0) {
        report_no_haplotypes(origin);
        return 0;
    }
    *_AOS_ << "\t\tBeginning distance computations ...\n";
    const std::clock_t begin = std::clock();
    if (!prepare_distance_matrix(sample, false)) return 0;
    if (!fill(usable_loci(sample, loci_of_first_definition(sample)))) return 0;
    *_AOS_ << "\t\tdone ! (" << milliseconds_since(begin) << " ms)\n";
    write_distance_matrix(out, sample);
    return 1;
}

}  // namespace

int PopulStandard::compute_distance_matrix(std::fstream* out, settings* s, int /*scale_by_loci*/) {
    return make_matrix(*this, kStandardOrigin, out, [&](const std::vector<int>& loci) {
        const AlleleDifferences differences(identity_table(*this, loci));
        return fill_below_diagonal(*this, s, [&](int i, int j, double& cell) {
            cell = differences.count(i, j);
            return true;
        });
    });
}

int PopulMicrosat::compute_distance_matrix(std::fstream* out, settings* s, int /*scale_by_loci*/) {
    return make_matrix(*this, kMicrosatOrigin, out, [&](const std::vector<int>& loci) {
        const RepeatDistances distances(repeat_table(*this, loci));
        const auto distance_of = distance_method == kNumberOfDifferences
                                     ? &RepeatDistances::number_of_differences
                                     : &RepeatDistances::sum_of_squares;
        return fill_below_diagonal(*this, s, [&](int i, int j, double& cell) {
            if ((distances.*distance_of)(i, j, cell)) return true;
            report(Error, kMicrosatOrigin, kMicrosatAlleleNotInteger);
            return false;
        });
    });
}

}  // namespace mnd
