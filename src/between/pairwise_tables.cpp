#include "between/pairwise_tables.h"

#include <cmath>
#include <cstddef>
#include <iomanip>
#include <string>

#include "between/amova_tables.h"
#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "foundation/my_string.h"
#include "results/citations.h"
#include "results/xml_tags.h"
#include "run/settings.h"

namespace mnd {

std::ofstream* ofs_pairw_dist = nullptr;
std::ofstream* ofs_FST_dist = nullptr;
std::ofstream* ofs_varComp_dist = nullptr;
std::ofstream* ofs_pairw_diffs = nullptr;
std::ofstream* ofs_tau_uneq = nullptr;
std::ofstream* ofs_concest = nullptr;
std::ofstream* ofs_slatkins = nullptr;
std::ofstream* ofs_NM_vals = nullptr;

namespace {

constexpr int kDecimals = 5;
constexpr int kNumberWidth = 6;            // of the numbers of rows
constexpr int kCellWidth = kDecimals + 7;  // of a value, the blank ahead of it included
constexpr std::size_t kBannerWidth = 86;

constexpr const char* kNotConverged =
    "\nAn * denotes the cases where the estimation of divergence time did not converge\n";

std::string rule(std::size_t width, char c) {
    return std::string(width, c) + '\n';
}

// A title between lines; `second_line` stands below it, if it is not empty.
void print_title(std::ostream& out, const std::string& title, const std::string& second_line = "") {
    out << "\n\n" << rule(title.size(), '-') << title << '\n' << second_line;
    if (!second_line.empty()) out << '\n';
    out << rule(title.size(), '-');
}

// Which cells of a row are printed.
enum class Cells { kBelowDiagonal, kWithDiagonal, kAll };

// A table with numbers from 1 as header and first column.
//   mark_width          characters behind each value
//   print_cell(i, j)    writes a value of kCellWidth and its mark, or as many blanks
template <class PrintCell>
void print_matrix(std::ostream& out, int P, Cells cells, int mark_width, PrintCell print_cell) {
    const FormatGuard guard(out);
    out << std::fixed << std::showpoint << std::right << std::setprecision(kDecimals) << '\n'
        << std::setw(kNumberWidth) << "";
    for (int j = 0; j < P; ++j)
        out << std::setw(kCellWidth) << j + 1 << std::setw(mark_width) << "";
    out << '\n';
    for (int i = 0; i < P; ++i) {
        out << std::setw(kNumberWidth) << i + 1;
        const int end = cells == Cells::kAll ? P : cells == Cells::kWithDiagonal ? i + 1 : i;
        for (int j = 0; j < end; ++j)
            print_cell(i, j);
        out << '\n';
    }
}

// A value with a blank ahead of it, however wide it is.
void print_value(std::ostream& out, double value) {
    out << ' ' << std::setw(kCellWidth - 1) << value;
}

void print_triangle(std::ostream& out, const TriMat& matrix, Cells cells = Cells::kWithDiagonal) {
    print_matrix(out, matrix.dim, cells, 0, [&](int i, int j) { print_value(out, matrix(i, j)); });
}

template <class Table>
void print_tagged(std::ostream& out, const char* element, Table table) {
    const TXmlTag tag{my_string(element)};
    open_table(out, tag);
    table();
    close_table(out, tag);
}

void print_banner(std::ostream& out) {
    const std::string line(kBannerWidth, '=');
    out << '\n' << line << "\n== Comparisons of pairs of population samples\n" << line << '\n';
}

void print_labels(std::ostream& out, const PairwiseResults& results) {
    out << "\nList of labels for population samples used below:\n\n";
    print_tagged(out, "pairDistPopLabels", [&] {
        out << "Label  \tPopulation name\n"
            << "-----  \t---------------\n";
        for (int i = 0; i < results.P; ++i)
            out << "  " << i + 1 << ":\t" << escape_text(results.names[static_cast<std::size_t>(i)]) << '\n';
    });
}

void print_fst(std::ostream& out, settings& s, const PairwiseResults& results) {
    print_title(out, "Population pairwise FSTs");
    print_distance_line(out, s);
    print_tagged(out, "PairFstMat", [&] { print_triangle(out, results.fst); });
}

bool is_significant(const settings& s, const PairwiseResults& results, int i, int j) {
    return results.fst_p(i, j) < s.FSTSignifLevel;
}

void print_fst_p_values(std::ostream& out, const settings& s, const PairwiseResults& results) {
    print_title(out, "FST P values");
    out << "\nNumber of permutations : " << results.num_perm << '\n';
    print_tagged(out, "PairFstPvalMat", [&] {
        print_matrix(out, results.P, Cells::kBelowDiagonal, 3, [&](int i, int j) {
            print_value(out, results.fst_p(i, j));
            out << (is_significant(s, results, i, j) ? "  *" : "   ");
        });
    });
}

void print_significant_fst(std::ostream& out, const settings& s, const PairwiseResults& results) {
    print_title(out, "Matrix of significant Fst P values");
    out << std::fixed << std::setprecision(4) << "\nSignificance Level=" << s.FSTSignifLevel << '\n';
    print_matrix(out, results.P, Cells::kAll, 0, [&](int i, int j) {
        const char* const mark = i == j ? " " : is_significant(s, results, i, j) ? "+" : "-";
        out << std::setw(kCellWidth) << mark;
    });
}

void print_differences(std::ostream& out, const PairwiseResults& results) {
    print_title(out, "Population average pairwise differences");
    out << "\nAbove diagonal    : Average number of pairwise differences between populations (PiXY)"
           "\nDiagonal elements : Average number of pairwise differences within population (PiX)"
           "\nBelow diagonal    : Corrected average pairwise difference (PiXY-(PiX+PiY)/2)\n";
    print_tagged(out, "pairwiseDifferenceMatrix", [&] {
        print_matrix(out, results.P, Cells::kAll, 0,
                     [&](int i, int j) { print_value(out, results.pi(i, j)); });
    });
}

void print_p_values(std::ostream& out, const char* title, const TriMat& p) {
    print_title(out, title);
    print_triangle(out, p, Cells::kBelowDiagonal);
}

void print_delta_mu(std::ostream& out, const PairwiseResults& results) {
    print_title(out, "Delta mu-square distance between all pairs of populations");
    References(out, Citation::Goldstein_1995);
    print_triangle(out, results.delta_mu);
}

// Results of the solver, with a star where it found no root.
void print_solved(std::ostream& out, const TriMat& values, const PairwiseResults& results) {
    print_matrix(out, results.P, Cells::kBelowDiagonal, 1, [&](int i, int j) {
        print_value(out, values(i, j));
        out << (results.not_converged(i, j) != 0.0 ? '*' : ' ');
    });
    out << kNotConverged;
}

void print_divergence(std::ostream& out, const PairwiseResults& results) {
    print_title(out, "Divergence times allowing for unequal population sizes (tau)");
    References(out, Citation::Gaggiotti_Excoffier_2000);
    print_title(out, "tau values");
    print_tagged(out, "tauMatrix", [&] { print_solved(out, results.tau, results); });
    if (results.tested) print_p_values(out, "tau P values", results.tau_p);
    print_title(out, "Unequal population sizes (k)");
    print_solved(out, results.k_ratio, results);
    if (results.tested) print_p_values(out, "k P values", results.k_p);
    print_title(out, "Ancestral population sizes (theta0)");
    print_tagged(out, "ancestralPopSize", [&] { print_solved(out, results.theta0, results); });
    if (results.tested) print_p_values(out, "theta0 P values", results.theta0_p);
}

// --- Transforms of FST

// How one of them is printed.
struct Transform {
    double (*of)(double F);
    bool is_zero_below_zero;  // an F below 0 shows as a bare 0
};
constexpr Transform kCoancestry = {coancestry, true};
constexpr Transform kSlatkin = {slatkin_distance, true};
constexpr Transform kMigrants = {migrants, false};

void print_transformed(std::ostream& out, double F, const Transform& transform) {
    const double value = transform.of(F);
    if (transform.is_zero_below_zero && F < 0.0) {
        out << std::setw(kCellWidth) << "0";
    } else if (std::isinf(value)) {
        out << std::setw(kCellWidth) << "inf";
    } else {
        print_value(out, value);
    }
}

void print_transforms(std::ostream& out, const TriMat& fst, const Transform& transform) {
    print_matrix(out, fst.dim, Cells::kWithDiagonal, 0,
                 [&](int i, int j) { print_transformed(out, fst(i, j), transform); });
}

constexpr const char* kUnitOfTime = "(M=N for haploid data, M=2N for diploid data)";

void print_coancestry(std::ostream& out, const PairwiseResults& results) {
    print_title(out, "Matrix of coancestry coefficients as t/M=-ln(1-FST)", kUnitOfTime);
    References(out, Citation::Reynolds_1983);
    print_tagged(out, "coancestryCoefficients", [&] { print_transforms(out, results.fst, kCoancestry); });
}

void print_slatkin(std::ostream& out, const PairwiseResults& results) {
    print_title(out, "Matrix of Slatkin linearized FSTs as t/M=FST/(1-FST)", kUnitOfTime);
    References(out, Citation::Slatkin_1995);
    print_tagged(out, "slatkinFst", [&] { print_transforms(out, results.fst, kSlatkin); });
}

void print_migrants(std::ostream& out, const PairwiseResults& results) {
    print_title(out, "Matrix of M values (M=Nm for haploid data, M=2Nm for diploid data)");
    References(out, Citation::Slatkin_1991);
    print_transforms(out, results.fst, kMigrants);
}

// --- Which tables there are

bool shows_fst(const settings& s, const PairwiseResults& results) {
    return s.PrintFstVals != 0 && results.compared;
}

bool shows_differences(const settings& s, const PairwiseResults& results) {
    return s.PrintMissIntermatchs != 0 && results.compared;
}

bool shows_divergence(const settings& s, const PairwiseResults& results) {
    return s.UnequalPopSizeDiv != 0 && shows_differences(s, results);
}

bool shows_coancestry(const settings& s, const PairwiseResults& results) {
    return s.PrintConcestryCoeff != 0 && shows_fst(s, results);
}

bool shows_slatkin(const settings& s, const PairwiseResults& results) {
    return s.PrintSlatkinsDist != 0 && shows_fst(s, results);
}

// --- Batch summaries

void write_project(std::ostream& out, std::string_view project_file) {
    out << '"' << project_file << "\"\t";
}

// One row: the name of the project and what `write_cell` writes for the cells below the diagonal.
template <class WriteCell>
void write_row(std::ofstream* file, std::string_view project_file, int P, WriteCell write_cell) {
    if (file == nullptr) return;
    const FormatGuard guard(*file);
    *file << std::fixed << std::showpoint << std::setprecision(kDecimals);
    write_project(*file, project_file);
    for (int i = 0; i < P; ++i) {
        for (int j = 0; j < i; ++j)
            write_cell(*file, i, j);
    }
    *file << '\n';
}

void write_triangle(std::ofstream* file, std::string_view project_file, const TriMat& matrix) {
    write_row(file, project_file, matrix.dim,
              [&](std::ostream& out, int i, int j) { out << matrix(i, j) << '\t'; });
}

void write_transforms(std::ofstream* file, std::string_view project_file, const TriMat& fst,
                      const Transform& transform) {
    write_row(file, project_file, fst.dim, [&](std::ostream& out, int i, int j) {
        const double F = fst(i, j);
        const double value = transform.of(F);
        if (transform.is_zero_below_zero && F < 0.0) {
            out << "0\t";
        } else if (std::isinf(value)) {
            out << "inf\t";
        } else {
            out << value << '\t';
        }
    });
}

void write_p_values(const PairwiseResults& results) {
    if (ofs_pairw_dist == nullptr || !results.tested) return;
    std::ofstream& out = *ofs_pairw_dist;
    const FormatGuard guard(out);
    out << std::fixed << std::showpoint << std::setprecision(kDecimals)
        << "p-Values matrix : No of permutations : " << results.num_perm << '\n';
    for (int i = 1; i < results.P; ++i) {
        for (int j = 0; j < i; ++j)
            out << results.fst_p(i, j) << "+-" << results.fst_sd(i, j) << '\t';
        out << '\n';
    }
}

void write_differences(std::string_view project_file, const PairwiseResults& results) {
    if (ofs_pairw_diffs == nullptr) return;
    std::ofstream& out = *ofs_pairw_diffs;
    const FormatGuard guard(out);
    out << std::fixed << std::showpoint << std::setprecision(kDecimals);
    write_project(out, project_file);
    for (int i = 0; i < results.P; ++i) {
        for (int j = 0; j < results.P; ++j)
            out << results.pi(i, j) << '\t';
    }
    out << '\n';
}

}  // namespace

void print_pairwise_tables(std::ostream& out, settings& s, const PairwiseResults& results) {
    const FormatGuard guard(out);
    const bool fst = shows_fst(s, results);
    print_banner(out);
    print_labels(out, results);
    if (fst) print_fst(out, s, results);
    if (fst && results.tested) {
        print_fst_p_values(out, s, results);
        print_significant_fst(out, s, results);
    }
    if (shows_differences(s, results)) print_differences(out, results);
    if (results.tested) {
        print_p_values(out, "PXY P value", results.pi_p);
        print_p_values(out, "Corrected PXY P value", results.pi_corr_p);
    }
    if (s.ComputeDeltaMuSqr != 0) print_delta_mu(out, results);
    if (shows_divergence(s, results)) print_divergence(out, results);
    if (shows_coancestry(s, results)) print_coancestry(out, results);
    if (shows_slatkin(s, results)) {
        print_slatkin(out, results);
        print_migrants(out, results);
    }
}

void write_pairwise_rows(const settings& s, const PairwiseResults& results, std::string_view project_file) {
    if (results.compared) {
        write_triangle(ofs_pairw_dist, project_file, results.fst);
        write_p_values(results);
        write_triangle(ofs_FST_dist, project_file, results.fst);
        write_triangle(ofs_varComp_dist, project_file, results.fst_var);
    }
    if (shows_differences(s, results)) write_differences(project_file, results);
    if (shows_divergence(s, results)) write_triangle(ofs_tau_uneq, project_file, results.tau);
    if (shows_coancestry(s, results)) write_transforms(ofs_concest, project_file, results.fst, kCoancestry);
    if (shows_slatkin(s, results)) {
        write_transforms(ofs_slatkins, project_file, results.fst, kSlatkin);
        write_transforms(ofs_NM_vals, project_file, results.fst, kMigrants);
    }
}

}  // namespace mnd
