// Runs of the program on projects of the test data.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/temp_folder.h"

namespace mnd_test {

// A folder of its own, in which the program analyses copies of projects under a fixed seed.
class ProjectRuns : public ::testing::Test {
protected:
    // The document of a project.
    //   settings   lines of its settings file, ahead of those that every analysis needs
    //   ending     of the document, ".htm" or ".xml"
    //   option     of the command line, such as "run_silent"
    std::string run_project(const std::string& project, const std::string& settings,
                            const char* ending = ".htm", const char* option = "") {
        namespace fs = std::filesystem;
        fs::copy_file(fs::path(MENDCORE_TEST_DATA) / (project + ".mnp"), folder / (project + ".mnp"),
                      fs::copy_options::overwrite_existing);
        write_text(
            folder / "s.mns",
            settings +
                "DeletionWeight=1.0\nTransitionWeight=1.0\nTranversionWeight=1.0\n"
                "AllowedLevelOfMissingData=0.05\nEpsilonValue=0.0000001\nFrequencyThreshold=0.00001\n");
        const std::string command = "cd '" + folder.path().string() +
                                    "' && MENDCORE_SEED=5 '" MENDCORE_BINARY "' " + project + ".mnp s.mns " +
                                    option + " > stdout.txt 2> stderr.txt";
        EXPECT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(read_text(folder / "stderr.txt"), "");
        result_folder_ = folder / (project + ".res");
        document_ = result_folder_ / (project + ending);
        return read_text(document_);
    }
    // What the last run left.
    std::string console() const { return read_text(folder / "stdout.txt"); }
    std::string log() const { return read_text(result_folder_ / "Mendrake_log.txt"); }
    bool is_well_formed() const {
        return std::system(("xmllint --noout '" + document_.string() + "' 2>/dev/null").c_str()) == 0;
    }

    // The number behind a text; 1000 without the text.
    static double number_behind(const std::string& text, const std::string& before) {
        const std::size_t at = text.find(before);
        return at == std::string::npos ? 1000.0 : std::atof(text.c_str() + at + before.size());
    }

    TempFolder folder;

private:
    std::filesystem::path result_folder_;
    std::filesystem::path document_;
};

}  // namespace mnd_test
