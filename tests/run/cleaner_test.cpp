#include "run/cleaner.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "run/errors.h"

namespace {

using mnd::cleaner;
namespace fs = std::filesystem;

// A folder of its own for each test, which is also where the project lies.
class Cleaner : public ::testing::Test {
protected:
    void SetUp() override {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        folder_ = fs::path(::testing::TempDir()) / (std::string("mendcore_cleaner_") + test->name());
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string path(const std::string& name) const { return (folder_ / name).string(); }
    void put(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
    }
    std::string get(const std::string& name) const {
        std::ifstream file(path(name), std::ios::binary);
        EXPECT_TRUE(file) << name;
        return {std::istreambuf_iterator<char>(file), {}};
    }
    bool exists(const std::string& name) const { return fs::exists(path(name)); }
    // Content of the cleaned copy of a project.
    std::string cleaned(const std::string& content, char separator = ' ') const {
        put("p.mnp", content);
        cleaner pass;
        EXPECT_TRUE(pass.execute(separator, path("p.mnp").c_str()));
        return get("p.res/p.mnp");
    }

    fs::path folder_;
};

// What the line rules make of one line.
std::string clean_line(const std::string& line, char separator = ' ') {
    cleaner pass;
    pass.locus_sep = separator;
    pass.curr_line = line.c_str();
    EXPECT_TRUE(pass.clean_curr_line());
    return pass.curr_line.c_str();
}

std::string separator_line(const std::string& line, char separator) {
    cleaner pass;
    pass.locus_sep = separator;
    pass.curr_line = line.c_str();
    const bool rewritten = pass.line_locus_sep();
    EXPECT_EQ(rewritten, line != pass.curr_line.c_str());
    return pass.curr_line.c_str();
}

// ---- lines

TEST(CleanerLine, RunsOfWhiteSpaceBecomeOneBlank) {
    EXPECT_EQ(clean_line("a \t  b\r"), "a b");
    EXPECT_EQ(clean_line("  a"), " a");
    EXPECT_EQ(clean_line("\t \r"), "");
    EXPECT_EQ(clean_line(""), "");
    EXPECT_EQ(clean_line("a\rb"), "a b");
}

TEST(CleanerLine, CommentInsideAQuotedTitleIsCutToo) {
    EXPECT_EQ(clean_line("Title=\"run #3\""), "Title=\"run");
}

TEST(CleanerLine, TwoBlanksInsideAQuotedNameBecomeOne) {
    EXPECT_EQ(clean_line("SampleName=\"a  b\""), "SampleName=\"a b\"");
}

TEST(CleanerLine, SeparatorBecomesABlankEverywhere) {
    EXPECT_EQ(clean_line("Title=\"Paris, 1998\" 12,13,,14", ','), "Title=\"Paris 1998\" 12 13 14");
    EXPECT_EQ(clean_line("12,13", '\0'), "12,13");
    EXPECT_EQ(clean_line("12#13 # 4", '#'), "12 13 4");
}

TEST(CleanerLine, LineOf10001CharactersIsLeftAlone) {
    cleaner pass;
    pass.locus_sep = ' ';
    const std::string body(9997, 'A');
    pass.curr_line = (body + "\t#\r").c_str();  // 10000 characters
    EXPECT_TRUE(pass.clean_curr_line());
    EXPECT_EQ(pass.curr_line, body.c_str());
    const std::string longer = body + "A\t#\r";
    pass.curr_line = longer.c_str();
    EXPECT_FALSE(pass.clean_curr_line());
    EXPECT_EQ(pass.curr_line, longer.c_str());
}

TEST(CleanerLine, SeparatorLineIsRewrittenWhenASeparatorIsInForce) {
    EXPECT_EQ(separator_line("LocusSeparator=TAB", ' '), "LocusSeparator=WHITESPACE");
    EXPECT_EQ(separator_line(" locusseparator = ','", ','), "LocusSeparator=WHITESPACE");
    EXPECT_EQ(separator_line("Title=\"no LocusSeparator\"", ' '), "LocusSeparator=WHITESPACE");
}

TEST(CleanerLine, SeparatorLineStaysWithoutASeparatorOrWithNone) {
    EXPECT_EQ(separator_line("LocusSeparator=TAB", '\0'), "LocusSeparator=TAB");
    EXPECT_EQ(separator_line("LocusSeparator=None", ' '), "LocusSeparator=None");
    EXPECT_EQ(separator_line("Title=\"LocusSeparator of Nonette\"", ' '),
              "Title=\"LocusSeparator of Nonette\"");
    EXPECT_EQ(separator_line("NbSamples=3", ' '), "NbSamples=3");
}

// What the log says of a separator line, or nothing.
std::string warning_of(const std::string& line, char separator) {
    std::ostringstream log;
    std::ostream* const before = mnd::_AOS_;
    mnd::_AOS_ = &log;
    separator_line(line, separator);
    mnd::_AOS_ = before;
    return log.str();
}

TEST(CleanerLine, RewritingAnotherSeparatorIsSaidInTheLog) {
    EXPECT_EQ(warning_of("LocusSeparator=';'", ' '),
              "\nWarning: \"LocusSeparator=';'\" is read as \"LocusSeparator=WHITESPACE\", since the locus "
              "separator in force\n(the one of the project before, or a blank for the first) is another one."
              "\nSeparate the loci of this project by blanks to be sure of what is read.\n");
    EXPECT_NE(warning_of("Title=\"no LocusSeparator\"", ' '), "");
}

TEST(CleanerLine, RewritingASeparatorThatIsABlankByNowIsNotSaid) {
    EXPECT_EQ(warning_of("LocusSeparator=TAB", ' '), "");
    EXPECT_EQ(warning_of("LocusSeparator=WhiteSpace # x", ' '), "");
    EXPECT_EQ(warning_of("LocusSeparator=' '", ','), "");  // what is left of ','
    EXPECT_EQ(warning_of("LocusSeparator=", ','), "");
    EXPECT_EQ(warning_of("LocusSeparator=None", ' '), "");
    EXPECT_EQ(warning_of("LocusSeparator=';'", '\0'), "");
}

TEST(CleanerLine, ExternNameStandsBetweenTheFirstTwoQuotes) {
    cleaner pass;
    pass.proj_dir = "x.res/";
    pass.curr_line = "SampleData=EXTERN \"one.dat\" \"two.dat\"";
    EXPECT_TRUE(pass.line_has_external());
    ASSERT_EQ(pass.orig_files.count, 1);
    EXPECT_EQ(pass.orig_files[0], "one.dat");
    EXPECT_EQ(pass.clean_files[0], "x.res/one.dat");
    EXPECT_EQ(pass.file_kinds[0], 1);
}

TEST(CleanerLine, LineWithoutAUsableExternNameIsPassedOver) {
    for (const char* line :
         {"SampleData=extern \"one.dat\"", "EXTERN one.dat", "EXTERN \"one.dat", "EXTERN \"\"",
          "EXTERN \"../one.dat\"", "EXTERN \"a\\..\\one.dat\"", "EXTERN \"..\""}) {
        cleaner pass;
        pass.proj_dir = "x.res/";
        pass.curr_line = line;
        EXPECT_FALSE(pass.line_has_external()) << line;
        EXPECT_EQ(pass.orig_files.count, 0) << line;
        EXPECT_EQ(pass.clean_files.count, 0) << line;
    }
}

TEST(CleanerLine, PointsInsideAnExternNameAreNoFolder) {
    cleaner pass;
    pass.curr_line = "EXTERN \"..a/b..\"";
    EXPECT_TRUE(pass.line_has_external());
}

TEST(CleanerLine, ExternIsNotLookedForInLinesOf1001Characters) {
    const std::string name = "EXTERN \"a.dat\"";
    cleaner pass;
    pass.curr_line = (name + std::string(1001 - name.size(), ' ')).c_str();
    EXPECT_FALSE(pass.line_has_external());
    pass.curr_line = (name + std::string(1000 - name.size(), ' ')).c_str();
    EXPECT_TRUE(pass.line_has_external());
}

// ---- files

TEST_F(Cleaner, WritesTheCopyIntoTheResultFolder) {
    EXPECT_EQ(cleaned("[Profile]\r\n\tTitle=\"a\"  # comment\r\n"), "[Profile]\n Title=\"a\"\n\n");
}

TEST_F(Cleaner, LinesKeepTheirNumbers) {
    EXPECT_EQ(cleaned("# all comment\n\na\n"), "\n\na\n\n");
}

TEST_F(Cleaner, LastLineNeedsNoLineEnd) {
    EXPECT_EQ(cleaned("a\nb"), "a\nb\n\n");
    EXPECT_EQ(cleaned(""), "\n");
}

TEST_F(Cleaner, TabSeparatorIsRewrittenToFitTheCleanedData) {
    EXPECT_EQ(cleaned("LocusSeparator=TAB\n1 1 12\t13\n"), "LocusSeparator=WHITESPACE\n1 1 12 13\n\n");
}

// The separator comes from the project before: a "," project as first of a batch is cleaned
// with a blank, as second with its own separator, or with none behind DNA.
TEST_F(Cleaner, CarriedSeparatorDecidesHowAProjectIsCleaned) {
    const std::string project = "LocusSeparator=','\nh1 1 12,13\n";
    EXPECT_EQ(cleaned(project, ' '), "LocusSeparator=WHITESPACE\nh1 1 12,13\n\n");
    EXPECT_EQ(cleaned(project, ','), "LocusSeparator=WHITESPACE\nh1 1 12 13\n\n");
    EXPECT_EQ(cleaned(project, '\0'), project + "\n");
}

TEST_F(Cleaner, KeepsItsFilesAndFoldersInFields) {
    put("p.mnp", "a\n");
    cleaner pass;
    EXPECT_EQ(pass.get_orig_proj(), nullptr);
    EXPECT_EQ(pass.get_clean_proj(), nullptr);
    EXPECT_STREQ(pass.proj_base, "//");
    EXPECT_EQ(pass.file_kinds.capacity, 6);
    pass.execute(',', path("p.mnp").c_str());
    EXPECT_EQ(pass.get_proj_dir(), path("p.res/").c_str());
    EXPECT_EQ(*pass.get_orig_proj(), path("p.mnp").c_str());
    EXPECT_EQ(*pass.get_clean_proj(), path("p.res/p.mnp").c_str());
    EXPECT_STREQ(pass.file_name, path("p.mnp").c_str());
    EXPECT_STREQ(pass.proj_base, path("").c_str());
    EXPECT_EQ(pass.locus_sep, ',');
    EXPECT_EQ(pass.file_kinds[0], 0);
}

TEST_F(Cleaner, BaseIsCutAtTheLastMarkDownToIndexOne) {
    const auto base_of = [](const char* name) {
        cleaner pass;
        pass.execute(' ', name);
        return std::string(pass.proj_base);
    };
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    put("x.mnp", "");
    put("a\\b.mnp", "");  // a backslash is a mark of a path, too
    fs::create_directory(path("a"));
    put("a/x.mnp", "");
    put("\\x.mnp", "");
    EXPECT_EQ(base_of("x.mnp"), "");
    EXPECT_EQ(base_of("./x.mnp"), "./");
    EXPECT_EQ(base_of("\\x.mnp"), "\\x");  // a mark at index 0 is not seen
    EXPECT_EQ(base_of("a/x.mnp"), "a/");
    EXPECT_EQ(base_of("a\\b.mnp"), "a\\");
    fs::current_path(before);
}

TEST_F(Cleaner, ExternalFileOfAProjectNamedWithoutFolderLiesBesideIt) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_);
    put("p.mnp", "EXTERN \"one.dat\"\n");
    put("one.dat", "a\tb\n");
    put("pone.dat", "another file\n");
    cleaner pass;
    pass.execute(' ', "p.mnp");
    fs::current_path(before);
    EXPECT_EQ(get("p.res/one.dat"), "a b\n");
}

