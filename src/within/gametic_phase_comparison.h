// Place of the comparison of estimated with known gametic phases.
#pragma once

#include <ostream>

namespace mnd {

// Stands in the interface; both comparisons write nothing and find full agreement.
class TCompGamPhase {
public:
    double compare_phase([[maybe_unused]] std::ostream& out) { return 1.0; }
    double compare_hapl_freq([[maybe_unused]] std::ostream& out) { return 1.0; }
};

}  // namespace mnd
