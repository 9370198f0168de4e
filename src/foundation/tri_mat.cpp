#include "foundation/tri_mat.h"

#include <algorithm>
#include <cstddef>
#include <iomanip>

#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"

namespace mnd {

namespace {

std::size_t number_of_cells(std::int32_t dim) {
    const auto n = static_cast<std::size_t>(dim);
    return n * (n + 1) / 2;
}

}  // namespace

TriMat::TriMat(const int& new_dim) : dim(std::max(new_dim, 0)) {
    allocate_matrix();
}

TriMat::TriMat(const TriMat& other) {
    *this = other;
}

void TriMat::create(const int& new_dim) {
    const int size = std::max(new_dim, 0);  // new_dim may be our own dim
    destroy();
    dim = size;
    allocate_matrix();
}

void TriMat::destroy() {
    rows_.reset();
    cells_.reset();
    data = nullptr;
    dim = 0;
}

void TriMat::delete_matrix() {
    destroy();
}

void TriMat::allocate_matrix() {
    data = nullptr;
    if (dim <= 0) return;
    cells_ = std::make_unique<double[]>(number_of_cells(dim));
    rows_ = std::make_unique<double*[]>(static_cast<std::size_t>(dim));
    double* row = cells_.get();
    for (std::int32_t i = 0; i < dim; ++i) {
        rows_[static_cast<std::size_t>(i)] = row;
        row += i + 1;
    }
    data = rows_.get();
}

void TriMat::initialize() {
    if (data != nullptr) std::fill_n(cells_.get(), number_of_cells(dim), 0.0);
}

double& TriMat::cell_not_stored(int row, int col) const {
    zero = 0.0;
    one = 1.0;
    if (conventional != 0) return row == col ? zero : one;
    if (col < 0 || row > dim) report(Warning, "TriMat::operator()", kArrayOutOfBounds);
    return zero;
}

TriMat& TriMat::operator=(const TriMat& other) {
    if (this == &other) return *this;
    create(other.dim);
    for (std::int32_t i = 0; i < dim; ++i) {
        for (std::int32_t j = 0; j <= i; ++j) {
            data[i][j] = other(i, j);
        }
    }
    return *this;
}

void TriMat::add_cells(const TriMat& other, const char* function_name) {
    if (dim != other.dim) {
        report(Error, function_name, kMatricesOfDifferentSize);
        return;
    }
    for (std::int32_t i = 0; i < dim; ++i) {
        for (std::int32_t j = 0; j <= i; ++j) {
            data[i][j] += other(i, j);
        }
    }
}

TriMat& TriMat::operator+=(const TriMat& other) {
    add_cells(other, "TriMat::operator+=()");
    return *this;
}

TriMat& TriMat::operator*=(const TriMat& other) {
    add_cells(other, "TriMat::operator*=()");
    return *this;
}

void TriMat::print_data(std::ostream& out) const {
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::showpoint << std::setprecision(5);
    for (std::int32_t i = 0; i < dim; ++i) {
        if (i > 0) out << '\n';
        for (std::int32_t j = 0; j <= i; ++j) {
            out << std::setw(10) << data[i][j];
        }
    }
}

}  // namespace mnd
