#include "between/amova_fast_sums.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "input/dist_mat.h"

namespace mnd {

namespace {

// Largest number of cells of a square table.
constexpr std::int64_t kMaxSquareCells = 1 << 26;

// Sums of whole numbers up to here are exact in double precision.
constexpr double kExactLimit = 9007199254740992.0;

constexpr int kBitsPerWord = 64;

}  // namespace

PairSums::PairSums(const DistMat& D, const std::vector<int>& copies) : D_(D) {
    number_rows(copies);
    choose_way(static_cast<std::int64_t>(copies.size()));
    if (way_ == Way::kBytes) fill_square(bytes_);
    if (way_ == Way::kWords) fill_square(words_);
    const std::size_t size = row_.size();
    count_.assign(size, 0);
    present_.assign(size / kBitsPerWord + 1, 0);
    tally_.resize(size + 1);
}

void PairSums::number_rows(const std::vector<int>& copies) {
    row_ = copies;
    std::sort(row_.begin(), row_.end());
    row_.erase(std::unique(row_.begin(), row_.end()), row_.end());
    if (row_.empty()) return;
    code_.assign(static_cast<std::size_t>(row_.back()) + 1, -1);
    for (std::size_t code = 0; code < row_.size(); ++code)
        code_[row_[code]] = static_cast<std::int32_t>(code);
}

double PairSums::cell(int code_r, int code_s) const {
    return D_(row_[code_r], row_[code_s]);
}

void PairSums::choose_way(std::int64_t nb_copies) {
    if (D_.conventional != 0) {
        way_ = Way::kConventional;
        return;
    }
    const auto size = static_cast<std::int64_t>(row_.size());
    if (size * size > kMaxSquareCells) return;
    double smallest = 0.0;
    double largest = 0.0;
    for (int r = 0; r < size; ++r) {
        for (int s = 0; s <= r; ++s) {
            const double d = cell(r, s);
            if (d != std::floor(d)) return;
            smallest = std::min(smallest, d);
            largest = std::max(largest, d);
        }
    }
    constexpr double kLargestWord = std::numeric_limits<std::int32_t>::max();
    const double n = static_cast<double>(nb_copies);
    const double magnitude = std::max(largest, -smallest);
    if (!(magnitude <= kLargestWord && n * n * magnitude < kExactLimit)) return;
    constexpr double kLargestByte = std::numeric_limits<std::uint8_t>::max();
    way_ = smallest >= 0.0 && largest <= kLargestByte ? Way::kBytes : Way::kWords;
}

template <class Cell>
void PairSums::fill_square(std::vector<Cell>& square) const {
    const std::size_t size = row_.size();
    square.resize(size * size);
    for (std::size_t r = 0; r < size; ++r) {
        for (std::size_t s = 0; s < size; ++s)
            square[r * size + s] = static_cast<Cell>(cell(static_cast<int>(r), static_cast<int>(s)));
    }
}

double PairSums::between(int r, int s) const {
    switch (way_) {
        case Way::kConventional:
            return r == s ? 0.0 : 1.0;
        case Way::kBytes:
            return bytes_[static_cast<std::size_t>(code_[r]) * row_.size() + code_[s]];
        case Way::kWords:
            return words_[static_cast<std::size_t>(code_[r]) * row_.size() + code_[s]];
        default:
            return D_(r, s);
    }
}

double PairSums::within(const int* copies, int n) {
    switch (way_) {
        case Way::kConventional:
            return different_pairs(copies, n);
        case Way::kBytes:
            return static_cast<double>(whole_sum(bytes_, tally_by_arrival(copies, n)));
        case Way::kWords:
            return static_cast<double>(whole_sum(words_, tally_by_arrival(copies, n)));
        default:
            return sum_in_order(tally_in_order(copies, n));
    }
}

// All pairs, less those of the same row: a copy meets as many of its own row as came before it.
double PairSums::different_pairs(const int* copies, int n) {
    std::int64_t same = 0;
    for (int i = 0; i < n; ++i)
        same += count_[code_[copies[i]]]++;
    for (int i = 0; i < n; ++i)
        count_[code_[copies[i]]] = 0;
    return static_cast<double>(static_cast<std::int64_t>(n) * (n - 1) / 2 - same);
}

int PairSums::tally_by_arrival(const int* copies, int n) {
    int rows = 0;
    for (int i = 0; i < n; ++i) {
        const std::int32_t code = code_[copies[i]];
        tally_[rows].code = code;
        rows += count_[code]++ == 0 ? 1 : 0;
    }
    for (int a = 0; a < rows; ++a)
        tally_[a].count = std::exchange(count_[tally_[a].code], 0);
    return rows;
}

int PairSums::tally_in_order(const int* copies, int n) {
    for (int i = 0; i < n; ++i) {
        const std::int32_t code = code_[copies[i]];
        ++count_[code];
        present_[code / kBitsPerWord] |= std::uint64_t{1} << (code % kBitsPerWord);
    }
    int rows = 0;
    for (std::size_t word = 0; word < present_.size(); ++word) {
        for (std::uint64_t bits = std::exchange(present_[word], 0); bits != 0; bits &= bits - 1) {
            const int code = static_cast<int>(word) * kBitsPerWord + std::countr_zero(bits);
            tally_[rows++] = {code, std::exchange(count_[code], 0)};
        }
    }
    return rows;
}

template <class Cell>
std::int64_t PairSums::whole_sum(const std::vector<Cell>& square, int rows) {
    std::int64_t sum = 0;
    for (int a = 0; a < rows; ++a) {
        const Cell* const D_r = square.data() + static_cast<std::size_t>(tally_[a].code) * row_.size();
        const std::int64_t f_r = tally_[a].count;
        std::int64_t with_earlier = 0;
        for (int b = 0; b < a; ++b)
            with_earlier += static_cast<std::int64_t>(tally_[b].count) * D_r[tally_[b].code];
        sum += f_r * with_earlier + f_r * (f_r - 1) / 2 * D_r[tally_[a].code];
    }
    return sum;
}

// The terms and their order are those of Population::ComputeSSDWP.
double PairSums::sum_in_order(int rows) {
    double sum = 0.0;
    for (int a = 0; a < rows; ++a) {
        const int r = row_[tally_[a].code];
        const double f_r = tally_[a].count;
        const double* const D_r = r < D_.dim ? D_.data[r] : nullptr;
        sum += f_r * (f_r - 1.0) / 2.0 * (D_r != nullptr ? D_r[r] : D_(r, r));
        for (int b = 0; b < a; ++b) {
            const int s = row_[tally_[b].code];
            sum += f_r * tally_[b].count * (D_r != nullptr ? D_r[s] : D_(r, s));
        }
    }
    return sum;
}

}  // namespace mnd
