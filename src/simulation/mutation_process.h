// The draws of one mutation: its site, and the new state of the site.
//
// Dropping mutations on sequences and counting mutated sites both go through this class, so that they
// take the same numbers from the stream.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "foundation/random.h"
#include "simulation/tree_node.h"

namespace mnd {

// Shapes closer to 0 than this make all sites alike.
inline constexpr double kNoGammaShape = 1e-07;

class MutationProcess {
public:
    // For sequences of model.sites sites, at least 1; the rates are those of TNode::mut_rates as they
    // stand. TNode::hits gets an entry for every site.
    explicit MutationProcess(const MutationModel& model);

    // The site that is hit. Draws: 1
    int draw_site() const {
        const double u = ran3();
        if (sums_ == nullptr) return std::min(static_cast<int>(u * sites_), sites_ - 1);
        return site_of_rates(u);
    }

    // The state after a mutation of a site that was in this state and has now been hit so many times.
    // Draws: see TNode::add_mutations
    int new_state(int state, long hits) const {
        switch (type_) {
            case kStepwiseMutation:
                return step(state);
            case kBinaryMutation:
                return state == 0 ? 1 : 0;
            case kNucleotideMutation:
                return substitute(state);
            default:
                return static_cast<int>(hits);
        }
    }

    // State of a site at the root. Draws: 1 for nucleotides, else none
    int root_state() const { return type_ == kNucleotideMutation ? nucleotide_of(ran3()) : 0; }
    static int nucleotide_of(double u) { return std::min(static_cast<int>(4.0 * u), 3); }

private:
    int site_of_rates(double u) const;
    int step(int state) const;

    // A and G are 0 and 1, C and T are 2 and 3.
    int substitute(int state) const {
        if (ran3() < ts_rate_) return state ^ 1;
        const int first = state < 2 ? 2 : 0;
        return first + (ran3() >= 0.5 ? 1 : 0);
    }

    Mut_Type type_;
    int sites_;
    double ts_rate_;
    bool bounded_;
    double step_geom_;
    const std::vector<double>* sums_ = nullptr;  // not owned: sums of rates from the last site down
    bool ascending_ = true;
};

// Number of mutations on a branch of this length: a Poisson deviate of mean mu times the length, in
// single precision, as a whole number. Draws: those of poidev
int mutations_on_branch(double mu, double length, long* seed);

// Makes TNode::hits and TNode::mut_rates ready for a new tree. Draws: those of the rates
// Returns: false after warning 177 from "PopGenetics::sprinkle_mutations()", see there
bool prepare_sites(const MutationModel& model);

}  // namespace mnd
