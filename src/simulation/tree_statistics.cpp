// What a genealogy holds: lengths, moments, distinct sequences, candidates for a mutation.
#include <algorithm>
#include <cmath>
#include <iomanip>
#include <ostream>
#include <string_view>
#include <unordered_map>

#include "foundation/format_guard.h"
#include "foundation/random.h"
#include "simulation/coalescent_tree.h"

namespace mnd {
namespace {

std::string_view bytes_of(const myVectInt& sequence) {
    return {reinterpret_cast<const char*>(sequence.data()), sequence.size() * sizeof(int)};
}

}  // namespace

// Descendants have lower numbers than their ancestors.
void TTree::count_leaves(std::vector<int>& below) const {
    const auto n = static_cast<std::size_t>(sample_size);
    const TNode* const first = nodes.data();
    below.assign(n == 0 ? 0 : 2 * n - 1, 1);
    for (std::size_t i = n; i < below.size(); ++i) {
        below[i] = below[static_cast<std::size_t>(first[i].desc1 - first)] +
                   below[static_cast<std::size_t>(first[i].desc2 - first)];
    }
}

double TTree::total_length() const {
    if (!is_built()) return 0.0;
    double length = 0.0;
    for (int i = 0; i < 2 * sample_size - 2; ++i)
        length += node(i)->ancestor->time - node(i)->time;
    return length;
}

TTree::Moments TTree::compute_moments_of_coalescence_times() const {
    if (!is_built()) return {};
    std::vector<int> below;
    count_leaves(below);
    const auto below_node = [&](const TNode* n) {
        return static_cast<double>(below[static_cast<std::size_t>(n - nodes.data())]);
    };
    double pairs = 0.0;
    double sum = 0.0;
    double sum_sq = 0.0;
    for (int i = sample_size; i < 2 * sample_size - 1; ++i) {
        const double meeting = below_node(node(i)->desc1) * below_node(node(i)->desc2);
        const double t = node(i)->time;
        pairs += meeting;
        sum += meeting * t;
        sum_sq += meeting * t * t;
    }
    if (pairs == 0.0) return {};
    const double mean = sum / pairs;
    return {mean, std::max(0.0, sum_sq / pairs - mean * mean)};
}

void TTree::compute_hapl_freq() {
    leaf_freq.assign(static_cast<std::size_t>(sample_size), 0);
    std::unordered_map<std::string_view, std::size_t> first_with;
    first_with.reserve(leaf_freq.size());
    for (std::size_t i = 0; i < leaf_freq.size(); ++i) {
        const myVectInt* sequence = nodes[i].sequence.get();
        if (sequence == nullptr) {
            leaf_freq[i] = -1;
            continue;
        }
        const auto [found, is_new] = first_with.try_emplace(bytes_of(*sequence), i);
        ++leaf_freq[found->second];
    }
}

void TTree::getListofMatchingNodesNoRec(TNode* top, MY_TIArrayAsVector<TNode>& matching,
                                        MY_TArrayAsVector<double>& weights, double& total, int least) {
    if (top == nullptr) return;
    const DescendantLists lists = top->build_lists_of_descendent_nodes();
    for (std::size_t i = 1; i < lists.nodes.size(); ++i) {
        if (lists.nodes[i].count < least) continue;
        TNode* candidate = const_cast<TNode*>(lists.nodes[i].node);
        const double length = candidate->ancestor->time - candidate->time;
        matching.Add(candidate);
        weights.Add(length);
        total += length;
    }
}

TNode* TTree::getRootNodeForMutation(int, double const& min_daf) {
    double total = 0.0;
    if (matchingNodes.count == 0) {
        nodeWeights.Flush();
        const double share = min_daf > 0.0 ? std::min(min_daf, 1.0) : 0.0;
        const int least = static_cast<int>(std::ceil(share * sample_size));
        getListofMatchingNodesNoRec(root(), matchingNodes, nodeWeights, total, least);
    } else {
        for (const double weight : nodeWeights)
            total += weight;
    }
    if (matchingNodes.count == 0) return nullptr;
    const double u = ran3() * total;
    double sum = 0.0;
    for (std::int64_t i = 0; i < matchingNodes.count; ++i) {
        sum += nodeWeights[i];
        if (sum > u) return matchingNodes.at_const(i);
    }
    return matchingNodes.at_const(matchingNodes.count - 1);
}

void TTree::print_nodes(std::ostream& out) const {
    const FormatGuard guard(out);
    const auto number = [this](const TNode* n) {
        return n == nullptr ? -1 : static_cast<int>(n - nodes.data());
    };
    for (int i = 0; i < 2 * sample_size - 1; ++i) {
        out << std::right << std::setw(6) << i << std::setw(6) << number(node(i)->desc1) << std::setw(6)
            << number(node(i)->desc2);
        node(i)->print_info(out);
    }
}

void TTree::print_sequences(std::ostream& out, Mut_Type const& type) const {
    for (int i = 0; i < sample_size; ++i) {
        out << i << '\t';
        if (node(i)->sequence != nullptr) out << sequence_text(*node(i)->sequence, type);
        out << '\n';
    }
}

long TGenealogy::build_genealogy(std::ostream& out, int n, double T, double scale, double theta,
                                 const MutationModel& model) {
    allocate_tree(n);
    if (root() == nullptr) return 0;
    build_tree();
    bottleneck(T, scale);
    MutationModel in_tree = model;
    in_tree.mu = theta / 2.0;
    const long mutations = drop_mutations(*this, in_tree);
    const FormatGuard guard(out);
    print_nodes(out);
    out << std::fixed << std::setprecision(5) << "Age of the root     : " << root()->time
        << "\nTotal length        : " << total_length() << "\nNumber of mutations : " << mutations << '\n';
    print_sequences(out, in_tree.type);
    return mutations;
}

}  // namespace mnd