TEST_F(Cleaner, ExternalFilesAreCleanedInTheOrderMet) {
    put("one.dat", "1\t 2 # x\r\nLocusSeparator=TAB\n\n3");
    put("two.dat", "EXTERN \"three.dat\"\n");
    put("three.dat", "a");
    put("p.mnp", "SampleData=EXTERN \"one.dat\"\nMatrixData = EXTERN   \"two.dat\"\n");
    cleaner pass;
    EXPECT_TRUE(pass.execute(' ', path("p.mnp").c_str()));
    EXPECT_EQ(get("p.res/one.dat"), "1 2\nLocusSeparator=TAB\n\n3\n");
    EXPECT_EQ(get("p.res/two.dat"), "EXTERN \"three.dat\"\n");
    EXPECT_FALSE(exists("p.res/three.dat"));  // only the project names external files
    ASSERT_EQ(pass.orig_files.count, 3);
    EXPECT_EQ(pass.orig_files[1], "one.dat");
    EXPECT_EQ(pass.orig_files[2], "two.dat");
    EXPECT_EQ(pass.clean_files[2], path("p.res/two.dat").c_str());
}

TEST_F(Cleaner, MoreExternalFilesThanTheFirstSlots) {
    std::string project;
    for (int i = 0; i < 40; ++i) {
        const std::string name = "f" + std::to_string(i) + ".dat";
        put(name, std::to_string(i) + "\n");
        project += "EXTERN \"" + name + "\"\n";
    }
    put("p.mnp", project);
    cleaner pass;
    pass.execute(' ', path("p.mnp").c_str());
    EXPECT_EQ(pass.file_kinds.count, 41);
    EXPECT_EQ(get("p.res/f39.dat"), "39\n");
}

