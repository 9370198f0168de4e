#include "foundation/rect_mat.h"

#include <algorithm>
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <numeric>
#include <utility>

#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/random.h"
#include "foundation/report.h"

namespace mnd {

namespace {

// Cells below the diagonal of a square matrix of n rows.
double number_of_pairs(std::int32_t n) {
    return (n - 1.0) * n / 2.0;
}

}  // namespace

RectMat::RectMat(const int& n_rows, const int& n_cols)
    : rows(std::max(n_rows, 0)), cols(std::max(n_cols, 0)) {
    allocate_matrix();
}

void RectMat::allocate_matrix() {
    if (data != nullptr || rows <= 0) return;
    const auto n_rows = static_cast<std::size_t>(rows);
    const auto n_cols = static_cast<std::size_t>(std::max(cols, 0));
    cells_ = std::make_unique<double[]>(n_rows * n_cols);
    row_pointers_ = std::make_unique<double*[]>(n_rows);
    for (std::size_t i = 0; i < n_rows; ++i) {
        row_pointers_[i] = cells_.get() + i * n_cols;
    }
    data = row_pointers_.get();
}

void RectMat::de_allocate_matrix() {
    row_pointers_.reset();
    cells_.reset();
    data = nullptr;
    rows = 0;
    cols = 0;
}

double& RectMat::cell_not_stored(int i, int j) const {
    zero = 0.0;
    one = 1.0;
    if (conventional != 0) return i == j ? zero : one;
    if (i >= rows || j >= cols) report(Error, "RectMat::operator()", kArrayOutOfBounds);
    return zero;
}

void RectMat::display_matrix(std::ostream& out) const {
    if (data == nullptr) {
        out << "Matrix contains no data" << '\n';
        return;
    }
    const FormatGuard guard(out);
    out << std::fixed << std::setprecision(5);
    for (std::int32_t i = 0; i < rows; ++i) {
        out << "   ";
        for (std::int32_t j = 0; j < cols; ++j) {
            out << data[i][j] << ' ';
        }
        out << '\n';
    }
}

void RectMat::create_index() {
    index.resize(static_cast<std::size_t>(rows));
    std::iota(index.begin(), index.end(), 0);
}

bool RectMat::has_index() const {
    return !index.empty() && index.size() >= static_cast<std::size_t>(rows);
}

void RectMat::permute_index() {
    if (!has_index()) return;
    for (long k = rows; k >= 1; --k) {
        long range = k;
        const long r = rand_long(&range);
        std::swap(index[static_cast<std::size_t>(r)], index[static_cast<std::size_t>(k - 1)]);
    }
}

double RectMat::computeZ(const RectMat& M) {
    if (rows != cols) {
        std::cout << "RectMat::Z(const RectMat& M) : unable to proceed on non-square matrix" << '\n';
        return 0.0;
    }
    if (!has_index()) {
        std::cout << "RectMat::Z(const RectMat& M) : index matrix not available, Z value cannot be computed"
                  << '\n';
        return 0.0;
    }
    if (data == nullptr || M.data == nullptr || M.rows < rows || M.cols < rows) return 0.0;
    const std::int32_t* const label = index.data();
    double sum = 0.0;
    for (std::int32_t i = 1; i < rows; ++i) {
        const double* const permuted_row = data[label[i]];
        const double* const fixed_row = M.data[i];
        for (std::int32_t j = 0; j < i; ++j) {
            sum += permuted_row[label[j]] * fixed_row[j];
        }
    }
    Z = sum;
    return Z;
}

double RectMat::sum_of_products(const RectMat& M) {
    if (rows != cols) {
        std::cout << "RectMat::sum_of_products(const RectMat& M) : unable to proceed on non-square matrix"
                  << '\n';
        return 0.0;
    }
    if (rows != M.rows) {
        std::cout << "RectMat::sum_of_products(const RectMat& M) : unable to compute correlation between "
                     "matrices of "
                     "different size"
                  << '\n';
        return 0.0;
    }
    computeZ(M);
    return Z - number_of_pairs(rows) * mean * M.mean;
}

double RectMat::compute_SSX() {
    if (rows != cols) {
        std::cout << "RectMat::compute_SSX() : unable to proceed on non-square matrix" << '\n';
        return 0.0;
    }
    double sum = 0.0;
    for (std::int32_t i = 1; i < rows; ++i) {
        for (std::int32_t j = 0; j < i; ++j) {
            sum += data[i][j];
        }
    }
    mean = sum / number_of_pairs(rows);
    SSX = 0.0;
    for (std::int32_t i = 1; i < rows; ++i) {
        for (std::int32_t j = 0; j < i; ++j) {
            const double deviation = data[i][j] - mean;
            SSX += deviation * deviation;
        }
    }
    return SSX;
}

}  // namespace mnd
