// The keywords of the [Profile] section, read from single lines of a project file.
#pragma once

#include "foundation/my_string.h"
#include "input/profile.h"

namespace mnd {

// Which keywords of the profile were met, with a good value or a bad one.
struct ProfileKeywordsSeen {
    bool nb_samples = false;
    bool data_type = false;
    bool genotypic_data = false;
    bool locus_separator = false;
    bool gametic_phase = false;
    bool recessive_allele = false;
    bool missing_data = false;
};

enum class LineOutcome {
    kNotMine,  // no keyword of the profile stands in the line
    kTaken,    // the line was one of the profile's, with a good value or a bad one
    kStop,     // the project can't be read any further
};

// Tests a line for the keywords of the profile, in their order; the first that occurs
// anywhere in it decides, in whatever section the line stands.
//   line    the line without comment, as written
//   upper   its upper-case copy
LineOutcome read_profile_line(my_string const& line, my_string const& upper, int line_no,
                              ProfileSettings& profile, ProfileKeywordsSeen& seen);

// Values of single keywords. Each is false, with the field untouched, for a text that is no
// such value.

// The first name of a data type that occurs in the text, in any case of letters.
bool data_type_from_text(my_string const& text, int& data_type);
// "TAB", "WHITESPACE", "NONE" or "\0" (backslash and zero) anywhere in the text, in any case;
// otherwise a single character in quotes, blanks aside.
bool separator_from_text(my_string const& text, char& separator);
// "ABS" or "REL" anywhere in the text, in capitals.
bool frequency_from_text(my_string const& text, int& frequency);
// The name of an allele: not empty, and without blank.
bool is_recessive_allele(my_string const& text);

}  // namespace mnd
