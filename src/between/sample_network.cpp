#include "within/sample_network.h"

#include "between/spanning_tree.h"
#include "model/population.h"

namespace mnd {

void print_sample_network(std::ostream& out, const PopGenetics& sample) {
    if (!sample.dist_mat) return;
    print_spanning_network(out, *sample.dist_mat, sample.hapl_list, sample.name.c_str(), "");
}

}  // namespace mnd
