#include <algorithm>
#include <ctime>
#include <string>
#include <vector>

#include "foundation/clock_time.h"
#include "model/population.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

namespace {

// The shared table of B numbers: its first size, what growing adds, what is left of it after a
// run, and the sizes from which the tests refuse to work.
constexpr int kBaseBRows = 200;
constexpr int kBaseBCols = 80;
constexpr int kBMargin = 10;
constexpr int kRestBSize = 5;

constexpr const char* kReferenceName = "Arbitrary reference haplotype";

// First allele seen at each locus, and whether another one was seen there.
class LocusScan {
public:
    LocusScan(std::vector<double>& missing_level, std::vector<int>& polym_locus, char missing)
        : missing_level_(missing_level),
          polym_locus_(polym_locus),
          missing_(missing),
          first_(missing_level.size()) {}

    // Takes one haplotype with its count. A locus that it lacks is missing.
    void add(const MY_TIArrayAsVector<TAllele>& alleles, double count) {
        for (std::size_t locus = 0; locus < first_.size(); ++locus) {
            const TAllele* allele = alleles.at_const(static_cast<long>(locus));
            if (allele == nullptr || allele->is_char(missing_)) {
                missing_level_[locus] += count;
            } else if (first_[locus] == nullptr) {
                first_[locus] = allele;
            } else if (first_[locus] != allele) {
                polym_locus_[locus] = 1;
            }
        }
    }

private:
    std::vector<double>& missing_level_;
    std::vector<int>& polym_locus_;
    char missing_;
    std::vector<const TAllele*> first_;  // not owned: alleles of the project's store
};

}  // namespace

TAlleleDB PopGenetics::globalAllelicDB;
std::vector<bool> PopGenetics::globalSubstPolymSites;
BnumMat PopGenetics::BMat(kRestBSize, kRestBSize);
int PopGenetics::B_num_exist = 0;

PopGenetics::PopGenetics() = default;

PopGenetics::PopGenetics(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile)
    : Population(sample_name, sample_id, sample_profile) {}

PopGenetics::PopGenetics(const Population& other) : Population(other) {}

PopGenetics& PopGenetics::operator=(const Population& other) {
    if (this == &other) return *this;
    Population::operator=(other);
    initialize_results();
    return *this;
}

PopGenetics::~PopGenetics() = default;

Population* PopGenetics::clone() const {
    return new PopGenetics(static_cast<const Population&>(*this));
}

void PopGenetics::test_methods(settings&) {}

void PopGenetics::clean_bnum() {
    BMat.re_allocate_matrix(kRestBSize, kRestBSize);
    B_num_exist = 0;
}

int PopGenetics::check_data() {
    return 0;
}

int PopGenetics::compute_distance_matrix(std::fstream*, settings*, int) {
    return 0;
}

int PopGenetics::evaluate_polymorphism(const settings&) {
    return 0;
}

void PopGenetics::initialize_results() {
    nb_polym_loci = nb_usable_loci = nb_loci = 0;
    ref_hapl = HaploDef();
    missing_level.clear();
    usable_site.clear();
    allowed_missing = 0.0;
    distance_method = 0;
    gamma_a = distance = distance_var = 0.0;
    max_dist = 0;
    dist_mat.reset();
    sum_sq_freq = homozygosity = heterozygosity = sd_heterozygosity = exp_k = 0.0;
    mean_pairwise_diff = sd_pairwise_diff = nucl_diversity = sd_nucl_diversity = 0.0;
    theta_S = sd_theta_S = theta_hom = sd_theta_hom = theta_pi = sd_theta_pi = 0.0;
    theta_k = theta_k_lower = theta_k_upper = 0.0;
    static_cast<TajimaResult&>(*this) = TajimaResult{};
    static_cast<MismatchResult&>(*this) = MismatchResult{};
    obs_F = exp_F = slatkin_obs = fu_Fs = fu_theta_pi = 0.0;
    ew_p = slatkin_p = p_exactly_k = p_k_or_more = fu_p = -1.0;
    slatkin_test = 0;
    sampler.reset();
    mean_allele_sizes.clear();
    locus_heterozygosity.clear();
    locus_nb_alleles.clear();
    allele_range.clear();
    garza_williamson.clear();
    garza_williamson_modified.clear();
}

void PopGenetics::reset_loci(int n) {
    const auto size = static_cast<std::size_t>(n);
    nb_loci = n;
    polym_locus.assign(size, 0);
    usable_site.assign(size, 1);
    missing_level.assign(size, 0.0);
}

