#include "between/amova_designs.h"

#include <cmath>
#include <cstddef>

#include "between/amova_tables.h"
#include "foundation/my_string.h"
#include "model/population.h"
#include "model/samples.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

namespace {

double square(double x) {
    return x * x;
}

double sum_of_squared_sizes(const std::vector<Population*>& group) {
    double sum = 0.0;
    for (const Population* sample : group)
        sum += square(sample->sample_size);
    return sum;
}

int nb_components(const Amova& analysis) {
    return layout_of_design(analysis.design).nb_levels;
}

void store_global_statistics(const Amova& analysis) {
    if (!global_f_statistics.wanted || analysis.print_results == 0) return;
    global_f_statistics.FIS = analysis.FIS;
    global_f_statistics.FST = analysis.FST;
    global_f_statistics.FCT = analysis.FCT;
    global_f_statistics.FSC = analysis.FSC;
    global_f_statistics.FIT = analysis.FIT;
}

// In the order of the structure, which the tests may have left.
std::vector<PopulationIndex> table_of_fis(const Amova& analysis) {
    std::vector<PopulationIndex> table(analysis.all_pops.size());
    for (const Population* sample : analysis.all_pops) {
        const std::size_t i = static_cast<std::size_t>(sample->amova.amova_id);
        table[i].name = sample->name.view();
        table[i].value = analysis.pop_Fis[i];
        if (analysis.num_perm > 0)
            table[i].pvalue = analysis.pop_Fis_hits[i] / static_cast<double>(analysis.num_perm);
    }
    return table;
}

void record_pvalues_of_fis(Amova& analysis, const std::vector<PopulationIndex>& table) {
    if (analysis.results == nullptr || analysis.num_perm <= 0) return;
    analysis.results->pop_Fis_pvalue.clear();
    for (const PopulationIndex& sample : table)
        analysis.results->pop_Fis_pvalue.push_back(sample.pvalue);
}

}  // namespace

std::ostream& document_of(const Amova& analysis) {
    if (analysis.print_results == 0 || analysis.sett == nullptr || analysis.sett->result_stream == nullptr)
        return null_stream();
    return *analysis.sett->result_stream;
}

bool is_group_level(const Amova& analysis) {
    return analysis.samples != nullptr && !analysis.samples->output_by_sample;
}

void set_mean_squares(Amova& analysis) {
    const AmovaLayout& layout = layout_of_design(analysis.design);
    for (std::size_t row = 0; row < static_cast<std::size_t>(layout.nb_levels); ++row)
        analysis.MSD[row] = analysis.*layout.levels[row].SSD / analysis.df[row];
}

bool set_total_variance(Amova& analysis) {
    const AmovaLayout& layout = layout_of_design(analysis.design);
    double sum = 0.0;
    for (int row = 0; row < nb_components(analysis); ++row)
        sum += analysis.*layout.levels[static_cast<std::size_t>(row)].sigma;
    const bool is_positive_or_negative = sum != 0.0;
    analysis.V_total = is_positive_or_negative ? sum : kZeroTotalVariance;
    return is_positive_or_negative;
}

double ratio_or_zero(double numerator, double denominator) {
    return denominator == 0.0 ? 0.0 : numerator / denominator;
}

double sum_of_group_ssd(Amova& analysis) {
    double sum = 0.0;
    for (std::size_t g = 0; g < analysis.group_pops.size(); ++g) {
        double size = 0.0;
        for (const Population* sample : analysis.group_pops[g])
            size += sample->sample_size;
        analysis.group_size[g] = size;
        analysis.group_SSD[g] = ratio_or_zero(analysis.group_sum_of_squares(analysis.group_pops[g]), size);
        sum += analysis.group_SSD[g];
    }
    return sum;
}

double sum_within_samples(const Amova& analysis) {
    double sum = 0.0;
    for (const Population* sample : analysis.all_pops)
        sum += sample->amova.SSD_div_n;
    return sum;
}

