#include "between/genotype_assignment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "foundation/data_type.h"
#include "foundation/random.h"
#include "model/popul_standard.h"
#include "results/citations.h"
#include "results/xml_tags.h"
#include "run/process.h"
#include "run/settings.h"
#include "support/captured_log.h"
#include "support/seeded_stream.h"
#include "support/temp_folder.h"
#include "within/analysed_sample.h"

namespace {

using mnd::IndLikelihood;
using mnd::PopulStandard;
using mnd::TAllele;
using mnd::TPhenotype;
using mnd_test::contains;
using mnd_test::count_of;
using mnd_test::genotypic;

constexpr int kUnknown = 0;
constexpr int kKnown = 1;

// 1 - 0.95^(1/n): what stays out of n copies with probability 0.95.
double unseen(double copies) {
    return 1.0 - std::pow(0.95, 1.0 / copies);
}

class Assignment : public mnd_test::SeededStream {
protected:
    // Individuals of two loci: A 3, B 1 and x 3, y 1 in North; C 4 and y 4 in South.
    void make_two_samples(int phase) {
        start(phase);
        add("North", "a 1 A x\n A y\nb 1 A x\n B x\n");
        add("South", "c 2 C y\n C y\n");
        prepare();
    }
    void start(int phase, char separator = ' ') {
        analysis_.reset();
        data_.reset();
        data_ = std::make_unique<Samples>(genotypic(mnd::STANDARD, separator, phase));
    }
    PopulStandard& add(const std::string& name, const std::string& lines) { return data_->add(name, lines); }
    void prepare() {
        data_->prepare();
        analysis_ = std::make_unique<IndLikelihood>(data_->samples, data_->s, 1e-10);
    }

    IndLikelihood& analysis() { return *analysis_; }
    mnd::settings& s() { return data_->s; }
    mnd::Population& sample(int i) { return *data_->samples.populations[i]; }
    mnd::Samples& samples() { return data_->samples; }
    std::string document() { return data_->document.text(); }
    mnd_test::Document& document_file() { return data_->document; }

    double frequency(int locus, const char* allele, int of_sample) {
        const TAllele* const found = data_->alleles(locus, mnd::my_string(allele));
        return found->pop_freqs.at(static_cast<std::size_t>(of_sample));
    }
    // ln L of an individual of one sample in another.
    double log_likelihood(int of_sample, int individual, int in_sample) {
        return analysis()
            .log_likelihoods(*sample(of_sample).phen_db[individual])
            .at(static_cast<std::size_t>(in_sample));
    }

private:
    using Samples = mnd_test::AnalysedSamples<PopulStandard>;
    std::unique_ptr<Samples> data_;
    std::unique_ptr<IndLikelihood> analysis_;
};

// --- The frequency of what was not seen

TEST(UnseenFrequency, KeepsOutOfTheSampleWithProbability95) {
    for (const double copies : {2.0, 20.0, 474.0})
        EXPECT_NEAR(std::pow(1.0 - mnd::unseen_frequency(copies), copies), 0.95, 1e-13);
}

// ln 0.95 = -0.051293294, a 20th of which is -0.0025646647; 1 - exp of it
TEST(UnseenFrequency, OfTenGenotypes) {
    EXPECT_NEAR(mnd::unseen_frequency(20.0), 0.0025613788, 1e-10);
}

TEST(UnseenFrequency, IsOneWithoutCopies) {
    EXPECT_EQ(mnd::unseen_frequency(0.0), 1.0);
    EXPECT_EQ(mnd::unseen_frequency(-2.0), 1.0);
}

// --- Frequencies

TEST_F(Assignment, AlleleFrequenciesAreThoseOfEachSample) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_DOUBLE_EQ(frequency(0, "A", 0), 0.75);
    EXPECT_DOUBLE_EQ(frequency(0, "B", 0), 0.25);
    EXPECT_DOUBLE_EQ(frequency(0, "C", 0), 0.0);
    EXPECT_DOUBLE_EQ(frequency(1, "x", 0), 0.75);
    EXPECT_DOUBLE_EQ(frequency(1, "y", 0), 0.25);
    EXPECT_DOUBLE_EQ(frequency(0, "A", 1), 0.0);
    EXPECT_DOUBLE_EQ(frequency(0, "C", 1), 1.0);
    EXPECT_DOUBLE_EQ(frequency(1, "y", 1), 1.0);
    EXPECT_EQ(sample(0).hapl_db.count, 0);
}

