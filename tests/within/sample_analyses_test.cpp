#include "within/sample_analyses.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

#include "foundation/data_type.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "results/citations.h"
#include "run/tasks.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "within/analysed_sample.h"

namespace {

using namespace mnd;
using mnd_test::AnalysedSamples;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::genotypic;
using mnd_test::haplotypic;

constexpr long kDiversity = kTaskStandardIndices | kTaskMolecularDiversity;

// A line "@" and keys in an expected document stands for the citations of these publications.
std::string with_citations(const std::string& text) {
    std::istringstream in(text);
    std::string result;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] != '@') {
            result += line + "\n";
            continue;
        }
        std::istringstream keys(line.substr(1));
        std::string list;
        int number = 0;
        for (std::string key; keys >> key; ++number) {
            const std::string_view citation = References::get_reference(key);
            EXPECT_FALSE(citation.empty()) << key;
            list += "           <i>" + std::string(citation) + "</i>\n";
        }
        result += number == 1 ? "Reference: " + list.substr(11) : "References:\n" + list;
    }
    return result;
}

// The document without the frame of a sample: what its tasks wrote.
std::string below_frame(const std::string& document, const std::string& name) {
    const std::string rule(13 + name.size(), '=');
    const std::string frame = "\n" + rule + "\n== Sample : \t" + name + "\n" + rule + "\n\n";
    const std::size_t at = document.find(frame);
    if (at == std::string::npos) return "no frame in\n" + document;
    const std::size_t begin = at + frame.size();
    const std::size_t next = document.find("== Sample : \t", begin);
    if (next == std::string::npos) return document.substr(begin);
    return document.substr(begin, document.rfind("\n=", document.rfind("\n=", next) - 1) - begin);
}

// --- Complete blocks of each data type. Apart from what the comments derive, the numbers come
// from the published formulae in exact or 40-digit arithmetic elsewhere.

