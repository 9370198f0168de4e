#include "within/sample_analyses.h"

#include <array>
#include <ctime>
#include <fstream>
#include <string>
#include <type_traits>

#include "foundation/clock_time.h"
#include "foundation/data_type.h"
#include "foundation/escape.h"
#include "model/integer_part.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "model/samples.h"
#include "results/citations.h"
#include "run/errors.h"
#include "within/allele_counts.h"
#include "within/diversity_blocks.h"
#include "within/diversity_indices.h"
#include "within/dna_distance_formulas.h"
#include "within/ewens_watterson.h"
#include "within/fu_fs.h"
#include "within/haplotype_frequency_tables.h"
#include "within/locus_tables.h"
#include "within/mismatch_analyses.h"
#include "within/mismatch_tables.h"
#include "within/neutrality_tables.h"
#include "within/replicate_progress.h"
#include "within/sample_distances.h"
#include "within/sample_network.h"
#include "within/tajima.h"

namespace mnd {

namespace {

// --- What the data types do differently

void copy_weights(PopulDNA& sample, const settings& s) {
    sample.ts_weight = s.TransitionWeight;
    sample.tv_weight = s.TranversionWeight;
    sample.del_weight = s.DeletionWeight;
}
void copy_weights(PopulRFLP& sample, const settings& s) {
    sample.del_weight = s.DeletionWeight;
}
void copy_weights(PopulMicrosat&, const settings&) {}
void copy_weights(PopulStandard&, const settings&) {}

void build_reference(PopulDNA& sample) {
    sample.build_arbitrary_haplotype();
}
void build_reference(PopulRFLP& sample) {
    sample.build_arbitrary_haplotype();
}
void build_reference(PopulMicrosat&) {}
void build_reference(PopulStandard&) {}

// Number of the method in force. Types other than DNA have two methods, generic alleles one.
int method_of(const PopulDNA&, int method) {
    return method;
}
int method_of(const PopulRFLP&, int method) {
    return method == 1 ? 1 : 0;
}
int method_of(const PopulMicrosat&, int method) {
    return method == 0 ? 0 : 1;
}
int method_of(const PopulStandard&, int) {
    return 0;
}

// A number that is none of the methods means differences. A mismatch distribution counts those as they are,
// while the distances of all methods but 0 are scaled as proportions.
template <class Sample>
int distance_of_mismatch(const Sample&, int method) {
    const bool known = method >= kPairwiseDifference && method <= kTamuraNei;
    return std::is_same_v<Sample, PopulDNA> && !known ? kPairwiseDifference : method;
}

template <class Sample>
constexpr bool kIsSequence = std::is_same_v<Sample, PopulDNA> || std::is_same_v<Sample, PopulRFLP>;
template <class Sample>
constexpr bool kIsMicrosat = std::is_same_v<Sample, PopulMicrosat>;

template <class Sample>
constexpr const char* kPolymorphicLabel =
    kIsSequence<Sample> ? "\nNo. of polymorphic sites : " : "\nNo. of polymorphic loci  : ";

// --- The driver

template <class Sample>
class SampleAnalyses {
public:
    SampleAnalyses(Sample& sample, settings& s) : sample_(sample), s_(s), out_(*s.result_stream) {}

    void run() {
        if ((s_.TaskNumber & kSampleFrameTasks) == 0) return;
        print_frame();
        for (const Step& step : steps()) {
            if (s_.stopped() || preparation_ == Preparation::kFailed) return;
            if ((s_.TaskNumber & step.task) != 0) run_step(step);
        }
    }

private:
    enum class Preparation { kNotDone, kDone, kFailed };

    struct Step {
        Task task;
        const char* heading;  // null: none
        const char* message;  // progress
        void (SampleAnalyses::*work)();
    };

