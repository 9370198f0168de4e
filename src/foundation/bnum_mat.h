// Triangular table of the B numbers of the Ewens sampling formula.
//
// For a sample of n genes with k alleles, B(n, k) = k!/n! |s(n, k)|, where s(n, k) is the
// Stirling number of the first kind: it counts the allelic configurations under neutrality.
#pragma once

#include <cstdint>
#include <istream>
#include <memory>
#include <vector>

#include "foundation/my_string.h"

namespace mnd {

// Largest table that re_allocate_matrix makes.
constexpr int kMaxBnumRows = 5000;
constexpr int kMaxBnumCols = 1000;

class BnumMat {
public:
    // A zeroed table of rows of min(i + 1, n_cols) cells; a negative dimension is taken as 0.
    BnumMat(const int& n_rows, const int& n_cols);
    // The table in a file; empty when the file cannot be read.
    explicit BnumMat(const my_string& name);
    BnumMat(const BnumMat&) = delete;
    BnumMat& operator=(const BnumMat&) = delete;
    ~BnumMat() = default;

    // Makes and zeroes the rows; does nothing when there is storage already.
    void allocate_matrix();

    // Makes the table of n_rows genes and n_cols alleles and fills it:
    //
    //   B(n, n) = 1,  B(n, 1) = 1/n,  B(n, k) = (k B(n-1, k-1) + (n-1) B(n-1, k)) / n
    //
    // with B(n, k) in data[n - 1][k - 1]. Above kMaxBnumRows or kMaxBnumCols (or with a negative
    // dimension) it returns 0 and leaves no storage, with the old rows and cols in the fields;
    // otherwise 1. Rows that are there already are kept when n_cols is the present one.
    // Source:   Ewens 1972, Theoretical Population Biology 3:87-112; the recursion is that of the
    //           Stirling numbers
    int re_allocate_matrix(const int& n_rows, const int& n_cols);

    // Reads the table from file_name. Returns 0, with warning 8, when the file does not open,
    // otherwise 1, whatever the reading gave.
    int read_from_file();
    // Takes the name as file_name and reads it.
    int read_from_file(const my_string& name);

    double** data = nullptr;  // owned through row_pointers_: row i holds min(i + 1, cols) doubles
    my_string file_name;      // file behind the table; empty for a computed one
    std::int32_t rows = 0;    // genes
    std::int32_t cols = 0;    // alleles

private:
    friend std::istream& operator>>(std::istream& is, BnumMat& S);
    void take_dimensions(int n_rows, int n_cols);
    void release();
    void fill_row(int i);

    std::unique_ptr<double[]> cells_;          // owned: the cells, row after row
    std::unique_ptr<double*[]> row_pointers_;  // owned: the row pointers into cells_ that data shows
    bool filled_ = false;                      // the cells are B numbers, made by re_allocate_matrix
};

// Reads a table in its file form: rows and cols as 32-bit integers, then the rows of
// min(i + 1, cols) doubles, all little-endian. A stream that has failed before or at the end
// raises the error 9 (the cells read so far stay, the others are 0); a header that cannot be
// read, has cols above rows, a negative size or more cells than 100 million raises the error
// 10 and changes nothing.
std::istream& operator>>(std::istream& is, BnumMat& S);

// B(n, 1) .. B(n, k) in extended precision: those of the table B where they are finite. Of large
// samples they are beyond double precision, B(1558, 890) is the first; they are then formed anew.
//   n, k   1 <= k <= n, of at most B.rows and B.cols
std::vector<long double> long_b_numbers(int n, int k, const BnumMat& B);

// Takes the B numbers of one gene more: from B(genes - 1, j) to B(genes, j) at row[j - 1], j = 1 .. k,
// in place; genes of 2 or more.
void next_b_numbers(long double* row, int genes, int k);

}  // namespace mnd
