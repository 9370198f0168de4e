#include "run/missing_analysis.h"

#include "run/errors.h"

namespace mnd {

void tell_missing_analysis(std::ostream& results, const char* name) {
    for (std::ostream* out : {&results, _AOS_})
        *out << "\nNot computed: this version does not hold the " << name << ".\n";
}

}  // namespace mnd
