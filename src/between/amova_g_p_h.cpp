// Several groups of samples of haplotypes: variance among groups, among samples within groups, and
// within samples.
//
// Source: Excoffier, Smouse and Quattro 1992, Genetics 131:479-491; Weir and Cockerham 1984,
//         Evolution 38:1358-1370 (coefficients)
#include "between/amova.h"
#include "between/amova_designs.h"
#include "between/amova_tests.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"

namespace mnd {

namespace {

// Degrees of freedom. Returns: false when the structure has none for a level.
bool set_degrees_of_freedom(Amova& analysis) {
    const int G = static_cast<int>(analysis.group_pops.size());
    const int P = static_cast<int>(analysis.all_pops.size());
    const int N = integer_part(analysis.N_genes);
    analysis.df = {G - 1, P - G, N - P, 0};
    return G != 1 && G != P && N != P;
}

void set_sums_of_squares(Amova& analysis) {
    analysis.compute_SSDP();
    analysis.compute_total_SSD();
    const double within_groups = sum_of_group_ssd(analysis);
    const double within_samples = sum_within_samples(analysis);
    analysis.SSDAG = analysis.SSD_total / analysis.N_genes - within_groups;
    analysis.SSDAP = within_groups - within_samples;
    analysis.SSDWP = within_samples;
    analysis.SSDT = analysis.SSDAG + analysis.SSDAP + analysis.SSDWP;
    set_mean_squares(analysis);
}

void set_components(Amova& analysis) {
    set_haplotype_coefficients(analysis);
    analysis.Vc = analysis.MSD[2];
    analysis.Vb = (analysis.MSD[1] - analysis.Vc) / analysis.n;
    analysis.Va = (analysis.MSD[0] - analysis.Vc - analysis.n_prime * analysis.Vb) / analysis.n_second;
    const bool varies = set_total_variance(analysis);
    analysis.FST = varies ? (analysis.Va + analysis.Vb) / analysis.V_total : 0.0;
    analysis.FCT = varies ? analysis.Va / analysis.V_total : 0.0;
    analysis.FSC = ratio_or_zero(analysis.Vb, analysis.Vb + analysis.Vc);
}

}  // namespace

int analyse_groups_of_samples(Amova& analysis, const char* origin) {
    if (!set_degrees_of_freedom(analysis)) {
        E.error(Error, origin, kIllDefinedGeneticStructure);
        return 0;
    }
    set_sums_of_squares(analysis);
    set_components(analysis);
    publish_observed(analysis);
    return test_components(analysis, analysis.design);
}

int Amova::AMOVA_G_P_H() {
    design = kDesignGPH;
    return analyse_groups_of_samples(*this, "Amova::AMOVA_G_P_H()");
}

}  // namespace mnd
