#include "between/amova.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <sstream>
#include <string>

#include "between/amova_designs.h"
#include "between/amova_tables.h"
#include "foundation/clock_time.h"
#include "input/dist_mat.h"
#include "input/structure.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "model/samples.h"
#include "results/tree_script.h"
#include "run/errors.h"
#include "run/settings.h"
#include "run/tasks.h"

namespace mnd {

namespace {

// Codes of the result record, by the design.
constexpr std::int32_t kResultCodes[] = {0, 0, 6, 1, 2, 3, 4, 7, 5, 9, 8};
constexpr std::int32_t kNumDesigns = sizeof kResultCodes / sizeof kResultCodes[0];

// Designs of one kind of data: of one sample, of one group of several, of several groups.
struct DesignFamily {
    AmovaDesign one_sample, one_group, several_groups;
};
constexpr DesignFamily kHaplotypes = {kDesignNone, kDesign1GPH, kDesignGPH};
constexpr DesignFamily kIndividuals = {kDesign1G1PI, kDesign1GPI, kDesignGPI};
constexpr DesignFamily kUnknownPhase = {kDesignNone, kDesign1GPIH, kDesignGPIH};
constexpr DesignFamily kRecessive = {kDesignNone, kDesign1GPRIH, kDesignGPRIH};

// Only samples of haplotypes in one group have indices of their own beside the FST of all.
bool has_population_fst(std::int32_t design) {
    return design == kDesign1GPH || design == kDesign1GPIH;
}

bool has_task(const settings& s, long tasks) {
    return (s.TaskNumber & tasks) != 0;
}

// Time in the form of the null distribution files; the century and the parenthesis are literal.
my_string time_stamp() {
    char text[40] = "";
    const std::time_t now = std::time(nullptr);
    std::strftime(text, sizeof text, "%d/%m/19%y at %H:%M:%S)", std::localtime(&now));
    return my_string(text);
}

// Whole number of copies or individuals, 0 for a negative one.
std::size_t whole_number(double count) {
    return static_cast<std::size_t>(std::max(integer_part(count), 0));
}

std::size_t listed_copies(const Population& sample) {
    std::size_t copies = 0;
    if (sample.amova.work_list == nullptr) return copies;
    for (const PHaploDef* entry : *sample.amova.work_list)
        copies += static_cast<std::size_t>(std::max(entry->freq, 0));
    return copies;
}

}  // namespace

std::int32_t result_code_of_design(std::int32_t design) {
    return design >= 0 && design < kNumDesigns ? kResultCodes[design] : 0;
}

Amova::Amova(settings& computation, Structure* genetic_structure, Samples* all_samples, DistMat* distances,
             Haplo_DB* haplotypes, TAlleleDB* alleles, Mantel* mantel_test, int print_flag, int reserved,
             amova_results* record)
    : sett(&computation),
      structure(genetic_structure),
      samples(all_samples),
      dist(distances),
      haplo_db(haplotypes),
      allele_db(alleles),
      mantel(mantel_test),
      print_results(print_flag),
      reserved_flag(reserved),
      results(record) {
    const settings& s = *sett;
    if (design_runs() || s.ComputePairwiseFST != 0 || s.PrintMissIntermatchs != 0) {
        for (Population* sample : samples->populations)
            sample->amova.work_list = samples->GenotypicData == 0 ? &sample->hapl_list : &sample->gamete_list;
        initialize();
    }
    if (design_runs()) run_design();
    for (Population* sample : samples->populations)
        sample->DeletePermutationVectors();
    if (has_task(s, kTaskPairwiseFst | kTaskMantel) || s.ComputeDeltaMuSqr != 0) run_pairwise();
    if (design_runs()) clean();
}

Amova::~Amova() {
    clean();
}

bool Amova::design_runs() const {
    return has_task(*sett, kTaskAmova) && (sett->HaplAMOVA != 0 || sett->LocByLocAMOVA != 0);
}

std::int32_t Amova::choose_design() const {
    const DesignFamily* family = &kHaplotypes;
    if (samples->GenotypicData != 0) {
        if (samples->GameticPhase != 0) {
            if (sett->IncludeIndividualLevel != 0) family = &kIndividuals;
        } else if (sett->RecessiveAllelesEM != 0) {
            family = &kRecessive;
        } else if (sett->IncludeIndividualLevel != 0 && sett->ComputeConventionalFST == 0) {
            family = &kIndividuals;
        } else {
            family = &kUnknownPhase;
        }
    }
    if (group_pops.empty()) return kDesignNone;
    if (group_pops.size() > 1) return family->several_groups;
    return group_pops[0].size() > 1 ? family->one_group : family->one_sample;
}

int Amova::run_design() {
    sett->build_sigm_histo_f_name();
    if (print_results != 0) {
        structure->print_structure(document_of(*this));
        print_distance_line(document_of(*this), *sett);
    }
    design = choose_design();
    if (results != nullptr) results->design_code = result_code_of_design(design);
    switch (design) {
        case kDesign1G1PI:
            return AMOVA_1G_1P_I();
        case kDesign1GPH:
            return AMOVA_1G_P_H();
        case kDesign1GPI:
            return AMOVA_1G_P_I();
        case kDesignGPH:
            return AMOVA_G_P_H();
        case kDesignGPI:
            return AMOVA_G_P_I();
        case kDesign1GPIH:
            return AMOVA_1G_P_IH();
        case kDesignGPIH:
            return AMOVA_G_P_IH();
        case kDesign1GPRIH:
            return AMOVA_1G_P_RIH();
        case kDesignGPRIH:
            return AMOVA_G_P_RIH();
        default:
            return 0;
    }
}

void Amova::run_pairwise() {
    const bool groups = is_group_level(*this);
    print_js_doc_entry(*sett, 2, groups ? "_gr_pairw_diff" : "_pop_pairw_diff", "Pairwise distances");
    *_AOS_ << "\tComputing pairwise Fst's ... \n";
    const std::clock_t begin = std::clock();
    CalcPairDist();
    *_AOS_ << "\tdone ! (" << milliseconds_since(begin) << " ms)\n";
}

void Amova::initialize() {
    try {
        allocate_arrays();
    } catch (...) {
        E.error(Memory, "Amova::initialize()", kNotEnoughMemory);
        throw AmovaFatalError();
    }
    load_HaplotypeIndexVector();
}

// Groups without samples are passed over.
void Amova::list_samples() {
    group_pops.clear();
    group_size.clear();
    N_genes = 0.0;
    for (const MY_TIArrayAsVector<Population>& group : structure->groups) {
        if (group.count == 0) continue;
        group_pops.emplace_back(group.begin(), group.end());
        group_size.push_back(0.0);
        for (const Population* sample : group_pops.back())
            group_size.back() += sample->sample_size;
        N_genes += group_size.back();
    }
    std::size_t P = 0;
    for (const std::vector<Population*>& group : group_pops)
        P += group.size();
    all_pops.assign(P, nullptr);
    for (const std::vector<Population*>& group : group_pops) {
        for (Population* sample : group)
            place_sample(*sample);
    }
}

// Puts a sample at its number, or at the first free place, which becomes its number when that is
// not one of a sample of the structure.
void Amova::place_sample(Population& sample) {
    std::int32_t& id = sample.amova.amova_id;
    const std::int32_t P = static_cast<std::int32_t>(all_pops.size());
    const bool is_valid = id >= 0 && id < P;
    std::int32_t place = id;
    if (!is_valid || all_pops[static_cast<std::size_t>(id)] != nullptr) {
        const auto free = std::find(all_pops.begin(), all_pops.end(), nullptr);
        place = static_cast<std::int32_t>(free - all_pops.begin());
    }
    if (!is_valid) id = place;
    all_pops[static_cast<std::size_t>(place)] = &sample;
}

void Amova::allocate_arrays() {
    individual_level = sett->IncludeIndividualLevel;
    num_perm = sett->NumPermutationsAMOVA;
    time_string = time_stamp();
    list_samples();
    const std::size_t P = all_pops.size();
    const std::size_t G = group_pops.size();
    std::size_t copies = 0;
    for (Population* sample : all_pops) {
        sample->CreatePermutationVectors(dist->MatrixSize);
        copies += std::max(listed_copies(*sample), whole_number(sample->sample_size));
    }
    SSD_groups.create(static_cast<int>(G));
    SSD_pops.create(static_cast<int>(P));
    group_SSD.assign(G, 0.0);
    pop_Fst.assign(P, 0.0);
    pop_Fis.assign(P, 0.0);
    pop_Fis_hits.assign(P, 0.0);
    haplo_index.assign(std::max(copies, whole_number(N_genes)) + P + 1, 0);
    N_units = individual_level != 0 ? N_genes / 2.0 : N_genes;
    ind_F.clear();
    ind_d.clear();
    if (individual_level == 0) return;
    ind_F.assign(whole_number(N_units), 0.0);
    ind_d.assign(whole_number(N_units), 0.0);
}

void Amova::clean() {
    SSD_groups.destroy();
    SSD_pops.destroy();
    for (std::vector<double>* array :
         {&group_size, &group_SSD, &ind_F, &ind_d, &pop_Fst, &pop_Fis, &pop_Fis_hits})
        *array = {};
    group_pops = {};
    all_pops = {};
    haplo_index = {};
    phen_vector.Flush();
}

void Amova::set_amova_results() {
    if (results == nullptr) return;
    const AmovaLayout& layout = layout_of_design(design);
    results->design_code = result_code_of_design(design);
    results->total = {degrees_of_freedom_in_total(*this), SSDT, V_total};
    for (std::size_t i = 0; i < results->row.size(); ++i) {
        const AmovaLevel& level = layout.levels[i];
        results->row[i] = {};
        if (level.SSD == nullptr) continue;
        results->row[i] = {df[i], this->*level.SSD, this->*level.sigma};
    }
    results->FST = FST;
    results->FSC = FSC;
    results->FCT = FCT;
    results->FIT = FIT;
    results->FIS = FIS;
    const bool shows_fst = sett->PopSpecificFST != 0 && has_population_fst(design);
    const bool shows_fis = sett->PopSpecificFIS != 0 && layout.counts_individuals;
    results->pop_Fst = shows_fst ? pop_Fst : std::vector<double>();
    results->pop_Fis = shows_fis ? pop_Fis : std::vector<double>();
    results->pop_Fis_pvalue.clear();
}

void Amova::print_amova_anchor(int level, settings& s, const my_string& label, const my_string& anchor) {
    my_string title(samples->Title);
    title.remove_blanks();
    title.convert_to_underline();
    const std::string name = run_anchor_name(s, "_" + std::string(title.view()) + "_amova_" + anchor.c_str());
    print_doc_anchor(s, level, name, label.c_str());
}

}  // namespace mnd
