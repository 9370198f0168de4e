// Individuals of unknown phase in one group of samples: the variance of their haplotypes; the
// shuffles keep the two rows of an individual together.
#include "between/amova.h"
#include "between/amova_designs.h"

namespace mnd {

int Amova::AMOVA_1G_P_IH() {
    design = kDesign1GPIH;
    return analyse_samples(*this, "Amova::AMOVA_1G_P_IH()");
}

// With recessive alleles the distances between individuals are not defined.
int Amova::AMOVA_1G_P_RIH() {
    return 1;
}

}  // namespace mnd
