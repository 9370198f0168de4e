#include "run/settings.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "foundation/data_type.h"
#include "run/errors.h"
#include "run/process.h"
#include "run/settings_table.h"

namespace mnd {

const char DistanceNames[kNumDistanceNames][40] = {
    "Pairwise difference",
    "Jukes and Cantor",
    "Kimura 2P",
    "Proportion of difference",
    "Tajima and Nei",
    "Tamura",
    "Tamura and Nei",
    "No. of different alleles (FST)",
    "Sum of squared size difference (RST)",
};

namespace {

char input_file_buffer[settings::kInputFileSize];

// Name of the distance, or null when the data type has no such method.
const char* distance_name(int data_type, int method) {
    if (data_type == DNA && method >= 0 && method <= 6) return DistanceNames[method];
    if (data_type == RFLP && method == 0) return DistanceNames[0];
    if (data_type == RFLP && method == 1) return DistanceNames[3];
    if (data_type == MICROSAT && method == 0) return DistanceNames[7];
    if (data_type == MICROSAT && method == 1) return DistanceNames[8];
    if (data_type == STANDARD) return "Pairwise differences";
    return nullptr;
}

// Share of the work done, in whole percent.
int percentage_done() {
    const double percentage = settings::global_work_done * 100.0 / settings::global_work_to_do;
    return percentage < 100.0 ? static_cast<int>(std::max(percentage, 0.0)) : 100;
}

my_string with_extension(my_string name, const char* extension) {
    name.remove_extension();
    name += extension;
    return name;
}

}  // namespace

char* settings::input_file = input_file_buffer;
double settings::global_work_to_do = 0.0;
double settings::global_work_done = 0.0;
char settings::message[kMessageSize] = "";
char settings::old_message[kMessageSize + 20] = "";
int settings::num_proj_done = 0;
my_string settings::gibbs_BatchFilename;

settings::settings() {
    reset_initial_values();
}

settings::~settings() = default;

settings& settings::operator=(const settings& other) {
    if (this == &other) return *this;
    for (const SettingKey& key : setting_keys()) {
        std::visit([&](auto field) { this->*field = other.*field; }, key.field);
    }
    copy_run_state(other);
    return *this;
}

void settings::copy_run_state(const settings& other) {
    stop_computations = other.stop_computations;
    result_stream = other.result_stream;
    data_type = other.data_type;
    genotypic_data = other.genotypic_data;
    gametic_phase = other.gametic_phase;
    current_samples = other.current_samples;
    current_structure = other.current_structure;
    current_matrix = other.current_matrix;
    current_haplo_db = other.current_haplo_db;
    current_allele_db = other.current_allele_db;
    append_results = other.append_results;
    has_em_task = other.has_em_task;
    silent_simulation = other.silent_simulation;
    print_em_results = other.print_em_results;
    gibbs_window_size = other.gibbs_window_size;
    hw_p_value = other.hw_p_value;
    ld_p_value = other.ld_p_value;
    copy_names(other);
}

void settings::copy_names(const settings& other) {
    ld_file_name = other.ld_file_name;
    result_directory = other.result_directory;
    result_file_name = other.result_file_name;
    backup_file_name = other.backup_file_name;
    project_directory = other.project_directory;
    settings_file_name = other.settings_file_name;
    program_directory = other.program_directory;
    result_file_copy = other.result_file_copy;
    tree_file_name = other.tree_file_name;
    js_file_name = other.js_file_name;
    main_file_name = other.main_file_name;
    style_file_name = other.style_file_name;
    tree_script_name = other.tree_script_name;
    run_time_stamp = other.run_time_stamp;
    graphics_directory = other.graphics_directory;
    std::copy(std::begin(other.sigm_histo_f_name), std::end(other.sigm_histo_f_name), sigm_histo_f_name);
    gibbs_stream_names = other.gibbs_stream_names;
}

void settings::reset_initial_values() {
    for (const SettingKey& key : setting_keys())
        assign_setting_number(*this, key, key.initial);
    if (genotypic_data != 0 && gametic_phase == 0) MarkovChainStepsLD = 1000;
    stop_computations = 0;
    append_results = 1;
    has_em_task = 1;
    silent_simulation = 0;
    ld_file_name = "ld_dis.xl";
}

void settings::print_distance_method(std::ostream& results, int method) {
    const char* const name = distance_name(data_type, method);
    if (name != nullptr) results << name << '\n';
}

void settings::set_message(const char* text) {
    std::snprintf(message, sizeof message, "%s", text);
}

void settings::print_message() {
    if (silentMendrake) return;
    char line[sizeof old_message];
    if (global_work_to_do > 0.0) {
        std::snprintf(line, sizeof line, "%d%% : %s", percentage_done(), message);
    } else {
        std::snprintf(line, sizeof line, "%s", message);
    }
    if (std::strcmp(line, old_message) == 0) return;
    std::cout << line << std::endl;
    std::memcpy(old_message, line, std::strlen(line) + 1);
}

void settings::print_info(const char* text) {
    set_message(text);
    *_AOS_ << text << '\n';
}

void settings::build_sigm_histo_f_name() {
    const char* const extensions[] = {".va", ".vb", ".vc", ".vd"};
    for (int i = 0; i < 4; ++i)
        sigm_histo_f_name[i] = with_extension(result_file_name, extensions[i]);
}

void settings::buildFilenamesFromCurrentProjectName(const char* project) {
    const char* const extension = XMLOutput != 0 ? ".xml" : ".htm";
    std::snprintf(input_file, kInputFileSize, "%s", project);

    project_directory = project;
    project_directory.extract_path();
    result_directory = with_extension(project, ".res/");
    my_string base(project);
    base.rm_path();
    base.remove_extension();

    const my_string in_result_folder = result_directory + base;
    result_file_name = in_result_folder + my_string(extension);
    result_file_copy = result_file_name;
    tree_file_name = in_result_folder + my_string("_tree.htm");
    main_file_name = in_result_folder + my_string("_main.htm");
    js_file_name = in_result_folder + my_string(".js");
    graphics_directory = result_directory + my_string("Graphics/");
}

}  // namespace mnd
