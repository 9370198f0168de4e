#include "model/popul_dna.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "model/nucleotides.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

namespace {

constexpr std::string_view kAmbiguities = "RYMKSWHBVDN";

bool is_ambiguous(char c) {
    return kAmbiguities.find(c) != std::string_view::npos;
}

}  // namespace

PopulDNA::PopulDNA() {
    initialize_DNA();
}

PopulDNA::PopulDNA(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile)
    : PopGenetics(sample_name, sample_id, sample_profile) {
    initialize_DNA();
}

PopulDNA::PopulDNA(const Population& other) : PopGenetics(other) {
    initialize_DNA();
}

PopulDNA& PopulDNA::operator=(const Population& other) {
    if (this == &other) return *this;
    PopGenetics::operator=(other);
    initialize_DNA();
    return *this;
}

PopulDNA::~PopulDNA() = default;

Population* PopulDNA::clone() const {
    return new PopulDNA(static_cast<const Population&>(*this));
}

void PopulDNA::initialize_DNA() {
    initialize_results();
    del_weight = ts_weight = tv_weight = 1.0;
    nucl_freq = {};
    gc_content = 0.0;
    pair_counts = {};
    ts_count = tv_count = site_count = diff_count = 0;
    ts_dist = tv_dist = ts_rate = tv_rate = ts_tv_ratio = ts_tv_ratio_var = 0.0;
    nucl_ambiguities.Flush();
    for (const char c : kAmbiguities)
        nucl_ambiguities.Add(c);
    ts_site.clear();
    tv_site.clear();
    del_site.clear();
    undet_site.clear();
    reset_counters();
    nb_observed_sites = 0;
}

void PopulDNA::reset_counters() {
    nb_ts = nb_tv = nb_subst = nb_del = 0;
    nb_ts_sites = nb_tv_sites = nb_subst_sites = nb_del_sites = 0;
    nb_polym_loci = nb_usable_loci = 0;
}

int PopulDNA::check_data() {
    if (hapl_list.count == 0) return 1;
    const bool counts_agree = check_counts("PopulDNA::check_data()");
    const bool lengths_agree = check_content_lengths("PopulDNA::check_data()", kDNASequencesDifferInLength);
    return counts_agree && lengths_agree ? 1 : 0;
}

int PopulDNA::evaluate_polymorphism(const settings& s) {
    allowed_missing = s.AllowedLevelOfMissingData;
    if (!has_haplotypes()) return compare_phenotypes();
    // What check_data finds wrong it mends or has warned of: the comparison copes with it.
    check_data();
    return compare_DNA_sequences();
}

void PopulDNA::build_arbitrary_haplotype() {
    build_reference(std::string(kAmbiguities) + profile.MissingData);
}

int PopulDNA::compare_nucleotides(const char& a, const char& b) const {
    return mnd::compare_nucleotides(a, b);
}

int PopulDNA::compare_DNA_sequences() {
    if (hapl_list.count == 0) return 0;
    build_arbitrary_haplotype();
    const int sites = ref_hapl.content.length();
    reset_loci(sites);
    ts_site.assign(usable_site.size(), 0);
    tv_site = del_site = undet_site = ts_site;
    nb_observed_sites = sites;
    close_empty_sites();
    std::string first_tv(usable_site.size(), '\0');
    for (const PHaploDef* entry : hapl_list)
        compare_with_reference(*entry, first_tv);
    count_sites();
    return 1;
}

// Sites at which no sequence has a character.
void PopulDNA::close_empty_sites() {
    const std::string_view reference = ref_hapl.content.view();
    const char separator = profile.LocusSeparator;
    for (std::size_t site = 0; site < reference.size(); ++site) {
        const bool is_separator = separator != 0 && reference[site] == separator;
        if (reference[site] != profile.MissingData && !is_separator) continue;
        usable_site[site] = 0;
        missing_level[site] = sample_size;
        if (is_separator) --nb_observed_sites;
    }
}

// Marks the classes of differences between one sequence and the reference.
//   first_tv   per site, the first unambiguous character that is a transversion of the reference
void PopulDNA::compare_with_reference(const PHaploDef& entry, std::string& first_tv) {
    const std::string_view reference = ref_hapl.content.view();
    const std::string_view sequence = entry.def->content.view();
    const char missing = profile.MissingData;
    for (std::size_t site = 0; site < reference.size(); ++site) {
        if (usable_site[site] == 0) continue;
        const char c = site < sequence.size() ? sequence[site] : missing;
        if (c == missing) {
            missing_level[site] += entry.freq;
        } else if (c != reference[site]) {
            mark_difference(site, c, compare_nucleotides(c, reference[site]), first_tv[site]);
        }
    }
}

void PopulDNA::mark_difference(std::size_t site, char c, int nucleotide_class, char& first_tv) {
    switch (nucleotide_class) {
        case kTransition:
            ts_site[site] = 1;
            break;
        case kDeletion:
            del_site[site] = 1;
            break;
        case kUndeterminedSubstitution:
            undet_site[site] = 1;
            break;
        case kTransversion:
            tv_site[site] = std::max(tv_site[site], 1);
            if (is_ambiguous(c)) break;
            if (first_tv == '\0') {
                first_tv = c;
            } else if (first_tv != c) {
                tv_site[site] = 2;
            }
            break;
        default:
            break;
    }
}

void PopulDNA::count_sites() {
    reset_counters();
    if (globalSubstPolymSites.size() < usable_site.size())
        globalSubstPolymSites.resize(usable_site.size(), false);
    const std::string_view reference = ref_hapl.content.view();
    for (std::size_t site = 0; site < usable_site.size(); ++site) {
        missing_level[site] = sample_size > 0.0 ? missing_level[site] / sample_size : 0.0;
        if (missing_level[site] > allowed_missing) usable_site[site] = 0;
        if (usable_site[site] == 0) continue;
        count_differences(site);
        nb_polym_loci += polym_locus[site];
        if (reference[site] == '-' && del_site[site] == 0) usable_site[site] = 0;  // a gap in all sequences
        nb_usable_loci += usable_site[site];
    }
}

// Adds the classes seen at a site to the counters, as far as they have a weight.
void PopulDNA::count_differences(std::size_t site) {
    if (del_weight > 0.0 && del_site[site] != 0) {
        ++nb_del;
        ++nb_del_sites;
        polym_locus[site] = 1;
    }
    if (ts_weight > 0.0 && ts_site[site] != 0) {
        ++nb_ts;
        ++nb_ts_sites;
        ++nb_subst;
        ++nb_subst_sites;
        polym_locus[site] = 1;
        globalSubstPolymSites[site] = true;
    }
    if (tv_weight > 0.0 && tv_site[site] != 0) count_transversions(site);
    const bool undetermined_alone = undet_site[site] != 0 && ts_site[site] == 0 && tv_site[site] == 0;
    if (undetermined_alone && (ts_weight > 0.0 || tv_weight > 0.0)) {
        ++nb_subst;
        ++nb_subst_sites;
        polym_locus[site] = 1;
    }
}

void PopulDNA::count_transversions(std::size_t site) {
    ++nb_tv;
    ++nb_tv_sites;
    ++nb_subst;
    polym_locus[site] = 1;
    // Two different transversions of one base are a transition of each other.
    if (tv_site[site] == 2 && ts_weight > 0.0) {
        ++nb_ts;
        ++nb_subst;
    }
    if (ts_site[site] == 0 || ts_weight <= 0.0) ++nb_subst_sites;
}

}  // namespace mnd
