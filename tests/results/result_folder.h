// A result folder under the test directory, with settings that point into it.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "results/result_document.h"
#include "results/xml_tags.h"
#include "run/settings.h"
#include "support/temp_folder.h"

namespace mnd {

class ResultFolder : public ::testing::Test {
protected:
    ResultFolder() {
        name_files("project.htm");
        s.run_time_stamp = "05/03/24at10:11:12";
    }
    ~ResultFolder() override {
        xmlOutput = false;
        htmlOutput = true;
        TXmlTag::time = "not set yet";
    }

    // Points the settings to a document of that name in the folder.
    void name_files(const std::string& document) {
        const ResultFileNames names = result_file_names(path(document), "/opt/my programs/");
        s.program_directory = "/opt/my programs/";
        s.result_file_name = path(document).c_str();
        s.tree_file_name = names.tree_page.c_str();
        s.js_file_name = names.tree_script.c_str();
        s.main_file_name = names.main_page.c_str();
        s.style_file_name = names.style_sheet.c_str();
        s.tree_script_name = names.tree_library.c_str();
    }

    std::string path(const std::string& name) const { return (folder / name).string(); }

    std::string content(const std::string& name) const { return mnd_test::read_text(folder / name); }

    // Output of a shell command, both of its streams.
    static std::string output_of(const std::string& command) {
        const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>&1").c_str(), "r"), pclose);
        std::string text;
        std::array<char, 4096> buffer{};
        while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe.get()) != nullptr) {
            text += buffer.data();
        }
        return text;
    }

    static std::string quoted(const std::string& argument) {
        std::string text = "'";
        for (const char c : argument)
            text += c == '\'' ? std::string("'\\''") : std::string(1, c);
        return text + "'";
    }

    mnd_test::TempFolder folder;
    settings s;
};

}  // namespace mnd