    // A function, since the table names members that are declared below it.
    static const std::array<Step, 11>& steps() {
        static constexpr std::array<Step, 11> kSteps = {{
            {kTaskStandardIndices, "== Standard diversity indices : (",
             "Computing standard diversity indices...", &SampleAnalyses::standard_indices},
            {kTaskMolecularDiversity, "== Molecular diversity indices : (",
             "Computing molecular diversity indices...", &SampleAnalyses::molecular_indices},
            {kTaskMismatch, "== Mismatch distribution : (", "Computing mismatch distribution...",
             &SampleAnalyses::mismatch_distribution},
            {kTaskHaplotypeFrequencies, "== Haplotypes frequency estimation : (",
             "Estimating haplotype frequencies...", &SampleAnalyses::haplotype_frequencies},
            {kTaskLinkageDisequilibrium, "== Pairwise linkage disequilibrium : (",
             "Testing linkage disequilibrium...", &SampleAnalyses::not_held},
            {kTaskHardyWeinberg, "== Hardy-Weinberg equilibrium : (", "Testing Hardy-Weinberg equilibrium...",
             &SampleAnalyses::hardy_weinberg},
            {kTaskDistanceFiles, nullptr, "Writing distances between haplotypes...",
             &SampleAnalyses::distance_file},
            {kTaskTajima, "== Tajima's test of selective neutrality : (", "Computing Tajima's D...",
             &SampleAnalyses::tajima},
            {kTaskChakraborty, "== Chakraborty's test of selective neutrality : (",
             "Computing Chakraborty's test...", &SampleAnalyses::chakraborty},
            {kTaskEwensWatterson, "== Ewens-Watterson tests of selective neutrality : (",
             "Computing Ewens-Watterson tests...", &SampleAnalyses::ewens_watterson},
            {kTaskFuFs, "== Fu's Fs test of selective neutrality : (", "Computing Fu's Fs test...",
             &SampleAnalyses::fu_fs},
        }};
        return kSteps;
    }

    bool has_unknown_phase() const {
        return sample_.profile.GenotypicData != 0 && sample_.profile.GameticPhase == 0;
    }

    std::string name() const { return std::string(sample_.name.view()); }

    void print_frame() {
        const bool by_sample = s_.current_samples == nullptr || s_.current_samples->output_by_sample;
        sample_.print_population_anchor(2, s_, my_string(by_sample ? "pop_" : "gr_"));
        print_heading(out_, "== Sample : \t" + name());
    }

    void run_step(const Step& step) {
        settings::set_message(step.message);
        settings::print_message();
        *_AOS_ << "\n\t" << step.message;
        const std::clock_t begin = std::clock();
        if (step.heading != nullptr) print_heading(out_, step.heading + name() + ")");
        (this->*step.work)();
        *_AOS_ << " done in " << milliseconds_since(begin) << " ms\n";
    }

    // Weights, reference haplotype and comparison of the loci, once per sample.
    // Returns: false when there is nothing to compare, which the document then says
    bool prepare() {
        if (preparation_ != Preparation::kNotDone) return preparation_ == Preparation::kDone;
        copy_weights(sample_, s_);
        build_reference(sample_);
        const bool compared = sample_.evaluate_polymorphism(s_) != 0;
        preparation_ = compared ? Preparation::kDone : Preparation::kFailed;
        if (!compared) out_ << "The sample has no haplotypes to compare, it is not analysed.\n";
        return compared;
    }

    // Sets the distance of a task; a matrix of another one is released. Gamma corrects DNA
    // distances only.
    void require_distance(int method, double gamma) {
        method = method_of(sample_, method);
        if constexpr (!std::is_same_v<Sample, PopulDNA>) gamma = 0.0;
        if (sample_.distance_method != method || sample_.gamma_a != gamma) sample_.dist_mat.reset();
        sample_.distance_method = method;
        sample_.gamma_a = gamma;
    }

