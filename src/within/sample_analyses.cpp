#include "within/sample_analyses.h"

#include <array>
#include <cstring>
#include <ctime>

#include "foundation/clock_time.h"
#include "foundation/data_type.h"
#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "model/samples.h"
#include "run/errors.h"
#include "within/diversity_blocks.h"
#include "within/diversity_indices.h"
#include "within/locus_diversity.h"
#include "within/sample_distances.h"

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

// Gamma corrects DNA distances only; generic alleles have a single method.
void set_method(PopulDNA& sample, int method, double gamma) {
    sample.distance_method = method;
    sample.gamma_a = gamma;
}
void set_method(PopGenetics& sample, int method, double) {
    sample.distance_method =
        sample.profile.DataType == STANDARD || sample.profile.DataType == FREQUENCY ? 0 : method;
    sample.gamma_a = 0.0;
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
            if (s_.stopped()) return;
            if ((s_.TaskNumber & step.task) != 0) run_step(step);
        }
    }

private:
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
             "Estimating haplotype frequencies...", &SampleAnalyses::not_held},
            {kTaskLinkageDisequilibrium, "== Pairwise linkage disequilibrium : (",
             "Testing linkage disequilibrium...", &SampleAnalyses::not_held},
            {kTaskHardyWeinberg, "== Hardy-Weinberg equilibrium : (", "Testing Hardy-Weinberg equilibrium...",
             &SampleAnalyses::not_held},
            {kTaskDistanceFiles, nullptr, "Writing distances between haplotypes...",
             &SampleAnalyses::distance_file},
            {kTaskTajima, "== Tajima's test of selective neutrality : (", "Computing Tajima's test...",
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

    std::string escaped_name() const { return escape_text(sample_.name.view()); }

    void print_frame() {
        const bool by_sample = s_.current_samples == nullptr || s_.current_samples->output_by_sample;
        sample_.print_population_anchor(2, s_, my_string(by_sample ? "pop_" : "gr_"));
        print_heading(out_, "== Sample : \t" + escaped_name());
    }

    void run_step(const Step& step) {
        settings::set_message(step.message);
        settings::print_message();
        *_AOS_ << "\n\t" << step.message;
        const std::clock_t begin = std::clock();
        if (step.heading != nullptr) print_heading(out_, step.heading + escaped_name() + ")");
        (this->*step.work)();
        *_AOS_ << " done in " << milliseconds_since(begin) << " ms\n";
    }

    // Weights, reference haplotype and comparison of the loci, once per sample.
    void prepare() {
        if (prepared_) return;
        prepared_ = true;
        copy_weights(sample_, s_);
        build_reference(sample_);
        sample_.evaluate_polymorphism(s_);
    }

    // Sets the distance of a task; a matrix of another one is released.
    void require_distance(int method, double gamma) {
        const int old_method = sample_.distance_method;
        const double old_gamma = sample_.gamma_a;
        set_method(sample_, method, gamma);
        if (sample_.distance_method != old_method || sample_.gamma_a != old_gamma) sample_.dist_mat.reset();
    }

    void standard_indices() {
        if (s_.RecessiveAllelesEM != 0) {
            out_ << "Most standard diversity indices cannot be computed \n"
                 << "for recessive data\n\n";
            return;
        }
        prepare();
        sample_.calc_sample_homozygosity();
        sample_.calc_sample_sd_heterozygosity();
        print_standard_indices(out_, sample_, kPolymorphicLabel<Sample>);
        if (sample_.profile.DataType != FREQUENCY) print_loci();
        out_ << '\n';
        cite_standard_indices(out_, kIsMicrosat<Sample>);
    }

    void print_loci() {
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

    void molecular_indices() {
        if (s_.RecessiveAllelesEM != 0) {
            out_ << "Molecular diversity indices cannot be computed \n"
                 << "for recessive data\n";
            return;
        }
        prepare();
        require_distance(s_.DistanceMethod, s_.GammaAValue);
        const bool computed = sample_.compute_molecular_diversity(s_) != 0;
        if constexpr (std::is_same_v<Sample, PopulDNA>) sample_.comp_nucl_freq();
        print_molecular_basis(out_, sample_);
        print_phase_caution(out_, sample_);
        print_method(out_, sample_, s_);
        if (computed) {
            print_pairwise_differences(out_, sample_, kIsSequence<Sample>);
            if (s_.PrintHaplDistMat != 0 || s_.PrintPopDistMat != 0) print_haplotype_distances(out_, sample_);
        } else {
            out_ << "\nThe distances between the haplotypes could not be computed\n";
        }
        out_ << '\n';
        cite_molecular_diversity(out_, sample_);
        theta_estimators(computed);
    }

    void theta_estimators(bool has_distances) {
        if constexpr (kIsMicrosat<Sample>) out_ << "\nInfinite allele model:\n\n";
        sample_.calc_theta_Hom();
        print_theta_Hom(out_, sample_);
        if constexpr (!kIsMicrosat<Sample>) print_theta_k(out_, sample_, calc_theta_k());
        if constexpr (kIsSequence<Sample>) {
            sample_.calc_theta_S(static_cast<int>(sample_.sample_size), sample_.nb_subst_sites);
            print_theta_S(out_, sample_);
            if (has_distances) {
                sample_.calc_theta_pi(sample_.mean_pairwise_diff);
                print_theta_pi(out_, sample_);
            }
        }
        out_ << '\n';
        cite_theta(out_, sample_);
    }

    // Returns: false when the table of B numbers can't serve this sample
    bool calc_theta_k() {
        const int n = static_cast<int>(sample_.sample_size);
        const int k = sample_.nb_hapl;
        if (k < 1 || k >= n) return false;
        if (!PopGenetics::ensure_B(n, k)) {
            *_AOS_ << "\t\t\tToo many aleles or gene copies in sample to compute Theta(k)\n";
            return false;
        }
        const ThetaK theta = theta_from_number_of_alleles(k, n, PopGenetics::BMat);
        sample_.theta_k = theta.theta;
        sample_.theta_k_lower = theta.lower;
        sample_.theta_k_upper = theta.upper;
        return true;
    }

    void distance_file() {
        prepare();
        sample_.dist_mat.reset();
        write_distance_file(sample_, s_);
    }

    void mismatch_distribution() {
        if (has_unknown_phase()) {
            out_ << "Mismatch distribution cannot be computed \n"
                 << "in case of genotypic data with unknown gametic phase\n\n"
                 << "We hope to change it in a future release...\n";
        } else {
            not_held();
        }
    }

    void tajima() { neutrality_test("Tajima's test cannot be computed \n"); }
    void chakraborty() { neutrality_test("Chakraborty's test cannot be computed \n"); }
    void ewens_watterson() { neutrality_test("Ewens-Watterson tests cannot be computed \n"); }
    void fu_fs() { neutrality_test("Fu's Fs test cannot be computed \n"); }

    void neutrality_test(const char* impossible) {
        if (has_unknown_phase()) {
            out_ << impossible << "in case of genotypic data with unknown gametic phase\n\n";
        } else {
            not_held();
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
    bool prepared_ = false;
};

}  // namespace

void print_heading(std::ostream& out, const std::string& heading) {
    const std::string rule(heading.size(), '=');
    out << '\n' << rule << '\n' << heading << '\n' << rule << "\n\n";
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
