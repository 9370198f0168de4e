// The comparisons of pairs of samples as text: the tables of the result document and the rows of
// the batch summaries.
#pragma once

#include <fstream>
#include <ostream>
#include <string_view>

#include "between/pairwise_statistics.h"

namespace mnd {

class settings;

// All tables that the settings ask for, in their order. A table of values that were not computed
// is left out. The settings stay as they are.
void print_pairwise_tables(std::ostream& out, settings& s, const PairwiseResults& results);

// The row of this project in each open summary, and the P-values in that of the pairs: the name of
// the project in double quotes, then the cells below the diagonal row by row, each behind a tab.
// That of the differences holds the whole matrix, row by row.
void write_pairwise_rows(const settings& s, const PairwiseResults& results, std::string_view project_file);

// Batch summaries of pairs of samples; null while they are not asked for. not owned
extern std::ofstream* ofs_pairw_dist;    // "pairdist.sum": FST, and with a test P-values and errors
extern std::ofstream* ofs_FST_dist;      // "FSTdist.sum"
extern std::ofstream* ofs_varComp_dist;  // "VCompdist.sum"
extern std::ofstream* ofs_pairw_diffs;   // "pairdiff.sum"
extern std::ofstream* ofs_tau_uneq;      // "tau_uneq.sum"
extern std::ofstream* ofs_concest;       // "coanst_c.sum"
extern std::ofstream* ofs_slatkins;      // "slatkin.sum"
extern std::ofstream* ofs_NM_vals;       // "NM_value.sum"

}  // namespace mnd