// One number an allele of the sample and start: 2 + 2 alleles of North, 1 + 1 of South.
TEST_F(Assignment, EveryEstimationTakesItsRandomStarts) {
    make_two_samples(kUnknown);
    s().InitialConditionsEM = 3;
    mnd::reset_draws_taken();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_EQ(mnd::draws_taken(), 3U * 6U);
}

TEST_F(Assignment, TheDrawsAreThoseOfOneEstimationAfterTheOther) {
    make_two_samples(kUnknown);
    s().InitialConditionsEM = 2;
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    const double after = next();
    seed();
    for (int i = 0; i < 2 * 6; ++i)
        next();
    EXPECT_EQ(after, next());
}

// 3 of 4 individuals show A; the fourth has nothing but the recessive allele, so that its
// frequency is the root of 1/4.
TEST_F(Assignment, RecessiveAllelesAreEstimated) {
    start(kUnknown);
    PopulStandard& north = add("North", "a 3 A\n A\nb 1 null\n null\n");
    north.make_all_blanks(' ');
    north.RecessiveAllelesEM = 1;
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_NEAR(frequency(0, "A", 0), 0.5, 1e-6);
    EXPECT_NEAR(frequency(0, "null", 0), 0.5, 1e-6);
}

TEST_F(Assignment, FrequenciesCanBeEstimatedTwice) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    const std::vector<double> first = analysis().log_likelihoods(*sample(0).phen_db[0]);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_EQ(analysis().log_likelihoods(*sample(0).phen_db[0]), first);
}

TEST_F(Assignment, TheWorkIsNotCountedAsDone) {
    make_two_samples(kUnknown);
    mnd::settings::global_work_done = 7.0;
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_EQ(mnd::settings::global_work_done, 7.0);
    mnd::settings::global_work_done = 0.0;
}

// The estimate of the work to do does not hold this work: a share of it would be wrong.
TEST_F(Assignment, ProgressHasNoPercentage) {
    make_two_samples(kUnknown);
    const bool were_silent = mnd::silentMendrake;
    mnd::silentMendrake = false;
    mnd::settings::old_message[0] = '\0';
    mnd::settings::global_work_to_do = 1000.0;
    mnd::settings::global_work_done = 10.0;
    testing::internal::CaptureStdout();
    analysis().run();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Computing likelihoods of genotypes: frequencies of sample 1 of 2...\n"
              "Computing likelihoods of genotypes: frequencies of sample 2 of 2...\n");
    EXPECT_EQ(mnd::settings::global_work_to_do, 1000.0);
    EXPECT_EQ(mnd::settings::global_work_done, 10.0);
    mnd::settings::global_work_to_do = mnd::settings::global_work_done = 0.0;
    mnd::silentMendrake = were_silent;
}

TEST_F(Assignment, WithoutNumbersOfStartsAndIterationsTheUsualOnesAreTaken) {
    make_two_samples(kUnknown);
    s().InitialConditionsEM = 0;
    s().MaximumNumOfIterationsEM = -1;
    mnd::reset_draws_taken();
    const mnd_test::CapturedLog log;
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_EQ(mnd::draws_taken(), 50U * 6U);
    EXPECT_DOUBLE_EQ(frequency(0, "A", 0), 0.75);
    EXPECT_TRUE(contains(log.text(),
                         "\n\tAssignment of genotypes: InitialConditionsEM is 0, using 50"
                         "\n\tAssignment of genotypes: MaximumNumOfIterationsEM is -1, using 1000"));
    EXPECT_EQ(s().InitialConditionsEM, 0);
}

