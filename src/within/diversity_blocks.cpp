#include "within/diversity_blocks.h"

#include <cmath>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/data_type.h"
#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "results/citations.h"
#include "results/xml_tags.h"
#include "run/settings.h"
#include "within/dna_site_counts.h"
#include "within/sample_distances.h"

namespace mnd {

namespace {

constexpr int kLabelWidth = 45;  // column of the colon in the block of molecular indices

// Numbers of a block: fixed, 5 decimals.
void set_number_format(std::ostream& out) {
    out << std::fixed << std::setprecision(5);
}

// A number of a block; one that the data do not allow is not a number to a reader.
struct Shown {
    double value;
};
std::ostream& operator<<(std::ostream& out, Shown number) {
    return std::isfinite(number.value) ? out << number.value : out << "N.A.";
}

// Gene copies are whole, but held as a double.
struct Copies {
    double number;
};
std::ostream& operator<<(std::ostream& out, Copies copies) {
    const std::streamsize precision = out.precision(0);
    out << std::floor(copies.number);
    out.precision(precision);
    return out;
}

void print_percentage(std::ostream& out, double proportion) {
    out << std::setprecision(2) << 100.0 * proportion << std::setprecision(5);
}

template <typename Value>
void print_line(std::ostream& out, const char* label, const Value& value) {
    out << '\n' << std::left << std::setw(kLabelWidth) << label << ": " << value;
}

bool has_unknown_phase(const PopGenetics& sample) {
    return sample.profile.GenotypicData != 0 && sample.profile.GameticPhase == 0;
}

bool has_merged_haplotypes(const PopGenetics& sample) {
    return sample.nb_orig_hapl > 0 && sample.nb_orig_hapl != sample.nb_hapl;
}

void print_sizes(std::ostream& out, const PopGenetics& sample) {
    out << "Sample size                                  : " << Copies{sample.sample_size} << '\n'
        << "No. of haplotypes                            : " << sample.nb_hapl << '\n';
    if (has_merged_haplotypes(sample))
        out << "No. of original haplotypes in sample         : " << sample.nb_orig_hapl << '\n';
}

void print_allowed_missing(std::ostream& out, const PopGenetics& sample) {
    out << "\nAllowed level of missing data                : ";
    print_percentage(out, sample.allowed_missing);
    out << " %\n";
}

void print_locus_numbers(std::ostream& out, const PopGenetics& sample) {
    print_line(out, "Number of loci", sample.nb_loci);
    print_line(out, "Number of usable loci", sample.nb_usable_loci);
    print_line(out, "Number of polymorphic loci", sample.nb_polym_loci);
    out << '\n';
}

void print_composition(std::ostream& out, const PopulDNA& sample) {
    constexpr const char* kLabels[] = {"\n   C :", "\n   T :", "\n   A :", "\n   G :"};
    out << "\nNucleotide composition (Relative values)";
    double total = 0.0;
    for (std::size_t i = 0; i < sample.nucl_freq.size(); ++i) {
        out << kLabels[i] << ' ';
        print_percentage(out, sample.nucl_freq[i]);
        out << '%';
        total += sample.nucl_freq[i];
    }
    out << "\n   Total : ";
    print_percentage(out, total);
    out << "%\n";
}

void print_estimate(std::ostream& out, const char* label, const char* sd_label, double value, double sd) {
    const FormatGuard guard(out);
    set_number_format(out);
    out << '\n' << label << Shown{value} << '\n' << sd_label << Shown{sd} << '\n';
}

void print_allele_list_basis(std::ostream& out, const PopGenetics& sample) {
    const FormatGuard guard(out);
    set_number_format(out);
    print_sizes(out, sample);
    print_allowed_missing(out, sample);
    print_locus_numbers(out, sample);
}

// Only these methods have a form for rates that vary among sites.
bool has_gamma_correction(const PopGenetics& sample) {
    if (sample.profile.DataType != DNA || sample.gamma_a == 0.0) return false;
    const int method = sample.distance_method;
    return method == kJukesCantor || method == kKimuraTwoParameters || method == kTamuraNei;
}

// Name of the distance in force, without the line end that the settings put behind it.
std::string method_name(const PopGenetics& sample, settings& s) {
    std::ostringstream name;
    s.print_distance_method(name, sample.distance_method);
    std::string text = name.str();
    if (text.empty() && sample.profile.DataType == DNA) return dna_distance_name(sample.distance_method);
    return text.substr(0, text.find('\n'));
}

void add_distance_citation(std::vector<Citation>& publications, const PopGenetics& sample) {
    if (sample.profile.DataType != DNA) return;
    switch (sample.distance_method) {
        case kJukesCantor:
            publications.push_back(Citation::Jukes_Cantor_1969);
            break;
        case kKimuraTwoParameters:
            publications.push_back(Citation::Kimura_1980);
            break;
        case kTajimaNei:
            publications.push_back(Citation::Tajima_Nei_1984);
            break;
        case kTamura:
            publications.push_back(Citation::Tamura_1992);
            break;
        case kTamuraNei:
            publications.push_back(Citation::Tamura_Nei_1993);
            break;
        default:
            return;
    }
    if (has_gamma_correction(sample)) publications.push_back(Citation::Jin_Nei_1990);
}

}  // namespace

void print_phase_caution(std::ostream& out, const PopGenetics& sample) {
    if (!has_unknown_phase(sample)) return;
    out << "\nGametic phase is unknown: the haplotypes are those that the project file writes side by side,\n"
        << "and what is computed from them depends on that writing.\n";
}

void print_standard_indices(std::ostream& out, const PopGenetics& sample, const char* polymorphic_label) {
    const FormatGuard guard(out);
    set_number_format(out);
    out << "No. of gene copies       : " << Copies{sample.sample_size};
    if (!has_unknown_phase(sample)) {
        out << "\nNo. of sequences         : " << sample.nb_hapl;
        if (has_merged_haplotypes(sample))
            out << "\nNo. of original "
                << "\nsequences in sample      : " << sample.nb_orig_hapl;
    }
    out << "\nNo. of loci              : " << sample.nb_loci
        << "\nNo. of usable loci       : " << sample.nb_usable_loci << " loci with less than ";
    print_percentage(out, sample.allowed_missing);
    out << " % missing data" << polymorphic_label << sample.nb_polym_loci << '\n';
    out << "\nHaplotype-level computations\n"
        << "----------------------------\n";
    print_phase_caution(out, sample);
    out << "\nSum of square freqs.     : " << sample.sum_sq_freq
        << "\nGene diversity           : " << sample.heterozygosity << " +/- " << sample.sd_heterozygosity
        << "\n(Standard deviation is for the sampling process)\n";
}

void print_molecular_basis(std::ostream& out, const PopulDNA& sample) {
    const FormatGuard guard(out);
    set_number_format(out);
    print_sizes(out, sample);
    out << "\nDeletion weight                              : " << sample.del_weight
        << "\nTransition weight                            : " << sample.ts_weight
        << "\nTransversion weight                          : " << sample.tv_weight;
    print_allowed_missing(out, sample);
    out << "\nNumber of observed transitions               : " << sample.nb_ts;
    print_line(out, "No. of transversions", sample.nb_tv);
    print_line(out, "No. of substitutions", sample.nb_subst);
    print_line(out, "No. of indels", sample.nb_del);
    print_line(out, "No. of ts. sites", sample.nb_ts_sites);
    print_line(out, "No. of tv. sites", sample.nb_tv_sites);
    print_line(out, "No. of subst. sites", sample.nb_subst_sites);
    print_line(out, "No. of indel sites", sample.nb_del_sites);
    out << "\nNumber of observed nucleotide sites          : " << sample.nb_observed_sites
        << "\nNumber of usable nucleotide sites            : " << sample.nb_usable_loci << '\n';
    print_composition(out, sample);
}

void print_molecular_basis(std::ostream& out, const PopulRFLP& sample) {
    const FormatGuard guard(out);
    set_number_format(out);
    print_sizes(out, sample);
    out << "\nDeletion weight                              : " << sample.del_weight;
    print_allowed_missing(out, sample);
    print_line(out, "No. of substitutions", sample.nb_subst);
    print_line(out, "No. of indels", sample.nb_del);
    print_line(out, "No. of subst. sites", sample.nb_subst_sites);
    print_line(out, "No. of indel sites", sample.nb_del_sites);
    print_line(out, "Number of observed sites", sample.nb_observed_sites);
    print_line(out, "Number of usable sites", sample.nb_usable_loci);
    out << '\n';
}

void print_molecular_basis(std::ostream& out, const PopulMicrosat& sample) {
    print_allele_list_basis(out, sample);
}

void print_molecular_basis(std::ostream& out, const PopulStandard& sample) {
    print_allele_list_basis(out, sample);
}

void print_method(std::ostream& out, const PopGenetics& sample, settings& s) {
    const FormatGuard guard(out);
    set_number_format(out);
    out << "\nDistance method                              : " << method_name(sample, s);
    if (has_gamma_correction(sample)) {
        out << " (Gamma correction : a=" << sample.gamma_a << ")\n";
    } else {
        out << " (no Gamma correction)\n";
    }
}

void print_no_distances(std::ostream& out) {
    out << "\nMean number of pairwise differences cannot be computed without haplotype data\n";
}

void print_pairwise_differences(std::ostream& out, const PopGenetics& sample, bool nucleotide_diversity) {
    const FormatGuard guard(out);
    set_number_format(out);
    out << "\nMean number of pairwise differences          : " << Shown{sample.mean_pairwise_diff} << " +/- "
        << Shown{sample.sd_pairwise_diff};
    if (nucleotide_diversity) {
        out << "\nNucleotide diversity (average over loci)     : " << Shown{sample.nucl_diversity} << " +/- "
            << Shown{sample.sd_nucl_diversity};
    }
    out << "\n(Standard deviations are for both the sampling and the stochastic processes)\n";
}

void print_theta_Hom(std::ostream& out, const PopGenetics& sample) {
    if (sample.theta_hom == kNumericalInfinity) {
        out << "\nUnable to compute Theta(Hom) when all gene copies are different\n";
        return;
    }
    print_estimate(out, "Theta(Hom) : ", "S.D. Theta(Hom) : ", sample.theta_hom, sample.sd_theta_hom);
}

void print_theta_S(std::ostream& out, const PopGenetics& sample) {
    print_estimate(out, "Theta(S) : ", "S.D. Theta(S) : ", sample.theta_S, sample.sd_theta_S);
}

void print_theta_pi(std::ostream& out, const PopGenetics& sample) {
    print_estimate(out, "Theta(Pi) : ", "S.D. Theta(Pi) : ", sample.theta_pi, sample.sd_theta_pi);
}

void print_theta_k(std::ostream& out, const PopGenetics& sample, bool computed) {
    const FormatGuard guard(out);
    set_number_format(out);
    if (sample.nb_hapl >= sample.sample_size) {
        out << "\nUnable to compute Theta(k) when all gene copies are different\n";
    } else if (computed) {
        out << "\nTheta(k) : " << sample.theta_k << "\n95 % confidence interval limits for theta(k) : [ "
            << sample.theta_k_lower << ", " << sample.theta_k_upper << " ]\n";
    } else {
        out << "\nTheta(k) is not computed for so many alleles or gene copies\n";
    }
}

void print_haplotype_distances(std::ostream& out, const PopGenetics& sample) {
    if (sample.dist_mat == nullptr) return;
    const FormatGuard guard(out);
    out << std::right;
    const TXmlTag labels(my_string("interHapDistMatrixLabels"), my_string("samp"), sample.name);
    out << "\nHaplotypes of the matrix:\n";
    open_table(out, labels);
    for (int i = 0; i < sample.hapl_list.count; ++i)
        out << std::setw(6) << i + 1 << "  " << escape_text(sample.hapl_list[i]->def->name.view()) << '\n';
    close_table(out, labels);
    out << "\nInter-haplotypic distance matrix:\n\n";
    const TXmlTag matrix(my_string("interHapDistMatrix"), my_string("samp"), sample.name);
    open_table(out, matrix);
    print_distance_matrix(out, *sample.dist_mat);
    close_table(out, matrix);
}

void cite_standard_indices(std::ostream& out, bool microsatellites) {
    if (microsatellites) {
        cite(out, {Citation::Nei_1987, Citation::Garza_Williamson_2001});
    } else {
        cite(out, {Citation::Nei_1987});
    }
}

void cite_molecular_diversity(std::ostream& out, const PopGenetics& sample) {
    std::vector<Citation> publications = {Citation::Tajima_1983, Citation::Tajima_1993, Citation::Nei_1987};
    add_distance_citation(publications, sample);
    cite(out, publications);
}

void cite_theta(std::ostream& out, const PopGenetics& sample) {
    switch (sample.profile.DataType) {
        case DNA:
        case RFLP:
            cite(out, {Citation::Zouros_1979, Citation::Chakraborty_Weiss_1991, Citation::Ewens_1972,
                       Citation::Watterson_1975, Citation::Tajima_1983});
            break;
        case MICROSAT:
            cite(out, {Citation::Zouros_1979, Citation::Chakraborty_Weiss_1991});
            break;
        default:
            cite(out, {Citation::Zouros_1979, Citation::Chakraborty_Weiss_1991, Citation::Ewens_1972});
    }
}

}  // namespace mnd