void PopGenetics::settle_loci() {
    nb_usable_loci = nb_polym_loci = 0;
    for (std::size_t locus = 0; locus < missing_level.size(); ++locus) {
        missing_level[locus] = sample_size > 0.0 ? missing_level[locus] / sample_size : 0.0;
        if (missing_level[locus] > allowed_missing) {
            usable_site[locus] = 0;
            continue;
        }
        ++nb_usable_loci;
        if (polym_locus[locus] != 0) ++nb_polym_loci;
    }
}

int PopGenetics::compare_haplotypes() {
    if (hapl_list.count == 0) {
        E.error(Error, "PopGenetics::compare_haplotypes()", kHaplotypeListIsEmpty);
        return 0;
    }
    reset_loci(static_cast<int>(hapl_list.data[0]->def->num_alleles()));
    LocusScan scan(missing_level, polym_locus, profile.MissingData);
    for (const PHaploDef* entry : hapl_list)
        scan.add(*entry->def, entry->freq);
    settle_loci();
    return 1;
}

int PopGenetics::compare_phenotypes() {
    if (phen_db.count == 0) {
        E.error(Error, "PopGenetics::compare_phenotypes()", kHaplotypeListIsEmpty);
        return 0;
    }
    reset_loci(phen_db.num_loci());
    LocusScan scan(missing_level, polym_locus, profile.MissingData);
    for (const TPhenotype* phenotype : phen_db) {
        for (const auto& haplotype : phenotype->pseudo_hapl) {
            if (haplotype) scan.add(haplotype->alleles, phenotype->freq);
        }
    }
    settle_loci();
    return 1;
}

namespace {

// Makes the shared table unless it is there, and says so in the log: on a line of its own, since the one
// of the analysis that needs the table is open.
bool make_B_table() {
    if (PopGenetics::B_num_exist != 0) return true;
    *_AOS_ << '\n' << "\t\tComputing BMat ...";
    const std::clock_t start = std::clock();
    const bool made = PopGenetics::get_B_num_mat() != 0;
    *_AOS_ << "\t\tdone ! (" << milliseconds_since(start) << " ms)\n";
    return made;
}

}  // namespace

int PopGenetics::get_B_num_mat() {
    if (B_num_exist == 0) B_num_exist = BMat.re_allocate_matrix(kBaseBRows, kBaseBCols);
    return B_num_exist;
}

bool PopGenetics::ensure_B(int n, int k) {
    if (n < 0 || k < 0 || n >= kMaxBnumRows || k >= kMaxBnumCols) return false;
    if (!make_B_table()) return false;
    if (n < BMat.rows && k < BMat.cols) return true;
    const int rows = std::min(std::max(n + kBMargin, BMat.rows), kMaxBnumRows);
    const int cols = std::min(std::max(k + kBMargin, BMat.cols), kMaxBnumCols);
    B_num_exist = BMat.re_allocate_matrix(rows, cols);
    return B_num_exist != 0;
}

bool PopGenetics::check_counts(const char* reporter) {
    bool consistent = true;
    double sum = 0.0;
    for (const PHaploDef* entry : hapl_list)
        sum += entry->freq;
    if (sample_size > 0.0 && sample_size != sum) {
        E.error(Warning, reporter, kFrequenciesDoNotAddUp);
        consistent = false;
    }
    sample_size = sum;
    inv_sample_size = sum > 0.0 ? 1.0 / sum : 1.0;
    const int entries = static_cast<int>(hapl_list.count);
    if (nb_hapl == 0) nb_hapl = entries;
    if (nb_hapl == entries) return consistent;
    if (profile.GenotypicData == 0 || profile.GameticPhase == 0) {
        E.error(Warning, reporter, kNumberOfHaplotypesChanged);
        return false;
    }
    nb_hapl = entries;
    return consistent;
}

bool PopGenetics::check_content_lengths(const char* reporter, int code) const {
    const int length = hapl_list.data[0]->def->content.length();
    for (const PHaploDef* entry : hapl_list) {
        if (entry->def->content.length() == length) continue;
        E.error(Warning, reporter, code);
        return false;
    }
    return true;
}

void PopGenetics::build_reference(std::string_view passed_over) {
    if (!ref_hapl.content.is_null() || hapl_list.count == 0) return;
    const char separator = profile.LocusSeparator;
    std::string reference(hapl_list.data[0]->def->content.view());
    for (std::size_t site = 0; site < reference.size(); ++site) {
        if (separator != 0 && reference[site] == separator) continue;
        for (long next = 1; next < hapl_list.count; ++next) {
            if (passed_over.find(reference[site]) == std::string_view::npos) break;
            const std::string_view text = hapl_list.data[next]->def->content.view();
            if (site < text.size()) reference[site] = text[site];
        }
    }
    ref_hapl.name = kReferenceName;
    ref_hapl.content = reference.c_str();
}

}  // namespace mnd
