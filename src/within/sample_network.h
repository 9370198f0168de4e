// The minimum spanning network of the haplotypes of one sample.
#pragma once

#include <ostream>

namespace mnd {

class PopGenetics;

// Writes tree and network of the distances below the diagonal of dist_mat, under the names of the
// haplotypes; nothing without a matrix. Defined with the networks (between/sample_network.cpp).
void print_sample_network(std::ostream& out, const PopGenetics& sample);

}  // namespace mnd