// --- Likelihoods, phase unknown

TEST_F(Assignment, LikelihoodsByHand) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    const double u = unseen(4.0);
    // a is A A and x y
    EXPECT_NEAR(log_likelihood(0, 0, 0), std::log(0.75 * 0.75 * 2.0 * 0.75 * 0.25), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 0, 1), std::log(u * u * 2.0 * u * 1.0), 1e-12);
    // b is A B and x x
    EXPECT_NEAR(log_likelihood(0, 1, 0), std::log(2.0 * 0.75 * 0.25 * 0.75 * 0.75), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 1, 1), std::log(2.0 * u * u * u * u), 1e-12);
    // c is C C and y y
    EXPECT_NEAR(log_likelihood(1, 0, 0), std::log(u * u * 0.25 * 0.25), 1e-12);
    EXPECT_NEAR(log_likelihood(1, 0, 1), 0.0, 1e-12);
}

TEST_F(Assignment, AHeterozygoteHasTwiceTheProductOfItsFrequencies) {
    start(kUnknown);
    add("North", "a 1 A\n B\nb 2 A\n A\nc 1 B\n B\n");
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_NEAR(std::exp(log_likelihood(0, 0, 0)), 2.0 * 0.625 * 0.375, 1e-14);
    EXPECT_NEAR(std::exp(log_likelihood(0, 1, 0)), 0.625 * 0.625, 1e-14);
}

// Alone in its sample a heterozygote makes both frequencies.
TEST_F(Assignment, TheOwnSampleIsNotTreatedApart) {
    start(kUnknown);
    add("North", "a 1 A\n B\n");
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_NEAR(std::exp(log_likelihood(0, 0, 0)), 0.5, 1e-15);
}

TEST_F(Assignment, TheLeastFrequencyIsThatOfTheSample) {
    start(kUnknown);
    add("North", "a 10 A\n A\n");
    add("South", "b 3 B\n B\n");
    prepare();
    EXPECT_EQ(analysis().min_freq, 1e-10);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_NEAR(log_likelihood(1, 0, 0), 2.0 * std::log(1.0 - std::exp(std::log(0.95) / 20.0)), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 0, 1), 2.0 * std::log(unseen(6.0)), 1e-12);
    EXPECT_NEAR(analysis().min_freq, unseen(6.0), 1e-15);
}

TEST_F(Assignment, MissingDataAreAnAlleleOfTheirOwn) {
    start(kUnknown);
    add("North", "a 1 ?\n ?\nb 1 A\n A\nc 1 A\n ?\nd 1 A\n A\n");
    add("South", "e 1 A\n A\n");
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_NEAR(log_likelihood(0, 0, 0), std::log(0.375 * 0.375), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 2, 0), std::log(2.0 * 0.625 * 0.375), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 0, 1), 2.0 * std::log(unseen(2.0)), 1e-12);
}

TEST_F(Assignment, AlmostNoFrequencyCountsAsNone) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    TAllele& C = *sample(1).phen_db[0]->pseudo_hapl[0]->allele(0);
    const double of_y = std::log(0.25 * 0.25);
    C.pop_freqs[0] = 0.9e-15;
    EXPECT_NEAR(log_likelihood(1, 0, 0), 2.0 * std::log(unseen(4.0)) + of_y, 1e-12);
    C.pop_freqs[0] = 1e-15;
    EXPECT_NEAR(log_likelihood(1, 0, 0), 2.0 * std::log(1e-15) + of_y, 1e-12);
}

TEST_F(Assignment, AnAlleleWithoutFrequenciesWasNotSeen) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    sample(0).allele_db->reset_all_pop_freqs();
    EXPECT_NEAR(log_likelihood(1, 0, 1), 4.0 * std::log(unseen(4.0)), 1e-12);
}

