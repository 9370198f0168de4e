#include "input/external_name.h"

#include <cstdio>
#include <cstring>

#include "run/errors.h"
#include "run/process.h"
#include "run/settings.h"

namespace mnd {

void build_external_name(char* out, const char* name, settings const* s) {
    const bool has_path = std::strpbrk(name, "\\/") != nullptr;
    const char* folder = "";
    if (!has_path) {
        if (s == nullptr) {
            *_AOS_ << "Pointer to project dir is not initialized. ERROR" << std::endl;
        } else {
            folder = s->project_directory.c_str();
        }
    }
    std::snprintf(out, kPathBuffer, "%s%s", folder, name);
}

}  // namespace mnd
