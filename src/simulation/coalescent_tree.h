// Genealogies of samples, simulated backward in time (the coalescent).
//
// One flat array of nodes serves all replicates of a sample: the leaves first, then the internal
// nodes in the order of coalescence, the root last. Building a tree overwrites ages and links.
//
// Sources: Kingman 1982, J. Appl. Prob. 19A:27-43; Hudson 1990, Oxford Surv. Evol. Biol. 7:1-44;
// Excoffier 2004, Mol. Ecol. 13:853-864 (spatial expansion); Slatkin and Voelm 1991, Genetics
// 127:627-629 (hierarchical islands)
#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

#include "foundation/arrays.h"
#include "simulation/tree_node.h"

namespace mnd {

class Population;
class Samples;
class Structure;

// How demes lie to each other; any other value has no demes.
enum migrationModel : int {
    kIslandMigration = 0,        // as many demes as given
    kSteppingStoneMigration = 1  // a square grid: the square of the number given
};

// Size of every deme, in gene copies.
inline constexpr double kDemeSize = 1000.0;

// The lineages that are still alive while a tree is built.
struct TListNode {
    int size = 0;
    std::vector<TNode*> list;  // not owned entries, of which the first `size` are alive

    // Room for n lineages, and none of them alive. Never shrinks.
    void allocate_list(int n);
};

// Leaves that a sample has in a tree: its gene copies as a whole number, 0 for a size below 1 or none.
// A size beyond a quarter of what an int holds counts as that quarter.
int leaves_of(const Population& sample);

class TTree {
public:
    int sample_size = 0;          // n leaves
    std::vector<TNode> nodes;     // owned: 2 n - 1 or more; see root()
    double migration_rate = 0.0;  // per lineage and generation
    double num_demes = 0.0;
    int no_migration = 0;  // not 0: sendMigrant does nothing; cleared by createInitialNodes
    double deme_size = kDemeSize;
    std::vector<std::int32_t> deme_lineages;  // lineages in each deme
    std::vector<std::int32_t> occupied;       // demes with lineages, the first num_occupied
    int num_occupied = 0;
    std::vector<MY_TIArrayAsVector<TNode>> deme_nodes;  // lineages of each deme, not owned
    int lineages = 0;                                   // alive
    double total_coal_rate = 0.0;                       // sum of k (k - 1) / 2 over demes
    double total_mig_rate = 0.0;                        // lineages migration_rate deme_size
    std::vector<double> deme_coal_rate;
    std::vector<std::int32_t> group_lineages;  // lineages in each group of demes
    int num_groups = 0;
    int demes_per_group = 0;
    std::vector<std::vector<std::int32_t>> group_demes;  // the demes of each group

    // Which leaves are those of a sample, in the models with demes.
    struct LeafBlock {
        const Population* sample;  // not owned
        int first;                 // its first leaf
        int count;                 // its gene copies
    };
    std::vector<LeafBlock> leaf_blocks;
    std::vector<int> leaf_freq;  // per leaf, written by compute_hapl_freq

    // Candidates for the mutation of getRootNodeForMutation; cleared between trees.
    static MY_TIArrayAsVector<TNode> matchingNodes;  // not owned entries
    static MY_TArrayAsVector<double> nodeWeights;    // lengths of their branches

    TTree() = default;
    explicit TTree(int n) { allocate_tree(n); }

    // Makes room for n leaves and starts a new series of replicates: TNode::hits and TNode::mut_rates
    // are emptied, so that what another analysis simulated has no effect on this one. To be called
    // once per analysis, not per replicate. n below 1 gives an empty tree.
    void allocate_tree(int const& n);
    // The same room without a new series; grows only. Leaves get age 0 and no links, and the root none.
    void set_sample_size(int n);

    // The last node, or null in an empty tree.
    TNode* root() {
        return sample_size < 1 ? nullptr : &nodes[static_cast<std::size_t>(2 * sample_size - 2)];
    }
    const TNode* root() const {
        return sample_size < 1 ? nullptr : &nodes[static_cast<std::size_t>(2 * sample_size - 2)];
    }

