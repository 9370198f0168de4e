// Catches what the code under test reports, prints and leaves in the current directory.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "foundation/report.h"

namespace mnd_test {

struct Report {
    mnd::ErrorType type;
    std::string function_name;
    int code;
    bool operator==(const Report&) const = default;
};

inline void PrintTo(const Report& r, std::ostream* os) {
    *os << "type " << r.type << " from \"" << r.function_name << "\" code " << r.code;
}

// Collects all reports for as long as it lives.
class CapturedReports {
public:
    CapturedReports() : before_(mnd::set_report_hook(collect)) { list().clear(); }
    ~CapturedReports() { mnd::set_report_hook(before_); }
    CapturedReports(const CapturedReports&) = delete;
    CapturedReports& operator=(const CapturedReports&) = delete;

    const std::vector<Report>& all() const { return list(); }

private:
    static std::vector<Report>& list() {
        static std::vector<Report> reports;
        return reports;
    }
    static void collect(mnd::ErrorType type, const char* function_name, int code) {
        list().push_back({type, function_name, code});
    }
    mnd::ReportHook before_;
};

// Collects what goes to std::cout for as long as it lives.
class CapturedOutput {
public:
    CapturedOutput() : before_(std::cout.rdbuf(text_.rdbuf())) {}
    ~CapturedOutput() { std::cout.rdbuf(before_); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
    std::streambuf* before_;  // not owned: the buffer of std::cout
};

// Makes a fresh folder the current directory for as long as it lives.
class ScratchDirectory {
public:
    explicit ScratchDirectory(const std::string& name)
        : before_(std::filesystem::current_path()),
          path_(std::filesystem::path(::testing::TempDir()) / (name + '_' + std::to_string(::getpid()))) {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
        std::filesystem::current_path(path_);
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

private:
    std::filesystem::path before_;
    std::filesystem::path path_;
};

}  // namespace mnd_test
