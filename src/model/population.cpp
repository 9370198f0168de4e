#include "model/population.h"

#include <algorithm>

#include "input/dist_mat.h"
#include "model/text_tokens.h"
#include "results/tree_script.h"
#include "run/errors.h"
#include "run/settings.h"
#include "run/tasks.h"

namespace mnd {

namespace {

// Working haplotypes below this count do not outlive a sample's analyses.
constexpr double kCleaningThreshold = 2.0;

// Steps of the estimations and chains that make one unit of the progress display.
constexpr double kEmUnits = 100.0;
constexpr double kLdStepsPerUnit = 2000.0;
constexpr double kHwStepsPerUnit = 1000.0;
constexpr double kFstPermutationsPerUnit = 100.0;
constexpr double kNeutralityReplicatesPerUnit = 100.0;
constexpr double kSequenceTestReplicatesPerUnit = 50.0;

bool has_task(const settings& s, long task) {
    return (s.TaskNumber & task) != 0;
}

double em_work(const settings& s, double loci) {
    double work = s.InitialConditionsEM * loci;
    work += static_cast<double>(s.NumBootstrapReplicatesEM) * s.NumInitCondBootstrapEM * loci * kEmUnits;
    if (s.EMUseZipper != 0) work += s.EMNumZipRandOrders * loci * kEmUnits;
    if (s.GibbsInferGamPhase != 0) {
        work += (s.GibbsBurnIn + static_cast<double>(s.GibbsSamplingInterval) * s.GibbsNumSamples) / kEmUnits;
    }
    return work;
}

double ld_work(const settings& s, double loci, bool with_haplotypes) {
    const double pairs = loci * (loci - 1.0) / 2.0;
    const double steps = static_cast<double>(s.MarkovChainStepsLD);
    if (with_haplotypes) return pairs * steps / kLdStepsPerUnit;
    return pairs * kEmUnits * (steps + 1.0) * s.InitialCondEMLD;
}

// Both kinds of the test want the chains per locus and the one of the whole haplotype.
double hw_work(const settings& s, double loci) {
    const double units = static_cast<double>(s.MarkovChainStepsHW) / kHwStepsPerUnit;
    return s.TypeOfTestHW == 1 ? units : units + loci * units;
}

double neutrality_work(const settings& s) {
    double work = 0.0;
    if (has_task(s, kTaskEwensWatterson))
        work += s.NumIterationsNeutralityTests / kNeutralityReplicatesPerUnit;
    if (has_task(s, kTaskFuFs)) work += s.NumSimulFuTest / kSequenceTestReplicatesPerUnit;
    if (has_task(s, kTaskTajima)) work += s.NumSimulFuTest / kSequenceTestReplicatesPerUnit;
    return work;
}

}  // namespace

Population::Population() = default;

Population::Population(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile)
    : profile(sample_profile), name(sample_name), id(sample_id) {}

Population::Population(const Population& other) {
    *this = other;
}

Population::~Population() = default;

Population& Population::operator=(const Population& other) {
    if (this == &other) return *this;
    clean();
    name = other.name;
    id = other.id;
    nb_hapl = other.nb_hapl;
    nb_orig_hapl = other.nb_orig_hapl;
    sample_size = other.sample_size;
    inv_sample_size = other.inv_sample_size;
    spare_count = other.spare_count;
    phen_to_gam_done = other.phen_to_gam_done;
    RecessiveAllelesEM = other.RecessiveAllelesEM;
    profile = other.profile;
    allele_db = other.allele_db;
    hapl_db = other.hapl_db;
    phen_db = other.phen_db;
    for (const PHaploDef* entry : other.hapl_list)
        hapl_list.Add(new PHaploDef(*entry));
    if (!other.polym_locus.empty()) polym_locus = other.polym_locus;
    amova.amova_id = other.amova.amova_id;
    amova.SSD = other.amova.SSD;
    amova.SSD_div_n = other.amova.SSD_div_n;
    amova.SSD_within_ind = other.amova.SSD_within_ind;
    return *this;
}

void Population::test_methods(settings&) {}

void Population::clean_bnum() {}

Population* Population::clone() const {
    return new Population(*this);
}

void Population::initialize() {
    name = "";
    id = -1;
    spare_count = 0;
    nb_hapl = 0;
    nb_orig_hapl = 0;
    sample_size = 0.0;
    inv_sample_size = 1.0;
    phen_to_gam_done = 0;
    RecessiveAllelesEM = 0;
    amova = AmovaWork();
    clean();
}

void Population::clean() {
    DeletePermutationVectors();
    amova.work_list = nullptr;
    phen_db.destroy();
    hapl_list.Flush();
    gamete_list.Flush();
    double threshold = kCleaningThreshold;
    hapl_db.cleanDB(threshold);
    hapl_db.empty();
    polym_locus.clear();
}

void Population::DeletePermutationVectors() {
    amova.perm_freq = {};
    amova.perm_list = {};
    amova.num_existing = 0;
    amova.perm_size = 0;
}

int Population::evaluate_nb_loci() const {
    if (profile.GenotypicData == 0) {
        return hapl_list.count == 0 ? 0 : static_cast<int>(hapl_list.data[0]->def->num_alleles());
    }
    if (phen_db.count == 0) return 0;
    return count_locus_texts(phen_db.data[0]->text[0].view(), profile.LocusSeparator);
}

bool Population::has_haplotypes() const {
    return profile.GenotypicData == 0 || profile.GameticPhase != 0 || phen_to_gam_done != 0;
}

double Population::evaluate_work(const settings& s) {
    RecessiveAllelesEM = s.RecessiveAllelesEM;
    const double loci = evaluate_nb_loci();
    const bool known_haplotypes = profile.GenotypicData == 0 || profile.GameticPhase != 0;
    const bool has_sites = profile.DataType == DNA || profile.DataType == RFLP;
    double work = neutrality_work(s);
    if (has_task(s, kTaskHaplotypeFrequencies) && !known_haplotypes) work += em_work(s, loci);
    if (has_task(s, kTaskMismatch) && known_haplotypes && has_sites) {
        const int fits = (s.MismatchDemogExp ? 1 : 0) + (s.MismatchSpatialExp ? 1 : 0);
        work += static_cast<double>(fits) * std::max(0, s.NumBootExpDem);
    }
    if (has_task(s, kTaskLinkageDisequilibrium) && s.MakeExactTestLD != 0) {
        work += ld_work(s, loci, known_haplotypes);
    }
    if (has_task(s, kTaskHardyWeinberg) && s.MakeHWExactTest != 0) work += hw_work(s, loci);
    if (has_task(s, kTaskPairwiseFst))
        work += static_cast<double>(s.NumPermutationsFST) / kFstPermutationsPerUnit;
    return work;
}

void Population::print_population_anchor(int level, settings& s, const my_string& suffix) const {
    mnd::print_population_anchor(level, s, suffix.c_str(), id, name.c_str());
}

}  // namespace mnd
