// Distances of a sample of RFLP haplotypes: one pair, and all pairs.
#include "model/popul_rflp.h"

#include "run/settings.h"
#include "within/sample_distances.h"
#include "within/site_pair_counter.h"

namespace mnd {
namespace {

constexpr char kMatrixOrigin[] = "PopulRFLP::compute_distance_matrix()";
constexpr char kPairOrigin[] = "PopulRFLP::compute_distance_matrix(ofstream)";
constexpr int kProportionMethod = 1;
constexpr char kGap = '-';

// Whether a site with the characters a and b is a difference.
bool differ(char a, char b, char missing, bool gaps_count) {
    if (a == b || a == missing || b == missing) return false;
    return gaps_count || (a != kGap && b != kGap);
}

// Every usable site is compared, whatever it holds: L is their number.
void set_number_of_differences(PopulRFLP& sample, int differences, int L) {
    const double p = L == 0 ? 0.0 : static_cast<double>(differences) / L;
    sample.distance = differences;
    sample.distance_var = (1.0 - p) * p * L;
}

void set_proportion(PopulRFLP& sample, int differences, int L) {
    const double p = L == 0 ? 0.0 : static_cast<double>(differences) / L;
    sample.distance = p;
    sample.distance_var = L == 0 ? 0.0 : (1.0 - p) * p / L;
}

char character_at(std::string_view text, int site, char missing) {
    const auto position = static_cast<std::size_t>(site);
    return position < text.size() ? text[position] : missing;
}

using Setter = void (*)(PopulRFLP&, int differences, int L);

int compare_pair(PopulRFLP& sample, std::string_view s1, std::string_view s2, Setter set) {
    if (sample.nb_usable_loci == 0) {
        sample.distance = sample.distance_var = 0.0;
        return 0;
    }
    const char missing = sample.profile.MissingData;
    const auto length = static_cast<int>(s1.size() > s2.size() ? s1.size() : s2.size());
    const std::vector<int> sites = usable_loci(sample, length);
    int differences = 0;
    for (const int site : sites) {
        const char a = character_at(s1, site, missing);
        const char b = character_at(s2, site, missing);
        if (differ(a, b, missing, sample.del_weight > 0.0)) ++differences;
    }
    set(sample, differences, static_cast<int>(sites.size()));
    return 1;
}

bool fill(PopulRFLP& sample, double scale, const settings* s, Setter set) {
    const std::vector<std::string_view> texts = haplotype_texts(sample);
    const std::vector<int> sites = usable_loci(sample, static_cast<int>(texts.front().size()));
    const char missing = sample.profile.MissingData;
    const bool gaps_count = sample.del_weight > 0.0;
    const SitePairCounter counter(
        sites.empty() ? std::vector<std::string_view>{} : texts, sites, missing, 1,
        [=](char a, char b) { return differ(a, b, missing, gaps_count) ? 1U : 0U; });
    return fill_distance_matrix(sample, scale, s, kPairOrigin, [&](int i, int j) {
        if (sample.nb_usable_loci == 0) {
            sample.distance = sample.distance_var = 0.0;
            return false;
        }
        set(sample, counter.count(i, j)[0], counter.num_sites());
        return true;
    });
}

}  // namespace

int PopulRFLP::diff_no_weight(const char* s1, const char* s2) {
    return compare_pair(*this, s1, s2, set_number_of_differences);
}

int PopulRFLP::p_diff(const char* s1, const char* s2) {
    return compare_pair(*this, s1, s2, set_proportion);
}

int PopulRFLP::compute_distance_matrix(std::fstream* out, settings* s, int scale_by_loci) {
    const double scale = scale_by_loci != 0 && distance_method != 0 ? nb_usable_loci : 1.0;
    if (hapl_list.count == 0) {
        report_no_haplotypes(kMatrixOrigin);
        return 0;
    }
    if (!prepare_distance_matrix(*this, true)) return 0;
    const Setter set = distance_method == kProportionMethod ? set_proportion : set_number_of_differences;
    if (!haplotype_texts(*this).front().empty() && !fill(*this, scale, s, set)) return 0;
    write_distance_matrix(out, *this);
    return 1;
}

}  // namespace mnd
