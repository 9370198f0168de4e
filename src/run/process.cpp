#include "run/process.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace mnd {

bool silentMendrake = false;
char* proj_file = nullptr;
char* set_file = nullptr;
char* run_file = nullptr;
char* MendrakeExeDirectory = nullptr;
int numSamplesAnalysed = 0;

namespace {

void free_path(char*& path) {
    delete[] path;
    path = nullptr;
}

}  // namespace

void copy_path(char* buffer, const char* text, int capacity) {
    std::snprintf(buffer, static_cast<std::size_t>(capacity), "%s", text);
}

void free_process_paths() {
    free_path(proj_file);
    free_path(set_file);
    free_path(run_file);
    free_path(MendrakeExeDirectory);
}

const char* control_directory() {
    return MendrakeExeDirectory != nullptr ? MendrakeExeDirectory : "";
}

my_string current_directory() {
    std::array<char, 999> buffer{};
    if (getcwd(buffer.data(), buffer.size()) == nullptr) return my_string("");
    return my_string(buffer.data());
}

bool MY_CreateDirectory(char const* path) {
    mkdir(path, 0755);
    return true;
}

void MY_DeleteFile(char const* path) {
    std::remove(path);
}

bool file_opens(const char* path) {
    // A folder opens as a stream too, yet nothing can be read from it.
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) return false;
    return std::ifstream(path).is_open();
}

void backslashes_to_slashes(char* path) {
    std::replace(path, path + std::strlen(path), '\\', '/');
}

}  // namespace mnd