TEST_F(Assignment, ASampleWithoutIndividualsSaysNothing) {
    start(kUnknown);
    add("North", "a 1 A\n B\nb 1 A\n A\n");
    add("Empty", "");
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_NEAR(log_likelihood(0, 0, 1), std::log(2.0), 1e-15);
    EXPECT_NEAR(log_likelihood(0, 1, 1), 0.0, 1e-15);
}

TEST_F(Assignment, ASampleOfNoSizeSaysNothingEither) {
    make_two_samples(kUnknown);
    sample(0).sample_size = 0.0;
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_DOUBLE_EQ(frequency(0, "A", 0), 0.0);
    EXPECT_NEAR(log_likelihood(0, 0, 0), std::log(2.0), 1e-15);
}

TEST_F(Assignment, AGenotypeWithoutAllelesHasNoLikelihood) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_TRUE(std::isnan(analysis().log_likelihoods(TPhenotype()).at(0)));
}

// 2^-1200 and its like have no double; 2^1200 neither.
TEST_F(Assignment, ProductsBeyondADoubleGoOnAsLogarithms) {
    constexpr std::size_t kLoci = 1200;
    start(kUnknown, 0);
    add("North", "a 1 " + std::string(kLoci, 'A') + "\n " + std::string(kLoci, 'B') + "\n");
    add("South", "b 1 " + std::string(kLoci, 'C') + "\n " + std::string(kLoci, 'C') + "\n");
    add("Empty", "");
    s().InitialConditionsEM = 1;
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_NEAR(log_likelihood(0, 0, 0), kLoci * std::log(0.5), 1e-9);
    EXPECT_NEAR(log_likelihood(0, 0, 1), kLoci * std::log(2.0 * unseen(2.0) * unseen(2.0)), 1e-9);
    EXPECT_NEAR(log_likelihood(0, 0, 2), kLoci * std::log(2.0), 1e-9);
    EXPECT_NEAR(log_likelihood(1, 0, 0), 2.0 * kLoci * std::log(unseen(2.0)), 1e-9);
    EXPECT_EQ(log_likelihood(1, 0, 1), 0.0);
}

// Genotypes by the names of their alleles, counted and multiplied one by one.
class PlainLikelihood {
public:
    using Genotype = std::vector<std::pair<std::string, std::string>>;

    std::vector<std::vector<Genotype>> samples;

    double operator()(const Genotype& g, std::size_t in_sample) const {
        double log_likelihood = 0.0;
        for (std::size_t locus = 0; locus < g.size(); ++locus) {
            std::map<std::string, double> copies;
            for (const Genotype& other : samples[in_sample]) {
                copies[other[locus].first] += 1.0;
                copies[other[locus].second] += 1.0;
            }
            const double n = 2.0 * static_cast<double>(samples[in_sample].size());
            for (const std::string& allele : {g[locus].first, g[locus].second})
                log_likelihood += std::log(copies.count(allele) != 0 ? copies[allele] / n : unseen(n));
            if (g[locus].first != g[locus].second) log_likelihood += std::log(2.0);
        }
        return log_likelihood;
    }
};

