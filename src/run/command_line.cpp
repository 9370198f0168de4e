#include "run/command_line.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

#include "run/driver.h"
#include "run/process.h"
#include "run/project.h"

namespace mnd {

namespace {

constexpr const char* kRunFile = "mnd_run.txt";
constexpr const char* kDefaultSettings = "mnd_run.mns";

constexpr std::string_view kHelpText =
    "\n                             MENDCORE v 3.5.1.3 (17.09.11)"
    "\n                             ============================="
    "\n"
    "\n  MENDCORE is the console version of Mendrake"
    "\n"
    "\n  Usage:"
    "\n  ------"
    "\n  mendcore <project file name (*.mnp)> | <settings file (*.mns)>"
    "\n            | run_silent"
    "\n"
    "\n  The three arguments are optional. If no argument is provided"
    "\n  mendcore will look for the file mnd_run.txt where the name of a"
    "\n  project file should be indicated. If it does not find the project"
    "\n  file defined in mnd_run.txt, the present message is shown."
    "\n"
    "\n  The argument <project file name> needs to be put"
    "\n  within quotes if it contains whitepaces"
    "\n"
    "\n  The argument <settings file (*.mns)> allows one to use"
    "\n  a specific setting file for the computations "
    "\n  If no settings file is specified, it will use the default setting file"
    "\n  mnd_run.mns."
    "\n"
    "\n  run_silent: if present on the command line, mendcore will not output"
    "\n              computation progress in the console"
    "\n"
    "\n  Examples:"
    "\n    mendcore test.mnp test.mns"
    "\n       This will analyse the file 'test.mnp' using the settings defined in the"
    "\n       file 'test.mns'."
    "\n"
    "\n    mendcore"
    "\n       This will read the file 'mnd_run.txt' to see which project(s) need(s) to"
    "\n       be analysed, and which setting file to use (mnd_run.mns) or <project name>.mns."
    "\n"
    "\n";

my_string with_slashes(const char* path) {
    std::string text(path);
    std::replace(text.begin(), text.end(), '\\', '/');
    return my_string(text.c_str());
}

// The first project that the run file names, its extension replaced by ".mnp"; empty when no
// line holds ".mnp", as in a run file that translates.
my_string first_project_of_run_file() {
    std::ifstream run(kRunFile);
    std::string line;
    while (std::getline(run, line)) {
        if (line.find(".mnp") == std::string::npos) continue;
        my_string project(line.c_str());
        project.remove_extension();
        project += ".mnp";
        return project;
    }
    return my_string("");
}

// Copies a settings file over the default one. The source is read wholly before the target
// is truncated, since both may be the same file under two names.
void install_settings(const std::string& path) {
    std::ifstream source(path, std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(source)), std::istreambuf_iterator<char>());
    std::ofstream target(kDefaultSettings, std::ios::binary | std::ios::trunc);
    target << content;
}

bool abort_with_help(const my_string& message) {
    std::cout << message;
    showHelp();
    return false;
}

// Makes or finds the run file, and checks that its first project opens.
bool settle_run_file(const CommandLine& asked) {
    if (asked.project.empty()) {
        if (!file_opens(kRunFile))
            return abort_with_help(
                my_string("The necessary file 'mnd_run.txt' does not exist, aborting mendcore\n\n"));
    } else {
        make_mnd_run_txt(my_string(asked.project.c_str()));
    }
    const my_string project = first_project_of_run_file();
    if (project.length() == 0 || file_opens(project.c_str())) return true;
    my_string message("Project file '");
    message += project;
    message += asked.project.empty() ? "' listed in mnd_run.txt does not exist" : "' does not exist";
    message += ", aborting mendcore\n\n";
    return abort_with_help(message);
}

// Lets a settings file of the command line take effect through the default name.
bool settle_settings_file(const CommandLine& asked) {
    if (asked.settings.empty()) return true;
    if (!file_opens(asked.settings.c_str())) {
        my_string message("The setting file '");
        message += asked.settings.c_str();
        message += "' does not exist, aborting mendcore\n\n";
        return abort_with_help(message);
    }
    if (asked.settings != kDefaultSettings) install_settings(asked.settings);
    return true;
}

}  // namespace

CommandLine classify_arguments(int argc, const char* const* argv) {
    CommandLine asked;
    for (int i = 1; i < argc; ++i) {
        my_string lowered(argv[i]);
        lowered.to_lower();
        if (lowered.contains("run_silent")) {
            ++asked.silent;
        } else if (lowered.contains("-help")) {
            asked.help = true;
        } else if (lowered.contains(".mnp")) {
            asked.project = argv[i];
        } else if (lowered.contains(".mns")) {
            asked.settings = argv[i];
        }
    }
    return asked;
}

void showHelp() {
    std::cout << kHelpText;
}

void make_mendrake_ini(my_string exe_path) {
    std::ofstream ini("mendrake.ini", std::ios::trunc);
    ini << "false\ntrue\nfalse\nfalse\nWeb browser\nText editor\n"
        << with_slashes(exe_path.c_str()) << "\nRcmd\n"
        << with_slashes(current_directory().c_str()) << '\n';
    constexpr int kTrailingFlags = 13;
    for (int i = 0; i < kTrailingFlags; ++i)
        ini << "false\n";
    ini << '\n';
}

void make_mnd_run_txt(my_string project_path) {
    std::ofstream run(kRunFile, std::ios::trunc);
    run << with_slashes(current_directory().c_str()) << "\nuse_interf_settings\n"
        << project_path << "\n0\n0\nend\n";
}

int run_command_line(int argc, const char* const* argv) {
    const CommandLine asked = classify_arguments(argc, argv);
    for (int i = 0; i < asked.silent; ++i) {
        silentMendrake = true;
        std::cout << "Running mendcore in silent mode ...\n";
    }
    if (asked.help) {
        showHelp();
        return 0;
    }
    if (!settle_run_file(asked) || !settle_settings_file(asked)) return 0;
    make_mendrake_ini(my_string(argc > 0 ? argv[0] : ""));
    char working_directory[] = "";
    mendstart(working_directory);
    std::cout << "Mendcore terminated gracefully\n";
    free_process_paths();
    destroy_project();
    return 0;
}

}  // namespace mnd
