#include "model/population.h"
#include "simulation/coalescent_tree.h"

namespace mnd {

void TreeDeleter::operator()(TTree* tree) const {
    delete tree;
}

TTree& TreeHolder::make() {
    if (tree_ == nullptr) tree_.reset(new TTree);
    return *tree_;
}

}  // namespace mnd
