// Frame of the result document and the pages around it, and the appending of runs.
//
// Every analysis writes preformatted text into one document per project. A frameset page
// shows it beside a folder tree, which the tree script (tree_script.h) builds.
#pragma once

#include <fstream>
#include <ios>
#include <istream>
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

// A result document, open for writing.
struct OpenedDocument {
    std::unique_ptr<std::fstream> stream;  // fails to write when the file can't be opened
    bool continues = false;                // earlier runs stand before this one (XML only)
};

// Opens the result document of a run. Appending keeps an XML document and positions the stream
// so that its closing root tag is overwritten; an HTML document is emptied all the same, kept on
// purpose. Without `append` the tree script and the tree page of earlier runs are deleted.
OpenedDocument open_result_document(const settings& s, bool append, bool xml);

// Place where a further run of an XML document begins: just behind the last "</data>". A
// document that does not end with the footer (its run was cut short) is continued at its end.
// The stream's position is left undefined.
std::streamoff next_run_position(std::istream& document);

// Begins the text of a run, and the tree when there is none to continue: the frame of the
// document or, in an appended run, only a new text element.
//   project_name  project file without path
//   document      result of `open_result_document`
//   append        runs are appended
void start_result_text(settings& s, const std::string& project_name, const OpenedDocument& document,
                       bool append, bool xml);

// First lines of a document.
//   style_file_name   its directory holds the XML style sheet
void New_print_html_results_header(std::ostream& results, const std::string& style_file_name, bool xml);

// Last lines of a document.
void New_print_html_results_footer(std::ostream& results, bool xml);

// Writes the frameset page and the tree page afresh.
//   project_name  project file without path
void New_print_html_frames_output(const settings& s, const std::string& project_name);

}  // namespace mnd
