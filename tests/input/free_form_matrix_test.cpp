#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "input/dist_mat.h"
#include "run/settings.h"
#include "support/captured_log.h"
#include "support/captured_reports.h"
#include "support/temp_folder.h"

namespace {

using namespace mnd;
using mnd_test::CapturedLog;
using mnd_test::CapturedReports;
using mnd_test::Report;
using mnd_test::TempFolder;
using mnd_test::write_text;

constexpr char kSettings[] = "DistMat::get_settings( ifstream& ifs)";
constexpr char kContent[] = "DistMat::read_id_content()";
constexpr char kBody[] = "DistMat::read_MatrixData()";

using Cells = std::vector<double>;
using Labels = std::vector<std::string>;
using Reports = std::vector<Report>;

// Reads sections; the project's folder is a fresh one.
class FreeFormMatrix : public ::testing::Test {
protected:
    FreeFormMatrix() {
        s.project_directory = (folder.path().string() + "/").c_str();
        matrix.ProfileSettings::the_settings = &s;
    }
    int read(const std::string& text) {
        write_text(folder / "section.txt", text);
        std::ifstream file(folder / "section.txt");
        matrix.reset();
        matrix.LabelPosition = kLabelsOnLine;
        const int result = matrix.get_settings(file);
        rest.assign(std::istreambuf_iterator<char>(file.rdbuf()), {});
        return result;
    }
    // Three rows, labels on a line unless told otherwise.
    int read_body(const std::string& body, const std::string& ahead = "MatrixSize=3\n") {
        return read(ahead + "MatrixData={\n" + body);
    }
    int read_column(const std::string& body, int size) {
        return read_body(body, "MatrixSize=" + std::to_string(size) + "\nLabelPosition=COLUMN\n");
    }
    Labels labels() const {
        Labels list;
        for (const my_string& label : matrix.labels)
            list.emplace_back(label.view());
        return list;
    }
    Cells cells() const {
        Cells list;
        for (int i = 0; i < matrix.MatrixSize; ++i) {
            for (int j = 0; j <= i; ++j)
                list.push_back(matrix.get(i, j));
        }
        return list;
    }
    // The section is refused after an error from a function.
    void expect_refused(const std::string& text, const std::string& origin, int code) {
        const CapturedReports own;
        EXPECT_EQ(read(text), 0) << text;
        EXPECT_EQ(own.all(), (Reports{{Error, origin, code}, {Error, kSettings, 24}})) << text;
    }
    void expect_body_refused(const std::string& body, const std::string& origin, int code) {
        expect_refused("MatrixSize=3 MatrixData={\n" + body, origin, code);
    }

