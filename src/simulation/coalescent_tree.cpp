#include "simulation/coalescent_tree.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "foundation/random.h"
#include "model/population.h"
#include "simulation/random_index.h"

namespace mnd {
namespace {

// What a sample may have at the most: four of them are still numbered by an int.
constexpr int kMaxGeneCopies = INT_MAX / 4;

// Waiting time at a rate of 1. Draws: 1
double exponential() {
    return -std::log(1.0 - ran3());
}

double pairs_of(int k) {
    return static_cast<double>(k) * (k - 1.0) / 2.0;
}

}  // namespace

int leaves_of(const Population& sample) {
    if (!(sample.sample_size >= 1.0)) return 0;
    return static_cast<int>(std::min<double>(sample.sample_size, kMaxGeneCopies));
}

MY_TIArrayAsVector<TNode> TTree::matchingNodes = [] {
    MY_TIArrayAsVector<TNode> none;
    none.owns_elements = 0;
    return none;
}();
MY_TArrayAsVector<double> TTree::nodeWeights;

void TListNode::allocate_list(int n) {
    size = 0;
    const auto needed = static_cast<std::size_t>(std::max(n, 0));
    if (list.size() < needed) list.resize(needed, nullptr);
}

void TTree::allocate_tree(int const& n) {
    TNode::hits.clear();
    TNode::mut_rates = GammaRates();
    set_sample_size(n);
}

void TTree::set_sample_size(int n) {
    sample_size = std::max(n, 0);
    const auto needed = sample_size == 0 ? 0 : 2 * static_cast<std::size_t>(sample_size) - 1;
    if (nodes.size() < needed) nodes.resize(needed);
    for (int i = 0; i < sample_size; ++i) {
        TNode& leaf = *node(i);
        leaf.time = 0.0;
        leaf.desc1 = leaf.desc2 = leaf.ancestor = nullptr;
    }
    if (TNode* top = root()) top->desc1 = top->desc2 = top->ancestor = nullptr;
}

// Forgets the tree before; the list of the active lineages holds all leaves.
void TTree::start_replicate() {
    matchingNodes.Flush();
    nodeWeights.Flush();
    set_sample_size(sample_size);
    active_.allocate_list(sample_size);
    parked_.allocate_list(sample_size);
}

void TTree::list_leaves() {
    for (int i = 0; i < sample_size; ++i)
        active_.list[static_cast<std::size_t>(i)] = node(i);
    active_.size = sample_size;
}

void TTree::link(TNode* parent, TNode* child, TNode* TNode::*side) {
    parent->*side = child;
    child->ancestor = parent;
}

// Two random lineages of the k that are alive become the descendants of parent, which takes the place
// of the second; the last lineage takes that of the first.
void TTree::join_lineages(TNode** alive, int k, TNode* parent) {
    TNode*& first = alive[random_index(k)];
    link(parent, first, &TNode::desc1);
    first = alive[k - 1];
    TNode*& second = alive[random_index(k - 1)];
    link(parent, second, &TNode::desc2);
    second = parent;
    parent->ancestor = nullptr;
    ++TNode::node_count;
}

void TTree::coalesce(TListNode& list, TNode* parent) {
    join_lineages(list.list.data(), list.size, parent);
    --list.size;
}

int TTree::build_tree() {
    start_replicate();
    const int n = sample_size;
    double t = 0.0;
    for (int k = n; k >= 2; --k) {
        t += 2.0 * exponential() / (static_cast<double>(k) * (k - 1.0));
        node(2 * n - k)->time = t;
    }
    list_leaves();
    for (int k = n; k >= 2; --k)
        coalesce(active_, node(2 * n - k));
    return 1;
}

// t >= T is written as !(t < T), and the rates are kept from being below 0, so that times and rates
// that are no numbers end in coalescences.
int TTree::build_tree_range_exp(double const& T, double const& D) {
    start_replicate();
    list_leaves();
    const double leaving = D > 0.0 ? D : 0.0;
    double t = 0.0;
    int next = sample_size;
    while (active_.size + parked_.size >= 2) {
        const int k = active_.size;
        if (!(t < T) && k >= 2) {
            t += exponential() / pairs_of(k);
            node(next)->time = t;
            coalesce(active_, node(next++));
            continue;
        }
        if (k == 0) {
            t = T;
        } else {
            t += exponential() / (k * ((k - 1.0) / 2.0 + leaving));
        }
        if (!(t < T)) {
            for (int i = 0; i < parked_.size; ++i)
                active_.list[static_cast<std::size_t>(active_.size++)] =
                    parked_.list[static_cast<std::size_t>(i)];
            parked_.size = 0;
            t = T;
            continue;
        }
        const bool leaves = ran3() < 2.0 * leaving / (k - 1.0 + 2.0 * leaving);
        if (leaves || k < 2) {
            TNode*& lineage = active_.list[static_cast<std::size_t>(random_index(k))];
            parked_.list[static_cast<std::size_t>(parked_.size++)] = lineage;
            lineage = active_.list[static_cast<std::size_t>(--active_.size)];
        } else {
            node(next)->time = t;
            coalesce(active_, node(next++));
        }
    }
    return 1;
}

void TTree::bottleneck(double t, double scale) {
    for (int i = sample_size; i < 2 * sample_size - 1; ++i) {
        double& age = node(i)->time;
        if (age > t) age = (age - t) * scale + t;
    }
}

void TTree::scale_to_num_generations(long const& g) {
    for (int i = sample_size; i < 2 * sample_size - 1; ++i)
        node(i)->time *= static_cast<double>(g);
}

}  // namespace mnd
