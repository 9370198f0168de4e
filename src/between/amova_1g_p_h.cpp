// Samples of haplotypes in one group: variance among samples and within samples.
//
// Source: Excoffier, Smouse and Quattro 1992, Genetics 131:479-491; population-specific indices:
//         Weir and Hill 2002, Annual Review of Genetics 36:721-750
#include <cstddef>
#include <vector>

#include "between/amova.h"
#include "between/amova_designs.h"
#include "between/amova_tables.h"
#include "between/amova_tests.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

namespace {

bool set_degrees_of_freedom(Amova& analysis) {
    const int G = static_cast<int>(analysis.group_pops.size());
    const int P = static_cast<int>(analysis.all_pops.size());
    const int N = integer_part(analysis.N_genes);
    analysis.df = {P - 1, N - P, 0, 0};
    return P != G && N != P;
}

void set_sums_of_squares(Amova& analysis) {
    analysis.compute_SSDP();
    analysis.compute_total_SSD();
    const double within_samples = sum_within_samples(analysis);
    analysis.SSDAP = analysis.SSD_total / analysis.N_genes - within_samples;
    analysis.SSDWP = within_samples;
    analysis.SSDT = analysis.SSDAP + analysis.SSDWP;
    set_mean_squares(analysis);
}

void set_components(Amova& analysis) {
    set_one_group_coefficient(analysis);
    analysis.Vb = analysis.MSD[1];
    analysis.Va = (analysis.MSD[0] - analysis.MSD[1]) / analysis.n;
    const bool varies = set_total_variance(analysis);
    analysis.FST = varies ? analysis.Va / analysis.V_total : 0.0;
}

// The component within a sample alone takes the place of the common one.
double population_fst(const Amova& analysis, const Population& sample) {
    const double N = analysis.N_genes;
    if (sample.sample_size <= 0.0) return 0.0;
    const double within = N * sample.amova.SSD_div_n / analysis.df[1] / sample.sample_size;
    return (analysis.MSD[0] - within) / analysis.n / analysis.V_total;
}

void set_population_fst(Amova& analysis) {
    if (analysis.sett->PopSpecificFST == 0) return;
    const bool varies = analysis.V_total != kZeroTotalVariance;
    for (const Population* sample : analysis.all_pops) {
        const std::size_t i = static_cast<std::size_t>(sample->amova.amova_id);
        analysis.pop_Fst[i] = varies ? population_fst(analysis, *sample) : 0.0;
    }
}

void publish_population_fst(const Amova& analysis) {
    if (analysis.sett->PopSpecificFST == 0 || analysis.print_results == 0) return;
    std::vector<PopulationIndex> table;
    for (const Population* sample : analysis.all_pops) {
        const std::size_t i = static_cast<std::size_t>(sample->amova.amova_id);
        table.push_back({sample->name.view(), analysis.pop_Fst[i], 0.0});
    }
    print_population_fst(document_of(analysis), table);
}

}  // namespace

int analyse_samples(Amova& analysis, const char* origin) {
    if (!set_degrees_of_freedom(analysis)) {
        E.error(Error, origin, kIllDefinedGeneticStructure);
        return 0;
    }
    set_sums_of_squares(analysis);
    set_components(analysis);
    set_population_fst(analysis);
    publish_observed(analysis);
    publish_population_fst(analysis);
    return test_components(analysis, analysis.design);
}

int Amova::AMOVA_1G_P_H() {
    design = kDesign1GPH;
    return analyse_samples(*this, "Amova::AMOVA_1G_P_H()");
}

}  // namespace mnd
