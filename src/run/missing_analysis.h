// The line for an analysis that settings ask for and this version does not hold.
#pragma once

#include <ostream>

namespace mnd {

// Writes "Not computed: this version does not hold the <name>." to the result document and the
// log: a result that was asked for and is not there must not go unnoticed.
void tell_missing_analysis(std::ostream& results, const char* name);

}  // namespace mnd