TEST(DocumentOfASample, OfDnaSequences) {
    // 5 copies. Pairs of haplotypes differ at 1, 3 and 4 sites: 2 x 1 + 4 x 3 + 2 x 4 = 22 over 10 pairs.
    // Sites: A/T at 8 and A/C at 5 are transversions, T/C at 4 a transition, a gap at 6; a1 = 25/12.
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 2 ACGTACGTAC\nh2 1 ACGTACGAAC\nh3 2 ACGCC-GTAC\n");
    a.prepare();
    EXPECT_EQ(below_frame(a.analyse(kDiversity), "Lake"), with_citations(R"doc(
======================================
== Standard diversity indices : (Lake)
======================================

No. of gene copies       : 5
No. of sequences         : 3
No. of loci              : 10
No. of usable loci       : 10 loci with less than 5.00 % missing data
No. of polymorphic sites : 4

Haplotype-level computations
----------------------------

Sum of square freqs.     : 0.36000
Gene diversity           : 0.80000 +/- 0.16395
(Standard deviation is for the sampling process)

Number of alleles and gene diversity per polymorphic site
---------------------------------------------------------

    Site   Gene copies       Alleles    Gene diversity
       4             5             2           0.60000
       5             5             2           0.60000
       6             5             2           0.60000
       8             5             2           0.40000
    Mean       5.00000       2.00000           0.55000
    s.d.       0.00000       0.00000           0.10000

@Nei_1987

=======================================
== Molecular diversity indices : (Lake)
=======================================

Sample size                                  : 5
No. of haplotypes                            : 3

Deletion weight                              : 1.00000
Transition weight                            : 1.00000
Transversion weight                          : 1.00000
Allowed level of missing data                : 5.00 %

Number of observed transitions               : 1
No. of transversions                         : 2
No. of substitutions                         : 3
No. of indels                                : 1
No. of ts. sites                             : 1
No. of tv. sites                             : 2
No. of subst. sites                          : 3
No. of indel sites                           : 1
Number of observed nucleotide sites          : 10
Number of usable nucleotide sites            : 10

Nucleotide composition (Relative values)
   C : 35.42%
   T : 14.58%
   A : 29.17%
   G : 20.83%
   Total : 100.00%

Distance method                              : Pairwise difference (no Gamma correction)

Mean number of pairwise differences          : 2.20000 +/- 1.45032
Nucleotide diversity (average over loci)     : 0.22000 +/- 0.16955
(Standard deviations are for both the sampling and the stochastic processes)

@Tajima_1983 Tajima_1993 Nei_1987

Theta(Hom) : 3.17103
S.D. Theta(Hom) : 3.51669

Theta(k) : 2.22544
95 % confidence interval limits for theta(k) : [ 0.52693, 33.07637 ]

Theta(S) : 1.44000
S.D. Theta(S) : 1.01619

Theta(Pi) : 2.20000
S.D. Theta(Pi) : 1.69548

@Zouros_1979 Chakraborty_Weiss_1991 Ewens_1972 Watterson_1975 Tajima_1983
)doc"));
}

TEST(DocumentOfASample, OfRflpHaplotypes) {
    // 4 copies; pairs differ at 1, 2 and 3 sites: 2 x 1 + 2 x 2 + 1 x 3 = 9 over 6 pairs. S = 2, a1 = 11/6.
    AnalysedSamples<PopulRFLP> a(haplotypic(RFLP, 0));
    a.add("Lake", "h1 2 10101\nh2 1 10111\nh3 1 00-01\n");
    a.prepare();
    EXPECT_EQ(below_frame(a.analyse(kDiversity), "Lake"), with_citations(R"doc(
======================================
== Standard diversity indices : (Lake)
======================================

No. of gene copies       : 4
No. of sequences         : 3
No. of loci              : 5
No. of usable loci       : 5 loci with less than 5.00 % missing data
No. of polymorphic sites : 3

Haplotype-level computations
----------------------------

Sum of square freqs.     : 0.37500
Gene diversity           : 0.83333 +/- 0.22244
(Standard deviation is for the sampling process)

Number of alleles and gene diversity per polymorphic site
---------------------------------------------------------

    Site   Gene copies       Alleles    Gene diversity
       1             4             2           0.50000
       3             4             2           0.50000
       4             4             2           0.50000
    Mean       4.00000       2.00000           0.50000
    s.d.       0.00000       0.00000           0.00000

@Nei_1987

=======================================
== Molecular diversity indices : (Lake)
=======================================

Sample size                                  : 4
No. of haplotypes                            : 3

Deletion weight                              : 1.00000
Allowed level of missing data                : 5.00 %

No. of substitutions                         : 2
No. of indels                                : 1
No. of subst. sites                          : 2
No. of indel sites                           : 1
Number of observed sites                     : 5
Number of usable sites                       : 5

Distance method                              : Pairwise difference (no Gamma correction)

Mean number of pairwise differences          : 1.50000 +/- 1.12093
Nucleotide diversity (average over loci)     : 0.30000 +/- 0.26771
(Standard deviations are for both the sampling and the stochastic processes)

@Tajima_1983 Tajima_1993 Nei_1987

Theta(Hom) : 4.04203
S.D. Theta(Hom) : 7.07146

Theta(k) : 3.76644
95 % confidence interval limits for theta(k) : [ 0.77450, 235.82337 ]

Theta(S) : 1.09091
S.D. Theta(S) : 0.87553

Theta(Pi) : 1.50000
S.D. Theta(Pi) : 1.33853

@Zouros_1979 Chakraborty_Weiss_1991 Ewens_1972 Watterson_1975 Tajima_1983
)doc"));
}

TEST(DocumentOfASample, OfMicrosatellites) {
    // 4 copies; pairs have 1, 1 and 2 different alleles: 6 over 6 pairs. Sizes 10 10 12 10 and 7 7 7 9;
    // over both samples they range from 10 to 17 and from 4 to 9.
    AnalysedSamples<PopulMicrosat> a(haplotypic(MICROSAT, ' '));
    a.add("Lake", "h1 2 10 7\nh2 1 12 7\nh3 1 10 9\n");
    a.add("Sea", "h4 2 10 4\nh5 1 17 4\n");
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_EQ(below_frame(document, "Lake"), with_citations(R"doc(
======================================
== Standard diversity indices : (Lake)
======================================

No. of gene copies       : 4
No. of sequences         : 3
No. of loci              : 2
No. of usable loci       : 2 loci with less than 5.00 % missing data
No. of polymorphic loci  : 2

Haplotype-level computations
----------------------------

Sum of square freqs.     : 0.37500
Gene diversity           : 0.83333 +/- 0.22244
(Standard deviation is for the sampling process)

Number of alleles and gene diversity per locus
----------------------------------------------

   Locus   Gene copies       Alleles    Gene diversity
       1             4             2           0.50000
       2             4             2           0.50000
    Mean       4.00000       2.00000           0.50000
    s.d.       0.00000       0.00000           0.00000

Allele sizes and Garza-Williamson index
---------------------------------------

   Locus       Alleles     Mean size    Size range         G-W index    Modified index
       1             2      10.50000             2           0.66667           0.25000
       2             2       7.50000             2           0.66667           0.33333
    Mean       2.00000       9.00000       2.00000           0.66667           0.29167
    s.d.       0.00000       2.12132       0.00000           0.00000           0.05893

@Nei_1987 Garza_Williamson_2001

=======================================
== Molecular diversity indices : (Lake)
=======================================

Sample size                                  : 4
No. of haplotypes                            : 3

Allowed level of missing data                : 5.00 %

Number of loci                               : 2
Number of usable loci                        : 2
Number of polymorphic loci                   : 2

Distance method                              : No. of different alleles (FST) (no Gamma correction)

Mean number of pairwise differences          : 1.00000 +/- 0.82965
(Standard deviations are for both the sampling and the stochastic processes)

@Tajima_1983 Tajima_1993 Nei_1987

Infinite allele model:


Theta(Hom) : 4.04203
S.D. Theta(Hom) : 7.07146

@Zouros_1979 Chakraborty_Weiss_1991
)doc"));
    // 3 copies, of which 2 pairs differ at one locus.
    EXPECT_EQ(below_frame(document, "Sea"), with_citations(R"doc(
=====================================
== Standard diversity indices : (Sea)
=====================================

No. of gene copies       : 3
No. of sequences         : 2
No. of loci              : 2
No. of usable loci       : 2 loci with less than 5.00 % missing data
No. of polymorphic loci  : 1

Haplotype-level computations
----------------------------

Sum of square freqs.     : 0.55556
Gene diversity           : 0.66667 +/- 0.31427
(Standard deviation is for the sampling process)

Number of alleles and gene diversity per locus
----------------------------------------------

   Locus   Gene copies       Alleles    Gene diversity
       1             3             2           0.66667
       2             3             1           0.00000
    Mean       3.00000       1.50000           0.33333
    s.d.       0.00000       0.70711           0.47140

Allele sizes and Garza-Williamson index
---------------------------------------

   Locus       Alleles     Mean size    Size range         G-W index    Modified index
       1             2      12.33333             7           0.25000           0.25000
       2             1       4.00000             0           1.00000           0.16667
    Mean       1.50000       8.16667       3.50000           0.62500           0.20833
    s.d.       0.70711       5.89256       4.94975           0.53033           0.05893

@Nei_1987 Garza_Williamson_2001

======================================
== Molecular diversity indices : (Sea)
======================================

Sample size                                  : 3
No. of haplotypes                            : 2

Allowed level of missing data                : 5.00 %

Number of loci                               : 2
Number of usable loci                        : 2
Number of polymorphic loci                   : 1

Distance method                              : No. of different alleles (FST) (no Gamma correction)

Mean number of pairwise differences          : 0.66667 +/- 0.66667
(Standard deviations are for both the sampling and the stochastic processes)

@Tajima_1983 Tajima_1993 Nei_1987

Infinite allele model:


Theta(Hom) : 1.51882
S.D. Theta(Hom) : 2.23658

@Zouros_1979 Chakraborty_Weiss_1991
)doc"));
}

TEST(DocumentOfASample, OfAllelesOfUnknownPhase) {
    // Haplotypes as written: A x 3, B x 2, A y 1. Pairs differ at 1 (A x, B x), 1 (A x, A y) and 2 loci:
    // 6 + 3 + 4 = 13 over 15 pairs.
    AnalysedSamples<PopulStandard> a(genotypic(STANDARD, ' ', 0));
    a.add("Lake", "a 2 A x\n B x\nb 1 A y\n A x\n");
    a.prepare();
    EXPECT_EQ(below_frame(a.analyse(kDiversity), "Lake"), with_citations(R"doc(
======================================
== Standard diversity indices : (Lake)
======================================

No. of gene copies       : 6
No. of loci              : 2
No. of usable loci       : 2 loci with less than 5.00 % missing data
No. of polymorphic loci  : 2

Haplotype-level computations
----------------------------

Gametic phase is unknown: the haplotypes are those that the project file writes side by side,
and what is computed from them depends on that writing.

Sum of square freqs.     : 0.38889
Gene diversity           : 0.73333 +/- 0.15516
(Standard deviation is for the sampling process)

Number of alleles and gene diversity per locus
----------------------------------------------

   Locus   Gene copies       Alleles    Gene diversity
       1             6             2           0.53333
       2             6             2           0.33333
    Mean       6.00000       2.00000           0.43333
    s.d.       0.00000       0.00000           0.14142

Observed and expected heterozygosity per locus
----------------------------------------------

   Locus   Individuals     Observed het.     Expected het.
       1             3           0.66667           0.53333
       2             3           0.33333           0.33333
    Mean                         0.50000           0.43333
    s.d.                         0.23570           0.14142

@Nei_1987

=======================================
== Molecular diversity indices : (Lake)
=======================================

Sample size                                  : 6
No. of haplotypes                            : 3

Allowed level of missing data                : 5.00 %

Number of loci                               : 2
Number of usable loci                        : 2
Number of polymorphic loci                   : 2

Gametic phase is unknown: the haplotypes are those that the project file writes side by side,
and what is computed from them depends on that writing.

Distance method                              : Pairwise differences (no Gamma correction)

Mean number of pairwise differences          : 0.86667 +/- 0.70079
(Standard deviations are for both the sampling and the stochastic processes)

@Tajima_1983 Tajima_1993 Nei_1987

Theta(Hom) : 2.12235
S.D. Theta(Hom) : 1.78558

Theta(k) : 1.69577
95 % confidence interval limits for theta(k) : [ 0.42696, 16.11931 ]

@Zouros_1979 Chakraborty_Weiss_1991 Ewens_1972
)doc"));
}

TEST(DocumentOfASample, OfFrequenciesWithoutHaplotypes) {
    // Counts 5, 3 and 2: sum of squares 0.38, gene diversity 31/45.
    AnalysedSamples<PopulStandard> a(haplotypic(FREQUENCY, ' '));
    a.add("Lake", "f1 5\nf2 3\nf3 2\n");
    a.prepare();
    EXPECT_EQ(below_frame(a.analyse(kDiversity), "Lake"), with_citations(R"doc(
======================================
== Standard diversity indices : (Lake)
======================================

No. of gene copies       : 10
No. of sequences         : 3
No. of loci              : 0
No. of usable loci       : 0 loci with less than 5.00 % missing data
No. of polymorphic loci  : 0

Haplotype-level computations
----------------------------

Sum of square freqs.     : 0.38000
Gene diversity           : 0.68889 +/- 0.10384
(Standard deviation is for the sampling process)

@Nei_1987

=======================================
== Molecular diversity indices : (Lake)
=======================================

Sample size                                  : 10
No. of haplotypes                            : 3

Allowed level of missing data                : 5.00 %

Number of loci                               : 0
Number of usable loci                        : 0
Number of polymorphic loci                   : 0

Mean number of pairwise differences cannot be computed without haplotype data

Theta(Hom) : 1.68913
S.D. Theta(Hom) : 0.85698

Theta(k) : 1.05219
95 % confidence interval limits for theta(k) : [ 0.28866, 6.12749 ]

@Zouros_1979 Chakraborty_Weiss_1991 Ewens_1972
)doc"));
}

TEST(DocumentOfASample, OfSequencesOfKnownPhase) {
    // ACG twice and ACT four times: 8 of 15 pairs differ at one site. a1 = 137/60.
    AnalysedSamples<PopulDNA> a(genotypic(DNA, 0, 1));
    a.add("Lake", "a 2 ACG\n ACT\nb 1 ACT\n ACT\n");
    a.prepare();
    EXPECT_EQ(below_frame(a.analyse(kDiversity), "Lake"), with_citations(R"doc(
======================================
== Standard diversity indices : (Lake)
======================================

No. of gene copies       : 6
No. of sequences         : 2
No. of loci              : 3
No. of usable loci       : 3 loci with less than 5.00 % missing data
No. of polymorphic sites : 1

Haplotype-level computations
----------------------------

Sum of square freqs.     : 0.55556
Gene diversity           : 0.53333 +/- 0.17213
(Standard deviation is for the sampling process)

Number of alleles and gene diversity per polymorphic site
---------------------------------------------------------

    Site   Gene copies       Alleles    Gene diversity
       3             6             2           0.53333
    Mean       6.00000       2.00000           0.53333
    s.d.       0.00000       0.00000           0.00000

Observed and expected heterozygosity per locus
----------------------------------------------

   Locus   Individuals     Observed het.     Expected het.
       1             3           0.00000           0.00000
       2             3           0.00000           0.00000
       3             3           0.66667           0.53333
    Mean                         0.22222           0.17778
    s.d.                         0.38490           0.30792

@Nei_1987

=======================================
== Molecular diversity indices : (Lake)
=======================================

Sample size                                  : 6
No. of haplotypes                            : 2

Deletion weight                              : 1.00000
Transition weight                            : 1.00000
Transversion weight                          : 1.00000
Allowed level of missing data                : 5.00 %

Number of observed transitions               : 0
No. of transversions                         : 1
No. of substitutions                         : 1
No. of indels                                : 0
No. of ts. sites                             : 0
No. of tv. sites                             : 1
No. of subst. sites                          : 1
No. of indel sites                           : 0
Number of observed nucleotide sites          : 3
Number of usable nucleotide sites            : 3

Nucleotide composition (Relative values)
   C : 33.33%
   T : 22.22%
   A : 33.33%
   G : 11.11%
   Total : 100.00%

Distance method                              : Pairwise difference (no Gamma correction)

Mean number of pairwise differences          : 0.53333 +/- 0.50772
Nucleotide diversity (average over loci)     : 0.17778 +/- 0.19542
(Standard deviations are for both the sampling and the stochastic processes)

@Tajima_1983 Tajima_1993 Nei_1987

Theta(Hom) : 0.85473
S.D. Theta(Hom) : 0.60026

Theta(k) : 0.59212
95 % confidence interval limits for theta(k) : [ 0.12994, 6.59947 ]

Theta(S) : 0.43796
S.D. Theta(S) : 0.43796

Theta(Pi) : 0.53333
S.D. Theta(Pi) : 0.58626

@Zouros_1979 Chakraborty_Weiss_1991 Ewens_1972 Watterson_1975 Tajima_1983
)doc"));
}

// --- The frame, headings and their order

TEST(SampleAnalyses, FramesTheSampleForEachOfItsTasksAlone) {
    const std::string frame = "\n=================\n== Sample : \tLake\n=================\n\n";
    for (const long task :
         {kTaskStandardIndices, kTaskMolecularDiversity, kTaskMismatch, kTaskHaplotypeFrequencies,
          kTaskLinkageDisequilibrium, kTaskHardyWeinberg, kTaskTajima, kTaskEwensWatterson, kTaskChakraborty,
          kTaskDistanceFiles, kTaskFuFs}) {
        AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
        a.add("Lake", "h1 2 ACGT\nh2 1 ACGA\n");
        a.prepare();
        EXPECT_EQ(a.analyse(task).rfind(frame, 0), 0U) << task;
    }
}

TEST(SampleAnalyses, WritesNothingForOtherTasks) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 2 ACGT\n");
    a.prepare();
    EXPECT_EQ(a.analyse(0), "");
    EXPECT_EQ(a.analyse(kTaskAmova | kTaskPairwiseFst | kTaskMantel | kTaskAmovaPermutations |
                        kTaskExactDifferentiation | kTaskAssignment),
              "");
}

TEST(SampleAnalyses, RunsItsTasksInAFixedOrder) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 2 ACGT\nh2 1 ACGA\n");
    a.prepare();
    const std::string document = a.analyse(kSampleFrameTasks);
    std::size_t at = 0;
    for (const std::string heading :
         {"== Sample : \tLake", "== Standard diversity indices : (Lake)",
          "== Molecular diversity indices : (Lake)", "== Mismatch distribution : (Lake)",
          "== Haplotypes frequency estimation : (Lake)", "== Pairwise linkage disequilibrium : (Lake)",
          "== Hardy-Weinberg equilibrium : (Lake)", "== Tajima's test of selective neutrality : (Lake)",
          "== Chakraborty's test of selective neutrality : (Lake)",
          "== Ewens-Watterson tests of selective neutrality : (Lake)",
          "== Fu's Fs test of selective neutrality : (Lake)"}) {
        const std::string rule(heading.size(), '=');
        const std::size_t found = document.find("\n" + rule + "\n" + heading + "\n" + rule + "\n\n", at);
        ASSERT_NE(found, std::string::npos) << heading;
        at = found + heading.size();
    }
}

// 128 and 256 are the Ewens-Watterson and the Chakraborty test, whatever the order of their blocks.
TEST(SampleAnalyses, NeutralityTasksHaveTheirOwnNumbers) {
    for (const auto& [task, heading] :
         {std::pair{128L, "== Ewens-Watterson tests"}, std::pair{256L, "== Chakraborty's test"}}) {
        AnalysedSamples<PopulStandard> a(haplotypic(STANDARD, ' '));
        a.add("Lake", "h1 2 A x\nh2 1 B x\n");
        a.prepare();
        const std::string document = a.analyse(task);
        EXPECT_TRUE(contains(document, heading));
        EXPECT_EQ(count_of(document, "of selective neutrality"), 1);
    }
}

TEST(SampleAnalyses, WritesItsAnchorBeforeTheFrame) {
    for (const bool by_sample : {true, false}) {
        AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
        a.samples.output_by_sample = by_sample;
        a.s.run_time_stamp = "01/02/26at10:11:12";
        a.add("Lake", "h1 2 ACGT\n");
        a.add("Sea", "h1 2 ACGT\n");
        a.prepare();
        htmlOutput = true;
        const std::string document = a.analyse(kTaskStandardIndices);
        const std::string level = by_sample ? "pop_" : "gr_";
        EXPECT_EQ(document.rfind("<A NAME=\"01_02_26at10_11_12_" + level + "0\"></A>\n\n====", 0), 0U)
            << document.substr(0, 80);
        EXPECT_TRUE(contains(document, "<A NAME=\"01_02_26at10_11_12_" + level + "1\"></A>\n"));
    }
}

TEST(SampleAnalyses, TellsItsProgress) {
    const mnd_test::CapturedLog log;
    const mnd_test::CapturedOutput console;
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 2 ACGT\nh2 1 ACGA\n");
    a.prepare();
    silentMendrake = false;
    a.analyse(kDiversity);
    EXPECT_TRUE(contains(console.text(), "Computing standard diversity indices...\n"));
    EXPECT_TRUE(contains(console.text(), "Computing molecular diversity indices...\n"));
    EXPECT_TRUE(log.holds("\n\tComputing standard diversity indices... done in "));
    EXPECT_TRUE(log.holds("\n\tComputing molecular diversity indices..."));
    // The first test of theta(k) in a process makes its table in between, and says so.
    EXPECT_TRUE(log.holds(" done in "));
}

TEST(SampleAnalyses, StopsBetweenTasks) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 2 ACGT\nh2 1 ACGA\n");
    a.prepare();
    a.s.stop_computations = 1;
    EXPECT_EQ(count_of(a.analyse(kSampleFrameTasks), "== "), 1);
}

// What stood in the stream before a block stands there behind it.
TEST(SampleAnalyses, LeavesTheFormatOfTheDocumentAsItWas) {
    AnalysedSamples<PopulMicrosat> a(genotypic(MICROSAT, ' ', 1));
    a.add("Lake", "a 2 10 7\n 12 8\nb 1 10 9\n 10 7\n");
    a.prepare();
    a.s.PrintHaplDistMat = 1;
    std::fstream& out = a.document.stream();
    out << std::scientific << std::showpos;
    out.precision(3);
    out.fill('*');
    const auto flags = out.flags();
    const std::string document = a.analyse(kDiversity);
    EXPECT_EQ(out.flags(), flags);
    EXPECT_EQ(out.precision(), 3);
    EXPECT_EQ(out.fill(), '*');
    EXPECT_EQ(count_of(document, "*"), 0);
    EXPECT_EQ(count_of(document, "e+0"), 0);
}

// --- Names that are markup

TEST(SampleAnalyses, EscapesTheNameAndKeepsTheRuleAsLongAsTheHeading) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("a<b>&c", "h1 2 ACGT\nh2 1 ACGA\n");
    a.prepare();
    const std::string rule(19, '=');
    EXPECT_TRUE(contains(a.analyse(kTaskStandardIndices),
                         "\n" + rule + "\n== Sample : \ta&lt;b&gt;&amp;c\n" + rule + "\n\n"));
}

// Whether an XML parser takes the text as the inside of an element.
bool is_well_formed(const std::string& inside) {
    const mnd_test::TempFolder folder;
    mnd_test::write_text(folder / "x.xml", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<root><data>" +
                                               inside + "</data></root>\n");
    return std::system(("xmllint --noout '" + (folder / "x.xml").string() + "' 2>/dev/null").c_str()) == 0;
}

template <class Sample>
std::string hostile_xml(const ProfileSettings& profile, const std::string& lines) {
    AnalysedSamples<Sample> a(profile);
    a.add("\"<&>'\x01]]> -- <data>&amp;\xE9</A>", lines);
    a.prepare();
    xmlOutput = true;
    htmlOutput = true;
    a.s.PrintHaplDistMat = 1;
    return a.analyse(kSampleFrameTasks);
}

TEST(SampleAnalyses, AreWellFormedXmlUnderAHostileName) {
    EXPECT_FALSE(is_well_formed("<&>"));
    const std::string dna = hostile_xml<PopulDNA>(haplotypic(DNA, 0), "<h&1> 2 ACGT\n\"h2\" 1 ACGA\n");
    EXPECT_TRUE(is_well_formed(dna));
    EXPECT_TRUE(contains(dna, "</data> <interHapDistMatrix samp=\"&quot;&lt;&amp;&gt;"));
    EXPECT_TRUE(is_well_formed(hostile_xml<PopulDNA>(genotypic(DNA, 0, 1), "a 2 ACG\n ACT\n")));
    EXPECT_TRUE(is_well_formed(hostile_xml<PopulRFLP>(haplotypic(RFLP, 0), "h&1 2 101\nh2 1 110\n")));
    EXPECT_TRUE(
        is_well_formed(hostile_xml<PopulMicrosat>(haplotypic(MICROSAT, ' '), "h&1 2 10 7\nh2 1 12 7\n")));
    EXPECT_TRUE(is_well_formed(
        hostile_xml<PopulStandard>(genotypic(STANDARD, ' ', 0), "a 2 < &\n > x\nb 1 A y\n A x\n")));
    EXPECT_TRUE(is_well_formed(hostile_xml<PopulStandard>(haplotypic(FREQUENCY, ' '), "f<1 5\nf2 3\n")));
}

// --- What can't be computed says so

TEST(SampleAnalyses, RecessiveDataGetTwoFixedTexts) {
    AnalysedSamples<PopulStandard> a(genotypic(STANDARD, ' ', 0));
    a.add("Lake", "a 2 A x\n B x\nb 1 A y\n A x\n");
    a.prepare();
    a.s.RecessiveAllelesEM = 1;
    EXPECT_EQ(below_frame(a.analyse(kDiversity), "Lake"),
              "\n======================================\n"
              "== Standard diversity indices : (Lake)\n"
              "======================================\n\n"
              "Most standard diversity indices cannot be computed \nfor recessive data\n\n"
              "\n=======================================\n"
              "== Molecular diversity indices : (Lake)\n"
              "=======================================\n\n"
              "Molecular diversity indices cannot be computed \nfor recessive data\n");
}

TEST(SampleAnalyses, UnknownPhaseGetsTextsInPlaceOfTests) {
    AnalysedSamples<PopulDNA> a(genotypic(DNA, 0, 0));
    a.add("Lake", "a 2 ACG\n ACT\n");
    a.prepare();
    a.s.NumIterationsNeutralityTests = 300;
    a.s.NumSimulFuTest = 200;
    mnd::settings::global_work_done = 0.0;
    const std::string document =
        a.analyse(kTaskMismatch | kTaskTajima | kTaskChakraborty | kTaskEwensWatterson | kTaskFuFs);
    EXPECT_EQ(mnd::settings::global_work_done, 4.0 + 3.0 + 4.0);  // the tests of neutrality as planned
    EXPECT_TRUE(contains(document,
                         "\n\nMismatch distribution cannot be computed \n"
                         "in case of genotypic data with unknown gametic phase\n\n"
                         "We hope to change it in a future release...\n"));
    for (const char* text :
         {"\n\nTajima's test cannot be computed \n", "\n\nChakraborty's test cannot be computed \n",
          "\n\nEwens-Watterson tests cannot be computed \n", "\n\nFu's Fs test cannot be computed \n"}) {
        EXPECT_TRUE(contains(document, text)) << text;
    }
    EXPECT_FALSE(contains(document, "does not hold"));
}

TEST(SampleAnalyses, AnAnalysisThatIsNotHeldSaysSo) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 2 ACGT\nh2 1 ACGA\n");
    a.prepare();
    EXPECT_EQ(count_of(a.analyse(kTaskLinkageDisequilibrium),
                       "\n\nNot computed: this version does not hold the analysis.\n"),
              1);
}

// Such a sample has lost all its individuals to missing data.
template <class Sample>
void expect_not_analysed(const ProfileSettings& profile) {
    const mnd_test::CapturedReports reports;
    AnalysedSamples<Sample> a(profile);
    Sample& sample = a.add("Lake", "");
    a.prepare();
    EXPECT_EQ(sample.hapl_list.count, 0);
    EXPECT_EQ(below_frame(a.analyse(kSampleFrameTasks), "Lake"),
              "\n======================================\n"
              "== Standard diversity indices : (Lake)\n"
              "======================================\n\n"
              "The sample has no haplotypes to compare, it is not analysed.\n");
    EXPECT_FALSE(std::filesystem::exists(a.document.folder() / "Lake.dis"));
}

TEST(SampleAnalyses, AnEmptySampleIsNotAnalysed) {
    expect_not_analysed<PopulDNA>(haplotypic(DNA, 0));
    expect_not_analysed<PopulRFLP>(haplotypic(RFLP, 0));
    expect_not_analysed<PopulMicrosat>(haplotypic(MICROSAT, ' '));
    expect_not_analysed<PopulStandard>(haplotypic(STANDARD, ' '));
    expect_not_analysed<PopulStandard>(haplotypic(FREQUENCY, ' '));
    expect_not_analysed<PopulStandard>(genotypic(STANDARD, ' ', 1));
    expect_not_analysed<PopulDNA>(genotypic(DNA, 0, 0));
}

TEST(SampleAnalyses, TheSampleAfterAnEmptyOneIsAnalysed) {
    const mnd_test::CapturedReports reports;
    AnalysedSamples<PopulMicrosat> a(haplotypic(MICROSAT, ' '));
    a.add("Lake", "");
    a.add("Sea", "h4 2 10 4\nh5 1 17 4\n");
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_TRUE(contains(document, "== Molecular diversity indices : (Sea)"));
    EXPECT_FALSE(contains(document, "== Molecular diversity indices : (Lake)"));
}

TEST(SampleAnalyses, ASingleGeneCopyHasNothingToDiffer) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 1 ACGT\n");
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_TRUE(contains(document, "\nGene diversity           : 1.00000 +/- 0.00000\n"));
    EXPECT_TRUE(
        contains(document, "per polymorphic site\n" + std::string(57, '-') + "\n\nNo polymorphic site\n"));
    EXPECT_TRUE(contains(document, "Mean number of pairwise differences          : 0.00000 +/- 0.00000\n"));
    EXPECT_TRUE(contains(document, "Nucleotide diversity (average over loci)     : 0.00000 +/- 0.00000\n"));
    EXPECT_TRUE(contains(document, "\nUnable to compute Theta(Hom) when all gene copies are different\n"));
    EXPECT_TRUE(contains(document, "\nUnable to compute Theta(k) when all gene copies are different\n"));
    EXPECT_TRUE(contains(document, "\nTheta(S) : 0.00000\nS.D. Theta(S) : 0.00000\n"));
    EXPECT_TRUE(contains(document, "\nTheta(Pi) : 0.00000\nS.D. Theta(Pi) : 0.00000\n"));
    EXPECT_EQ(count_of(document, "nan") + count_of(document, "inf\n"), 0);
}

TEST(SampleAnalyses, OneHaplotypeOnly) {
    AnalysedSamples<PopulStandard> a(haplotypic(STANDARD, ' '));
    a.add("Lake", "h1 3 A x\n");
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_TRUE(contains(document, "\nGene diversity           : 0.00000 +/- 0.00000\n"));
    EXPECT_TRUE(contains(document, "\nTheta(Hom) : 0.00000\nS.D. Theta(Hom) : 0.00000\n"));
    // P(K = 1) = 2/((1 + t)(2 + t)) is 0.025 at (sqrt(321) - 3)/2
    EXPECT_TRUE(contains(
        document,
        "\nTheta(k) : 0.00000\n95 % confidence interval limits for theta(k) : [ 0.00000, 7.45824 ]\n"));
}

TEST(SampleAnalyses, DataThatAreAllMissingGiveNoUsableLocus) {
    AnalysedSamples<PopulMicrosat> a(haplotypic(MICROSAT, ' '));
    a.add("Lake", "h1 2 ? ?\nh2 1 ? ?\n");
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_TRUE(
        contains(document, "\nNo. of usable loci       : 0 loci with less than 5.00 % missing data\n"));
    EXPECT_TRUE(contains(document, "per locus\n" + std::string(46, '-') +
                                       "\n\nNo usable locus\n\nLeft out for missing data : locus 1, 2\n"));
    EXPECT_TRUE(
        contains(document, "Garza-Williamson index\n" + std::string(39, '-') + "\n\nNo usable locus\n"));
    EXPECT_TRUE(contains(document, "Mean number of pairwise differences          : 0.00000 +/- 0.00000\n"));
}

TEST(SampleAnalyses, RflpWithoutUsableSiteHasNoDistances) {
    const mnd_test::CapturedReports reports;
    AnalysedSamples<PopulRFLP> a(haplotypic(RFLP, 0));
    a.add("Lake", "h1 2 ??\nh2 1 ??\n");
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_TRUE(contains(document, "\nThe distances between the haplotypes could not be computed\n"));
    EXPECT_FALSE(contains(document, "Mean number of pairwise differences"));
    EXPECT_FALSE(contains(document, "Theta("));
}

TEST(SampleAnalyses, DistancesBeyondTheMethodEndTheTaskAndNotTheSample) {
    const mnd_test::CapturedReports reports;
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 1 ACGT\nh2 1 CATG\n");
    a.prepare();
    a.s.DistanceMethod = 1;
    const std::string document = a.analyse(kDiversity | kTaskMismatch);
    EXPECT_TRUE(contains(document, "\nThe distances between the haplotypes could not be computed\n"));
    EXPECT_FALSE(contains(document, "Theta("));
    EXPECT_TRUE(contains(document, "== Mismatch distribution"));
}

TEST(SampleAnalyses, ADistanceThatIsNoNumberIsNotPrintedAsOne) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 1 AAAAA\nh2 1 GGGGC\n");  // 1 - 2 P - Q < 0: the logarithm is none
    a.prepare();
    a.s.DistanceMethod = 2;
    const std::string document = a.analyse(kTaskMolecularDiversity);
    EXPECT_TRUE(contains(document, "Mean number of pairwise differences          : N.A. +/- 0.00000\n"));
    EXPECT_TRUE(contains(document, "\nTheta(Pi) : N.A.\n"));
    EXPECT_FALSE(contains(document, "nan"));
}