TEST_F(Assignment, RandomGenotypesAgreeWithPlainCounting) {
    std::mt19937 random(7);
    PlainLikelihood plain;
    start(kUnknown);
    for (int i = 0; i < 4; ++i) {
        std::string lines;
        plain.samples.emplace_back();
        for (int individual = 0; individual < 3 + 4 * i; ++individual) {
            std::string strings[2] = {"i" + std::to_string(individual) + " 1", ""};
            PlainLikelihood::Genotype genotype;
            for (unsigned locus = 0; locus < 6; ++locus) {
                genotype.emplace_back(std::to_string(random() % (locus + 2)),
                                      std::to_string(random() % (locus + 2)));
                strings[0] += ' ' + genotype.back().first;
                strings[1] += ' ' + genotype.back().second;
            }
            plain.samples.back().push_back(genotype);
            lines += strings[0] + '\n' + strings[1] + '\n';
        }
        add("S" + std::to_string(i), lines);
    }
    s().InitialConditionsEM = 2;
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    for (int i = 0; i < 4; ++i) {
        for (int individual = 0; individual < 3 + 4 * i; ++individual) {
            const auto& g = plain.samples[static_cast<std::size_t>(i)][static_cast<std::size_t>(individual)];
            for (int j = 0; j < 4; ++j) {
                EXPECT_NEAR(log_likelihood(i, individual, j), plain(g, static_cast<std::size_t>(j)), 1e-11)
                    << i << ' ' << individual << ' ' << j;
            }
        }
    }
}

// --- Likelihoods, phase known

TEST_F(Assignment, KnownHaplotypesAreDrawnAsWholes) {
    make_two_samples(kKnown);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    const double u = unseen(4.0);
    // North has A x twice, A y and B x once; South C y four times.
    EXPECT_EQ(sample(0).hapl_db.count, 3);
    EXPECT_NEAR(log_likelihood(0, 0, 0), std::log(2.0 * 0.5 * 0.25), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 1, 0), std::log(2.0 * 0.5 * 0.25), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 0, 1), std::log(2.0 * u * u), 1e-12);
    EXPECT_NEAR(log_likelihood(1, 0, 0), std::log(u * u), 1e-12);
    EXPECT_NEAR(log_likelihood(1, 0, 1), 0.0, 1e-12);
    EXPECT_NEAR(analysis().min_freq, u, 1e-15);
}

// All alleles of d are in both samples, its haplotypes in one of them only.
TEST_F(Assignment, AHaplotypeThatIsNotFoundHasTheLeastFrequency) {
    start(kKnown);
    add("North", "a 1 A x\n B y\nb 1 A x\n A x\n");
    add("South", "d 1 A y\n B x\n");
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_NEAR(log_likelihood(1, 0, 0), std::log(2.0 * unseen(4.0) * unseen(4.0)), 1e-12);
    EXPECT_NEAR(log_likelihood(1, 0, 1), std::log(2.0 * 0.5 * 0.5), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 0, 0), std::log(2.0 * 0.75 * 0.25), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 1, 0), std::log(0.75 * 0.75), 1e-12);
}

TEST_F(Assignment, KnownPhaseEstimatesAllelesToo) {
    make_two_samples(kKnown);
    s().InitialConditionsEM = 3;
    mnd::reset_draws_taken();
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_EQ(mnd::draws_taken(), 3U * 6U);
    EXPECT_DOUBLE_EQ(frequency(0, "A", 0), 0.75);
}

// What stood in the store before has no part in the frequencies.
TEST_F(Assignment, HaplotypesAreCountedAnew) {
    make_two_samples(kKnown);
    sample(0).hapl_db.insert(*sample(1).phen_db[0]->pseudo_hapl[0], 0.9);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_EQ(sample(0).hapl_db.count, 3);
    EXPECT_NEAR(log_likelihood(1, 0, 0), 2.0 * std::log(unseen(4.0)), 1e-12);
}

// --- One individual left out

// Without b North is A 2 and x 1, y 1.
TEST_F(Assignment, AnIndividualCanBeLeftOut) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs_without_one_individual(0, 1));
    EXPECT_DOUBLE_EQ(frequency(0, "A", 0), 1.0);
    EXPECT_DOUBLE_EQ(frequency(0, "B", 0), 0.0);
    EXPECT_DOUBLE_EQ(frequency(1, "x", 0), 0.5);
    EXPECT_DOUBLE_EQ(frequency(1, "y", 0), 0.5);
    EXPECT_DOUBLE_EQ(frequency(0, "C", 1), 1.0);
    const double u = unseen(2.0);
    EXPECT_NEAR(log_likelihood(0, 1, 0), std::log(2.0 * 1.0 * u * 0.5 * 0.5), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 1, 1), std::log(2.0 * std::pow(unseen(4.0), 4.0)), 1e-12);
}

