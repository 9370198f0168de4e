// Frame of the result document and the pages around it, and the appending of runs.
//
// Every analysis writes preformatted text into one document per project. A frameset page
// shows it beside a folder tree, which the tree script (tree_script.h) builds. A file that
// can't be opened loses its text without a message.
#pragma once

#include <fstream>
#include <memory>
#include <ostream>
#include <string>

namespace mnd {

class settings;

// Names of the files around a result document.
struct ResultFileNames {
    std::string tree_page;     // the left frame
    std::string tree_script;   // grows with each entry
    std::string main_page;     // the frameset, which is the page to open
    std::string style_sheet;   // style of the tree; the XML style sheet lies beside it
    std::string tree_library;  // draws the tree
};

// The names for a result document and the directory of the control files, which ends in a
// slash. The first three share the name of the document less its last four characters.
ResultFileNames result_file_names(const std::string& result_file_name, const std::string& program_directory);

// Name of a file behind the last slash or backslash of its path.
std::string name_without_path(const std::string& path);

// A result document, open for writing.
struct OpenedDocument {
    std::unique_ptr<std::fstream> stream;  // in a failed state when the file can't be opened
    bool continues = false;                // earlier runs stand before this one (XML only)
};

// Opens the result document of a run.
//   append   earlier runs stay in an XML document, and the stream stands where its closing root
//            tag will be overwritten. A document whose last run was cut short is completed
//            first, so that it stays well-formed. An HTML document is emptied all the same, kept
//            on purpose. Without `append` the script and the page of the tree are deleted.
OpenedDocument open_result_document(const std::string& result_file_name, bool append, bool xml);

// Begins the text of a run, once the names of its files stand in the settings: the frame of
// the document or, where runs are appended, only a new text element. Starts the tree anew, with
// its root and the entry of the log, when there is none to continue.
//   document      result of `open_result_document`
//   project_name  project file without path
void start_result_text(settings& s, const OpenedDocument& document, const std::string& project_name,
                       bool append, bool xml);

// First lines of a document.
//   style_file_name   its directory holds the XML style sheet
void New_print_html_results_header(std::ostream& results, const std::string& style_file_name, bool xml);

// Last lines of a document.
void New_print_html_results_footer(std::ostream& results, bool xml);

// Writes the frameset page and the tree page afresh, under the names in the settings.
//   project_name  project file without path
void New_print_html_frames_output(const settings& s, const std::string& project_name);

}  // namespace mnd
