// The observed results of an analysis of molecular variance as text: the table of variance with
// its indices, the indices of single samples, and the row of the batch summary.
#pragma once

#include <array>
#include <fstream>
#include <ostream>
#include <string_view>
#include <vector>

#include "between/amova.h"

namespace mnd {

class settings;

// One source of variation of a design.
struct AmovaLevel {
    const char* label;     // text before the degrees of freedom, which it aligns to column 19
    double Amova::*SSD;    // its sum of squares
    double Amova::*sigma;  // its variance component
};

// One fixation index of a design.
struct AmovaIndex {
    const char* prefix;  // text before the value
    double Amova::*value;
};

// What the table of a design shows. Missing entries are null.
struct AmovaLayout {
    int nb_levels;
    bool counts_individuals;                 // the total has one degree of freedom less than these
    std::array<AmovaLevel, 4> levels;        // rows a to d
    const char* indices_heading;             // line above the indices; empty for a single one
    std::array<AmovaIndex, 4> indices;       // in the order of the table
    std::array<double Amova::*, 4> summary;  // indices in the order of the batch summary
};

// Layout of a design; one without levels for designs that yield nothing.
const AmovaLayout& layout_of_design(std::int32_t design);

// What the distances between haplotypes are, for the tables that rest on them: the name of the
// method, or that only frequencies count.
void print_distance_line(std::ostream& out, settings& s);

// Heading and citations of the methods.
void print_amova_heading(std::ostream& out);

// Degrees of freedom of the total row: gene copies less 1, or individuals less 1.
std::int32_t degrees_of_freedom_in_total(const Amova& analysis);

// Table of variance and fixation indices of a design, from the fields of the analysis.
void print_amova_table(std::ostream& out, const Amova& analysis);

// Index of one sample for a table of these.
struct PopulationIndex {
    std::string_view name;  // name of the sample, not escaped
    double value = 0.0;
    double pvalue = 0.0;  // permutations that gave at least the value
};

// Specific indices of the samples, numbered from 1.
void print_population_fst(std::ostream& out, const std::vector<PopulationIndex>& samples);
// num_perm above 0 adds the P-values and tells that count.
void print_population_fis(std::ostream& out, const std::vector<PopulationIndex>& samples, long num_perm);

// Row of the batch summary: project file, degrees of freedom, components and indices, each four
// numbers with 0 for those that a design lacks; no line end.
void write_amova_summary(std::ostream& out, const Amova& analysis, std::string_view project_file);
// The rest of that row: count of permutations and P-values of the tests in the order of running,
// four numbers; a line end. Without a test the line end alone.
void write_amova_summary_tests(std::ostream& out, long num_perm, const std::vector<double>& pvalues);

// Batch summary of these rows, "amovares.sum"; null while it is not asked for. not owned
extern std::ofstream* ofs_amova_res;

// Indices of the analysis done last that was no silent one, for the summary statistics.
struct GlobalFStatistics {
    bool wanted = false;  // indices are stored
    double FIS = 0.0, FST = 0.0, FCT = 0.0, FSC = 0.0, FIT = 0.0;
};
extern GlobalFStatistics global_f_statistics;

}  // namespace mnd
