#include "simulation/tree_node.h"

#include <iomanip>
#include <ostream>

#include "foundation/format_guard.h"
#include "simulation/mutation_process.h"

namespace mnd {
namespace {

constexpr int kDefaultMaxRepeats = 1000;

// Nodes still to be visited; kept between trees, so that no replicate allocates.
std::vector<TNode*> pending;

// Calls visit(node) for the nodes of a subtree in pre-order, desc1 before desc2.
template <class Node, class Visit>
void visit_in_preorder(Node* top, Visit visit) {
    std::vector<Node*> stack{top};
    while (!stack.empty()) {
        Node* node = stack.back();
        stack.pop_back();
        visit(*node);
        if (node->is_leaf()) continue;
        stack.push_back(node->desc2);
        stack.push_back(node->desc1);
    }
}

// The sequence of a node before the mutations of its branch.
void start_sequence(TNode& node, int num_sites, const MutationProcess& process) {
    node.num_sites = num_sites;
    if (node.sequence == nullptr) node.sequence = std::make_unique<myVectInt>();
    if (node.ancestor != nullptr && node.ancestor->sequence != nullptr) {
        *node.sequence = *node.ancestor->sequence;
        node.sequence->resize(static_cast<std::size_t>(num_sites), 0);
        return;
    }
    node.sequence->resize(static_cast<std::size_t>(num_sites));
    for (int& state : *node.sequence)
        state = process.root_state();
}

void mutate(TNode& node, int num_mut, const MutationProcess& process) {
    node.num_mutations = num_mut;
    myVectInt& sequence = *node.sequence;
    for (int i = 0; i < num_mut; ++i) {
        const auto site = static_cast<std::size_t>(process.draw_site());
        const long hits = ++TNode::hits[site];
        sequence[site] = process.new_state(sequence[site], hits);
    }
    TNode::_tot_mut += num_mut;
}

std::size_t room_for(int site) {
    return static_cast<std::size_t>(site) + 1;
}

void set_snp_state(TNode& node, int site, int state, bool carries) {
    if (node.sequence == nullptr) node.sequence = std::make_unique<myVectInt>();
    if (node.sequence->size() < room_for(site)) node.sequence->resize(room_for(site), 0);
    if (node.mutation_mask.size() < node.sequence->size())
        node.mutation_mask.resize(node.sequence->size(), 0);
    node.num_sites = static_cast<int>(node.sequence->size());
    (*node.sequence)[static_cast<std::size_t>(site)] = state;
    node.mutation_mask[static_cast<std::size_t>(site)] = carries ? 1 : 0;
}

}  // namespace

long TNode::node_count = 0;
long TNode::_tot_mut = 0;
std::vector<long> TNode::hits;
GammaRates TNode::mut_rates;
int TNode::min_mic = 0;
int TNode::max_mic = kDefaultMaxRepeats;

long TNode::add_mutations(double const& mu, long* seed, int const& num_mut, int const& sites,
                          Mut_Type const& type, double const& gamma_a, double const& ts_rate,
                          int const& bounded, double step_geom) {
    if (sites < 1) return 0;
    const MutationProcess process({.mu = mu,
                                   .sites = sites,
                                   .type = type,
                                   .gamma_a = gamma_a,
                                   .ts_rate = ts_rate,
                                   .bounded = bounded,
                                   .step_geom = step_geom});
    const long before = _tot_mut;
    pending.assign(1, this);
    while (!pending.empty()) {
        TNode& node = *pending.back();
        pending.pop_back();
        const int number =
            &node == this ? num_mut : mutations_on_branch(mu, node.ancestor->time - node.time, seed);
        start_sequence(node, sites, process);
        mutate(node, number, process);
        if (node.is_leaf()) continue;
        pending.push_back(node.desc2);
        pending.push_back(node.desc1);
    }
    return _tot_mut - before;
}

void TNode::new_Add_SNP_Mutation(int const& site, TNode*& mut_node, int base_state, int derived_state) {
    if (site < 0) return;
    visit_in_preorder(this, [&](TNode& node) { set_snp_state(node, site, base_state, false); });
    if (mut_node == nullptr) return;
    visit_in_preorder(mut_node, [&](TNode& node) { set_snp_state(node, site, derived_state, true); });
    ++mut_node->num_mutations;
    if (static_cast<std::size_t>(site) < hits.size()) ++hits[static_cast<std::size_t>(site)];
    ++_tot_mut;
}

int TNode::count_desc() const {
    int leaves = 0;
    visit_in_preorder(this, [&leaves](const TNode& node) { leaves += node.is_leaf() ? 1 : 0; });
    return leaves;
}

DescendantLists TNode::build_lists_of_descendent_nodes() const {
    DescendantLists lists;
    std::vector<std::size_t> open;  // nodes on the way down to the node at hand
    const auto leave_until = [&](const TNode* parent) {
        while (!open.empty() && lists.nodes[open.back()].node != parent) {
            DescendantLists::Below& left = lists.nodes[open.back()];
            left.count = static_cast<int>(lists.leaves.size()) - left.first;
            open.pop_back();
        }
    };
    visit_in_preorder(this, [&](const TNode& node) {
        leave_until(node.ancestor);
        open.push_back(lists.nodes.size());
        lists.nodes.push_back({&node, static_cast<int>(lists.leaves.size()), 0});
        if (node.is_leaf()) lists.leaves.push_back(&node);
    });
    leave_until(nullptr);
    return lists;
}

void TNode::compute_moments_of_pairwise_divergence(double& mean, double& variance) const {
    double pairs = 0.0;
    double sum = 0.0;
    double sum_sq = 0.0;
    const DescendantLists lists = build_lists_of_descendent_nodes();
    for (std::size_t i = 0; i < lists.nodes.size(); ++i) {
        const DescendantLists::Below& below = lists.nodes[i];
        if (below.node->is_leaf()) continue;
        const double left = lists.nodes[i + 1].count;  // the next node in pre-order is desc1
        const double divided = left * (below.count - left);
        const double divergence = 2.0 * below.node->time;
        pairs += divided;
        sum += divided * divergence;
        sum_sq += divided * divergence * divergence;
    }
    mean = pairs > 0.0 ? sum / pairs : 0.0;
    variance = pairs > 0.0 ? std::max(0.0, sum_sq / pairs - mean * mean) : 0.0;
}

void TNode::print_info(std::ostream& out) const {
    const FormatGuard guard(out);
    const double length = ancestor == nullptr ? 0.0 : ancestor->time - time;
    out << std::fixed << std::setprecision(5) << std::right << std::setw(14) << time << std::setw(14)
        << length << std::setw(8) << num_mutations << std::setw(6) << deme << '\n';
}

std::string sequence_text(const myVectInt& sequence, Mut_Type type) {
    constexpr char kNucleotides[] = "AGCT";
    std::string text;
    for (const int state : sequence) {
        if (type == kBinaryMutation) {
            text += state == 1 ? '1' : '0';
        } else if (type == kNucleotideMutation) {
            text += state >= 0 && state < 4 ? kNucleotides[state] : 'A';
        } else {
            if (!text.empty()) text += ' ';
            text += std::to_string(state);
        }
    }
    return text;
}

}  // namespace mnd
