// Opening of a project file, and the writing of its back-up.
//
// The file is read in one pass of lines. A line is searched for the keywords in a fixed order,
// wherever it stands; the blocks of the file go to the readers of the sections. What makes a
// project unusable is decided at the end, from what was seen on the way.

#include <array>
#include <ctime>
#include <fstream>
#include <new>
#include <string>

#include "foundation/clock_time.h"
#include "foundation/message_codes.h"
#include "foundation/my_string.h"
#include "foundation/report.h"
#include "input/external_file.h"
#include "input/keyword_reader.h"
#include "input/profile_line.h"
#include "run/errors.h"
#include "run/process.h"
#include "run/project.h"
#include "run/section_order.h"

namespace mnd {

namespace {

constexpr char kOrigin[] = "Project::newOpen()";

// What the lines of a project file have shown so far.
struct SectionsSeen {
    ProfileKeywordsSeen keywords;
    bool profile = false;
    bool data = false;
    bool haplotype_definition = false;
    bool hapl_list = false;
    bool distance_matrix = false;
    bool matrix_size = false;
    bool matrix_data = false;
    bool samples = false;
    bool sample_name = false;
    bool sample_size = false;
    bool sample_data = false;
    bool structure = false;
    bool structure_name = false;
    bool nb_groups = false;
    bool individual_level = false;
    bool group = false;
};

// One pass over a project file. Every step is false when the reading has to stop.
class ProjectReader {
public:
    explicit ProjectReader(Project& project) : project_(project), file_(settings::input_file) {}

    bool read_all();

private:
    struct Row {
        const char* word;
        const char* but_not;  // null, or a longer word that is not meant
        bool (ProjectReader::*take)();
    };
    static const std::array<Row, 10> kRows;

    bool read_lines();
    bool take_line();
    bool take_section_line();

    bool begin_data();
    bool begin_haplotype_definition();
    bool take_hapl_list_name();
    bool read_hapl_list();
    bool read_external_hapl_list();
    bool begin_distance_matrix();
    bool take_matrix_name();
    bool take_matrix_size();
    bool take_label_position();
    bool take_matrix_data();
    bool read_external_matrix();
    bool refuse_matrix();
    bool read_samples();
    bool take_structure();
    bool take_mantel();
    bool needs_samples(SampleSection const& section);

    bool check_all_seen() const;
    bool check_profile_seen() const;
    bool check_data_seen() const;
    bool check_groups_seen() const;

    bool has_equal_sign(const char* keyword) const {
        return checkForPresenceOfEqualSign(line_, keyword, line_no_);
    }
    std::ostream& log_at_line() const { return *_AOS_ << "\tProject file, Line #" << line_no_; }
    bool open_external(std::ifstream& external, my_string& name, const char* keyword);
    bool stop(const char* reason);

