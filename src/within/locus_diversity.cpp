#include "within/locus_diversity.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iomanip>

#include "foundation/data_type.h"
#include "foundation/format_guard.h"
#include "run/settings.h"

namespace mnd {

namespace {

// Adds one string of alleles with its number of copies.
template <typename Alleles>
void count_string(TAlleleDB& counts, const Alleles& alleles, double copies, char missing) {
    int locus = -1;
    for (const TAllele* allele : alleles) {
        ++locus;
        // A locus whose first copy is missing must be there all the same, to keep its index.
        const bool is_missing = allele == nullptr || allele->is_char(missing);
        counts.InsertAllPos(locus, is_missing ? my_string("") : allele->name(), is_missing ? 0.0 : copies);
    }
}

bool is_present(const TAllele& allele) {
    return allele.freq > 0.0;
}

double gene_copies(const TLocus& locus) {
    double sum = 0.0;
    for (int i = 0; i < locus.count; ++i)
        sum += locus[i]->freq;
    return sum;
}

int number_of_alleles(const TLocus& locus) {
    int k = 0;
    for (int i = 0; i < locus.count; ++i)
        k += is_present(*locus[i]) ? 1 : 0;
    return k;
}

void add_to_global_store(const TAlleleDB& counts) {
    TAlleleDB& global = PopGenetics::globalAllelicDB;
    for (int locus = 0; locus < counts.count; ++locus) {
        for (int i = 0; i < counts[locus]->count; ++i) {
            const TAllele& allele = *(*counts[locus])[i];
            global.InsertAllPos(locus, allele.name(), allele.freq);
        }
    }
}

// Range of sizes over all samples of the project; at least that of the sample itself.
int total_range(const PopGenetics& sample, int locus, int own_range) {
    if (sample.allele_db == nullptr || locus >= sample.allele_db->count) return own_range;
    return std::max(own_range, allele_size_range(*(*sample.allele_db)[locus], sample.profile.MissingData));
}

void compute_sizes(PopGenetics& sample, const TAlleleDB& counts) {
    sample.allele_range.clear();
    sample.garza_williamson.clear();
    sample.garza_williamson_modified.clear();
    for (int locus = 0; locus < counts.count; ++locus) {
        const TLocus& alleles = *counts[locus];
        const int k = number_of_alleles(alleles);
        const int range = std::max(allele_size_range(alleles, sample.profile.MissingData), 0);
        sample.allele_range.push_back(range);
        sample.garza_williamson.push_back(garza_williamson_index(k, range));
        sample.garza_williamson_modified.push_back(
            garza_williamson_index(k, total_range(sample, locus, range)));
    }
}

bool is_usable(const PopGenetics& sample, std::size_t locus) {
    return locus >= sample.usable_site.size() || sample.usable_site[locus] != 0;
}

bool is_polymorphic(const PopGenetics& sample, std::size_t locus) {
    return locus < sample.polym_locus.size() && sample.polym_locus[locus] != 0;
}

// Sequences have a row for each polymorphic site only.
bool lists_polymorphic_loci_only(const PopGenetics& sample) {
    return sample.profile.DataType == DNA || sample.profile.DataType == RFLP;
}

std::vector<std::size_t> listed_loci(const PopGenetics& sample, std::size_t nb_loci) {
    std::vector<std::size_t> loci;
    for (std::size_t locus = 0; locus < nb_loci; ++locus) {
        if (!is_usable(sample, locus)) continue;
        if (lists_polymorphic_loci_only(sample) && !is_polymorphic(sample, locus)) continue;
        loci.push_back(locus);
    }
    return loci;
}

constexpr int kLocusWidth = 8;
constexpr int kCountWidth = 14;
constexpr int kValueWidth = 18;

void print_title(std::ostream& out, const char* title) {
    out << '\n' << title << '\n' << std::string(std::string(title).size(), '-') << "\n\n";
}

// Last rows of a table: mean and standard deviation of each column over the loci listed.
void print_mean_rows(std::ostream& out, const std::vector<std::vector<double>>& columns,
                     const std::vector<int>& widths) {
    for (const bool is_mean : {true, false}) {
        out << std::right << std::setw(kLocusWidth) << (is_mean ? "Mean" : "s.d.");
        for (std::size_t c = 0; c < columns.size(); ++c) {
            const MeanAndSd m = mean_and_sd(columns[c]);
            out << std::setw(widths[c]) << (is_mean ? m.mean : m.sd);
        }
        out << '\n';
    }
}

// Rows of the table of allele numbers and gene diversity.
void print_allele_numbers(std::ostream& out, const PopGenetics& sample, const TAlleleDB& counts) {
    const FormatGuard guard(out);
    out << std::fixed << std::setprecision(5) << std::right << std::setw(kLocusWidth) << "Locus"
        << std::setw(kCountWidth) << "Gene copies" << std::setw(kCountWidth) << "Alleles"
        << std::setw(kValueWidth) << "Gene diversity" << '\n';
    std::vector<double> copies, alleles, diversity;
    for (const std::size_t locus : listed_loci(sample, sample.locus_nb_alleles.size())) {
        copies.push_back(gene_copies(*counts[static_cast<int>(locus)]));
        alleles.push_back(sample.locus_nb_alleles[locus]);
        diversity.push_back(sample.locus_heterozygosity[locus]);
        out << std::setw(kLocusWidth) << locus + 1 << std::setw(kCountWidth)
            << static_cast<long>(copies.back()) << std::setw(kCountWidth) << sample.locus_nb_alleles[locus]
            << std::setw(kValueWidth) << diversity.back() << '\n';
    }
    if (copies.empty()) {
        out << (lists_polymorphic_loci_only(sample) ? "No polymorphic locus\n" : "No usable locus\n");
        return;
    }
    print_mean_rows(out, {copies, alleles, diversity}, {kCountWidth, kCountWidth, kValueWidth});
}

void output_allele_numbers(PopGenetics& sample, settings& s, const char* title) {
    compute_locus_indices(sample);
    std::ostream& out = *s.result_stream;
    print_title(out, title);
    print_allele_numbers(out, sample, count_alleles(sample));
}

}  // namespace

double computeHeterozygosity(TLocus* locus, char) {
    const double w = gene_copies(*locus);
    if (w <= 1.0) return 0.0;
    double sum_sq = 0.0;
    for (int i = 0; i < locus->count; ++i) {
        const double p = (*locus)[i]->freq / w;
        sum_sq += p * p;
    }
    return w / (w - 1.0) * (1.0 - sum_sq);
}

TAlleleDB count_alleles(const Population& sample) {
    TAlleleDB counts;
    const char missing = sample.profile.MissingData;
    if (sample.phen_db.count > 0) {
        for (int i = 0; i < sample.phen_db.count; ++i) {
            const TPhenotype& phenotype = *sample.phen_db[i];
            for (const auto& hapl : phenotype.pseudo_hapl)
                if (hapl != nullptr) count_string(counts, hapl->alleles, phenotype.freq, missing);
        }
        return counts;
    }
    for (int i = 0; i < sample.hapl_list.count; ++i) {
        const PHaploDef& entry = *sample.hapl_list[i];
        if (entry.freq > 0) count_string(counts, *entry.def, entry.freq, missing);
    }
    return counts;
}

int allele_size(const my_string& allele) {
    constexpr double kLargestSize = 1e9;
    const double size = std::atof(allele.c_str()) + 0.5;
    return std::fabs(size) < kLargestSize ? static_cast<int>(size) : 0;
}

int allele_size_range(const TLocus& locus, char missing) {
    int smallest = 0;
    int largest = -1;
    for (int i = 0; i < locus.count; ++i) {
        const TAllele& allele = *locus[i];
        if (!is_present(allele) || allele.is_char(missing)) continue;
        const int size = allele_size(allele);
        if (largest < smallest) {
            smallest = largest = size;
        } else {
            smallest = std::min(smallest, size);
            largest = std::max(largest, size);
        }
    }
    return largest - smallest;
}

double garza_williamson_index(int nb_alleles, int range) {
    return nb_alleles > 0 ? nb_alleles / (range + 1.0) : 0.0;
}

MeanAndSd mean_and_sd(const std::vector<double>& values) {
    if (values.empty()) return {};
    const double n = static_cast<double>(values.size());
    double sum = 0.0;
    for (const double x : values)
        sum += x;
    const double mean = sum / n;
    double squares = 0.0;
    for (const double x : values)
        squares += (x - mean) * (x - mean);
    return {mean, values.size() > 1 ? std::sqrt(squares / (n - 1.0)) : 0.0};
}

void compute_locus_indices(PopGenetics& sample) {
    const TAlleleDB counts = count_alleles(sample);
    sample.locus_nb_alleles.clear();
    sample.locus_heterozygosity.clear();
    for (int locus = 0; locus < counts.count; ++locus) {
        sample.locus_nb_alleles.push_back(number_of_alleles(*counts[locus]));
        sample.locus_heterozygosity.push_back(
            computeHeterozygosity(counts[locus], sample.profile.MissingData));
    }
    if (sample.profile.DataType == MICROSAT) compute_sizes(sample, counts);
    add_to_global_store(counts);
}

void print_garza_williamson(std::ostream& out, const PopGenetics& sample) {
    const FormatGuard guard(out);
    print_title(out, "Garza-Williamson index");
    out << std::fixed << std::setprecision(5) << std::right << std::setw(kLocusWidth) << "Locus"
        << std::setw(kCountWidth) << "Alleles" << std::setw(kCountWidth) << "Size range"
        << std::setw(kValueWidth) << "G-W index" << std::setw(kValueWidth) << "Modified index" << '\n';
    std::vector<double> alleles, ranges, index, modified;
    for (const std::size_t locus : listed_loci(sample, sample.garza_williamson.size())) {
        alleles.push_back(sample.locus_nb_alleles[locus]);
        ranges.push_back(sample.allele_range[locus]);
        index.push_back(sample.garza_williamson[locus]);
        modified.push_back(sample.garza_williamson_modified[locus]);
        out << std::setw(kLocusWidth) << locus + 1 << std::setw(kCountWidth) << sample.locus_nb_alleles[locus]
            << std::setw(kCountWidth) << static_cast<int>(ranges.back()) << std::setw(kValueWidth)
            << index.back() << std::setw(kValueWidth) << modified.back() << '\n';
    }
    if (index.empty()) {
        out << "No usable locus\n";
        return;
    }
    print_mean_rows(out, {alleles, ranges, index, modified},
                    {kCountWidth, kCountWidth, kValueWidth, kValueWidth});
}

void PopGenetics::OutputAllelelNumberAndHetPerLocusHapl(settings& s) {
    output_allele_numbers(*this, s, "Number of alleles and gene diversity per locus");
}

void PopGenetics::OutputAllelelNumberAndHetPerLocusDipl(settings& s) {
    output_allele_numbers(*this, s, "Number of alleles and gene diversity per locus");
    compute_phenotype_heterozygosity(s, phen_db);
}

void PopGenetics::computeMeanAlleleSizes() {
    const TAlleleDB counts = count_alleles(*this);
    mean_allele_sizes.assign(static_cast<std::size_t>(counts.count), 0.0);
    for (int locus = 0; locus < counts.count; ++locus) {
        const TLocus& alleles = *counts[locus];
        double sum = 0.0;
        double n = 0.0;
        for (int i = 0; i < alleles.count; ++i) {
            if (!is_present(*alleles[i])) continue;
            sum += allele_size(*alleles[i]) * alleles[i]->freq;
            n += alleles[i]->freq;
        }
        if (n > 0.0) mean_allele_sizes[static_cast<std::size_t>(locus)] = sum / n;
    }
}

}  // namespace mnd
