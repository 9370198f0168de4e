// The exact test of Hardy-Weinberg proportions of a sample: its tables in the result document and
// in the batch summary. The tests themselves are methods of Population.
#pragma once

#include <fstream>
#include <ostream>

namespace mnd {

class settings;

// Longest chain, in forecasted steps, that the haplotype level runs in one piece.
inline constexpr long kLongestSingleChainHW = 200000;

// Values of TypeOfTestHW.
enum HardyWeinbergLevel : int { kLocusLevel = 0, kHaplotypeLevel = 1, kBothLevels = 2 };

// One line of the table of loci.
struct HardyWeinbergRow {
    int individuals = 0;    // without missing alleles at the locus
    double observed = 0.0;  // heterozygosity
    double expected = 0.0;
    double p_value = 1.0;
    double sd = 0.0;  // of the P-value
    long steps_done = 0;
};

// Heading of a level, "Loci" or "Haplotypes", with the lengths of the chain.
void print_hw_heading(std::ostream& out, const char* level, long steps, const settings& s);
// Heading of the table of loci, between two rules.
void print_hw_columns(std::ostream& out);
void print_hw_rule(std::ostream& out);
// The parts of a row: the number of the locus, from 1; then the results, or that there are none.
void print_hw_locus(std::ostream& out, int number);
void print_hw_row(std::ostream& out, const HardyWeinbergRow& row);
void print_hw_monomorphic(std::ostream& out);
// The result of the test of whole haplotypes, behind its label.
void print_hw_haplotypes(std::ostream& out, double p_value, double sd, long steps_done);

// Batch summary "hw.sum"; null while it is not asked for. A sample has one row: the quoted names
// of project and sample, then P and its s.d. locus by locus. not owned
extern std::ofstream* ofs_HW;

}  // namespace mnd
