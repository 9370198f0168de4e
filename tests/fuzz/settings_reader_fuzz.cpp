// Reads arbitrary bytes as a settings file, and writes the settings that came of it.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "run/settings.h"
#include "scratch_file.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    mnd_fuzz::silence_streams();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string file = mnd_fuzz::scratch_folder() + "fuzz.mns";
    const std::string written = mnd_fuzz::scratch_folder() + "written.mns";
    mnd_fuzz::write_file(file, mnd_fuzz::as_text(bytes, size));
    const auto s = std::make_unique<mnd::settings>();
    s->read_settings(mnd::my_string(file.c_str()));
    s->print_settings(mnd::my_string(written.c_str()));
    s->read_settings(mnd::my_string(written.c_str()));
    return 0;
}
