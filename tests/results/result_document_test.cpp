#include "results/result_document.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/escape.h"
#include "results/citations.h"
#include "results/result_folder.h"
#include "results/tree_script.h"

namespace mnd {
namespace {

constexpr const char* kXmlHeader =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>"
    "\n<?xml-stylesheet type=\"text/xsl\" href=\"file:////opt/my%20programs/MendrakeStyleSheet.xsl\"?>"
    "\n<!--Mendrake results file-->\n"
    "\n<Mendrake>\n"
    "\n<data>\n"
    "\n";
constexpr const char* kXmlFooter = "\n</data>\n\n</Mendrake>\n\n";
constexpr const char* kHtmlHeader =
    "\n<html>"
    "\n<!--Mendrake results file-->\n"
    "\n<head>"
    "\n<style>"
    "\nBODY {background-color: white; font-size: 8pt; font-family: Courier New}"
    "\n</style>"
    "\n</head>\n"
    "\n<body bgcolor=white>\n"
    "\n<PRE>\n";

// Names that a user may choose and that mean something in markup, scripts or links.
const std::vector<std::string>& hostile_names() {
    static const std::vector<std::string> names = {
        "A&B",
        "<data>",
        "</data>",
        "a \"quoted\" name",
        "]]>",
        "&amp;",
        "-->",
        "<?xml?>",
        "it's 50% #1?",
        "back\\slash",
        "S\xe3o Tom\xe9",
        "\xd1\x8f\xd0\xb7",
        "\x01\x1b",
        "</script><script>",
        "Reference: <i>",
    };
    return names;
}

class ResultDocument : public ResultFolder {
protected:
    // The texts of a small run, as the pipeline and the analyses write them around `name`.
    void write_run(const std::string& project, const std::string& name, bool append, bool xml) {
        xmlOutput = xml;
        OpenedDocument document = open_result_document(s.result_file_name.c_str(), append, xml);
        s.result_stream = document.stream.get();
        New_print_html_frames_output(s, project);
        start_result_text(s, document, project, append, xml);
        std::ostream& out = *document.stream;
        out << THeader{"Mendrake results"};
        print_js_aux_entry(s, 1, "", "Run of 05/03/24 at 10:11:12");
        TXmlTag::time = "05/03/24 at 10:11:12";
        open_table(out, TXmlTag("run"));
        out << "RUN NUMBER 1\n";
        close_table(out, TXmlTag("run"));
        print_population_anchor(1, s, "pop_", 0, name.c_str());
        out << "== Sample : \t" << escape_text(name) << "\nPr(rand F &lt;= obs F)\n";
        open_table(out, TXmlTag("obsHapFreq", "samp", name.c_str()));
        out << escaped_left(name, 20) << "1.0\n";
        close_table(out, TXmlTag("obsHapFreq", "samp", name.c_str()));
        References(out, Citation::Nei_1987);
        References(out, Citation::Tajima_1983, References::kFirst);
        References(out, Citation::Tajima_1989, References::kMiddle);
        References(out, Citation::Fu_1997, References::kLast);
        New_print_html_results_footer(out, xml);
        s.result_stream = nullptr;
    }