TEST_F(Assignment, TheSampleItselfStaysWholeWhenAnIndividualIsLeftOut) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs_without_one_individual(0, 1));
    EXPECT_EQ(sample(0).phen_db.count, 2);
    EXPECT_EQ(sample(0).sample_size, 4.0);
    EXPECT_EQ(sample(0).phen_db[1]->freq, 1.0);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    EXPECT_DOUBLE_EQ(frequency(0, "B", 0), 0.25);
    EXPECT_NEAR(log_likelihood(1, 0, 0), std::log(std::pow(unseen(4.0), 2.0) * 0.0625), 1e-12);
}

TEST_F(Assignment, OfAnEntryOfSeveralIndividualsOneIsLeftOut) {
    start(kUnknown);
    add("North", "a 2 A\n B\nb 1 B\n B\n");
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs_without_one_individual(0, 0));
    EXPECT_DOUBLE_EQ(frequency(0, "A", 0), 0.25);
    EXPECT_DOUBLE_EQ(frequency(0, "B", 0), 0.75);
    EXPECT_EQ(sample(0).phen_db[0]->freq, 2.0);
}

TEST_F(Assignment, OfASingleIndividualNothingRemains) {
    start(kUnknown);
    add("North", "a 1 A\n B\n");
    add("South", "b 1 B\n B\n");
    prepare();
    ASSERT_TRUE(analysis().calc_alleles_freqs_without_one_individual(0, 0));
    EXPECT_NEAR(log_likelihood(0, 0, 0), std::log(2.0), 1e-15);
    EXPECT_NEAR(log_likelihood(0, 0, 1), std::log(2.0 * unseen(2.0)), 1e-12);
}

TEST_F(Assignment, LeavesOutHaplotypesOfKnownPhaseToo) {
    make_two_samples(kKnown);
    ASSERT_TRUE(analysis().calc_alleles_freqs_without_one_individual(0, 0));
    EXPECT_EQ(sample(0).hapl_db.count, 2);
    EXPECT_NEAR(log_likelihood(0, 1, 0), std::log(2.0 * 0.5 * 0.5), 1e-12);
    EXPECT_NEAR(log_likelihood(0, 0, 0), std::log(2.0 * 0.5 * unseen(2.0)), 1e-12);
}

TEST_F(Assignment, IndicesOfNobodyLeaveOutNobody) {
    make_two_samples(kUnknown);
    for (const auto& [i, individual] :
         std::vector<std::pair<int, int>>{{-1, 0}, {2, 0}, {0, -1}, {0, 2}, {1, 1}}) {
        ASSERT_TRUE(analysis().calc_alleles_freqs_without_one_individual(i, individual));
        EXPECT_DOUBLE_EQ(frequency(0, "A", 0), 0.75) << i << ' ' << individual;
        EXPECT_NEAR(log_likelihood(0, 1, 1), std::log(2.0 * std::pow(unseen(4.0), 4.0)), 1e-12);
    }
}

// --- The document

std::string citation(mnd::Citation publication) {
    return "           <i>" + std::string(mnd::References::get_reference(citation_key(publication))) +
           "</i>\n";
}

