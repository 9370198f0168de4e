#include "within/locus_diversity.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "foundation/data_type.h"
#include "within/allele_counts.h"

namespace mnd {

namespace {

// Range of sizes at a locus over all samples of the pass; at least that of the sample itself.
long total_range(int locus, long own_range) {
    const TAlleleDB& global = PopGenetics::globalAllelicDB;
    return locus < global.count ? std::max(own_range, allele_size_range(*global[locus])) : own_range;
}

void compute_size_indices(PopGenetics& sample, const TAlleleDB& counts) {
    sample.allele_range.clear();
    sample.garza_williamson.clear();
    sample.garza_williamson_modified.clear();
    for (int locus = 0; locus < counts.count; ++locus) {
        const int k = static_cast<int>(counts[locus]->count);
        const long range = std::max(allele_size_range(*counts[locus]), 0L);
        const double total = static_cast<double>(total_range(locus, range));
        sample.allele_range.push_back(static_cast<double>(range));
        sample.garza_williamson.push_back(garza_williamson_index(k, static_cast<double>(range)));
        sample.garza_williamson_modified.push_back(garza_williamson_index(k, total));
    }
}

double mean_size(const TLocus& locus) {
    double sum = 0.0;
    double n = 0.0;
    for (const TAllele* allele : locus) {
        sum += static_cast<double>(allele_size(*allele)) * allele->freq;
        n += allele->freq;
    }
    return n > 0.0 ? sum / n : 0.0;
}

}  // namespace

double gene_copies(const TLocus& locus) {
    double sum = 0.0;
    for (const TAllele* allele : locus)
        sum += allele->freq;
    return sum;
}

double computeHeterozygosity(TLocus* locus, char) {
    const double w = gene_copies(*locus);
    if (w <= 1.0) return 0.0;
    double sum_sq = 0.0;
    for (const TAllele* allele : *locus) {
        const double p = allele->freq / w;
        sum_sq += p * p;
    }
    return w / (w - 1.0) * (1.0 - sum_sq);
}

long allele_size(const my_string& allele) {
    constexpr double kLargestSize = 1e15;
    const double size = std::atof(allele.c_str()) + 0.5;
    return std::isnan(size) ? 0 : static_cast<long>(std::clamp(size, -kLargestSize, kLargestSize));
}

long allele_size_range(const TLocus& locus) {
    if (locus.count == 0) return -1;
    long smallest = allele_size(*locus[0]);
    long largest = smallest;
    for (const TAllele* allele : locus) {
        const long size = allele_size(*allele);
        smallest = std::min(smallest, size);
        largest = std::max(largest, size);
    }
    return largest - smallest;
}

double garza_williamson_index(int nb_alleles, double range) {
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

void compute_locus_indices(PopGenetics& sample, const TAlleleDB& counts) {
    sample.locus_nb_alleles.clear();
    sample.locus_heterozygosity.clear();
    for (int locus = 0; locus < counts.count; ++locus) {
        sample.locus_nb_alleles.push_back(static_cast<int>(counts[locus]->count));
        sample.locus_heterozygosity.push_back(
            computeHeterozygosity(counts[locus], sample.profile.MissingData));
    }
    if (sample.profile.DataType == MICROSAT) compute_size_indices(sample, counts);
}

void PopGenetics::computeMeanAlleleSizes() {
    mean_allele_sizes.clear();
    const TAlleleDB counts = count_alleles(*this);
    for (const TLocus* locus : counts)
        mean_allele_sizes.push_back(mean_size(*locus));
}

}  // namespace mnd
