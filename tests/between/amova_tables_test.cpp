#include "between/amova_tables.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "results/xml_tags.h"

namespace mnd_test {
namespace {

// An analysis whose results are set by hand.
void set_results(mnd::Amova& a, mnd::AmovaDesign design) {
    a.design = design;
    a.N_genes = 40.0;
    a.N_units = 20.0;
    a.df = {1, 3, 36, 20};
    a.SSDAG = 12.5;
    a.SSDAP = 7.0625;
    a.SSDWP = 1234.5678;
    a.SSDWI = 20.0;
    a.SSDT = 1254.1303;
    a.Va = 0.5;
    a.Vb = -0.03125;
    a.Vc = 1.53125;
    a.Vd = 0.25;
    a.V_total = 2.0;
    a.FIS = 0.5;
    a.FIT = 0.25;
    a.FCT = -0.125;
    a.FSC = 0.0625;
    a.FST = 0.234375;
}

std::string table(mnd::AmovaDesign design) {
    mnd::Amova a;
    set_results(a, design);
    std::ostringstream out;
    mnd::print_amova_table(out, a);
    return out.str();
}

const std::string kRule = std::string(70, '-') + "\n";
const std::string kHead = kRule +
                          " Source of                  Sum of      Variance         Percentage\n"
                          " variation      d.f.        squares     components       of variation\n" +
                          kRule;

TEST(AmovaTables, SeveralGroupsOfHaplotypes) {
    const std::string expected = kHead +
                                 " Among\n"
                                 " groups           1         12.500        0.50000 Va            25.00\n"
                                 " Among\n"
                                 " populations\n"
                                 " within\n"
                                 " groups           3          7.062       -0.03125 Vb            -1.56\n"
                                 " Within\n"
                                 " populations     36       1234.568        1.53125 Vc            76.56\n" +
                                 kRule + " Total           39       1254.130        2.00000\n" + kRule +
                                 " Fixation Indices\n"
                                 "      FSC :      0.06250\n"
                                 "      FST :      0.23438\n"
                                 "      FCT :     -0.12500\n" +
                                 kRule;
    EXPECT_EQ(table(mnd::kDesignGPH), expected);
    EXPECT_EQ(table(mnd::kDesignGPIH), expected);
}

TEST(AmovaTables, OneGroupOfHaplotypes) {
    const std::string expected = kHead +
                                 " Among\n"
                                 " populations      1          7.062        0.50000 Va            25.00\n"
                                 " Within\n"
                                 " populations      3       1234.568       -0.03125 Vb            -1.56\n" +
                                 kRule + " Total           39       1254.130        2.00000\n" + kRule +
                                 " Fixation Index      FST :      0.23438\n" + kRule;
    EXPECT_EQ(table(mnd::kDesign1GPH), expected);
    EXPECT_EQ(table(mnd::kDesign1GPIH), expected);
}

TEST(AmovaTables, SeveralGroupsOfIndividuals) {
    EXPECT_EQ(table(mnd::kDesignGPI),
              kHead +
                  " Among\n"
                  " groups           1         12.500        0.50000 Va            25.00\n"
                  " Among\n"
                  " populations\n"
                  " within\n"
                  " groups           3          7.062       -0.03125 Vb            -1.56\n"
                  " Among\n"
                  " individuals\n"
                  " within\n"
                  " populations     36       1234.568        1.53125 Vc            76.56\n"
                  "\n"
                  " Within\n"
                  " individuals     20         20.000        0.25000 Vd            12.50\n" +
                  kRule + " Total           19       1254.130        2.00000\n" + kRule +
                  " Fixation Indices\n"
                  "      FIS :      0.50000\n"
                  "      FSC :      0.06250\n"
                  "      FCT :     -0.12500\n"
                  "      FIT :      0.25000\n" +
                  kRule);
}

TEST(AmovaTables, OneGroupOfIndividuals) {
    EXPECT_EQ(table(mnd::kDesign1GPI),
              kHead +
                  " Among\n"
                  " populations      1          7.062        0.50000 Va            25.00\n"
                  " Among\n"
                  " individuals\n"
                  " within\n"
                  " populations      3       1234.568       -0.03125 Vb            -1.56\n"
                  "\n"
                  " Within\n"
                  " individuals     36         20.000        1.53125 Vc            76.56\n" +
                  kRule + " Total           19       1254.130        2.00000\n" + kRule +
                  " Fixation Indices\n"
                  "      FIS :      0.50000\n"
                  "      FST :      0.23438\n"
                  "      FIT :      0.25000\n" +
                  kRule);
}

TEST(AmovaTables, OneSampleOfIndividuals) {
    EXPECT_EQ(table(mnd::kDesign1G1PI),
              kHead +
                  " Among\n"
                  " individuals      1       1234.568        0.50000 Va            25.00\n"
                  " Within\n"
                  " individuals      3         20.000       -0.03125 Vb            -1.56\n" +
                  kRule + " Total           19       1254.130        2.00000\n" + kRule +
                  " Fixation Index     FIS :      0.50000\n" + kRule);
}

TEST(AmovaTables, NoVarianceShowsZeroes) {
    mnd::Amova a;
    a.design = mnd::kDesign1GPH;
    a.N_genes = 4.0;
    a.df = {1, 2, 0, 0};
    a.V_total = mnd::kZeroTotalVariance;
    std::ostringstream out;
    mnd::print_amova_table(out, a);
    EXPECT_EQ(out.str(), kHead +
                             " Among\n"
                             " populations      1          0.000        0.00000 Va             0.00\n"
                             " Within\n"
                             " populations      2          0.000        0.00000 Vb             0.00\n" +
                             kRule + " Total            3          0.000        0.00000\n" + kRule +
                             " Fixation Index      FST :      0.00000\n" + kRule);
}

TEST(AmovaTables, TableLeavesTheFormatOfTheStream) {
    mnd::Amova a;
    set_results(a, mnd::kDesignGPI);
    std::ostringstream out;
    out << std::hex << std::left << std::setprecision(3) << std::setfill('*');
    mnd::print_amova_table(out, a);
    mnd::print_population_fis(out, {{"a", 1.0, 0.5}}, 10);
    out.str("");
    out << std::setw(5) << 255 << 1.23456;
    EXPECT_EQ(out.str(), "ff***1.23");
}

TEST(AmovaTables, HeadingCitesThreeMethods) {
    const bool before = mnd::xmlOutput;
    mnd::xmlOutput = false;
    std::ostringstream out;
    mnd::print_amova_heading(out);
    const std::string text = out.str();
    mnd::xmlOutput = before;
    EXPECT_EQ(
        text.rfind("\nAMOVA design and results :\n--------------------------\n\nReferences:\n           <i>",
                   0),
        0u);
    const std::size_t f_statistics = text.find("Weir, B");
    const std::size_t amova = text.find("Excoffier");
    ASSERT_NE(f_statistics, std::string::npos);
    ASSERT_NE(amova, std::string::npos);
    EXPECT_LT(f_statistics, amova);
    EXPECT_NE(text.find("Weir", amova), std::string::npos);
}

TEST(AmovaTables, PopulationFst) {
    std::ostringstream out;
    mnd::print_population_fst(out, {{"Alpha", 0.125, 0.0}, {"A <long> name", -0.25, 0.0}});
    EXPECT_EQ(out.str(),
              "\n-------------------------------"
              "\nPopulation specific FST indices\n"
              "-------------------------------\n"
              "  Pop#           Name         FST\n"
              "     1          Alpha     0.12500\n"
              "     2  A &lt;long&gt; name    -0.25000\n");
}

TEST(AmovaTables, PopulationFisWithoutPermutations) {
    std::ostringstream out;
    mnd::print_population_fis(out, {{"Alpha", 0.125, 0.0}, {"B", -9.99999, 0.0}}, 0);
    EXPECT_EQ(out.str(),
              "\nPopulation specific FIS indices\n"
              "-------------------------------\n"
              "  Pop#      Name         FIS\n"
              "     1     Alpha     0.12500\n"
              "     2         B    -9.99999\n"
              "(-9.99999: not defined in a sample without variation, nor is its P-value)\n");
}

TEST(AmovaTables, PopulationFisWithPermutations) {
    std::ostringstream out;
    mnd::print_population_fis(out, {{"Alpha", 0.125, 0.0625}}, 1023);
    EXPECT_EQ(out.str(),
              "\nPopulation specific FIS indices (1023 permutations)\n"
              "-------------------------------\n"
              "  Pop#      Name         FIS     P(Rand FIS>=Obs FIS)\n"
              "     1     Alpha     0.12500                  0.06250\n");
}

TEST(AmovaTables, SummaryRowHoldsFourNumbersOfEachKind) {
    mnd::Amova a;
    std::ostringstream out;
    set_results(a, mnd::kDesignGPH);
    mnd::write_amova_summary(out, a, "dir/a.mnp");
    mnd::write_amova_summary_tests(out, 1023, {0.5, 0.25, 0.125});
    EXPECT_EQ(out.str(),
              "\"dir/a.mnp\"\t1\t3\t36\t0\t0.50000\t-0.03125\t1.53125\t0\t-0.12500\t0.06250\t0.23438\t0"
              "\t1023\t0.50000\t0.25000\t0.12500\t0\n");
    out.str("");
    set_results(a, mnd::kDesignGPI);
    mnd::write_amova_summary(out, a, "a");
    mnd::write_amova_summary_tests(out, 0, {});
    EXPECT_EQ(
        out.str(),
        "\"a\"\t1\t3\t36\t20\t0.50000\t-0.03125\t1.53125\t0.25000\t-0.12500\t0.06250\t0.50000\t0.25000\n");
    out.str("");
    set_results(a, mnd::kDesign1GPH);
    mnd::write_amova_summary(out, a, "a");
    EXPECT_EQ(out.str(), "\"a\"\t1\t3\t0\t0\t0.50000\t-0.03125\t0\t0\t0.23438\t0\t0\t0");
}

}  // namespace
}  // namespace mnd_test