    TempFolder folder;
    settings s;
    CapturedLog log;
    CapturedReports reports;
    DistMat matrix;
    std::string rest;  // what the reader left in the stream
};

// Rows of five haplotypes, of which row r has the cells 10 r + column.
const Cells kFive = {0, 10, 11, 20, 21, 22, 30, 31, 32, 33, 40, 41, 42, 43, 44};
const Labels kThreeLabels = {"h1", "h2", "h3"};

TEST_F(FreeFormMatrix, LabelsOnALine) {
    ASSERT_EQ(read("\n MatrixName=\"my steps\" MatrixSize = 3 # rows\n LabelPosition=line\n"
                   " MatrixData = # below\n { # labels\n h1\th2  h3 # three\n 0 # a comment\n\n 1 0\r\n"
                   " # between\n 2 3.5 0\n }\n [[Samples]]\n"),
              1)
        << log.text();
    EXPECT_EQ(matrix.MatrixName.view(), "my steps");
    EXPECT_EQ(matrix.LabelPosition, kLabelsOnLine);
    EXPECT_EQ(labels(), kThreeLabels);
    EXPECT_EQ(cells(), (Cells{0, 1, 0, 2, 3.5, 0}));
    EXPECT_EQ(rest, "[[Samples]]\n");
    EXPECT_TRUE(reports.all().empty());
    EXPECT_EQ(log.text(), "");
}

TEST_F(FreeFormMatrix, LabelsInAColumn) {
    ASSERT_EQ(read_column("h1 0.5\n \"h 2\" 1 0.25\n'h' 2 3 7 }\n", 3), 1);
    EXPECT_EQ(matrix.LabelPosition, kLabelsInColumn);
    EXPECT_EQ(labels(), (Labels{"h1", "h 2", "h"}));
    EXPECT_EQ(cells(), (Cells{0.5, 1, 0.25, 2, 3, 7}));  // the diagonal counts as it is written
}

// A label reaches to the next white space, zero byte or byte 0xFF, whatever it begins with.
TEST_F(FreeFormMatrix, LabelInAColumnIsAToken) {
    ASSERT_EQ(read_column("_a/1 0\n*\t1 0\n-3\xFF 2 3 0\n}", 3), 1);
    EXPECT_EQ(labels(), (Labels{"_a/1", "*", "-3"}));
    ASSERT_EQ(read_column("a/1 0\na/2 1\na/3 2\na/2 3\na/3 4 5\n}", 3), 1);
    EXPECT_EQ(labels(), (Labels{"a/1", "a/2", "a/3"}));
    EXPECT_EQ(cells(), (Cells{0, 1, 3, 2, 4, 5}));
}

TEST_F(FreeFormMatrix, BraceMayFollowTheLastValue) {
    for (const char* end : {"0}", "0 }", "0 # end\n}", "0#end\n}", "0\n\n}"}) {
        ASSERT_EQ(read_body(std::string("h1 h2 h3\n0\n1 0\n2 3 ") + end), 1) << end;
        EXPECT_EQ(cells(), (Cells{0, 1, 0, 2, 3, 0})) << end;
    }
}

TEST_F(FreeFormMatrix, RowsNeedNoLinesOfTheirOwn) {
    ASSERT_EQ(read_body("h1 h2 h3\n0 1 0 2 3 0 }"), 1);
    EXPECT_EQ(cells(), (Cells{0, 1, 0, 2, 3, 0}));
}

TEST_F(FreeFormMatrix, ItsOutputIsReadAgain) {
    ASSERT_EQ(read_body("h1 h2 h3\n0\n1 0\n2.5 3 0\n}"), 1);
    std::ostringstream text;
    matrix.write_section(text);
    const std::string section = text.str();
    ASSERT_EQ(read(section.substr(section.find("]]") + 2)), 1);
    EXPECT_EQ(cells(), (Cells{0, 1, 0, 2.5, 3, 0}));
    EXPECT_EQ(labels(), kThreeLabels);
}

// ---- Blocks of columns

TEST_F(FreeFormMatrix, WrappedRowsWithLabelsOnALine) {
    ASSERT_EQ(read_body("a b c d e\n"
                        "0\n10 11\n20 21 # two columns\n30 31\n40 41\n"
                        "22\n32 33\n42 43\n"
                        "44\n}",
                        "MatrixSize=5\n"),
              1);
    EXPECT_EQ(cells(), kFive);
}

TEST_F(FreeFormMatrix, WrappedRowsRepeatTheirLabelsInAColumn) {
    ASSERT_EQ(read_column("a 0\nb 10 11\nc 20 21 22\nd 30 31 32\ne 40 41 42\n"
                          "d 33\ne 43 44\n}",
                          5),
              1);
    EXPECT_EQ(cells(), kFive);
    EXPECT_EQ(labels(), (Labels{"a", "b", "c", "d", "e"}));
}

TEST_F(FreeFormMatrix, BlockMayBeOneColumnWide) {
    ASSERT_EQ(read_body("a b c d e\n0\n10\n20\n30\n40\n11\n21\n31\n41\n22\n32\n42\n33\n43\n44\n}",
                        "MatrixSize=5\n"),
              1);
    EXPECT_EQ(cells(), kFive);
}

TEST_F(FreeFormMatrix, RowOfABlockMustBeAsWideAsTheFirst) {
    const std::string first = "MatrixSize=5 MatrixData={\na b c d e\n0\n10 11\n20 21\n";
    expect_refused(first + "30 31 32\n40 41\n", "DistMat::read_MatrixData()->line 4, column 3", 13);
    expect_refused(first + "30\n40 41\n",
                   "DistMat::read_MatrixData()->Line 3 contains more than 3 distances.", 13);
}

TEST_F(FreeFormMatrix, LabelOfALaterBlockMustBeThatOfItsRow) {
    EXPECT_EQ(read_column("a 0\nb 1\nc 2\nc 0\nb 3 0\n}", 3), 0);
    EXPECT_EQ(reports.all(), (Reports{{Error, kBody, 11}, {Error, kSettings, 24}}));
}

TEST_F(FreeFormMatrix, BlockWithoutColumnsIsRefused) {
    EXPECT_EQ(read_column("a\nb 1\nc 2 3\n}", 3), 0);
    EXPECT_EQ(reports.all()[0], (Report{Error, "DistMat::read_MatrixData()->line 1, column 1", 13}));
}

// A full square has more values than a triangle, and a triangle without diagonal has fewer.
TEST_F(FreeFormMatrix, OtherFormsThanALowerTriangleAreRefused) {
    expect_body_refused("h1 h2 h3\n0 1 2\n1 0 3\n2 3 0\n}", kContent, 12);
    expect_body_refused("h1 h2 h3\n0\n1 0\n2 3 0 4\n}", kContent, 12);
    expect_body_refused("h1 h2 h3\n1\n2 3\n}", "DistMat::read_MatrixData()->line 3, column 1", 13);
    expect_body_refused("h1 h2 h3\n0\n1 0\n2 3\n}", "DistMat::read_MatrixData()->line 3, column 3", 13);
}

// ---- Faults of labels and values

TEST_F(FreeFormMatrix, ShortRowIsRefused) {
    expect_body_refused("h1 h2 h3\n0\n1 0\n2\n}",
                        "DistMat::read_MatrixData()->Line 2 contains more than 2 distances.", 13);
}

TEST_F(FreeFormMatrix, ValueBeginsWithADigit) {
    for (const char* value : {"-1", "+1", ".5", "x", "\"1\"",
                              "\xE2\x88\x92"
                              "1",
                              "nan", "inf", ",", "}"})
        expect_body_refused(std::string("h1 h2 h3\n0\n") + value + " 0\n2 3 0\n}",
                            "DistMat::read_MatrixData()->line 2, column 1", 13);
    expect_body_refused("h1 h2 h3\n0\n1 0\n2 -3 0\n}", "DistMat::read_MatrixData()->line 3, column 2", 13);
}

TEST_F(FreeFormMatrix, ValueThatIsNoNumberIsRefused) {
    for (const char* value : {"1.5x", "1,5", "1.5E2", "1e2", "1e-07", "0x10", "1-2", "1.2.3", "1.5e", "1/2",
                              "9999999999999999999", "1.0e400", "4.0e38", "1.5e99999"})
        expect_body_refused(std::string("h1 h2 h3\n0\n1 0\n2 ") + value + " 0\n}",
                            "DistMat::read_MatrixData() (line 3, column 2)", 13);
}

TEST_F(FreeFormMatrix, ValuesAreNarrowedToSinglePrecision) {
    ASSERT_EQ(read_body("h1 h2 h3\n0.1\n2. 1.5e-3\n1.25d+2 16777217 1.0e-60\n}"), 1);
    EXPECT_EQ(cells(),
              (Cells{static_cast<double>(0.1F), 2.0, static_cast<double>(1.5e-3F), 125.0, 16777216.0, 0.0}));
    EXPECT_NE(matrix.get(0, 0), 0.1);
}

TEST_F(FreeFormMatrix, LabelsOfTheLineMustBeThere) {
    for (const char* line :
         {"h1 h2\n0\n", "h1 h2 # h3\n", "h1 \"h2\" h3\n", "h1 ; h3\n", "h1 h2 }", "h1", ""})
        expect_body_refused(line, kBody, 11);
}

TEST_F(FreeFormMatrix, MoreLabelsThanRowsAreRefused) {
    expect_body_refused("h1 h2 h3 h4\n0\n1 0\n2 3 0\n}", kBody, 12);
    expect_body_refused("h1 h2 h3 ;\n0\n1 0\n2 3 0\n}", kBody, 12);
}

TEST_F(FreeFormMatrix, LabelOfTheColumnMustBeThere) {
    EXPECT_EQ(read_column("a 0\n}\n", 2), 0);
    EXPECT_EQ(read_column("a 0\n", 2), 0);
    EXPECT_EQ(reports.all()[0], (Report{Error, kBody, 11}));
    EXPECT_EQ(reports.all()[2], (Report{Error, kBody, 11}));
}

TEST_F(FreeFormMatrix, LabelsWithoutEndAreRefused) {
    std::string many;
    for (int i = 0; i < 100000; ++i)
        many += "h" + std::to_string(i) + ' ';
    expect_body_refused(many, kBody, 12);
    expect_body_refused(std::string(400000, 'x'), kBody, 11);
    expect_refused("MatrixSize=3 HaplLabels={ " + many, kContent, 11);
}

// ---- Keywords

TEST_F(FreeFormMatrix, MatrixDataNeedsASize) {
    expect_refused("MatrixData={\n0\n}\n", kContent, 14);
    expect_refused("MatrixSize=0 MatrixData={\n0\n}\n", kContent, 14);
}

TEST_F(FreeFormMatrix, SizeMustBeANumberOfRows) {
    expect_refused("MatrixSize=three\n", kContent, 14);
    expect_refused("MatrixSize=", kContent, 14);
    expect_refused("MatrixSize=-1\n", kContent, 15);
    EXPECT_EQ(log.text(), "");
    for (const char* size : {"15001", "2147483648", "4294967299", "99999999999999999999999"})
        expect_refused(std::string("MatrixName=m MatrixSize=") + size + "\n", kContent, 15);
    EXPECT_TRUE(
        log.holds("\tUnable to allocate memory for distance matrix \"m\". Required size (2147483648) "
                  "is probably too big...\n"));
    EXPECT_EQ(matrix.MatrixSize, 0);
}

TEST_F(FreeFormMatrix, SizeAloneGivesAZeroedMatrixWithEmptyLabels) {
    ASSERT_EQ(read("MatrixSize=2\n"), 1);
    EXPECT_EQ(cells(), (Cells{0, 0, 0}));
    EXPECT_EQ(labels(), (Labels{"", ""}));
}

TEST_F(FreeFormMatrix, LabelPositionIsLineOrColumn) {
    ASSERT_EQ(read("LabelPosition=\"Column\"\n"), 1);
    EXPECT_EQ(matrix.LabelPosition, kLabelsInColumn);
    ASSERT_EQ(read("LabelPosition=Line\n"), 1);
    EXPECT_EQ(matrix.LabelPosition, kLabelsOnLine);
    expect_refused("LabelPosition=ROW\n", kContent, 16);
    expect_refused("LabelPosition=;\n", kContent, 16);
}

TEST_F(FreeFormMatrix, HaplotypeLabelsReplaceThoseOfTheData) {
    const std::string data = "MatrixSize=3 MatrixData={\nh1 h2 h3\n0\n1 0\n2 3 0\n}\n";
    for (const char* list :
         {"{ a b c }", "{a b c}", "{a\xFF b c\xFF }", " the { # new\n a\n b # second\n c }"}) {
        ASSERT_EQ(read(data + "HaplLabels=" + list + "\n"), 1) << list;
        EXPECT_EQ(labels(), (Labels{"a", "b", "c"})) << list;
        EXPECT_EQ(matrix.get(2, 1), 3.0);
    }
    for (const char* list : {"{ a b }", "{ a b c d }", "{ a b c", "a b c", "{}", ""})
        expect_refused(data + "HaplLabels=" + list, kContent, 11);
    expect_refused("HaplLabels={ }\n", kContent, 11);
}

TEST_F(FreeFormMatrix, NameMustBeThere) {
    EXPECT_EQ(read("MatrixName=;\n"), 0);
    EXPECT_EQ(reports.all(), (Reports{{Error, kSettings, 24}}));
}

TEST_F(FreeFormMatrix, ForeignWordIsWarning23) {
    EXPECT_EQ(read("MatrixSize=3\nNonsense=2\n"), 0);
    EXPECT_EQ(reports.all(), (Reports{{Warning, kSettings, 23}}));
    EXPECT_EQ(matrix.MatrixSize, 3);
}

TEST_F(FreeFormMatrix, KeywordOfAnotherSectionIsRefused) {
    expect_refused("SampleName=2\n", kContent, 22);
}

TEST_F(FreeFormMatrix, DataStandInBraces) {
    for (const char* data : {"\"m.txt\"", "(0)", "[[Samples]]", "}", ""})
        expect_refused(std::string("MatrixSize=3 MatrixData=") + data, kContent, 21);
}

// ---- External files

TEST_F(FreeFormMatrix, MatrixOfAnExternalFile) {
    write_text(folder / "my matrix.txt", "# labels\nh1 h2 h3\n0\n1 0\n2 3 0");
    ASSERT_EQ(read("MatrixSize=3\nMatrixData = extern \"my matrix.txt\" # here\n[[Samples]]\n"), 1);
    EXPECT_EQ(cells(), (Cells{0, 1, 0, 2, 3, 0}));
    EXPECT_EQ(labels(), kThreeLabels);
    EXPECT_EQ(matrix.MatrixName.view(), "my matrix.txt");
    EXPECT_EQ(rest, "[[Samples]]\n");
    write_text(folder / "closed.txt", "h1 0\nh2 1 0\nh3 2 3 0 # end\n}\nwhat follows\n");
    ASSERT_EQ(read("MatrixSize=3 LabelPosition=COLUMN MatrixData=EXTERN closed.txt\n"), 1);
    EXPECT_EQ(cells(), (Cells{0, 1, 0, 2, 3, 0}));
    EXPECT_TRUE(reports.all().empty());
}

TEST_F(FreeFormMatrix, ExternalFileNeedsItsWordAndName) {
    expect_refused("MatrixSize=3 MatrixData=INTERN \"m.txt\"\n", kContent, 20);
    expect_refused("MatrixSize=3 MatrixData=EXTERN ;\n", kContent, 17);
    expect_refused("MatrixSize=3 MatrixData=EXTERN", kContent, 17);
}

TEST_F(FreeFormMatrix, ExternalFileThatDoesNotOpenIsRefused) {
    const std::string path = folder.path().string();
    for (const std::string& name : {std::string("absent.txt"), path, std::string(), std::string(5000, 'x')})
        expect_refused("MatrixSize=3 MatrixData=EXTERN \"" + name + "\"\n", kContent, 18);
    EXPECT_EQ(matrix.MatrixName.view(), "");
}

TEST_F(FreeFormMatrix, FaultOfAnExternalFileIsToldToo) {
    write_text(folder / "m.txt", "h1 h2 h3\n0\n1 0\n2 x 0\n");
    EXPECT_EQ(read("MatrixSize=3 MatrixData=EXTERN \"m.txt\"\n"), 0);
    EXPECT_EQ(reports.all(), (Reports{{Error, "DistMat::read_MatrixData()->line 3, column 2", 13},
                                      {Error, kContent, 18},
                                      {Error, kSettings, 24}}));
}

TEST_F(FreeFormMatrix, ExternalSquareIsRefused) {
    write_text(folder / "m.txt", "h1 h2 h3\n0 1 2\n1 0 3\n2 3 0\n");
    expect_refused("MatrixSize=3 MatrixData=EXTERN \"m.txt\"\n", kContent, 18);
}

TEST_F(FreeFormMatrix, ExternalFileMayNotBeTheProjectItself) {
    EXPECT_EQ(read("MatrixSize=3 MatrixData=EXTERN \"section.txt\"\n"), 0);
    EXPECT_EQ(reports.all(), (Reports{{Error, kBody, 11}, {Error, kContent, 18}, {Error, kSettings, 24}}));
}

// ---- The body alone

TEST(FreeFormMatrixBody, NeedsNoBraces) {
    const TempFolder folder;
    write_text(folder / "m.txt", "a b\n0.5\n1 0.25\nnext\n");
    std::ifstream file(folder / "m.txt");
    DistMat matrix;
    matrix.initializeMatrixAndArrays(2);
    ASSERT_EQ(matrix.read_MatrixData(file), 1);
    EXPECT_EQ(matrix.labels[1].view(), "b");
    EXPECT_EQ(matrix.get(1, 1), 0.25);
    EXPECT_EQ(file.peek(), 'n');  // one character, the line feed, is consumed
}

// Every section that is cut short is refused, but never loops or crashes.
TEST_F(FreeFormMatrix, HostileSectionsEnd) {
    const std::string whole =
        "MatrixSize=4 LabelPosition=COLUMN MatrixData={\na 0\nb 1 2\nc 3 4\nd 5 6\nc 7\nd 8 9\n}";
    const std::size_t data = whole.find("MatrixData");
    for (std::size_t length = data + 1; length < whole.size(); ++length)
        EXPECT_EQ(read(whole.substr(0, length)), 0) << length;
    EXPECT_EQ(read(whole), 1);
    EXPECT_EQ(cells(), (Cells{0, 1, 2, 3, 4, 7, 5, 6, 8, 9}));
    std::string junk;
    for (int i = 0; i < 20000; ++i)
        junk += static_cast<char>((i * 167 + i / 256 + 13) % 256);
    for (const char* ahead : {"", "MatrixSize=3 MatrixData={", "MatrixSize=3 MatrixData={a b c\n",
                              "MatrixSize=3 LabelPosition=COLUMN MatrixData={", "MatrixSize=3 HaplLabels={"})
        EXPECT_EQ(read(ahead + junk), *ahead == '\0' ? read(junk) : 0) << ahead;
    EXPECT_EQ(read("MatrixSize=15000 MatrixData={\n"), 0);
}

// ---- The source of the matrix

class DistMatExplore : public ::testing::Test {
protected:
    int explore(const std::string& text) {
        write_text(folder / "p.mnp", text);
        std::ifstream file(folder / "p.mnp");
        const int result = matrix.get_mat_name(file);
        next = static_cast<char>(file.peek());
        return result;
    }

