// The matrix of distances between haplotypes, read from a project or computed from its data.
#pragma once

#include <cstdint>
#include <fstream>
#include <istream>
#include <vector>

#include "foundation/my_string.h"
#include "foundation/tri_mat.h"
#include "input/profile.h"

namespace mnd {

// Where the labels of a matrix stand: on one line ahead of the rows, or before each row.
enum LabelPlace : int { kLabelsOnLine = 0, kLabelsInColumn = 1 };

// Rows of a matrix beyond which no reader makes one: its cells alone would take 0.9 GB.
inline constexpr int kMaxMatrixRows = 15000;

// Distances between haplotypes; rows are bound to haplotypes through the labels. With
// `conventional` set it holds no cells: 0 on the diagonal and 1 elsewhere.
class DistMat : public TriMat, public ProfileSettings {
public:
    std::int32_t LabelPosition = kLabelsOnLine;  // a LabelPlace
    my_string MatrixName;
    std::int32_t MatrixSize = 0;    // rows; 0: no matrix is defined
    std::vector<my_string> labels;  // label of each row, MatrixSize long; or empty

    // No matrix.
    DistMat();
    // No matrix yet, but a triangle of n zeroed rows.
    explicit DistMat(const int& n);
    DistMat(const DistMat& other);
    // Takes profile, name, size, label position, labels and cells of the other.
    DistMat& operator=(const DistMat& other);
    ~DistMat() = default;

    // n zeroed rows with empty labels. Throws std::bad_alloc when n is too big.
    void initializeMatrixAndArrays(const int& n);

    // No matrix, no name, no labels; the cells are zeroed, `conventional` becomes 0.
    void reset();

    // Reads labels and rows, from the line behind MatrixData={ to the closing brace
    // (dist_mat_section.cpp). MatrixSize and LabelPosition must stand. Row r has the r + 1 distances up
    // to the diagonal, which counts as it is written; more are dropped with a warning.
    //   external  a file of its own: it needs no brace
    //   line_no   running line number, raised for each line taken
    // Result: 1, or 0 after a report and a text in the log
    int ReadDistanceMatrix(std::istream& is, bool external, int& line_no);

    // Reads the section in its older syntax, in which layout does not count (free_form_matrix.cpp). The
    // stream stands behind "[[DistanceMatrix]]" and is left at the next section.
    // Result: 1; 0 after a word that is no keyword (warning 23) or a keyword that is refused (error 24)
    int get_settings(std::ifstream& is);

    // Reads the value of one lower-case keyword for `get_settings`. Result: 1, or 0, after a report for
    // any keyword but the name.
    int read_id_content(std::ifstream& is, my_string keyword);

    // Reads labels, if they stand on a line, and rows; the stream stands behind the opening brace, or at
    // the start of a file. MatrixSize and LabelPosition must stand. The rows may be wrapped: then all rows
    // of the first columns come first, and each further block begins at its own diagonal, with its labels
    // again if they stand in a column. Labels of a line are words without quotes; those of a column are
    // tokens, or stand in quotes. Values have no sign, begin with a digit, and are kept in single
    // precision.
    // Result: 1, or 0 after an error that names line (here: row) and column, from 1
    int read_MatrixData(std::ifstream& is);

    // Finds only where the matrix comes from: MatrixName becomes "none", "Defined In project
    // file", or the name of the external file. The stream stands behind "[[DistanceMatrix]]" and
    // is left at the next section.
    // Returns: 1; 0 after a word that is no keyword (warning 23)
    int get_mat_name(std::ifstream& is);

    // Puts the project's folder before a name without slash and backslash. Without settings
    // the name stays as it is, with a text in the log. out has kPathBuffer bytes.
    void build_ext_name(char* out, const char* name) const;

    // Writes the [[DistanceMatrix]] section in the form that is read again; nothing without a
    // matrix.
    void write_section(std::ostream& file) const;

private:
    friend std::ostream& operator<<(std::ostream& document, DistMat const& matrix);
    void write(std::ostream& os, bool in_document) const;
    bool read_matrix_source(std::ifstream& is);
    int read_matrix_size(std::ifstream& is);
    int read_label_position(std::ifstream& is);
    int read_haplotype_labels(std::ifstream& is);
    int read_matrix_data(std::ifstream& is);
    int read_external_matrix(std::ifstream& is);
};

// The same text for the result document: names are escaped, and under XML output the labels and the
// triangle each stand in their own tag.
std::ostream& operator<<(std::ostream& document, DistMat const& matrix);

}  // namespace mnd