    std::string xmllint(const std::string& options, const std::string& file) const {
        return output_of("xmllint " + options + " " + quoted(path(file)));
    }
};

TEST_F(ResultDocument, HtmlHeader) {
    std::ostringstream out;
    New_print_html_results_header(out, "/opt/my programs/ftie4style.css", false);
    EXPECT_EQ(out.str(), kHtmlHeader);
}

TEST_F(ResultDocument, XmlHeader) {
    std::ostringstream out;
    New_print_html_results_header(out, "/opt/my programs/ftie4style.css", true);
    EXPECT_EQ(out.str(), kXmlHeader);
}

TEST_F(ResultDocument, FooterClosesTheBodyBeforeThePreformattedBlock) {
    std::ostringstream out;
    New_print_html_results_footer(out, false);
    EXPECT_EQ(out.str(), "\n</body>\n</PRE>\n</html>\n\n");
}

TEST_F(ResultDocument, XmlFooter) {
    std::ostringstream out;
    New_print_html_results_footer(out, true);
    EXPECT_EQ(out.str(), kXmlFooter);
}

TEST_F(ResultDocument, NamesShareTheBaseOfTheDocument) {
    const ResultFileNames names = result_file_names("/a b/p.res/p.x.htm", "/opt/");
    EXPECT_EQ(names.tree_page, "/a b/p.res/p.x_tree.htm");
    EXPECT_EQ(names.tree_script, "/a b/p.res/p.x.js");
    EXPECT_EQ(names.main_page, "/a b/p.res/p.x_main.htm");
    EXPECT_EQ(names.style_sheet, "/opt/ftie4style.css");
    EXPECT_EQ(names.tree_library, "/opt/ftiens4.js");
    EXPECT_EQ(result_file_names("x", "").tree_script, ".js");
}

TEST_F(ResultDocument, NameWithoutPathTakesBothSlashes) {
    EXPECT_EQ(name_without_path("/a/b.c/d e.htm"), "d e.htm");
    EXPECT_EQ(name_without_path("C:\\a\\b.htm"), "b.htm");
    EXPECT_EQ(name_without_path("b.htm"), "b.htm");
    EXPECT_EQ(name_without_path("a/"), "");
}

TEST_F(ResultDocument, FramesetPageOfANameWithBlanks) {
    name_files("my project.htm");
    New_print_html_frames_output(s, "my project.mnp");
    EXPECT_EQ(content("my project_main.htm"),
              "\n<html>"
              "\n<!--Mendrake results frame file-->\n"
              "\n<head>"
              "\n<title> Mendrake Result Browser - my project.mnp"
              "\n</title>"
              "\n<script>"
              "\nfunction op() { //This function is used with folders that do not open pages themselves. See "
              "online "
              "docs."
              "\n}"
              "\n</script>"
              "\n</head>"
              "\n<!-- The left frame shows a folder tree, which ftiens4.js draws. -->"
              "\n<FRAMESET cols=\"200,*\">"
              "\n  <FRAME src=\"my%20project_tree.htm\" name=\"treeframe\">"
              "\n  <FRAME SRC=\"my%20project.htm\" name=\"basefrm\">"
              "\n</FRAMESET>"
              "\n\n"
              "\n</html>\n");
}

TEST_F(ResultDocument, TreePageOfANameWithBlanks) {
    name_files("my project.htm");
    New_print_html_frames_output(s, "my project.mnp");
    EXPECT_EQ(content("my project_tree.htm"),
              "<!-- A folder tree of the result document, drawn by ftiens4.js. -->"
              "\n<html>"
              "\n<head>"
              "\n<style>"
              "\n   BODY {background-color: white}"
              "\n   TD {font-size: 8pt;"
              "\n       font-family: verdana,helvetica;"
              "\n\t   text-decoration: none;}"
              "\n   A  {text-decoration: none;"
              "\n       color: black}"
              "\n    .specialClass {font-family:garamond; font-size:12pt;color:green;font-weight:bold;"
              "text-decoration:underline}"
              "\n</style>"
              "\n<!-- Code for browser detection -->"
              "\n<script src=\"file:////opt/my%20programs/ua.js\"></script>"
              "\n<!-- Infrastructure code for the tree -->"
              "\n<script src=\"file:////opt/my%20programs/ftiens4.js\"></script>"
              "\n<!-- Execution of the code that actually builds the specific tree."
              "\n     The variable foldersTree creates its structure with calls to"
              "\n\t  gFld, insFld, and insDoc -->"
              "\n<script src=\"my%20project.js\"></script>"
              "\n</head>"
              "\n<body topmargin=16 marginheight=16>"
              "\n<!-- Removing this link will make the script stop from working -->"
              "\n<small><a href=\"file:////opt/my%20programs/ftiens4.js\" target=\"basefrm\">Folder "
              "tree</a></small>"
              "\n<!-- Build the browser's objects and display default view of the tree. -->"
              "\n<script>initializeDocument()</script>"
              "\n<noscript>"
              "\nA tree for site navigation will open here if you enable JavaScript in your browser."
              "\n</noscript>"
              "\n</html>\n");
}

TEST_F(ResultDocument, EveryLinkOfAHostileFileNameLeadsToTheFile) {
    name_files("50% & \"#1\".htm");
    New_print_html_frames_output(s, "50% & \"#1\".mnp");
    const std::string frameset = content("50% & \"#1\"_main.htm");
    EXPECT_NE(frameset.find("<FRAME SRC=\"50%25%20&amp;%20%22%231%22.htm\""), std::string::npos) << frameset;
    EXPECT_NE(frameset.find("Browser - 50% &amp; \"#1\".mnp"), std::string::npos) << frameset;
    EXPECT_NE(content("50% & \"#1\"_tree.htm").find("<script src=\"50%25%20&amp;%20%22%231%22.js\">"),
              std::string::npos);
}

TEST_F(ResultDocument, NewRunStartsDocumentAndTree) {
    write_run("my project.mnp", "One", false, false);
    EXPECT_EQ(content("project.htm").rfind(std::string(kHtmlHeader) + "\nMendrake results\n", 0), 0u);
    const std::string script = content("project.js");
    EXPECT_NE(
        script.find("foldersTree = gFld(\"<i>MENDRAKE RESULTS (my project.mnp)</i>\", \"project.htm\")\n"
                    "insDoc(foldersTree, gLnk(\"R\", \"Mendrake log file\", \"Mendrake_log.txt\"))\n"
                    "\taux1 = insFld(foldersTree,"),
        std::string::npos)
        << script;
}

TEST_F(ResultDocument, RunWithoutAppendingForgetsEarlierOnes) {
    write_run("p.mnp", "First", true, true);
    write_run("p.mnp", "Second", false, true);
    EXPECT_EQ(content("project.htm").find("First"), std::string::npos);
    EXPECT_EQ(content("project.js").find("First"), std::string::npos);
}

TEST_F(ResultDocument, OpeningWithoutAppendingDeletesTheTree) {
    std::ofstream(path("project.js")) << "x";
    std::ofstream(path("project_tree.htm")) << "x";
    open_result_document(path("project.htm"), false, true);
    EXPECT_FALSE(std::filesystem::exists(path("project.js")));
    EXPECT_FALSE(std::filesystem::exists(path("project_tree.htm")));
}

// Earlier entries of the tree then point at anchors that are gone.
TEST_F(ResultDocument, AppendingEmptiesAnHtmlDocumentYetKeepsTheTree) {
    write_run("p.mnp", "First", true, false);
    write_run("p.mnp", "Second", true, false);
    const std::string document = content("project.htm");
    EXPECT_EQ(document.find("First"), std::string::npos);
    EXPECT_EQ(document.rfind("\n<PRE>\n\nMendrake results\n", 0), 0u) << document.substr(0, 80);
    const std::string script = content("project.js");
    EXPECT_NE(script.find("First"), std::string::npos);
    EXPECT_NE(script.find("Second"), std::string::npos);
    EXPECT_EQ(script.find("foldersTree = "), script.rfind("foldersTree = "));
}

TEST_F(ResultDocument, AppendedXmlRunBeginsBehindTheLastTextElement) {
    const std::string file = path("project.htm");
    std::ofstream(file) << kXmlHeader << "text" << kXmlFooter;
    std::ofstream(path("project.js")) << "x";
    OpenedDocument document = open_result_document(file, true, true);
    EXPECT_TRUE(document.continues);
    start_result_text(s, document, "p.mnp", true, true);
    *document.stream << "more" << kXmlFooter;
    document.stream.reset();
    EXPECT_EQ(content("project.htm"), std::string(kXmlHeader) + "text\n</data>\n<data>\n\nmore" + kXmlFooter);
    EXPECT_EQ(content("project.js"), "x");
}

TEST_F(ResultDocument, TwoAppendedXmlRunsAreOneWellFormedDocument) {
    write_run("p.mnp", "First", true, true);
    write_run("p.mnp", "Second", true, true);
    EXPECT_EQ(xmllint("--noout", "project.htm"), "");
    EXPECT_EQ(xmllint("--xpath 'count(/Mendrake)'", "project.htm"), "1\n");
    EXPECT_EQ(xmllint("--xpath 'count(/Mendrake/run)'", "project.htm"), "2\n");
    EXPECT_EQ(xmllint("--xpath 'count(/Mendrake/Reference)'", "project.htm"), "8\n");
}

TEST_F(ResultDocument, XmlIsWellFormedWhateverBecameOfTheTreeScript) {
    write_run("p.mnp", "First", true, true);
    std::filesystem::remove(path("project.js"));
    write_run("p.mnp", "Second", true, true);
    EXPECT_EQ(xmllint("--noout", "project.htm"), "");
    std::filesystem::remove(path("project.htm"));
    write_run("p.mnp", "Third", true, true);
    EXPECT_EQ(xmllint("--noout", "project.htm"), "");
    EXPECT_EQ(xmllint("--xpath 'count(/Mendrake/run)'", "project.htm"), "1\n");
}

TEST_F(ResultDocument, XmlIsWellFormedForEveryName) {
    for (const std::string& name : hostile_names()) {
        write_run(name + ".mnp", name, false, true);
        write_run(name + ".mnp", name, true, true);
        EXPECT_EQ(xmllint("--noout", "project.htm"), "") << name;
    }
}

TEST_F(ResultDocument, XmlGivesEveryNameBackAsItWas) {
    for (const std::string name : {"A&B", "<data>", "]]>", "a \"quoted\" name", "&amp;", "back\\slash"}) {
        write_run("p.mnp", name, false, true);
        EXPECT_EQ(xmllint("--xpath 'string(//obsHapFreq/@samp)'", "project.htm"), name + "\n");
        EXPECT_EQ(xmllint("--xpath 'substring-before(string(//obsHapFreq), \"1.0\")'", "project.htm"),
                  "\n" + name + std::string(20 - name.size(), ' ') + "\n");
    }
}

TEST_F(ResultDocument, HtmlGivesEveryNameBackAsItWas) {
    for (const std::string name : {"A&B", "<data>", "</PRE>", "-->", "&amp;", "<script>"}) {
        write_run("p.mnp", name, false, false);
        const std::string text = xmllint("--html --recover --xpath 'string(//pre)'", "project.htm");
        EXPECT_NE(text.find("== Sample : \t" + name + "\n"), std::string::npos) << text;
        EXPECT_EQ(content("project.htm").find("</data>"), std::string::npos);
    }
}

TEST_F(ResultDocument, TreeScriptHoldsEachEntryOnOneLine) {
    for (const std::string name : {"a\nb", "a\r\nb", "\"", "\\", "\\\""}) {
        write_run("p.mnp", name, false, false);
        const std::string script = content("project.js");
        const std::string entry = "insDoc(aux1, gLnk(\"R\", \"" + escape_script(name) +
                                  "\", \"project.htm#05_03_24at10_11_12_pop_0\"))\n";
        EXPECT_TRUE(script.ends_with(entry)) << script;
    }
}

// A run that was killed leaves a document without an end, at any byte.
TEST_F(ResultDocument, AppendingToADocumentThatWasCutShortKeepsItWellFormed) {
    write_run("p.mnp", "A & <B>", false, true);
    const std::string whole = content("project.htm");
    const std::size_t root = whole.find("<Mendrake>") + 10;
    for (std::size_t length = root; length < whole.size(); length += 7) {
        std::ofstream(path("project.htm"), std::ios::trunc) << whole.substr(0, length);
        write_run("p.mnp", "Second", true, true);
        ASSERT_EQ(xmllint("--noout", "project.htm"), "") << length;
        ASSERT_NE(content("project.htm").find("Second"), std::string::npos);
    }
}

TEST_F(ResultDocument, UnwritableDocumentIsPassedOver) {
    OpenedDocument document = open_result_document(path("no such folder/x.xml"), true, true);
    ASSERT_NE(document.stream, nullptr);
    EXPECT_FALSE(document.stream->is_open());
    EXPECT_FALSE(document.continues);
    *document.stream << "lost";
    EXPECT_FALSE(std::filesystem::exists(path("no such folder")));
}

TEST(StyleSheet, IsWellFormed) {
    const std::string command =
        std::string("xmllint --noout '") + MENDCORE_SOURCE_DIR + "/share/MendrakeStyleSheet.xsl'";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

}  // namespace
}  // namespace mnd
