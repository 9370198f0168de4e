#include "input/external_file.h"

#include "input/keyword_reader.h"
#include "run/settings.h"

namespace mnd {

namespace {

// A name that leads out of the project's folder has no cleaned copy; in the result folder it
// would lead to another file.
bool may_have_copy(const my_string& name) {
    return !name.contains("..");
}

}  // namespace

std::ifstream open_external_file(const my_string& name, const settings* s) {
    if (s == nullptr || detectFullPathInFileName(name)) return std::ifstream(name.c_str());
    if (!s->result_directory.is_null() && may_have_copy(name)) {
        std::ifstream cleaned((s->result_directory + name).c_str());
        if (cleaned.is_open()) return cleaned;
    }
    return std::ifstream((s->project_directory + name).c_str());
}

}  // namespace mnd
