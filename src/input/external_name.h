// Path of an external file in the older syntax of a project.
#pragma once

namespace mnd {

class settings;

// Path of an external file in the project's folder: a name with a slash or backslash as it
// is, any other behind the folder that the settings hold. Without settings the name stays as
// it is, with a text in the log.
//   out   kPathBuffer bytes; a longer path is cut there
void build_external_name(char* out, const char* name, settings const* s);

}  // namespace mnd
