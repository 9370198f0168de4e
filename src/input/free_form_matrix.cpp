// The distance matrix section in its older syntax, in which layout does not count, and the search for
// the source of its matrix.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <istream>
#include <limits>
#include <new>
#include <ostream>
#include <string>
#include <string_view>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/data_line.h"
#include "input/dist_mat.h"
#include "input/keyword_reader.h"
#include "run/errors.h"
#include "run/process.h"

namespace mnd {

namespace {

constexpr char kGetSettings[] = "DistMat::get_settings( ifstream& ifs)";
constexpr char kReadContent[] = "DistMat::read_id_content()";
constexpr char kReadMatrix[] = "DistMat::read_MatrixData()";

bool refuse(const char* reader, int code) {
    report(Error, reader, code);
    return false;
}

int refuse_content(int code) {
    return refuse(kReadContent, code) ? 1 : 0;
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// ---- Tokens

// The characters up to one of the stop characters, which stays in the stream, to white space, which
// stays too, or to a zero byte or the byte 0xFF, which is consumed.
std::string take_token(std::istream& is, std::string_view stops) {
    std::string token;
    for (int c = is.peek(); c != kEndOfStream; c = is.peek()) {
        const char next = static_cast<char>(c);
        if (std::string_view(" \t\r\n").find(next) != std::string_view::npos) break;
        if (stops.find(next) != std::string_view::npos) break;
        is.get();
        if (next == '\0' || next == '\xFF') break;
        token += next;
    }
    return token;
}

// Whether nothing but blanks and perhaps a comment is left on this line, which then is consumed. Any
// other character stays, such as a sign that is no ASCII character.
bool passes_end_of_line(std::istream& is) {
    while (is.peek() == ' ' || is.peek() == '\t' || is.peek() == '\r')
        is.get();
    const int c = is.peek();
    if (c != '\n' && c != '#' && c != kEndOfStream) return false;
    is.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    return true;
}

// Takes the digits at the start of the text; their number.
std::size_t take_digits(std::string_view& text) {
    std::size_t digits = 0;
    while (digits < text.size() && is_digit(text[digits]))
        ++digits;
    text.remove_prefix(digits);
    return digits;
}

// Whether my_atof takes the text for the number that it is to a reader: digits, perhaps a point with
// more digits, and only behind a point an exponent.
bool is_plain_number(std::string_view text) {
    constexpr std::size_t kMostDigits = 18;  // what 64 bits hold
    constexpr std::size_t kMostExponentDigits = 4;
    const std::size_t digits = take_digits(text);
    if (digits == 0 || digits > kMostDigits) return false;
    if (text.empty()) return true;
    if (text.front() != '.') return false;
    text.remove_prefix(1);
    take_digits(text);
    if (text.empty()) return true;
    if (text.front() != 'e' && text.front() != 'd') return false;
    text.remove_prefix(1);
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
    const std::size_t exponent_digits = take_digits(text);
    return text.empty() && exponent_digits > 0 && exponent_digits <= kMostExponentDigits;
}

// A distance, narrowed to single precision; false when it is no number or too large for that.
bool parse_distance(std::string const& token, float& value) {
    if (!is_plain_number(token)) return false;
    const double read = my_atof(token.c_str());
    if (!(std::fabs(read) <= static_cast<double>(std::numeric_limits<float>::max()))) return false;
    value = static_cast<float>(read);
    return true;
}

// ---- The body of a matrix

// Reads labels and cells of one matrix. A step is false after its error.
class MatrixBody {
public:
    MatrixBody(DistMat& matrix, std::istream& is) : matrix_(matrix), is_(is) {}

    bool read_label_line();
    bool read_blocks();

private:
    bool read_row(int r);
    bool read_row_label(int r);
    bool end_row(int r, int k);
    bool read_cell(int r, int k);
    bool fail_at(const char* format, int first, int second) const;
    my_string& label(int r) { return matrix_.labels[static_cast<std::size_t>(r)]; }

    static constexpr const char* kTooLong =
        "DistMat::read_MatrixData()->Line %d contains more than %d distances.";
    static constexpr const char* kNoDistance = "DistMat::read_MatrixData()->line %d, column %d";
    static constexpr const char* kBadDistance = "DistMat::read_MatrixData() (line %d, column %d)";

    DistMat& matrix_;  // not owned
    std::istream& is_;
    int first_ = 0;  // column at which the block under work begins
    int width_ = 0;  // columns of that block
};

bool MatrixBody::fail_at(const char* format, int first, int second) const {
    char origin[120];
    std::snprintf(origin, sizeof origin, format, first, second);
    return refuse(origin, kDistanceMatrixReadError);
}

bool MatrixBody::read_label_line() {
    peek_data(is_);
    for (int r = 0; r < matrix_.MatrixSize; ++r) {
        while (is_.peek() == ' ' || is_.peek() == '\t' || is_.peek() == '\r')
            is_.get();
        if (!is_letter_or_digit(is_.peek()) || !get_qstring(is_, label(r)))
            return refuse(kReadMatrix, kMissingHaplotypeLabels);
    }
    return passes_end_of_line(is_) || refuse(kReadMatrix, kErrorWhileReadingHaplotypeLabels);
}

bool MatrixBody::read_blocks() {
    for (first_ = 0; first_ < matrix_.MatrixSize; first_ += width_) {
        width_ = matrix_.MatrixSize - first_;
        for (int r = first_; r < matrix_.MatrixSize; ++r) {
            if (!read_row(r)) return false;
        }
    }
    // One character belongs to the last value, unless it means something by itself.
    if (is_.peek() != '}' && is_.peek() != '#') is_.get();
    return true;
}

// The part of row r that lies in the block.
bool MatrixBody::read_row(int r) {
    peek_data(is_);
    if (matrix_.LabelPosition == kLabelsInColumn && !read_row_label(r)) return false;
    for (int k = 0; first_ + k <= r; ++k) {
        const bool full = k == width_;
        if (passes_end_of_line(is_)) return full || end_row(r, k);
        if (full) return fail_at(kNoDistance, r + 1, first_ + k + 1);
        if (!read_cell(r, k)) return false;
    }
    return true;
}

// A label in quotes, or a token. Every block repeats the labels of its rows.
bool MatrixBody::read_row_label(int r) {
    my_string read;
    if (is_.peek() == '"' || is_.peek() == '\'') {
        if (!get_qstring(is_, read)) return refuse(kReadMatrix, kMissingHaplotypeLabels);
    } else {
        read = take_token(is_, "}#").c_str();
    }
    const bool repeats = !read.is_null() && (first_ == 0 || read == label(r));
    if (!repeats) return refuse(kReadMatrix, kMissingHaplotypeLabels);
    label(r) = read;
    return true;
}

// The line ends ahead of cell k of the block. Just before the diagonal it tells how wide the block is.
bool MatrixBody::end_row(int r, int k) {
    if (first_ + k != r) return fail_at(kTooLong, r, r);
    if (k == 0) return fail_at(kNoDistance, r + 1, first_ + k + 1);  // a block without columns
    width_ = k;
    return true;
}

bool MatrixBody::read_cell(int r, int k) {
    if (!is_digit(static_cast<char>(is_.peek()))) return fail_at(kNoDistance, r + 1, first_ + k + 1);
    float value = 0.0F;
    if (!parse_distance(take_token(is_, "}#"), value)) return fail_at(kBadDistance, r + 1, first_ + k + 1);
    matrix_(r, first_ + k) = static_cast<double>(value);
    return true;
}

}  // namespace

// ---- The section

int DistMat::get_settings(std::ifstream& is) {
    my_string keyword;
    while (get_next_ident(is, keyword)) {
        if (!is_identifier(keyword)) {
            report(Warning, kGetSettings, kUnexpectedDistanceMatrixKeyword);
            return 0;
        }
        if (read_id_content(is, keyword) == 0) {
            report(Error, kGetSettings, kDistanceMatrixSectionReadError);
            return 0;
        }
    }
    return 1;
}

int DistMat::read_id_content(std::ifstream& is, my_string keyword) {
    if (keyword == "matrixname") return get_qstring(is, MatrixName) ? 1 : 0;
    if (keyword == "matrixsize") return read_matrix_size(is);
    if (keyword == "labelposition") return read_label_position(is);
    if (keyword == "hapllabels") return read_haplotype_labels(is);
    if (keyword == "matrixdata") return read_matrix_data(is);
    return refuse_content(kMatrixDataNotFound);
}

int DistMat::read_matrix_size(std::ifstream& is) {
    long long size = 0;
    if (!(is >> size) && size == 0) return refuse_content(kNoMatrixSize);
    if (size < 0) return refuse_content(kInvalidMatrixSize);
    try {
        if (size > kMaxMatrixRows) throw std::bad_alloc();
        initializeMatrixAndArrays(static_cast<int>(size));
    } catch (const std::bad_alloc&) {
        *_AOS_ << "\tUnable to allocate memory for distance matrix \"" << MatrixName << "\". Required size ("
               << size << ") is probably too big..." << std::endl;
        return refuse_content(kInvalidMatrixSize);
    }
    return 1;
}

int DistMat::read_label_position(std::ifstream& is) {
    my_string place;
    const bool read = get_qstring(is, place);
    place.to_upper();
    if (read && place == "LINE") {
        LabelPosition = kLabelsOnLine;
    } else if (read && place == "COLUMN") {
        LabelPosition = kLabelsInColumn;
    } else {
        return refuse_content(kInvalidLabelPosition);
    }
    return 1;
}

// A brace ends the labels, also right behind the last one.
int DistMat::read_haplotype_labels(std::ifstream& is) {
    for (int c = peek_data(is); c != '{'; c = peek_data(is)) {
        if (c == kEndOfStream) return refuse_content(kMissingHaplotypeLabels);
        is.get();
    }
    is.get();
    const auto size = static_cast<std::size_t>(std::max(MatrixSize, 0));
    labels.assign(size, my_string());
    std::size_t read = 0;
    while (peek_data(is) != '}') {
        const std::string token = take_token(is, "}");
        if (token.empty() || read == size) return refuse_content(kMissingHaplotypeLabels);
        labels[read++] = token.c_str();
    }
    is.get();
    return read == size && size > 0 ? 1 : refuse_content(kMissingHaplotypeLabels);
}

int DistMat::read_matrix_data(std::ifstream& is) {
    if (MatrixSize <= 0) return refuse_content(kNoMatrixSize);
    labels.assign(static_cast<std::size_t>(MatrixSize), my_string());
    const int c = peek_data(is);
    if (is_letter_or_digit(c)) return read_external_matrix(is);
    if (c != '{') return refuse_content(kDistanceMatrixDataReadError);
    is.get();
    if (read_MatrixData(is) == 0) return 0;
    if (peek_data(is) != '}') return refuse_content(kErrorWhileReadingHaplotypeLabels);
    is.get();
    return 1;
}

int DistMat::read_external_matrix(std::ifstream& is) {
    my_string word;
    if (!get_qstring(is, word)) return refuse_content(kDistanceMatrixDataReadError);
    word.to_upper();
    if (!(word == "EXTERN")) return refuse_content(kMissingExternalMatrixName);
    my_string name;
    if (!get_qstring(is, name)) return refuse_content(kReadingExternalDistanceMatrix);
    char path[kPathBuffer];
    build_ext_name(path, name.c_str());
    if (!file_opens(path)) return refuse_content(kExternalDistanceMatrixReadError);
    std::ifstream external(path);
    const bool read = read_MatrixData(external) != 0;
    // Values that are left say that the rows are not those of a triangle.
    const int rest = read ? peek_data(external) : kEndOfStream;
    if (!read || (rest != kEndOfStream && rest != '}'))
        return refuse_content(kExternalDistanceMatrixReadError);
    MatrixName = name;
    return 1;
}

int DistMat::read_MatrixData(std::ifstream& is) {
    labels.resize(static_cast<std::size_t>(std::max(MatrixSize, 0)));
    MatrixBody body(*this, is);
    const bool labelled = LabelPosition != kLabelsOnLine || body.read_label_line();
    return labelled && body.read_blocks() ? 1 : 0;
}

// ---- Its source

namespace {

// Passes over a block in braces, which ends at the latest where another section begins.
void pass_over_block(std::istream& is) {
    for (int c = is.peek(); c != kEndOfStream && c != '['; c = is.peek()) {
        is.get();
        if (c == '}') return;
    }
}

// Where on a line, behind the value it begins with, another keyword begins; npos without one.
std::size_t next_keyword(std::string_view line) {
    line = line.substr(0, line.find('#'));
    const std::size_t value = line.find_first_not_of(" \t");
    if (value == std::string_view::npos) return value;
    const bool quoted = line[value] == '"' || line[value] == '\'';
    const std::size_t end = quoted ? line.find(line[value], value + 1) : line.find_first_of(" \t", value);
    if (end == std::string_view::npos || line.find('=', end) == std::string_view::npos)
        return std::string_view::npos;
    return line.find_first_not_of(" \t", end + 1);
}

// Passes over a value: a block, which may begin on a later line, or what stands on this line up to
// its end or to another keyword.
void pass_over_value(std::istream& is) {
    const bool empty_line = test_end_of_line(is);
    if (peek_beyond_comments(is) == '{') return pass_over_block(is);
    if (empty_line) return;
    const std::istream::off_type start = is.tellg();
    std::string line;
    std::getline(is, line);
    const std::size_t keyword = next_keyword(line);
    if (keyword == std::string::npos) return;
    is.clear();
    is.seekg(start + static_cast<std::istream::off_type>(keyword));
}

}  // namespace

int DistMat::get_mat_name(std::ifstream& is) {
    MatrixName = "none";
    my_string keyword;
    while (get_next_ident(is, keyword)) {
        if (!is_identifier(keyword)) {
            report(Warning, kGetSettings, kUnexpectedDistanceMatrixKeyword);
            return 0;
        }
        const bool external = keyword == "matrixdata" && read_matrix_source(is);
        if (!external) pass_over_value(is);
    }
    return 1;
}

bool DistMat::read_matrix_source(std::ifstream& is) {
    MatrixName = "Defined In project file";
    if (peek_beyond_comments(is) == '{') return false;
    my_string word;
    if (!get_qstring(is, word) || !(word == "EXTERN")) return false;
    return get_qstring(is, MatrixName);
}

}  // namespace mnd
