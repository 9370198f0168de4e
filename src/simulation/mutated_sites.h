// Statistics of simulated samples straight from their mutations, without making the sequences.
//
// A replicate of a test of neutrality or of an expansion needs a few numbers of its sample. Every
// mutation changes one site in the leaves below its branch, which stand together when the leaves are
// taken in pre-order; so the list of mutations is all that has to be kept.
//
// What is guaranteed: from the same place of the random stream, `sprinkle` draws the same numbers in
// the same order as dropping mutations with TNode::add_mutations (PopGenetics::sprinkle_mutations),
// leaves the same hits, rates, counters and warnings behind, and gives every leaf the same state at
// every site. All statistics are whole numbers and equal those of the sequences. Only TNode::sequence
// is not written.
#pragma once

#include <cstdint>
#include <vector>

#include "simulation/mutation_model.h"

namespace mnd {

class MutationProcess;
class TNode;
class TTree;

class MutatedSites {
public:
    // Leaves that have a state at a site.
    struct StateCount {
        int state;
        int leaves;  // 1 or more
    };

    // Drops mutations on a tree that was built, see PopGenetics::sprinkle_mutations, and counts sites
    // and pairs. Any builder of trees will do.
    // Returns:  mutations in all; 0 after warning 177, then without draws and with no mutated site, as
    //           when no tree was built
    // Cost:     O(leaves + mutations), and O(leaves) for a site hit more than once; in all O(sites) when
    //           their states or rates are drawn. Allocates nothing once the sizes are known
    long sprinkle(TTree& tree, const MutationModel& model);

    // --- Counted by sprinkle ---

    int num_leaves() const { return num_leaves_; }
    long num_mutations() const { return num_mutations_; }
    // Sites at which not all leaves have the same state.
    int num_segregating_sites() const { return static_cast<int>(sites_.size()); }
    // Over all pairs of leaves, the sites that differ; the mean number of pairwise differences is this
    // over n (n - 1) / 2.
    std::int64_t pair_differences() const { return pair_differences_; }
    // The part of them that are transitions (nucleotides 0 and 1, or 2 and 3), and the other part.
    // For other types than nucleotides all are of the other part.
    std::int64_t pair_transitions() const { return pair_transitions_; }
    std::int64_t pair_transversions() const { return pair_differences_ - pair_transitions_; }

    // The i-th segregating site, in order of the first mutation: its number in the sequence, and its
    // states: the one of the root first if a leaf has it, the others in order of their mutations.
    int site_number(int i) const { return sites_[static_cast<std::size_t>(i)].site; }
    int num_states(int i) const { return sites_[static_cast<std::size_t>(i)].num_states; }
    const StateCount* states(int i) const {
        return states_.data() + sites_[static_cast<std::size_t>(i)].first_state;
    }

    // --- Counted on request ---

    // Leaves of each distinct sequence, in the order in which the sequences are first met among the
    // leaves 0 to n - 1. A view until the next sprinkle.
    // Cost:     O(segregating sites x leaves) the first time
    const std::vector<int>& haplotype_counts();
    int num_haplotypes() { return static_cast<int>(haplotype_counts().size()); }

    // Pairs of leaves by the number of sites at which they differ.
    //   pairs    resized to num_segregating_sites() + 1, without loss of its storage
    // Cost:     O(leaves^2 x segregating sites / 64)
    void count_pair_differences(std::vector<std::int64_t>& pairs);

    // State of a leaf (0 to n - 1, the number of its node) at a site of the sequence.
    // Cost:     O(mutations of that site); for tests and printing
    int state(int leaf, int site) const;

private:
    static constexpr int kNone = -1;

    // A mutation: the leaves at the places first to end - 1 of pre-order get the state.
    struct Event {
        int first;
        int end;
        int state;
        int enclosing;  // the event of the site that gave the branch its state before, or kNone
        int previous;   // the event of the site before this one, or kNone
    };
    struct Segregating {
        int site;
        int num_states;
        int first_state;  // index in states_
        int last_event;
        int num_events;
        int num_codes;  // the states that fill_column numbers
    };

    void start(const TTree& tree, const MutationModel& model);
    void drop_mutations(TTree& tree, const MutationModel& model);
    void mutate(const MutationProcess& process, int first, int end);
    int root_state(int site) const;

    void count_site(int site);
    void count_single(int site, int last);
    void count_multiple(int site, int last);
    int code_of(int state);
    int fill_column(int site, int last);

    void split_classes(int first, int end);
    void split_by_column(int num_codes);
    void compact_classes();
    void count_classes();

    void build_planes();
    void set_plane_bits(const Segregating& s, int bits, int shift);

    int num_leaves_ = 0;
    int num_sites_ = 0;
    bool nucleotides_ = false;
    bool always_new_ = false;  // no two mutations of a site give the same state
    long num_mutations_ = 0;
    std::int64_t pair_differences_ = 0;
    std::int64_t pair_transitions_ = 0;
    std::vector<Segregating> sites_;  // in order of the first mutation
    std::vector<StateCount> states_;

    std::vector<Event> events_;       // in the order of their draws
    std::vector<int> last_event_;     // per site, or kNone
    std::vector<int> mutated_;        // sites in order of the first mutation
    std::vector<double> root_draws_;  // per site, the number that makes the nucleotide of the root
    std::vector<int> leaf_at_;        // leaf at each place of pre-order
    std::vector<int> place_of_;       // place of each leaf

    bool haplotypes_counted_ = false;
    int num_classes_ = 0;
    std::vector<int> class_of_;  // per place, its class among the sequences told apart so far
    std::vector<int> haplotype_counts_;

    // Working storage, kept between replicates.
    std::vector<int> below_;     // per node, leaves below it
    std::vector<TNode*> stack_;  // not owned: nodes still to be visited
    std::vector<int> column_;    // per place, code of the state at the site at hand
    std::vector<int> values_;    // the state of each code
    std::vector<int> code_counts_;
    std::vector<int> chain_;
    std::vector<int> renamed_;
    std::vector<int> order_;
    std::vector<int> row_;
    std::vector<std::uint64_t> planes_;
    std::vector<int> plane_bits_;  // per block
};

}  // namespace mnd
