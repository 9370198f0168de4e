#include "within/neutrality_tables.h"

#include <cmath>
#include <iomanip>

#include "foundation/format_guard.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "results/xml_tags.h"
#include "run/settings.h"
#include "within/ewens_sampling.h"

namespace mnd {

std::ofstream* ofs_tajima = nullptr;
std::ofstream* ofs_fu_fs = nullptr;
std::ofstream* ofs_ewens_watt = nullptr;
std::ofstream* ofs_chakra = nullptr;

namespace {

constexpr int kDecimals = 5;
constexpr double kNotTested = -1.0;
// The probability of as many alleles is 1.5e-8 there, with an error of some 1e-10: the second decimal of
// Fs is the last that holds. Test: FuFs.IsKnownToTwoDecimalsDownToTheCaution
constexpr double kLeastExactFs = -18.0;
constexpr const char* kNotAvailable = "N.A.";

void set_number_format(std::ostream& out) {
    out << std::fixed << std::showpoint << std::setprecision(kDecimals);
}

// A number that may be missing, or stand for infinity.
struct Shown {
    double value;
    bool available = true;
};
std::ostream& operator<<(std::ostream& out, Shown number) {
    if (!number.available || !std::isfinite(number.value)) return out << kNotAvailable;
    if (number.value >= kNumericalInfinity) return out << "+infinity";
    if (number.value <= -kNumericalInfinity) return out << "-infinity";
    return out << number.value;
}

Shown p_value(double p) {
    return {p, p != kNotTested};
}

int copies(const PopGenetics& sample) {
    return integer_part(sample.sample_size);
}

// Distinct haplotypes before any were merged.
int original_haplotypes(const PopGenetics& sample, int k) {
    return sample.nb_orig_hapl > 0 ? sample.nb_orig_hapl : k;
}

// A row of a batch summary, which ends with the object. Nothing is written without a file.
class SummaryRow {
public:
    SummaryRow(std::ofstream* file, const PopGenetics& sample) : file_(file) {
        if (file_ == nullptr) return;
        const char* const project = settings::input_file;
        *file_ << '"' << (project == nullptr ? "" : project) << "\"\t\"" << sample.name.view() << '"';
    }
    ~SummaryRow() {
        if (file_ != nullptr) *file_ << std::endl;
    }
    SummaryRow(const SummaryRow&) = delete;
    SummaryRow& operator=(const SummaryRow&) = delete;

