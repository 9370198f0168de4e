// Opens arbitrary bytes as a project in the older syntax: profile, distance matrix, haplotypes, samples
// and structure, token by token. The input is its own external file, under the name "fuzz.mnp".
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "run/process.h"
#include "run/project.h"
#include "scratch_file.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    mnd_fuzz::silence_streams();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string folder = mnd_fuzz::scratch_folder();
    const std::string path = folder + "fuzz.mnp";
    mnd_fuzz::write_file(path, mnd_fuzz::as_text(bytes, size));
    mnd::copy_path(mnd::settings::input_file, path.c_str(), mnd::settings::kInputFileSize);
    const auto project = std::make_unique<mnd::Project>();
    project->the_settings.project_directory = folder.c_str();
    project->ProfileSettings::the_settings = &project->the_settings;
    project->open();
    return 0;
}
