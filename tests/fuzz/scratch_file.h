// A file of the process's own that fuzz targets write their input to.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "run/errors.h"

namespace mnd_fuzz {

// Folder of this process for files, with a trailing slash; made on the first call.
inline const std::string& scratch_folder() {
    static const std::string folder = [] {
        const auto path =
            std::filesystem::temp_directory_path() / ("mendcore_fuzz_" + std::to_string(::getpid()));
        std::filesystem::create_directories(path);
        return path.string() + '/';
    }();
    return folder;
}

inline void write_file(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

inline std::string as_text(const std::uint8_t* bytes, std::size_t size) {
    return std::string(reinterpret_cast<const char*>(bytes), size);
}

// Silences the program; the fuzzer writes its own reports past the streams.
inline void silence_streams() {
    std::cout.rdbuf(mnd::null_stream().rdbuf());
    std::cerr.rdbuf(mnd::null_stream().rdbuf());
}

}  // namespace mnd_fuzz