// --- Distances of the molecular indices

TEST(SampleAnalyses, NameTheDistanceAndItsGammaCorrection) {
    struct Case {
        int method;
        double gamma;
        const char* text;
    };
    for (const Case& c : {Case{0, 0.5, ": Pairwise difference (no Gamma correction)\n"},
                          Case{1, 0.0, ": Jukes and Cantor (no Gamma correction)\n"},
                          Case{1, 0.5, ": Jukes and Cantor (Gamma correction : a=0.50000)\n"},
                          Case{3, 0.5, ": Proportion of difference (no Gamma correction)\n"},
                          Case{9, 0.0, ": DIFF (no Gamma correction)\n"}}) {
        AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
        a.add("Lake", "h1 2 ACGTACGT\nh2 1 ACGTACGA\n");
        a.prepare();
        a.s.DistanceMethod = c.method;
        a.s.GammaAValue = c.gamma;
        EXPECT_TRUE(contains(a.analyse(kTaskMolecularDiversity),
                             std::string("\nDistance method                              ") + c.text))
            << c.text;
    }
}

TEST(SampleAnalyses, OfOtherTypesKnowTwoMethodsAndNoGamma) {
    AnalysedSamples<PopulMicrosat> microsat(haplotypic(MICROSAT, ' '));
    microsat.add("Lake", "h1 2 10 7\nh2 1 13 7\n");
    microsat.prepare();
    microsat.s.DistanceMethod = 4;
    microsat.s.GammaAValue = 0.5;
    const std::string sizes = microsat.analyse(kTaskMolecularDiversity);
    EXPECT_TRUE(contains(sizes, ": Sum of squared size difference (RST) (no Gamma correction)\n"));
    EXPECT_TRUE(contains(sizes, "Mean number of pairwise differences          : 6.00000"));  // 2 x 9 over 3
    for (const auto& [method, text] :
         {std::pair{1, "Proportion of difference"}, std::pair{4, "Pairwise difference"}}) {
        AnalysedSamples<PopulRFLP> rflp(haplotypic(RFLP, 0));
        rflp.add("Lake", "h1 2 1010\nh2 1 0110\n");
        rflp.prepare();
        rflp.s.DistanceMethod = method;
        const std::string document = rflp.analyse(kTaskMolecularDiversity);
        EXPECT_TRUE(contains(document, std::string(": ") + text + " (no Gamma correction)\n")) << method;
        EXPECT_TRUE(contains(document, "Mean number of pairwise differences          : 1.33333")) << method;
    }
}