    void standard_indices() {
        if (s_.RecessiveAllelesEM != 0) {
            out_ << "Most standard diversity indices cannot be computed \n"
                 << "for recessive data\n\n";
            return;
        }
        if (!prepare()) return;
        sample_.calc_sample_homozygosity();
        sample_.calc_sample_sd_heterozygosity();
        print_standard_indices(out_, sample_, kPolymorphicLabel<Sample>);
        if (sample_.profile.DataType != FREQUENCY) print_loci();
        out_ << '\n';
        cite_standard_indices(out_, kIsMicrosat<Sample>);
    }

    void print_loci() {
        if constexpr (kIsMicrosat<Sample>) count_alleles_of_pass();
        if (sample_.profile.GenotypicData != 0) {
            sample_.OutputAllelelNumberAndHetPerLocusDipl(s_);
        } else {
            sample_.OutputAllelelNumberAndHetPerLocusHapl(s_);
        }
        if constexpr (kIsMicrosat<Sample>) {
            sample_.computeMeanAlleleSizes();
            print_garza_williamson(out_, sample_);
        }
    }

    // The modified index of microsatellites looks at all samples: the first one counts them.
    void count_alleles_of_pass() {
        const Samples* pass = s_.current_samples;
        if (pass == nullptr || pass->populations.count == 0) return;
        if (pass->populations[0] == &sample_) count_global_alleles(*pass);
    }

    void molecular_indices() {
        if (s_.RecessiveAllelesEM != 0) {
            out_ << "Molecular diversity indices cannot be computed \n"
                 << "for recessive data\n";
            return;
        }
        if (!prepare()) return;
        require_distance(s_.DistanceMethod, s_.GammaAValue);
        const bool has_content = sample_.profile.DataType != FREQUENCY;
        const bool computed = has_content && sample_.compute_molecular_diversity(s_) != 0;
        if constexpr (std::is_same_v<Sample, PopulDNA>) sample_.comp_nucl_freq();
        print_molecular_basis(out_, sample_);
        print_phase_caution(out_, sample_);
        if (!has_content) {
            print_no_distances(out_);
        } else if (!print_distances(computed)) {
            return;
        }
        theta_estimators();
    }

    // Returns: false when there are none, and the task ends
    bool print_distances(bool computed) {
        print_method(out_, sample_, s_);
        if (!computed) {
            out_ << "\nThe distances between the haplotypes could not be computed\n";
            return false;
        }
        print_pairwise_differences(out_, sample_, kIsSequence<Sample>);
        if (s_.PrintHaplDistMat != 0 || s_.PrintPopDistMat != 0) print_haplotype_distances(out_, sample_);
        if (s_.PrintMinSpannNetworkPop != 0) print_sample_network(out_, sample_);
        out_ << '\n';
        cite_molecular_diversity(out_, sample_);
        return true;
    }

    void theta_estimators() {
        if constexpr (kIsMicrosat<Sample>) out_ << "\nInfinite allele model:\n\n";
        sample_.calc_theta_Hom();
        print_theta_Hom(out_, sample_);
        if constexpr (!kIsMicrosat<Sample>) print_theta_k(out_, sample_, calc_theta_k());
        if constexpr (kIsSequence<Sample>) {
            sample_.calc_theta_S(integer_part(sample_.sample_size), sample_.nb_subst_sites);
            print_theta_S(out_, sample_);
            sample_.calc_theta_pi(sample_.mean_pairwise_diff);
            print_theta_pi(out_, sample_);
        }
        out_ << '\n';
        cite_theta(out_, sample_);
    }

    // Returns: false when it was not computed, for which print_theta_k has the words
    bool calc_theta_k() {
        const int n = integer_part(sample_.sample_size);
        const int k = sample_.nb_hapl;
        if (k < 1 || k >= n) return false;
        if (n >= kThetaKCopyLimit || k >= kThetaKAlleleLimit) {
            *_AOS_ << "\t\t\tToo many aleles or gene copies in sample to compute Theta(k)\n";
            return false;
        }
        if (!PopGenetics::ensure_B(n, k)) {
            *_AOS_ << "\t\t\tFile 500k100.bnb not found... skipping task !\n";
            return false;
        }
        const ThetaK theta = theta_from_number_of_alleles(k, n, PopGenetics::BMat);
        sample_.theta_k = theta.theta;
        sample_.theta_k_lower = theta.lower;
        sample_.theta_k_upper = theta.upper;
        return true;
    }