void set_haplotype_coefficients(Amova& analysis) {
    const double N = analysis.N_genes;
    const double P = static_cast<double>(analysis.all_pops.size());
    const double G = static_cast<double>(analysis.group_pops.size());
    double within_groups = 0.0;    // sum over g of S_g / n_g
    double squared_samples = 0.0;  // sum over all samples of n_i squared
    double squared_groups = 0.0;   // sum of n_g squared
    for (std::size_t g = 0; g < analysis.group_pops.size(); ++g) {
        const double S_g = sum_of_squared_sizes(analysis.group_pops[g]);
        within_groups += ratio_or_zero(S_g, analysis.group_size[g]);
        squared_samples += S_g;
        squared_groups += square(analysis.group_size[g]);
    }
    analysis.n = (N - within_groups) / (P - G);
    analysis.n_prime = (within_groups - squared_samples / N) / (G - 1.0);
    analysis.n_second = (N - squared_groups / N) / (G - 1.0);
}

void set_individual_coefficients(Amova& analysis) {
    const double copies = 2.0 * std::floor(analysis.N_units);
    const double P = static_cast<double>(analysis.all_pops.size());
    const double G = static_cast<double>(analysis.group_pops.size());
    double within_groups = 0.0;
    double between_groups = 0.0;
    double squared_groups = 0.0;
    for (std::size_t g = 0; g < analysis.group_pops.size(); ++g) {
        const double n_g = analysis.group_size[g];
        within_groups += ratio_or_zero(sum_of_squared_sizes(analysis.group_pops[g]), n_g);
        for (const Population* sample : analysis.group_pops[g])
            between_groups += ratio_or_zero((copies - n_g) * square(sample->sample_size), copies * n_g);
        squared_groups += square(n_g);
    }
    analysis.n = (copies - within_groups) / (P - G);
    analysis.n_prime = between_groups / (G - 1.0);
    analysis.n_second = (copies - squared_groups / copies) / (G - 1.0);
}

void set_one_group_coefficient(Amova& analysis) {
    const double N = analysis.N_genes;
    const double P = static_cast<double>(analysis.all_pops.size());
    analysis.n = (N - sum_of_squared_sizes(analysis.all_pops) / N) / (P - 1.0);
}

void publish_observed(Amova& analysis) {
    if (analysis.print_results != 0) {
        std::ostream& out = document_of(analysis);
        print_amova_heading(out);
        print_amova_table(out, analysis);
    }
    store_global_statistics(analysis);
    if (ofs_amova_res != nullptr) write_amova_summary(*ofs_amova_res, analysis, settings::input_file);
    analysis.set_amova_results();
}

double population_fis(const Population& sample) {
    const double individuals = sample.sample_size / 2.0;
    if (individuals <= 0.0) return kUndefinedFis;
    const double within = sample.amova.SSD_within_ind / individuals;
    double among = 0.0;
    if (individuals > 1.0) {
        among = (sample.amova.SSD_div_n - sample.amova.SSD_within_ind) / (individuals - 1.0);
        among = (among - within) / 2.0;
    }
    return within + among == 0.0 ? kUndefinedFis : among / (within + among);
}

void set_population_fis(Amova& analysis) {
    if (analysis.sett->PopSpecificFIS == 0) return;
    for (const Population* sample : analysis.all_pops)
        analysis.pop_Fis[static_cast<std::size_t>(sample->amova.amova_id)] = population_fis(*sample);
}

void publish_population_fis(Amova& analysis) {
    if (analysis.sett->PopSpecificFIS == 0) return;
    const std::vector<PopulationIndex> table = table_of_fis(analysis);
    record_pvalues_of_fis(analysis, table);
    if (analysis.print_results == 0) return;
    const bool groups = is_group_level(analysis);
    analysis.print_amova_anchor(2, *analysis.sett, groups ? "FIS per group" : "FIS per pop",
                                groups ? "GR_AMOVA_FIS" : "POP_AMOVA_FIS");
    print_population_fis(document_of(analysis), table, static_cast<long>(analysis.num_perm));
}

}  // namespace mnd
