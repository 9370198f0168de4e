#include "between/haplotype_matrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/data_type.h"
#include "foundation/message_codes.h"
#include "input/dist_mat.h"
#include "model/haplotypes.h"
#include "model/popul_dna.h"
#include "model/samples.h"
#include "run/settings.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/limited_memory.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::Report;

// Definitions of a project; texts of sequences have no separator, others a blank.
class HaplotypeMatrix : public ::testing::Test {
protected:
    HaplotypeMatrix() {
        s.AllowedLevelOfMissingData = 0.05;
        s.TransitionWeight = s.TranversionWeight = s.DeletionWeight = 1.0;
        profile.MissingData = '?';
    }
    void define(const char* name, const char* content, int count = 1) {
        auto* definition = new HaploDef{my_string(name)};
        definition->content = content;
        definition->count = count;
        db.append(definition);
    }
    bool compute(int type, int method = 0, double gamma = 0.0) {
        profile.DataType = type;
        profile.LocusSeparator = type == DNA || type == RFLP ? '\0' : ' ';
        for (HaploDef* definition : db.list)
            definition->build_haplovect(&alleles, profile.LocusSeparator, 0, 0.1);
        return compute_haplotype_matrix(matrix, db, alleles, profile, s, {type, method, gamma}, usable);
    }
    std::vector<double> cells() const {
        std::vector<double> list;
        for (int i = 0; i < matrix.MatrixSize; ++i) {
            for (int j = 0; j <= i; ++j)
                list.push_back(matrix.get(i, j));
        }
        return list;
    }
    using Cells = std::vector<double>;

    CapturedLog log;
    CapturedReports reports;
    settings s;
    ProfileSettings profile;
    Haplo_DB db;
    TAlleleDB alleles;
    DistMat matrix;
    UsableLoci usable;
};

TEST_F(HaplotypeMatrix, CountsDifferencesBetweenSequences) {
    define("b", "ACGTACGT");
    define("a", "ACGTACGA");
    define("c", "TCGAACGA");
    ASSERT_TRUE(compute(DNA));
    EXPECT_EQ(matrix.MatrixSize, 3);
    EXPECT_EQ(matrix.labels, (std::vector<my_string>{"b", "a", "c"}));
    EXPECT_EQ(cells(), (Cells{0, 1, 0, 3, 2, 0}));
    EXPECT_EQ(matrix.get(0, 2), 3.0);
    EXPECT_EQ(matrix.conventional, 0);
    EXPECT_EQ(usable.loci, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7}));
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(HaplotypeMatrix, WeightsOfTheSettingsCount) {
    define("a", "AAAA");
    define("b", "GCA-");  // a transition, a transversion, a deletion
    s.TransitionWeight = 1.0;
    s.TranversionWeight = 3.0;
    s.DeletionWeight = 0.0;
    ASSERT_TRUE(compute(DNA));
    EXPECT_EQ(matrix.get(1, 0), 4.0);
}

TEST_F(HaplotypeMatrix, CorrectedDistancesAreThoseOfTheirFormula) {
    define("a", "AAAAAAAAAA");
    define("b", "AAAAAAAACG");
    ASSERT_TRUE(compute(DNA, 1));
    // Jukes and Cantor 1969 with p = 0.2.
    EXPECT_NEAR(matrix.get(1, 0), -0.75 * std::log(1.0 - 4.0 * 0.2 / 3.0), 1e-12);
    ASSERT_TRUE(compute(DNA, 1, 0.5));
    // The same with gamma distributed rates: 3/4 a ((1 - 4p/3)^(-1/a) - 1).
    EXPECT_NEAR(matrix.get(1, 0), 0.75 * 0.5 * (std::pow(1.0 - 4.0 * 0.2 / 3.0, -2.0) - 1.0), 1e-12);
    // A proportion stays one.
    ASSERT_TRUE(compute(DNA, 3));
    EXPECT_NEAR(matrix.get(1, 0), 0.2, 1e-12);
}

