#include "run/settings_table.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <type_traits>

#include "foundation/number_text.h"

namespace mnd {

namespace {

constexpr std::array<const char*, kSectionReadOnly + 1> kHeadings = {
    nullptr,
    "#GENERAL SETTINGS",
    "#SETTINGS FOR TEST OF HARDY-WEINBERG EQUILIBRIUM",
    "#SETTINGS FOR TEST OF LINKAGE DISEQUILIBRIUM",
    "#SETTINGS FOR DIVERSITY INDICES",
    "#SETTINGS FOR MISMATCH DISTRIBUTION",
    "#SETTINGS FOR HAPLOTYPE FREQUENCY ESTIMATION",
    "#SETTINGS FOR AMOVA",
    "#SETTINGS FOR PAIRWISE DISTANCE COMPUTATIONS",
    "#SETTINGS FOR POPULATION DIFFERENTIATION",
    "#SETTINGS FOR DETECTION OF SELECTED LOCI FROM COMPARISON BETWEEN FST AND HETEROZYGOSITY",
    "#SETTINGS FOR NEUTRALITY TESTS",
    "#SETTINGS FOR MANTEL TEST",
    nullptr};

// No comment may hold a key and a "=" above the line of that key: the reader would take it for
// the key. Test: SettingsWriter.EveryKeysOwnLineIsItsFirstMatch
constexpr SettingKey kKeys[] = {
    {"TaskNumber", kSectionTasks, &settings::TaskNumber, 0, kPlain, nullptr,
     "#the sum of the task bits\n"
     "#of the computations to be done:\n"
     "#       1 : standard diversity indices\n"
     "#       2 : molecular diversity\n"
     "#       4 : mismatch distribution\n"
     "#       8 : haplotype frequency estimation\n"
     "#      16 : test of linkage disequilibrium\n"
     "#      32 : test of Hardy-Weinberg equilibrium\n"
     "#      64 : Tajima's test of selective neutrality\n"
     "#     128 : Ewens-Watterson's test of selective neutrality\n"
     "#     256 : Chakraborty's test of population amalgamation\n"
     "#     512 : analysis of molecular variance (AMOVA)\n"
     "#    1024 : pairwise FST's\n"
     "#    2048 : pairwise genetic distances, in one file per sample\n"
     "#    4096 : prepare for AMOVA permutations\n"
     "#    8192 : exact test of population differentiation\n"
     "#   16384 : Fu's Fs test of selective neutrality\n"
     "#   32768 : genotype assignment test\n"
     "#   65536 : Mantel test"},

    {"XMLOutput", kSectionGeneral, &settings::XMLOutput, 1, kYesNo, nullptr,
     "#if the results are output into an XML or an HTML file format\n"
     "#(1: XML, 0: HTML)"},
    {"DeletionWeight", kSectionGeneral, &settings::DeletionWeight, 1.0, kPlain, nullptr,
     "#the relative weight of deletions\n"
     "#in the distances between DNA sequences or RFLP haplotypes"},
    {"TransitionWeight", kSectionGeneral, &settings::TransitionWeight, 1.0, kPlain, nullptr,
     "#the relative weight of transition\n"
     "#in the distances between DNA sequences"},
    {"TranversionWeight", kSectionGeneral, &settings::TranversionWeight, 1.0, kPlain, nullptr,
     "#the relative weight of transversion\n"
     "#in the distances between DNA sequences"},
    {"ComputeSumStatsWithinGroups", kSectionGeneral, &settings::ComputeSumStatsWithinGroups, 0, kYesNo,
     nullptr,
     "#if summary statistics and tests will be\n"
     "#computed also on the samples pooled by group (1: yes, 0: no)"},
    {"InferHaplotypeDefinitionFromDistanceMatrix", kSectionGeneral,
     &settings::InferHaplotypeDefinitionFromDistanceMatrix, 0, kYesNo, nullptr,
     "#if haplotype defintions are to be trusted\n"
     "#(0), or if haplotypes at distance zero are to be taken as one and the same (1)"},
    {"EliminateRedondHaplodefs", kSectionGeneral, &settings::EliminateRedondHaplodefs, 0, kYesNo, nullptr,
     "#for the search of identical haplotypes\n"
     "#that are listed under several names (1: search and merge them, 0: no search)"},
    {"AllowedLevelOfMissingData", kSectionGeneral, &settings::AllowedLevelOfMissingData, 0.05, kPlain,
     nullptr,
     "#the maximum level of missing data at any locus,\n"
     "#between 0 and 1; a locus with more is left out of the computations"},
    {"GameticPhaseIsKnown", kSectionGeneral, &settings::GameticPhaseIsKnown, 0, kYesNo, nullptr,
     "#if the gametic phase is assumed to be known,\n"
     "#in genotypic data (1: yes, 0: no); the project file decides for the computations"},
    {"KeepNullDistrib", kSectionGeneral, &settings::KeepNullDistrib, 0, kYesNo, nullptr,
     "#if the null distributions of AMOVA variance components and F-statistics\n"
     "#are to be kept in files (1: yes, 0: no)"},

    {"MakeHWExactTest", kSectionHardyWeinberg, &settings::MakeHWExactTest, 0, kYesNo, "Exact test",
     "#if exact test of HWE neEds to be performed (1: yes, 0: no)"},
    {"HardyWeinbergTestType", kSectionHardyWeinberg, &settings::HardyWeinbergTestType, 0, kPlain, nullptr,
     "#DEPRECATED, replaced by key TypeOfTestHW"},
    {"TypeOfTestHW", kSectionHardyWeinberg, &settings::TypeOfTestHW, 0, kPlain,
     "Level (locus 0, hapl. 1, both 2)",
     "#0 - Test association at the Locus level, 1 - Test association at the Haplotype level,\n"
     "#2 - Test association at both levels"},
    {"MarkovChainStepsHW", kSectionHardyWeinberg, &settings::MarkovChainStepsHW, 1000000, kPlain,
     "Steps in Markov chain", "#the number of steps in Markov chain for HWE exact test"},
    {"MarkovChainDememorisationStepsHW", kSectionHardyWeinberg, &settings::MarkovChainDememorisationStepsHW,
     100000, kPlain, "Dememorization steps",
     "#the number of burnin steps in Markov <n\n"
     "#chain for HWE exact test"},
    {"PrecisionOnPValueHW", kSectionHardyWeinberg, &settings::PrecisionOnPValueHW, 0.0, kPlain,
     "Precision on P-value",
     "#the required precision on the estimated p-value of the HWE test\n"
     "#(its standard deviation)"},
    {"SignificanceLevelHW", kSectionHardyWeinberg, &settings::SignificanceLevelHW, 2, kCutFraction, nullptr,
     "#the minimum p-value of a HWE test to be flagged\n"
     "#(a whole number)"},

    {"LinkageDisequilibriumTestType", kSectionLinkage, &settings::LinkageDisequilibriumTestType, 0, kPlain,
     nullptr,
     "#(OBSOLETE SETTING)\n"
     "#the type of test of linkage disequilibrium"},
    {"MakeExactTestLD", kSectionLinkage, &settings::MakeExactTestLD, 0, kYesNo, "Test of linkage",
     "#if test of LD needs to be performed\n"
     "#(1: yes, 0: no)"},
    {"MarkovChainDememorisationStepsLD", kSectionLinkage, &settings::MarkovChainDememorisationStepsLD, 1000,
     kPlain, "Dememorization steps",
     "#the number of burnin steps at the\n"
     "#beginning of the Markov chain; the chains of the HWE exact test use it too"},
    {"MarkovChainStepsLD", kSectionLinkage, &settings::MarkovChainStepsLD, 100000, kPlain,
     "Steps, or permutations",
     "#how many steps are to be performed in the Markov chain\n"
     "#or, with unknown gametic phase, how many permutations in the likelihood-ratio test"},
    {"PrecisionOnPValueLD", kSectionLinkage, &settings::PrecisionOnPValueLD, 0.0, kPlain,
     "Precision on P-value",
     "#the precision required for the\n"
     "#estimated p-value of the LD test (its standard deviation)"},
    {"SignificanceLevelLD", kSectionLinkage, &settings::SignificanceLevelLD, 0.05, kPlain,
     "Significance level",
     "#the p-values under which the LD test is assumed\n"
     "#to be significant"},
    {"PrintFlagHistogramLD", kSectionLinkage, &settings::PrintFlagHistogramLD, 0, kPlain, "Summary file",
     "#if a file with a summary of the LD test results needs ot be produced\n"
     "#(0: no, any other value: yes)"},
    {"InitialCondEMLD", kSectionLinkage, &settings::InitialCondEMLD, 2, kPlain, "Initial conditions for EM",
     "#the number of different EM algorithm runs to\n"
     "#be performed for each pair of loci when the gametic phase is unknown"},
    {"ComputeDvalues", kSectionLinkage, &settings::ComputeDvalues, 0, kYesNo, "D, D' and r2 coefficients",
     "#if coefficients D and D' needs to be computed,\n"
     "#for all pairs of alleles at different loci (1: yes, 0: no)"},

    {"ComputeStandardDiversityIndices", kSectionDiversity, &settings::ComputeStandardDiversityIndices, 0,
     kYesNo, nullptr,
     "#if standard diversity indices are to be computed\n"
     "#(1: yes, 0: no); the task number decides for the computations"},
    {"ComputeAllAlleleFreqs", kSectionDiversity, &settings::ComputeAllAlleleFreqs, 0, kYesNo,
     "Allele frequencies at all loci",
     "#if allele frequencies are computed at all loci\n"
     "#(1: yes, 0: no)"},
    {"DistanceMethod", kSectionDiversity, &settings::DistanceMethod, 0, kDistance, "Molecular distance",
     "#the choice of the distance to be computed between haplotypes\n"
     "#DNA      - 0: Pairwise difference, 1: Jukes and Cantor, 2: Kimura 2P,\n"
     "#           3: Proportion of difference, 4: Tajima and Nei, 5: Tamura, 6: Tamura and Nei\n"
     "#RFLP     - 0: Pairwise difference, 1: Proportion of difference\n"
     "#MICROSAT - 0: No. of different alleles (FST), 1: Sum of squared size difference (RST)\n"
     "#STANDARD - 0: Pairwise differences"},
    {"GammaAValue", kSectionDiversity, &settings::GammaAValue, 0.0, kPlain, "Gamma a value",
     "#the value of the shape parameter of gamma distributed mutaiton rates (for DNA only)\n"
     "#0: equal rates at all sites"},
    {"ComputeTheta", kSectionDiversity, &settings::ComputeTheta, 0, kYesNo, nullptr,
     "#if theta->4Nu parameters are to be computed\n"
     "#(1: yes, 0: no); the task number decides for the computations"},
    {"PrintHaplDistMat", kSectionDiversity, &settings::PrintHaplDistMat, 0, kYesNo, "Print distance matrix",
     "#if a distance matrix between haplotypes needs to be output in result file\n"
     "#(1: yes, 0: no)"},
    {"PrintPopDistMat", kSectionDiversity, &settings::PrintPopDistMat, 0, kYesNo, nullptr,
     "#the same effect as \"PrintHaplDistMat\" above and should have the same value"},
    {"PrintMinSpannNetworkPop", kSectionDiversity, &settings::PrintMinSpannNetworkPop, 0, kYesNo,
     "Minimum spanning tree",
     "#if a Minimum Spaning Tree computed from the\n"
     "#distances between the haplotypes of each sample needs to be output (1: yes, 0: no)"},

    {"MismatchDemogExp", kSectionMismatch, &settings::MismatchDemogExp, 0, kYesNo, "Demographic expansion",
     "#if the parameters of a pure demographic expansions\n"
     "#are to be estimated (1: yes, 0: no)"},
    {"MismatchSpatialExp", kSectionMismatch, &settings::MismatchSpatialExp, 0, kYesNo, "Spatial expansion",
     "#if one attempts to estimate parameters of a spatial range expansion\n"
     "#(1: yes, 0: no)"},
    {"MismatchDistanceMethod", kSectionMismatch, &settings::MismatchDistanceMethod, 0, kDistance,
     "Molecular distance",
     "#the distance to be computed between haplotypes\n"
     "#for the mismatch distribution, as in the settings for diversity indices"},
    {"MismatchGammaAValue", kSectionMismatch, &settings::MismatchGammaAValue, 0.0, kPlain, "Gamma a value",
     "#the value of the shape parameter of gamma distributed\n"
     "#mutation rates for the mismatch distribution; 0: equal rates at all sites"},
    {"NumBootExpDem", kSectionMismatch, &settings::NumBootExpDem, 100, kPlain, "Bootstrap replicates",
     "#the number of bootstrap replicates used to compute the confidence\n"
     "#intervals of the expansion parameters and to test the fit of the model"},
    {"MismatchSpatialExpNumParams", kSectionMismatch, &settings::MismatchSpatialExpNumParams, 0, kPlain,
     "Model of spatial expansion",
     "#the type of range expansion\n"
     "#by its number of estimated parameters (3 or 4; 2: fit both models)"},

    {"ComputeAllHaplotypesEM", kSectionHaplotypeFrequencies, &settings::ComputeAllHaplotypesEM, 0, kYesNo,
     "Haplotype frequencies by EM",
     "#if we need to estimate haplotype frequencies through the EM algorithm\n"
     "#(1: yes, 0: no)"},
    {"ComputeAllAllelesEM", kSectionHaplotypeFrequencies, &settings::ComputeAllAllelesEM, 0, kYesNo,
     "Allele frequencies by EM",
     "#if we need to estimate all allele frequencies with the EM algorithm\n"
     "#(1: yes, 0: no)"},
    {"InitialConditionsEM", kSectionHaplotypeFrequencies, &settings::InitialConditionsEM, 50, kPlain,
     "Initial conditions for EM",
     "#the number of times the EM algorithm has to be performed\n"
     "#from random initial conditions"},
    {"MaximumNumOfIterationsEM", kSectionHaplotypeFrequencies, &settings::MaximumNumOfIterationsEM, 1000,
     kPlain, "Maximum no. of iterations", "#the maximum number of iterations of the EM algorithm per run"},
    {"RecessiveAllelesEM", kSectionHaplotypeFrequencies, &settings::RecessiveAllelesEM, 0, kYesNo,
     "Recessive alleles",
     "#if recessive alleles are to be considered in homozygotes\n"
     "#(1: yes, 0: no)"},
    {"CompactHaplotypeDataBaseEM", kSectionHaplotypeFrequencies, &settings::CompactHaplotypeDataBaseEM, 0,
     kYesNo, nullptr,
     "#if loci that are monomorphic are to be removed from the haplotypes\n"
     "#to save memory (1: yes, 0: no)"},
    {"NumBootstrapReplicatesEM", kSectionHaplotypeFrequencies, &settings::NumBootstrapReplicatesEM, 0, kPlain,
     "Bootstrap replicates",
     "#the number of bootstraps to perform in order to get estimates\n"
     "#of the standard deviations of haplotype frequencies (0: none)"},
    {"NumInitCondBootstrapEM", kSectionHaplotypeFrequencies, &settings::NumInitCondBootstrapEM, 10, kPlain,
     "Initial cond. per bootstrap",
     "#the number of random initial consitions for the EM,\n"
     "#in each bootstrap replicate"},
    {"ComputeAllSubHaplotypesEM", kSectionHaplotypeFrequencies, &settings::ComputeAllSubHaplotypesEM, 0,
     kYesNo, "All two-locus haplotypes",
     "#if we estimate all possible two-locus haplotype frequencies\n"
     "#(1: yes, 0: no)"},
    {"EMCheckPhenRedundancy", kSectionHaplotypeFrequencies, &settings::EMCheckPhenRedundancy, 0,
     kYesNo | kKeptWhenAbsent, nullptr,
     "#if phenotypes need to be checked to see if they are all different.\n"
     "#Those that are not are then merged (1: yes, 0: no)"},
    {"EpsilonValue", kSectionHaplotypeFrequencies, &settings::EpsilonValue, 1e-07, kScientific, nullptr,
     "#a threshold value: when the sum of haplotype frequency differences\n"
     "#between two iterations of the EM algorithm falls below it, the run ends"},
    {"FrequencyThreshold", kSectionHaplotypeFrequencies, &settings::FrequencyThreshold, 1e-05, kScientific,
     nullptr, "#the minimum frequency need to be reached by a haplotype to be listed in the result file"},
    {"EMEstimateInbreedingCoeff", kSectionHaplotypeFrequencies, &settings::EMEstimateInbreedingCoeff, 0,
     kYesNo | kKeptWhenAbsent, "Inbreeding coefficient",
     "#if we need to estimate the inbreeding coefficient together with the\n"
     "#haplotype frequencies (1: yes, 0: no)"},
    {"EMInbreedingFixedVal", kSectionHaplotypeFrequencies, &settings::EMInbreedingFixedVal, 0,
     kKeptWhenAbsent, "Fixed inbreeding coefficient",
     "#a predefined arbitrary value of inbreeding, which is taken into\n"
     "#account in place of an estimate (0: the coefficient is estimated)"},
    {"EMUseZipper", kSectionHaplotypeFrequencies, &settings::EMUseZipper, 0, kYesNo | kKeptWhenAbsent,
     "Zipper version of EM",
     "#if we use the zipper version of the EM algorithm (unpublished)\n"
     "#that adds the loci one after the other (1: yes, 0: no)"},
    {"EMLociRandOrder", kSectionHaplotypeFrequencies, &settings::EMLociRandOrder, 0, kYesNo | kKeptWhenAbsent,
     nullptr,
     "#if loci are to be added in a random order for the zipper version of the EM\n"
     "#(1: yes, 0: no); the number of random orders below decides for the computations"},
    {"EMNumZipRandOrders", kSectionHaplotypeFrequencies, &settings::EMNumZipRandOrders, 0, kKeptWhenAbsent,
     "Random orders of loci",
     "#how many random orders have to be considered assuming EMLociRandOrder=1\n"
     "#(0: one run in the order of the project file)"},
    {"GibbsInferGamPhase", kSectionHaplotypeFrequencies, &settings::GibbsInferGamPhase, 0,
     kYesNo | kKeptWhenAbsent, "Gametic phase by Gibbs sampling",
     "#if we estimate individual gametic phase and haplotype frequencies\n"
     "#by Gibbs sampling (1: yes, 0: no)"},
    {"GibbsBurnIn", kSectionHaplotypeFrequencies, &settings::GibbsBurnIn, 100000, kKeptWhenAbsent,
     "Burn-in steps", "#the number of the Gibbs steps in the burnin"},
    {"GibbsSamplingInterval", kSectionHaplotypeFrequencies, &settings::GibbsSamplingInterval, 500,
     kKeptWhenAbsent, "Sampling interval", "#the number of Gibbs steps between each consecutive samples"},
    {"GibbsNumSamples", kSectionHaplotypeFrequencies, &settings::GibbsNumSamples, 2000, kKeptWhenAbsent,
     "No. of samples", "#how many samples we need to get in order to build the posterior distribution"},
    {"GibbsAlphaInitValue", kSectionHaplotypeFrequencies, &settings::GibbsAlphaInitValue, 0.01,
     kKeptWhenAbsent, "Dirichlet alpha",
     "#the value of the alpha parameter of the Dirichlet prior distribution"},
    {"GibbsEpsilonValue", kSectionHaplotypeFrequencies, &settings::GibbsEpsilonValue, 0.01, kKeptWhenAbsent,
     "Dirichlet epsilon",
     "#the value of the epsilon parameter, used to take into account the frequency\n"
     "#of haplotypes that are similar to the one under consideration"},
    {"GibbsGamma", kSectionHaplotypeFrequencies, &settings::GibbsGamma, 0.0, kKeptWhenAbsent, "Gamma",
     "#the gamma parameter of the PWS algorithm, used to avoid dynamic windows to grow too large,\n"
     "#by the ratio of evidence that an extension of the window must bring"},
    {"GibbsHetSiteInfluenceZone", kSectionHaplotypeFrequencies, &settings::GibbsHetSiteInfluenceZone, 5,
     kKeptWhenAbsent, "Influence zone of het. sites",
     "#the number of loci to be taken into account\n"
     "#on each side of a heterozygous locus (0: the heterozygous loci alone, -1: all loci)"},
    {"GibbsPercentageOfRecSteps", kSectionHaplotypeFrequencies, &settings::GibbsPercentageOfRecSteps, 0.0,
     kKeptWhenAbsent, "Fraction of recombination steps",
     "#the fraction of steps in Gibbs sampling that\n"
     "#are recombination steps, between 0 and 1"},
    {"GibbsOutputGamPhase", kSectionHaplotypeFrequencies, &settings::GibbsOutputGamPhase, 0,
     kYesNo | kKeptWhenAbsent, "Output of phases in files",
     "#if we output individual gametic phases in *.mnp files\n"
     "#(1: yes, 0: no)"},

    // One comment line lacks its number sign. Kept on purpose, the file has always been so.
    {"HaplAMOVA", kSectionAmova, &settings::HaplAMOVA, 0, kYesNo, "Global AMOVA",
     "#if the AMOVA computations need to be performed globally,\n"
     " for all loci at the same time, as for haplotypes\n"
     "#(1: yes, 0: no)"},
    {"LocByLocAMOVA", kSectionAmova, &settings::LocByLocAMOVA, 0, kYesNo, "Locus by locus AMOVA",
     "#if the AMOVA computations need to be performed separately for each locus.\n"
     "#(1: yes, 0: no)"},
    {"PopSpecificFST", kSectionAmova, &settings::PopSpecificFST, 0, kYesNo, "Population specific FST",
     "#if population specific FST indices need to be computed.\n"
     "#(1: yes, 0: no)"},
    {"PopSpecificFIS", kSectionAmova, &settings::PopSpecificFIS, 0, kYesNo, "Population specific FIS",
     "#if population specific FIS indices need to be computed.\n"
     "#(1: yes, 0: no)"},
    {"TestSignificanceAMOVA", kSectionAmova, &settings::TestSignificanceAMOVA, 0, kYesNo, nullptr,
     "#should be set to 1 to perfrom significance testing of the variance components\n"
     "#and F-statistics; the number of permutations below decides for the computations"},
    {"NumPermutationsAMOVA", kSectionAmova, &settings::NumPermutationsAMOVA, 1000, kPlain,
     "No. of permutations",
     "#if variance components are tested by permutations,\n"
     "#this is the number of permutations (0: no test)"},
    {"ComputeConventionalFST", kSectionAmova, &settings::ComputeConventionalFST, 0, kYesNo,
     "Conventional F-statistics",
     "#if conventional FSt are to be computed as opposed to\n"
     "#those that take into account the distances between haplotypes (1: yes, 0: no)"},
    {"IncludeIndividualLevel", kSectionAmova, &settings::IncludeIndividualLevel, 0, kYesNo,
     "Include individual level",
     "#if FIS statistics and associated variance components\n"
     "#are to be computed, for genotypic data (1: yes, 0: no)"},
    {"ComputeDistanceMatrixAMOVA", kSectionAmova, &settings::ComputeDistanceMatrixAMOVA, 1, kYesNo,
     "Compute distance matrix",
     "#if a matrix of pairwise Euclidian distances needs to be computed\n"
     "#(1), as opposed to the use of the matrix of the project file (0)"},
    {"DistanceMethodAMOVA", kSectionAmova, &settings::DistanceMethodAMOVA, 0, kDistance, "Molecular distance",
     "#if a matrix of euclidian distances should be computed\n"
     "#this is the choice of the distance, as in the settings for diversity indices"},
    {"GammaAValueAMOVA", kSectionAmova, &settings::GammaAValueAMOVA, 0, kPlain, "Gamma a value",
     "#the shape parameter of gamma distributed mutation rates.\n"
     "#0: equal rates at all sites"},
    {"PrintDistanceMatrix", kSectionAmova, &settings::PrintDistanceMatrix, 0, kYesNo, "Print distance matrix",
     "#if the matrix of pairwise distance between haplotypes should\n"
     "#be output in result file (1: yes, 0: no)"},
    {"PrintMinSpannNetworkGlob", kSectionAmova, &settings::PrintMinSpannNetworkGlob, 0, kYesNo,
     "Minimum spanning tree",
     "#if a Minimum Spanning Network need sto be computed from a matrix\n"
     "#of distances between the haplotypes of all samples (1: yes, 0: no)"},

    {"TestSignificancePairewiseFST", kSectionPairwise, &settings::TestSignificancePairewiseFST, 0, kYesNo,
     "Test of significance",
     "#if pairwise distances should be tested by permutations\n"
     "#(1: yes, 0: no). Ignored: they are tested when NumPermutationsFST is above 0"},
    {"NumPermutationsFST", kSectionPairwise, &settings::NumPermutationsFST, 100, kPlain,
     "No. of permutations",
     "#the number of permutations to be perfromed to test the significance\n"
     "#of pairwise distances"},
    {"ComputePairwiseFST", kSectionPairwise, &settings::ComputePairwiseFST, 0, kYesNo, "Pairwise FST",
     "#if FST's should be computed between all pairs of populations\n"
     "#(1: yes, 0: no)"},
    {"ComputeDeltaMuSqr", kSectionPairwise, &settings::ComputeDeltaMuSqr, 0, kYesNo, "Delta-mu square",
     "#if delta-mu square statistics is computed between all pairs of populations\n"
     "#for microsatellite data (1: yes, 0: no)"},
    {"FSTSignifLevel", kSectionPairwise, &settings::FSTSignifLevel, 0.05, kPlain, "Significance level",
     "#the p-value under which pairwise distances are assumed to be significant"},
    {"PrintFstVals", kSectionPairwise, &settings::PrintFstVals, 0, kYesNo, "Print pairwise FST",
     "#if pairwise FST values need to be printed in the result file\n"
     "#(1: yes, 0: no)"},
    {"PrintConcestryCoeff", kSectionPairwise, &settings::PrintConcestryCoeff, 0, kYesNo, "Reynolds' distance",
     "#if Reynold's distances need to be printed in the result file\n"
     "#(1: yes, 0: no)"},
    {"PrintSlatkinsDist", kSectionPairwise, &settings::PrintSlatkinsDist, 0, kYesNo, "Slatkin's distance",
     "#if Slatkin's distances need to be printed in the result file\n"
     "#(1: yes, 0: no)"},
    {"PrintMissIntermatchs", kSectionPairwise, &settings::PrintMissIntermatchs, 0, kYesNo,
     "Pairwise differences",
     "#average number of pairwise differences between populations\n"
     "#need to be printed (1: yes, 0: no)"},
    {"UnequalPopSizeDiv", kSectionPairwise, &settings::UnequalPopSizeDiv, 0, kYesNo,
     "Unequal population sizes",
     "#if the distances taking into account diferences between population sizes\n"
     "#need to be computed (1: yes, 0: no)"},

    {"NumPermutPopDiff", kSectionDifferentiation, &settings::NumPermutPopDiff, 100000, kPlain,
     "Steps in Markov chain",
     "#the number of steps in the Markov chain for the exact test\n"
     "#of population differentiation"},
    // Its second comment line lacks the number sign. Kept on purpose, as above.
    {"NumDememoPopDiff", kSectionDifferentiation, &settings::NumDememoPopDiff, 10000, kPlain,
     "Dememorization steps",
     "#the number of steps in the burnin of the markov chain used for the\n"
     "exact test of popualtion differentiation"},
    {"PrecProbPopDiff", kSectionDifferentiation, &settings::PrecProbPopDiff, 0, kReadAsInteger,
     "Precision on P-value",
     "#the precision required for the p-value, at which the chain may end early\n"
     "#(0: never)"},
    {"PrintHistoPopDiff", kSectionDifferentiation, &settings::PrintHistoPopDiff, 1, kYesNo,
     "Table of significant tests",
     "#if a summary table of siginificant differences beteen populations\n"
     "#needs to be printed (1: yes, 0: no)"},
    {"SignLevelPopDiff", kSectionDifferentiation, &settings::SignLevelPopDiff, 0.05, kPlain,
     "Significance level",
     "#the p-value under which a difference between populations is assumed to be significant"},

    {"DetectSelectedLoci", kSectionSelection, &settings::DetectSelectedLoci, 0, kYesNo, nullptr,
     "#if the test of selection based on FST and heterozygosity (FDIST2) will be performed\n"
     "#(1: yes, 0: no)"},
    {"UseHierarchicalIslandModel", kSectionSelection, &settings::UseHierarchicalIslandModel, 0, kYesNo,
     nullptr,
     "#if a hierarchical island model should be used to generate the null distribution of FST\n"
     "#(1: yes, 0: no, a finite island model)"},
    {"NumberOfGroupsForFDist2", kSectionSelection, &settings::NumberOfGroupsForFDist2, 10, kPlain, nullptr,
     "#the number of groups in the simulated hierarchical island model"},
    {"NumberOfDemesForFDist2", kSectionSelection, &settings::NumberOfDemesForFDist2, 100, kPlain, nullptr,
     "#the number of simulated demes, by group under the hierarchical island model"},
    {"NumberOfSimsForFDist2", kSectionSelection, &settings::NumberOfSimsForFDist2, 20000, kPlain, nullptr,
     "#the number of coalescent simulations to be performed"},
    {"UseSimFileForFDist2", kSectionSelection, &settings::UseSimFileForFDist2, 0, kYesNo, nullptr,
     "#a flag to indicate if we can use some file with pre-simulated data\n"
     "#(1: yes, 0: no)"},
    {"SimFileNameForFDist2", kSectionSelection, &settings::SimFileNameForFDist2, 0, kPlain, nullptr,
     "#the name of the file containing pre-simulated data\n"
     "#(at most 78 characters)"},
    {"TargetHetLowBound", kSectionSelection, &settings::TargetHetLowBound, 0.0, kPlain, nullptr,
     "#the target LOW bound for simulated heterozagosity in the coalescent simulations under a finite island "
     "model"},
    {"TargetHetHighBound", kSectionSelection, &settings::TargetHetHighBound, 1.0, kPlain, nullptr,
     "#the target HIGH bound for simulated heterozagosity in the coalescent simulations under a finite "
     "island "
     "model"},
    {"MinDafFreq", kSectionSelection, &settings::MinDafFreq, 0.0, kPlain, nullptr,
     "#the minimum frequency of the simulated derived allele. It is used to implement soem form of "
     "ascertainment bias"},
    {"IterativeProcForFDist2", kSectionSelection, &settings::IterativeProcForFDist2, 0, kYesNo, nullptr,
     "#if we use an iterative procedure to detect loci under selection\n"
     "#(1: yes, 0: no)"},

    {"EwensWattersonHomozygosityTest", kSectionNeutrality, &settings::EwensWattersonHomozygosityTest, 0,
     kYesNo, "Homozygosity test",
     "#if the Ewens-watterson neutraltiy test should be performed\n"
     "#(1: yes, 0: no)"},
    {"NumIterationsNeutralityTests", kSectionNeutrality, &settings::NumIterationsNeutralityTests, 1000,
     kPlain, "No. of simulated samples",
     "#the number of simulations to be performed for the\n"
     "#tests based on the infinite-allele model (Ewens-Watterson, Chakraborty)"},
    {"NumSimulFuTest", kSectionNeutrality, &settings::NumSimulFuTest, 1000, kPlain,
     "No. of simulated samples",
     "#the number of simulations to be performed for the tests\n"
     "#based on the infinite-site model (Tajima, Fu)"},

    {"NumPermMantel", kSectionMantel, &settings::NumPermMantel, 1000, kPlain, "No. of permutations",
     "#the number of permutations to be perform to get the significance of\n"
     "#the correlation between matrices"},

    {"Divergencetime", kSectionReadOnly, &settings::Divergencetime, 0, kPlain, nullptr, ""},
    {"IsFontKnown", kSectionReadOnly, &settings::IsFontKnown, 0, kPlain, nullptr, ""},
    {"NbFrontSegments", kSectionReadOnly, &settings::NbFrontSegments, 0, kPlain, nullptr, ""},
    {"SegmentLength", kSectionReadOnly, &settings::SegmentLength, 0, kPlain, nullptr, ""},
    {"NumOfGroups", kSectionReadOnly, &settings::NumOfGroups, 0, kPlain, nullptr, ""},
    {"DiffusionMode", kSectionReadOnly, &settings::DiffusionMode, 0, kPlain, nullptr, ""},
    {"NbFrontPerm", kSectionReadOnly, &settings::NbFrontPerm, 0, kPlain, nullptr, ""},
    {"EMEstimHaplFreqs", kSectionReadOnly, &settings::ComputeAllHaplotypesEM, 0, kYesNo, nullptr, ""},
    {"EMWinSize", kSectionReadOnly, &settings::EMWinSize, 0, kPlain, nullptr, ""},
    {"EMInbreedingEachLocus", kSectionReadOnly, &settings::EMInbreedingEachLocus, 0, kPlain, nullptr, ""},
    {"EMCompGamPhaseForAllInitConds", kSectionReadOnly, &settings::EMCompGamPhaseForAllInitConds, 0, kPlain,
     nullptr, ""},
};

// The text before a point.
std::string whole_text(const char* text) {
    return {text, std::strcspn(text, ".")};
}

std::string formatted(const char* format, auto value) {
    char text[400];  // a double takes up to 317 characters
    std::snprintf(text, sizeof text, format, value);
    return text;
}

}  // namespace

const char* section_heading(SettingSection section) {
    return kHeadings[static_cast<std::size_t>(section)];
}

std::span<const SettingKey> setting_keys() {
    return kKeys;
}

const SettingKey* find_setting(const char* name) {
    for (const SettingKey& key : kKeys) {
        if (std::strcmp(key.name, name) == 0) return &key;
    }
    return nullptr;
}

std::string setting_text(const settings& s, const SettingKey& key) {
    return std::visit(
        [&](auto field) -> std::string {
            const auto& value = s.*field;
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, my_string>) {
                return value.c_str();
            } else if constexpr (std::is_same_v<Value, double>) {
                return formatted((key.traits & kScientific) != 0 ? "%e" : "%f", value);
            } else if constexpr (std::is_same_v<Value, long>) {
                return formatted("%ld", value);
            } else {
                return formatted("%d", static_cast<int>(value));
            }
        },
        key.field);
}

void assign_setting_text(settings& s, const SettingKey& key, const char* text) {
    std::visit(
        [&](auto field) {
            auto& value = s.*field;
            using Value = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, my_string>) {
                value = text;
            } else if constexpr (std::is_same_v<Value, double>) {
                const bool whole = (key.traits & kReadAsInteger) != 0;
                value = whole ? static_cast<double>(my_atol(text)) : my_atof(text);
            } else if constexpr (std::is_same_v<Value, bool>) {
                value = my_atol(text) != 0;
            } else {
                const bool cut = (key.traits & kCutFraction) != 0;
                value = static_cast<Value>(cut ? my_atol(whole_text(text).c_str()) : my_atol(text));
            }
        },
        key.field);
}

void assign_setting_number(settings& s, const SettingKey& key, double value) {
    std::visit(
        [&](auto field) {
            using Value = std::decay_t<decltype(s.*field)>;
            if constexpr (std::is_same_v<Value, my_string>) {
                s.*field = "";
            } else {
                s.*field = static_cast<Value>(value);
            }
        },
        key.field);
}

}  // namespace mnd
