// Several groups of samples of individuals: variance among groups, among samples within groups,
// among individuals within samples, and within individuals.
//
// Source: Excoffier, Smouse and Quattro 1992, Genetics 131:479-491; Weir 1996, Genetic Data
//         Analysis II, chapter 5
#include "between/amova.h"
#include "between/amova_designs.h"
#include "between/amova_tests.h"
#include "model/integer_part.h"
#include "model/population.h"

namespace mnd {

namespace {

// A level without degrees of freedom is not refused: its mean square is printed as it falls.
void set_degrees_of_freedom(Amova& analysis) {
    const int G = static_cast<int>(analysis.group_pops.size());
    const int P = static_cast<int>(analysis.all_pops.size());
    const int I = integer_part(analysis.N_units);
    analysis.df = {G - 1, P - G, I - P, I};
}

void set_sums_of_squares(Amova& analysis) {
    analysis.compute_SSDP();
    analysis.compute_total_SSD();
    analysis.compute_SSDWI();
    const double within_groups = sum_of_group_ssd(analysis);
    const double within_samples = sum_within_samples(analysis);
    analysis.SSDAG = analysis.SSD_total / analysis.N_genes - within_groups;
    analysis.SSDAP = within_groups - within_samples;
    analysis.SSDWP = within_samples - analysis.SSDWI;
    analysis.SSDT = analysis.SSDAG + analysis.SSDAP + analysis.SSDWP + analysis.SSDWI;
    set_mean_squares(analysis);
}

void set_components(Amova& analysis) {
    set_individual_coefficients(analysis);
    analysis.Vd = analysis.MSD[3];
    analysis.Vc = (analysis.MSD[2] - analysis.Vd) / 2.0;
    analysis.Vb = (analysis.MSD[1] - analysis.MSD[2]) / analysis.n;
    analysis.Va = (analysis.MSD[0] - analysis.MSD[2] - analysis.n_prime * analysis.Vb) / analysis.n_second;
    const bool varies = set_total_variance(analysis);
    const double within_groups = analysis.Vb + analysis.Vc + analysis.Vd;
    analysis.FCT = varies ? analysis.Va / analysis.V_total : 0.0;
    analysis.FSC = varies ? ratio_or_zero(analysis.Vb, within_groups) : 0.0;
    analysis.FIT = varies ? (analysis.Va + analysis.Vb + analysis.Vc) / analysis.V_total : 0.0;
    analysis.FIS = ratio_or_zero(analysis.Vc, analysis.Vd + analysis.Vc);
}

}  // namespace

int Amova::AMOVA_G_P_I() {
    design = kDesignGPI;
    set_degrees_of_freedom(*this);
    set_sums_of_squares(*this);
    set_components(*this);
    set_population_fis(*this);
    publish_observed(*this);
    if (test_components(*this, design) == 0) return 0;
    publish_population_fis(*this);
    return 1;
}

}  // namespace mnd
