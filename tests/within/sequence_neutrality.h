// What the tests of neutrality on sequences have in common: their samples, and replicates made the
// long way.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <type_traits>

#include "foundation/random.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "simulation/mutation_model.h"
#include "support/captured_reports.h"
#include "support/seeded_stream.h"
#include "within/analysed_sample.h"

namespace mnd_test {

class SequenceNeutrality : public SeededStream {
protected:
    AnalysedSamples<mnd::PopulDNA> a{haplotypic(mnd::DNA, 0)};
    AnalysedSamples<mnd::PopulRFLP> rflp{haplotypic(mnd::RFLP, 0)};

    // A sample whose loci have been compared.
    template <class Sample>
    static Sample& compared(AnalysedSamples<Sample>& samples, const std::string& lines) {
        Sample& sample = samples.add("Lake", lines);
        samples.prepare();
        sample.evaluate_polymorphism(samples.s);
        return sample;
    }

    // 9 copies of 10 restriction sites, 5 of which vary.
    mnd::PopulRFLP& nine() {
        return compared(rflp,
                        "h1 3 0000011010\n"
                        "h2 2 0110011010\n"
                        "h3 1 1111011010\n"
                        "h4 1 0011111010\n"
                        "h5 2 0110011011\n");
    }

    // 8 copies of 16 sites. Two have too much missing data, one is a gap in all copies, one an indel.
    static constexpr int kSites = 16;
    static constexpr int kUsableSites = 13;
    mnd::PopulDNA& gappy() {
        return compared(a,
                        "h1 3 AACC?GGAA-TTACGT\n"
                        "h2 2 AATC?GGAA-TTACGA\n"
                        "h3 1 AACCTGGAA-TCAC?T\n"
                        "h4 1 GACCTGGAA-T-ACGT\n"
                        "h5 1 AACC?GGCA-TTACGT\n");
    }

    // What a test writes and takes.
    struct Run {
        std::string text;
        std::uint64_t draws;
        double work_done;
    };
    // Runs a test from the start of the stream.
    //   test   is called with the sample, the settings and a stream
    template <class Sample, class Test>
    static Run run(Test test, Sample& sample, mnd::settings& s, int num_sim) {
        s.NumSimulFuTest = num_sim;
        mnd::settings::global_work_done = 0.0;
        seed();
        mnd::reset_draws_taken();
        std::ostringstream out;
        test(sample, s, out);
        return {out.str(), mnd::draws_taken(), mnd::settings::global_work_done};
    }

    // Haplotypes without a usable site have no distances, and get a text. Returns: the sample
    template <class Test>
    mnd::PopulRFLP& expect_no_distances(Test test) {
        const CapturedReports reports;
        mnd::PopulRFLP& sample = compared(rflp, "h1 2 ??\nh2 3 ??\n");
        const Run refused = run(test, sample, rflp.s, 100);
        EXPECT_EQ(
            refused.text,
            "The test is impossible because the distances between the haplotypes could not be computed\n");
        EXPECT_EQ(refused.draws, 0U);
        EXPECT_EQ(refused.work_done, 2.0);  // as planned
        EXPECT_FALSE(reports.all().empty());
        return sample;
    }

    // Each replicate of a test as a whole sample: sequences made, read, compared.
    //   sites   length of the sequences
    //   take    is called with each
    template <class Sample, class Take>
    static void whole_samples(Sample& sample, mnd::settings& s, double theta, int sites, int num_sim,
                              Take take) {
        const mnd::Mut_Type type =
            std::is_same_v<Sample, mnd::PopulDNA> ? mnd::kNucleotideMutation : mnd::kBinaryMutation;
        sample.allocate_tree(static_cast<int>(sample.sample_size));
        for (int i = 0; i < num_sim; ++i) {
            sample.simulate_sample(theta / 2.0, sites, type, 0.0, 1.0, 1.0, 0.33);
            Sample replicate;
            mnd::Haplo_DB definitions;
            replicate.read_simulated_sample(sample.tree.make(), definitions, type);
            replicate.check_data();
            replicate.evaluate_polymorphism(s);
            replicate.compute_distance_matrix(nullptr, &s, 0);
            replicate.compute_molecular_diversity(s);
            take(replicate);
        }
    }

    // Other data than sequences get a text in place of a test.
    //   name   as in the text, with the heading behind it
    template <class Sample>
    static void expect_no_sequences(int data_type, const std::string& lines, long task,
                                    const std::string& name) {
        AnalysedSamples<Sample> other(haplotypic(data_type, ' '));
        other.add("Lake", lines);
        other.prepare();
        other.s.NumSimulFuTest = 100;
        mnd::settings::global_work_done = 0.0;
        mnd::reset_draws_taken();
        const std::string heading = "== " + name + " of selective neutrality : (Lake)";
        EXPECT_TRUE(contains(other.analyse(task), heading + '\n' + std::string(heading.size(), '=') + "\n\n" +
                                                      name +
                                                      " cannot be computed \n"
                                                      "without DNA sequences or RFLP haplotypes\n\n"));
        EXPECT_EQ(mnd::draws_taken(), 0U);
        EXPECT_EQ(mnd::settings::global_work_done, 2.0);  // as planned
    }
    static void expect_sequences_are_needed(long task, const std::string& name) {
        expect_no_sequences<mnd::PopulStandard>(mnd::STANDARD, "h1 2 x\nh2 1 y\n", task, name);
        expect_no_sequences<mnd::PopulStandard>(mnd::FREQUENCY, "h1 2\nh2 1\n", task, name);
        expect_no_sequences<mnd::PopulMicrosat>(mnd::MICROSAT, "h1 2 10\nh2 1 11\n", task, name);
    }
};

}  // namespace mnd_test
