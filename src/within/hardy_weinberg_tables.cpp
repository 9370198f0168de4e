#include <iomanip>

#include "foundation/format_guard.h"
#include "run/settings.h"
#include "within/hardy_weinberg.h"

namespace mnd {

namespace {

constexpr int kDecimals = 5;
constexpr const char* kRule = "------------------------------------------------------------------------\n";

void print_lengths(std::ostream& out, long steps, const settings& s) {
    out << "\nForecasted chain length     :" << steps
        << "\nDememorization steps        :" << s.MarkovChainDememorisationStepsHW << "\n\n";
}

}  // namespace

void print_hw_loci_heading(std::ostream& out, long steps, const settings& s) {
    const FormatGuard guard(out);
    out << "\nExact test using a Markov chain (for all Loci):";
    print_lengths(out, steps, s);
}

void print_hw_haplotypes_heading(std::ostream& out, long steps, const settings& s) {
    const FormatGuard guard(out);
    out << "\nExact test using a Markov chain (for all Haplotypes):";
    print_lengths(out, steps, s);
}

void print_hw_columns(std::ostream& out) {
    const FormatGuard guard(out);
    print_hw_rule(out);
    out << std::right << std::setw(5) << "Locus" << std::setw(8) << "#Genot" << std::setw(15) << "Obs.Het."
        << std::setw(13) << "Exp.Het." << std::setw(10) << "P-value" << std::setw(9) << "s.d."
        << std::setw(13) << "Steps done\n";
    print_hw_rule(out);
}

void print_hw_rule(std::ostream& out) {
    const FormatGuard guard(out);
    out << kRule;
}

void print_hw_locus(std::ostream& out, int number) {
    const FormatGuard guard(out);
    out << std::right << std::setw(5) << number;
}

void print_hw_row(std::ostream& out, const HardyWeinbergRow& row) {
    const FormatGuard guard(out);
    out << std::fixed << std::showpoint << std::right << std::setprecision(kDecimals) << std::setw(8)
        << row.individuals << std::setw(14) << row.observed << std::setw(13) << row.expected << std::setw(11)
        << row.test.p_value << std::setw(9) << row.test.sd << std::setw(12) << row.test.steps_done;
}

void print_hw_monomorphic(std::ostream& out) {
    const FormatGuard guard(out);
    out << "   This locus is monomorphic: no test done.";
}

void print_hw_haplotypes_label(std::ostream& out) {
    const FormatGuard guard(out);
    out << "Markov Chain test:  P value : ";
}

void print_hw_haplotypes(std::ostream& out, const ChainResult& test) {
    const FormatGuard guard(out);
    out << std::fixed << std::showpoint << std::right << std::setprecision(kDecimals) << test.p_value
        << " +/- " << std::setw(10) << test.sd << std::setw(8) << " (" << test.steps_done << " steps done\n";
}

}  // namespace mnd
