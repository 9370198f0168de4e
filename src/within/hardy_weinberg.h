// The exact test of Hardy-Weinberg proportions of a sample: its tables in the result document and
// its row in the batch summary. The tests themselves are methods of Population.
#pragma once

#include <fstream>
#include <ostream>

namespace mnd {

class settings;

// Longest chain, in forecasted steps, that the haplotype level runs in one piece.
inline constexpr long kLongestSingleChainHW = 200000;

// Values of TypeOfTestHW. Only for known phase are there haplotypes to test; otherwise loci are
// tested under any value.
inline constexpr int kHaplotypesAloneHW = 1;
inline constexpr int kLociAndHaplotypesHW = 2;

// P-value of a chain.
struct ChainResult {
    double p_value = 1.0;
    double sd = 0.0;
    long steps_done = 0;
};

// One line of the table of loci.
struct HardyWeinbergRow {
    int individuals = 0;    // those without a missing allele at the locus
    double observed = 0.0;  // heterozygosity
    double expected = 0.0;
    ChainResult test;
};

// Headings of the tests, with the lengths that the settings give.
void print_hw_loci_heading(std::ostream& out, long steps, const settings& s);
void print_hw_haplotypes_heading(std::ostream& out, long steps, const settings& s);

// Heading of the table of loci, between two rules, and a rule.
void print_hw_columns(std::ostream& out);
void print_hw_rule(std::ostream& out);

// The parts of a line of the table: the number of the locus, from 1, and what there is to tell.
void print_hw_locus(std::ostream& out, int number);
void print_hw_row(std::ostream& out, const HardyWeinbergRow& row);
void print_hw_monomorphic(std::ostream& out);

// The test of whole haplotypes: a label, written before the work, and the result.
void print_hw_haplotypes_label(std::ostream& out);
void print_hw_haplotypes(std::ostream& out, const ChainResult& test);

// Batch summary "hw.sum"; null while it is not asked for. A sample has one row: the names of
// project and sample in double quotes, then P and its s.d. for each locus, twice "N.A." for one
// without a test, each behind a tab. not owned
extern std::ofstream* ofs_HW;

}  // namespace mnd
