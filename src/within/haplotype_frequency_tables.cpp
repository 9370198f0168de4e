#include "within/haplotype_frequency_tables.h"

#include <cmath>
#include <iomanip>
#include <string>

#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "model/population.h"
#include "results/citations.h"

namespace mnd {

namespace {

constexpr const char* kTableRule = "---------------------------------------\n";
constexpr const char* kCountedRule = "-----------------------------------------------\n";

void print_title(std::ostream& out, const std::string& title) {
    const std::string rule(title.size(), '-');
    out << '\n' << rule << '\n' << title << '\n' << rule << "\n\n";
}

// Gene copies are whole, but held as a double.
void print_gene_copies(std::ostream& out, double gene_copies) {
    const FormatGuard guard(out);
    out << "No. of gene copies in sample                : " << std::fixed << std::setprecision(0)
        << std::floor(gene_copies) << '\n';
}

void print_epsilon(std::ostream& out, double epsilon) {
    const FormatGuard guard(out);
    out << "Epsilon value for stopping iterations       : " << std::scientific << epsilon << '\n';
}

void print_starts(std::ostream& out, const EmSummary& summary) {
    print_gene_copies(out, summary.gene_copies);
    out << "No. of random initial conditions for EM     : " << summary.random_starts << '\n';
}

void print_num_likelihoods(std::ostream& out, const EmSummary& summary) {
    out << "No. of different maximum likelihoods found  : " << summary.num_likelihoods << '\n';
}

void print_basis(std::ostream& out, const EmSummary& summary) {
    print_starts(out, summary);
    print_num_likelihoods(out, summary);
    print_epsilon(out, summary.epsilon);
}

// The estimation gives the most negative number of single precision for the logarithm of 0.
void print_ln_likelihood(std::ostream& out, const char* label, double ln_likelihood, int decimals) {
    const FormatGuard guard(out);
    out << label << std::fixed << std::setprecision(decimals);
    if (ln_likelihood > -kNumericalInfinity) {
        out << ln_likelihood << '\n';
    } else {
        out << "N.A.\n";
    }
}

void print_inbreeding(std::ostream& out, const EmSummary& summary) {
    if (!summary.with_inbreeding) return;
    const FormatGuard guard(out);
    out << "Inbreeding coefficient                      : " << std::fixed << std::setprecision(5) << summary.F
        << '\n';
}

void print_subset_title(std::ostream& out, const int* subset) {
    out << "Allele frequencies for ";
    if (subset[0] == 1) {
        out << "the locus " << subset[1] + 1 << "\n--------------------------------\n";
    } else {
        out << "the pair of loci( " << subset[1] + 1 << " , " << subset[2] + 1 << " )\n" << kTableRule;
    }
}

}  // namespace

void print_zipper_head(std::ostream& out, const EmSummary& summary, const ZipperSummary& zipper) {
    const FormatGuard guard(out);
    print_title(out, "Zipper version of the EM algorithm");
    print_basis(out, summary);
    out << "\nWindow size for zipper EM                   : " << zipper.window;
    if (zipper.window != zipper.wanted_window)
        out << " (all loci, as a window of " << zipper.wanted_window << " is not within them)";
    out << "\nNumber or loci order                        : " << zipper.orders << '\n'
        << "Loci within window                          : ";
    for (std::size_t i = 0; i < zipper.loci.size(); ++i)
        out << (i == 0 ? "" : " ") << zipper.loci[i] + 1;
    out << '\n';
    print_ln_likelihood(out, "LogLhood  : ", summary.ln_likelihood, 10);
    print_inbreeding(out, summary);
}

void cite_em(std::ostream& out) {
    References(out, Citation::Excoffier_Slatkin_1995);
}

void print_one_pass_head(std::ostream& out, const EmSummary& summary) {
    const FormatGuard guard(out);
    print_title(out, "Conventional EM algorithm  (one pass)");
    print_basis(out, summary);
    print_ln_likelihood(out, "LogLHood  : ", summary.ln_likelihood, 10);
    cite_em(out);
    print_inbreeding(out, summary);
}

void print_subset_head(std::ostream& out, const int* subset, const EmSummary& summary, int num_boot) {
    const FormatGuard guard(out);
    print_subset_title(out, subset);
    out << '\n';
    print_starts(out, summary);
    if (num_boot > 0) {
        out << "No. of bootstrap replicates                 : " << num_boot << '\n';
    } else {
        out << "No bootstrap confidence interval estimation\n";
    }
    print_num_likelihoods(out, summary);
    print_epsilon(out, summary.epsilon);
    print_ln_likelihood(out, "Logarithm of the sample maximum-likelihood  : ", summary.ln_likelihood, 5);
}

void print_not_resolvable(std::ostream& out) {
    out << "The frequencies cannot be estimated: an individual has too many heterozygous loci\n"
           "for all its possible pairs of haplotypes to be listed\n\n";
}

namespace {

void print_counted_head(std::ostream& out, const Population& sample, double threshold) {
    const FormatGuard guard(out);
    print_title(out, "Haplotype frequencies by counting");
    print_gene_copies(out, sample.sample_size);
    out << "No. of different haplotypes                 : " << sample.hapl_list.count << '\n'
        << "Minimum frequency to reach for output       : " << std::scientific << std::setprecision(3)
        << threshold << '\n'
        << "(Standard deviation is for the sampling process)\n\n"
        << kCountedRule << std::setw(5) << "#" << std::setw(12) << "Haplotype" << '\t' << std::setw(10)
        << "Freq." << std::setw(10) << "s.d." << std::setw(8) << "Count" << '\n'
        << kCountedRule;
}

double sampling_sd(double p, double n) {
    return std::sqrt(std::max(0.0, p * (1.0 - p) / n));
}

void print_counted_row(std::ostream& out, int number, const PHaploDef& entry, double n) {
    const double p = entry.freq / n;
    out << std::setw(5) << number << escaped_right(entry.def->name.view(), 12) << '\t' << std::setw(10) << p
        << std::setw(10) << sampling_sd(p, n) << std::setw(8) << entry.freq << '\t'
        << escape_text(entry.def->content.view()) << '\n';
}

}  // namespace

void print_counted_haplotypes(std::ostream& out, const Population& sample, double threshold) {
    double n = 0.0;
    for (const PHaploDef* entry : sample.hapl_list)
        n += entry->freq;
    if (!(n > 0.0)) {
        out << "The sample has no haplotypes\n\n";
        return;
    }
    print_counted_head(out, sample, threshold);
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::setprecision(6);
    int listed = 0;
    double sum_listed = 0.0;
    for (const PHaploDef* entry : sample.hapl_list) {
        if (!(entry->freq / n > threshold)) continue;
        print_counted_row(out, ++listed, *entry, n);
        sum_listed += entry->freq / n;
    }
    out << "Sum of " << listed << " listed frequencies : " << sum_listed << "\n\n";
}

}  // namespace mnd
