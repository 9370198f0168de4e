#include "results/result_document.h"

#include <cstddef>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <vector>

#include "foundation/escape.h"
#include "results/tree_script.h"
#include "results/xml_tags.h"
#include "run/settings.h"

namespace mnd {

namespace {

// Length of the extensions ".htm" and ".xml".
constexpr std::size_t kExtensionLength = 4;

// Link to the source of the tree library, where its conditions are stated.
constexpr const char* kTreeCredit = "Folder tree";

std::string path_of(const std::string& file_name) {
    return file_name.substr(0, file_name.find_last_of("/\\") + 1);  // npos + 1 is 0
}

std::string read_file(const std::string& file_name) {
    std::ifstream in(file_name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string root_end() {
    return std::string("</") + MndXmlTags::rootTag.name.c_str() + ">";
}

// What the footer of an XML document puts behind the end of the last text element: the closing
// root tag with its line end, and three more line ends around it.
std::string closing_root() {
    return "\n\n" + root_end() + "\n\n";
}

bool ends_with_footer(const std::string& file_name) {
    const std::string footer = closing_root();
    std::ifstream in(file_name, std::ios::binary | std::ios::ate);
    const std::streamoff size = in.tellg();
    const auto length = static_cast<std::streamoff>(footer.size());
    if (size < length) return false;
    in.seekg(size - length);
    return std::string(std::istreambuf_iterator<char>(in), {}) == footer;
}

// Follows one complete tag, without its angle brackets, on the stack of open elements.
void follow_tag(std::string_view tag, std::vector<std::string>& open_elements) {
    if (tag.empty() || tag.front() == '?' || tag.front() == '!' || tag.back() == '/') return;
    if (tag.front() == '/') {
        if (!open_elements.empty()) open_elements.pop_back();
    } else {
        open_elements.emplace_back(tag.substr(0, tag.find_first_of(" \t\r\n")));
    }
}

// Drops what a cut left of a tag or an entity at the end of a document.
void drop_unfinished_markup(std::string& document) {
    const std::size_t tag = document.rfind('<');
    if (tag != std::string::npos && document.find('>', tag) == std::string::npos) document.erase(tag);
    const std::size_t entity = document.rfind('&');
    if (entity != std::string::npos && document.find(';', entity) == std::string::npos)
        document.erase(entity);
}

// Completes a document in which a run ended early: closes every element that is still open.
void complete_document(std::string& document) {
    const std::size_t root = document.rfind(root_end());
    if (root != std::string::npos) document.erase(root);
    drop_unfinished_markup(document);
    std::vector<std::string> open_elements;
    std::size_t at = 0;
    while ((at = document.find('<', at)) != std::string::npos) {
        const std::size_t last = document.find('>', at);
        follow_tag(std::string_view(document).substr(at + 1, last - at - 1), open_elements);
        at = last;
    }
    for (std::size_t i = open_elements.size(); i > 1; --i) {
        document += "</" + open_elements[i - 1] + ">";
    }
    document += closing_root();
}

// Makes sure that an XML document ends with the footer, so that its end can be overwritten.
void ensure_footer(const std::string& file_name) {
    if (ends_with_footer(file_name)) return;
    std::string document = read_file(file_name);
    complete_document(document);
    std::ofstream(file_name, std::ios::binary | std::ios::trunc) << document;
}

bool holds_text(const std::string& file_name) {
    return std::ifstream(file_name).peek() != std::ifstream::traits_type::eof();
}

std::unique_ptr<std::fstream> open_behind_last_run(const std::string& file_name) {
    ensure_footer(file_name);
    auto stream = std::make_unique<std::fstream>(file_name, std::ios::in | std::ios::out | std::ios::ate);
    stream->seekp(stream->tellp() - static_cast<std::streamoff>(closing_root().size()));
    return stream;
}

void write_frameset(std::ostream& out, const settings& s, const std::string& project_name) {
    out << "\n<html>"
        << "\n<!--Mendrake results frame file-->\n"
        << "\n<head>"
        << "\n<title> Mendrake Result Browser - " << escape_text(project_name) << "\n</title>"
        << "\n<script>"
        << "\nfunction op() { //This function is used with folders that do not open pages themselves. "
           "See online docs."
        << "\n}"
        << "\n</script>"
        << "\n</head>"
        << "\n<!-- The left frame shows a folder tree, which ftiens4.js draws. -->"
        << "\n<FRAMESET cols=\"200,*\">"
        << "\n  <FRAME src=\""
        << escape_attribute(encode_file_link(name_without_path(s.tree_file_name.c_str())))
        << "\" name=\"treeframe\">"
        << "\n  <FRAME SRC=\""
        << escape_attribute(encode_file_link(name_without_path(s.result_file_name.c_str())))
        << "\" name=\"basefrm\">"
        << "\n</FRAMESET>"
        << "\n\n"
        << "\n</html>" << '\n';
}

void write_tree_style(std::ostream& out) {
    out << "\n<style>"
        << "\n   BODY {background-color: white}"
        << "\n   TD {font-size: 8pt;"
        << "\n       font-family: verdana,helvetica;"
        << "\n\t   text-decoration: none;}"
        << "\n   A  {text-decoration: none;"
        << "\n       color: black}"
        << "\n    .specialClass {font-family:garamond; "
           "font-size:12pt;color:green;font-weight:bold;text-decoration:underline}"
        << "\n</style>";
}

void write_script_element(std::ostream& out, const std::string& source) {
    out << "\n<script src=\"" << escape_attribute(source) << "\"></script>";
}

void write_tree_page(std::ostream& out, const settings& s) {
    const std::string library = "file:///" + encode_path(s.tree_script_name.c_str());
    out << "<!-- A folder tree of the result document, drawn by ftiens4.js. -->"
        << "\n<html>"
        << "\n<head>";
    write_tree_style(out);
    out << "\n<!-- Code for browser detection -->";
    write_script_element(out, "file:///" + encode_path(path_of(s.tree_script_name.c_str())) + "ua.js");
    out << "\n<!-- Infrastructure code for the tree -->";
    write_script_element(out, library);
    out << "\n<!-- Execution of the code that actually builds the specific tree."
        << "\n     The variable foldersTree creates its structure with calls to"
        << "\n\t  gFld, insFld, and insDoc -->";
    write_script_element(out, encode_file_link(name_without_path(s.js_file_name.c_str())));
    out << "\n</head>"
        << "\n<body topmargin=16 marginheight=16>"
        << "\n<!-- Removing this link will make the script stop from working -->"
        << "\n<small><a href=\"" << escape_attribute(library) << "\" target=\"basefrm\">" << kTreeCredit
        << "</a></small>"
        << "\n<!-- Build the browser's objects and display default view of the tree. -->"
        << "\n<script>initializeDocument()</script>"
        << "\n<noscript>"
        << "\nA tree for site navigation will open here if you enable JavaScript in your browser."
        << "\n</noscript>"
        << "\n</html>" << '\n';
}

void start_tree(settings& s, const std::string& project_name, bool append) {
    TJSOut tree(s.js_file_name.c_str());
    if (!append) tree.restart();
    const std::string title = "MENDRAKE RESULTS (" + project_name + ")";
    tree.foldersTree(s.program_directory.c_str(), s.style_file_name.c_str(), title.c_str(),
                     name_without_path(s.result_file_name.c_str()).c_str());
    print_js_mendrake_log_entry(s);
}

}  // namespace

ResultFileNames result_file_names(const std::string& result_file_name, const std::string& program_directory) {
    const std::size_t length = result_file_name.size();
    const std::string base =
        result_file_name.substr(0, length > kExtensionLength ? length - kExtensionLength : 0);
    return {base + "_tree.htm", base + ".js", base + "_main.htm", program_directory + "ftie4style.css",
            program_directory + "ftiens4.js"};
}

std::string name_without_path(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

OpenedDocument open_result_document(const std::string& result_file_name, bool append, bool xml) {
    OpenedDocument document;
    if (append && xml && holds_text(result_file_name)) {
        document.stream = open_behind_last_run(result_file_name);
        document.continues = true;
        return document;
    }
    document.stream = std::make_unique<std::fstream>(result_file_name, std::ios::out);
    if (!append) {
        const ResultFileNames names = result_file_names(result_file_name, "");
        std::remove(names.tree_script.c_str());
        std::remove(names.tree_page.c_str());
    }
    return document;
}

void start_result_text(settings& s, const OpenedDocument& document, const std::string& project_name,
                       bool append, bool xml) {
    const bool continues_tree = append && std::ifstream(s.js_file_name.c_str()).is_open();
    if (!continues_tree) start_tree(s, project_name, append);
    // An XML document needs its root exactly once, whatever became of the tree script.
    const bool continues_text = xml ? document.continues : continues_tree;
    std::ostream& results = *document.stream;
    if (!continues_text) {
        New_print_html_results_header(results, s.style_file_name.c_str(), xml);
    } else if (xml) {
        results << '\n' << TXmlTag::write(MndXmlTags::dataTag) << '\n';
    } else {
        results << "\n<PRE>\n";
    }
}

void New_print_html_results_header(std::ostream& results, const std::string& style_file_name, bool xml) {
    if (!xml) {
        results << "\n<html>"
                << "\n<!--Mendrake results file-->\n"
                << "\n<head>"
                << "\n<style>"
                << "\nBODY {background-color: white; font-size: 8pt; font-family: Courier New}"
                << "\n</style>"
                << "\n</head>\n"
                << "\n<body bgcolor=white>\n"
                << "\n<PRE>" << '\n';
        return;
    }
    const std::string style_sheet =
        "file:///" + encode_path(path_of(style_file_name)) + "MendrakeStyleSheet.xsl";
    results << "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
            << "\n<?xml-stylesheet type=\"text/xsl\" href=\"" << escape_attribute(style_sheet) << "\"?>"
            << "\n<!--Mendrake results file-->\n"
            << '\n'
            << TXmlTag::write(MndXmlTags::rootTag) << '\n'
            << TXmlTag::write(MndXmlTags::dataTag) << '\n';
}

void New_print_html_results_footer(std::ostream& results, bool xml) {
    if (!xml) {
        // The body ends before the preformatted block does.
        // Kept on purpose. Test: ResultDocument.FooterClosesTheBodyBeforeThePreformattedBlock
        results << "\n</body>"
                << "\n</PRE>"
                << "\n</html>\n"
                << '\n';
        return;
    }
    results << '\n' << TXmlTag::end(MndXmlTags::dataTag) << '\n' << TXmlTag::end(MndXmlTags::rootTag) << '\n';
}

void New_print_html_frames_output(const settings& s, const std::string& project_name) {
    std::ofstream frameset(s.main_file_name.c_str());
    write_frameset(frameset, s, project_name);
    std::ofstream tree_page(s.tree_file_name.c_str());
    write_tree_page(tree_page, s);
}

}  // namespace mnd