    TempFolder folder;
    CapturedReports reports;
    DistMat matrix;
    char next = 0;  // where the reader stopped
};

TEST_F(DistMatExplore, MatrixOfTheProject) {
    EXPECT_EQ(explore("\nMatrixName=\"a [b]\"\nMatrixSize=2\nLabelPosition=COLUMN\nHaplLabels={ a b }\n"
                      "MatrixData={\n a 0\n b 1 0\n}\n[[Samples]]"),
              1);
    EXPECT_EQ(matrix.MatrixName.view(), "Defined In project file");
    EXPECT_EQ(next, '[');
}

TEST_F(DistMatExplore, MatrixOfAnExternalFile) {
    EXPECT_EQ(explore("MatrixData = EXTERN \"my matrix.txt\"\nMatrixSize=2\n[[Samples]]"), 1);
    EXPECT_EQ(matrix.MatrixName.view(), "my matrix.txt");
    EXPECT_EQ(next, '[');
}

TEST_F(DistMatExplore, NoMatrix) {
    EXPECT_EQ(explore("MatrixSize=2\n[[Samples]]"), 1);
    EXPECT_EQ(matrix.MatrixName.view(), "none");
}

TEST_F(DistMatExplore, EmptyValueEndsWithItsLine) {
    EXPECT_EQ(explore("MatrixSize= # none\nMatrixData={\n0\n1 0\n}\n[[Samples]]"), 1);
    EXPECT_EQ(matrix.MatrixName.view(), "Defined In project file");
    EXPECT_EQ(explore("HaplLabels= # below\n{\n a\n b }\nMatrixSize=2\n[[Samples]]"), 1);
    EXPECT_EQ(next, '[');
}

TEST_F(DistMatExplore, KeywordsMayShareALine) {
    EXPECT_EQ(explore("MatrixName=\"a = b\" MatrixSize=2 MatrixData=EXTERN \"m.txt\" # x = y\n[[Samples]]"),
              1);
    EXPECT_EQ(matrix.MatrixName.view(), "m.txt");
    EXPECT_EQ(next, '[');
    EXPECT_EQ(explore("MatrixSize=2\tMatrixData={ 0\n1 0 } LabelPosition=LINE # x = y\n[[Samples]]"), 1);
    EXPECT_EQ(matrix.MatrixName.view(), "Defined In project file");
    EXPECT_EQ(next, '[');
    EXPECT_EQ(explore("MatrixName=my matrix\nMatrixData={ 0 }\n[[Samples]]"), 1);
    EXPECT_EQ(matrix.MatrixName.view(), "Defined In project file");
}

TEST_F(DistMatExplore, UnclosedMatrixEndsAtTheNextSection) {
    EXPECT_EQ(explore("MatrixData={\n0\n1 0\n[[Samples]]"), 1);
    EXPECT_EQ(next, '[');
}

TEST_F(DistMatExplore, ForeignKeywordIsWarning23) {
    EXPECT_EQ(explore("Nonsense=2\n"), 0);
    ASSERT_EQ(reports.all().size(), 1u);
    EXPECT_EQ(reports.all()[0], (Report{Warning, "DistMat::get_settings( ifstream& ifs)", 23}));
}

}  // namespace
