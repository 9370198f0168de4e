// Small files for tests.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include <unistd.h>

namespace mnd_test {

// A path in the folder of temporary files that no other test uses.
inline std::string unique_path(const std::string& stem) {
    static std::atomic<int> number{0};
    return ::testing::TempDir() + stem + "_" + std::to_string(::getpid()) + "_" + std::to_string(++number);
}

inline void write_file(const std::string& path, std::string_view text) {
    std::ofstream out(path, std::ios_base::binary);
    out << text;
}

inline std::string read_file(const std::string& path) {
    std::ifstream in(path, std::ios_base::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// A result document without the names of its anchors, which hold the time of the run.
inline std::string without_anchors(std::string document) {
    constexpr std::string_view kAnchor = "<A NAME=";
    for (std::size_t at = document.find(kAnchor); at != std::string::npos; at = document.find(kAnchor, at))
        document.erase(at, document.find('>', at) - at);
    return document;
}

}  // namespace mnd_test
