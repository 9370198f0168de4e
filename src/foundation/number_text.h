// Numbers as settings files and run files spell them.
//
// These parsers never fail: they take what they can use and skip the rest. Their ways with
// stray characters are part of the file formats, and differ from the standard library's.
#pragma once

#include <cstdint>

namespace mnd {

// The digits of the text as one whole number, whatever stands between them: "1 2", "1a2" and
// "12" are 12, "12.5" is 125, the empty text and null are 0. A minus sign flips the sign of the
// digits behind it, so "1e-07" is 93; one with no digit behind it negates the total, so "5-"
// is -5. More than 18 digits wrap around 64 bits.
std::int64_t my_atol(const char* text);

// `my_atol`, cut to 32 bits.
std::int32_t my_atoi(const char* text);

// A decimal number, with a fraction behind a point and an exponent behind a lower-case "d" or
// "e". Three traits are kept on purpose, since existing files are read with them:
//   - without a point the whole text is read by `my_atol`, so "1e-07" is 93e-07;
//   - a negative number loses the last digit before its point ("-12.5" is -1.5), and "-0.5"
//     is 0.5;
//   - an exponent applies the sign of a leading minus once more ("-12.5e2" is 150).
// Each non-blank character of the fraction counts as a digit of it. Fraction digits beyond the
// 18th, which no double can hold, are left out. The quotient by a power of ten is taken, so
// that "0.050000" is the double nearest to 0.05.
double my_atof(const char* text);

}  // namespace mnd