TEST_F(Cleaner, FurtherNamesCleanAnExternalFileToo) {
    put("one.dat", "a\tb\n");
    put("p.mnp", "EXTERN \"one.dat\"\n");
    cleaner pass;
    pass.execute(' ', path("p.mnp").c_str());
    fs::remove(path("p.res/one.dat"));
    EXPECT_TRUE(pass.clean_matrix_file(1));
    EXPECT_EQ(get("p.res/one.dat"), "a b\n");
    fs::remove(path("p.res/one.dat"));
    EXPECT_TRUE(pass.clean_pop_file(1));
    EXPECT_EQ(get("p.res/one.dat"), "a b\n");
    EXPECT_FALSE(pass.clean_haplo_file(2));
    EXPECT_FALSE(pass.clean_haplo_file(-1));
    EXPECT_FALSE(pass.clean_proj_file(2));
}

TEST_F(Cleaner, MissingExternalFileIsIgnored) {
    put("p.mnp", "EXTERN \"missing.dat\"\na\n");
    cleaner pass;
    EXPECT_TRUE(pass.execute(' ', path("p.mnp").c_str()));
    EXPECT_EQ(get("p.res/p.mnp"), "EXTERN \"missing.dat\"\na\n\n");
    EXPECT_FALSE(exists("p.res/missing.dat"));
    EXPECT_FALSE(pass.clean_haplo_file(1));
}

