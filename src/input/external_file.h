// Files beside a project file that it names with EXTERN.
#pragma once

#include <fstream>

#include "foundation/my_string.h"

namespace mnd {

class settings;

// Opens an external file for reading. A name that does not begin with a slash is looked for
// first in the result folder, where the pre-pass leaves its cleaned copy, and then in the
// folder of the project.
//   s      the settings in force; null: the name is taken as it is
// Result: an open stream, or one that has failed
std::ifstream open_external_file(const my_string& name, const settings* s);

}  // namespace mnd
