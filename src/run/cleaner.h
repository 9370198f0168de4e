// The pre-pass: cleaned copies of a project file and of the external files that it names.
//
// The readers of a project work on copies in the result folder that hold no CR, no TAB, no
// comment and no trailing blank, and whose runs of blanks are single blanks. Lines keep their
// numbers, so that messages speak of the lines of the source file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "foundation/arrays.h"
#include "foundation/my_string.h"

namespace mnd {

// Lives for one run: execute() makes the copies, rm_clean_files() deletes them.
class cleaner {
public:
    char file_name[400] = "";                        // the file given to execute, cut to fit
    my_string curr_line;                             // the line under work
    MY_TArrayAsVector<my_string> orig_files{5, 5};   // files to clean; entry 0 is the project,
                                                     // the others as named behind EXTERN
    MY_TArrayAsVector<my_string> clean_files{5, 5};  // paths of their copies
    MY_TArrayAsVector<long> file_kinds{5, 5};        // per file: 0 project, 1 external file
    char locus_sep = '\0';                           // separator given to execute; 0: none
    long flag = 0;                                   // set by the caller, not used
    char proj_base[400] = "//";                      // folder of the project
    my_string proj_dir;                              // result folder, ending in ".res/"

    // Cleans the project file and every external file that it names, into the result folder,
    // which is made when missing.
    //   separator   counts as a blank in every line of every file, names and titles included;
    //               a "LocusSeparator" line of the project becomes "LocusSeparator=WHITESPACE".
    //               It is the separator carried over from the project before; 0 for none.
    //   project     path of the project file
    // Returns:      always true; get_clean_proj() is null when the project could not be cleaned
    bool execute(char separator, const char* project);

    // Cleans file i as a project. False when it or its copy can't be opened or written; no
    // copy is left then, and `clean_files` is empty. False, too, when its copy would be the
    // file itself, by way of a link: the file stays as it is.
    bool clean_proj_file(const int& i);
    // Cleans file i as an external file, found beside the project. False when it has no
    // entry in `clean_files`, or can't be opened or written, or would be its own copy; no
    // copy is left then.
    bool clean_haplo_file(const int& i);
    // Further names of the same operation.
    bool clean_matrix_file(const int& i) { return clean_haplo_file(i); }
    bool clean_pop_file(const int& i) { return clean_haplo_file(i); }

    const my_string& get_proj_dir() const { return proj_dir; }
    // Path of the project, and of its copy; null when there is none.
    const my_string* get_orig_proj() const { return first_of(orig_files); }
    const my_string* get_clean_proj() const { return first_of(clean_files); }

    // Deletes each copy that can be opened. A file of that name which was written after the
    // copy was made is a result of the run, not a copy, and stays; so does a file of the user
    // that a link shows as its own copy.
    void rm_clean_files() const;

    // Steps of the cleaning, each on `curr_line`.

    // CR, TAB and the separator become blanks, a number sign ends the line, also inside
    // quotes; runs of blanks become one blank, and a trailing one goes.
    // False, with nothing done, for a line of 10001 characters or more.
    bool clean_curr_line();
    // Notes the name between the first two double quotes of a line with "EXTERN" as a further
    // file to clean. False when there is nothing to note, or the line has 1001 characters or more.
    bool line_has_external();
    // Rewrites a line that sets the locus separator, to fit the separator having become
    // blanks. False when the line stays.
    bool line_locus_sep();

private:
    // What a copy looked like when it had been written.
    struct WrittenCopy {
        std::uintmax_t size;
        std::filesystem::file_time_type time;
        bool operator==(const WrittenCopy&) const = default;
    };

    std::unordered_set<std::string> listed_;                // paths of the copies already planned
    std::unordered_map<std::string, WrittenCopy> written_;  // by path, the copies that were made
    std::unordered_set<std::string> foreign_;               // paths that show a file of the user

    bool plan_copy(const my_string& copy_name);
    bool would_overwrite_source(const my_string& source_name, const my_string& copy_name);
    bool finish_copy(std::ofstream& copy, const my_string& copy_name);
    bool is_own_copy(const my_string& copy_name) const;
    static WrittenCopy state_of(const my_string& copy_name);
    void warn_of_other_separator(const my_string& upper_line) const;
    static const my_string* first_of(const MY_TArrayAsVector<my_string>& files);
    void set_folders(const my_string& project);
    void write_project_line(std::ostream& copy, const std::string& line);
};

}  // namespace mnd
