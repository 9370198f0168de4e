// Reads arbitrary bytes as a settings file, prints the settings that came of it in both forms,
// and reads back what was written.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

#include "run/settings.h"
#include "scratch_file.h"

namespace {

// A look-up that finds nothing leaves the empty text, whatever the room.
void look_up(mnd::settings& s, const std::string& file) {
    for (const int size : {1, 2, 14, 100}) {
        std::string buffer(static_cast<std::size_t>(size), '#');
        const int found = s.GetPrivateProfileString("", "TaskNumber", "", buffer.data(), size, file.c_str());
        if ((found == 0) != (buffer[0] == '\0')) std::abort();
    }
}

}  // namespace

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
    look_up(*s, file);
    s->data_type = size > 0 ? bytes[0] % 5 : 0;
    std::ostringstream block;
    s->print_pretty_settings(block);

    const long tasks = s->TaskNumber;
    s->print_settings(mnd::my_string(written.c_str()));
    s->read_settings(mnd::my_string(written.c_str()));
    if (s->TaskNumber != tasks) std::abort();  // the first key of a written file is always found
    return 0;
}
