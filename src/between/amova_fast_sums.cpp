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

// Rows of the square are a multiple of this long, so that a loop over the columns has no rest.
constexpr std::size_t kColumnsPerStep = 32;

constexpr std::int64_t kLargestShort = std::numeric_limits<std::uint16_t>::max();

// Cells that are added up by columns in the time of looking up one pair of rows.
constexpr std::int64_t kCellsPerLookup = 20;

// sums[j] = sum of rows[i][j] over the n rows; no sum may exceed 16 bits. The columns do not
// overlap with the rows. Eight rows at a time, so that a sum is loaded and stored less often.
void add_rows(const std::uint16_t* const* rows, int n, std::size_t columns, std::uint16_t* __restrict sums) {
    std::fill_n(sums, columns, std::uint16_t{0});
    int i = 0;
    for (; i + 8 <= n; i += 8) {
        const std::uint16_t *const r0 = rows[i], *const r1 = rows[i + 1], *const r2 = rows[i + 2],
                                   *const r3 = rows[i + 3], *const r4 = rows[i + 4], *const r5 = rows[i + 5],
                                   *const r6 = rows[i + 6], *const r7 = rows[i + 7];
        for (std::size_t j = 0; j < columns; ++j)
            sums[j] = static_cast<std::uint16_t>(sums[j] + r0[j] + r1[j] + r2[j] + r3[j] + r4[j] + r5[j] +
                                                 r6[j] + r7[j]);
    }
    for (; i < n; ++i) {
        const std::uint16_t* const row = rows[i];
        for (std::size_t j = 0; j < columns; ++j)
            sums[j] = static_cast<std::uint16_t>(sums[j] + row[j]);
    }
}

}  // namespace

PairSums::PairSums(const DistMat& D, const std::vector<int>& copies) : D_(D) {
    number_rows(copies);
    choose_way(static_cast<std::int64_t>(copies.size()));
    const std::size_t size = row_.size();
    stride_ = (size + kColumnsPerStep - 1) / kColumnsPerStep * kColumnsPerStep;
    if (way_ == Way::kShort) {
        fill_square(short_);
        rows_.resize(copies.size());
        columns_.resize(stride_);
    }
    if (way_ == Way::kWords) fill_square(words_);
    count_.assign(size, 0);
    present_.assign(size / kBitsPerWord + 1, 0);
    tally_.resize(size + 1);
    if (way_ != Way::kInOrder) return;
    for (std::vector<Entry>& entries : lanes_)
        entries.resize(size);
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
    largest_ = static_cast<std::int64_t>(largest);
    way_ = smallest >= 0.0 && largest_ <= kLargestShort ? Way::kShort : Way::kWords;
}

template <class Cell>
void PairSums::fill_square(std::vector<Cell>& square) {
    const std::size_t size = row_.size();
    square.assign(size * stride_, 0);
    for (std::size_t r = 0; r < size; ++r) {
        for (std::size_t s = 0; s < size; ++s)
            square[r * stride_ + s] = static_cast<Cell>(cell(static_cast<int>(r), static_cast<int>(s)));
    }
}

double PairSums::between(int r, int s) const {
    switch (way_) {
        case Way::kConventional:
            return r == s ? 0.0 : 1.0;
        case Way::kShort:
            return short_[static_cast<std::size_t>(code_[r]) * stride_ + code_[s]];
        case Way::kWords:
            return words_[static_cast<std::size_t>(code_[r]) * stride_ + code_[s]];
        default:
            return D_(r, s);
    }
}

double PairSums::within(const int* copies, int n) {
    switch (way_) {
        case Way::kConventional:
            return different_pairs(copies, n);
        case Way::kShort:
            if (is_faster_by_columns(n)) return static_cast<double>(sum_by_columns(copies, n));
            return static_cast<double>(sum_by_pairs(short_, tally_by_arrival(copies, n)));
        case Way::kWords:
            return static_cast<double>(sum_by_pairs(words_, tally_by_arrival(copies, n)));
        default:
            return sum_in_order(lanes_[0], 0, tally_in_order(copies, n, lanes_[0]), 0.0);
    }
}

