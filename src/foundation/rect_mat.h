// Rectangular matrix of doubles, with the statistics of the Mantel test.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <vector>

#include "foundation/my_string.h"

namespace mnd {

class RectMat {
public:
    // A zeroed matrix; a negative dimension is taken as 0.
    RectMat(const int& n_rows, const int& n_cols);
    RectMat(const RectMat&) = delete;
    RectMat& operator=(const RectMat&) = delete;
    ~RectMat() = default;

    // Makes and zeroes rows x cols cells; does nothing when there is storage already.
    void allocate_matrix();
    // Frees the cells: data is null, rows and cols are 0 after it. `index` stays.
    void de_allocate_matrix();

    // Cell (i, j). In conventional mode 0 on the diagonal and 1 off it, for any indices.
    // Otherwise i not below rows or j not below cols raises the error 1. A cell that is not
    // stored shows 0.0, and what is written to it is lost at the next call.
    double& operator()(const int& i, const int& j) const {
        if (conventional == 0 && i >= 0 && i < rows && j >= 0 && j < cols) return data[i][j];
        return cell_not_stored(i, j);
    }

    // Value that operator() shows, without a way to write.
    double get(const int& i, const int& j) const { return (*this)(i, j); }

    // Each row as three blanks, then its cells with 5 decimals, each followed by one blank, and a
    // line end; without storage "Matrix contains no data" and a line end.
    void display_matrix(std::ostream& out) const;

    // Makes `index` the identity of the rows.
    void create_index();

    // Shuffles `index`, from the top down (rand_long). Without an index it does nothing.
    // Draws:    rows, of which the last decides nothing
    void permute_index();

    // Mantel cross-product of this matrix, its rows and columns taken in the order of `index`,
    // with M, which stays fixed:
    //
    //   Z = sum_{i>j}  data[index[i]][index[j]]  M.data[i][j]
    //
    // This matrix must hold both triangles: a cell above the diagonal is read when index[i] is
    // below index[j]. A matrix that is not square or has no index says so on standard output
    // and gives 0.0; so does, without a word, an M that is smaller than this matrix.
    // Writes:   Z
    // Source:   Mantel 1967, Cancer Research 27:209-220
    double computeZ(const RectMat& M);

    // computeZ(M) - P mean M.mean, P = rows (rows - 1) / 2: the sum of products about the means.
    // Reads:    mean of both, set by compute_SSX beforehand
    // Writes:   Z
    // A matrix that is not square or has not the rows of M says so on standard output and
    // gives 0.0.
    double sum_of_products(const RectMat& M);

    // Sum of squared deviations of the cells below the diagonal from their mean. The order of
    // `index` does not matter to it. A matrix that is not square says so on standard output
    // and gives 0.0. One row alone has no mean (0 divided by 0).
    // Writes:   mean, SSX
    double compute_SSX();

    double** data = nullptr;          // owned through row_pointers_: rows arrays of cols doubles
    std::int32_t rows = 0;            // rows of data
    std::int32_t cols = 0;            // columns of data
    std::int32_t conventional = 0;    // non-zero: conventional matrix, 0 on the diagonal and 1 off it
    mutable double zero = 0.0;        // cell handed out for what reads as 0; set again on each use
    mutable double one = 1.0;         // cell handed out for what reads as 1; set again on each use
    my_string file_name;              // file behind the matrix; empty for one built in memory
    double mean = 0.0;                // mean below the diagonal, by compute_SSX
    double SSX = 0.0;                 // sum of squared deviations from mean, by compute_SSX
    std::vector<std::int32_t> index;  // permutation of the labels; empty until create_index
    double Z = 0.0;                   // result of the last computeZ

private:
    double& cell_not_stored(int i, int j) const;
    bool has_index() const;

    std::unique_ptr<double[]> cells_;          // owned: rows x cols doubles, row after row
    std::unique_ptr<double*[]> row_pointers_;  // owned: the row pointers into cells_ that data shows
};

}  // namespace mnd
