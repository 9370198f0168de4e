#include "within/allele_counts.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "model/popul_microsat.h"
#include "model/popul_standard.h"
#include "support/sample_texts.h"
#include "support/seeded_stream.h"
#include "within/text_sample.h"

namespace {

using mnd::AlleleTally;
using mnd::count_alleles;
using mnd::PopGenetics;
using mnd::PopulStandard;
using mnd::TAllele;
using mnd::TAlleleDB;
using StandardSample = mnd_test::TextSample<PopulStandard>;

double copies(const TAlleleDB& counts, int locus, const char* name) {
    const TAllele* allele = counts(locus, mnd::my_string(name));
    return allele == nullptr ? -1.0 : allele->freq;
}

TEST(AlleleTally, PassesOverNull) {
    AlleleTally tally;
    tally.add(nullptr, 3.0);
    EXPECT_TRUE(tally.entries().empty());
}

class ManyAlleles : public mnd_test::SeededStream {};

// Around 16 alleles the way of searching changes.
TEST_F(ManyAlleles, AreCountedAsByAMap) {
    std::vector<std::unique_ptr<TAllele>> alleles;
    for (int i = 0; i < 60; ++i)
        alleles.push_back(std::make_unique<TAllele>(mnd::my_string(std::to_string(i).c_str())));
    for (const std::size_t used : {std::size_t{1}, std::size_t{16}, std::size_t{17}, std::size_t{60}}) {
        AlleleTally tally;
        std::map<const TAllele*, double> expected;
        for (int draw = 0; draw < 2000; ++draw) {
            const TAllele* allele =
                alleles[static_cast<std::size_t>(next() * static_cast<double>(used))].get();
            tally.add(allele, 1.0 + draw % 3);
            expected[allele] += 1.0 + draw % 3;
        }
        ASSERT_EQ(tally.entries().size(), expected.size());
        for (const AlleleTally::Entry& entry : tally.entries())
            EXPECT_EQ(entry.copies, expected[entry.allele]);
    }
}

TEST(CountAlleles, WeighsHaplotypesByTheirCounts) {
    StandardSample s({"h1", "h2", "h3"}, {4, 3, 2});
    TAlleleDB db;
    s.add_alleles(db, {{"A", "x"}, {"B", "x"}, {"A", "y"}});
    const TAlleleDB counts = count_alleles(s.sample);
    ASSERT_EQ(counts.count, 2);
    EXPECT_EQ(counts[0]->count, 2);
    EXPECT_EQ(copies(counts, 0, "A"), 6.0);
    EXPECT_EQ(copies(counts, 0, "B"), 3.0);
    EXPECT_EQ(copies(counts, 1, "x"), 7.0);
    EXPECT_EQ(copies(counts, 1, "y"), 2.0);
}

TEST(CountAlleles, LeavesOutMissingAllelesAndKeepsTheLocus) {
    StandardSample s({"h1", "h2"}, {4, 3});
    TAlleleDB db;
    s.add_alleles(db, {{"?", "?", "A"}, {"B", "?", "?"}});
    const TAlleleDB counts = count_alleles(s.sample);
    ASSERT_EQ(counts.count, 3);
    EXPECT_EQ(counts[0]->count, 1);
    EXPECT_EQ(copies(counts, 0, "B"), 3.0);
    EXPECT_EQ(counts[1]->count, 0);
    EXPECT_EQ(copies(counts, 2, "A"), 4.0);
}

TEST(CountAlleles, LeavesOutHaplotypesOfNoCopy) {
    StandardSample s({"h1", "h2"}, {0, 3});
    TAlleleDB db;
    s.add_alleles(db, {{"A"}, {"B"}});
    const TAlleleDB counts = count_alleles(s.sample);
    EXPECT_EQ(copies(counts, 0, "A"), -1.0);
    EXPECT_EQ(copies(counts, 0, "B"), 3.0);
}

TEST(CountAlleles, AnEmptySampleHasNoLocus) {
    EXPECT_EQ(count_alleles(PopulStandard()).count, 0);
}

TEST(CountAlleles, CountsBothStringsOfPhenotypes) {
    mnd::Haplo_DB db;
    TAlleleDB alleles;
    PopulStandard sample("s", 0, mnd_test::genotypic(mnd::STANDARD, ' ', 0));
    ASSERT_EQ(mnd_test::read_lines(sample, db, "a 3 A 1\n B 2\nb 1 A ?\n A 1\n"), 1);
    mnd_test::build_vectors(sample, db, alleles);
    const TAlleleDB counts = count_alleles(sample);
    EXPECT_EQ(copies(counts, 0, "A"), 5.0);  // 3 + 2
    EXPECT_EQ(copies(counts, 0, "B"), 3.0);
    EXPECT_EQ(copies(counts, 1, "1"), 4.0);
    EXPECT_EQ(copies(counts, 1, "2"), 3.0);
    EXPECT_EQ(counts[1]->count, 2);
}

TEST(CountGlobalAlleles, AddsAllSamplesAndReplacesWhatWasThere) {
    TAlleleDB db;
    mnd::Haplo_DB haplotypes;
    mnd::Samples samples;
    const mnd::ProfileSettings profile = mnd_test::haplotypic(mnd::MICROSAT, ' ');
    for (const char* lines : {"a 2 10 4\nb 1 12 5\n", "c 4 10 9\nd 1 ? 4\n"}) {
        auto* sample = new mnd::PopulMicrosat("s", 0, profile);
        samples.populations.Add(sample);
        ASSERT_EQ(mnd_test::read_lines(*sample, haplotypes, lines), 1);
    }
    for (mnd::Population* sample : samples.populations)
        sample->allele_db = &db;
    for (mnd::HaploDef* definition : haplotypes.list)
        definition->build_haplovect(&db, ' ', 0, 0.1);
    PopGenetics::globalAllelicDB.insert_allele(0, "old", 1.0);
    mnd::count_global_alleles(samples);
    const TAlleleDB& global = PopGenetics::globalAllelicDB;
    ASSERT_EQ(global.count, 2);
    EXPECT_EQ(copies(global, 0, "old"), -1.0);
    EXPECT_EQ(copies(global, 0, "10"), 6.0);
    EXPECT_EQ(copies(global, 0, "12"), 1.0);
    EXPECT_EQ(copies(global, 1, "4"), 3.0);
    mnd::count_global_alleles(mnd::Samples());
    EXPECT_EQ(PopGenetics::globalAllelicDB.count, 0);
}

}  // namespace
