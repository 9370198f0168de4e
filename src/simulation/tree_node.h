// One node of a genealogy, and the mutations on the branch above it.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "simulation/gamma_rates.h"
#include "simulation/mutation_model.h"

namespace mnd {

class TNode;

// The states of a sequence, one whole number per site.
class myVectInt : public std::vector<int> {
public:
    using std::vector<int>::vector;
};

// The leaves below every node of a subtree: in pre-order, so that those of a node stand together.
struct DescendantLists {
    struct Below {
        const TNode* node;  // not owned
        int first;          // index in leaves of the first leaf below the node
        int count;          // leaves below it; 1 for a leaf, which is below itself
    };
    std::vector<const TNode*> leaves;  // not owned
    std::vector<Below> nodes;          // in pre-order, the top first
};

class TNode {
public:
    double time = 0.0;                    // age; 0 at a leaf
    TNode* desc1 = nullptr;               // not owned: the two descendants, null at a leaf
    TNode* desc2 = nullptr;               // not owned
    std::vector<char> mutation_mask;      // per site: 1 when the subtree carries the mutation of the site
    TNode* ancestor = nullptr;            // not owned: null at the root
    std::unique_ptr<myVectInt> sequence;  // owned: state per site; made when first needed, then reused
    int num_sites = 0;                    // length of sequence
    long num_mutations = 0;               // on the branch above this node
    int deme = 0;                         // group of the lineage in the hierarchical model

    // Shared by all nodes of the process.
    static long node_count;         // coalescences since a simulation last cleared it
    static long _tot_mut;           // mutations since a simulation last cleared it
    static std::vector<long> hits;  // per site: mutations in the current tree; sized by the first
                                    // sprinkling and emptied when a tree is allocated
    static GammaRates mut_rates;    // relative rates of the sites; no entries until they are needed
    static int min_mic;             // bounds of microsatellites
    static int max_mic;

    TNode() = default;
    TNode(const TNode&) = delete;
    TNode& operator=(const TNode&) = delete;
    TNode(TNode&&) = default;
    TNode& operator=(TNode&&) = default;

    bool is_leaf() const { return desc1 == nullptr; }

    // Drops mutations on the branches of the subtree of this node, and gives every node its sequence:
    // its ancestor's, with the mutations of its branch; at the root (no ancestor) random nucleotides,
    // or 0 for the other types.
    //   mu         as in MutationModel
    //   seed       a dummy, see ran3
    //   num_mut    mutations on the branch above this node; those of the other branches are Poisson
    //              deviates of mean mu times their length, in single precision
    //   num_sites  below 1: nothing is done, the result is 0
    //   the rest   as in MutationModel; with |gamma_a| of 1e-07 or more mut_rates must stand
    // Writes:   sequence, num_sites and num_mutations of all nodes, hits, _tot_mut
    // Returns:  mutations in all, those of this node's branch included
    // Draws:    in pre-order, desc1 before desc2: at the root one a site for nucleotides; for each
    //           mutation 1 for the site, and
    //             stepwise     those of geometric if step_geom is above 0, then 1 for the sign, unless
    //                          bounded and at a bound: below 0.5 it is minus
    //             nucleotides  1, and another one for a transversion
    //           and, before a node is entered, those of poidev
    //           Sites of different rates are counted from the last one down: the site is the first at
    //           which the sum of rates exceeds the number drawn; site 0 if it never does.
    // Cost:     O(nodes x num_sites + mutations); an explicit stack, no recursion
    long add_mutations(double const& mu, long* seed, int const& num_mut, int const& num_sites,
                       Mut_Type const& type, double const& gamma_a, double const& ts_rate,
                       int const& bounded = 0, double step_geom = 0.0);

    // Gives one site of the whole subtree the states of a single mutation: derived_state at mut_node
    // and below, base_state elsewhere, and sets their mutation_mask. To be called at the root.
    //   site       from 0; the sequences grow to hold it
    //   mut_node   below the mutation, see TTree::getRootNodeForMutation; null: no mutation
    // Writes:   num_mutations of mut_node, hits[site] if there is such an entry, _tot_mut
    // Draws:    none
    void new_Add_SNP_Mutation(int const& site, TNode*& mut_node, int base_state, int derived_state);

    // Leaves below this node; 1 for a leaf.
    int count_desc() const;
    // Mean and variance, over all pairs of leaves below this node, of the time that divides them,
    // which is twice the age of their common ancestor. Both 0 for a leaf.
    void compute_moments_of_pairwise_divergence(double& mean, double& variance) const;
    DescendantLists build_lists_of_descendent_nodes() const;

    // Age, branch length, mutations and group of this node in one line.
    void print_info(std::ostream& out) const;
};

// The states as text: binary sites "0" and "1" (any state but 1 is "0"), nucleotides "A", "G", "C",
// "T" (any other state is "A"), without separator; the other types as decimal numbers with a blank
// between them.
std::string sequence_text(const myVectInt& sequence, Mut_Type type);

}  // namespace mnd
