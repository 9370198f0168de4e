#include "model/samples.h"

#include <ctime>
#include <fstream>
#include <string>

#include "foundation/clock_time.h"
#include "model/popul_dna.h"
#include "model/popul_microsat.h"
#include "model/popul_rflp.h"
#include "model/popul_standard.h"
#include "results/tree_script.h"
#include "run/errors.h"
#include "run/settings.h"
#include "run/tasks.h"

namespace mnd {

namespace {

// Steps of the between-sample tests that make one unit of the progress display.
constexpr double kPermutationsPerUnit = 100.0;
constexpr double kVarianceRows = 3.0;
constexpr double kVarianceRowsWithIndividuals = 4.0;
constexpr long kLongExactTest = 20000;
constexpr double kExactStepsPerUnit = 500.0;
constexpr double kLongExactStepsPerUnit = 1000.0;
constexpr double kUnitsPerSelectionLocus = 3.0;
constexpr double kUnitsPerSelectionSimulation = 10.0;

bool has_task(const settings& s, long task) {
    return (s.TaskNumber & task) != 0;
}

double amova_work(const settings& s, double loci) {
    const double rows = s.IncludeIndividualLevel != 0 ? kVarianceRowsWithIndividuals : kVarianceRows;
    const double units = rows * static_cast<double>(s.NumPermutationsAMOVA) / kPermutationsPerUnit;
    return (s.HaplAMOVA != 0 ? units : 0.0) + (s.LocByLocAMOVA != 0 ? loci * units : 0.0);
}

// Steps of the analyses that compare k samples with one another.
double between_sample_work(const settings& s, double k, double loci) {
    const double pairs = k * (k - 1.0) / 2.0;
    double work = 0.0;
    if (has_task(s, kTaskAmova)) work += amova_work(s, loci);
    if (has_task(s, kTaskPairwiseFst)) {
        work += static_cast<double>(s.NumPermutationsFST) * pairs / kPermutationsPerUnit;
    }
    if (has_task(s, kTaskExactDifferentiation)) {
        const bool is_long = s.NumPermutPopDiff >= kLongExactTest;
        work += static_cast<double>(s.NumPermutPopDiff) * (pairs + 1.0) /
                (is_long ? kLongExactStepsPerUnit : kExactStepsPerUnit);
    }
    if (s.DetectSelectedLoci != 0) {
        work += loci * kUnitsPerSelectionLocus + s.NumberOfSimsForFDist2 * kUnitsPerSelectionSimulation;
    }
    return work;
}

// Empties a file that exists, and makes none.
void empty_existing_file(const char* path) {
    if (std::ifstream(path).is_open()) std::ofstream(path, std::ios::trunc);
}

void report_sample_without_data(const char* reporter) {
    E.error(Error, reporter, kPopulationWithoutData);
}

// Calls change(text) for each text of a sample: of its definitions, or of its phenotypes.
// False when there is none.
template <class Change>
bool change_texts(Population& sample, Change change) {
    if (sample.profile.GenotypicData == 0) {
        for (PHaploDef* entry : sample.hapl_list)
            change(entry->def->content);
        return sample.hapl_list.count != 0;
    }
    for (TPhenotype* phenotype : sample.phen_db) {
        for (my_string& text : phenotype->text)
            change(text);
    }
    return sample.phen_db.count != 0;
}

}  // namespace

Samples::Samples() = default;
Samples::Samples(const Samples& other) = default;
Samples& Samples::operator=(const Samples& other) = default;
Samples::~Samples() = default;

void Samples::init_all_pointers(TAlleleDB* db) {
    for (Population* sample : populations)
        sample->allele_db = db;
}

void Samples::build_all_vectors(const char& sep) {
    for (Population* sample : populations)
        sample->build_allele_vectors(sep);
}

void Samples::phen_to_gam(Haplo_DB* db, ProfileSettings* project_profile, settings* s) {
    for (Population* sample : populations)
        sample->phen_to_gam(db, project_profile, s);
}

void Samples::h_pop_db_to_gam(Haplo_DB& db) {
    for (Population* sample : populations)
        sample->h_pop_db_to_gam(&db);
}

void Samples::convert_dna_upper() {
    if (DataType != DNA) return;
    for (Population* sample : populations) {
        const bool has_data = change_texts(*sample, [](my_string& text) { text.Upper(); });
        if (!has_data) report_sample_without_data("Samples::convert_dna_upper()");
    }
}

void Samples::rm_separators() {
    if (DataType != DNA && DataType != RFLP) return;
    for (Population* sample : populations) {
        const char separator = sample->profile.LocusSeparator;
        if (separator == 0) continue;
        std::string kept;
        const bool has_data = change_texts(*sample, [&kept, separator](my_string& text) {
            kept.clear();
            for (const char c : text.view()) {
                if (c != separator && c != ' ' && c != '\t') kept += c;
            }
            text = kept.c_str();
        });
        if (!has_data) report_sample_without_data("Samples::rm_separators()");
    }
    LocusSeparator = 0;
    for (Population* sample : populations)
        sample->profile.LocusSeparator = 0;
}

void Samples::evaluate_work(settings& s) {
    double work = 0.0;
    for (Population* sample : populations)
        work += sample->evaluate_work(s);
    const double loci = populations.count == 0 ? 0.0 : populations.data[0]->evaluate_nb_loci();
    settings::global_work_done = 0.0;
    settings::global_work_to_do = work + between_sample_work(s, static_cast<double>(populations.count), loci);
}

int Samples::compute_stuff(settings& s) {
    if (has_task(s, kTaskLinkageDisequilibrium)) empty_existing_file(s.ld_file_name.c_str());
    if (populations.count == 0) return 1;
    TAlleleDB* alleles = populations.data[0]->allele_db;
    if (has_task(s, kTaskStandardIndices) && alleles != nullptr) {
        alleles->create_pop_freq_vector(static_cast<int>(populations.count));
    }
    for (Population* sample : populations) {
        *_AOS_ << "\nPopulation '" << sample->name << "' : ";
        const std::clock_t start = std::clock();
        sample->test_methods(s);
        *_AOS_ << "done in " << milliseconds_since(start) << " ms";
    }
    populations.data[0]->clean_bnum();
    return 1;
}

void Samples::clean() {
    populations.Flush();
}

void Samples::print_computation_anchor(int level, settings& s, const my_string& suffix,
                                       const my_string& label) const {
    mnd::print_computation_anchor(level, s, suffix.c_str(), label.c_str(), !output_by_sample);
}

std::unique_ptr<Population> Samples::new_sample(int data_type, const Population& data) {
    switch (data_type) {
        case DNA:
            return std::make_unique<PopulDNA>(data);
        case RFLP:
            return std::make_unique<PopulRFLP>(data);
        case MICROSAT:
            return std::make_unique<PopulMicrosat>(data);
        default:
            return std::make_unique<PopulStandard>(data);
    }
}

}  // namespace mnd
