#include "run/driver.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>

#include "foundation/format_guard.h"
#include "foundation/number_text.h"
#include "foundation/random.h"
#include "model/population.h"
#include "run/errors.h"
#include "run/process.h"
#include "run/project.h"
#include "run/settings_reader.h"

namespace mnd {

Project* PPP = nullptr;

namespace {

constexpr const char* kSeedVariable = "MENDCORE_SEED";
constexpr long kLargestSeed = 161803398;

// Capacities of the lines of the run file, the closing zero included.
constexpr int kPathLine = 400;
constexpr int kModeLine = 59;
constexpr int kIntegerLine = 19;

// Where the settings of a project come from, and what is done with it.
enum class Mode { kDefaultSettings, kSpecificSettings, kAssociatedSettings, kExplore, kTranslate };

Mode mode_of_word(const std::string& word) {
    if (word == "translate") return Mode::kTranslate;
    if (word == "use_spe_settings") return Mode::kSpecificSettings;
    if (word == "use_ass_settings") return Mode::kAssociatedSettings;
    if (word == "explore") return Mode::kExplore;
    return Mode::kDefaultSettings;
}

// State of one walk over the run file.
struct Walk {
    std::ifstream run;  // the run file; once it is not good, the walk ends
    Mode mode = Mode::kDefaultSettings;
    bool log_open_for_project = false;  // not E.log_open, which stays set after a log is closed
    my_string log_path;                 // log of the project under way
};

bool at_end_word() {
    return std::strcmp(proj_file, "end") == 0 || std::strcmp(proj_file, "END") == 0;
}

void allocate_path(char*& path) {
    delete[] path;
    path = new char[kPathBuffer]();
}

// The words of a failure for the person at the terminal; standard output is a front end's.
void tell_failure(const my_string& reason, const my_string& log_path) {
    std::cerr << "mendcore: project '" << proj_file << "' failed: " << reason;
    if (log_path.length() > 0) std::cerr << " (log: " << log_path << ")";
    std::cerr << std::endl;
}

void open_log(Walk& walk, const my_string& directory) {
    walk.log_path = directory;
    walk.log_path += "Mendrake_log.txt";
    E.init_log_file(walk.log_path, false);
    if (E.log_open == 0) std::cerr << "mendcore: the log '" << walk.log_path << "' can't be opened\n";
    *_AOS_ << "Log file path: " << walk.log_path << "\nCore Routine Directory: " << control_directory()
           << std::endl;
}

// Seeds the generator for one project: from MENDCORE_SEED when it holds a usable value, so
// that a run can be repeated, otherwise from the clocks.
void seed_project() {
    if (const char* wanted = std::getenv(kSeedVariable)) {
        const long seed = seed_from_text(wanted);
        if (seed != 0) {
            initialize_ran3(-seed);
            return;
        }
        const auto say = [wanted](std::ostream& out) {
            out << kSeedVariable << "='" << wanted << "' is not a whole number from 1 to " << kLargestSeed
                << " (its sign is ignored); the random generator is seeded from the clock" << std::endl;
        };
        say(*_AOS_);
        say(std::cerr);
    }
    initialize_ran3(1);
}

// The project path with its extension replaced by ".mns".
void take_associated_settings() {
    my_string path(settings::input_file);
    path.remove_extension();
    path += ".mns";
    copy_path(set_file, path.c_str(), kPathBuffer);
    PPP->the_settings.settings_file_name = set_file;
}

// Numbers that the file's own reader takes for others must not pass unseen.
void warn_of_misread_settings(const settings& s, const my_string& path) {
    const FormatGuard guard(*_AOS_);
    *_AOS_ << std::defaultfloat << std::setprecision(10);
    for (const MisreadSetting& setting : misread_settings(s, path.c_str()))
        *_AOS_ << "Warning: the setting " << setting.key << '=' << setting.text << " is read as "
               << setting.value << '\n';
}

bool report_missing_settings(const Walk& walk, const char* log_text) {
    *_AOS_ << log_text << "    " << set_file << std::endl;
    tell_failure(my_string("its settings file can't be opened"), walk.log_path);
    return false;
}

// Opens the log of the project, seeds the generator and checks the settings file.
// Returns: false when the walk must end
bool start_project_log(Walk& walk) {
    my_string log_dir;
    if (!create_log_dir(MendrakeExeDirectory, proj_file, log_dir)) {
        tell_failure(my_string("the project file can't be opened"), my_string(""));
        return false;
    }
    open_log(walk, log_dir);
    // The associated settings belong to the project of this round; they are tested once the
    // path is rebuilt from it.
    const bool tested_later = walk.mode == Mode::kAssociatedSettings || walk.mode == Mode::kExplore;
    if (!tested_later && !file_opens(set_file))
        return report_missing_settings(walk, "Core Routine did not find its settings in:\n");
    seed_project();
    walk.log_open_for_project = true;
    return true;
}

// Three settings take the values of the profile that the project object still holds, from the
// project before. A settings file overrides them a moment later.
void take_settings_of_former_profile() {
    *_AOS_ << "Reading project profile section...";
    if (file_opens(proj_file)) {
        PPP->the_settings.ComputeDistanceMatrixAMOVA = PPP->GivenDistMat == 0 ? 1 : 0;
        PPP->the_settings.EpsilonValue = PPP->EpsilonValue;
        PPP->the_settings.FrequencyThreshold = PPP->FrequencyThreshold;
    }
    *_AOS_ << "done !" << std::endl;
}

// Reads one integer line of the run file into `value`, when the file is still good.
void read_integer_line(std::ifstream& run, int& value) {
    if (!run.good()) return;
    char line[kIntegerLine] = "";
    run.getline(line, kIntegerLine);
    value = my_atoi(line);
}

void explore_project(const Walk& walk) {
    *_AOS_ << "Exploring  " << proj_file << " ..." << std::endl;
    if (!PPP->explore(MendrakeExeDirectory)) {
        PPP->print_error_message();
        tell_failure(PPP->failure_reason, walk.log_path);
    }
    *_AOS_ << "done!" << std::endl;
}

void analyse_project(const Walk& walk) {
    PPP->project_valid = true;
    *_AOS_ << "Opening next project..." << proj_file << std::endl;
    const bool done = PPP->run();
    *_AOS_ << (done ? "Successful run of " : "Error during run of ") << proj_file << std::endl;
    if (!done) tell_failure(PPP->failure_reason, walk.log_path);
}

// A project that an exception has ended outside of its document. Not the batch: the next one runs.
void abandon_project(const Walk& walk, const char* reason) {
    E.result_stream = nullptr;
    _AOS_->clear();  // the exception may have come through the log
    PPP->clean();
    PPP->print_error_message();
    *_AOS_ << (walk.mode == Mode::kExplore ? "Error during exploration of " : "Error during run of ")
           << proj_file << std::endl;
    tell_failure(my_string(reason), walk.log_path);
}

void handle_project(const Walk& walk) {
    try {
        if (walk.mode == Mode::kExplore) {
            explore_project(walk);
        } else {
            analyse_project(walk);
        }
    } catch (...) {
        abandon_project(walk, reason_of_exception());
    }
}

void name_current_project() {
    copy_path(settings::input_file, proj_file, kPathBuffer);
    PPP->build_res_bac_names();
}

// One round of the walk.
// Returns: false when the walk must end
bool walk_one_project(Walk& walk) {
    name_current_project();
    if (!walk.log_open_for_project && !start_project_log(walk)) return false;
    take_settings_of_former_profile();
    if (walk.mode == Mode::kAssociatedSettings) {
        take_associated_settings();
        if (!file_opens(set_file))
            return report_missing_settings(walk, "The Core Routine did not find the associated settings:\n");
    }
    my_string settings_path(set_file);
    PPP->the_settings.read_settings(settings_path);
    warn_of_misread_settings(PPP->the_settings, settings_path);
    read_integer_line(walk.run, PPP->the_settings.append_results);
    read_integer_line(walk.run, PPP->the_settings.KeepNullDistrib);
    name_current_project();
    handle_project(walk);
    walk.run.getline(proj_file, kPathLine);
    E.CloseLog_file();
    if (PPP->the_settings.stop_computations != 0) copy_path(proj_file, "end", kPathBuffer);
    ++settings::num_proj_done;
    walk.log_open_for_project = false;
    return true;
}

// Line 1 of the run file: the directory of the control files, closed by a slash.
void read_control_directory(std::ifstream& run) {
    char line[kPathLine] = "";
    run.getline(line, kPathLine);
    std::string directory(line);
    if (!directory.empty() && directory.back() != '/' && directory.back() != '\\') directory += '/';
    copy_path(MendrakeExeDirectory, directory.c_str(), kDirectoryBuffer);
}

// Settles the settings file of the walk. In the mode of associated settings the path is
// rebuilt for each project.
void settle_set_file(Walk& walk) {
    if (walk.mode == Mode::kSpecificSettings) {
        walk.run.getline(set_file, kPathLine);
        return;
    }
    std::string path(MendrakeExeDirectory);
    path += "mnd_run.mns";
    copy_path(set_file, path.c_str(), kPathBuffer);
    PPP->the_settings.settings_file_name = set_file;
}

// Reads the lines of a run file that converts one file. No conversion is built in yet, which
// is said in the log beside the source and on standard error.
void translate_file(Walk& walk) {
    char source_format[kPathLine] = "";
    char target_format[kPathLine] = "";
    char source[kPathLine] = "";
    char target[kPathLine] = "";
    for (char* line : {source_format, target_format, source, target})
        walk.run.getline(line, kPathLine);
    my_string directory(source);
    directory.extract_path();
    open_log(walk, directory);
    seed_project();
    *_AOS_ << "The translation of files is not available\n";
    std::cerr << "mendcore: the translation of files is not available\n";
    E.CloseLog_file();
}

void walk_projects(Walk& walk) {
    settle_set_file(walk);
    walk.run.getline(proj_file, kPathLine);
    while (!at_end_word() && walk.run.good()) {
        if (!walk_one_project(walk)) return;
    }
    if (!at_end_word())
        std::cerr << "mendcore: the run file '" << run_file << "' stops before its last line\n";
}

// Walks the run file, which is open.
void walk_run_file(Walk& walk) {
    read_control_directory(walk.run);
    settings::num_proj_done = 0;
    char word[kModeLine] = "";
    walk.run.getline(word, kModeLine);
    walk.mode = mode_of_word(word);
    if (walk.mode == Mode::kTranslate) {
        translate_file(walk);
    } else {
        walk_projects(walk);
    }
}

}  // namespace

long seed_from_text(const char* text) {
    const char* digits = text + (*text == '-' || *text == '+' ? 1 : 0);
    constexpr std::size_t kMostDigits = 9;
    if (*digits != 0) digits += std::min(std::strspn(digits, "0"), std::strlen(digits) - 1);
    const std::size_t length = std::strlen(digits);
    if (length == 0 || length > kMostDigits || std::strspn(digits, "0123456789") != length) return 0;
    const long seed = std::strtol(digits, nullptr, 10);
    return seed >= 1 && seed <= kLargestSeed ? seed : 0;
}

bool create_log_dir(char* dir, char* project_path, my_string& log_dir) {
    if (!file_opens(project_path)) {
        std::ofstream status(std::string(dir) + "mnd_pro.txt", std::ios::trunc);
        status << "error\n";
        return false;
    }
    log_dir = project_path;
    log_dir.remove_extension();
    log_dir += ".res/";
    MY_CreateDirectory(log_dir.c_str());
    return true;
}

int mendstart(char* dir) {
    numSamplesAnalysed = 0;
    destroy_project();
    PPP = new Project();
    PopGenetics::globalAllelicDB.destroy();
    delete[] MendrakeExeDirectory;
    MendrakeExeDirectory = new char[kDirectoryBuffer]();
    copy_path(MendrakeExeDirectory, dir, kDirectoryBuffer);
    allocate_path(proj_file);
    allocate_path(set_file);
    allocate_path(run_file);
    copy_path(run_file, (std::string(MendrakeExeDirectory) + "mnd_run.txt").c_str(), kPathBuffer);

    Walk walk;
    walk.run.open(run_file);
    if (!walk.run.is_open()) return PPP->the_settings.data_type;
    try {
        walk_run_file(walk);
    } catch (...) {
        // Between two projects nothing can be saved but the word of it.
        tell_failure(my_string(reason_of_exception()), walk.log_path);
    }
    return PPP->the_settings.data_type;
}

void destroy_project() {
    delete PPP;
    PPP = nullptr;
}

}  // namespace mnd