    // Whether a tree stands: no other has mutations. One that is allocated, or failed, does not.
    bool is_built() const { return sample_size == 1 || (sample_size > 1 && root()->desc1 != nullptr); }

    // --- One population (coalescent_tree.cpp) ---

    // Kingman's coalescent; the waiting time of k lineages has mean 2 / (k (k - 1)).
    // Draws:    n - 1 for the times, then 2 for each node
    // Returns:  1
    int build_tree();
    // Spatial range expansion: before time T each of k lineages of the deme coalesces, at rate
    // (k - 1) / 2, or leaves, at rate D; those that left coalesce with the rest from T on.
    //   T    0, below 0 or not a number: no expansion
    //   D    below 0: taken as 0
    // Draws:    from T on 3 for each coalescence; before T 1 for each time, then, if it is below T, 1
    //           for the kind of event, and 1 for the lineage that leaves or 2 for a coalescence
    // Returns:  1
    int build_tree_range_exp(double const& T, double const& D);
    // Ages beyond t become (age - t) scale + t: a change of size at t.
    void bottleneck(double t, double scale);
    // Multiplies the ages of the internal nodes by g.
    void scale_to_num_generations(long const& g);

    // --- Islands (island_trees.cpp) ---
    //
    // Time is in units of deme_size generations. In all forms 0 stands for a failed replicate: no tree.

    // Finite island model, whose migration rate gives
    //   F = (T_between - T_within) / T_between
    // for the mean coalescence times of two gene copies; m = (D - 1)(1 / F - 1) / (2 deme_size D).
    //   mu         no effect
    //   num_demes  0: refused, as is F = 0, with a line in the log. Fewer than the samples: raised
    // Returns:  0 also for a rate that is below 0 or no number, and when lineages are left in several
    //           demes without migration (F = 1)
    // Draws:    1 per sample; then per event 2, and 1 for the lineage that migrates and 1 for each try
    //           of its destination, or 3 for a coalescence
    int build_tree_struct_pop(Samples& samples, double const& mu, double const& F, int num_demes);
    // Hierarchical island model: demes within groups. Migration within groups m1 and between them m2
    // follow from F_sc = 1 - (1 - F_st) / (1 - F_ct) and F_ct.
    // Returns:  0 when m1 or m2 is not between 0 and 1
    // Draws:    those of createInitialNodes; then per event 2, and those of sendMigrant2Levels or 3
    int build_tree_struct_pop(Samples& samples, Structure const& structure, double const& mu,
                              double const& F_st, double const& F_ct, int demes_per_group, int num_groups);

    // Empty demes: as many as the model makes of the number.
    void createDemes(migrationModel model, int const& number);
    // Empty demes in groups: groups times demes_per_group of them, numbered group by group. The model
    // makes of `per_group` the demes of a group.
    void createDemes(migrationModel model, int per_group, int groups);
    // Releases all demes.
    void cleanDemes();

    // Puts the gene copies of each sample, in order, into a deme of its own, drawn from the free ones.
    // Makes the demes that are missing.
    // Writes:   leaves, leaf_blocks, occupied demes, rates (not total_mig_rate), lineages
    // Draws:    1 per sample
    // Throws:   std::bad_alloc for more gene copies than half of what an int holds
    void createInitialNodes(Samples& samples);
    // The same for the samples of a structure, group by group. Groups and demes are raised to what
    // the structure needs.
    // Draws:    per group 1 for its place, without replacement, and 1 for each of its samples
    void createInitialNodes(Structure const& structure, int per_group, int groups);

    // Coalescence of two lineages of one deme at time t. Nothing happens if no deme has two.
    // Draws:    3: deme, first and second lineage
    void coalesceWithinAPop(double const& t);
    // Moves a lineage to another deme, each as probable. Nothing is drawn and nothing happens when
    // no_migration is set, without lineages, or with fewer than two demes.
    // Draws:    1 for the lineage, and 1 for each try of the destination
    void sendMigrant();
    // Moves a lineage to another deme of its group, in proportion to m1, or to another group, m2.
    // Kept on purpose: a migrant between groups always enters the first deme of the group.
    // Test: HierarchicalIslands.AMigrantBetweenGroupsEntersTheFirstDeme
    // Draws:    1 for the kind, 1 for the lineage, 1 for each try of the destination, and between
    //           groups 1 more without effect. Nothing is drawn when there is nowhere to go.
    void sendMigrant2Levels(double m1, double m2, int per_group, int groups);

