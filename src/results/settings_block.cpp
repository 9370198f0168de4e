// The block that opens the results of a run: what was asked for, with which numbers.
#include <cmath>
#include <initializer_list>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "foundation/format_guard.h"
#include "results/xml_tags.h"
#include "run/settings.h"
#include "run/settings_table.h"
#include "run/tasks.h"

namespace mnd {

namespace {

// A task of the block: its heading, and the keys shown under it in this order.
struct TaskBlock {
    Task task;
    const char* heading;
    std::initializer_list<const char*> keys;
};

constexpr TaskBlock kTaskBlocks[] = {
    {kTaskStandardIndices, "    Standard indices:\n", {"ComputeAllAlleleFreqs"}},
    {kTaskMolecularDiversity,
     "    Molecular Diversity:\n",
     {"DistanceMethod", "GammaAValue", "PrintHaplDistMat", "PrintMinSpannNetworkPop"}},
    {kTaskMismatch,
     "    Mismatch Distribution:\n",
     {"MismatchDistanceMethod", "MismatchGammaAValue", "MismatchDemogExp", "MismatchSpatialExp",
      "MismatchSpatialExpNumParams", "NumBootExpDem"}},
    {kTaskHaplotypeFrequencies,
     "    Haplotypic Frequency estimation:\n",
     {"ComputeAllHaplotypesEM",
      "ComputeAllAllelesEM",
      "ComputeAllSubHaplotypesEM",
      "InitialConditionsEM",
      "MaximumNumOfIterationsEM",
      "RecessiveAllelesEM",
      "NumBootstrapReplicatesEM",
      "NumInitCondBootstrapEM",
      "EMEstimateInbreedingCoeff",
      "EMInbreedingFixedVal",
      "EMUseZipper",
      "EMNumZipRandOrders",
      "GibbsInferGamPhase",
      "GibbsBurnIn",
      "GibbsSamplingInterval",
      "GibbsNumSamples",
      "GibbsAlphaInitValue",
      "GibbsEpsilonValue",
      "GibbsGamma",
      "GibbsHetSiteInfluenceZone",
      "GibbsPercentageOfRecSteps",
      "GibbsOutputGamPhase"}},
    {kTaskLinkageDisequilibrium,
     "    Linkage disequilibrium test:\n",
     {"MakeExactTestLD", "MarkovChainStepsLD", "MarkovChainDememorisationStepsLD", "PrecisionOnPValueLD",
      "InitialCondEMLD", "SignificanceLevelLD", "PrintFlagHistogramLD", "ComputeDvalues"}},
    {kTaskHardyWeinberg,
     "    Hardy-Weinberg equilibrium test:\n",
     {"MakeHWExactTest", "TypeOfTestHW", "MarkovChainStepsHW", "MarkovChainDememorisationStepsHW",
      "PrecisionOnPValueHW"}},
    {kTaskTajima, "    Tajima's selective neutrality test\n", {"NumSimulFuTest"}},
    {kTaskEwensWatterson,
     "    Ewens-Watterson neutrality test\n",
     {"EwensWattersonHomozygosityTest", "NumIterationsNeutralityTests"}},
    {kTaskChakraborty, "    Chakraborty's amalgammation test\n", {"NumIterationsNeutralityTests"}},
    {kTaskFuFs, "    Fu's Neutraliy test:\n", {"NumSimulFuTest"}},
    {kTaskAmova,
     "    Analysis of Molecular Variance:\n",
     {"HaplAMOVA", "LocByLocAMOVA", "ComputeConventionalFST", "ComputeDistanceMatrixAMOVA",
      "DistanceMethodAMOVA", "GammaAValueAMOVA", "IncludeIndividualLevel", "PopSpecificFST", "PopSpecificFIS",
      "NumPermutationsAMOVA", "PrintDistanceMatrix", "PrintMinSpannNetworkGlob"}},
    {kTaskPairwiseFst,
     "    Population pairwise Fst values:\n",
     {"ComputePairwiseFST", "TestSignificancePairewiseFST", "NumPermutationsFST", "FSTSignifLevel",
      "PrintFstVals", "PrintConcestryCoeff", "PrintSlatkinsDist", "PrintMissIntermatchs", "UnequalPopSizeDiv",
      "ComputeDeltaMuSqr"}},
    {kTaskExactDifferentiation,
     "    Exact test of population differentiation:\n",
     {"NumPermutPopDiff", "NumDememoPopDiff", "PrecProbPopDiff", "PrintHistoPopDiff", "SignLevelPopDiff"}},
    {kTaskAssignment, "\n    Assignement of individual genotypes to populations\n", {}},
    {kTaskMantel, "\n    Correlation between distance matrices.\n", {"NumPermMantel"}},
};

// A heading, and under its text as many dashes.
void print_task_heading(std::ostream& out, const std::string& heading) {
    const std::size_t begin = heading.find_first_not_of("\n ");
    const std::size_t length = heading.size() - 1 - begin;
    out << heading << "    " << std::string(length, '-') << '\n';
}

// Name of a molecular distance, or its number when the data have none of that number.
std::string distance_text(settings& s, int method) {
    std::ostringstream name;
    s.print_distance_method(name, method);
    const std::string line = name.str();
    return line.empty() ? std::to_string(method) : line.substr(0, line.size() - 1);
}

// The value of a key for readers: a word where the number is a code.
std::string shown_value(settings& s, const SettingKey& key) {
    if ((key.traits & kYesNo) != 0) return setting_text(s, key) == "0" ? "No" : "Yes";
    if ((key.traits & kDistance) != 0) return distance_text(s, s.*std::get<int settings::*>(key.field));
    std::ostringstream value;
    std::visit([&](auto field) { value << s.*field; }, key.field);
    return value.str();
}

void print_task(std::ostream& out, settings& s, const TaskBlock& block) {
    print_task_heading(out, block.heading);
    for (const char* name : block.keys) {
        const SettingKey& key = *find_setting(name);
        out << "      " << std::left << std::setw(33) << key.label << "= " << shown_value(s, key) << '\n';
    }
    const bool phase_unknown = s.genotypic_data != 0 && s.gametic_phase == 0;
    if (block.task == kTaskAssignment && !phase_unknown) {
        out << "\n      Test is only possible for genotypic data with unknown gametic phase, skipping "
               "task...\n\n";
    }
    out << '\n';
}

void print_title(std::ostream& out) {
    const TXmlTag title("title");
    open_table(out, title);
    out << "==============================\n"
        << "Settings used for Calculations\n"
        << "==============================\n\n";
    close_table(out, title);
}

void print_general_settings(std::ostream& out, const settings& s) {
    out << " General settings:\n"
        << " -----------------\n"
        << "        Deletion Weight                = " << s.DeletionWeight << '\n'
        << "        Transition Weight Weight       = " << s.TransitionWeight << '\n'
        << "        Tranversion Weight Weight      = " << s.TranversionWeight << '\n'
        << "        Epsilon Value                  = " << s.EpsilonValue << '\n';
    if (s.FrequencyThreshold > 0.0 && std::isfinite(s.FrequencyThreshold)) {
        const int digits = std::abs(static_cast<int>(std::log10(s.FrequencyThreshold) - 0.1));
        out << "        Significant digits for output  = " << digits << '\n';
    } else {
        out << "        Significant digits for output  = unspecified\n";
    }
    const bool infer = s.InferHaplotypeDefinitionFromDistanceMatrix != 0;
    out << (infer ? "        Infer haplotype definition from distance matrix"
                  : "        Use original haplotype definition")
        << '\n'
        << "        Alllowed level of missing data = " << s.AllowedLevelOfMissingData << "\n\n";
}

}  // namespace

void settings::print_pretty_settings(std::ostream& results) {
    const FormatGuard guard(results);
    print_title(results);
    print_general_settings(results, *this);
    results << " Active Tasks:\n"
            << " -------------\n\n";
    for (const TaskBlock& block : kTaskBlocks) {
        if ((TaskNumber & block.task) != 0) print_task(results, *this, block);
    }
}

}  // namespace mnd
