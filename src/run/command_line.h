// From the command line to the run file.
#pragma once

#include <string>

#include "foundation/my_string.h"

namespace mnd {

// What the arguments ask for.
struct CommandLine {
    bool help = false;
    int silent = 0;        // how often silence is asked for
    std::string project;   // the last argument that holds ".mnp"; empty when there is none
    std::string settings;  // the last argument that holds ".mns"; empty when there is none
};

// Classifies the arguments. The tests look for parts of the lower-cased argument, "run_silent",
// "-help", ".mnp" and ".mns" in this order, and the first hit decides: a path that contains
// "-help" asks for help.
CommandLine classify_arguments(int argc, const char* const* argv);

// Prints the usage text to standard output.
void showHelp();

// Writes "mendrake.ini" for front ends; nothing here reads it.
void make_mendrake_ini(my_string exe_path);

// Writes "mnd_run.txt" for one project, in place of any that stood there.
void make_mnd_run_txt(my_string project_path);

// The whole program: settles the run file and the settings file, walks the run file.
// Messages go to standard output.
// Returns: 0, also after failures; a front end learns of those from "mnd_pro.txt"
int run_command_line(int argc, const char* const* argv);

}  // namespace mnd
