// Simulated samples: a tree, mutations on it, and the leaves read back.
#include <string>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "model/population.h"
#include "simulation/coalescent_tree.h"
#include "simulation/mutated_sites.h"
#include "simulation/mutation_process.h"

namespace mnd {
namespace {

// The tree of a sample with as many leaves as it has gene copies, and the counters at zero.
TTree& start_replicate(PopGenetics& sample) {
    TNode::node_count = 0;
    TNode::_tot_mut = 0;
    TTree& tree = sample.tree.make();
    tree.sample_size = leaves_of(sample);
    return tree;
}

// A haplotype of a leaf as definition and entry of the sample.
void add_haplotype(PopGenetics& sample, Haplo_DB& definitions, int leaf, int freq, const std::string& text) {
    auto* definition = new HaploDef(my_string(std::to_string(leaf).c_str()));
    definition->id = static_cast<int>(definitions.list.count);
    definition->content = text.c_str();
    definition->count = freq;
    definitions.append(definition);
    sample.hapl_list.Add(new PHaploDef(definition, freq));
    ++sample.nb_hapl;
}

}  // namespace

void TreeDeleter::operator()(TTree* tree) const {
    delete tree;
}

TTree& TreeHolder::make() {
    if (tree_ == nullptr) tree_.reset(new TTree);
    return *tree_;
}

long drop_mutations(TTree& tree, const MutationModel& model) {
    if (!tree.is_built() || !prepare_sites(model)) return 0;
    long seed = 1;
    return tree.root()->add_mutations(model.mu, &seed, 0, model.sites, model.type, model.gamma_a,
                                      model.ts_rate, model.bounded, model.step_geom);
}

void PopGenetics::allocate_tree(int const& n) {
    tree.make().allocate_tree(n);
}

void PopGenetics::fast_build_tree() {
    start_replicate(*this).build_tree();
}

void PopGenetics::build_tree_fast_one_pop(double t, double scale, int const& generations) {
    fast_build_tree();
    tree->bottleneck(t, scale);
    tree->scale_to_num_generations(generations);
}

void PopGenetics::build_tree_fast_range_exp(double T, double D, int const& generations) {
    start_replicate(*this).build_tree_range_exp(T, D);
    tree->scale_to_num_generations(generations);
}

long* PopGenetics::sprinkle_mutations(MutationModel const& model) {
    total_mutations = drop_mutations(tree.make(), model);
    return &total_mutations;
}

long* PopGenetics::simulate_sample(MutationModel const& model) {
    fast_build_tree();
    return sprinkle_mutations(model);
}

long* PopGenetics::simulate_sample_exp(MutationModel const& model, double const& T, double const& scale,
                                       int const& generations) {
    build_tree_fast_one_pop(T, scale, generations);
    return sprinkle_mutations(model);
}

long* PopGenetics::simulate_range_exp(MutationModel const& model, double const& T, double const& D,
                                      int const& generations) {
    build_tree_fast_range_exp(T, D, generations);
    return sprinkle_mutations(model);
}

long* PopGenetics::fast_simulate_sample(MutatedSites& mutated, MutationModel const& model) {
    fast_build_tree();
    total_mutations = mutated.sprinkle(*tree, model);
    return &total_mutations;
}

long* PopGenetics::fast_simulate_sample_exp(MutatedSites& mutated, MutationModel const& model,
                                            double const& T, double const& scale, int const& generations) {
    build_tree_fast_one_pop(T, scale, generations);
    total_mutations = mutated.sprinkle(*tree, model);
    return &total_mutations;
}

long* PopGenetics::fast_simulate_range_exp(MutatedSites& mutated, MutationModel const& model, double const& T,
                                           double const& D, int const& generations) {
    build_tree_fast_range_exp(T, D, generations);
    total_mutations = mutated.sprinkle(*tree, model);
    return &total_mutations;
}

long* PopGenetics::sprinkle_mutations(double const& mu, int const& sites, Mut_Type const& type,
                                      double const& shape, double const& p_fixed, double const& fixed_rate,
                                      double const& ts_rate) {
    return sprinkle_mutations({mu, sites, type, shape, p_fixed, fixed_rate, ts_rate});
}

long* PopGenetics::simulate_sample(double const& mu_coal, int const& sites, Mut_Type const& type,
                                   double const& shape, double const& p_fixed, double const& fixed_rate,
                                   double const& ts_rate) {
    return simulate_sample({mu_coal, sites, type, shape, p_fixed, fixed_rate, ts_rate});
}

long* PopGenetics::simulate_sample_exp(double const& mu_gen, int const& sites, Mut_Type const& type,
                                       double const& shape, double const& p_fixed, double const& fixed_rate,
                                       double const& ts_rate, double const& T, double const& scale,
                                       int const& generations) {
    return simulate_sample_exp({mu_gen, sites, type, shape, p_fixed, fixed_rate, ts_rate}, T, scale,
                               generations);
}

long* PopGenetics::simulate_range_exp(double const& mu_gen, int const& sites, Mut_Type const& type,
                                      double const& shape, double const& p_fixed, double const& fixed_rate,
                                      double const& ts_rate, double const& T, double const& D,
                                      int const& generations) {
    return simulate_range_exp({mu_gen, sites, type, shape, p_fixed, fixed_rate, ts_rate}, T, D, generations);
}

void PopGenetics::read_simulated_sample(TTree& simulated, Haplo_DB& definitions, Mut_Type const& type) {
    const int n = simulated.sample_size;
    sample_size = n;
    inv_sample_size = n > 0 ? 1.0 / n : 1.0;
    hapl_list.Flush();
    definitions.reset();
    nb_hapl = 0;
    simulated.compute_hapl_freq();
    std::size_t length = 0;
    for (int leaf = 0; leaf < n; ++leaf) {
        const auto i = static_cast<std::size_t>(leaf);
        const myVectInt* sequence = simulated.nodes[i].sequence.get();
        if (leaf == 0 && sequence != nullptr) length = sequence->size();
        if (sequence == nullptr || sequence->size() != length) {
            report(Error, "PopGenetics::read_simulated sample()", kInvalidDataOrOutput);
            continue;
        }
        const int freq = simulated.leaf_freq[i];
        if (freq > 0) add_haplotype(*this, definitions, leaf, freq, sequence_text(*sequence, type));
    }
    nb_orig_hapl = nb_hapl;
}

}  // namespace mnd
