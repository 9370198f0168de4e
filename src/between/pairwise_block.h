// The gene copies of two samples and the distances between them, ready to be shuffled and summed
// over and over.
//
// The matrix rows that occur in the two samples are numbered densely, in ascending order, and
// their distances are gathered once. Where all distances are whole numbers one sum over the
// smaller sample is enough for a permutation: the sum over all pairs of the two samples together
// does not depend on which copy is in which sample, nor does the sum of the distances of one copy
// to all others. Otherwise three sums are taken in the order of rows, since the order of such a
// sum decides its last digits.
#pragma once

#include <cstdint>
#include <vector>

namespace mnd {

class DistMat;

// Sums of squared distances over the pairs of gene copies of two samples.
struct PairSSD {
    double first = 0.0;    // within the first sample
    double second = 0.0;   // within the second one
    double between = 0.0;  // over all pairs of a copy of each
};

class PairBlock {
public:
    // Gathers the distances.
    //   D         at least as many rows as the largest of `rows` tells, unless conventional
    //   rows      matrix rows of the copies of the first sample, then of the second
    //   nb_first  copies of the first sample
    PairBlock(const DistMat& D, const std::vector<int>& rows, int nb_first);

    int nb_copies() const { return static_cast<int>(copies_.size()); }
    int nb_first() const { return nb_first_; }
    // Whether all distances are whole numbers, so small that no sum can lose a digit.
    bool whole_numbers() const { return way_ != Way::kInOrder; }

    // The sums of the present arrangement: those of Population::ComputeSSDWP and ComputeSSDAP, to
    // the last digit.
    // Cost:     O(n + r k) for n copies of the smaller sample with r different rows of k in both;
    //           O(k^2) when the distances are not whole; O(n) when they are all 1. Allocates nothing
    PairSSD sums();

    // Shuffles the copies between the samples: position m, from the last one down to the second of
    // the second sample, swaps with a random one below it. The first sample takes what remains.
    // Draws:    copies of the second sample - 1, or 0
    void shuffle_copies();

    // The same with two neighbouring copies, an individual, at a time.
    // Draws:    half of the copies of the second sample - 1, rounded up, or 0
    void shuffle_individuals();

private:
    enum class Way { kAllOnes, kShort, kWhole, kInOrder };

    std::vector<std::int32_t> copies_;       // dense number of each copy: first sample, then second
    int nb_first_;                           // copies of the first sample
    int nb_rows_ = 0;                        // different rows
    int stride_ = 0;                         // length of a row of the blocks, a multiple of kLanes
    Way way_ = Way::kInOrder;                // how to sum
    std::vector<double> block_;              // nb_rows_ x stride_ distances
    std::vector<std::int16_t> short_block_;  // the same, where they are small whole numbers
    std::vector<double> to_others_;          // by row: distances of one copy to all other copies
    double total_ = 0.0;                     // SSD of all copies together
    // Working tallies by row, all 0 between calls: of the smaller sample, or of both.
    std::vector<std::int16_t> short_tally_;
    std::vector<double> tally_;
    std::vector<double> second_tally_;
    std::vector<std::int32_t> present_;         // working list of rows
    std::vector<std::int32_t> second_present_;  // and of the second sample

    std::vector<int> number_rows(const std::vector<int>& rows);
    void gather(const DistMat& D, const std::vector<int>& rows);
    void choose_way();
    void sum_constants();

    const std::int32_t* smaller_sample(int& n) const;
    double pairs_of_different(const std::int32_t* copies, int n);
    template <class Cell>
    double whole_sum(const std::vector<Cell>& block, std::vector<Cell>& tally, const std::int32_t* copies,
                     int n);
    double sum_smaller(const std::int32_t* copies, int n);
    PairSSD sums_in_order();
    int list_rows(const std::int32_t* copies, int n, std::vector<double>& tally,
                  std::vector<std::int32_t>& list) const;
};

}  // namespace mnd
