// The run of one project, from the pre-pass to the footer.
#include <array>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

#include "between/genotype_assignment.h"
#include "foundation/clock_time.h"
#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "results/citations.h"
#include "results/result_document.h"
#include "results/tree_script.h"
#include "results/xml_tags.h"
#include "run/cleaner.h"
#include "run/errors.h"
#include "run/missing_analysis.h"
#include "run/process.h"
#include "run/project.h"
#include "run/tasks.h"

namespace mnd {

namespace {

const std::string kSlashes(68, '/');
const std::string kEquals(60, '=');

// Lends the result document to the settings and to the error channel for the length of a run.
class DocumentLoan {
public:
    DocumentLoan(settings& s, std::fstream* document) : s_(s) {
        s_.result_stream = document;
        E.result_stream = document;
    }
    ~DocumentLoan() {
        s_.result_stream = nullptr;
        E.result_stream = nullptr;
    }
    DocumentLoan(const DocumentLoan&) = delete;
    DocumentLoan& operator=(const DocumentLoan&) = delete;

private:
    settings& s_;
};

// Removes the cleaned copies when a run ends, whichever way it ends.
class CleanedCopies {
public:
    CleanedCopies() = default;
    ~CleanedCopies() { pre_pass.rm_clean_files(); }
    CleanedCopies(const CleanedCopies&) = delete;
    CleanedCopies& operator=(const CleanedCopies&) = delete;

