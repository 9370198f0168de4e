#include "run/errors.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "run/messages.h"
#include "support/text_files.h"

namespace {

using mnd::E;
using mnd_test::read_file;
using mnd_test::unique_path;

// Reported while static objects are made: no log is open, so nothing is written or counted.
const bool reported_before_main = [] {
    E.error(mnd::Error, "before_main()", mnd::kNotEnoughMemory);
    mnd::report(mnd::Error, "before_main()", mnd::kNotEnoughMemory);
    *mnd::_AOS_ << "progress before any log";
    return true;
}();

// A fresh log with all counters at 1.
class ErrorsTest : public ::testing::Test {
protected:
    void SetUp() override {
        path_ = unique_path("errors_log");
        E.init_log_file(path_.c_str(), false);
        E.error(mnd::Warning, "", -1);
    }
    void TearDown() override {
        E.result_stream = nullptr;
        E.CloseLog_file();
        std::remove(path_.c_str());
    }
    std::string log() {
        mnd::_AOS_->flush();
        return read_file(path_);
    }
    std::string path_;
};

using Errors = ErrorsTest;

}  // namespace

TEST_F(Errors, WorksBeforeMainAndDropsWhatIsSaidThere) {
    EXPECT_TRUE(reported_before_main);
    E.error(mnd::Error, "f()", mnd::kNotEnoughMemory);
    EXPECT_EQ(log(), "   1 #[ERROR # 1] from function \"f()\" : not enough memory\n");
}

TEST_F(Errors, LineHasNumberTagCountFunctionAndMessage) {
    E.error(mnd::Warning, "a()", 29);
    E.error(mnd::Info, "b()", 17);
    E.error(mnd::Error, "Project::make_run_possible()", 123);
    E.error(mnd::Warning, "a()", 105);
    EXPECT_EQ(
        log(),
        "   1 #[WARNING # 1] from function \"a()\" : warning, no labels defined for distance matrix\n"
        "   2 #[INFO # 1] from function \"b()\" : reading distance matrix in external file\n"
        "   3 #[ERROR # 1] from function \"Project::make_run_possible()\" : no samples have been defined\n"
        "   4 #[WARNING # 2] from function \"a()\" : numerical error\n");
}

TEST_F(Errors, UnknownTypeCountsAsError) {
    E.error(static_cast<mnd::ErrorType>(17), "a()", 9);
    E.error(mnd::Error, "b()", 9);
    EXPECT_EQ(log(),
              "   1 #[ERROR # 1] from function \"a()\" : invalid stream\n"
              "   2 #[ERROR # 2] from function \"b()\" : invalid stream\n");
}

TEST_F(Errors, DebugWritesTheNameAsTextUnderANumberOfTheErrors) {
    E.error(mnd::Error, "a()", 9);
    E.error(mnd::Debug, "x is 3", 9);
    EXPECT_EQ(log(),
              "   1 #[ERROR # 1] from function \"a()\" : invalid stream\n"
              "   2 #[DEBUG # 2] x is 3\n");
}

TEST_F(Errors, ResetRequestWritesNothingAndStartsAllCountersAnew) {
    for (const mnd::ErrorType type : {mnd::Warning, mnd::Error, mnd::Info})
        E.error(type, "a()", 9);
    const std::string before = log();
    E.error(mnd::Warning, "a()", -1);
    EXPECT_EQ(log(), before);
    E.error(mnd::Info, "a()", 9);
    E.error(mnd::Error, "a()", 9);
    E.error(mnd::Warning, "a()", 9);
    EXPECT_EQ(log().substr(before.size()),
              "   1 #[INFO # 1] from function \"a()\" : invalid stream\n"
              "   2 #[ERROR # 1] from function \"a()\" : invalid stream\n"
              "   3 #[WARNING # 1] from function \"a()\" : invalid stream\n");
}

TEST_F(Errors, ResultDocumentGetsTheShorterLineWithTheNumberOfTheLog) {
    const std::string results_path = unique_path("errors_results");
    std::fstream results(results_path, std::ios_base::out);
    E.error(mnd::Error, "a()", 9);
    E.result_stream = &results;
    E.error(mnd::Error, "a()", 44);
    E.error(mnd::Debug, "not for users", 44);
    E.error(mnd::Warning, "a()", 134);
    results.close();
    EXPECT_EQ(read_file(results_path),
              " #[ERROR # 2] : attempt to operate on two matrices of different size\n"
              " #[WARNING # 1] : project contains invalid data after check\n");
    std::remove(results_path.c_str());
}

TEST_F(Errors, LineDoesNotDependOnTheFormatOfTheStreamsAndLeavesItAlone) {
    *mnd::_AOS_ << std::left << std::showpos << std::hex;
    mnd::_AOS_->fill('*');
    for (int i = 0; i < 10; ++i)
        E.error(mnd::Error, "a()", 9);
    EXPECT_EQ(mnd::_AOS_->fill(), '*');
    EXPECT_TRUE((mnd::_AOS_->flags() & std::ios_base::hex) != 0);
    EXPECT_NE(log().find("\n  10 #[ERROR # 10] from"), std::string::npos);
}

TEST_F(Errors, MemoryThrowsAfterItsLineHasReachedTheLog) {
    EXPECT_THROW(E.error(mnd::Memory, "a()", 0), mnd::ExceptionType);
    EXPECT_EQ(read_file(path_), "   1 #[MEMORY # 1] from function \"a()\" : not enough memory\n");
}