TEST(SampleAnalyses, PrintTheMatrixOnDemand) {
    for (const bool by_haplotypes : {true, false}) {
        AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
        a.add("Lake", "h1 2 ACGTACGT\nh2 1 ACGTACGA\nh3 1 ACGTACCA\n");
        a.prepare();
        a.s.PrintHaplDistMat = by_haplotypes ? 1 : 0;
        a.s.PrintPopDistMat = by_haplotypes ? 0 : 1;
        // p = d/8: standard deviations sqrt((1 - p) p 8), 0.9354 for 1 and 1.2247 for 2 differences
        EXPECT_TRUE(contains(a.analyse(kTaskMolecularDiversity),
                             "\nHaplotypes of the matrix:\n"
                             "     1  h1\n     2  h2\n     3  h3\n"
                             "\nInter-haplotypic distance matrix:\n\n"
                             "          0.9354  1.2247\n"
                             "  1.0000          0.9354\n"
                             "  2.0000  1.0000        \n"));
    }
}

TEST(SampleAnalyses, WeightsAreThoseOfTheSettings) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 1 AAAC\nh2 1 GC-C\n");
    a.prepare();
    a.s.TransitionWeight = 2.0;
    a.s.TranversionWeight = 0.0;
    a.s.DeletionWeight = 0.5;
    const std::string document = a.analyse(kDiversity);
    EXPECT_TRUE(contains(document, "\nNo. of polymorphic sites : 2\n"));
    EXPECT_TRUE(contains(document,
                         "\nDeletion weight                              : 0.50000"
                         "\nTransition weight                            : 2.00000"
                         "\nTransversion weight                          : 0.00000\n"));
    EXPECT_TRUE(contains(document, "Mean number of pairwise differences          : 2.50000"));
}