    cleaner pre_pass;
};

// Puts pooled samples and their structure in place of the project's own for one pass.
class LevelSwap {
public:
    LevelSwap(Project& project, Samples& samples, Structure& structure)
        : project_(project), samples_(project.samples), structure_(project.structure) {
        project_.samples = &samples;
        project_.structure = &structure;
    }
    ~LevelSwap() {
        project_.samples = samples_;
        project_.structure = structure_;
        project_.the_settings.current_samples = samples_;
    }
    LevelSwap(const LevelSwap&) = delete;
    LevelSwap& operator=(const LevelSwap&) = delete;

private:
    Project& project_;
    Samples* samples_;      // not owned: put back at the end
    Structure* structure_;  // not owned: put back at the end
};

// Shows genotypes of known phase as if it were unknown, for an analysis that wants to see all of
// them that way.
class UnknownPhase {
public:
    UnknownPhase(settings& s, Samples& samples)
        : s_(s), samples_(samples), of_settings_(s.gametic_phase), of_samples_(samples.GameticPhase) {
        if (s.genotypic_data == 0 || s.gametic_phase == 0) return;
        s_.gametic_phase = 0;
        samples_.GameticPhase = 0;
    }
    ~UnknownPhase() {
        s_.gametic_phase = of_settings_;
        samples_.GameticPhase = of_samples_;
    }
    UnknownPhase(const UnknownPhase&) = delete;
    UnknownPhase& operator=(const UnknownPhase&) = delete;

private:
    settings& s_;
    Samples& samples_;
    int of_settings_;
    int of_samples_;
};

std::string formatted_time(const char* format) {
    const std::time_t now = std::time(nullptr);
    std::array<char, 64> text{};
    if (const std::tm* local = std::localtime(&now)) std::strftime(text.data(), text.size(), format, local);
    return text.data();
}

// The time at the head of a run; the one at its end has a parenthesis more.
std::string start_time() {
    return formatted_time("%d/%m/%y at %H:%M:%S");
}
std::string end_time() {
    return formatted_time("%d/%m/%y at %H:%M:%S)");
}

std::string project_name() {
    my_string name(settings::input_file);
    name.rm_path();
    return name.c_str();
}

// Computing time in the parts that a person reads.
struct Duration {
    std::uint64_t hours, minutes, seconds, ms;
};

Duration split_duration(std::uint64_t elapsed_ms) {
    return {elapsed_ms / 3600000, elapsed_ms / 60000 % 60, elapsed_ms / 1000 % 60, elapsed_ms % 1000};
}

void write_run_block(std::ostream& out, int run_number, const std::string& time) {
    out << kSlashes << "\nRUN NUMBER " << run_number << " (" << time << ")\n" << kSlashes << '\n';
}

void write_end_block(std::ostream& out, int run_number, const std::string& time, const Duration& d) {
    const FormatGuard guard(out);
    out << '\n'
        << kSlashes << "\nEND OF RUN NUMBER " << run_number << " (" << time << ")"
        << "\nTotal computing time for this run : " << d.hours << "h " << d.minutes << "m " << d.seconds
        << "s " << d.ms << " ms\n"
        << kSlashes << '\n';
}

void write_project_information(std::ostream& out, const ProfileSettings& profile, const settings& s) {
    out << "\nProject information:"
        << "\n--------------------\n"
        << "\tNbSamples      =  " << profile.NbSamples << '\n'
        << "\tDataType       =  " << data_type_name(profile.DataType) << '\n'
        << "\tGenotypicData  =  " << profile.GenotypicData << '\n';
    if (profile.GenotypicData == 0) return;
    out << "\tGameticPhase   =  " << profile.GameticPhase << '\n'
        << "\tRecessiveData  =  " << s.RecessiveAllelesEM << '\n';
}

// A heading, which begins with a line end, between two lines of equals signs.
void write_level_heading(std::ostream& out, const char* heading) {
    out << kEquals << heading << '\n' << kEquals << '\n';
}

std::string structure_text(const Structure& structure) {
    std::ostringstream text;
    text << structure;
    return escape_text(text.str());
}

// The settings ask for an analysis of groups, and there are none.
void say_no_groups(std::ostream& results) {
    for (std::ostream* out : {&results, _AOS_})
        *out << "\nThe project has no groups of samples, nothing is analysed at the group level.\n";
}

// Why loci under selection can't be detected; null when they can.
const char* obstacle_to_selection(const Structure& structure, int data_type) {
    if (structure.NbGroups == 0)
        return "Impossible to detect outlier loci when no genetic structure is defined\n";
    if (data_type == FREQUENCY) return "Impossible to detect outlier loci with relative frequency data\n";
    return nullptr;
}

// Changes the texts of all definitions of a project. A sample reaches only those that it holds;
// one of a list that no sample holds would else put alleles and loci of its own beside theirs.
template <typename Change>
void change_definitions(Haplo_DB& db, Change change) {
    for (HaploDef* definition : db.list)
        change(definition->content);
    db.content_changed();
}

my_string without_separators(const my_string& text, char separator) {
    std::string kept;
    for (const char c : text.view()) {
        if (c != separator && c != ' ' && c != '\t') kept += c;
    }
    return my_string(kept.c_str());
}

}  // namespace

void Project::New_print_html_results_header(bool xml) {
    mnd::New_print_html_results_header(*the_settings.result_stream, the_settings.style_file_name.c_str(),
                                       xml);
}

void Project::New_print_html_results_footer([[maybe_unused]] bool flag, bool xml) {
    mnd::New_print_html_results_footer(*the_settings.result_stream, xml);
}

void Project::New_print_html_frames_output([[maybe_unused]] bool flag) {
    mnd::New_print_html_frames_output(the_settings, project_name());
}

// Lets the run work on the cleaned copy, in the result folder, where the results go too.
void Project::use_cleaned_copy(cleaner& pre_pass) {
    settings& s = the_settings;
    if (!pre_pass.execute(carried_separator(), settings::input_file) ||
        pre_pass.get_clean_proj() == nullptr) {
        *_AOS_ << "\nAn error has occurred while cleaning-up the project...\n";
        // Not the folder of the project before.
        s.result_directory = s.project_directory;
        s.ld_file_name = s.result_directory + "ld_dis.xl";
        return;
    }
    my_string name(*pre_pass.get_clean_proj());
    copy_path(settings::input_file, name.c_str(), settings::kInputFileSize);
    s.result_directory = pre_pass.get_proj_dir();
    s.ld_file_name = s.result_directory + "ld_dis.xl";
    name.remove_extension();
    name += xmlOutput ? ".xml" : ".htm";
    s.result_file_name = name;
}

// Names of the frame files, in the form with slashes.
void Project::name_result_files() {
    settings& s = the_settings;
    backslashes_to_slashes(settings::input_file);
    s.result_file_name.convert_to_slash();
    s.result_directory.convert_to_slash();
    s.backup_file_name.convert_to_slash();
    s.project_directory.convert_to_slash();
    s.program_directory = control_directory();
    s.program_directory.convert_to_slash();
    const ResultFileNames names = result_file_names(s.result_file_name.c_str(), s.program_directory.c_str());
    s.result_file_copy = s.result_file_name;
    s.tree_file_name = names.tree_page.c_str();
    s.js_file_name = names.tree_script.c_str();
    s.main_file_name = names.main_page.c_str();
    s.style_file_name = names.style_sheet.c_str();
    s.tree_script_name = names.tree_library.c_str();
}

void Project::start_document(const OpenedDocument& document) {
    settings& s = the_settings;
    if (!document.stream->is_open()) {
        *_AOS_ << "\nUnable to open the result document " << s.result_file_name << ", its text is lost\n";
        std::cerr << "mendcore: the result document '" << s.result_file_name << "' can't be opened\n";
    }
    haplotype_vectors_built = false;
    phenotypes_converted = false;
    ++run_number;
    const std::string time = start_time();
    s.run_time_stamp = time.c_str();
    s.run_time_stamp.remove_blanks();
    New_print_html_frames_output(true);
    start_result_text(s, document, project_name(), s.append_results != 0, xmlOutput);

    std::fstream& results = *document.stream;
    results << THeader{my_string("Mendrake results")};
    print_js_aux_entry(s, 1, "", ("Run of " + time).c_str());
    TXmlTag::time = time.c_str();
    const TXmlTag run_tag(my_string("run"));
    open_table(results, run_tag);
    write_run_block(results, run_number, time);
    close_table(results, run_tag);
    write_run_block(*_AOS_, run_number, time);
}

bool Project::read_project() {
    *_AOS_ << "\nReading Project: " << project_name() << std::endl;
    initialize();
    ProfileSettings::the_settings = &the_settings;
    settings::set_message("Opening Project...");
    settings::print_message();
    PopGenetics::globalAllelicDB.destroy();
    if (newOpen()) return true;
    *_AOS_ << "Error opening project... " << settings::input_file << std::endl;
    if (failure_reason.is_null()) failure_reason = "the project file is not usable";
    return false;
}

void Project::remove_sequence_separator(std::fstream& results) {
    samples->convert_dna_upper();
    if (DataType == DNA) change_definitions(haplo_db, [](my_string& text) { text.Upper(); });
    if ((DataType != DNA && DataType != RFLP) || LocusSeparator == 0) return;
    samples->rm_separators();
    change_definitions(haplo_db,
                       [this](my_string& text) { text = without_separators(text, LocusSeparator); });
    LocusSeparator = 0;
    haplo_db.LocusSeparator = 0;
    dist_mat.LocusSeparator = 0;
    structure->LocusSeparator = 0;
    results << "\nWarning: The locus separator has been removed\n-------\n\n";
    *_AOS_ << "\nWarning: The locus separator has been removed\n\n";
}

void Project::describe_project(std::fstream& results) {
    settings& s = the_settings;
    write_project_information(results, *this, s);
    s.data_type = DataType;
    s.genotypic_data = GenotypicData;
    s.gametic_phase = GameticPhase;
    s.print_pretty_settings(results);
    *_AOS_ << std::string(72, '-') << std::endl;
}

bool Project::check_project(std::fstream& results) {
    project_valid = false;
    if (!make_run_possible()) {
        results << "\nOne of the scheduled task is not possible with these data,"
                << "for more details look into 'Mendrake_log.txt'";
        return false;
    }
    project_valid = true;
    samples->evaluate_work(the_settings);
    settings& s = the_settings;
    if (GenotypicData == 0 || (GameticPhase == 0 && s.ComputeConventionalFST != 0))
        s.IncludeIndividualLevel = 0;
    return true;
}

// The assignment test takes every genotype as of unknown phase.
void Project::assign_individuals() {
    constexpr double kInitialFrequency = 1e-10;  // until that of each sample is known
    const UnknownPhase view(the_settings, *samples);
    *_AOS_ << "\n\tComputing likelihoods of genotypes...";
    const std::clock_t begin = std::clock();
    IndLikelihood(*samples, the_settings, kInitialFrequency).run();
    *_AOS_ << " done in " << milliseconds_since(begin) << " ms\n";
}

// The analyses of each sample by itself.
//   label, heading   how the tree and the document name this level
void Project::analyse_samples(std::fstream& results, const char* label, const char* heading) {
    settings& s = the_settings;
    // Haplotypes belong to nobody; a group pass brings the task back that the checks skipped for them.
    if ((s.TaskNumber & kTaskAssignment) != 0 && samples->GenotypicData != 0) assign_individuals();
    if ((s.TaskNumber & kPerSampleTasks) == 0) return;
    TJSOut(s.js_file_name.c_str()).aux(2, label, "");
    write_level_heading(results, heading);
    results << structure_text(*structure) << '\n';
    PopGenetics::globalSubstPolymSites.clear();
    samples->compute_stuff(s);
}

// The analyses of each sample, then those between samples.
void Project::analyse_level(std::fstream& results, const char* label, const char* heading) {
    if (project_valid) analyse_samples(results, label, heading);
    if ((the_settings.TaskNumber & kBetweenSampleTasks) != 0) GenStructCalculations(&results);
}

// Every analysis on samples pooled by group. The settings are read again afterwards, which
// undoes what the pass changed in them, and what the checks changed before it.
void Project::group_pass(std::fstream& results) {
    settings& s = the_settings;
    const bool were_converted = phenotypes_converted;
    const ProfileSettings profile = *this;
    {
        Samples pooled_samples;
        Structure pooled_structure;
        pooled_samples.set_profile(*this);
        static_cast<ProfileSettings&>(pooled_structure) = *this;
        poolSamplesInGroups(*samples, *structure, pooled_samples, pooled_structure);
        pooled_samples.output_by_sample = false;
        if (pooled_samples.populations.count == 0) say_no_groups(results);
        const LevelSwap swap(*this, pooled_samples, pooled_structure);
        s.current_samples = samples;
        analyse_level(results, "Groups", "\n== ANALYSES AT THE INTRA-GROUP LEVEL");
    }
    ProfileSettings::operator=(profile);
    s.read_settings(s.settings_file_name);
    phenotypes_converted = were_converted;
}

void Project::population_pass(std::fstream& results) {
    settings& s = the_settings;
    samples->output_by_sample = true;
    s.current_samples = samples;
    haplotype_vectors_built = false;
    analyse_level(results, "Samples", "\n== ANALYSES AT THE INTRA-POPULATION LEVEL");
    if (s.DetectSelectedLoci != 0) detect_selected_loci(results);
}

void Project::detect_selected_loci(std::fstream& results) {
    results << '\n';
    write_level_heading(results,
                        "\n== DETECTION OF LOCI UNDER SELECTION FROM GENOME SCANS BASED ON F-STATISTICS");
    results << "References:\n";
    References(results, Citation::Beaumont_Nichols_1996, References::kFirst);
    References(results, Citation::Excoffier_2009, References::kLast);
    print_js_aux_entry(the_settings, 2, "_fdist2_", "Loci under selection");
    *_AOS_ << "Detecting loci under selection based on F-statistics\n";
    const std::clock_t begin = std::clock();
    if (const char* obstacle = obstacle_to_selection(*structure, DataType)) {
        results << obstacle;
        *_AOS_ << '\t' << obstacle;
    }
    tell_missing_analysis(results, "detection of loci under selection");
    *_AOS_ << "done with detection of loci under selection! (" << std::clock() - begin << " ms)\n";
}

// Closes a run whose analyses are done.
//   separator   as the project has it; the pre-pass of the next project looks at it
void Project::finish_run(std::fstream& results, char separator, cleaner& pre_pass) {
    const std::string time = end_time();
    LocusSeparator = separator;
    clean();
    pre_pass.rm_clean_files();
    settings::global_work_to_do = 0.0;
    const char* message = the_settings.stopped()
                              ? " WARNING !!! Process stopped by user. The results may be incorrect"
                              : " Computations are over";
    settings::set_message(message);
    *_AOS_ << '\n' << message << std::endl;
    settings::print_message();
    const double ticks = static_cast<double>(std::clock() - start_clock);
    elapsed_ms = static_cast<std::uint64_t>(ticks / 1000000.0 * 1000.0);
    const Duration duration = split_duration(elapsed_ms);
    write_end_block(*_AOS_, run_number, time, duration);
    write_end_block(results, run_number, time, duration);
    New_print_html_results_footer(true, xmlOutput);
}

// Closes a run that failed after its document was begun.
bool Project::abandon_run() {
    clean();
    New_print_html_results_footer(true, xmlOutput);
    return false;
}

// Closes the document of a run that an exception ended, wherever its text stood.
void Project::close_broken_document(const OpenedDocument& document, const char* reason) {
    std::fstream& results = *document.stream;
    if (!results.is_open()) return;
    if (xmlOutput) {
        // Opening it once more closes the elements that stand open and goes to their end.
        results.close();
        const char* name = the_settings.result_file_name.c_str();
        results = std::move(*open_result_document(name, true, true).stream);
        results << '\n' << TXmlTag::write(MndXmlTags::dataTag);
    }
    results.clear();
    results << "\nThe run was abandoned: " << escape_text(reason) << '\n';
    New_print_html_results_footer(true, xmlOutput);
}

// The run from the head of its document to the end.
bool Project::run_on_document(const OpenedDocument& document, cleaner& pre_pass) {
    settings& s = the_settings;
    std::fstream& results = *document.stream;
    start_document(document);
    if (!read_project()) {
        clean();
        print_error_message();
        New_print_html_results_footer(true, xmlOutput);
        return false;
    }
    print_js_doc_entry(s, 1, "_run_information", "Settings");
    remove_sequence_separator(results);
    describe_project(results);
    const char separator = LocusSeparator;
    if (!check_project(results)) return abandon_run();
    if (s.ComputeSumStatsWithinGroups != 0) group_pass(results);
    population_pass(results);
    finish_run(results, separator, pre_pass);
    return true;
}

bool Project::run() {
    settings& s = the_settings;
    failure_reason = "";
    xmlOutput = s.XMLOutput != 0;
    if (!project_valid) {
        *_AOS_ << "\n No valid project is opened...." << std::endl;
        failure_reason = "no valid project is opened";
        return false;
    }
    CleanedCopies copies;
    if (!file_opens(settings::input_file)) return refuse(kCannotOpenProject);
    use_cleaned_copy(copies.pre_pass);
    name_result_files();
    start_clock = std::clock();
    const OpenedDocument document =
        open_result_document(s.result_file_name.c_str(), s.append_results != 0, xmlOutput);
    const DocumentLoan loan(s, document.stream.get());
    try {
        return run_on_document(document, copies.pre_pass);
    } catch (...) {
        clean();  // first of all, since memory may be what is missing
        failure_reason = reason_of_exception();
    }
    print_error_message();
    _AOS_->clear();  // the exception may have come through the log
    *_AOS_ << "\nThe run was abandoned: " << failure_reason << std::endl;
    close_broken_document(document, failure_reason.c_str());
    return false;
}

}  // namespace mnd
