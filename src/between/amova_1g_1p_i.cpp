// One sample of individuals: variance among and within individuals.
//
// Source: Excoffier, Smouse and Quattro 1992, Genetics 131:479-491; Weir and Cockerham 1984,
//         Evolution 38:1358-1370
#include <cstddef>

#include "between/amova.h"
#include "between/amova_designs.h"
#include "between/amova_tests.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"

namespace mnd {

namespace {

bool set_degrees_of_freedom(Amova& analysis) {
    const int I = integer_part(analysis.N_units);
    analysis.df = {I - 1, I, 0, 0};
    return I != 1 && I != 0;
}

void set_sums_of_squares(Amova& analysis) {
    analysis.compute_SSDP();
    analysis.compute_SSDWI();
    analysis.SSDWP = sum_within_samples(analysis) - analysis.SSDWI;
    analysis.SSDT = analysis.SSDWP + analysis.SSDWI;
    set_mean_squares(analysis);
}

void set_components(Amova& analysis) {
    analysis.Vb = analysis.MSD[1];
    analysis.Va = (analysis.MSD[0] - analysis.MSD[1]) / 2.0;
    set_total_variance(analysis);
    analysis.FIS = ratio_or_zero(analysis.Va, analysis.Va + analysis.Vb);
}

// Each individual's own share in the index.
void set_individual_statistics(Amova& analysis) {
    const double I = analysis.N_units;
    const double scale = analysis.SSDT * I - analysis.SSDWI;
    for (std::size_t k = 0; k < analysis.ind_F.size(); ++k) {
        const double numerator = (2.0 * I - 2.0) * I * -0.5 * analysis.ind_d[k];
        analysis.ind_F[k] = 1.0 + ratio_or_zero(numerator, scale);
    }
}

}  // namespace

int Amova::AMOVA_1G_1P_I() {
    design = kDesign1G1PI;
    if (!set_degrees_of_freedom(*this)) {
        E.error(Error, "Amova::AMOVA_1G_1P_I()", kIllDefinedGeneticStructure);
        return 0;
    }
    set_sums_of_squares(*this);
    set_components(*this);
    set_individual_statistics(*this);
    set_population_fis(*this);
    publish_observed(*this);
    if (test_components(*this, design) == 0) return 0;
    publish_population_fis(*this);
    return 1;
}

}  // namespace mnd
