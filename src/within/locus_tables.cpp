#include "within/locus_tables.h"

#include <cmath>
#include <fstream>
#include <iomanip>
#include <string>
#include <vector>

#include "foundation/data_type.h"
#include "foundation/format_guard.h"
#include "model/population.h"
#include "run/settings.h"
#include "within/allele_counts.h"
#include "within/locus_diversity.h"

namespace mnd {

namespace {

constexpr int kLocusWidth = 8;

// Sequences have a row for each polymorphic site only.
bool is_sequence(const PopGenetics& sample) {
    return sample.profile.DataType == DNA || sample.profile.DataType == RFLP;
}

bool is_usable(const PopGenetics& sample, std::size_t locus) {
    return locus >= sample.usable_site.size() || sample.usable_site[locus] != 0;
}

bool is_polymorphic(const PopGenetics& sample, std::size_t locus) {
    return locus < sample.polym_locus.size() && sample.polym_locus[locus] != 0;
}

std::vector<std::size_t> listed_loci(const PopGenetics& sample) {
    std::vector<std::size_t> loci;
    for (std::size_t locus = 0; locus < sample.locus_nb_alleles.size(); ++locus) {
        if (!is_usable(sample, locus)) continue;
        if (is_sequence(sample) && !is_polymorphic(sample, locus)) continue;
        loci.push_back(locus);
    }
    return loci;
}

// One column of a table of loci, in the order of the loci.
struct Column {
    const char* title;
    int width;
    int decimals;
    std::vector<double> values;
};

void print_title(std::ostream& out, const std::string& title) {
    out << '\n' << title << '\n' << std::string(title.size(), '-') << "\n\n";
}

void print_summary(std::ostream& out, const char* label, const std::vector<Column>& columns,
                   double MeanAndSd::*summary) {
    out << std::setw(kLocusWidth) << label << std::setprecision(5);
    for (const Column& column : columns)
        out << std::setw(column.width) << mean_and_sd(column.values).*summary;
    out << '\n';
}

// A row of each locus, then mean and standard deviation.
//   loci   indices, printed as numbers from 1
void print_columns(std::ostream& out, const char* locus_title, const std::vector<std::size_t>& loci,
                   const std::vector<Column>& columns) {
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::setw(kLocusWidth) << locus_title;
    for (const Column& column : columns)
        out << std::setw(column.width) << column.title;
    out << '\n';
    for (std::size_t row = 0; row < loci.size(); ++row) {
        out << std::setw(kLocusWidth) << loci[row] + 1;
        for (const Column& column : columns)
            out << std::setprecision(column.decimals) << std::setw(column.width) << column.values[row];
        out << '\n';
    }
    print_summary(out, "Mean", columns, &MeanAndSd::mean);
    print_summary(out, "s.d.", columns, &MeanAndSd::sd);
}

// The values of the loci listed.
template <typename Value>
std::vector<double> picked(const std::vector<Value>& values, const std::vector<std::size_t>& loci) {
    std::vector<double> result;
    for (const std::size_t locus : loci)
        result.push_back(locus < values.size() ? static_cast<double>(values[locus]) : 0.0);
    return result;
}

std::vector<double> copies_at(const TAlleleDB& counts, const std::vector<std::size_t>& loci) {
    std::vector<double> result;
    for (const std::size_t locus : loci)
        result.push_back(std::floor(gene_copies(*counts[static_cast<int>(locus)])));
    return result;
}

void print_loci_left_out(std::ostream& out, const PopGenetics& sample) {
    const char* separator = "\nLeft out for missing data : locus ";
    for (std::size_t locus = 0; locus < sample.locus_nb_alleles.size(); ++locus) {
        if (is_usable(sample, locus)) continue;
        out << separator << locus + 1;
        separator = ", ";
    }
    if (*separator == ',') out << '\n';
}

void output_allele_numbers(PopGenetics& sample, settings& s) {
    const TAlleleDB counts = count_alleles(sample);
    compute_locus_indices(sample, counts);
    print_allele_numbers(*s.result_stream, sample, counts);
}

}  // namespace

void print_allele_numbers(std::ostream& out, const PopGenetics& sample, const TAlleleDB& counts) {
    const bool sites = is_sequence(sample);
    const std::vector<std::size_t> loci = listed_loci(sample);
    print_title(out, sites ? "Number of alleles and gene diversity per polymorphic site"
                           : "Number of alleles and gene diversity per locus");
    if (loci.empty()) {
        out << (sites ? "No polymorphic site\n" : "No usable locus\n");
    } else {
        print_columns(out, sites ? "Site" : "Locus", loci,
                      {{"Gene copies", 14, 0, copies_at(counts, loci)},
                       {"Alleles", 14, 0, picked(sample.locus_nb_alleles, loci)},
                       {"Gene diversity", 18, 5, picked(sample.locus_heterozygosity, loci)}});
    }
    if (!sites) print_loci_left_out(out, sample);
}

void print_garza_williamson(std::ostream& out, const PopGenetics& sample) {
    const std::vector<std::size_t> loci = listed_loci(sample);
    print_title(out, "Allele sizes and Garza-Williamson index");
    if (loci.empty()) {
        out << "No usable locus\n";
        return;
    }
    print_columns(out, "Locus", loci,
                  {{"Alleles", 14, 0, picked(sample.locus_nb_alleles, loci)},
                   {"Mean size", 14, 5, picked(sample.mean_allele_sizes, loci)},
                   {"Size range", 14, 0, picked(sample.allele_range, loci)},
                   {"G-W index", 18, 5, picked(sample.garza_williamson, loci)},
                   {"Modified index", 18, 5, picked(sample.garza_williamson_modified, loci)}});
}

void PopGenetics::OutputAllelelNumberAndHetPerLocusHapl(settings& s) {
    output_allele_numbers(*this, s);
}

void PopGenetics::OutputAllelelNumberAndHetPerLocusDipl(settings& s) {
    output_allele_numbers(*this, s);
    compute_phenotype_heterozygosity(s, phen_db);
}

void Population::compute_phenotype_heterozygosity(settings& s, const TPhenDB& phenotypes) const {
    std::ostream& out = *s.result_stream;
    const FormatGuard guard(out);
    print_title(out, "Observed and expected heterozygosity per locus");
    constexpr int kCountWidth = 14;
    constexpr int kValueWidth = 18;
    out << std::fixed << std::setprecision(5) << std::right << std::setw(kLocusWidth) << "Locus"
        << std::setw(kCountWidth) << "Individuals" << std::setw(kValueWidth) << "Observed het."
        << std::setw(kValueWidth) << "Expected het." << '\n';
    std::vector<double> observed;
    std::vector<double> expected;
    int locus = 0;
    for (const LocusHeterozygosity& h :
         locus_heterozygosity(phenotypes, 0, phenotypes.num_loci(), profile.MissingData)) {
        out << std::setw(kLocusWidth) << ++locus << std::setw(kCountWidth) << h.individuals
            << std::setw(kValueWidth) << h.observed << std::setw(kValueWidth) << h.expected << '\n';
        if (h.individuals == 0) continue;
        observed.push_back(h.observed);
        expected.push_back(h.expected);
    }
    const std::string no_mean(kCountWidth, ' ');
    const MeanAndSd obs = mean_and_sd(observed);
    const MeanAndSd exp = mean_and_sd(expected);
    out << std::setw(kLocusWidth) << "Mean" << no_mean << std::setw(kValueWidth) << obs.mean
        << std::setw(kValueWidth) << exp.mean << '\n'
        << std::setw(kLocusWidth) << "s.d." << no_mean << std::setw(kValueWidth) << obs.sd
        << std::setw(kValueWidth) << exp.sd << '\n';
}

}  // namespace mnd