// 2 of 10 copies miss the third site, 1 of 20 the fourth: the first is too much, the second is not.
TEST_F(HaplotypeMatrix, LociAreUsableByTheCopiesOfAllSamples) {
    define("a", "ACAA", 17);
    define("b", "ACCT", 1);
    define("c", "AC?A", 1);
    define("d", "AT??", 1);
    ASSERT_TRUE(compute(DNA));
    EXPECT_EQ(usable.loci, (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(usable.allowed_missing, 0.05);
    EXPECT_EQ(cells(), (Cells{0, 1, 0, 0, 1, 0, 1, 1, 1, 0}));
}

// The same for alleles and numbers of repeats.
TEST_F(HaplotypeMatrix, LociOfAllelesAreUsableByTheCopiesOfAllSamples) {
    define("a", "1 5 1 1", 17);
    define("b", "1 5 3 4", 1);
    define("c", "1 5 ? 1", 1);
    define("d", "1 8 ? ?", 1);
    ASSERT_TRUE(compute(STANDARD));
    EXPECT_EQ(usable.loci, (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(cells(), (Cells{0, 1, 0, 0, 1, 0, 1, 1, 1, 0}));
    ASSERT_TRUE(compute(MICROSAT, 1));
    EXPECT_EQ(usable.loci, (std::vector<int>{0, 1, 3}));
    EXPECT_EQ(cells(), (Cells{0, 9, 0, 0, 9, 0, 9, 9, 9, 0}));
    s.AllowedLevelOfMissingData = 0.1;
    ASSERT_TRUE(compute(MICROSAT, 1));
    EXPECT_EQ(usable.loci, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(cells(), (Cells{0, 13, 0, 0, 9, 0, 9, 9, 9, 0}));
}

TEST_F(HaplotypeMatrix, DefinitionsWithoutCopiesHaveARowToo) {
    define("a", "AC", 5);
    define("b", "AT", 0);
    ASSERT_TRUE(compute(DNA));
    EXPECT_EQ(cells(), (Cells{0, 1, 0}));
}

TEST_F(HaplotypeMatrix, OtherTypesCompareAlleles) {
    define("a", "1 12 7");
    define("b", "1 15 9");
    define("c", "1 15 7");
    ASSERT_TRUE(compute(STANDARD));
    EXPECT_EQ(cells(), (Cells{0, 2, 0, 1, 1, 0}));
    ASSERT_TRUE(compute(MICROSAT, 0));
    EXPECT_EQ(cells(), (Cells{0, 2, 0, 1, 1, 0}));
    // Sum of squared size differences: 3^2 + 2^2, 3^2, 2^2.
    ASSERT_TRUE(compute(MICROSAT, 1));
    EXPECT_EQ(cells(), (Cells{0, 13, 0, 9, 4, 0}));
}

TEST_F(HaplotypeMatrix, RestrictionSites) {
    define("a", "0110");
    define("b", "1111");
    ASSERT_TRUE(compute(RFLP));
    EXPECT_EQ(matrix.get(1, 0), 2.0);
    ASSERT_TRUE(compute(RFLP, 1));
    EXPECT_EQ(matrix.get(1, 0), 0.5);
}

TEST_F(HaplotypeMatrix, UnknownPhaseIsComparedByItsHaplotypes) {
    define("a", "1 2");
    define("b", "1 3");
    profile.GenotypicData = 1;
    profile.GameticPhase = 0;
    ASSERT_TRUE(compute(STANDARD));
    EXPECT_EQ(matrix.get(1, 0), 1.0);
}

TEST_F(HaplotypeMatrix, PolymorphicSitesOfThePassStay) {
    PopGenetics::globalSubstPolymSites.assign(2, false);
    define("a", "ACGT");
    define("b", "AGGC");
    ASSERT_TRUE(compute(DNA));
    EXPECT_EQ(PopGenetics::globalSubstPolymSites, std::vector<bool>(2, false));
    PopGenetics::globalSubstPolymSites.clear();
}

TEST_F(HaplotypeMatrix, DistanceThatCannotBeComputedLeavesNone) {
    define("a", "AAAA");
    define("b", "AAAA");
    ASSERT_TRUE(compute(DNA));
    db.list[1]->content = "CCAA";  // Q = 1/2: the logarithm of 0 in Kimura's formula
    EXPECT_FALSE(compute(DNA, 2));
    EXPECT_EQ(matrix.MatrixSize, 0);
    EXPECT_TRUE(matrix.labels.empty());
    EXPECT_EQ(reports.all().back(),
              (Report{Error, "Project::calc_dist_matrix()", kDistanceMatrixNotComputed}));
}

TEST_F(HaplotypeMatrix, NoDefinitionsHaveNoMatrix) {
    EXPECT_FALSE(compute(DNA));
    EXPECT_EQ(matrix.MatrixSize, 0);
    EXPECT_TRUE(usable.loci.empty());
    EXPECT_EQ(reports.all().back().code, kDistanceMatrixNotComputed);
}

TEST_F(HaplotypeMatrix, ConventionalMatrixHasNoCells) {
    define("a", "");
    define("b", "");
    matrix.initializeMatrixAndArrays(7);
    matrix.MatrixName = "given";
    make_conventional_matrix(matrix, db);
    EXPECT_EQ(matrix.MatrixSize, 2);
    EXPECT_EQ(matrix.conventional, 1);
    EXPECT_EQ(matrix.dim, 0);
    EXPECT_TRUE(matrix.MatrixName.is_null());
    EXPECT_EQ(matrix.labels, (std::vector<my_string>{"a", "b"}));
    EXPECT_EQ(cells(), (Cells{0, 1, 0}));
    // It can be computed again.
    db.list[0]->content = "A";
    db.list[1]->content = "A";
    ASSERT_TRUE(compute(DNA));
    EXPECT_EQ(cells(), (Cells{0, 0, 0}));
}

TEST(UsableLoci, AreListedByNumbersFromOne) {
    UsableLoci usable;
    usable.allowed_missing = 0.05;
    for (int locus = 2; locus < 14; ++locus)
        usable.loci.push_back(locus);
    std::ostringstream out;
    out << std::hex;
    print_usable_loci(out, usable);
    EXPECT_EQ(out.str(),
              "\nNumber of usable loci for distance computation : 12"
              "\nAllowed level of missing data                  : 0.05000"
              "\n\nList of usable loci :\n"
              "---------------------\n"
              "      3      4      5      6      7      8      9     10     11     12\n"
              "     13     14\n\n");
    out.str("");
    print_usable_loci(out, UsableLoci());
    EXPECT_TRUE(contains(out.str(), "computation : 0\n"));
    EXPECT_TRUE(contains(out.str(), "---------------------\nNONE\n\n"));
}

TEST_F(HaplotypeMatrix, NetworkOfTheWholeMatrixNamesTheDefinitions) {
    define("first", "AAAA");
    define("second", "AAAC");
    define("third", "AACC");
    ASSERT_TRUE(compute(DNA));
    std::ostringstream out;
    print_global_network(out, matrix, db);
    const std::string text = out.str();
    EXPECT_TRUE(contains(text, "\nMINIMUM SPANNING TREE between 3 OTUs\n===="));
    EXPECT_TRUE(contains(text, "               first              second             1.00000\n"));
    EXPECT_TRUE(contains(text, "              second               third             1.00000\n"));
    EXPECT_TRUE(contains(text, "tree MST_AMOVA_MST = [&amp;U] "));
}

TEST_F(HaplotypeMatrix, NetworkThatIsTooLargeIsToldAndPassedOver) {
    if (!mnd_test::kMemoryCanBeLimited) GTEST_SKIP() << "an allocation that fails ends this build";
    matrix.conventional = 1;
    matrix.MatrixSize = 2'000'000'000;
    std::ostringstream out;
    EXPECT_NO_THROW(print_global_network(out, matrix, db));
    const char* const text =
        "\nUnable to allocate memory for the minimum spanning network of 2000000000 OTUs\n";
    EXPECT_EQ(out.str(), text);
    EXPECT_EQ(log.text(), text);
}

// ---- Classes of identical haplotypes

class IdenticalHaplotypes : public ::testing::Test {
protected:
    // n definitions, bound to rows in order, at distance 1 from one another.
    void make(int n, int rows) {
        matrix.initializeMatrixAndArrays(rows);
        for (int i = 0; i < rows; ++i) {
            for (int j = 0; j < i; ++j)
                matrix(i, j) = 1.0;
        }
        for (int i = 0; i < n; ++i) {
            auto* definition = new HaploDef{my_string(("h" + std::to_string(i)).c_str())};
            definition->id = i;
            db.append(definition);
        }
    }
    std::vector<int> classes() const { return classes_of_identical_haplotypes(matrix, db); }

    DistMat matrix;
    Haplo_DB db;
};

TEST_F(IdenticalHaplotypes, EachIsItsOwnClassAtFirst) {
    make(3, 3);
    EXPECT_EQ(classes(), (std::vector<int>{0, 1, 2, 3}));
}

TEST_F(IdenticalHaplotypes, DistanceZeroMakesOneClass) {
    make(5, 5);
    matrix(3, 0) = matrix(4, 0) = matrix(4, 3) = 0.0;
    EXPECT_EQ(classes(), (std::vector<int>{0, 1, 2, 0, 0, 5}));
}

// 0 and 2 both equal 1, but not each other: they do not become one by way of 1.
TEST_F(IdenticalHaplotypes, OnesThatDifferReturnToTheirOwnClass) {
    make(3, 3);
    matrix(1, 0) = matrix(2, 1) = 0.0;
    EXPECT_EQ(classes(), (std::vector<int>{0, 0, 2, 3}));
}

// 2 equals both 0 and 1, which differ: the last one that it equals counts.
TEST_F(IdenticalHaplotypes, LastMatchCounts) {
    make(3, 3);
    matrix(2, 0) = matrix(2, 1) = 0.0;
    EXPECT_EQ(classes(), (std::vector<int>{0, 1, 1, 3}));
}

TEST_F(IdenticalHaplotypes, RowsOfTheMatrixNeedNotBeInTheOrderOfTheDefinitions) {
    make(3, 4);
    db.list[0]->id = 3;
    db.list[1]->id = 0;
    db.list[2]->id = 2;
    matrix(3, 2) = 0.0;  // h0 and h2
    matrix(1, 0) = 0.0;  // h1 and a label without a haplotype
    EXPECT_EQ(classes(), (std::vector<int>{0, 1, 3, 3, 4}));
}

TEST_F(IdenticalHaplotypes, SharedOnesAreToldForEachSample) {
    make(3, 3);
    matrix(2, 0) = 0.0;
    Samples samples;
    for (int i = 0; i < 2; ++i) {
        auto* sample = new Population;
        sample->name = i == 0 ? "North" : "South";
        sample->hapl_list.Add(new PHaploDef(db.list[2 * i], 3));
        samples.populations.Add(sample);
    }
    std::ostringstream out;
    print_shared_haplotypes(out, samples, db, classes());
    const std::string text = out.str();
    EXPECT_TRUE(contains(text, "\n== Checking for haplotypes shared among populations:\n"));
    EXPECT_TRUE(contains(text, "\n== Population : North\n"));
    EXPECT_TRUE(contains(text, "\n== Population : South\n"));
    EXPECT_EQ(count_of(text, "\nHaplotypes shared with "), 4);
    EXPECT_EQ(count_of(text, "\tnone\n"), 2);
    EXPECT_TRUE(contains(text, "\nClasses of identical haplotypes"));
}

}  // namespace
