// Numbers read from text in the manner of the settings file and the run file.
//
// These parsers are lenient in their own way, and files are written with it in mind: they
// never fail, and skip what they don't understand. The text is never null.
#pragma once

#include <cstdint>

namespace mnd {

// The digits of the text as one number: "1 2" and "1a2" give 12, "12.5" gives 125, the empty
// text 0. A minus sign negates the digits behind it, whatever stands between ("1-2" gives
// -2 + 10 = 8); one without a digit behind it negates the whole ("5-" gives -5).
// A number beyond 64 bits wraps around.
long my_atol(char const* text);

// my_atol, cut to 32 bits.
int my_atoi(char const* text);

// A number with a decimal point and perhaps an exponent behind a lower-case "d" or "e".
//
// The exponent is looked for behind the point only; without a point all of the text is
// the integer part ("1e-07" gives 93: -7 and 100). A negative number loses the last digit
// before its point ("-12.5" gives -1.5), its sign is applied to an exponent form twice
// ("-1.5e2" is positive), and "-0.5" gives 0.5.
// Kept on purpose: the numbers of existing files are read like that.
// Tests: NumberText.AtofKeepsItsWayWithNegativeNumbers, NumberText.AtofWithoutAPoint
double my_atof(char const* text);

// Writes the number's decimal text into the buffer, which must have room (12 and 48 bytes);
// returns the buffer. The last argument has no effect.
char* my_itoa(int value, char* buffer, int format);
char* my_ftoa(float value, char* buffer, float format);

}  // namespace mnd