TEST_F(Errors, ReportsOfTheLowestLevelArriveHere) {
    mnd::report(mnd::Warning, "ran3()", mnd::kSeedTooLarge);
    EXPECT_EQ(
        log(),
        "   1 #[WARNING # 1] from function \"ran3()\" : given seed is too large, initializing ran3 with "
        "random seed \n");
}

TEST_F(Errors, SecondChannelLeavesTheOneOfTheProcessInForce) {
    const std::string second = unique_path("errors_log");
    {
        mnd::Errors other;
        EXPECT_EQ(other.messages.count, 209);
        EXPECT_EQ(other.log_open, 0);
        other.init_log_file(second.c_str(), false);
        EXPECT_EQ(mnd::_AOS_, other.log_stream);
    }
    std::remove(second.c_str());
    EXPECT_EQ(mnd::_AOS_, &mnd::null_stream()) << "points at a stream that is gone";
    mnd::report(mnd::Error, "a()", 9);
    EXPECT_EQ(read_file(path_), "   1 #[ERROR # 1] from function \"a()\" : invalid stream\n");
}

TEST_F(Errors, CodeOutsideTheTableIsNamedUnknown) {
    E.error(mnd::Error, "a()", 209);
    E.error(mnd::Error, "a()", -2);
    EXPECT_EQ(log(),
              "   1 #[ERROR # 1] from function \"a()\" : unknown message\n"
              "   2 #[ERROR # 2] from function \"a()\" : unknown message\n");
}

TEST_F(Errors, ClosedLogSwallowsTextAndStaysMarkedOpen) {
    E.CloseLog_file();
    EXPECT_EQ(E.log_open, 1);
    E.error(mnd::Error, "a()", 9);
    *mnd::_AOS_ << "late progress\n";
    EXPECT_EQ(read_file(path_), "");
}

TEST_F(Errors, CountersRunOnFromLogToLog) {
    E.error(mnd::Error, "a()", 9);
    const std::string second = unique_path("errors_log");
    E.init_log_file(second.c_str(), false);
    E.error(mnd::Error, "a()", 9);
    EXPECT_EQ(read_file(second), "   2 #[ERROR # 2] from function \"a()\" : invalid stream\n");
    std::remove(second.c_str());
}

TEST_F(Errors, AppendKeepsTheTextOfTheFileAndTruncationDropsIt) {
    *mnd::_AOS_ << "first\n";
    E.init_log_file(path_.c_str(), true);
    *mnd::_AOS_ << "second\n";
    EXPECT_EQ(log(), "first\nsecond\n");
    E.init_log_file(E.log_path, false);
    EXPECT_EQ(log(), "");
    EXPECT_STREQ(E.log_path.c_str(), path_.c_str());
}

TEST_F(Errors, LogThatCannotBeOpenedSilencesReportsAndProgress) {
    E.init_log_file((unique_path("no_such_folder") + "/log.txt").c_str(), false);
    EXPECT_EQ(E.log_open, 0);
    ASSERT_NE(mnd::_AOS_, nullptr);
    *mnd::_AOS_ << "lost";
    E.error(mnd::Error, "a()", 9);
    E.error(mnd::Memory, "a()", 0);  // does not even throw
    E.init_log_file(path_.c_str(), false);
    E.error(mnd::Error, "a()", 9);  // and nothing was counted
    EXPECT_EQ(log(), "   1 #[ERROR # 1] from function \"a()\" : invalid stream\n");
}

TEST(Messages, TableHas209TextsWithTheirCodes) {
    EXPECT_EQ(mnd::kNumMessages, 209);
    EXPECT_EQ(E.messages.count, 209);
    const struct {
        int code;
        const char* text;
    } texts[] = {{0, "not enough memory"},
                 {15, "invalid value assigned to \"MatrixSize\""},
                 {22, "\"MatrixData\" section not found"},
                 {53, "too many groups defined in [Structure]"},
                 {61, "section [Samples] must begin with \"SampleName\""},
                 {74, "invalid value assigned to \"GenotypicData: setting to default\""},
                 {100, "invalid character in input file"},
                 {110, "sum of haplotype frequencies do not Add up to specified number"},
                 {123, "no samples have been defined"},
                 {131, "too many sub-sections found (max=4)"},
                 {164, "a nucleotide is not found, impossible to apply Tajima-Nei correction "},
                 {181, "given seed is too large, initializing ran3 with random seed "},
                 {195, "External definition of the \"Genetic Structure\" is not supported anymore in ver 3"},
                 {208, "A population does not contain any data for a given locus"}};
    for (const auto& expected : texts) {
        EXPECT_STREQ(mnd::message_text(expected.code), expected.text);
        EXPECT_STREQ(E.messages[expected.code].c_str(), expected.text);
    }
}

TEST(Messages, NoTextHasChanged) {
    // FNV-1a of all texts in the order of their codes, each followed by a line end. A message is
    // known to users and to scripts by its exact wording.
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (int code = 0; code < mnd::kNumMessages; ++code) {
        for (const char c : std::string(mnd::message_text(code)) + '\n') {
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
        }
    }
    EXPECT_EQ(hash, 0xe3184ab174e91418U);
}

TEST(Messages, SharedTextsAreSeparateEntries) {
    EXPECT_STREQ(mnd::message_text(46), mnd::message_text(56));
    EXPECT_STREQ(mnd::message_text(145), mnd::message_text(159));
    EXPECT_NE(static_cast<int>(mnd::kMissingHaplotypeDefinition), mnd::kMissingDefinitionOfHaplotype);
}

TEST(NullStream, TakesEverythingAndStaysGood) {
    mnd::null_stream() << "text" << 12345 << std::string(100000, 'x') << std::endl;
    EXPECT_TRUE(mnd::null_stream().good());
}
