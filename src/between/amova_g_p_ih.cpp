// Several groups of individuals of unknown phase: the variance of their haplotypes; the shuffles
// keep the two rows of an individual together.
#include "between/amova.h"
#include "between/amova_designs.h"

namespace mnd {

int Amova::AMOVA_G_P_IH() {
    design = kDesignGPIH;
    return analyse_groups_of_samples(*this, "Amova::AMOVA_G_P_IH()");
}

// With recessive alleles the distances between individuals are not defined.
int Amova::AMOVA_G_P_RIH() {
    return 1;
}

}  // namespace mnd
