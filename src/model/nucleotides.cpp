#include "model/nucleotides.h"

#include <string_view>

namespace mnd {
namespace {

// The second characters that make a pair with `first` a member of each class.
struct ClassRow {
    char first;
    std::string_view transitions, transversions, deletions, undetermined;
};

constexpr ClassRow kRows[] = {
    {'-', "", "", "ABCDGHKMNRSTVWY", ""},
    {'0', "", "", "-", "1"},
    {'1', "", "", "-", "0"},
    {'A', "G", "CTY", "-", "BKS"},
    // Kept on purpose: no deletion against "-". Test: Nucleotides.BAgainstAGapIsNoDeletion
    {'B', "", "", "", "A"},
    {'C', "T", "AGR", "-", "DKW"},
    {'D', "", "", "-", "C"},
    {'G', "A", "CTY", "-", "HMW"},
    {'H', "", "", "-", "G"},
    {'K', "", "", "-", "ACM"},
    {'M', "", "", "-", "GKT"},
    {'N', "", "", "-", ""},
    {'R', "", "CTY", "-", ""},
    {'S', "", "", "-", "ATW"},
    {'T', "C", "AGR", "-", "MSV"},
    {'V', "", "", "-", "T"},
    {'W', "", "", "-", "CGS"},
    {'Y', "", "AGR", "-", ""},
};

constexpr std::array<std::uint8_t, 65536> build_classes() {
    std::array<std::uint8_t, 65536> classes{};
    for (const ClassRow& row : kRows) {
        const std::size_t base = 256 * static_cast<std::size_t>(static_cast<unsigned char>(row.first));
        const std::string_view members[] = {row.transitions, row.transversions, row.deletions,
                                            row.undetermined};
        std::uint8_t number = 0;
        for (const std::string_view list : members) {
            ++number;
            for (const char second : list)
                classes[base + static_cast<unsigned char>(second)] = number;
        }
    }
    return classes;
}

}  // namespace

constinit const std::array<std::uint8_t, 65536> kNucleotideClasses = build_classes();

}  // namespace mnd
