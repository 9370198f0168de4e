// Molecular distances of a sample of DNA sequences: one pair, and all pairs.
#include "model/popul_dna.h"

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "run/settings.h"
#include "within/dna_distance_matrix.h"
#include "within/sample_distances.h"

namespace mnd {
namespace {

constexpr char kMatrixOrigin[] = "PopulDNA::compute_distance_matrix()";
constexpr char kPairOrigin[] = "PopulDNA::compute_distance_matrix(ofstream)";

DnaDistanceParameters parameters_of(const PopulDNA& sample, int method) {
    DnaDistanceParameters p;
    p.method = method;
    p.weights = {sample.ts_weight, sample.tv_weight, sample.del_weight};
    p.gamma_a = sample.gamma_a;
    p.missing = sample.profile.MissingData;
    p.composition = {sample.nucl_freq, sample.gc_content};
    return p;
}

DnaPair pair_of(const PopulDNA& sample) {
    DnaPair pair;
    pair.distance = sample.distance;
    pair.distance_var = sample.distance_var;
    pair.ts_count = sample.ts_count;
    pair.tv_count = sample.tv_count;
    pair.site_count = sample.site_count;
    pair.diff_count = sample.diff_count;
    pair.ts_dist = sample.ts_dist;
    pair.tv_dist = sample.tv_dist;
    pair.ts_rate = sample.ts_rate;
    pair.tv_rate = sample.tv_rate;
    pair.ts_tv_ratio = sample.ts_tv_ratio;
    pair.ts_tv_ratio_var = sample.ts_tv_ratio_var;
    pair.pair_counts = sample.pair_counts;
    return pair;
}

void store_pair(PopulDNA& sample, const DnaPair& pair) {
    sample.distance = pair.distance;
    sample.distance_var = pair.distance_var;
    sample.ts_count = pair.ts_count;
    sample.tv_count = pair.tv_count;
    sample.site_count = pair.site_count;
    sample.diff_count = pair.diff_count;
    sample.ts_dist = pair.ts_dist;
    sample.tv_dist = pair.tv_dist;
    sample.ts_rate = pair.ts_rate;
    sample.tv_rate = pair.tv_rate;
    sample.ts_tv_ratio = pair.ts_tv_ratio;
    sample.ts_tv_ratio_var = pair.ts_tv_ratio_var;
    sample.pair_counts = pair.pair_counts;
}

int finish_pair(PopulDNA& sample, DnaFault fault, const DnaPair& pair) {
    store_pair(sample, pair);
    report_dna_fault(fault);
    return fault == DnaFault::kNone ? 1 : 0;
}

int longest(std::string_view s1, std::string_view s2) {
    return static_cast<int>(s1.size() > s2.size() ? s1.size() : s2.size());
}

int compare_pair(PopulDNA& sample, int method, const char* s1, const char* s2) {
    const std::vector<int> sites = usable_loci(sample, longest(s1, s2));
    DnaPair pair = pair_of(sample);
    const DnaFault fault = compare_texts(parameters_of(sample, method), sites, s1, s2, pair);
    return finish_pair(sample, fault, pair);
}

// Fills dist_mat, whose haplotypes have content.
bool fill(PopulDNA& sample, double scale, const settings* s) {
    const std::vector<std::string_view> texts = haplotype_texts(sample);
    const std::vector<int> sites = usable_loci(sample, static_cast<int>(texts.front().size()));
    DnaDistances distances(parameters_of(sample, sample.distance_method), texts, sites);
    DnaPair pair = pair_of(sample);
    const bool filled = fill_distance_matrix(sample, scale, s, kPairOrigin, [&](int i, int j) {
        const DnaFault fault = distances.distance(i, j, pair);
        sample.distance = pair.distance;
        sample.distance_var = pair.distance_var;
        return fault == DnaFault::kNone || finish_pair(sample, fault, pair) == 1;
    });
    if (filled && sample.nb_hapl > 1) {
        // The working values are those of the last pair.
        distances.compare(sample.nb_hapl - 1, sample.nb_hapl - 2, pair);
        store_pair(sample, pair);
    }
    return filled;
}

// Divides frequencies by their sum, if it is above 0.
void scale_to_one(std::array<double, 4>& frequencies) {
    double sum = 0.0;
    for (const double f : frequencies)
        sum += f;
    if (!(sum > 0.0)) return;
    for (double& f : frequencies)
        f /= sum;
}

// Divides counts of bases by a total, and by their sum; a total of 0 gives zeros.
void make_frequencies(std::array<double, 4>& counts, double total) {
    for (double& f : counts)
        f = total == 0.0 ? 0.0 : f / total;
    scale_to_one(counts);
}

}  // namespace

int PopulDNA::diff_dist(const char* s1, const char* s2) {
    return compare_pair(*this, kPairwiseDifference, s1, s2);
}

int PopulDNA::p_dist(const char* s1, const char* s2) {
    return compare_pair(*this, kProportionOfDifference, s1, s2);
}

int PopulDNA::jk_dist(const char* s1, const char* s2) {
    return compare_pair(*this, kJukesCantor, s1, s2);
}

int PopulDNA::kim2p_dist(const char* s1, const char* s2) {
    return compare_pair(*this, kKimuraTwoParameters, s1, s2);
}

int PopulDNA::tajnei_dist(const char* s1, const char* s2) {
    return compare_pair(*this, kTajimaNei, s1, s2);
}

int PopulDNA::tamura_dist(const char* s1, const char* s2) {
    return compare_pair(*this, kTamura, s1, s2);
}

int PopulDNA::tamnei_dist(const char* s1, const char* s2) {
    return compare_pair(*this, kTamuraNei, s1, s2);
}

void PopulDNA::compute_pairwise_nucl_freq(const char* s1, const char* s2) {
    const std::string_view texts[] = {s1, s2};
    const std::vector<int> sites = usable_loci(*this, longest(texts[0], texts[1]));
    nucl_freq = {};
    double total = 0.0;
    for (const std::string_view text : texts) {
        for (const int site : sites) {
            if (static_cast<std::size_t>(site) >= text.size()) break;
            const int base = base_index(text[static_cast<std::size_t>(site)]);
            if (base < 0) continue;
            nucl_freq[static_cast<std::size_t>(base)] += 1.0;
            total += 1.0;
        }
    }
    make_frequencies(nucl_freq, total);
}

int PopulDNA::comp_nucl_freq() {
    for (const double f : nucl_freq) {
        if (f != 0.0) return 1;
    }
    if (hapl_list.count == 0) {
        report_no_haplotypes("PopulDNA::comp_nucl_freq()");
        return 0;
    }
    double total = 0.0;
    for (const PHaploDef* entry : hapl_list) {
        if (entry == nullptr || entry->def == nullptr) continue;
        const std::string_view content = entry->def->content.view();
        for (const char c : content) {
            const int base = base_index(c);
            if (base >= 0) nucl_freq[static_cast<std::size_t>(base)] += entry->freq;
        }
        total += static_cast<double>(entry->freq) * static_cast<double>(content.size());
    }
    make_frequencies(nucl_freq, total);
    gc_content = nucl_freq[kBaseC] + nucl_freq[kBaseG];
    return 1;
}

int PopulDNA::compute_distance_matrix(std::fstream* out, settings* s, int scale_by_loci) {
    const bool scaled = scale_by_loci != 0 && distance_method != kPairwiseDifference;
    const double scale = scaled ? nb_usable_loci : 1.0;
    if (hapl_list.count == 0) {
        report_no_haplotypes(kMatrixOrigin);
        return 0;
    }
    if (needs_base_composition(distance_method)) comp_nucl_freq();
    if (!prepare_distance_matrix(*this, false)) return 0;
    if (!haplotype_texts(*this).front().empty() && !fill(*this, scale, s)) return 0;
    write_distance_matrix(out, *this);
    return 1;
}

}  // namespace mnd
