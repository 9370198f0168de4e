// Checks of the settings against the data, before any analysis.
//
// What can't be done is skipped: its task bit is cleared and a message goes to the log, so
// that the task set afterwards holds the work that really remains.
#include <ctime>
#include <sstream>

#include "foundation/data_type.h"
#include "run/errors.h"
#include "run/missing_analysis.h"
#include "run/project.h"
#include "run/structure_analyses.h"
#include "run/tasks.h"

namespace mnd {

namespace {

constexpr const char* kReporter = "Project::make_run_possible()";

// Fewest steps before a chain is sampled, and what a smaller wish is replaced by.
constexpr long kFewestDememorisationSteps = 500;
constexpr long kDememorisationSteps = 1000;

bool has_task(const settings& s, long tasks) {
    return (s.TaskNumber & tasks) != 0;
}
void skip_task(settings& s, long tasks) {
    s.TaskNumber &= ~tasks;
}

void skip_hardy_weinberg_of_haplotypes(settings& s, const ProfileSettings& profile) {
    if (profile.GenotypicData != 0 || !has_task(s, kTaskHardyWeinberg)) return;
    *_AOS_ << "     !!!Hardy-Weinberg disequilibrium test is not possible on Haplotypic data,\n"
           << "        this task will be skipped." << std::endl;
    skip_task(s, kTaskHardyWeinberg);
}

void skip_assignment_of_haplotypes(settings& s, const Samples& samples) {
    if (!has_task(s, kTaskAssignment) || samples.GenotypicData != 0) return;
    *_AOS_ << "   !!!The computation of the likelihood of all individuals in each\n"
           << "      population is only possible for Genotypic data \n"
           << "      skipping the task...\n";
    skip_task(s, kTaskAssignment);
}

// Settles where the distances between haplotypes come from. A matrix counts as given when the
// project file defines one.
void settle_distance_matrix(settings& s, const ProfileSettings& profile, bool has_given_matrix) {
    if (s.ComputeConventionalFST != 0) {
        s.ComputeDistanceMatrixAMOVA = 1;
    } else if (s.ComputeDistanceMatrixAMOVA == 0 && !has_given_matrix) {
        *_AOS_ << "    !!!No matrix was specified in input file, Mendrake will compute it from the data\n";
        s.ComputeDistanceMatrixAMOVA = 1;
    }
    if (profile.DataType != FREQUENCY) return;
    if (!has_given_matrix && s.ComputeConventionalFST == 0) {
        *_AOS_ << "   !!!No molecular information is available for testing genetic structure,\n"
               << "      haplotype frequencies will be used, and conventional Fst will be computed\n";
        s.ComputeDistanceMatrixAMOVA = 1;
        s.ComputeConventionalFST = 1;
    }
    if (s.ComputeDistanceMatrixAMOVA != 0) s.ComputeConventionalFST = 1;
}

void skip_amova_without_structure(Project& project) {
    settings& s = project.the_settings;
    if (!wants_amova(s) || project.IsAmovaStructure()) return;
    skip_task(s, kTaskAmova);
    const auto say = [](std::ostream& out) {
        out << "  An AMOVA analysis was selected and no Genetic structure\n"
            << "  is defined, AMOVA task is skipped." << std::endl;
    };
    say(*_AOS_);
    if (s.result_stream == nullptr) return;
    say(*s.result_stream);
}

// A wanted distance that the data do not have gives way to another one, which must not pass unseen.
void warn_of_unknown_distances(settings& s, const ProfileSettings& profile) {
    if (profile.DataType == FREQUENCY) return;
    struct Wanted {
        const char* key;
        int method;
        bool used;
    };
    const bool between = has_task(s, kTaskAmova | kTaskPairwiseFst) && s.ComputeDistanceMatrixAMOVA != 0 &&
                         s.ComputeConventionalFST == 0;
    const Wanted keys[] = {
        {"DistanceMethod", s.DistanceMethod, has_task(s, kTaskMolecularDiversity | kTaskDistanceFiles)},
        {"MismatchDistanceMethod", s.MismatchDistanceMethod, has_task(s, kTaskMismatch)},
        {"DistanceMethodAMOVA", s.DistanceMethodAMOVA, between}};
    for (const Wanted& wanted : keys) {
        std::ostringstream name;
        s.print_distance_method(name, wanted.method);
        if (!wanted.used || !name.str().empty()) continue;
        *_AOS_ << "Warning: the setting " << wanted.key << '=' << wanted.method
               << " is none of the distances of these data, another one is used\n";
    }
}

void correct_dememorisation(settings& s) {
    if (s.MarkovChainDememorisationStepsLD < kFewestDememorisationSteps) {
        *_AOS_ << " Too few steps for dememorization (" << s.MarkovChainDememorisationStepsLD
               << " ) in linkage disequilibrium test, setting it to 1000...\n";
        s.MarkovChainDememorisationStepsLD = kDememorisationSteps;
    }
    if (s.MarkovChainDememorisationStepsHW < kFewestDememorisationSteps) {
        // Kept on purpose: shows the value of the linkage test.
        // Test: Feasibility.HardyWeinbergMessageShowsTheLinkageValue
        *_AOS_ << " Too few steps for dememorization (" << s.MarkovChainDememorisationStepsLD
               << " ) in Hardy-Weinberg disequilibrium test, setting it to 1000...\n";
        s.MarkovChainDememorisationStepsHW = kDememorisationSteps;
    }
}

void skip_hardy_weinberg_of_recessive_data(settings& s) {
    if (!has_task(s, kTaskHardyWeinberg) || s.RecessiveAllelesEM == 0) return;
    *_AOS_ << "   !!!Hardy-Weinberg disequilibrium test is not possible with recessive data,\n"
           << "      skipping task...\n";
    skip_task(s, kTaskHardyWeinberg);
}

// A correlation with a matrix of genetic distances needs the comparison of all pairs of samples;
// one whose matrices are all given does not.
void add_pairs_for_correlation(settings& s, const Mantel& mantel) {
    if (!has_task(s, kTaskMantel) || has_task(s, kTaskPairwiseFst)) return;
    const my_string& given_matrix = mantel.YTypes.back();
    if (mantel.YMatrixType != given_matrix) s.TaskNumber |= kTaskPairwiseFst;
}

void drop_prints_of_unknown_haplotypes(settings& s) {
    s.PrintMinSpannNetworkPop = 0;
    s.PrintMinSpannNetworkGlob = 0;
    s.PrintDistanceMatrix = 0;
    s.PrintHaplDistMat = 0;
    s.PrintPopDistMat = 0;
}

}  // namespace

bool Project::IsAmovaStructure() {
    int faults = 0;
    const auto warn_if = [&faults](bool is_fault, int code) {
        if (!is_fault) return;
        E.error(Warning, "Project::IsAmovaStructure()", code);
        ++faults;
    };
    const int groups = structure->NbGroups;
    warn_if(structure->NbSamples == 0, kNoSamplesHaveBeenDefined);
    warn_if(groups == 0, kNoGroupsHaveBeenDefined);
    warn_if(groups == structure->NbSamples && groups != 1, kOnePopulationPerGroup);
    return faults == 0;
}

void Project::build_haplotype_vectors() {
    if (haplotype_vectors_built) return;
    *_AOS_ << "\t\tBuilding vectors of alleles...";
    const std::clock_t begin = std::clock();
    constexpr double kWeight = 0.1;  // only tells alleles of the data from the blank, which has none
    for (int i = 0; i < haplo_db.list.count; ++i)
        haplo_db.list[i]->build_haplovect(&allele_db, LocusSeparator, 0, kWeight);
    *_AOS_ << "\n\t\tdone in " << std::clock() - begin << " ms\n";
    haplotype_vectors_built = true;
}

void Project::convert_phenotypes() {
    if (phenotypes_converted) return;
    *_AOS_ << "\t\tProcessing phenotypes into pseudo-haplotypes...";
    // A second pass counts the gene copies anew.
    for (HaploDef* definition : haplo_db.list)
        definition->count = 0;
    samples->phen_to_gam(&haplo_db, this, &the_settings);
    phenotypes_converted = true;
}

// Allele vectors of the phenotypes, which share the alleles of the project.
void Project::build_phenotype_vectors() {
    if (samples->GenotypicData == 0) return;
    *_AOS_ << "\t\tBuilding vectors of alleles...";
    const std::clock_t begin = std::clock();
    samples->build_all_vectors(LocusSeparator);
    *_AOS_ << "\n\t\tdone in " << std::clock() - begin << " ms\n";
}

// Genotypes whose haplotypes are known, or are wanted all the same, become gametes.
void Project::prepare_gametes() {
    const settings& s = the_settings;
    if (GenotypicData == 0) return;
    const bool unknown_phase_needs_them =
        s.RecessiveAllelesEM == 0 &&
        (has_task(s, kTaskStandardIndices | kTaskMolecularDiversity) || s.DetectSelectedLoci != 0);
    if (GameticPhase == 0 && !unknown_phase_needs_them) return;
    convert_phenotypes();
    build_haplotype_vectors();
}

bool Project::refuse_recessive_with_known_phase() {
    if (samples->GenotypicData == 0 || RecessiveData == 0 || GameticPhase == 0) return false;
    E.error(Error, kReporter, kKnownPhaseWithRecessiveData);
    failure_reason = E.messages[kKnownPhaseWithRecessiveData];
    return true;
}

// What the comparison of samples needs.
// Returns: false when it is impossible with these data
bool Project::check_structure_tasks() {
    const settings& s = the_settings;
    const bool wanted = has_task(s, kTaskAmova | kTaskPairwiseFst) ||
                        (DataType == FREQUENCY && s.EliminateRedondHaplodefs != 0);
    if (!wanted) return true;
    if (refuse_recessive_with_known_phase()) return false;
    settle_distance_matrix(the_settings, *this, dist_mat.MatrixSize > 0);
    if (s.ComputeDistanceMatrixAMOVA == 1 && GenotypicData == 0 && DataType != DNA && DataType != RFLP)
        build_haplotype_vectors();
    return true;
}

// Haplotypes at distance 0 from one another, which the settings want to be told or merged.
void Project::find_redundant_haplotypes() {
    const settings& s = the_settings;
    const bool wanted = s.EliminateRedondHaplodefs != 0 || s.InferHaplotypeDefinitionFromDistanceMatrix != 0;
    if (!wanted || (GenotypicData != 0 && GameticPhase == 0)) return;
    eliminate_redond_haplodef();
    if (s.ComputeDistanceMatrixAMOVA != 0) dist_mat.reset();
}

bool Project::make_run_possible() {
    settings& s = the_settings;
    *_AOS_ << "  Checking all selected options...";
    skip_hardy_weinberg_of_haplotypes(s, *this);
    samples->init_all_pointers(&allele_db);
    if (samples->populations.count == 0) {
        E.error(Error, kReporter, kNoSamplesHaveBeenDefined);
        failure_reason = E.messages[kNoSamplesHaveBeenDefined];
        return false;
    }
    samples->populations[0]->make_all_blanks(LocusSeparator);
    build_phenotype_vectors();
    if (GenotypicData == 0) build_haplotype_vectors();
    if (!samples->verify_data()) {
        failure_reason = "the data of a sample are not valid";
        return false;
    }
    prepare_gametes();
    if (has_task(s, kTaskExactDifferentiation) && refuse_recessive_with_known_phase()) return false;
    skip_assignment_of_haplotypes(s, *samples);
    if (!check_structure_tasks()) return false;
    skip_amova_without_structure(*this);
    *_AOS_ << "  done!"
           << "  check selected settings...";
    correct_dememorisation(s);
    *_AOS_ << "  done!" << std::endl;
    warn_of_unknown_distances(s, *this);
    if (DataType == FREQUENCY) s.InferHaplotypeDefinitionFromDistanceMatrix = 0;
    skip_hardy_weinberg_of_recessive_data(s);
    find_redundant_haplotypes();
    // Microsatellites are silently left out of the tests of neutral sampling.
    if (DataType == MICROSAT) skip_task(s, kTaskEwensWatterson | kTaskChakraborty);
    add_pairs_for_correlation(s, mantel);
    if (GenotypicData != 0 && GameticPhase == 0) drop_prints_of_unknown_haplotypes(s);
    return true;
}

}  // namespace mnd