TEST_F(Cleaner, CopyLeftByABrokenRunDoesNotStandInForAMissingFile) {
    fs::create_directory(path("p.res"));
    put("p.res/gone.dat", "old data\n");
    put("p.mnp", "EXTERN \"gone.dat\"\n");
    cleaner pass;
    pass.execute(' ', path("p.mnp").c_str());
    EXPECT_FALSE(exists("p.res/gone.dat"));
}

TEST_F(Cleaner, ExternalFileInAFolderNeedsThatFolderInTheResultFolder) {
    fs::create_directory(path("sub"));
    put("sub/one.dat", "a\tb\n");
    put("p.mnp", "EXTERN \"sub/one.dat\"\n");
    cleaner pass;
    EXPECT_TRUE(pass.execute(' ', path("p.mnp").c_str()));
    EXPECT_FALSE(exists("p.res/sub"));
    EXPECT_FALSE(pass.clean_haplo_file(1));
    fs::create_directory(path("p.res/sub"));
    EXPECT_TRUE(pass.clean_haplo_file(1));
    EXPECT_EQ(get("p.res/sub/one.dat"), "a b\n");
}

// A name that leads out of the result folder would make a "copy" of it beside the project.
TEST_F(Cleaner, FilesOutsideTheResultFolderAreNeverWrittenOrDeleted) {
    fs::create_directory(path("work"));
    put("data.dat", "parent\n");
    put("work/data.dat", "mine\n");
    put("work/p.mnp", "EXTERN \"../data.dat\"\nEXTERN \"../p.mnp\"\n");
    cleaner pass;
    pass.execute(' ', path("work/p.mnp").c_str());
    pass.rm_clean_files();
    EXPECT_EQ(get("work/data.dat"), "mine\n");
    EXPECT_EQ(get("data.dat"), "parent\n");
    EXPECT_EQ(get("work/p.mnp"), "EXTERN \"../data.dat\"\nEXTERN \"../p.mnp\"\n");
}

