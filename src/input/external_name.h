// Names of external files of a project, as the [Data] section gives them.
#pragma once

#include "foundation/my_string.h"

namespace mnd {

class settings;

// Path of an external file in the project's folder: a name with a slash or backslash as it
// is, any other behind the folder that the settings hold. Without settings the name stays as
// it is, with a text in the log.
//   out   kPathBuffer bytes; a longer path is cut there
void build_external_name(char* out, const char* name, settings const* s);

// Where an external file is to be opened, given its name as written. A name that begins
// with a slash stands. Any other is looked for in the result folder first, where the
// cleaned copy of the file lies, and then in the project's folder.
my_string external_file_to_open(my_string const& name, settings const& s);

}  // namespace mnd