    // --- What a tree holds (tree_statistics.cpp) ---

    // Leaves below each node of a tree that was built, by the number of the node; 1 at a leaf.
    //   below    resized to the number of nodes, without loss of its storage
    void count_leaves(std::vector<int>& below) const;
    // Sum of the lengths of all branches; 0 when no tree was built.
    double total_length() const;
    // Mean and variance of the age of the common ancestor over all pairs of leaves; both 0 without pairs
    // and when no tree was built.
    struct Moments {
        double mean = 0.0;
        double variance = 0.0;
    };
    Moments compute_moments_of_coalescence_times() const;
    // Marks the first leaf of each distinct sequence: leaf_freq is the number of leaves with that
    // sequence there, and 0 at the other leaves. A leaf without a sequence has -1.
    // Cost:     O(leaves x sites), hashed
    void compute_hapl_freq();

    // Draws the node above which the single mutation of a site falls, by the lengths of the branches.
    //   site     no effect: all sites of a tree have the same candidates
    //   min_daf  the mutation is in this proportion of the leaves or more, in one at least
    // Returns:  null when no branch will do
    // Draws:    1, or none without candidates
    TNode* getRootNodeForMutation(int site, double const& min_daf);
    // Appends the nodes below top that have `least` leaves or more below them, in pre-order, with the
    // lengths of their branches, which are added to total. Top itself has no branch.
    static void getListofMatchingNodesNoRec(TNode* top, MY_TIArrayAsVector<TNode>& matching,
                                            MY_TArrayAsVector<double>& weights, double& total, int least);

    // One line per node in order of number: number, numbers of descendants, and print_info.
    void print_nodes(std::ostream& out) const;
    // One line per leaf: its number, a tab and its sequence as text.
    void print_sequences(std::ostream& out, Mut_Type const& type) const;

private:
    // Working lists, kept between replicates.
    TListNode active_;
    TListNode parked_;
    std::vector<std::int32_t> free_demes_;  // without a sample
    std::vector<std::int32_t> free_groups_;

    TNode* node(int i) { return &nodes[static_cast<std::size_t>(i)]; }
    const TNode* node(int i) const { return &nodes[static_cast<std::size_t>(i)]; }
    void start_replicate();
    void list_leaves();
    static void link(TNode* parent, TNode* child, TNode* TNode::*side);
    static void join_lineages(TNode** alive, int k, TNode* parent);
    static void coalesce(TListNode& list, TNode* parent);

    void start_demes(int number);
    void empty_demes();
    void make_group_demes(int per_group, int groups);
    void start_islands();
    void take_gene_copies(int number);
    void place_sample(const Population& sample, int deme, int group, int& leaf);
    template <class Migrate>
    int run_islands(Migrate migrate);
    int locate_lineage(int place, int& slot) const;
    TNode* take_lineage(int place_in_occupied, int slot);
    void put_lineage(TNode* lineage, int deme);
    void set_coal_rate(int deme);
    void update_mig_rate();
    int coalescing_deme(double u) const;
};

// Drops mutations on a tree: prepares the sites and calls TNode::add_mutations on the root; see
// PopGenetics::sprinkle_mutations (sample_simulation.cpp).
// Returns: mutations in all; 0 after warning 177, or without draws when no tree was built
long drop_mutations(TTree& tree, const MutationModel& model);

// A genealogy that is printed.
class TGenealogy : public TTree {
public:
    // Simulates a genealogy of n gene copies with a change of size, drops mutations on it, and writes
    // nodes, age of the root, total length, number of mutations and sequences.
    //   T, scale   see bottleneck; times are in coalescent units
    //   theta      mutations are dropped at theta / 2
    //   model      of mutation; its mu is not used
    // Returns:  mutations in all
    long build_genealogy(std::ostream& out, int n, double T, double scale, double theta,
                         const MutationModel& model);
};

}  // namespace mnd
