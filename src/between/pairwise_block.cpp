#include "between/pairwise_block.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "foundation/random.h"
#include "input/dist_mat.h"

namespace mnd {

namespace {

constexpr int kLanes = 8;                           // products taken at a time
constexpr double kExactLimit = 9007199254740992.0;  // 2^53: whole numbers below it are exact

// Sum of products of n cells, n a multiple of kLanes: only for sums exact in any order.
std::int32_t product_sum(const std::int16_t* a, const std::int16_t* b, int n) {
    std::int32_t sum = 0;
    for (int i = 0; i < n; ++i)
        sum += static_cast<std::int32_t>(a[i]) * static_cast<std::int32_t>(b[i]);
    return sum;
}

// The same in lanes, which the compiler may not make of a sum of doubles by itself.
double product_sum(const double* a, const double* b, int n) {
    double lanes[kLanes] = {};
    for (int first = 0; first < n; first += kLanes) {
        for (int lane = 0; lane < kLanes; ++lane)
            lanes[lane] += a[first + lane] * b[first + lane];
    }
    double sum = 0.0;
    for (const double lane : lanes)
        sum += lane;
    return sum;
}

std::size_t cell_at(int row, int stride) {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(stride);
}

}  // namespace

PairBlock::PairBlock(const DistMat& D, const std::vector<int>& rows, int nb_first) : nb_first_(nb_first) {
    const std::vector<int> different = number_rows(rows);
    if (D.conventional != 0) {
        way_ = Way::kAllOnes;
    } else {
        gather(D, different);
        choose_way();
    }
    sum_constants();
}

// Returns: the matrix row of each dense number
std::vector<int> PairBlock::number_rows(const std::vector<int>& rows) {
    std::vector<int> different = rows;
    std::sort(different.begin(), different.end());
    different.erase(std::unique(different.begin(), different.end()), different.end());
    copies_.reserve(rows.size());
    for (const int row : rows) {
        const auto place = std::lower_bound(different.begin(), different.end(), row);
        copies_.push_back(static_cast<std::int32_t>(place - different.begin()));
    }
    nb_rows_ = static_cast<int>(different.size());
    stride_ = (nb_rows_ + kLanes - 1) / kLanes * kLanes;
    tally_.assign(static_cast<std::size_t>(stride_), 0.0);
    second_tally_.assign(tally_.size(), 0.0);
    present_.assign(tally_.size(), 0);
    second_present_.assign(tally_.size(), 0);
    return different;
}

void PairBlock::gather(const DistMat& D, const std::vector<int>& rows) {
    block_.assign(cell_at(nb_rows_, stride_), 0.0);
    for (int r = 0; r < nb_rows_; ++r) {
        for (int s = 0; s <= r; ++s) {
            const double d = D(rows[r], rows[s]);
            block_[cell_at(r, stride_) + static_cast<std::size_t>(s)] = d;
            block_[cell_at(s, stride_) + static_cast<std::size_t>(r)] = d;
        }
    }
}

void PairBlock::choose_way() {
    bool all_ones = true;
    double largest = 0.0;
    for (int r = 0; r < nb_rows_; ++r) {
        for (int s = 0; s < nb_rows_; ++s) {
            const double d = block_[cell_at(r, stride_) + static_cast<std::size_t>(s)];
            if (d != std::trunc(d)) return;  // also what is not a number
            if (d != (r == s ? 0.0 : 1.0)) all_ones = false;
            largest = std::max(largest, std::fabs(d));
        }
    }
    const double n = nb_copies();
    if (largest * n * n >= kExactLimit) return;
    constexpr double kShortest = std::numeric_limits<std::int16_t>::max();
    static_assert(kShortest * kShortest <= std::numeric_limits<std::int32_t>::max());
    if (all_ones) {
        way_ = Way::kAllOnes;
    } else if (largest <= kShortest && n <= kShortest) {
        way_ = Way::kShort;
        short_block_.assign(block_.begin(), block_.end());
        short_tally_.assign(static_cast<std::size_t>(stride_), 0);
    } else {
        way_ = Way::kWhole;
    }
}

void PairBlock::sum_constants() {
    if (!whole_numbers()) return;
    for (const std::int32_t row : copies_)
        tally_[row] += 1.0;
    to_others_.assign(static_cast<std::size_t>(nb_rows_), 0.0);
    double both_ways = 0.0;
    for (int r = 0; r < nb_rows_; ++r) {
        if (way_ == Way::kAllOnes) {
            to_others_[r] = nb_copies() - tally_[r];
        } else {
            const double* const row = &block_[cell_at(r, stride_)];
            to_others_[r] = product_sum(row, tally_.data(), stride_) - row[r];
        }
        both_ways += to_others_[r] * tally_[r];
    }
    total_ = both_ways / 2.0;
    std::fill(tally_.begin(), tally_.end(), 0.0);
}

const std::int32_t* PairBlock::smaller_sample(int& n) const {
    const int nb_second = nb_copies() - nb_first_;
    n = std::min(nb_first_, nb_second);
    return nb_first_ <= nb_second ? copies_.data() : copies_.data() + nb_first_;
}

// All distances are 1 but those between copies of one row.
double PairBlock::pairs_of_different(const std::int32_t* copies, int n) {
    double alike = 0.0;
    for (int i = 0; i < n; ++i) {
        alike += tally_[copies[i]];
        tally_[copies[i]] += 1.0;
    }
    for (int i = 0; i < n; ++i)
        tally_[copies[i]] = 0.0;
    return static_cast<double>(n) * (n - 1) / 2.0 - alike;
}

template <class Cell>
double PairBlock::whole_sum(const std::vector<Cell>& block, std::vector<Cell>& tally,
                            const std::int32_t* copies, int n) {
    int nb_present = 0;
    for (int i = 0; i < n; ++i) {
        if (tally[copies[i]] == 0) present_[nb_present++] = copies[i];
        tally[copies[i]] = static_cast<Cell>(tally[copies[i]] + 1);
    }
    double both_ways = 0.0;
    for (int a = 0; a < nb_present; ++a) {
        const int r = present_[a];
        const Cell* const row = &block[cell_at(r, stride_)];
        const auto to_others = product_sum(row, tally.data(), stride_) - row[r];
        both_ways += static_cast<double>(to_others) * static_cast<double>(tally[r]);
    }
    for (int a = 0; a < nb_present; ++a)
        tally[present_[a]] = 0;
    return both_ways / 2.0;
}

double PairBlock::sum_smaller(const std::int32_t* copies, int n) {
    if (way_ == Way::kAllOnes) return pairs_of_different(copies, n);
    if (way_ == Way::kShort) return whole_sum(short_block_, short_tally_, copies, n);
    return whole_sum(block_, tally_, copies, n);
}

PairSSD PairBlock::sums() {
    if (!whole_numbers()) return sums_in_order();
    int n = 0;
    const std::int32_t* const copies = smaller_sample(n);
    const double within = sum_smaller(copies, n);
    double to_others = 0.0;
    for (int i = 0; i < n; ++i)
        to_others += to_others_[copies[i]];
    const double between = to_others - 2.0 * within;
    const double within_other = total_ - within - between;
    if (copies == copies_.data()) return {within, within_other, between};
    return {within_other, within, between};
}

// Rows of n copies in ascending order, with their tally. Returns: how many
int PairBlock::list_rows(const std::int32_t* copies, int n, std::vector<double>& tally,
                         std::vector<std::int32_t>& list) const {
    std::fill(tally.begin(), tally.end(), 0.0);
    for (int i = 0; i < n; ++i)
        tally[copies[i]] += 1.0;
    int existing = 0;
    for (int row = 0; row < nb_rows_; ++row) {
        if (tally[row] != 0.0) list[existing++] = row;
    }
    return existing;
}

PairSSD PairBlock::sums_in_order() {
    const auto within = [this](const std::vector<double>& f, const std::vector<std::int32_t>& list,
                               int existing) {
        double ssd = 0.0;
        for (int a = 0; a < existing; ++a) {
            const int r = list[a];
            const double* const D_r = &block_[cell_at(r, stride_)];
            ssd += f[r] * (f[r] - 1.0) / 2.0 * D_r[r];
            for (int b = 0; b < a; ++b)
                ssd += f[r] * f[list[b]] * D_r[list[b]];
        }
        return ssd;
    };
    const int nb_i = list_rows(copies_.data(), nb_first_, tally_, present_);
    const int nb_j =
        list_rows(copies_.data() + nb_first_, nb_copies() - nb_first_, second_tally_, second_present_);
    PairSSD ssd;
    ssd.first = within(tally_, present_, nb_i);
    ssd.second = within(second_tally_, second_present_, nb_j);
    for (int a = 0; a < nb_i; ++a) {
        const int r = present_[a];
        const double* const D_r = &block_[cell_at(r, stride_)];
        for (int b = 0; b < nb_j; ++b) {
            const int s = second_present_[b];
            ssd.between += tally_[r] * second_tally_[s] * D_r[s];
        }
    }
    return ssd;
}

void PairBlock::shuffle_copies() {
    std::int32_t* const copies = copies_.data();
    for (int k = nb_copies() - 1; k > nb_first_; --k)
        std::swap(copies[k], copies[static_cast<int>(k * ran3())]);
}

void PairBlock::shuffle_individuals() {
    std::int32_t* const copies = copies_.data();
    for (int k = nb_copies() - 1; k > nb_first_ + 1; k -= 2) {
        const int r = static_cast<int>(k * ran3());
        const int odd = r % 2 == 0 ? r + 1 : r;  // at least 1 and at most k, so never outside
        std::swap(copies[k], copies[odd]);
        std::swap(copies[k - 1], copies[odd - 1]);
    }
}

}  // namespace mnd
