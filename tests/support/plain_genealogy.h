// A second, plain way to simulate genealogies and mutations, to compare with: lists that are erased
// from, recursion, and whole sequences, with nothing kept between replicates.
#pragma once

#include <cmath>
#include <functional>
#include <vector>

#include "foundation/random.h"
#include "simulation/coalescent_tree.h"

namespace mnd_test {

struct PlainNode {
    double time = 0.0;
    int left = -1;
    int right = -1;
    int parent = -1;
    std::vector<int> sequence;
};

using PlainTree = std::vector<PlainNode>;

// Two random lineages of a list meet: the last one takes the place of the first, the new node that of
// the second.
inline void plain_meet(PlainTree& tree, std::vector<int>& list, int parent) {
    const int k = static_cast<int>(list.size());
    const auto a = static_cast<std::size_t>(k * mnd::ran3());
    const int left = list[a];
    list[a] = list.back();
    list.pop_back();
    const auto b = static_cast<std::size_t>((k - 1) * mnd::ran3());
    const int right = list[b];
    list[b] = parent;
    tree[static_cast<std::size_t>(parent)].left = left;
    tree[static_cast<std::size_t>(parent)].right = right;
    tree[static_cast<std::size_t>(left)].parent = tree[static_cast<std::size_t>(right)].parent = parent;
}

inline std::vector<int> plain_leaves(int n) {
    std::vector<int> list;
    for (int i = 0; i < n; ++i)
        list.push_back(i);
    return list;
}

inline PlainTree plain_kingman(int n) {
    PlainTree tree(static_cast<std::size_t>(2 * n - 1));
    double t = 0.0;
    for (int k = n; k >= 2; --k)
        tree[static_cast<std::size_t>(2 * n - k)].time = t +=
            -2.0 * std::log(1.0 - mnd::ran3()) / (static_cast<double>(k) * (k - 1));
    std::vector<int> list = plain_leaves(n);
    for (int k = n; k >= 2; --k)
        plain_meet(tree, list, 2 * n - k);
    return tree;
}

inline PlainTree plain_range_expansion(int n, double T, double D) {
    PlainTree tree(static_cast<std::size_t>(2 * n - 1));
    std::vector<int> active = plain_leaves(n);
    std::vector<int> parked;
    double t = 0.0;
    int next = n;
    while (active.size() + parked.size() > 1) {
        const double k = static_cast<double>(active.size());
        if (t >= T) {
            t += -std::log(1.0 - mnd::ran3()) / (k * (k - 1.0) / 2.0);
            tree[static_cast<std::size_t>(next)].time = t;
            plain_meet(tree, active, next++);
            continue;
        }
        if (active.empty()) {
            t = T;
        } else {
            t += -std::log(1.0 - mnd::ran3()) / (k * ((k - 1.0) / 2.0 + D));
        }
        if (t >= T) {
            active.insert(active.end(), parked.begin(), parked.end());
            parked.clear();
            t = T;
            continue;
        }
        if (mnd::ran3() < 2.0 * D / (k - 1.0 + 2.0 * D)) {
            const auto i = static_cast<std::size_t>(k * mnd::ran3());
            parked.push_back(active[i]);
            active[i] = active.back();
            active.pop_back();
        } else {
            tree[static_cast<std::size_t>(next)].time = t;
            plain_meet(tree, active, next++);
        }
    }
    return tree;
}

// Mutations by recursion. hits has an entry per site; rates, unless empty, one per site.
class PlainMutations {
public:
    PlainMutations(PlainTree& tree, const mnd::MutationModel& model, std::vector<double> rates = {})
        : hits(static_cast<std::size_t>(model.sites), 0),
          tree_(tree),
          model_(model),
          rates_(std::move(rates)) {}

    long drop() {
        drop(static_cast<int>(tree_.size()) - 1, 0);
        return total;
    }

    std::vector<long> hits;
    long total = 0;

private:
    void drop(int index, long number) {
        PlainNode& node = tree_[static_cast<std::size_t>(index)];
        if (node.parent < 0) {
            for (int i = 0; i < model_.sites; ++i)
                node.sequence.push_back(model_.type == 2 ? static_cast<int>(4.0 * mnd::ran3()) : 0);
        } else {
            node.sequence = tree_[static_cast<std::size_t>(node.parent)].sequence;
        }
        for (long i = 0; i < number; ++i)
            mutate(node);
        if (node.left < 0) return;
        for (const int child : {node.left, node.right}) {
            const double length = node.time - tree_[static_cast<std::size_t>(child)].time;
            long seed = 1;
            drop(child, static_cast<long>(mnd::poidev(static_cast<float>(model_.mu * length), &seed)));
        }
    }

    std::size_t site() const {
        const double u = mnd::ran3();
        if (rates_.empty()) return static_cast<std::size_t>(u * model_.sites);
        double sum = 0.0;
        for (std::size_t i = rates_.size(); i-- > 0;) {
            sum += rates_[i];
            if (sum > u) return i;
        }
        return 0;
    }

    void mutate(PlainNode& node) {
        const std::size_t s = site();
        ++hits[s];
        ++total;
        int& state = node.sequence[s];
        if (model_.type == 0) {
            step(state);
        } else if (model_.type == 1) {
            state = 1 - state;
        } else if (model_.type == 2) {
            substitute(state);
        } else {
            state = static_cast<int>(hits[s]);
        }
    }

    void step(int& state) const {
        int size = 1;
        if (model_.step_geom > 0.0) size = mnd::geometric(model_.step_geom) + 1;
        if (model_.bounded != 0 && state == mnd::TNode::min_mic) {
            state += size;
        } else if (model_.bounded != 0 && state == mnd::TNode::max_mic) {
            state -= size;
        } else {
            state += mnd::ran3() < 0.5 ? -size : size;
        }
        if (model_.bounded == 0) return;
        if (state > mnd::TNode::max_mic) state = mnd::TNode::max_mic;
        if (state < mnd::TNode::min_mic) state = mnd::TNode::min_mic;
    }

    void substitute(int& state) const {
        constexpr int kTransition[] = {1, 0, 3, 2};
        if (mnd::ran3() < model_.ts_rate) {
            state = kTransition[state];
            return;
        }
        const bool upper = mnd::ran3() >= 0.5;
        state = state < 2 ? (upper ? 3 : 2) : (upper ? 1 : 0);
    }

    PlainTree& tree_;
    const mnd::MutationModel& model_;
    std::vector<double> rates_;
};

// Whether a tree has the ages and links of a plain one.
inline bool same_genealogy(const mnd::TTree& tree, const PlainTree& plain) {
    const auto number = [&](const mnd::TNode* n) {
        return n == nullptr ? -1 : static_cast<int>(n - tree.nodes.data());
    };
    for (std::size_t i = 0; i < plain.size(); ++i) {
        const mnd::TNode& node = tree.nodes[i];
        if (node.time != plain[i].time || number(node.desc1) != plain[i].left ||
            number(node.desc2) != plain[i].right || number(node.ancestor) != plain[i].parent)
            return false;
    }
    return true;
}

}  // namespace mnd_test
