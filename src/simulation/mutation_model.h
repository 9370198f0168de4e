// How mutations change the sites of a simulated sequence.
#pragma once

namespace mnd {

// What a mutation does to the state of its site.
enum Mut_Type : int {
    kStepwiseMutation = 0,    // microsatellite: the number of repeats goes up or down
    kBinaryMutation = 1,      // 0 to 1 and back
    kNucleotideMutation = 2,  // A 0, G 1, C 2, T 3; transitions within {A, G} and {C, T}
    kNewStateMutation = 3,    // a state not seen before at this site: its number of hits
};

// The parameters of mutation, by name.
struct MutationModel {
    double mu = 0.0;  // of the whole sequence, per unit of the times of the tree: theta / 2 for a tree in
                      // coalescent units, the rate per generation for one in generations
    int sites = 0;    // length of the sequence
    Mut_Type type = kNucleotideMutation;
    double gamma_a = 0.0;     // 0: the sites are alike. Else they have the rates of GammaRates::build
                              // with this shape (below 0: two classes of sites)
    double p_fixed = 1.0;     // share of the sites in the other class
    double fixed_rate = 1.0;  // relative rate of the other class
    double ts_rate = 0.33;    // nucleotides: proportion of transitions
    int bounded = 0;          // not 0: repeats stay within TNode::min_mic and TNode::max_mic
    double step_geom = 0.0;   // above 0: steps of 1 + geometric(step_geom) repeats, else of 1
};

}  // namespace mnd
