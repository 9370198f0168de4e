#include "model/popul_rflp.h"

#include <string_view>

#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

PopulRFLP::PopulRFLP() {
    initialize_RFLP();
}

PopulRFLP::PopulRFLP(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile)
    : PopGenetics(sample_name, sample_id, sample_profile) {
    initialize_RFLP();
}

PopulRFLP::PopulRFLP(const Population& other) : PopGenetics(other) {
    initialize_RFLP();
}

PopulRFLP& PopulRFLP::operator=(const Population& other) {
    if (this == &other) return *this;
    PopGenetics::operator=(other);
    initialize_RFLP();
    return *this;
}

PopulRFLP::~PopulRFLP() = default;

Population* PopulRFLP::clone() const {
    return new PopulRFLP(static_cast<const Population&>(*this));
}

void PopulRFLP::initialize_RFLP() {
    initialize_results();
    del_weight = 1.0;
    subst_site.clear();
    del_site.clear();
    nb_subst = nb_del = nb_subst_sites = nb_del_sites = nb_observed_sites = 0;
}

int PopulRFLP::check_data() {
    if (hapl_list.count == 0) return 1;
    const bool counts_agree = check_counts("PopulRFLP::check_data()");
    const bool lengths_agree =
        check_content_lengths("PopulRFLP::check_data()", kRFLPHaplotypesDifferInLength);
    return counts_agree && lengths_agree ? 1 : 0;
}

int PopulRFLP::evaluate_polymorphism(const settings& s) {
    allowed_missing = s.AllowedLevelOfMissingData;
    if (!has_haplotypes()) return compare_phenotypes();
    // What check_data finds wrong it mends or has warned of: the comparison copes with it.
    check_data();
    return compare_RFLP_haplotypes();
}

void PopulRFLP::build_arbitrary_haplotype() {
    build_reference(std::string_view(&profile.MissingData, 1));
}

int PopulRFLP::compare_RFLP_haplotypes() {
    if (hapl_list.count == 0) return 0;
    build_arbitrary_haplotype();
    const std::string_view reference = ref_hapl.content.view();
    reset_loci(static_cast<int>(reference.size()));
    subst_site.assign(reference.size(), 0);
    del_site = subst_site;
    nb_observed_sites = nb_loci;
    for (std::size_t site = 0; site < reference.size(); ++site) {
        const bool is_separator = profile.LocusSeparator != 0 && reference[site] == profile.LocusSeparator;
        if (reference[site] != profile.MissingData && !is_separator) continue;
        usable_site[site] = 0;
        missing_level[site] = sample_size;
        if (is_separator) --nb_observed_sites;
    }
    for (const PHaploDef* entry : hapl_list)
        compare_with_reference(*entry);
    count_sites();
    return 1;
}

// Marks where one haplotype differs from the reference.
void PopulRFLP::compare_with_reference(const PHaploDef& entry) {
    const std::string_view reference = ref_hapl.content.view();
    const std::string_view haplotype = entry.def->content.view();
    const char missing = profile.MissingData;
    for (std::size_t site = 0; site < reference.size(); ++site) {
        if (usable_site[site] == 0) continue;
        const char c = site < haplotype.size() ? haplotype[site] : missing;
        if (c == missing) {
            missing_level[site] += entry.freq;
        } else if (c != reference[site]) {
            const bool is_deletion = c == '-' || reference[site] == '-';
            (is_deletion ? del_site : subst_site)[site] = 1;
        }
    }
}

void PopulRFLP::count_sites() {
    nb_subst = nb_del = nb_subst_sites = nb_del_sites = 0;
    nb_polym_loci = nb_usable_loci = 0;
    const std::string_view reference = ref_hapl.content.view();
    for (std::size_t site = 0; site < usable_site.size(); ++site) {
        missing_level[site] = sample_size > 0.0 ? missing_level[site] / sample_size : 0.0;
        if (missing_level[site] > allowed_missing) usable_site[site] = 0;
        if (usable_site[site] == 0) continue;
        const bool deletion = del_weight > 0.0 && del_site[site] != 0;
        nb_del += deletion ? 1 : 0;
        nb_subst += subst_site[site];
        if (deletion || subst_site[site] != 0) polym_locus[site] = 1;
        nb_polym_loci += polym_locus[site];
        if (reference[site] == '-' && del_site[site] == 0) usable_site[site] = 0;  // a gap in all haplotypes
        nb_usable_loci += usable_site[site];
    }
    nb_subst_sites = nb_subst;
    nb_del_sites = nb_del;
}

}  // namespace mnd
