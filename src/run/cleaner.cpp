#include "run/cleaner.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>

#include "run/errors.h"
#include "run/process.h"

namespace mnd {

namespace {

constexpr int kLongestCleanedLine = 10000;        // characters; longer lines are passed on as they are
constexpr int kLongestSearchedLine = 1000;        // characters; longer lines name no external file
constexpr std::size_t kLongestHeldLine = 149999;  // characters that `curr_line` is given

enum FileKind : long { kProject = 0, kExternal = 1 };

// True when a part of the name leads out of the result folder: its "copy" could then be a
// file of the user, which would be overwritten and deleted.
bool leaves_folder(std::string_view name) {
    std::size_t start = 0;
    while (start <= name.size()) {
        const std::size_t end = std::min(name.find_first_of("/\\", start), name.size());
        if (name.substr(start, end - start) == "..") return true;
        start = end + 1;
    }
    return false;
}

// Deletes a copy. What is not a plain file, such as a folder, is none.
void delete_copy(const my_string& path) {
    std::error_code unreadable;
    if (!std::filesystem::is_regular_file(path.c_str(), unreadable)) return;
    if (file_opens(path.c_str())) MY_DeleteFile(path.c_str());
}

}  // namespace

bool cleaner::execute(char separator, const char* project) {
    locus_sep = separator;
    copy_path(file_name, project, static_cast<int>(sizeof file_name));
    orig_files.Add(project);
    file_kinds.Add(kProject);
    for (int i = 0; i < orig_files.count; ++i) {  // the list grows on the way
        if (file_kinds[i] == kProject) {
            clean_proj_file(i);
        } else {
            clean_haplo_file(i);
        }
    }
    return true;
}

bool cleaner::clean_proj_file(const int& i) {
    if (i < 0 || i >= orig_files.count) return false;
    const my_string source_name = orig_files[i];
    std::ifstream source(source_name.c_str());
    if (!source) return false;
    set_folders(source_name);
    MY_CreateDirectory(proj_dir.c_str());
    my_string name = source_name;
    name.rm_path();
    const my_string copy_name = proj_dir + name;
    if (would_overwrite_source(source_name, copy_name)) return false;
    clean_files.Add(copy_name);
    plan_copy(copy_name);
    std::ofstream copy(copy_name.c_str(), std::ios::trunc);
    std::string line;
    while (std::getline(source, line))
        write_project_line(copy, line);
    copy << '\n';
    if (finish_copy(copy, copy_name)) return true;
    clean_files.Flush();
    return false;
}

// proj_dir is the project path less its extension, with ".res/" behind it; proj_base is that
// path up to its last slash or backslash, looked for down to index 1: "/x" stays whole. A name
// without either lies in the working directory.
void cleaner::set_folders(const my_string& project) {
    my_string base = project;
    base.remove_extension();
    proj_dir = base + ".res/";
    const auto mark = base.view().find_last_of("/\\");
    if (mark == std::string_view::npos) {
        base = "";
    } else if (mark > 0) {
        base.remove(static_cast<int>(mark) + 1, base.length());
    }
    copy_path(proj_base, base.c_str(), static_cast<int>(sizeof proj_base));
}

void cleaner::write_project_line(std::ostream& copy, const std::string& line) {
    if (line.size() > kLongestHeldLine) {
        copy << line << '\n';
        return;
    }
    curr_line = line.c_str();
    clean_curr_line();
    line_has_external();
    line_locus_sep();
    copy << curr_line << '\n';
}

bool cleaner::clean_haplo_file(const int& i) {
    if (i < 0 || i >= orig_files.count || i >= clean_files.count) return false;
    const my_string copy_name = clean_files[i];
    const my_string source_name = my_string(proj_base) + orig_files[i];
    if (would_overwrite_source(source_name, copy_name)) return false;
    // What a broken run left behind must not be taken for the file of this run.
    delete_copy(copy_name);
    std::ifstream source(source_name.c_str());
    if (!source) return false;
    std::ofstream copy(copy_name.c_str(), std::ios::trunc);
    if (!copy) return false;
    std::string line;
    while (std::getline(source, line)) {
        if (line.size() > kLongestHeldLine) {
            copy << line << '\n';
            continue;
        }
        curr_line = line.c_str();
        clean_curr_line();
        copy << curr_line << '\n';
    }
    return finish_copy(copy, copy_name);
}

// Notes the path of a copy. False when another name for it was noted before: "./a" is "a".
bool cleaner::plan_copy(const my_string& copy_name) {
    return listed_.insert(std::filesystem::path(copy_name.c_str()).lexically_normal().string()).second;
}

// A link in the result folder may lead back to the source, which must be neither emptied now
// nor deleted at the end.
bool cleaner::would_overwrite_source(const my_string& source_name, const my_string& copy_name) {
    std::error_code missing;
    if (!std::filesystem::equivalent(source_name.c_str(), copy_name.c_str(), missing)) return false;
    foreign_.insert(copy_name.c_str());
    return true;
}

// Closes the copy. One that could not be written in full is deleted: a copy that lacks lines
// would be read as a project that lacks samples.
bool cleaner::finish_copy(std::ofstream& copy, const my_string& copy_name) {
    copy.close();
    if (copy.fail()) {
        delete_copy(copy_name);
        return false;
    }
    written_[copy_name.c_str()] = state_of(copy_name);
    return true;
}

cleaner::WrittenCopy cleaner::state_of(const my_string& copy_name) {
    std::error_code missing;
    return {std::filesystem::file_size(copy_name.c_str(), missing),
            std::filesystem::last_write_time(copy_name.c_str(), missing)};
}

// False for a file of the user, and for a file that took the name of a copy since.
bool cleaner::is_own_copy(const my_string& copy_name) const {
    if (foreign_.contains(copy_name.c_str())) return false;
    const auto written = written_.find(copy_name.c_str());
    return written == written_.end() || written->second == state_of(copy_name);
}

const my_string* cleaner::first_of(const MY_TArrayAsVector<my_string>& files) {
    return files.count == 0 ? nullptr : &files[0];
}

void cleaner::rm_clean_files() const {
    for (const my_string& copy : clean_files) {
        if (is_own_copy(copy)) delete_copy(copy);
    }
}

bool cleaner::clean_curr_line() {
    if (curr_line.length() > kLongestCleanedLine) return false;
    std::string cleaned;
    cleaned.reserve(static_cast<std::size_t>(curr_line.length()));
    for (char c : curr_line.view()) {
        if (c == '\r' || c == '\t' || (locus_sep != '\0' && c == locus_sep)) c = ' ';
        if (c == '#') break;
        if (c == ' ' && !cleaned.empty() && cleaned.back() == ' ') continue;
        cleaned.push_back(c);
    }
    if (!cleaned.empty() && cleaned.back() == ' ') cleaned.pop_back();
    curr_line = cleaned.c_str();
    return true;
}

bool cleaner::line_has_external() {
    if (curr_line.length() > kLongestSearchedLine || !curr_line.contains("EXTERN")) return false;
    const std::string_view line = curr_line.view();
    const std::size_t open = line.find('"');
    if (open == std::string_view::npos) return false;
    const std::size_t close = line.find('"', open + 1);
    if (close == std::string_view::npos) return false;
    const std::string name(line.substr(open + 1, close - open - 1));
    if (name.empty() || leaves_folder(name)) return false;
    const my_string copy_name = proj_dir + name.c_str();
    if (!plan_copy(copy_name)) return false;  // named before
    orig_files.Add(name.c_str());
    clean_files.Add(copy_name);
    file_kinds.Add(kExternal);
    return true;
}

// The rewritten line silently turns every locus of a project with another separator into one:
// this must be seen.
void cleaner::warn_of_other_separator(const my_string& upper_line) const {
    my_string value = upper_line.extract_after('=');
    value.remove_blanks();
    const bool is_blank = value.view().find_first_not_of("\"'") == std::string_view::npos;
    if (is_blank || value.contains("WHITESPACE") || value.contains("TAB")) return;
    *_AOS_ << "\nWarning: \"" << curr_line
           << "\" is read as \"LocusSeparator=WHITESPACE\", since the locus separator in force"
           << "\n(the one of the project before, or a blank for the first) is another one."
           << "\nSeparate the loci of this project by blanks to be sure of what is read.\n";
}

bool cleaner::line_locus_sep() {
    if (locus_sep == '\0') return false;
    my_string upper = curr_line;
    upper.Upper();
    if (!upper.contains("LOCUSSEPARATOR") || upper.contains("NONE")) return false;
    warn_of_other_separator(upper);
    curr_line = "LocusSeparator=WHITESPACE";
    return true;
}

}  // namespace mnd
