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
    // Starts the program in the folder.
    //   arguments   of the command line; none: the files of a batch
    // Returns:      what it says on standard error
    std::string start(const std::string& arguments) {
        const std::string command = "cd '" + folder.path().string() +
                                    "' && MENDCORE_SEED=5 '" MENDCORE_BINARY "' " + arguments +
                                    " > stdout.txt 2> stderr.txt";
        EXPECT_EQ(std::system(command.c_str()), 0);
        return read_text(folder / "stderr.txt");
    }
    // The document of a project: of the test data, unless the folder has one of this name.
    //   settings   lines of its settings file, ahead of those that every analysis needs
    //   ending     of the document, ".htm" or ".xml"
    //   option     of the command line, such as "run_silent"
    std::string run_project(const std::string& project, const std::string& settings,
                            const char* ending = ".htm", const char* option = "") {
        namespace fs = std::filesystem;
        const fs::path file = folder / (project + ".mnp");
        if (!fs::exists(file)) fs::copy_file(fs::path(MENDCORE_TEST_DATA) / (project + ".mnp"), file);
        write_text(
            folder / "s.mns",
            settings +
                "DeletionWeight=1.0\nTransitionWeight=1.0\nTranversionWeight=1.0\n"
                "AllowedLevelOfMissingData=0.05\nEpsilonValue=0.0000001\nFrequencyThreshold=0.00001\n");
        EXPECT_EQ(start(project + ".mnp s.mns " + option), "");
        project_ = project;
        document_ = folder / (project + ".res") / (project + ending);
        return read_text(document_);
    }
    // What the last run left.
    std::string console() const { return read_text(folder / "stdout.txt"); }
    std::string log() const { return log_of(project_); }
    bool is_well_formed() const {
        return std::system(("xmllint --noout '" + document_.string() + "' 2>/dev/null").c_str()) == 0;
    }
    // What a run left of this project.
    std::string log_of(const std::string& project) const {
        return read_text(folder / (project + ".res/Mendrake_log.txt"));
    }

    // The number behind a text; 1000 without the text.
    static double number_behind(const std::string& text, const std::string& before) {
        const std::size_t at = text.find(before);
        return at == std::string::npos ? 1000.0 : std::atof(text.c_str() + at + before.size());
    }

    TempFolder folder;

private:
    std::string project_;  // of the last run
    std::filesystem::path document_;
};

}  // namespace mnd_test
