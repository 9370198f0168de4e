// Symmetric matrix of doubles, stored as its lower triangle with the diagonal.
//
// Molecular distance matrices, the pairwise tables of the linkage tests and the tables of
// the Mantel section are of this form. Since (i, j) and (j, i) are one cell, a table that
// needs different values above and below the diagonal is a RectMat.
#pragma once

#include <cstdint>
#include <memory>
#include <ostream>

namespace mnd {

class TriMat {
public:
    // A zeroed matrix of new_dim rows; below 1 a matrix without storage (dim 0, data null).
    explicit TriMat(const int& new_dim);
    // A copy holds the cells that the source shows; it is not conventional itself.
    TriMat(const TriMat& other);
    ~TriMat() = default;

    // Frees the old storage and makes a zeroed matrix of new_dim rows.
    void create(const int& new_dim);
    // Frees the storage: data is null and dim 0 after it. Does nothing when dim is 0.
    void destroy();
    // The same as destroy.
    void delete_matrix();
    // Makes and zeroes the rows for the present dim.
    void allocate_matrix();
    // Writes 0.0 to every stored cell.
    void initialize();

    // Cell (i, j), which is also cell (j, i). In conventional mode 0 on the diagonal and 1 off
    // it, for any indices. Otherwise a negative index or one larger than dim raises the
    // warning 1; it and an index of exactly dim, which the test lets pass, show 0.0. What is
    // written to a cell that is not stored is lost at the next call.
    double& operator()(const int& i, const int& j) const {
        const int row = i < j ? j : i;
        const int col = i < j ? i : j;
        if (conventional == 0 && col >= 0 && row < dim) return data[row][col];
        return cell_not_stored(row, col);
    }

    // Value that operator() shows, without a way to write.
    double get(const int& i, const int& j) const { return (*this)(i, j); }

    // Takes dim and the cells that the source shows: a conventional one gives its pattern of
    // 0 and 1 as stored data. `conventional` itself is not taken over.
    TriMat& operator=(const TriMat& other);

    // Adds the other matrix cell by cell. Different sizes: error 44, nothing changes.
    TriMat& operator+=(const TriMat& other);

    // Kept on purpose: adds, as += does. Test: TriMat.MultiplyAssignAdds
    TriMat& operator*=(const TriMat& other);

    // Row by row the i + 1 stored cells of row i, each in fixed notation in a width of 10 with
    // 5 decimals; a line end before each row but the first, none after the last.
    void print_data(std::ostream& out) const;

    std::int32_t dim = 0;           // rows; 0 means no storage
    double** data = nullptr;        // owned through rows_: row i holds i + 1 doubles
    mutable double zero = 0.0;      // cell handed out for what reads as 0; set again on each use
    mutable double one = 1.0;       // cell handed out for what reads as 1; set again on each use
    std::int32_t conventional = 0;  // non-zero: conventional FST matrix, 0 on the diagonal and 1 off it

private:
    double& cell_not_stored(int row, int col) const;
    void add_cells(const TriMat& other, const char* function_name);

    std::unique_ptr<double[]> cells_;  // owned: dim (dim + 1) / 2 doubles, row after row
    std::unique_ptr<double*[]> rows_;  // owned: the row pointers into cells_ that data shows
};

}  // namespace mnd
