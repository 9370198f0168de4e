// Owner of the genealogy of a sample, for classes that stand below the simulations.
#pragma once

#include <memory>

namespace mnd {

class TTree;  // simulation/coalescent_tree.h

// Releases a tree (simulation/sample_simulation.cpp).
struct TreeDeleter {
    void operator()(TTree* tree) const;
};

// Holds one tree or none. A copied holder is empty, and assignment leaves the tree that is there:
// data are copied from sample to sample, genealogies are not.
class TreeHolder {
public:
    TreeHolder() = default;
    TreeHolder(const TreeHolder&) {}
    TreeHolder& operator=(const TreeHolder&) { return *this; }
    ~TreeHolder() = default;

    explicit operator bool() const { return tree_ != nullptr; }
    TTree* operator->() const { return tree_.get(); }
    TTree& operator*() const { return *tree_; }
    TTree* get() const { return tree_.get(); }
    // The tree; an empty one is made if there is none.
    TTree& make();
    void reset() { tree_.reset(); }

private:
    std::unique_ptr<TTree, TreeDeleter> tree_;  // owned
};

}  // namespace mnd
