// The samples of a project replaced by simulated ones.
#include <algorithm>
#include <cstddef>

#include "run/errors.h"
#include "run/project.h"
#include "simulation/coalescent_tree.h"

namespace mnd {
namespace {

// The tree of the samples. One that is new starts a series of replicates, which has nothing to do with
// what other analyses simulated; so does another number of sites than the last replicate of any had.
TTree& tree_of(Samples& samples, int sites) {
    const bool same_sites = TNode::hits.size() == static_cast<std::size_t>(std::max(sites, 0));
    if (!samples.tree || !same_sites) samples.tree.make().allocate_tree(0);
    return *samples.tree;
}

int refuse_simulation() {
    *_AOS_ << "\tProject::simulateSample(): Unable to simulate samples\n"
           << "\tpotentially due to migration rates not within interval ]0..1[\n";
    return 0;
}

}  // namespace

int Project::simulateSample(double const& mu, int const& sites, Mut_Type const& type, double const& gamma_a,
                            double const& p_fixed, double const& fixed_rate, double const& ts_rate,
                            double const& F_st, int num_demes) {
    if (tree_of(*samples, sites).build_tree_struct_pop(*samples, mu, F_st, num_demes) == 0)
        return refuse_simulation();
    samples->sprinkle_mutations(mu, sites, type, gamma_a, p_fixed, fixed_rate, ts_rate);
    return take_simulated_data(type);
}

int Project::simulateSample(double const& mu, int const& sites, Mut_Type const& type, double const& gamma_a,
                            double const& p_fixed, double const& fixed_rate, double const& ts_rate,
                            double const& F_st, double const& F_ct, int demes_per_group, int num_groups) {
    const int built =
        tree_of(*samples, sites)
            .build_tree_struct_pop(*samples, *structure, mu, F_st, F_ct, demes_per_group, num_groups);
    if (built == 0) return refuse_simulation();
    samples->sprinkle_mutations(mu, sites, type, gamma_a, p_fixed, fixed_rate, ts_rate);
    return take_simulated_data(type);
}

int Project::take_simulated_data(Mut_Type const& type) {
    const int read = samples->readPopDataFromSims(haplo_db, allele_db, type);
    samples->tree->cleanDemes();
    if (read == 0) return refuse_simulation();
    LocusSeparator = samples->LocusSeparator;
    haplotype_vectors_built = samples->GenotypicData == 0;
    phenotypes_converted = false;
    if (structure->NbGroups == 0) return 1;
    Structure source(*structure);
    return structure->build_one_loci_str(samples, &source);
}

}  // namespace mnd