    template <typename Value>
    SummaryRow& operator<<(const Value& value) {
        if (file_ == nullptr) return *this;
        const FormatGuard guard(*file_);
        set_number_format(*file_);
        *file_ << '\t' << value;
        return *this;
    }

private:
    std::ofstream* file_;  // not owned
};

}  // namespace

AlleleCountFault allele_count_fault(int k, int n) {
    if (k >= n) return AlleleCountFault::kAllDifferent;
    return k < 2 ? AlleleCountFault::kOneAllele : AlleleCountFault::kNone;
}

// --- Tests on allele counts

void print_all_different(std::ostream& out) {
    out << "\nThe test is impossible because all gene copies are different\n";
}

void print_impossible(std::ostream& out, const PopGenetics& sample, const settings& s, AlleleCountFault fault,
                      int k) {
    const FormatGuard guard(out);
    if (fault == AlleleCountFault::kAllDifferent) {
        print_all_different(out);
    } else {
        out << "\nThe test is impossible because there is only one allele in \n"
            << "the sample\n";
    }
    out << "\nNo. of genes in sample   : " << copies(sample) << "\nNo. of alleles in sample : " << k << '\n';
    if (s.InferHaplotypeDefinitionFromDistanceMatrix != 0 && sample.profile.GameticPhase == 0)
        out << "No. of original alleles in sample   : " << original_haplotypes(sample, k) << '\n';
}

void print_watterson_limits(std::ostream& out) {
    const FormatGuard guard(out);
    out << "Watterson F-test of selective neutrality is not possible with more than "
        << kNeutralityAlleleLimit << " alleles "
        << "or "
        << "with more than " << kNeutralityCopyLimit << " gene copies\n";
}

void print_too_large(std::ostream& out) {
    const FormatGuard guard(out);
    out << "\nThe test is impossible because the number of genes is bigger than " << kNeutralityCopyLimit
        << "\n or the number of Alleles is bigger than " << kNeutralityAlleleLimit << '\n';
}

void print_single_haplotype(std::ostream& out, const char* warning) {
    out << warning << "when there is a single haplotype in the sample. Skipping task...\n";
}

void print_no_infinite_alleles(std::ostream& out, const char* warning) {
    out << warning << "for microsatellite data. Skipping task...\n";
}

void print_ewens_watterson(std::ostream& out, const PopGenetics& sample, const settings& s, int k,
                           int num_sim) {
    const FormatGuard guard(out);
    set_number_format(out);
    const bool checked = s.InferHaplotypeDefinitionFromDistanceMatrix != 0;
    if (checked) {
        out << "Haplotype real differences were checked before tests\n\n";
    } else {
        out << "Original haplotype definition was used for the tests\n\n";
    }
    out << "No. of genes in sample                 : " << copies(sample) << '\n';
    if (checked) {
        out << "No. of original haplotypes in sample   : " << original_haplotypes(sample, k) << '\n'
            << "No. of different haplotypes in sample  : " << k << '\n';
    } else {
        out << "No. of haplotypes in sample            : " << k << '\n';
    }
    out << "Observed F value                       : " << sample.obs_F << '\n'
        << "Expected F value                       : " << Shown{sample.exp_F, num_sim > 0} << '\n'
        << "No. of simulated samples               : " << num_sim << "\n\n"
        << "Ewens-Watterson test:\n"
        << "Pr(rand F &lt;= obs F)                    : " << p_value(sample.ew_p) << "\n\n"
        << "Slatkin's Exact test P-value           : " << p_value(sample.slatkin_p) << '\n';
}

void print_rank_frequencies(std::ostream& out, const PopGenetics& sample,
                            const MY_TISArrayAsVector<AHaplFreq>& observed,
                            const MY_TISArrayAsVector<AHaplFreq>& expected) {
    const FormatGuard guard(out);
    out << std::right << std::fixed << std::showpoint;
    const TXmlTag observed_tag(my_string("obsHapFreq"), my_string("samp"), sample.name);
    const TXmlTag expected_tag(my_string("expHapFreq"), my_string("samp"), sample.name);
    out << "\nObserved haplotype frequencies by rank:\n\n";
    open_table(out, observed_tag);
    out << std::setw(6) << "Rank" << std::setw(12) << "Freq." << std::setw(12) << "Count" << '\n';
    for (long i = 0; i < observed.count; ++i) {
        const double count = observed[i]->freq;
        out << std::setw(6) << i + 1 << std::setprecision(7) << std::setw(12) << count / sample.sample_size
            << std::setw(12) << integer_part(count) << '\n';
    }
    close_table(out, observed_tag);
    out << "\nExpected haplotype frequencies by rank, with standard deviations:\n\n";
    open_table(out, expected_tag);
    out << std::setw(6) << "Rank" << std::setw(12) << "Freq." << std::setw(12) << "s.d." << std::setw(16)
        << "Count" << std::setw(12) << "s.d." << '\n';
    for (long i = 0; i < expected.count; ++i)
        out << std::setw(6) << i + 1 << *expected[i];
    close_table(out, expected_tag);
}

void print_chakraborty(std::ostream& out, const PopGenetics& sample, int k) {
    const FormatGuard guard(out);
    set_number_format(out);
    out << "No. of genes in sample       : " << copies(sample) << '\n'
        << "No. of alleles in sample (k) : " << k << '\n'
        << "Observed Homozygosity        : " << sample.homozygosity << '\n'
        << "Exp. No. of alleles          : " << sample.exp_k << '\n'
        << "P(exactly k alleles)         : " << sample.p_exactly_k << '\n'
        << "P(k or more alleles)         : " << sample.p_k_or_more << '\n';
}

// --- Tests on sequences

void print_no_distances_for_test(std::ostream& out) {
    out << "The test is impossible because the distances between the haplotypes could not be computed\n";
}

namespace {

// What rests on distances whose substitutions have weights. The samples that it is compared with
// have none: there is no model of sequences for weights.
void print_weights_caution(std::ostream& out, const char* differences, const char* statistic) {
    out << "Substitutions count in " << differences << " by their weights, which are not all 1: " << statistic
        << " is not the standard one,\nand simulated samples are without weights: take its P-value with "
           "care\n";
}

}  // namespace

void print_tajima(std::ostream& out, const TajimaReport& report) {
    const FormatGuard guard(out);
    set_number_format(out);
    out << "Sample size                           : " << report.n << '\n';
    if (report.restriction_sites) {
        out << "No. of segregating sites (S)          : " << report.S << '\n';
    } else {
        out << "No. of sites with substitutions (S)   : " << report.S << '\n';
    }
    out << "Mean No. of pairwise differences (Pi) : " << Shown{report.pi} << '\n'
        << "\nDistance method                       : "
        << "Pairwise difference (no Gamma correction, indels not taken into account)\n";
    if (report.weighted) print_weights_caution(out, "Pi", "D");
    out << "\nTajima's D                            : " << report.D << '\n';
    if (!report.defined)
        out << "D is given as 0 and not tested: it needs sites with substitutions and four gene copies\n";
}

void print_tajima_simulations(std::ostream& out, const TajimaReport& report) {
    const FormatGuard guard(out);
    set_number_format(out);
    const bool simulated = report.num_sim > 0;
    out << "\nNo. of simulations                    : " << report.num_sim
        << "\nObs. Theta(S)                         : " << report.theta_S
        << "\nMean Theta(S)                         : " << Shown{report.mean_theta_S, simulated}
        << "\nS.D. Theta(S)                         : " << Shown{report.sd_theta_S, simulated}
        << "\nP(sim. D &lt;= obs. D)                   : " << p_value(report.P)
        << "\nP(sim. D &lt;= 0)                        : " << p_value(report.P_not_positive) << '\n';
}

void print_fu(std::ostream& out, const FuReport& report) {
    const FormatGuard guard(out);
    set_number_format(out);
    out << "\nSample size                  : " << report.n << "\nObs. k                       : " << report.k
        << '\n';
    if (report.checked) {
        out << "Original No. of alleles      : " << report.original_k << '\n'
            << "Actual No. of # alleles  (k) : " << report.k << '\n';
    } else {
        out << "Original No. of alleles(k)   : " << report.k << '\n';
    }
    out << "Theta(Pi)                    : " << Shown{report.theta_pi} << '\n'
        << "Exp. No. of alleles          : " << Shown{report.k_est} << '\n'
        << "Fs                           : " << Shown{report.Fs} << '\n';
    if (report.weighted) print_weights_caution(out, "Theta(Pi)", "Fs");
    if (report.Fs < kLeastExactFs)
        out << "So small an Fs rests on a probability of which few digits are known: take it as a bound\n";
}

void print_fu_simulations(std::ostream& out, const FuReport& report) {
    const FormatGuard guard(out);
    set_number_format(out);
    const bool simulated = report.num_sim > 0;
    out << "\nNo. of simulations           : " << report.num_sim
        << "\nMean Theta(Pi)               : " << Shown{report.mean_theta_pi, simulated}
        << "\nS.D. Theta(Pi)               : " << Shown{report.sd_theta_pi, simulated}
        << "\nMean k                       : " << Shown{report.mean_k, simulated}
        << "\nS.D. k                       : " << Shown{report.sd_k, simulated}
        << "\nP(sim. Fs &lt;= obs. Fs)        : " << p_value(report.P) << '\n';
}

// --- Batch summaries

void write_tajima_row(const PopGenetics& sample, const TajimaReport& report) {
    const bool simulated = report.num_sim > 0;
    SummaryRow(ofs_tajima, sample) << report.n << report.S << Shown{report.pi} << report.theta_S << report.D
                                   << p_value(report.P) << Shown{report.mean_D, simulated}
                                   << p_value(report.P_not_positive) << report.num_sim;
}

void write_fu_row(const PopGenetics& sample, const FuReport& report) {
    SummaryRow(ofs_fu_fs, sample) << report.n << report.k << report.original_k << Shown{report.theta_pi}
                                  << Shown{report.k_est} << Shown{report.Fs} << p_value(report.P)
                                  << report.num_sim;
}

void write_ewens_watterson_row(const PopGenetics& sample, int k) {
    const bool simulated = sample.ew_p != kNotTested;
    SummaryRow(ofs_ewens_watt, sample)
        << copies(sample) << original_haplotypes(sample, k) << k << Shown{sample.obs_F, sample.obs_F > 0.0}
        << Shown{sample.exp_F, simulated} << p_value(sample.ew_p) << p_value(sample.slatkin_p);
}

void write_ewens_watterson_row(const PopGenetics& sample, AlleleCountFault fault) {
    SummaryRow row(ofs_ewens_watt, sample);
    if (fault == AlleleCountFault::kAllDifferent) {
        row << "Ewens-Watterson test is impossible because all gene copies are different";
    } else {
        row << "Ewens-Watterson test is impossible because there is only one allele in the sample";
    }
}

void write_chakraborty_row(const PopGenetics& sample, int k) {
    const bool tested = sample.p_exactly_k != kNotTested;
    SummaryRow(ofs_chakra, sample) << copies(sample) << k << Shown{sample.homozygosity, tested}
                                   << Shown{sample.exp_k, tested} << p_value(sample.p_exactly_k)
                                   << p_value(sample.p_k_or_more);
}

}  // namespace mnd