TEST(SampleAnalyses, MergedHaplotypesAreShownBesideTheOriginalOnes) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 2 ACGT\nh2 2 ACGA\n").nb_orig_hapl = 3;
    a.prepare();
    const std::string document = a.analyse(kDiversity);
    EXPECT_TRUE(contains(document,
                         "\nNo. of sequences         : 2"
                         "\nNo. of original \nsequences in sample      : 3\n"));
    EXPECT_TRUE(contains(document,
                         "No. of haplotypes                            : 2\n"
                         "No. of original haplotypes in sample         : 3\n"));
}

// --- theta(k)

// n different haplotypes but for the first two copies.
std::string almost_all_different(int n) {
    std::string lines = "f1 2\n";
    for (int i = 2; i < n; ++i)
        lines += "f" + std::to_string(i) + " 1\n";
    return lines;
}

TEST(SampleAnalyses, ThetaKOfAlmostAllDifferentCopies) {
    AnalysedSamples<PopulStandard> a(haplotypic(FREQUENCY, ' '));
    a.add("Lake", almost_all_different(45));
    a.prepare();
    // 44 alleles among 45 copies, from 40-digit arithmetic; the upper limit is above 10000.
    EXPECT_TRUE(contains(
        a.analyse(kTaskMolecularDiversity),
        "\nTheta(k) : 960.44500\n95 % confidence interval limits for theta(k) : [ 253.94181, 39088.0807"));
}