    // Haplotypes that are known are counted.
    void haplotype_frequencies() {
        if (!has_unknown_phase()) {
            print_counted_haplotypes(out_, sample_, s_.FrequencyThreshold);
            return;
        }
        if (s_.has_em_task == 0) {
            out_ << "No frequencies were asked for: the settings select neither haplotypes nor alleles\n";
            return;
        }
        if (s_.GibbsInferGamPhase != 0) not_held();
        if (!s_.stopped()) sample_.comp_gam_phase_EM(s_);
    }

    // The checks skip recessive data, a pass on groups brings the task back.
    void hardy_weinberg() {
        if (s_.RecessiveAllelesEM != 0) {
            out_ << "Hardy-Weinberg equilibrium cannot be tested \n"
                 << "for recessive data\n";
            return;
        }
        sample_.make_all_hw(*s_.result_stream, sample_.phen_db, s_.MarkovChainStepsHW, s_);
        References(out_, Citation::Guo_Thompson_1992);
    }

    // Only haplotypes with content have distances.
    void distance_file() {
        if (!prepare()) return;
        if (sample_.profile.DataType == FREQUENCY || sample_.hapl_list.count == 0) {
            *_AOS_ << "\n\t\tNo haplotype data in the sample, no distance file is written\n";
            return;
        }
        sample_.dist_mat.reset();
        write_distance_file(sample_, s_);
    }

    void mismatch_distribution() {
        if (has_unknown_phase()) {
            out_ << "Mismatch distribution cannot be computed \n"
                 << "in case of genotypic data with unknown gametic phase\n\n"
                 << "We hope to change it in a future release...\n";
            return;
        }
        if (!prepare()) return;
        if (sample_.profile.DataType == FREQUENCY) {
            print_no_distances(out_);
            return;
        }
        if (!compute_mismatch()) return;
        bool sudden = false;
        bool spatial = false;
        if constexpr (kIsSequence<Sample>) {
            sudden = s_.MismatchDemogExp;
            spatial = s_.MismatchSpatialExp;
            if (!fit_expansions(sample_, s_, *s_.result_stream)) return;
        } else {
            print_mismatch_distribution(out_, sample_);
        }
        cite_mismatch(out_, sudden, spatial);
    }

    // Returns: false, which the document says, when there are no distances
    bool compute_mismatch() {
        require_distance(distance_of_mismatch(sample_, s_.MismatchDistanceMethod), s_.MismatchGammaAValue);
        // The distances are numbers of differences, also those of methods that give proportions:
        // another matrix than that of other tasks.
        sample_.dist_mat.reset();
        std::fstream unopened;
        const bool computed = sample_.compute_distance_matrix(nullptr, &s_, 1) != 0 &&
                              sample_.compute_mm_distr(unopened, s_) != 0;
        if (sample_.distance_method != 0) sample_.dist_mat.reset();
        if (!computed) out_ << "\nThe distances between the haplotypes could not be computed\n";
        return computed;
    }

    // Whether there are haplotypes to test; if not, the document says why.
    bool has_known_haplotypes(const char* impossible) {
        if (!has_unknown_phase()) return prepare();
        out_ << impossible << "in case of genotypic data with unknown gametic phase\n\n";
        return false;
    }

    bool has_sequences(const char* impossible) {
        if (!has_known_haplotypes(impossible)) return false;
        if (!kIsSequence<Sample>) out_ << impossible << "without DNA sequences or RFLP haplotypes\n\n";
        return kIsSequence<Sample>;
    }