    Project& project_;  // not owned
    std::ifstream file_;
    my_string line_;   // the line under work, without comment
    my_string upper_;  // its upper-case copy
    int line_no_ = 0;
    SectionsSeen seen_;
};

// In order of the search: the first whose word occurs in a line decides.
const std::array<ProjectReader::Row, 10> ProjectReader::kRows = {{
    {"[DATA]", nullptr, &ProjectReader::begin_data},
    {"HAPLOTYPEDEFINITION", nullptr, &ProjectReader::begin_haplotype_definition},
    {"HAPLLISTNAME", nullptr, &ProjectReader::take_hapl_list_name},
    {"HAPLLIST", "USEDHAPLLIST", &ProjectReader::read_hapl_list},
    {"DISTANCEMATRIX", nullptr, &ProjectReader::begin_distance_matrix},
    {"MATRIXNAME", nullptr, &ProjectReader::take_matrix_name},
    {"MATRIXSIZE", nullptr, &ProjectReader::take_matrix_size},
    {"LABELPOSITION", nullptr, &ProjectReader::take_label_position},
    {"MATRIXDATA", nullptr, &ProjectReader::take_matrix_data},
    {"[SAMPLES]", nullptr, &ProjectReader::read_samples},
}};

bool ProjectReader::stop(const char* reason) {
    file_.close();
    project_.failure_reason = reason;
    return false;
}

bool ProjectReader::read_all() {
    if (!file_.is_open() || !file_opens(settings::input_file)) {
        report(Warning, kOrigin, kCannotOpenProject);
        return stop("the project file can't be opened");
    }
    *_AOS_ << "Reading input file ..." << std::endl;
    const std::clock_t start = std::clock();
    if (!read_lines()) return false;
    const bool complete = check_all_seen();
    *_AOS_ << "done ! (" << milliseconds_since(start) << " ms)" << std::endl;
    if (complete) return true;
    report(Error, kOrigin, kMissingRequiredKeywords);
    return stop("required sections or keywords are missing");
}

bool ProjectReader::read_lines() {
    while (file_.good() && read_project_line(file_, line_, line_no_)) {
        upper_ = upper_copy(line_);
        if (!take_line()) return false;
    }
    if (!line_was_too_long(file_)) return true;
    ++line_no_;
    log_at_line() << " : the line is longer than " << kMaxTextLength - 1
                  << " characters. Aborting reading project.\n";
    return stop("a line of the project file is too long");
}

bool ProjectReader::take_line() {
    if (upper_.contains("[PROFILE]")) seen_.profile = true;
    switch (read_profile_line(line_, upper_, line_no_, project_, seen_.keywords)) {
        case LineOutcome::kStop:
            return stop("\"NbSamples\" has no valid value");
        case LineOutcome::kNotMine:
            for (const Row& row : kRows) {
                if (!upper_.contains(row.word)) continue;
                if (row.but_not != nullptr && upper_.contains(row.but_not)) continue;
                if (!(this->*row.take)()) return false;
                break;
            }
            break;
        case LineOutcome::kTaken:
            break;
    }
    return take_section_line();
}

// The sections behind the samples: the reader of the samples leaves their first line, that of the
// structure the line that stopped it, or the last of the file.
bool ProjectReader::take_section_line() {
    if (holds_heading(line_.view(), "[STRUCTURE]") && !take_structure()) return false;
    if (!seen_.structure) return true;
    upper_ = upper_copy(line_);
    return !holds_heading(line_.view(), "[MANTEL]") || take_mantel();
}

bool ProjectReader::begin_data() {
    seen_.data = true;
    return true;
}

// ---- Haplotype definitions

bool ProjectReader::begin_haplotype_definition() {
    if (!seen_.data) {
        log_at_line()
            << " : HaplotypeDefinition keyword declared before the beginning of the 'Data' section..."
            << std::endl;
        return stop("HaplotypeDefinition stands before the [Data] section");
    }
    static_cast<ProfileSettings&>(project_.haplo_db) = project_;
    if (project_.haplo_db.list.count > 0) project_.haplo_db.reset();
    seen_.haplotype_definition = true;
    return true;
}

bool ProjectReader::take_hapl_list_name() {
    if (!seen_.haplotype_definition) {
        log_at_line()
            << " : HaplListName keyword declared before the beginning of the 'HaplotypeDefinition' section..."
            << std::endl;
        return stop("HaplListName stands outside of the HaplotypeDefinition section");
    }
    if (!has_equal_sign("HaplListName")) return true;
    if (!getQuotedString(line_, project_.haplo_db.name, "HaplListName", line_no_)) {
        project_.haplo_db.name = "";
        report(Warning, kOrigin, kBadHaplListName);
    }
    return true;
}

bool ProjectReader::read_hapl_list() {
    if (!seen_.haplotype_definition) {
        log_at_line()
            << " : HaplList keyword declared before the beginning of the 'HaplotypeDefinition' section...\n"
            << "\t Stopping reading input file!" << std::endl;
        return stop("HaplList stands outside of the HaplotypeDefinition section");
    }
    *_AOS_ << "Reading Haplotype List ..." << std::endl;
    seen_.hapl_list = true;
    const std::clock_t start = std::clock();
    const bool read = line_.contains("EXTERN")
                          ? read_external_hapl_list()
                          : project_.haplo_db.NewReadHaplotypeList(file_, project_, false, line_no_) != 0;
    if (!read) return stop("the haplotype list can't be read");
    *_AOS_ << "done ! (" << milliseconds_since(start) << " ms)" << std::endl;
    return true;
}

bool ProjectReader::read_external_hapl_list() {
    std::ifstream external;
    my_string name;
    if (!open_external(external, name, "Extern haplotype list")) return false;
    *_AOS_ << "\tReading haplotype list in external file \"" << name << "\"" << std::endl;
    int external_line = 0;
    return project_.haplo_db.NewReadHaplotypeList(external, project_, true, external_line) != 0;
}

// Opens the file named in the line under work; error 200 and a text in the log when it can't.
bool ProjectReader::open_external(std::ifstream& external, my_string& name, const char* keyword) {
    const bool named = getQuotedString(line_, name, keyword, line_no_) && !name.is_null();
    if (named) external = open_external_file(name, &project_.the_settings);
    external.peek();  // a folder opens, but can't be read
    if (external.is_open() && !external.bad()) {
        external.clear();
        return true;
    }
    *_AOS_ << "\tWarning: External file \"" << name << "\" listed on line " << line_no_
           << " cannot be open. Check that it exists. Aborting reading project" << std::endl;
    report(Error, kOrigin, kUnreadableExternalDistanceMatrix);
    return false;
}

// ---- Distance matrix

bool ProjectReader::begin_distance_matrix() {
    if (!seen_.data) {
        log_at_line() << " : DistanceMatrix keyword declared before the beginning of the 'Data' section..., "
                      << "aborting project reading!" << std::endl;
        return stop("DistanceMatrix stands before the [Data] section");
    }
    static_cast<ProfileSettings&>(project_.dist_mat) = project_;
    seen_.distance_matrix = true;
    return true;
}

bool ProjectReader::take_matrix_name() {
    if (!has_equal_sign("MatrixName")) return true;
    if (!getQuotedString(line_, project_.dist_mat.MatrixName, "MatrixName", line_no_)) {
        *_AOS_ << "\tWarning: Unable to read MatrixName on line " << line_no_ << std::endl;
        report(Warning, kOrigin, kDistanceMatrixSectionReadError);
        project_.dist_mat.MatrixName = "undefined";
    }
    return true;
}

bool ProjectReader::take_matrix_size() {
    constexpr char kReason[] = "\"MatrixSize\" has no valid value";
    seen_.matrix_size = true;
    if (!has_equal_sign("MatrixSize")) return true;
    double value = 0.0;
    if (!getValue(line_, value, "MatrixSize", line_no_)) {
        *_AOS_ << "\tWarning: Unable to read MatrixSize on line " << line_no_ << ". Aborting project reading."
               << std::endl;
        report(Error, kOrigin, kInvalidMatrixSize);
        return stop(kReason);
    }
    const int size = whole_part(value);
    DistMat& matrix = project_.dist_mat;
    if (size <= 0) {
        *_AOS_ << "\tBad size (" << size << ") for distance matrix \"" << matrix.MatrixName
               << "\". Check size (" << size << ") reported on line " << line_no_ << std::endl;
        report(Error, kOrigin, kInvalidMatrixSize);
        return stop(kReason);
    }
    try {
        if (size > kMaxMatrixRows) throw std::bad_alloc();
        matrix.initializeMatrixAndArrays(size);
    } catch (const std::bad_alloc&) {
        *_AOS_ << "\tUnable to allocate memory for distance matrix \"" << matrix.MatrixName
               << "\". Required size (" << size << ") reported on line " << line_no_
               << " is probably too big..." << std::endl;
        return stop("the distance matrix is too big");
    }
    return true;
}

bool ProjectReader::take_label_position() {
    if (upper_.contains("LINE")) {
        project_.dist_mat.LabelPosition = kLabelsOnLine;
    } else if (upper_.contains("COLUMN")) {
        project_.dist_mat.LabelPosition = kLabelsInColumn;
    } else {
        *_AOS_ << "\tInvalid keyword for LabelPosition on line" << line_no_ << ". Aborting reading project."
               << std::endl;
        report(Error, kOrigin, kInvalidLabelPosition);
        return stop("\"LabelPosition\" has no valid value");
    }
    return true;
}

bool ProjectReader::take_matrix_data() {
    seen_.matrix_data = true;
    const std::clock_t start = std::clock();
    if (line_.contains("EXTERN")) {
        if (!read_external_matrix()) return false;
    } else {
        *_AOS_ << "\tReading distance matrix ..." << std::endl;
        if (project_.dist_mat.ReadDistanceMatrix(file_, false, line_no_) == 0) return refuse_matrix();
    }
    *_AOS_ << "\tdone ! (" << milliseconds_since(start) << " ms)\n";
    return true;
}

bool ProjectReader::read_external_matrix() {
    std::ifstream external;
    my_string name;
    if (!open_external(external, name, "Extern Distance Matrix "))
        return stop("the external distance matrix can't be opened");
    *_AOS_ << "\tReading Distance Matrix in external file \"" << name << "\"" << std::endl;
    report(Warning, kOrigin, kReadingExternalDistanceMatrix);
    int external_line = 0;
    return project_.dist_mat.ReadDistanceMatrix(external, true, external_line) != 0 || refuse_matrix();
}

bool ProjectReader::refuse_matrix() {
    *_AOS_ << "\t\tProblems in reading DistanceMatrix section... aborting reading  project file.\n";
    return stop("the distance matrix can't be read");
}

// ---- Samples, and the sections behind them

bool ProjectReader::read_samples() {
    *_AOS_ << "\tReading Samples section ..." << std::endl;
    const std::clock_t start = std::clock();
    const int read =
        project_.samples->NewReadSamples(file_, project_, project_.haplo_db, line_no_, line_,
                                         seen_.sample_name, seen_.sample_size, seen_.sample_data);
    if (read == 0) {
        *_AOS_ << "\tProblems in reading Samples section... aborting reading  project file.\n";
        return stop("the samples can't be read");
    }
    clearLineAfterPoundSign(line_);
    upper_ = upper_copy(line_);
    *_AOS_ << "\tdone reading Samples section! (" << milliseconds_since(start) << " ms)\n";
    seen_.samples = true;
    return true;
}

// Tests that samples were read before a section that refers to them.
bool ProjectReader::needs_samples(SampleSection const& section) {
    return samples_stand_before(section, seen_.samples, *project_.samples) ||
           stop("a section that needs samples stands before them");
}

bool ProjectReader::take_structure() {
    if (!needs_samples(kStructureSection)) return false;
    *_AOS_ << "\tReading genetic structure ..." << std::endl;
    const std::clock_t start = std::clock();
    const int read = project_.structure->NewReadStructure(file_, project_, *project_.samples, line_no_, line_,
                                                          seen_.structure_name, seen_.nb_groups,
                                                          seen_.individual_level, seen_.group);
    if (read == 0) return stop("the genetic structure can't be read");
    *_AOS_ << "\tdone reading genetic structure! (" << milliseconds_since(start) << " ms)\n";
    seen_.structure = true;
    return true;
}

bool ProjectReader::take_mantel() {
    if (!needs_samples(kMantelSection)) return false;
    *_AOS_ << "\tReading mantel section ..." << std::endl;
    const std::clock_t start = std::clock();
    static_cast<ProfileSettings&>(project_.mantel) = project_;
    pass_over_subsection(
        file_, {"[SAMPLES]", "[STRUCTURE]", "[DISTANCEMATRIX]", "[HAPLOTYPEDEFINITION]", "[MANTEL]"},
        line_no_, line_);
    *_AOS_ << "\tThe Mantel section of the project is passed over, none of its matrices is used\n"
           << "\tdone ! (" << milliseconds_since(start) << " ms)" << std::endl;
    return true;
}

// ---- The judgement at the end of the file

// A section or keyword without which the project can't be used, and the line that says so.
struct Requirement {
    bool missing;
    const char* text;
};

// Writes the lines of what is missing; true when nothing is.
template <std::size_t N>
bool all_there(std::array<Requirement, N> const& requirements) {
    bool complete = true;
    for (const Requirement& one : requirements) {
        if (!one.missing) continue;
        *_AOS_ << one.text;
        complete = false;
    }
    return complete;
}

bool ProjectReader::check_all_seen() const {
    const bool profile_complete = check_profile_seen();
    return check_data_seen() && profile_complete;
}

bool ProjectReader::check_profile_seen() const {
    const ProfileKeywordsSeen& seen = seen_.keywords;
    const bool has_loci = project_.DataType != FREQUENCY;
    const std::array<Requirement, 6> needed = {{
        {!seen_.profile, "\t[PROFILE] section not defined. Check your project file.\n"},
        {!seen.nb_samples,
         "\tKeyword \"NbSamples\" not found. Undefined number of samples to read. "
         "Check your project file.\n"},
        {!seen.data_type,
         "\tKeyword \"DataType\" not found. Undefined data type. Check your project file.\n"},
        {!seen.genotypic_data,
         "\tKeyword \"GenotypicData\" not found. Undefined data type. Check your project file.\n"},
        {!seen.locus_separator && has_loci,
         "\tKeyword \"LocusSeparator\" not found. Check your project file.\n"},
        {!seen.gametic_phase && project_.GenotypicData != 0,
         "\tKeyword \"GameticPhase\" not found. Undefined gametic phase for genotypic data. "
         "Check your project file.\n"},
    }};
    const bool complete = all_there(needed);
    if (!seen.recessive_allele && project_.RecessiveData != 0) {
        *_AOS_ << "\tKeyword \"RecessiveAllele\" not found. Undefined recessive allele for recessive data. "
               << "\t\tUsing default value (" << project_.RecessiveAllele << "). Check your project file.\n";
    }
    if (!seen.missing_data && has_loci) {
        *_AOS_ << "\tKeyword \"MissingData\" not found. Using default value (\"" << project_.MissingData
               << "\"). Check your project file.\n";
    }
    return complete;
}

bool ProjectReader::check_data_seen() const {
    const std::array<Requirement, 5> sections = {{
        {!seen_.data, "\t[DATA] section not defined. Check your project file.\n"},
        {seen_.haplotype_definition && !seen_.hapl_list,
         "\tKeyword \"HaplList\" not found in Haplotype section. Haplotype list not found. "
         "Check your project file.\n"},
        {seen_.distance_matrix && !seen_.matrix_size,
         "\tKeyword \"MatrixSize\" not found in Distance Matrix section.Check your project file.\n"},
        {seen_.distance_matrix && !seen_.matrix_data,
         "\tKeyword \"MatrixData\" not found in Distance Matrix section. Distance matrix is undefined. "
         "Check your project file.\n"},
        {!seen_.samples,
         "\tSection \"Samples\" not found in project. At least one sample needs to be defined. "
         "Check your project file.\n"},
    }};
    bool complete = all_there(sections);
    if (!seen_.sample_size) {
        *_AOS_ << "\tKeyword \"SampleSize\" not found in Samples section. Sample size is undefined.\n"
               << (project_.GenotypicData == 0
                       ? "\t\tUsing sum of haplotype frequencies. Check your project file.\n"
                       : "\t\tUsing sum of genotype frequencies. Check your project file.\n");
    }
    if (!seen_.sample_data) {
        *_AOS_ << "\tKeyword \"SampleData\" not found in Samples section. Sample data is undefined. "
                  "Check your project file.\n";
        complete = false;
    }
    return check_groups_seen() && complete;
}

bool ProjectReader::check_groups_seen() const {
    const std::array<Requirement, 2> needed = {{
        {seen_.structure && !seen_.nb_groups,
         "\tKeyword \"NbGroups\" not found in Structure section. Unknown number of groups to read. "
         "Check your project file.\n"},
        {seen_.structure && !seen_.group,
         "\tKeyword \"Group\" not found in Structure section. No groups definition could be read. "
         "Check your project file.\n"},
    }};
    return all_there(needed);
}

}  // namespace

bool Project::newOpen() {
    dist_matrix_computed = false;
    return ProjectReader(*this).read_all();
}

bool Project::write() {
    if (!backup_written) return true;
    std::ofstream file(the_settings.backup_file_name.c_str());
    if (!file) {
        report(Error, "Project::write()", kCannotWriteBackup);
        return false;
    }
    if (DataType == DNA || DataType == RFLP) LocusSeparator = 0;
    const ProfileSettings& profile = *this;
    file << profile << "[Data]\n\n" << haplo_db;
    dist_mat.write_section(file);
    file << *samples << *structure;
    *_AOS_ << "Back-up file with input data written in " << the_settings.backup_file_name << std::endl;
    return true;
}

void Project::save_associated_set() {
    my_string path(settings::input_file);
    path.remove_extension();
    path += ".mns";
    the_settings.settings_file_name = path;
    the_settings.print_settings(path);
}

void create_mnp_example(char* path) {
    const std::ofstream file(path, std::ios_base::trunc);
}

}  // namespace mnd