void PairSums::within_each(const int* copies, const std::vector<int>& sizes, std::vector<double>& sums) {
    sums.resize(sizes.size());
    const bool all_rows_stored = row_.empty() || row_.back() < D_.dim;
    std::size_t i = 0;
    while (way_ == Way::kInOrder && all_rows_stored && i + kLanes <= sizes.size()) {
        std::array<int, kLanes> rows{};
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            rows[lane] = tally_in_order(copies, sizes[i + lane], lanes_[lane]);
            copies += sizes[i + lane];
        }
        sum_lanes(rows, &sums[i]);
        i += kLanes;
    }
    for (; i < sizes.size(); ++i) {
        sums[i] = within(copies, sizes[i]);
        copies += sizes[i];
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

int PairSums::tally_in_order(const int* copies, int n, std::vector<Entry>& entries) {
    for (int i = 0; i < n; ++i) {
        const std::int32_t code = code_[copies[i]];
        ++count_[code];
        present_[code / kBitsPerWord] |= std::uint64_t{1} << (code % kBitsPerWord);
    }
    int rows = 0;
    for (std::size_t word = 0; word < present_.size(); ++word) {
        for (std::uint64_t bits = std::exchange(present_[word], 0); bits != 0; bits &= bits - 1) {
            const int code = static_cast<int>(word) * kBitsPerWord + std::countr_zero(bits);
            entries[rows++] = {row_[code], static_cast<double>(std::exchange(count_[code], 0))};
        }
    }
    return rows;
}

template <class Cell>
std::int64_t PairSums::sum_by_pairs(const std::vector<Cell>& square, int rows) const {
    std::int64_t sum = 0;
    for (int a = 0; a < rows; ++a) {
        const Cell* const D_r = square.data() + static_cast<std::size_t>(tally_[a].code) * stride_;
        const std::int64_t f_r = tally_[a].count;
        std::int64_t with_earlier = 0;
        for (int b = 0; b < a; ++b)
            with_earlier += static_cast<std::int64_t>(tally_[b].count) * D_r[tally_[b].code];
        sum += f_r * with_earlier + f_r * (f_r - 1) / 2 * D_r[tally_[a].code];
    }
    return sum;
}

bool PairSums::is_faster_by_columns(int n) const {
    const std::int64_t most_rows = std::min<std::int64_t>(n, static_cast<std::int64_t>(row_.size()));
    const std::int64_t cells = n * static_cast<std::int64_t>(stride_);
    return n * largest_ <= kLargestShort && cells < kCellsPerLookup * most_rows * most_rows / 2;
}

// The column sums at the columns of the copies count each pair twice, and each copy with itself.
std::int64_t PairSums::sum_by_columns(const int* copies, int n) {
    for (int i = 0; i < n; ++i)
        rows_[i] = short_.data() + static_cast<std::size_t>(code_[copies[i]]) * stride_;
    add_rows(rows_.data(), n, stride_, columns_.data());
    std::int64_t twice = 0;
    for (int i = 0; i < n; ++i) {
        const std::int32_t code = code_[copies[i]];
        twice += columns_[code] - rows_[i][code];
    }
    return twice / 2;
}

// Goes on with the entries from `first` on. The terms and their order are those of
// Population::ComputeSSDWP.
double PairSums::sum_in_order(const std::vector<Entry>& entries, int first, int rows, double sum) const {
    for (int a = first; a < rows; ++a) {
        const auto [r, f_r] = entries[a];
        const double* const D_r = r < D_.dim ? D_.data[r] : nullptr;
        sum += f_r * (f_r - 1.0) / 2.0 * (D_r != nullptr ? D_r[r] : D_(r, r));
        for (int b = 0; b < a; ++b) {
            const auto [s, f_s] = entries[b];
            sum += f_r * f_s * (D_r != nullptr ? D_r[s] : D_(r, s));
        }
    }
    return sum;
}

// As far as all four have entries they go side by side, then each to its end.
void PairSums::sum_lanes(const std::array<int, kLanes>& rows, double* sums) const {
    const int common = *std::min_element(rows.begin(), rows.end());
    const Entry *const e0 = lanes_[0].data(), *const e1 = lanes_[1].data(), *const e2 = lanes_[2].data(),
                       *const e3 = lanes_[3].data();
    const auto diagonal = [this](const Entry& e) {
        return e.count * (e.count - 1.0) / 2.0 * D_.data[e.row][e.row];
    };
    double sum0 = 0.0, sum1 = 0.0, sum2 = 0.0, sum3 = 0.0;
    for (int a = 0; a < common; ++a) {
        const double *const D0 = D_.data[e0[a].row], *const D1 = D_.data[e1[a].row],
                            *const D2 = D_.data[e2[a].row], *const D3 = D_.data[e3[a].row];
        const double f0 = e0[a].count, f1 = e1[a].count, f2 = e2[a].count, f3 = e3[a].count;
        sum0 += diagonal(e0[a]);
        sum1 += diagonal(e1[a]);
        sum2 += diagonal(e2[a]);
        sum3 += diagonal(e3[a]);
        for (int b = 0; b < a; ++b) {
            sum0 += f0 * e0[b].count * D0[e0[b].row];
            sum1 += f1 * e1[b].count * D1[e1[b].row];
            sum2 += f2 * e2[b].count * D2[e2[b].row];
            sum3 += f3 * e3[b].count * D3[e3[b].row];
        }
    }
    sums[0] = sum_in_order(lanes_[0], common, rows[0], sum0);
    sums[1] = sum_in_order(lanes_[1], common, rows[1], sum1);
    sums[2] = sum_in_order(lanes_[2], common, rows[2], sum2);
    sums[3] = sum_in_order(lanes_[3], common, rows[3], sum3);
}

}  // namespace mnd
