// Variables of the process, and its few dealings with the file system.
#pragma once

#include "foundation/my_string.h"

namespace mnd {

// Set by "run_silent": no progress text on standard output.
extern bool silentMendrake;

// Capacities of the path buffers, the closing zero included.
inline constexpr int kPathBuffer = 400;
inline constexpr int kDirectoryBuffer = 401;

// Paths of the walk over the run file. Each is null until the walk allocates it.
extern char* proj_file;             // owned: project being handled; "end" or "END" stops the walk
extern char* set_file;              // owned: settings file in force
extern char* run_file;              // owned: the run file
extern char* MendrakeExeDirectory;  // owned: directory of the control files, with a trailing slash
                                    // once line 1 of the run file has been read

// Samples analysed in this walk; 0 when a walk begins.
extern int numSamplesAnalysed;

// Copies `text` into a path buffer of `capacity` bytes; a longer text is cut.
void copy_path(char* buffer, const char* text, int capacity);

// Releases the four path buffers; their pointers become null.
void free_process_paths();

// The control directory, or the empty text before a walk has set it.
const char* control_directory();

// The working directory of the process; empty on failure.
my_string current_directory();

// Makes the folder with mode 0755. An existing folder and a failure are both ignored.
// Returns: always true
bool MY_CreateDirectory(char const* path);

// Deletes a file; a missing file is no failure.
void MY_DeleteFile(char const* path);

// True when the file opens for reading.
bool file_opens(const char* path);

// Turns every backslash of a path into a slash.
void backslashes_to_slashes(char* path);

}  // namespace mnd