TEST_F(Cleaner, ProjectThatNamesItselfKeepsItsRewrittenCopy) {
    EXPECT_EQ(cleaned("Title=\"EXTERN \"p.mnp\"\nEXTERN \"p.mnp\"\nLocusSeparator=TAB\n"),
              "Title=\"EXTERN \"p.mnp\"\nEXTERN \"p.mnp\"\nLocusSeparator=WHITESPACE\n\n");
}

TEST_F(Cleaner, LongLinesArePassedOnUnchanged) {
    const std::string long_line = "1 1\t" + std::string(10001, 'A') + " # kept\r";
    const std::string longest = std::string(400000, 'C') + "\t#x\r";
    EXPECT_EQ(cleaned(long_line + "\n" + longest + "\nb # c\n"), long_line + "\n" + longest + "\nb\n\n");
    put("one.dat", longest + "\n" + long_line + "\n");
    cleaned("EXTERN \"one.dat\"\n");
    EXPECT_EQ(get("p.res/one.dat"), longest + "\n" + long_line + "\n");
}

TEST_F(Cleaner, BinaryJunkEndsAtItsZeroBytesLineByLine) {
    EXPECT_EQ(cleaned(std::string("a\0b\n\xff\xfe\nc", 8)), "a\n\xff\xfe\nc\n\n");
}

TEST_F(Cleaner, MissingProjectGivesNoCopy) {
    cleaner pass;
    EXPECT_TRUE(pass.execute(' ', path("none.mnp").c_str()));
    EXPECT_EQ(pass.get_clean_proj(), nullptr);
    EXPECT_EQ(*pass.get_orig_proj(), path("none.mnp").c_str());
    EXPECT_FALSE(exists("none.res"));
    pass.rm_clean_files();
}

// A file stands where the result folder should be made.
TEST_F(Cleaner, ResultFolderThatCantBeWrittenGivesNoCopy) {
    put("p.res", "in the way");
    put("one.dat", "a\n");
    put("p.mnp", "EXTERN \"one.dat\"\n");
    cleaner pass;
    EXPECT_TRUE(pass.execute(' ', path("p.mnp").c_str()));
    EXPECT_EQ(pass.get_clean_proj(), nullptr);
    EXPECT_EQ(get("p.mnp"), "EXTERN \"one.dat\"\n");
    EXPECT_EQ(get("p.res"), "in the way");
}

