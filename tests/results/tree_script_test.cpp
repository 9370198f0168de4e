#include "results/tree_script.h"

#include <gtest/gtest.h>

#include <string>

#include "results/result_folder.h"

namespace mnd {
namespace {

class TreeScript : public ResultFolder {
protected:
    std::string script() const { return content("project.js"); }
    TJSOut tree() const { return TJSOut(path("project.js").c_str()); }
};

TEST_F(TreeScript, RootComesBehindTheSettingsOfTheTree) {
    tree().foldersTree("C:\\my dir\\", "unused.css", "MENDRAKE RESULTS (my project.mnp)", "my project.htm");
    EXPECT_EQ(
        script(),
        "\nUSETEXTLINKS = 1"
        "\nSTARTALLOPEN = 0"
        "\nWRAPTEXT = 1"
        "\nPRESERVESTATE = 0"
        "\nHIGHLIGHT = 1"
        "\nICONPATH = 'file:///C:/my%20dir/'    //change if the gif's folder is a subfolder, for example: "
        "'images/'"
        "\n\n"
        "foldersTree = gFld(\"<i>MENDRAKE RESULTS (my project.mnp)</i>\", \"my%20project.htm\")\n");
}

TEST_F(TreeScript, LeafAtLevelZeroHangsOnTheRoot) {
    tree().doc(0, "Mendrake log file", "Mendrake_log.txt");
    EXPECT_EQ(script(), "insDoc(foldersTree, gLnk(\"R\", \"Mendrake log file\", \"Mendrake_log.txt\"))\n");
}

TEST_F(TreeScript, LeafHangsOnTheFolderOfItsLevel) {
    tree().doc(2, "Sample one", "my project.htm#x");
    EXPECT_EQ(script(), "\t\tinsDoc(aux2, gLnk(\"R\", \"Sample one\", \"my%20project.htm#x\"))\n");
}

TEST_F(TreeScript, FolderHangsOnTheFolderOneLevelUp) {
    tree().aux(1, "Run of 05/03/24", "p.htm#a b");
    tree().aux(2, "Samples", "");
    EXPECT_EQ(script(),
              "\taux1 = insFld(foldersTree, gFld(\"Run of 05/03/24\", \"p.htm#a%20b\"))\n"
              "\t\taux2 = insFld(aux1, gFld(\"Samples\", \"\"))\n");
}

TEST_F(TreeScript, LabelsAreEscapedForTheScript) {
    tree().doc(1, "a\"b\\c\nd<e>", "t");
    EXPECT_EQ(script(), "\tinsDoc(aux1, gLnk(\"R\", \"a\\\"b\\\\c\\nd<e>\", \"t\"))\n");
}

TEST_F(TreeScript, EachEntryIsCompleteAtOnce) {
    TJSOut out = tree();
    out.doc(0, "one", "1");
    EXPECT_EQ(script(), "insDoc(foldersTree, gLnk(\"R\", \"one\", \"1\"))\n");
    out.doc(0, "two", "2");
    EXPECT_EQ(script(),
              "insDoc(foldersTree, gLnk(\"R\", \"one\", \"1\"))\ninsDoc(foldersTree, gLnk(\"R\", \"two\", "
              "\"2\"))\n");
}

TEST_F(TreeScript, RestartEmptiesTheScript) {
    tree().doc(0, "one", "1");
    tree().restart();
    EXPECT_EQ(script(), "");
}

TEST_F(TreeScript, NothingIsWrittenWhileHtmlOutputIsOff) {
    tree().doc(0, "one", "1");
    const std::string before = script();
    std::fstream results(path("project.htm"), std::ios::out);
    s.result_stream = &results;
    htmlOutput = false;
    tree().restart();
    tree().aux(1, "x", "y");
    print_js_doc_entry(s, 1, "_x", "x");
    print_js_aux_entry(s, 1, "_x", "x");
    results.close();
    EXPECT_EQ(script(), before);
    EXPECT_EQ(content("project.htm"), "");
}

TEST_F(TreeScript, UnwritableScriptIsPassedOver) {
    TJSOut out(path("no such folder/x.js").c_str());
    out.doc(0, "one", "1");
    EXPECT_FALSE(std::filesystem::exists(path("no such folder")));
}

// What the script and the tree page call stands in the library that they load.
TEST_F(TreeScript, LibraryDefinesWhatTheScriptCalls) {
    const std::string library = mnd_test::read_text(MENDCORE_SOURCE_DIR "/share/ftiens4.js");
    for (const char* name : {"gFld(", "gLnk(", "insFld(", "insDoc(", "initializeDocument("}) {
        EXPECT_TRUE(mnd_test::contains(library, std::string("\nfunction ") + name)) << name;
    }
    for (const char* name : {"USETEXTLINKS", "STARTALLOPEN", "WRAPTEXT", "PRESERVESTATE", "HIGHLIGHT",
                             "ICONPATH", "foldersTree", "aux1, aux2, aux3"}) {
        EXPECT_TRUE(mnd_test::contains(library, std::string("\nvar ") + name)) << name;
    }
}

TEST_F(TreeScript, AnchorNameIsTheStampWithUnderlines) {
    s.run_time_stamp = "05/03/24 at 10:11:12";
    EXPECT_EQ(run_anchor_name(s, "_run_information"), "05_03_24at10_11_12_run_information");
}

class TreeEntries : public TreeScript {
protected:
    TreeEntries() {
        name_files("my project.htm");
        results.open(path("my project.htm"), std::ios::out);
        s.result_stream = &results;
    }
    std::string document() {
        results.flush();
        return content("my project.htm");
    }
    std::string script() const { return content("my project.js"); }
    std::fstream results;
};

TEST_F(TreeEntries, DocEntryWritesAnchorAndLeaf) {
    print_js_doc_entry(s, 1, "_run_information", "Settings");
    EXPECT_EQ(document(), "<A NAME=\"05_03_24at10_11_12_run_information\"></A>\n");
    EXPECT_EQ(script(),
              "\tinsDoc(aux1, gLnk(\"R\", \"Settings\", "
              "\"my%20project.htm#05_03_24at10_11_12_run_information\"))\n");
}

TEST_F(TreeEntries, AuxEntryWritesAnchorAndFolderInXml) {
    xmlOutput = true;
    print_js_aux_entry(s, 1, "", "Run of 05/03/24 at 10:11:12");
    EXPECT_EQ(document(), "</data>\n\n <A NAME=\"05_03_24at10_11_12\"></A> \n<data>\n\n");
    EXPECT_EQ(script(),
              "\taux1 = insFld(foldersTree, gFld(\"Run of 05/03/24 at 10:11:12\", "
              "\"my%20project.htm#05_03_24at10_11_12\"))\n");
}

TEST_F(TreeEntries, LogEntryHasNoAnchor) {
    print_js_mendrake_log_entry(s);
    EXPECT_EQ(document(), "");
    EXPECT_EQ(script(), "insDoc(foldersTree, gLnk(\"R\", \"Mendrake log file\", \"Mendrake_log.txt\"))\n");
}

TEST_F(TreeEntries, PopulationAnchorEndsWithTheNumberOfTheSample) {
    print_population_anchor(2, s, "pop_", 12, "Sample \"12\"");
    EXPECT_EQ(document(), "<A NAME=\"05_03_24at10_11_12_pop_12\"></A>\n");
    EXPECT_EQ(script(),
              "\t\tinsDoc(aux2, gLnk(\"R\", \"Sample \\\"12\\\"\", "
              "\"my%20project.htm#05_03_24at10_11_12_pop_12\"))\n");
}

TEST_F(TreeEntries, ComputationAnchorTellsGroupsFromSamples) {
    print_computation_anchor(2, s, "thetaH", "Theta(H)", false);
    print_computation_anchor(2, s, "thetaH", "Theta(H)", true);
    EXPECT_EQ(document(),
              "<A NAME=\"05_03_24at10_11_12_comp_sum_thetaH\"></A>\n"
              "<A NAME=\"05_03_24at10_11_12_gr_comp_sum_thetaH\"></A>\n");
}

TEST_F(TreeEntries, AnchorFromATitleIsEscapedAndItsLinkEncoded) {
    print_doc_anchor(s, 1, "50%_\"A\"&B_amova_", "AMOVA");
    EXPECT_EQ(document(), "<A NAME=\"50%_&quot;A&quot;&amp;B_amova_\"></A>\n");
    EXPECT_EQ(script(),
              "\tinsDoc(aux1, gLnk(\"R\", \"AMOVA\", \"my%20project.htm#50%25_%22A%22&B_amova_\"))\n");
}

TEST_F(TreeEntries, EntryWithoutADocumentReachesTheTree) {
    s.result_stream = nullptr;
    print_js_doc_entry(s, 1, "_x", "X");
    EXPECT_EQ(script(), "\tinsDoc(aux1, gLnk(\"R\", \"X\", \"my%20project.htm#05_03_24at10_11_12_x\"))\n");
}

}  // namespace
}  // namespace mnd