    void tajima() {
        if (!has_sequences("Tajima's test cannot be computed \n")) {
            kSequenceTestProgress.skip(s_.NumSimulFuTest);
            return;
        }
        if constexpr (kIsSequence<Sample>) tajima_test(sample_, s_, out_);
        out_ << '\n';
        cite(out_, {Citation::Tajima_1989});
    }

    void fu_fs() {
        if (!has_sequences("Fu's Fs test cannot be computed \n")) {
            kSequenceTestProgress.skip(s_.NumSimulFuTest);
            return;
        }
        if constexpr (kIsSequence<Sample>) fu_test(sample_, s_, out_);
        out_ << '\n';
        cite(out_, {Citation::Fu_1997});
    }

    // Microsatellites do not evolve by the infinite-allele model. The checks skip them, a pass on
    // groups brings these two tasks back.
    void chakraborty() {
        if (!has_known_haplotypes("Chakraborty's test cannot be computed \n")) return;
        if constexpr (kIsMicrosat<Sample>) {
            print_no_infinite_alleles(out_, kChakrabortyWarning);
        } else {
            sample_.Chakraborty_neutr_test(out_);
            out_ << '\n';
            cite(out_, {Citation::Chakraborty_1990, Citation::Ewens_1972});
        }
    }

    void ewens_watterson() {
        if (!has_known_haplotypes("Ewens-Watterson tests cannot be computed \n")) {
            kAlleleTestProgress.skip(s_.NumIterationsNeutralityTests);
            return;
        }
        if constexpr (kIsMicrosat<Sample>) {
            kAlleleTestProgress.skip(s_.NumIterationsNeutralityTests);
            print_no_infinite_alleles(out_, kEwensWattersonWarning);
        } else {
            MY_TISArrayAsVector<AHaplFreq> alleles(sample_.hapl_list.count + 1, 1);
            list_of_counts(sample_, alleles);
            if (std::is_same_v<Sample, PopulStandard> && alleles.count < 2) {
                kAlleleTestProgress.skip(s_.NumIterationsNeutralityTests);
                print_single_haplotype(out_, kEwensWattersonWarning);
                write_ewens_watterson_row(sample_, AlleleCountFault::kOneAllele);
            } else {
                sample_.EW_neutrality_tests(s_, out_, alleles);
            }
            out_ << '\n';
            cite(out_, {Citation::Ewens_1972, Citation::Watterson_1978, Citation::Slatkin_1994,
                        Citation::Slatkin_1996});
        }
    }

    // A result that was asked for and is not there must not go unnoticed.
    void not_held() {
        constexpr const char* kText = "Not computed: this version does not hold the analysis.\n";
        out_ << kText;
        *_AOS_ << ' ' << kText;
    }

    Sample& sample_;
    settings& s_;
    std::ostream& out_;
    Preparation preparation_ = Preparation::kNotDone;
};

}  // namespace

void print_heading(std::ostream& out, const std::string& heading) {
    const std::string rule(heading.size(), '=');
    out << '\n' << rule << '\n' << escape_text(heading) << '\n' << rule << "\n\n";
}

void run_sample_analyses(PopulDNA& sample, settings& s) {
    SampleAnalyses(sample, s).run();
}
void run_sample_analyses(PopulRFLP& sample, settings& s) {
    SampleAnalyses(sample, s).run();
}
void run_sample_analyses(PopulMicrosat& sample, settings& s) {
    SampleAnalyses(sample, s).run();
}
void run_sample_analyses(PopulStandard& sample, settings& s) {
    SampleAnalyses(sample, s).run();
}

void PopulDNA::test_methods(settings& s) {
    run_sample_analyses(*this, s);
}
void PopulRFLP::test_methods(settings& s) {
    run_sample_analyses(*this, s);
}
void PopulMicrosat::test_methods(settings& s) {
    run_sample_analyses(*this, s);
}
void PopulStandard::test_methods(settings& s) {
    run_sample_analyses(*this, s);
}

}  // namespace mnd