TEST(SampleAnalyses, ThetaKIsRefusedForTooManyAllelesOrCopies) {
    struct Case {
        std::string lines;
        bool refused;
    };
    for (const Case& c : {Case{almost_all_different(1001), true}, Case{almost_all_different(1000), false},
                          Case{"f1 4999\nf2 1\n", true}, Case{"f1 4998\nf2 1\n", false}}) {
        const mnd_test::CapturedLog log;
        AnalysedSamples<PopulStandard> a(haplotypic(FREQUENCY, ' '));
        a.add("Lake", c.lines);
        a.prepare();
        const std::string document = a.analyse(kTaskMolecularDiversity);
        EXPECT_EQ(log.holds("\t\t\tToo many aleles or gene copies in sample to compute Theta(k)\n"),
                  c.refused);
        EXPECT_EQ(contains(document, "\nTheta(k) is not computed for so many alleles or gene copies\n"),
                  c.refused);
        EXPECT_EQ(contains(document, "\nTheta(k) : "), !c.refused);
    }
}

// --- Distance files

TEST(SampleAnalyses, WriteTheDistancesOfASampleToItsFile) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Blue Lake", "h1 2 ACGTACGT\nh2 1 ACGTACGA\n");
    a.prepare();
    const std::string document = a.analyse(kTaskDistanceFiles);
    EXPECT_EQ(count_of(document, "== "), 1);  // no heading but the frame
    const std::string file = mnd_test::read_text(a.document.folder() / "Blue_Lake.dis");
    EXPECT_TRUE(contains(file, "\nInter-haplotypic distance matrix:\n"));
    EXPECT_TRUE(contains(file, "  1.0000        \n"));
}

