#include "between/amova.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "between/amova_data.h"
#include "between/amova_tables.h"
#include "model/population.h"
#include "results/xml_tags.h"
#include "run/errors.h"
#include "support/captured_log.h"
#include "support/project_log.h"
#include "within/analysed_sample.h"

namespace mnd_test {
namespace {

const std::vector<Group> kOneSample = {{{0, 1, 1, 0, 2, 2}}};
const std::vector<Group> kOneGroup = {{{0, 1, 1, 0}, {2, 2, 0, 1}}};
const std::vector<Group> kTwoGroups = {{{0, 1, 1, 0}, {2, 2, 0, 1}}, {{2, 0, 2, 2}, {1, 1, 0, 2}}};

double conventional(int i, int j) {
    return i == j ? 0.0 : 1.0;
}

// ---- Choice of the design

struct Kind {
    int genotypic, phase, individual, conventional, recessive;
};

// The designs for one sample, one group and several groups.
std::vector<int> designs_of(const Kind& kind) {
    std::vector<int> chosen;
    for (const std::vector<Group>* groups : {&kOneSample, &kOneGroup, &kTwoGroups}) {
        AmovaData data(*groups, 3, conventional, kind.genotypic != 0);
        data.samples.GameticPhase = kind.phase;
        data.s.IncludeIndividualLevel = kind.individual;
        data.s.ComputeConventionalFST = kind.conventional;
        data.s.RecessiveAllelesEM = kind.recessive;
        chosen.push_back(data.analyse()->design);
    }
    return chosen;
}

TEST(AmovaChoice, FollowsDataAndIndividualLevel) {
    using Designs = std::vector<int>;
    EXPECT_EQ(designs_of({0, 1, 0, 0, 0}), (Designs{0, 3, 5})) << "haplotypes";
    EXPECT_EQ(designs_of({0, 1, 1, 0, 0}), (Designs{0, 3, 5})) << "haplotypes have no individuals";
    EXPECT_EQ(designs_of({1, 1, 0, 0, 0}), (Designs{0, 3, 5})) << "known phase";
    EXPECT_EQ(designs_of({1, 1, 1, 0, 0}), (Designs{2, 4, 6})) << "known phase, individuals";
    EXPECT_EQ(designs_of({1, 0, 0, 0, 0}), (Designs{0, 7, 8})) << "unknown phase";
    EXPECT_EQ(designs_of({1, 0, 1, 0, 0}), (Designs{2, 4, 6})) << "unknown phase, individuals";
    EXPECT_EQ(designs_of({1, 0, 1, 1, 0}), (Designs{0, 7, 8})) << "unknown phase, conventional";
    EXPECT_EQ(designs_of({1, 0, 0, 0, 1}), (Designs{0, 9, 10})) << "recessive alleles";
    EXPECT_EQ(designs_of({1, 0, 1, 0, 1}), (Designs{0, 9, 10})) << "recessive alleles, individuals";
}

TEST(AmovaChoice, RecordKnowsDesignsByOtherCodes) {
    const int kCodes[] = {0, 0, 6, 1, 2, 3, 4, 7, 5, 9, 8};
    for (int design = 0; design <= 10; ++design)
        EXPECT_EQ(mnd::result_code_of_design(design), kCodes[design]) << design;
    EXPECT_EQ(mnd::result_code_of_design(11), 0);
    EXPECT_EQ(mnd::result_code_of_design(-1), 0);
}

TEST(AmovaChoice, RecessiveDesignsLeaveNoText) {
    AmovaData data(kTwoGroups, 3, conventional, true);
    data.samples.GameticPhase = 0;
    data.s.RecessiveAllelesEM = 1;
    Document document(data.s);
    mnd::amova_results record;
    data.analyse(1, &record);
    EXPECT_EQ(record.design_code, 8);
    EXPECT_EQ(record.total.df, 0);
    EXPECT_EQ(document.text().find("Source of"), std::string::npos);
}

TEST(AmovaChoice, GroupsWithoutSamplesArePassedOver) {
    AmovaData data({kOneGroup[0], {}}, 3, conventional);
    EXPECT_EQ(data.analyse()->design, 3);
    AmovaData nothing({{}, {}}, 3, conventional);
    EXPECT_EQ(nothing.analyse()->design, 0);
}

// ---- Starting values

TEST(AmovaInitialize, ListsSamplesInTheirOrder) {
    AmovaData data(kTwoGroups, 3, conventional);
    data.s.NumPermutationsAMOVA = 17;
    const auto a = data.prepare();
    ASSERT_EQ(a->all_pops.size(), 4u);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(a->all_pops[static_cast<std::size_t>(i)]->amova.amova_id, i);
    EXPECT_EQ(a->num_perm, 17);
    EXPECT_EQ(a->N_genes, 16.0);
    EXPECT_EQ(a->N_units, 16.0);
    EXPECT_EQ(a->group_size, (std::vector<double>{8.0, 8.0}));
    EXPECT_EQ(a->haplo_index.size(), 16u + 4u + 1u);
    EXPECT_EQ(a->SSD_pops.dim, 4);
    EXPECT_EQ(a->SSD_groups.dim, 2);
    EXPECT_TRUE(a->ind_d.empty());
    EXPECT_EQ(a->all_pops[1]->amova.perm_freq, (std::vector<double>{1.0, 1.0, 2.0}));
}

TEST(AmovaInitialize, IndividualLevelCountsIndividuals) {
    AmovaData data(kOneGroup, 3, conventional, true);
    data.s.IncludeIndividualLevel = 1;
    const auto a = data.prepare();
    EXPECT_EQ(a->N_units, 4.0);
    EXPECT_EQ(a->ind_F, std::vector<double>(4, 0.0));
    EXPECT_EQ(a->ind_d, std::vector<double>(4, 0.0));
    EXPECT_EQ(std::vector<int>(a->haplo_index.begin(), a->haplo_index.begin() + 8),
              (std::vector<int>{0, 1, 1, 0, 2, 2, 0, 1}))
        << "individuals keep their two copies side by side";
}

TEST(AmovaInitialize, TimeHasTheLiteralCenturyAndParenthesis) {
    AmovaData data(kOneGroup, 3, conventional);
    const std::string text = data.prepare()->time_string.c_str();
    ASSERT_EQ(text.size(), std::strlen("01/01/1926 at 00:00:00)"));
    EXPECT_EQ(text.substr(6, 2), "19");
    EXPECT_EQ(text.substr(10, 4), " at ");
    EXPECT_EQ(text.back(), ')');
}

TEST(AmovaInitialize, CleanReleasesAllAndCanBeDoneTwice) {
    AmovaData data(kTwoGroups, 3, conventional);
    const auto a = data.prepare();
    a->clean();
    a->clean();
    EXPECT_TRUE(a->all_pops.empty());
    EXPECT_TRUE(a->haplo_index.empty());
    EXPECT_EQ(a->SSD_pops.dim, 0);
}

TEST(AmovaInitialize, NumbersOutsideTheStructureAreGivenAnew) {
    AmovaData data(kOneGroup, 3, conventional);
    data.samples.populations[0]->amova.amova_id = -1;
    data.samples.populations[1]->amova.amova_id = 7;
    const auto a = data.prepare();
    EXPECT_EQ(a->all_pops[0]->amova.amova_id, 0);
    EXPECT_EQ(a->all_pops[1]->amova.amova_id, 1);
    EXPECT_EQ(a->AMOVA_1G_P_H(), 1);
}

TEST(AmovaConstructor, SampleInNoGroupTakesNoPart) {
    AmovaData data(kTwoGroups, 3, conventional);
    mnd::amova_results without;
    data.analyse(0, &without);
    auto* spare = new mnd::Population("spare", 4, data.samples);
    spare->sample_size = 50.0;
    spare->amova.amova_id = 4;
    spare->hapl_list.Add(new mnd::PHaploDef(data.definitions[0].get(), 50));
    data.samples.populations.Add(spare);
    mnd::amova_results with;
    data.analyse(0, &with);
    EXPECT_EQ(spare->amova.amova_id, 4);
    EXPECT_EQ(with.total.df, 15);
    EXPECT_EQ(with.total.SSD, without.total.SSD);
    EXPECT_EQ(with.FST, without.FST);
}

TEST(AmovaConstructor, ReleasesThePermutationVectors) {
    AmovaData data(kTwoGroups, 3, conventional);
    const auto a = data.analyse();
    for (const mnd::Population* sample : data.samples.populations) {
        EXPECT_TRUE(sample->amova.perm_freq.empty());
        EXPECT_EQ(sample->amova.perm_size, 0);
    }
    EXPECT_TRUE(a->all_pops.empty());
}

TEST(AmovaConstructor, DoesNothingWithoutATask) {
    AmovaData data(kTwoGroups, 3, conventional);
    data.s.TaskNumber = 0;
    Document document(data.s);
    const auto a = data.analyse(1);
    EXPECT_EQ(a->design, 0);
    EXPECT_EQ(a->SSDT, 0.0);
    EXPECT_EQ(document.text(), "");
}

// ---- Pairs of samples

struct PairwiseCase {
    long task;
    int pairwise_fst, differences, delta_mu;
    bool initialized, compared;
};

TEST(AmovaPairs, RunWhereATaskAsksForThem) {
    const PairwiseCase kCases[] = {
        {0, 0, 0, 0, false, false},
        {0, 1, 0, 0, true, false},
        {0, 0, 1, 0, true, false},
        {mnd::kTaskPairwiseFst, 1, 0, 0, true, true},
        {mnd::kTaskMantel, 0, 0, 0, false, true},
        {0, 0, 0, 1, false, true},
    };
    for (const PairwiseCase& c : kCases) {
        AmovaData data(kOneGroup, 3, conventional);
        data.s.TaskNumber = c.task;
        data.s.ComputePairwiseFST = c.pairwise_fst;
        data.s.PrintMissIntermatchs = c.differences;
        data.s.ComputeDeltaMuSqr = c.delta_mu;
        data.s.NumPermutationsFST = 0;
        Document document(data.s);
        const CapturedLog log;
        const auto a = data.analyse(1);
        const std::string what = "task " + std::to_string(c.task);
        EXPECT_EQ(a->N_genes != 0.0, c.initialized) << what;
        EXPECT_EQ(log.holds("\tComputing pairwise Fst's ... \n"), c.compared) << what;
        EXPECT_EQ(log.holds("\tdone ! ("), c.compared) << what;
    }
}

TEST(AmovaPairs, HaveAnEntryOfTheirLevel) {
    for (const bool groups : {false, true}) {
        AmovaData data(kOneGroup, 3, conventional);
        data.s.TaskNumber = mnd::kTaskPairwiseFst;
        data.s.ComputePairwiseFST = 1;
        data.s.NumPermutationsFST = 0;
        data.samples.output_by_sample = !groups;
        Document document(data.s);
        mnd::htmlOutput = true;
        data.analyse(1);
        const std::string anchor = groups ? "_gr_pairw_diff" : "_pop_pairw_diff";
        EXPECT_NE(document.text().find(anchor + "\"></A>"), std::string::npos);
        EXPECT_NE(read_text(document.folder() / "document.js").find("\"Pairwise distances\""),
                  std::string::npos);
    }
}

// ---- The document

TEST(AmovaDocument, ShowsStructureDistanceAndTable) {
    AmovaData data(kTwoGroups, 3, nullptr);
    data.s.ComputeConventionalFST = 1;
    Document document(data.s);
    mnd::amova_results record;
    const auto a = data.analyse(1, &record);
    const std::string text = document.text();
    const std::size_t structure = text.find("\"pop1\"");
    const std::size_t distance =
        text.find("\nComputing conventional F-Statistics from haplotype frequencies\n");
    const std::size_t heading = text.find("\nAMOVA design and results :\n");
    const std::size_t table = text.find(" Source of                  Sum of");
    ASSERT_NE(structure, std::string::npos) << text;
    ASSERT_NE(distance, std::string::npos) << text;
    ASSERT_NE(table, std::string::npos) << text;
    EXPECT_LT(structure, distance);
    EXPECT_LT(distance, heading);
    EXPECT_LT(heading, table);
    EXPECT_EQ(text.find("Significance tests"), std::string::npos) << "no permutations were asked for";
    EXPECT_EQ(record.design_code, 3);
}

TEST(AmovaDocument, SilentAnalysisWritesNothing) {
    AmovaData data(kTwoGroups, 3, conventional);
    Document document(data.s);
    mnd::amova_results record;
    data.analyse(0, &record);
    EXPECT_EQ(document.text(), "");
    EXPECT_NE(record.total.df, 0);
}

TEST(AmovaDocument, NamesTheDistanceMethod) {
    const struct {
        mnd::TDataType type;
        int method;
        const char* line;
    } kCases[] = {{mnd::DNA, 2, "\nDistance method: Kimura 2P\n"},
                  {mnd::RFLP, 1, "\nDistance method: Proportion of difference\n"},
                  {mnd::MICROSAT, 1, "\nDistance method: Sum of squared size difference (RST)\n"},
                  {mnd::STANDARD, 0, "\nDistance method: Pairwise differences\n"},
                  {mnd::FREQUENCY, 0, "\nDistance method: Pairwise differences\n"}};
    for (const auto& c : kCases) {
        AmovaData data(kOneGroup, 3, conventional);
        data.s.data_type = c.type;
        data.s.DistanceMethodAMOVA = c.method;
        Document document(data.s);
        data.analyse(1);
        EXPECT_NE(document.text().find(c.line), std::string::npos) << c.line << document.text();
    }
}

TEST(AmovaDocument, IllDefinedStructureHasNoTable) {
    AmovaData data({{{0, 1}}, {{1, 2}}}, 3, conventional);
    Document document(data.s);
    const ProjectLog log;
    data.analyse(1);
    EXPECT_TRUE(log.reports("ERROR", "Amova::AMOVA_G_P_H()", "ill-defined genetic structure"));
    EXPECT_EQ(document.text().find("Source of"), std::string::npos);
    EXPECT_EQ(document.text().find("References"), std::string::npos);
}

TEST(AmovaDocument, PopulationFstStandsBehindTheTable) {
    AmovaData data(kOneGroup, 3, conventional);
    data.s.PopSpecificFST = 1;
    Document document(data.s);
    mnd::amova_results record;
    data.analyse(1, &record);
    const std::string text = document.text();
    EXPECT_LT(text.find(" Fixation Index      FST : "), text.find("\nPopulation specific FST indices\n"));
    EXPECT_NE(text.find("     2      pop2 "), std::string::npos);
    EXPECT_EQ(record.pop_Fst.size(), 2u);
}

TEST(AmovaDocument, PopulationFisHasAnAnchorOfItsLevel) {
    for (const bool groups : {false, true}) {
        AmovaData data(kOneGroup, 3, conventional, true);
        data.s.IncludeIndividualLevel = 1;
        data.s.PopSpecificFIS = 1;
        data.s.run_time_stamp = "21/11/26at10:00:00";
        data.samples.Title = "A small project";
        data.samples.output_by_sample = !groups;
        Document document(data.s);
        mnd::htmlOutput = true;
        data.analyse(1);
        const std::string text = document.text();
        const std::string anchor =
            std::string("_Asmallproject_amova_") + (groups ? "GR" : "POP") + "_AMOVA_FIS\"></A>";
        const std::size_t at = text.find(anchor);
        ASSERT_NE(at, std::string::npos) << text;
        EXPECT_LT(at, text.find("\nPopulation specific FIS indices\n"));
        const std::string tree = read_text(document.folder() / "document.js");
        EXPECT_NE(tree.find(groups ? "\"FIS per group\"" : "\"FIS per pop\""), std::string::npos) << tree;
    }
}

TEST(AmovaDocument, PopulationFisFollowsTheTests) {
    // Every individual is heterozygous: no arrangement of the copies gives a smaller index, and only
    // arrangements as heterozygous as this give as small a one.
    AmovaData data({{{0, 1, 0, 1, 0, 1}, {1, 0, 0, 1, 1, 0}}}, 2, nullptr, true);
    data.s.IncludeIndividualLevel = 1;
    data.s.PopSpecificFIS = 1;
    data.s.NumPermutationsAMOVA = 100;
    Document document(data.s);
    mnd::amova_results record;
    data.analyse(1, &record);
    const std::string text = document.text();
    const std::size_t tests = text.find("\nSignificance tests (110 permutations)\n");
    const std::size_t fis = text.find("\nPopulation specific FIS indices (110 permutations)\n");
    ASSERT_NE(tests, std::string::npos) << text;
    ASSERT_NE(fis, std::string::npos) << text;
    EXPECT_LT(text.find(" Fixation Indices\n"), tests);
    EXPECT_LT(text.find("Vc and FIT :"), fis);
    EXPECT_EQ(count_of(text, "Population specific FIS indices"), 1);
    EXPECT_EQ(record.pop_Fis_pvalue, (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(record.FIS_pvalue, 1.0);
    EXPECT_EQ(record.null_Vb.size(), 110u);
}

TEST(AmovaDocument, StoppedTestsEndTheDesign) {
    AmovaData data(kOneGroup, 3, conventional, true);
    data.s.IncludeIndividualLevel = 1;
    data.s.PopSpecificFIS = 1;
    data.s.NumPermutationsAMOVA = 1000;
    data.s.stop_computations = 1;
    Document document(data.s);
    data.analyse(1);
    EXPECT_NE(document.text().find(" Fixation Indices\n"), std::string::npos) << "observed results stay";
    EXPECT_EQ(document.text().find("P-value"), std::string::npos);
    EXPECT_EQ(document.text().find("Population specific"), std::string::npos);
}

TEST(AmovaDocument, SummaryRowIsWrittenWhenItsFileIsOpen) {
    AmovaData data(kOneGroup, 3, conventional);
    TempFolder folder;
    std::ofstream summary(folder / "amovares.sum");
    mnd::ofs_amova_res = &summary;
    data.analyse(0);
    mnd::ofs_amova_res = nullptr;
    summary.close();
    const std::string row = read_text(folder / "amovares.sum");
    EXPECT_EQ(row.front(), '"');
    EXPECT_NE(row.find("\t1\t6\t0\t0\t"), std::string::npos) << row;
    EXPECT_EQ(row.back(), '\n');
    EXPECT_EQ(count_of(row, "\n"), 1);
    EXPECT_EQ(count_of(row, "\t"), 12);
}

TEST(AmovaDocument, GlobalStatisticsAreStoredOnDemand) {
    AmovaData data(kTwoGroups, 3, conventional);
    Document document(data.s);
    mnd::global_f_statistics = {};
    mnd::amova_results record;
    data.analyse(1, &record);
    EXPECT_EQ(mnd::global_f_statistics.FST, 0.0) << "nobody asked";
    mnd::global_f_statistics.wanted = true;
    data.analyse(0, &record);
    EXPECT_EQ(mnd::global_f_statistics.FST, 0.0) << "that of a single locus is not the global one";
    data.analyse(1, &record);
    EXPECT_NE(record.FST, 0.0);
    EXPECT_EQ(mnd::global_f_statistics.FST, record.FST);
    EXPECT_EQ(mnd::global_f_statistics.FSC, record.FSC);
    EXPECT_EQ(mnd::global_f_statistics.FCT, record.FCT);
    mnd::global_f_statistics = {};
}

}  // namespace
}  // namespace mnd_test
