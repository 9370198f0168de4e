#include "input/external_file.h"

#include "input/keyword_reader.h"
#include "run/settings.h"

namespace mnd {

std::ifstream open_external_file(const my_string& name, const settings* s) {
    if (s == nullptr || detectFullPathInFileName(name)) return std::ifstream(name.c_str());
    std::ifstream cleaned((s->result_directory + name).c_str());
    if (cleaned.is_open() && !s->result_directory.is_null()) return cleaned;
    return std::ifstream((s->project_directory + name).c_str());
}

}  // namespace mnd
