#include "results/tree_script.h"

#include <algorithm>

#include "foundation/escape.h"
#include "results/result_document.h"
#include "results/xml_tags.h"
#include "run/settings.h"

namespace mnd {

namespace {

// Name of the log in each result folder.
constexpr const char* kLogFileName = "Mendrake_log.txt";

// The variable of the script that holds the last folder of a level.
std::string folder_variable(int level) {
    return "aux" + std::to_string(level);
}

std::string tabs(int level) {
    return std::string(static_cast<std::size_t>(std::max(level, 0)), '\t');
}

std::string blanks_encoded(std::string_view target) {
    std::string out;
    for (const char c : target) {
        if (c == ' ') {
            out += "%20";
        } else {
            out += c;
        }
    }
    return out;
}

// What closes an entry: its label, its link, and the end of the two calls.
std::string rest_of_entry(const char* label, const char* target) {
    return escape_script(label) + "\", \"" + escape_script(blanks_encoded(target)) + "\"))\n";
}

std::string link_into_document(const settings& s, std::string_view anchor) {
    return encode_file_link(name_without_path(s.result_file_name.c_str())) + "#" + encode_anchor(anchor);
}

void write_anchor_of_entry(settings& s, std::string_view anchor) {
    if (s.result_stream == nullptr) return;
    write_anchor(*s.result_stream, my_string(std::string(anchor).c_str()));
}

}  // namespace

TJSOut::TJSOut(const char* js_file_name) : js_file_name_(js_file_name) {}

void TJSOut::restart() {
    if (!htmlOutput) return;
    js_stream_.open(js_file_name_, std::ios::out | std::ios::trunc);
    js_stream_.close();
}

void TJSOut::append(const std::string& text) {
    if (!htmlOutput) return;
    js_stream_.clear();
    js_stream_.open(js_file_name_, std::ios::out | std::ios::app);
    js_stream_ << text;
    js_stream_.close();
}

void TJSOut::foldersTree(const char* icon_path, const char* /*style_path*/, const char* title,
                         const char* tree_target) {
    append(
        "\nUSETEXTLINKS = 1"
        "\nSTARTALLOPEN = 0"
        "\nWRAPTEXT = 1"
        "\nPRESERVESTATE = 0"
        "\nHIGHLIGHT = 1"
        "\nICONPATH = 'file:///" +
        encode_path(icon_path) +
        "'    //change if the gif's folder is a subfolder, for example: 'images/'"
        "\n\nfoldersTree = gFld(\"<i>" +
        escape_script(title) + "</i>\", \"" + encode_file_link(tree_target) + "\")\n");
}

void TJSOut::doc(int level, const char* label, const char* target) {
    const std::string parent = level == 0 ? "foldersTree" : folder_variable(level);
    append(tabs(level) + "insDoc(" + parent + ", gLnk(\"R\", \"" + rest_of_entry(label, target));
}

void TJSOut::aux(int level, const char* label, const char* target) {
    const std::string parent = level == 1 ? "foldersTree" : folder_variable(level - 1);
    append(tabs(level) + folder_variable(level) + " = insFld(" + parent + ", gFld(\"" +
           rest_of_entry(label, target));
}

std::string run_anchor_name(const settings& s, std::string_view suffix) {
    my_string stamp(s.run_time_stamp);
    stamp.remove_blanks();
    stamp.convert_to_underline();
    return stamp.c_str() + std::string(suffix);
}

void print_doc_anchor(settings& s, int level, std::string_view anchor, const char* label) {
    if (!htmlOutput) return;
    write_anchor_of_entry(s, anchor);
    TJSOut(s.js_file_name.c_str()).doc(level, label, link_into_document(s, anchor).c_str());
}

void print_aux_anchor(settings& s, int level, std::string_view anchor, const char* label) {
    if (!htmlOutput) return;
    write_anchor_of_entry(s, anchor);
    TJSOut(s.js_file_name.c_str()).aux(level, label, link_into_document(s, anchor).c_str());
}

void print_js_doc_entry(settings& s, int level, const char* suffix, const char* label) {
    print_doc_anchor(s, level, run_anchor_name(s, suffix), label);
}

void print_js_aux_entry(settings& s, int level, const char* suffix, const char* label) {
    print_aux_anchor(s, level, run_anchor_name(s, suffix), label);
}

void print_js_mendrake_log_entry(settings& s) {
    TJSOut(s.js_file_name.c_str()).doc(0, "Mendrake log file", kLogFileName);
}

void print_population_anchor(int level, settings& s, const char* suffix, int sample_number,
                             const char* sample_name) {
    const std::string ending = "_" + std::string(suffix) + std::to_string(sample_number);
    print_doc_anchor(s, level, run_anchor_name(s, ending), sample_name);
}

void print_computation_anchor(int level, settings& s, const char* suffix, const char* label,
                              bool group_level) {
    const std::string ending = (group_level ? "_gr_comp_sum_" : "_comp_sum_") + std::string(suffix);
    print_doc_anchor(s, level, run_anchor_name(s, ending), label);
}

}  // namespace mnd