TEST(SampleAnalyses, FrequenciesAloneHaveNoDistanceFile) {
    const mnd_test::CapturedLog log;
    AnalysedSamples<PopulStandard> a(haplotypic(FREQUENCY, ' '));
    a.add("Lake", "f1 5\nf2 3\n");
    a.prepare();
    a.analyse(kTaskDistanceFiles);
    EXPECT_FALSE(std::filesystem::exists(a.document.folder() / "Lake.dis"));
    EXPECT_TRUE(log.holds("no distance file is written"));
}

// The method of the distance file is not that of the indices, whatever stood before.
TEST(SampleAnalyses, EachTaskHasItsOwnDistance) {
    AnalysedSamples<PopulDNA> a(haplotypic(DNA, 0));
    a.add("Lake", "h1 2 ACGTACGT\nh2 1 ACGTACGA\n");
    a.prepare();
    a.s.DistanceMethod = 0;
    a.s.DistanceMethodAMOVA = 3;
    const std::string first = a.analyse(kTaskMolecularDiversity | kTaskDistanceFiles);
    EXPECT_TRUE(contains(mnd_test::read_text(a.document.folder() / "Lake.dis"), "  0.1250        \n"));
    EXPECT_TRUE(contains(first, "Mean number of pairwise differences          : 0.66667"));
    const std::string second = a.analyse(kTaskMolecularDiversity).substr(first.size());
    EXPECT_TRUE(contains(second, "Mean number of pairwise differences          : 0.66667"));
}

}  // namespace