// A copy cut short by a full disk would be read as a project that lacks samples.
TEST_F(Cleaner, CopyThatCantBeWrittenInFullIsNoCopy) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    fs::create_directory(path("p.res"));
    fs::create_symlink("/dev/full", path("p.res/p.mnp"));
    put("p.mnp", "a\n");
    cleaner pass;
    EXPECT_TRUE(pass.execute(' ', path("p.mnp").c_str()));
    EXPECT_EQ(pass.get_clean_proj(), nullptr);
    EXPECT_FALSE(pass.clean_proj_file(0));
}

TEST_F(Cleaner, CopiesAreDeletedAtTheEnd) {
    put("one.dat", "a\n");
    put("p.mnp", "EXTERN \"one.dat\"\nEXTERN \"missing.dat\"\nEXTERN \"one.dat\"\n");
    cleaner pass;
    pass.execute(' ', path("p.mnp").c_str());
    put("p.res/p.htm", "results");
    pass.rm_clean_files();
    EXPECT_FALSE(exists("p.res/p.mnp"));
    EXPECT_FALSE(exists("p.res/one.dat"));
    EXPECT_TRUE(exists("p.res/p.htm"));
    EXPECT_TRUE(exists("p.mnp"));
    EXPECT_TRUE(exists("one.dat"));
    pass.rm_clean_files();
}

// A result may take the name of an external file, such as a distance file of a sample.
TEST_F(Cleaner, ResultThatTookTheNameOfACopyIsNotDeleted) {
    put("pop1.dis", "1 2\n");
    put("p.mnp", "EXTERN \"pop1.dis\"\n");
    cleaner pass;
    pass.execute(' ', path("p.mnp").c_str());
    put("p.res/pop1.dis", "distances of this run\n");
    pass.rm_clean_files();
    EXPECT_EQ(get("p.res/pop1.dis"), "distances of this run\n");
    EXPECT_FALSE(exists("p.res/p.mnp"));
}

TEST_F(Cleaner, ProjectThatALinkShowsAsItsOwnCopyIsLeftAlone) {
    put("p.mnp", "a # b\n");
    fs::create_directory_symlink(".", path("p.res"));
    cleaner pass;
    EXPECT_TRUE(pass.execute(' ', path("p.mnp").c_str()));
    EXPECT_EQ(pass.get_clean_proj(), nullptr);
    pass.rm_clean_files();
    EXPECT_EQ(get("p.mnp"), "a # b\n");
}

TEST_F(Cleaner, ExternalFileThatALinkShowsAsItsOwnCopyIsLeftAlone) {
    fs::create_directories(path("sub"));
    fs::create_directories(path("p.res"));
    fs::create_directory_symlink("../sub", path("p.res/sub"));
    put("sub/one.dat", "a\tb\n");
    put("p.mnp", "EXTERN \"sub/one.dat\"\n");
    cleaner pass;
    pass.execute(' ', path("p.mnp").c_str());
    EXPECT_EQ(get("sub/one.dat"), "a\tb\n");
    pass.rm_clean_files();
    EXPECT_EQ(get("sub/one.dat"), "a\tb\n");
    EXPECT_FALSE(exists("p.res/p.mnp"));
}

TEST_F(Cleaner, CopyOfTheProjectIsNotMadeAnewUnderASecondSpelling) {
    EXPECT_EQ(cleaned("EXTERN \"./p.mnp\"\nLocusSeparator=TAB\n"),
              "EXTERN \"./p.mnp\"\nLocusSeparator=WHITESPACE\n\n");
}

TEST_F(Cleaner, CopiesNamedByOthersAreDeletedToo) {
    put("extra.dat", "a\n");
    cleaner pass;
    pass.clean_files.Add(path("extra.dat").c_str());
    pass.rm_clean_files();
    EXPECT_FALSE(exists("extra.dat"));
}

}  // namespace
