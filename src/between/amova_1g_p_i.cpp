// Samples of individuals in one group: variance among samples, among individuals within samples,
// and within individuals.
//
// Source: Weir and Cockerham 1984, Evolution 38:1358-1370; Michalakis and Excoffier 1996,
//         Genetics 142:1061-1064
#include "between/amova.h"
#include "between/amova_designs.h"
#include "between/amova_tests.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"

namespace mnd {

namespace {

bool set_degrees_of_freedom(Amova& analysis) {
    const int P = static_cast<int>(analysis.all_pops.size());
    const int I = integer_part(analysis.N_units);
    analysis.df = {P - 1, I - P, I, 0};
    return P != 1 && I != P && I != 0;
}

void set_sums_of_squares(Amova& analysis) {
    analysis.compute_SSDP();
    analysis.compute_total_SSD();
    analysis.compute_SSDWI();
    const double within_samples = sum_within_samples(analysis);
    analysis.SSDAP = analysis.SSD_total / analysis.N_genes - within_samples;
    analysis.SSDWP = within_samples - analysis.SSDWI;
    analysis.SSDT = analysis.SSDAP + analysis.SSDWP + analysis.SSDWI;
    set_mean_squares(analysis);
}

void set_components(Amova& analysis) {
    set_one_group_coefficient(analysis);
    analysis.Vc = analysis.MSD[2];
    analysis.Vb = (analysis.MSD[1] - analysis.Vc) / 2.0;
    analysis.Va = (analysis.MSD[0] - analysis.MSD[1]) / analysis.n;
    const bool varies = set_total_variance(analysis);
    analysis.FST = varies ? analysis.Va / analysis.V_total : 0.0;
    analysis.FIT = varies ? (analysis.Va + analysis.Vb) / analysis.V_total : 0.0;
    analysis.FIS = ratio_or_zero(analysis.Vb, analysis.Vb + analysis.Vc);
}

}  // namespace

int Amova::AMOVA_1G_P_I() {
    design = kDesign1GPI;
    if (!set_degrees_of_freedom(*this)) {
        E.error(Error, "Amova::AMOVA_1G_P_I()", kIllDefinedGeneticStructure);
        return 0;
    }
    set_sums_of_squares(*this);
    set_components(*this);
    set_population_fis(*this);
    publish_observed(*this);
    if (test_components(*this, design) == 0) return 0;
    publish_population_fis(*this);
    return 1;
}

}  // namespace mnd
