// The rows of the [[DistanceMatrix]] section, with their labels.
#include <ostream>
#include <string>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/dist_mat.h"
#include "input/matrix_rows.h"
#include "run/errors.h"

namespace mnd {

namespace {

constexpr char kReporter[] = "DistMat::ReadDistanceMatrix()";

bool refuse(int code) {
    report(Error, kReporter, code);
    return false;
}

my_string text_of(std::string_view token) {
    return my_string(std::string(token).c_str());
}

// Reads one matrix into its labels and cells. A step is false after its text in the log and its error.
class MatrixReader {
public:
    MatrixReader(DistMat& matrix, std::istream& is, int& line_no) : matrix_(matrix), lines_(is, line_no) {}

    bool read_label_line();
    bool read_rows();
    bool read_end();

private:
    bool read_row(int r);
    bool read_cell(int r, int j, std::string_view token);
    bool missing_label(int found, my_string const& last);

    DistMat& matrix_;  // not owned
    MatrixLines lines_;
};

bool MatrixReader::read_label_line() {
    lines_.next_with_tokens();
    if (lines_.closed()) {
        *_AOS_ << "\tUnexpected closing brace found on line " << lines_.number()
               << ". Aborting reading distance matrix." << std::endl;
        return refuse(kErrorWhileReadingHaplotypeLabels);
    }
    RowTokens tokens(lines_.text());
    my_string last;
    for (int i = 0; i < matrix_.MatrixSize; ++i) {
        if (tokens.at_end()) return missing_label(i, last);
        last = text_of(tokens.next());
        matrix_.labels[static_cast<std::size_t>(i)] = last;
    }
    if (tokens.at_end()) return true;
    *_AOS_ << "\tWarning: More labels than anticipated (" << matrix_.MatrixSize << ") are declared on line "
           << lines_.number() << std::endl;
    report(Warning, kReporter, kInvalidMatrixSize);
    return true;
}

bool MatrixReader::missing_label(int found, my_string const& last) {
    *_AOS_ << "\tMissing labels on line " << lines_.number() << ". Only " << found
           << " labels were found while " << matrix_.MatrixSize
           << " were expected. Last correctly read label was \"" << last
           << "\". Aborting reading Distance Matrix" << std::endl;
    return refuse(kErrorWhileReadingHaplotypeLabels);
}

// A brace in a row ends the matrix, whatever was expected.
bool MatrixReader::read_rows() {
    int rows = 0;
    while (rows < matrix_.MatrixSize && lines_.next()) {
        if (!read_row(rows)) return false;
        ++rows;
    }
    if (rows == matrix_.MatrixSize) return true;
    *_AOS_ << "\tInvalid dimension for distance matrix: " << matrix_.MatrixSize
           << " rows were expected, but only " << rows << " were found. Aborting reading project."
           << std::endl;
    return refuse(kDistanceMatrixReadError);
}

// Row r: its label, if labels stand in a column, and the cells up to the diagonal.
bool MatrixReader::read_row(int r) {
    RowTokens tokens(lines_.text());
    if (matrix_.LabelPosition == kLabelsInColumn) {
        if (tokens.at_end()) {
            *_AOS_ << "\tUnable to read label #" << r + 1 << " on line " << lines_.number()
                   << ". Aborting reading Distance Matrix" << std::endl;
            return refuse(kErrorWhileReadingHaplotypeLabels);
        }
        matrix_.labels[static_cast<std::size_t>(r)] = text_of(tokens.next());
    }
    for (int j = 0; j <= r; ++j) {
        if (!read_cell(r, j, tokens.next())) return false;
    }
    if (tokens.at_end()) return true;
    *_AOS_ << "\tWarning:  Too many distances are defined on line " << lines_.number() << "(" << r + 2
           << " instead of " << r + 1 << ")" << std::endl;
    report(Warning, kReporter, kInvalidMatrixSize);
    return true;
}

bool MatrixReader::read_cell(int r, int j, std::string_view token) {
    if (token.empty()) {
        *_AOS_ << "\tUnable to read distance #" << j + 1 << " on line " << lines_.number()
               << ". Aborting reading distance matrix." << std::endl;
        return refuse(kDistanceMatrixReadError);
    }
    if (read_distance(token, matrix_(r, j))) return true;
    *_AOS_ << "\tBad value (\"" << token << "\") for distance #" << j + 1 << " on line " << lines_.number()
           << ". Aborting reading distance matrix." << std::endl;
    return refuse(kDistanceMatrixReadError);
}

bool MatrixReader::read_end() {
    if (lines_.go_to_closing_brace()) return true;
    *_AOS_ << "\tNo closing brace in Matrix Data \"" << matrix_.MatrixName << "\"definition."
           << " Aborting reading project." << std::endl;
    return refuse(kDistanceMatrixDataReadError);
}

}  // namespace

int DistMat::ReadDistanceMatrix(std::istream& is, bool external, int& line_no) {
    MatrixReader reader(*this, is, line_no);
    if (LabelPosition == kLabelsOnLine && !reader.read_label_line()) return 0;
    if (!reader.read_rows()) return 0;
    return external || reader.read_end() ? 1 : 0;
}

}  // namespace mnd
