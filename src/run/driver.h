// The walk over the run file: one log, one seed, one set of settings per project.
#pragma once

#include "foundation/my_string.h"

namespace mnd {

class Project;

extern Project* PPP;  // owned: the one project of the process; made by mendstart

// Walks the run file `dir` + "mnd_run.txt" and handles each project that it lists. A project
// that fails, whatever the reason, does not stop the others; one line on standard error then
// names it, the reason and its log.
//   dir      directory of the control files, with a trailing slash, or the empty text
// Returns:   the data type code of the settings
// Environment: MENDCORE_SEED=n, 1 <= |n| <= 161803398, seeds every project with n in place of
//              the clock; an unusable value is said in the log and on standard error
int mendstart(char* dir);

// Releases `PPP`.
void destroy_project();

// Prepares the result folder of a project: `log_dir` becomes the project path less its
// extension, with ".res/" behind it.
// Returns: false when the project file can't be opened; "mnd_pro.txt" in `dir` then holds "error"
bool create_log_dir(char* dir, char* project_path, my_string& log_dir);

// The seed that the text asks for: a whole number, its sign ignored, 1 to 161803398.
// Returns: 0 when it is none
long seed_from_text(const char* text);

}  // namespace mnd