// ln(2 x 0.75^3 x 0.25) = -1.556, u = 1 - 0.95^(1/4) = 0.01274: ln 2u^3 = -12.396, ln 2u^4 = -16.758,
// ln u^2/16 = -11.498
TEST_F(Assignment, DocumentByHand) {
    make_two_samples(kUnknown);
    const std::string rule(59, '=');
    analysis().run();
    EXPECT_EQ(document(), '\n' + rule + "\n== LIKELIHOOD OF INDIVIDUAL GENOTYPES IN ALL POPULATIONS ==\n" +
                              rule + "\n\nReferences:\n" + citation(mnd::Citation::Paetkau_1995) +
                              citation(mnd::Citation::Waser_Strobeck_1998) +
                              "\nList of labels for population samples used below:\n"
                              "=================================================\n"
                              "Sample label  \tSample name\n"
                              "------------  \t----------\n"
                              "       1:\tNorth\n"
                              "       2:\tSouth\n"
                              "\nNatural logarithms of the likelihoods, locus by locus, whether the "
                              "gametic phase is known or not.\n"
                              "\nSample 1\n----------\n"
                              "          \t         1         2\n"
                              "         a\t    -1.556   -12.396\n"
                              "         b\t    -1.556   -16.758\n"
                              "\nSample 2\n----------\n"
                              "          \t         1         2\n"
                              "         c\t   -11.498     0.000\n\n");
}

TEST_F(Assignment, SaysWhetherHaplotypesAreWholes) {
    make_two_samples(kKnown);
    analysis().run();
    EXPECT_TRUE(contains(document(),
                         "       2:\tSouth\n"
                         "\nNatural logarithms of the likelihoods, haplotypes being taken as wholes.\n"
                         "\nSample 1\n"));
}

TEST_F(Assignment, SaysThatMissingDataAreCounted) {
    start(kUnknown);
    add("North", "a 1 A x\n B ?\n");
    add("South", "b 1 B x\n B x\n");
    prepare();
    analysis().run();
    EXPECT_TRUE(contains(document(),
                         " known or not.\n"
                         "Missing data count as an allele of their own.\n"
                         "\nSample 1\n"));
}

// Individuals without any data are taken out of a sample, their alleles stay in the store.
TEST_F(Assignment, SaysNothingOfMissingDataThatAreNotCounted) {
    make_two_samples(kUnknown);
    sample(0).allele_db->insert_allele(1, "?", 1.0);
    analysis().run();
    EXPECT_FALSE(contains(document(), "Missing data"));
}

TEST_F(Assignment, SaysWhichSamplesHaveNoIndividuals) {
    start(kUnknown);
    add("North", "a 1 A\n B\n");
    add("Empty", "");
    add("South", "b 1 A\n B\n");
    add("Bare", "");
    prepare();
    analysis().run();
    EXPECT_TRUE(contains(document(),
                         " known or not.\n"
                         "Sample 2 has no individuals, its column means nothing.\n"
                         "Sample 4 has no individuals, its column means nothing.\n"
                         "\nSample 1\n"));
}

TEST_F(Assignment, ColumnsAreAsWideAsTheLongestNameOfASample) {
    start(kUnknown);
    add("North", "a 1 A\n B\n");
    add("A long name", "b 1 B\n B\n");
    prepare();
    EXPECT_EQ(analysis().col_width, 10);
    analysis().run();
    EXPECT_EQ(analysis().col_width, 11);
    EXPECT_TRUE(contains(document(),
                         "\n----------\n           \t          1          2\n"
                         "          a\t     -0.693     -2.983\n"));
}

// Values as wide as the column stay apart.
TEST_F(Assignment, WideValuesAreSeparated) {
    make_two_samples(kUnknown);
    ASSERT_TRUE(analysis().calc_alleles_freqs());
    analysis().col_width = 6;
    analysis().likelihood_in_a_pop(&sample(0));
    EXPECT_EQ(document(), "     a\t -1.556 -12.396\n     b\t -1.556 -16.758\n");
}

TEST_F(Assignment, LeavesNothingBehind) {
    for (const int phase : {kUnknown, kKnown}) {
        make_two_samples(phase);
        document_file().stream() << std::scientific;
        const auto flags = document_file().stream().flags();
        analysis().run();
        EXPECT_EQ(document_file().stream().flags(), flags);
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(sample(i).hapl_db.count, 0);
            EXPECT_EQ(sample(i).sample_size, 4.0);
            for (const TPhenotype* individual : sample(i).phen_db) {
                EXPECT_EQ(individual->genotypes.count, 0);
                for (const TAllele* allele : individual->pseudo_hapl[0]->alleles)
                    EXPECT_TRUE(allele->pop_freqs.empty());
            }
        }
    }
}

