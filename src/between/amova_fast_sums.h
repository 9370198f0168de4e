// Sums of squared distances among gene copies, fast enough to be taken anew for every
// permutation.
//
// The rows of the matrix that occur in an analysis are numbered densely, and the way of
// summing is chosen once, by what the distances are:
//   - 0 on the diagonal and 1 elsewhere: the number of pairs of copies with different rows
//   - whole numbers: the sum is a whole number, exact in any order. With few different rows the
//     copies are tallied, and the pairs of rows looked up; else the matrix rows of all copies
//     are added up, many columns at a time, and the sums read at the columns of the copies
//   - others: rows in ascending order, as Population::ComputeSSDWP takes them, since the order
//     of such a sum decides its last digits; four samples at a time, each with a sum of its own,
//     so that none waits for the additions of another
// The result is in each case that of ComputeSSDWP to the last digit.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace mnd {

class DistMat;

class PairSums {
public:
    // Prepares for the rows of `copies`.
    //   D        at least as many rows as the largest of `copies` tells, unless conventional;
    //            must outlive this
    //   copies   matrix rows of all gene copies that will be summed over; a row may repeat
    PairSums(const DistMat& D, const std::vector<int>& copies);

    // Sum over all pairs of the n copies at `copies` of the distance between their rows.
    // Cost:     O(n + k^2) for k different rows, or O(n h) for h rows prepared for, with a small
    //           factor, where that is less; allocates nothing
    double within(const int* copies, int n);

    // The sums of consecutive samples: sums[i] of the sizes[i] copies that follow those of the
    // samples before. `sums` takes the length of `sizes`.
    void within_each(const int* copies, const std::vector<int>& sizes, std::vector<double>& sums);

    // Distance between the rows of two copies.
    double between(int r, int s) const;

    // Whether all distances are whole numbers, and so small that no sum over the copies
    // prepared for can lose a digit.
    bool whole_numbers() const { return way_ != Way::kInOrder; }

private:
    enum class Way { kConventional, kShort, kWords, kInOrder };

    // One row of the matrix among the copies at hand.
    struct Tally {
        std::int32_t code;
        std::int32_t count;
    };

    // The same with what the sum in order needs of it.
    struct Entry {
        std::int32_t row;  // of the matrix
        double count;
    };

    static constexpr std::size_t kLanes = 4;  // samples summed at a time in order

    const DistMat& D_;                              // squared distances
    Way way_ = Way::kInOrder;                       // see above
    std::vector<std::int32_t> code_;                // dense number of each matrix row that occurs
    std::vector<std::int32_t> row_;                 // matrix row of each dense number, ascending
    std::size_t stride_ = 0;                        // cells of a row of the square, some of them unused
    std::vector<std::uint16_t> short_;              // square of the distances, when all fit
    std::vector<std::int32_t> words_;               // the same for other whole numbers
    std::int64_t largest_ = 0;                      // largest of whole distances
    std::vector<std::int32_t> count_;               // working tally by dense number; all 0 between calls
    std::array<std::vector<Entry>, kLanes> lanes_;  // working lists of rows in ascending order
    std::vector<std::uint64_t> present_;            // working set of dense numbers; empty between calls
    std::vector<Tally> tally_;                      // working list of rows, one entry longer than they are
    std::vector<const std::uint16_t*> rows_;        // working list of the rows of short_; not owned
    std::vector<std::uint16_t> columns_;            // working sums of the columns of short_

    void number_rows(const std::vector<int>& copies);
    void choose_way(std::int64_t nb_copies);
    template <class Cell>
    void fill_square(std::vector<Cell>& square);
    double cell(int code_r, int code_s) const;

    double different_pairs(const int* copies, int n);
    int tally_by_arrival(const int* copies, int n);
    int tally_in_order(const int* copies, int n, std::vector<Entry>& entries);
    template <class Cell>
    std::int64_t sum_by_pairs(const std::vector<Cell>& square, int rows) const;
    bool is_faster_by_columns(int n) const;
    std::int64_t sum_by_columns(const int* copies, int n);
    double sum_in_order(const std::vector<Entry>& entries, int first, int rows, double sum) const;
    void sum_lanes(const std::array<int, kLanes>& rows, double* sums) const;
};

}  // namespace mnd
