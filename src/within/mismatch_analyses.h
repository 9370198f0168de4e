// The fits of expansions to the mismatch distribution of one sample.
#pragma once

#include <fstream>

namespace mnd {

class PopulDNA;
class PopulRFLP;
class settings;

// Fits the models that the settings ask for and writes their blocks to out; without any, writes the
// distribution. compute_mm_distr must have run.
// Reads:    MismatchDemogExp, MismatchSpatialExp, MismatchSpatialExpNumParams, NumBootExpDem
// Returns:  false when the work was stopped
bool fit_expansions(PopulDNA& sample, settings& s, std::basic_fstream<char>& out);
bool fit_expansions(PopulRFLP& sample, settings& s, std::basic_fstream<char>& out);

}  // namespace mnd