TEST_F(Assignment, AStoppedRunPrintsNoLikelihood) {
    make_two_samples(kUnknown);
    s().stop_computations = 1;
    analysis().run();
    EXPECT_TRUE(
        contains(document(), "       2:\tSouth\n\nThe work was stopped, no likelihood is computed.\n"));
    EXPECT_FALSE(contains(document(), "Sample 1"));
    EXPECT_TRUE(sample(0).phen_db[0]->pseudo_hapl[0]->allele(0)->pop_freqs.empty());
}

TEST_F(Assignment, WithoutSamplesTheListOfLabelsIsEmpty) {
    start(kUnknown);
    prepare();
    analysis().run();
    EXPECT_TRUE(contains(document(), "------------  \t----------\n"));
    EXPECT_FALSE(contains(document(), "Sample 1"));
}

TEST_F(Assignment, XmlHasATableForTheLabelsAndOneForEachSample) {
    start(kUnknown);
    add("North & <South>", "a&b 1 A\n B\n");
    add("\"West\"", "c 1 B\n B\n");
    prepare();
    mnd::xmlOutput = true;
    document_file().stream() << "<data>\n";
    analysis().run();
    document_file().stream() << "</data>\n";
    const std::string text = document();
    const std::string time = std::string(" time=\"") + mnd::TXmlTag::time.c_str() + "\">\n";
    EXPECT_TRUE(contains(text, "</data> <genotPopLabels" + time + "Sample label  \tSample name\n"));
    EXPECT_TRUE(
        contains(text, "       1:\tNorth &amp; &lt;South&gt;\n       2:\t\"West\"\n</genotPopLabels>"));
    EXPECT_TRUE(contains(text, "</data> <genotypeLikelihoodMatrix pop=\"North &amp; &lt;South&gt;\"" + time +
                                   "\nSample 1\n----------\n"));
    EXPECT_TRUE(contains(text, "</data> <genotypeLikelihoodMatrix pop=\"&quot;West&quot;\"" + time +
                                   "\nSample 2\n----------\n"));
    EXPECT_TRUE(contains(text, "            a&amp;b\t"));
    EXPECT_EQ(count_of(text, "</genotypeLikelihoodMatrix> <data>\n"), 2);
    const auto wrapped = document_file().folder() / "wrapped.xml";
    mnd_test::write_text(wrapped, "<r>" + text + "</r>");
    EXPECT_EQ(std::system(("xmllint --noout '" + wrapped.string() + "' 2>/dev/null").c_str()), 0);
}

TEST_F(Assignment, TheTreeHasAnEntryForEachLevel) {
    make_two_samples(kUnknown);
    mnd::htmlOutput = true;
    s().run_time_stamp = "stamp";
    analysis().run();
    samples().output_by_sample = false;
    IndLikelihood(samples(), s(), 1e-10).run();
    mnd::htmlOutput = false;
    const std::string script = mnd_test::read_text(document_file().folder() / "document.js");
    EXPECT_TRUE(contains(script,
                         "\tinsDoc(aux1, gLnk(\"R\", \"Genotype assignment\", "
                         "\"document.htm#stamp_genot_assignment\"))\n"));
    EXPECT_TRUE(contains(script,
                         "\tinsDoc(aux1, gLnk(\"R\", \"Genotype assignment (samp=group)\", "
                         "\"document.htm#stamp_gr_genot_assignment\"))\n"));
    EXPECT_TRUE(contains(document(), "<A NAME=\"stamp_genot_assignment\"></A>\n\n===="));
}

}  // namespace
