// Writers of the parts of a project file that holds simulated samples.
#pragma once

#include <iosfwd>

#include "foundation/my_string.h"
#include "model/phenotypes.h"

namespace mnd {

// The profile section, up to the heading of the samples. The data are written as genotypes of unknown
// phase: two lines an individual. FREQUENCY data are written as standard data.
void write_Mendrake_header(int const& num_samples, TDataType const& data_type, std::ostream& out);
// Name ("Sample " and the number) and size of a sample, up to the brace that opens its data.
void write_Mendrake_sample_header(int const& number, int const& size, std::ostream& out);
// Closes the data of a sample.
void write_Mendrake_sample_footer(std::ostream& out);

// The same with a given title and name of the sample.
void write_Mendrake_header_gibbs(int const& num_samples, TDataType const& data_type, my_string const& title,
                                 std::ostream& out);
void write_Mendrake_sample_header_gibbs(my_string const& name, int const& size, std::ostream& out);
void write_Mendrake_sample_footer_gibbs(std::ostream& out);

}  // namespace mnd
