#include "foundation/bnum_mat.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <utility>

#include "foundation/message_codes.h"
#include "foundation/report.h"

namespace mnd {

namespace {

constexpr std::size_t kMaxFileCells = 100000000;  // what a header may ask for

static_assert(std::endian::native == std::endian::little, "the file form is read as it lies in memory");

std::size_t row_length(std::int32_t row, std::int32_t cols) {
    return static_cast<std::size_t>(std::min(row + 1, cols));
}

// Cells of the first `rows` rows: a triangle down to row `cols`, full rows below it.
std::size_t number_of_cells(std::int32_t rows, std::int32_t cols) {
    const auto triangle = static_cast<std::size_t>(std::min(rows, cols));
    const auto full_rows = static_cast<std::size_t>(rows) - triangle;
    return triangle * (triangle + 1) / 2 + full_rows * static_cast<std::size_t>(cols);
}

// Reads n values; those that the stream does not hold in full are 0.
template <typename Value>
void read_values(std::istream& is, Value* values, std::size_t n) {
    is.read(reinterpret_cast<char*>(values), static_cast<std::streamsize>(n * sizeof(Value)));
    const std::size_t n_read = static_cast<std::size_t>(is.gcount()) / sizeof(Value);
    std::fill(values + n_read, values + n, Value{});
}

}  // namespace

BnumMat::BnumMat(const int& n_rows, const int& n_cols) {
    take_dimensions(n_rows, n_cols);
}

BnumMat::BnumMat(const my_string& name) {
    read_from_file(name);
}

void BnumMat::take_dimensions(int n_rows, int n_cols) {
    rows = std::max(n_rows, 0);
    cols = std::max(n_cols, 0);
    allocate_matrix();
}

void BnumMat::release() {
    row_pointers_.reset();
    cells_.reset();
    data = nullptr;
}

void BnumMat::allocate_matrix() {
    if (data != nullptr || rows <= 0) return;
    cells_ = std::make_unique<double[]>(number_of_cells(rows, cols));
    row_pointers_ = std::make_unique<double*[]>(static_cast<std::size_t>(rows));
    double* row = cells_.get();
    for (std::int32_t i = 0; i < rows; ++i) {
        row_pointers_[static_cast<std::size_t>(i)] = row;
        row += row_length(i, cols);
    }
    data = row_pointers_.get();
}

void BnumMat::fill_row(int i) {
    double* const row = data[i];
    const double n = i + 1.0;
    if (i > 0 && cols > 0) row[0] = 1.0 / n;
    const std::int32_t inner = std::min(i, cols);
    for (std::int32_t j = 1; j < inner; ++j) {
        row[j] = ((j + 1) * data[i - 1][j - 1] + i * data[i - 1][j]) / n;
    }
    if (i < cols) row[i] = 1.0;
}

int BnumMat::re_allocate_matrix(const int& n_rows, const int& n_cols) {
    const int new_rows = n_rows;  // the arguments may be our own fields
    const int new_cols = n_cols;
    if (new_rows < 0 || new_cols < 0 || new_rows > kMaxBnumRows || new_cols > kMaxBnumCols) {
        release();
        return 0;
    }
    // The recursion goes by rows: with the same number of columns the rows of before stay.
    const std::unique_ptr<double[]> old_cells = std::move(cells_);
    const int kept = old_cells && filled_ && new_cols == cols ? std::min(rows, new_rows) : 0;
    release();
    take_dimensions(new_rows, new_cols);
    if (kept > 0) std::copy_n(old_cells.get(), number_of_cells(kept, cols), cells_.get());
    for (int i = kept; i < rows; ++i) {
        fill_row(i);
    }
    filled_ = true;
    return 1;
}

int BnumMat::read_from_file() {
    std::ifstream is(file_name.c_str(), std::ios::binary);
    if (!is.is_open()) {
        report(Warning, "BnumMat::read_from_file()", kMissingBNumMatFile);
        return 0;
    }
    is >> *this;
    return 1;
}

int BnumMat::read_from_file(const my_string& name) {
    file_name = name;
    return read_from_file();
}

namespace {

bool is_possible_header(std::int32_t rows, std::int32_t cols) {
    return rows >= 0 && cols >= 0 && cols <= rows && number_of_cells(rows, cols) <= kMaxFileCells;
}

}  // namespace

std::istream& operator>>(std::istream& is, BnumMat& S) {
    if (!is) {
        report(Error, "operator>>(ifstream& is, BnumMat& S)", kInvalidStream);
        return is;
    }
    std::int32_t header[2] = {0, 0};  // rows, cols
    read_values(is, header, 2);
    if (!is || !is_possible_header(header[0], header[1])) {
        report(Error, "operator>>(istream& is, BnumMat& S)", kInvalidBNumMatFile);
        return is;
    }
    S.release();
    S.take_dimensions(header[0], header[1]);
    S.filled_ = false;
    for (std::int32_t i = 0; i < S.rows && is; ++i) {
        read_values(is, S.data[i], row_length(i, S.cols));
    }
    if (!is) report(Error, "operator>>(istream& is, BnumMat& M)", kInvalidStream);
    return is;
}

void next_b_numbers(long double* row, int genes, int k) {
    for (int j = std::min(genes, k); j > 1; --j)
        row[j - 1] = j == genes ? 1.0L : (j * row[j - 2] + (genes - 1.0L) * row[j - 1]) / genes;
    row[0] = 1.0L / genes;
}

std::vector<long double> long_b_numbers(int n, int k, const BnumMat& B) {
    const double* const cells = B.data[n - 1];
    if (std::all_of(cells, cells + k, [](double b) { return std::isfinite(b); })) return {cells, cells + k};
    std::vector<long double> row(static_cast<std::size_t>(k), 0.0L);
    row[0] = 1.0L;
    for (int genes = 2; genes <= n; ++genes)
        next_b_numbers(row.data(), genes, k);
    return row;
}

}  // namespace mnd
