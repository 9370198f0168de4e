// Classes of differences between two characters of a DNA sequence.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace mnd {

// What a difference between two characters stands for. An undetermined substitution is one
// between two ambiguity symbols, or a base and a symbol, that share no base but could be
// either a transition or a transversion.
enum NucleotideClass : int {
    kNoSubstitution = 0,
    kTransition = 1,
    kTransversion = 2,
    kDeletion = 3,
    kUndeterminedSubstitution = 4
};

// Class of each ordered pair of characters, at 256 * first + second.
extern const std::array<std::uint8_t, 65536> kNucleotideClasses;

// Class of the difference between a, in one sequence, and b, in another one.
//   a, b    upper-case symbols of the IUPAC code, "-" for a gap, "0" and "1" for binary data;
//           any other character gives kNoSubstitution
// The order counts: "-" against "B" is a deletion, "B" against "-" is not.
// The missing-data character of a project is not known here: callers treat it before.
inline NucleotideClass compare_nucleotides(char a, char b) {
    const std::size_t row = static_cast<unsigned char>(a);
    const std::size_t column = static_cast<unsigned char>(b);
    return static_cast<NucleotideClass>(kNucleotideClasses[256 * row + column]);
}

}  // namespace mnd
