// Text of a user inside markup, scripts and links.
//
// Names of samples, haplotypes, groups, loci and files come from a user and may hold any byte.
// Each of these functions makes such a text harmless for one place; the program's own texts
// are written as they are. Bytes above 127 pass unchanged wherever a text is shown: nothing
// here knows about encodings.
#pragma once

#include <string>
#include <string_view>

namespace mnd {

// For element text of the result document, HTML or XML: & < > become entities, and a control
// character that XML forbids (all below 32 but TAB, LF, CR) becomes the replacement character.
std::string escape_text(std::string_view text);

// For an attribute value between double quotes: as `escape_text`, and the double quote too.
std::string escape_attribute(std::string_view text);

// For a string literal between double quotes in a script: \ " and line ends are escaped;
// every other control character becomes a \x escape.
std::string escape_script(std::string_view text);

// For a link to a file that lies in the folder of the page, name without path. Blanks become
// "%20"; so do, with their own numbers, the characters that would end or bend a link
// (" # % ' : < > ? \ ^ ` { | }, control characters) and bytes above 127, which a browser
// would otherwise read in the encoding of the page.
std::string encode_file_link(std::string_view file_name);

// For a path in a link: as `encode_file_link`, but ":" stays and a backslash becomes a slash.
std::string encode_path(std::string_view path);

// For the name of an anchor behind "#": blanks and what would end or bend a link, as above,
// but bytes above 127 stay, so that link and anchor are read in the same encoding.
std::string encode_anchor(std::string_view anchor);

// Name or label of a user as a table cell of the document: `text` escaped, and padded with
// blanks to `width` characters as it will be seen (an entity counts as one).
std::string escaped_left(std::string_view text, int width);
std::string escaped_right(std::string_view text, int width);

}  // namespace mnd
