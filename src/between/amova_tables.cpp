#include "between/amova_tables.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iomanip>
#include <sstream>
#include <string>

#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "model/integer_part.h"
#include "results/citations.h"
#include "run/settings.h"

namespace mnd {

std::ofstream* ofs_amova_res = nullptr;
GlobalFStatistics global_f_statistics;

namespace {

constexpr int kTableWidth = 70;
constexpr int kDfColumn = 19;  // last column of the degrees of freedom

constexpr const char* kAmongGroups = " Among\n groups";
constexpr const char* kAmongPopulations = " Among\n populations";
constexpr const char* kAmongPopulationsInGroups = " Among\n populations\n within\n groups";
constexpr const char* kWithinPopulations = " Within\n populations";
constexpr const char* kAmongIndividuals = " Among\n individuals";
constexpr const char* kAmongIndividualsInPopulations = " Among\n individuals\n within\n populations";
constexpr const char* kWithinIndividuals = "\n Within\n individuals";

constexpr const char* kSeveralIndices = " Fixation Indices\n";

constexpr AmovaLevel kNoLevel = {"", nullptr, nullptr};
constexpr AmovaIndex kNoIndex = {"", nullptr};
constexpr AmovaIndex kFIS = {"      FIS : ", &Amova::FIS};
constexpr AmovaIndex kFSC = {"      FSC : ", &Amova::FSC};
constexpr AmovaIndex kFST = {"      FST : ", &Amova::FST};
constexpr AmovaIndex kFCT = {"      FCT : ", &Amova::FCT};
constexpr AmovaIndex kFIT = {"      FIT : ", &Amova::FIT};

constexpr AmovaLayout kNothing = {0,
                                  false,
                                  {kNoLevel, kNoLevel, kNoLevel, kNoLevel},
                                  "",
                                  {kNoIndex, kNoIndex, kNoIndex, kNoIndex},
                                  {nullptr, nullptr, nullptr, nullptr}};

constexpr AmovaLayout kSeveralGroupsOfHaplotypes = {3,
                                                    false,
                                                    {{{kAmongGroups, &Amova::SSDAG, &Amova::Va},
                                                      {kAmongPopulationsInGroups, &Amova::SSDAP, &Amova::Vb},
                                                      {kWithinPopulations, &Amova::SSDWP, &Amova::Vc},
                                                      kNoLevel}},
                                                    kSeveralIndices,
                                                    {kFSC, kFST, kFCT, kNoIndex},
                                                    {&Amova::FCT, &Amova::FSC, &Amova::FST, nullptr}};

constexpr AmovaLayout kOneGroupOfHaplotypes = {
    2,
    false,
    {{{kAmongPopulations, &Amova::SSDAP, &Amova::Va},
      {kWithinPopulations, &Amova::SSDWP, &Amova::Vb},
      kNoLevel,
      kNoLevel}},
    "",
    {{{" Fixation Index      FST : ", &Amova::FST}, kNoIndex, kNoIndex, kNoIndex}},
    {&Amova::FST, nullptr, nullptr, nullptr}};

constexpr AmovaLayout kSeveralGroupsOfIndividuals = {
    4,
    true,
    {{{kAmongGroups, &Amova::SSDAG, &Amova::Va},
      {kAmongPopulationsInGroups, &Amova::SSDAP, &Amova::Vb},
      {kAmongIndividualsInPopulations, &Amova::SSDWP, &Amova::Vc},
      {kWithinIndividuals, &Amova::SSDWI, &Amova::Vd}}},
    kSeveralIndices,
    {kFIS, kFSC, kFCT, kFIT},
    {&Amova::FCT, &Amova::FSC, &Amova::FIS, &Amova::FIT}};

constexpr AmovaLayout kOneGroupOfIndividuals = {3,
                                                true,
                                                {{{kAmongPopulations, &Amova::SSDAP, &Amova::Va},
                                                  {kAmongIndividualsInPopulations, &Amova::SSDWP, &Amova::Vb},
                                                  {kWithinIndividuals, &Amova::SSDWI, &Amova::Vc},
                                                  kNoLevel}},
                                                kSeveralIndices,
                                                {kFIS, kFST, kFIT, kNoIndex},
                                                {&Amova::FST, &Amova::FIT, &Amova::FIS, nullptr}};

constexpr AmovaLayout kOneSampleOfIndividuals = {
    2,
    true,
    {{{kAmongIndividuals, &Amova::SSDWP, &Amova::Va},
      {" Within\n individuals", &Amova::SSDWI, &Amova::Vb},
      kNoLevel,
      kNoLevel}},
    "",
    {{{" Fixation Index     FIS : ", &Amova::FIS}, kNoIndex, kNoIndex, kNoIndex}},
    {&Amova::FIS, nullptr, nullptr, nullptr}};

std::string rule(int width) {
    return std::string(static_cast<std::size_t>(width), '-') + '\n';
}

// Length of the last line of a label.
int last_line_length(const char* label) {
    const char* const line = std::strrchr(label, '\n');
    return static_cast<int>(std::strlen(line == nullptr ? label : line + 1));
}

// Label, degrees of freedom and sum of squares.
void print_row_start(std::ostream& out, const char* label, long degrees, double ssd) {
    out << label << std::setw(kDfColumn - last_line_length(label)) << degrees << std::setprecision(3)
        << std::setw(15) << ssd;
}

void print_variance(std::ostream& out, double variance) {
    out << std::setprecision(5) << std::setw(15) << variance;
}

void print_level(std::ostream& out, const Amova& analysis, const AmovaLevel& level, int row) {
    const double variance = analysis.*level.sigma;
    print_row_start(out, level.label, analysis.df[static_cast<std::size_t>(row)], analysis.*level.SSD);
    print_variance(out, variance);
    out << " V" << static_cast<char>('a' + row) << std::setprecision(2) << std::setw(17)
        << 100.0 * variance / analysis.V_total << '\n';
}

void print_indices(std::ostream& out, const Amova& analysis, const AmovaLayout& layout) {
    out << layout.indices_heading << std::setprecision(5);
    for (const AmovaIndex& index : layout.indices) {
        if (index.value == nullptr) continue;
        out << index.prefix << std::setw(12) << analysis.*index.value << '\n';
    }
}

constexpr int kNumberWidth = 6;
constexpr int kSmallestNameWidth = 10;
constexpr int kIndexWidth = 12;
constexpr int kPvalueWidth = 25;

int name_width(const std::vector<PopulationIndex>& samples) {
    int width = kSmallestNameWidth;
    for (const PopulationIndex& sample : samples)
        width = std::max(width, static_cast<int>(sample.name.size()) + 2);
    return width;
}

void print_population_rows(std::ostream& out, const std::vector<PopulationIndex>& samples, const char* index,
                           bool with_pvalues) {
    const int width = name_width(samples);
    out << std::fixed << std::showpoint << std::right << std::setprecision(5) << std::setw(kNumberWidth)
        << "Pop#" << std::setw(width) << "Name" << std::setw(kIndexWidth) << index;
    if (with_pvalues) out << std::setw(kPvalueWidth) << "P(Rand FIS>=Obs FIS)";
    out << '\n';
    int number = 0;
    for (const PopulationIndex& sample : samples) {
        out << std::setw(kNumberWidth) << ++number << escaped_right(sample.name, width)
            << std::setw(kIndexWidth) << sample.value;
        if (with_pvalues) out << std::setw(kPvalueWidth) << sample.pvalue;
        out << '\n';
    }
}

}  // namespace

const AmovaLayout& layout_of_design(std::int32_t design) {
    switch (design) {
        case kDesignGPH:
        case kDesignGPIH:
            return kSeveralGroupsOfHaplotypes;
        case kDesign1GPH:
        case kDesign1GPIH:
            return kOneGroupOfHaplotypes;
        case kDesignGPI:
            return kSeveralGroupsOfIndividuals;
        case kDesign1GPI:
            return kOneGroupOfIndividuals;
        case kDesign1G1PI:
            return kOneSampleOfIndividuals;
        default:
            return kNothing;
    }
}

std::int32_t degrees_of_freedom_in_total(const Amova& analysis) {
    const bool individuals = layout_of_design(analysis.design).counts_individuals;
    return integer_part(individuals ? analysis.N_units : analysis.N_genes) - 1;
}

void print_distance_line(std::ostream& out, settings& s) {
    if (s.ComputeConventionalFST != 0) {
        out << "\nComputing conventional F-Statistics from haplotype frequencies\n";
        return;
    }
    std::ostringstream name;
    s.print_distance_method(name, s.DistanceMethodAMOVA);
    out << "\nDistance method: " << (name.str().empty() ? "Pairwise differences\n" : name.str());
}

void print_amova_heading(std::ostream& out) {
    out << "\nAMOVA design and results :\n--------------------------\n\nReferences:\n";
    References(out, Citation::Weir_Cockerham_1984, References::kFirst);
    References(out, Citation::Excoffier_1992, References::kMiddle);
    References(out, Citation::Weir_1996, References::kLast);
    out << '\n';
}

void print_amova_table(std::ostream& out, const Amova& analysis) {
    const FormatGuard guard(out);
    const AmovaLayout& layout = layout_of_design(analysis.design);
    out << std::fixed << std::showpoint << std::right << rule(kTableWidth)
        << " Source of                  Sum of      Variance         Percentage\n"
           " variation      d.f.        squares     components       of variation\n"
        << rule(kTableWidth);
    for (int row = 0; row < layout.nb_levels; ++row)
        print_level(out, analysis, layout.levels[static_cast<std::size_t>(row)], row);
    out << rule(kTableWidth);
    print_row_start(out, " Total", degrees_of_freedom_in_total(analysis), analysis.SSDT);
    print_variance(out, analysis.V_total);
    out << '\n' << rule(kTableWidth);
    print_indices(out, analysis, layout);
    out << rule(kTableWidth);
}

void print_population_fst(std::ostream& out, const std::vector<PopulationIndex>& samples) {
    const FormatGuard guard(out);
    out << "\n-------------------------------"
           "\nPopulation specific FST indices\n"
           "-------------------------------\n";
    print_population_rows(out, samples, "FST", false);
}

void print_population_fis(std::ostream& out, const std::vector<PopulationIndex>& samples, long num_perm) {
    const FormatGuard guard(out);
    if (num_perm > 0) {
        out << "\nPopulation specific FIS indices (" << num_perm << " permutations)\n";
    } else {
        out << "\nPopulation specific FIS indices\n";
    }
    out << "-------------------------------\n";
    print_population_rows(out, samples, "FIS", num_perm > 0);
    const auto is_undefined = [](const PopulationIndex& sample) { return sample.value == kUndefinedFis; };
    if (std::any_of(samples.begin(), samples.end(), is_undefined))
        out << "(-9.99999: not defined in a sample without variation, nor is its P-value)\n";
}

void write_amova_summary(std::ostream& out, const Amova& analysis, std::string_view project_file) {
    const FormatGuard guard(out);
    const AmovaLayout& layout = layout_of_design(analysis.design);
    const std::size_t levels = static_cast<std::size_t>(layout.nb_levels);
    out << '"' << project_file << '"';
    for (std::size_t row = 0; row < 4; ++row)
        out << '\t' << (row < levels ? analysis.df[row] : 0);
    out << std::fixed << std::setprecision(5);
    for (std::size_t row = 0; row < 4; ++row) {
        if (row < levels) {
            out << '\t' << analysis.*layout.levels[row].sigma;
        } else {
            out << "\t0";
        }
    }
    for (double Amova::*const index : layout.summary) {
        if (index != nullptr) {
            out << '\t' << analysis.*index;
        } else {
            out << "\t0";
        }
    }
}

void write_amova_summary_tests(std::ostream& out, long num_perm, const std::vector<double>& pvalues) {
    const FormatGuard guard(out);
    if (num_perm > 0) {
        out << '\t' << num_perm << std::fixed << std::setprecision(5);
        for (const double p : pvalues)
            out << '\t' << p;
        for (std::size_t i = pvalues.size(); i < 4; ++i)
            out << "\t0";
    }
    out << '\n';
}

}  // namespace mnd
