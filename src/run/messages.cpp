#include "run/messages.h"

#include <array>
#include <cstddef>

namespace mnd {

namespace {

// The texts in the order of their codes.
constexpr auto kMessages = std::to_array<const char*>({
    "not enough memory",                                                                        // 0
    "array out of bounds",                                                                      // 1
    "ill-defined genetic structure",                                                            // 2
    "too many elements to permute distance matrix",                                             // 3
    "missing file (Var A null distribution)",                                                   // 4
    "missing file (Var B null distribution)",                                                   // 5
    "missing file (Var C null distribution)",                                                   // 6
    "missing file (Var D null distribution)",                                                   // 7
    "missing file (BNumMat)",                                                                   // 8
    "invalid stream",                                                                           // 9
    "invalid BNumMat file",                                                                     // 10
    "missing haplotype label(s)",                                                               // 11
    "error while reading haplotype labels",                                                     // 12
    "error while reading distance matrix",                                                      // 13
    "no value assigned to \"MatrixSize\"",                                                      // 14
    "invalid value assigned to \"MatrixSize\"",                                                 // 15
    "invalid value assigned to \"LabelPosition\"",                                              // 16
    "reading distance matrix in external file",                                                 // 17
    "error while reading distance matrix in external file",                                     // 18
    "unexpected keyword after \"MatrixData\"",                                                  // 19
    "missing file name for external distance matrix",                                           // 20
    "error while reading distance matrix data",                                                 // 21
    "\"MatrixData\" section not found",                                                         // 22
    "unexpected keyword in [DistanceMatrix] section",                                           // 23
    "error while reading distance matrix",                                                      // 24
    "invalid RFLP data",                                                                        // 25
    "invalid DNA data",                                                                         // 26
    "invalid MICROSAT data",                                                                    // 27
    "haplotype defined in distance matrix is not found in samples",                             // 28
    "warning, no labels defined for distance matrix",                                           // 29
    "invalid distance matrix size",                                                             // 30
    "haplotype already defined",                                                                // 31
    "missing haplotype data",                                                                   // 32
    "unable to read haplotype data",                                                            // 33
    "bad value assigned to \"HaplListName\"",                                                   // 34
    "reading haplotype list in external file",                                                  // 35
    "unable to open external haplotype file",                                                   // 36
    "error while reading external haplotype file",                                              // 37
    "invalid keyword assigned to \"HaplList\"",                                                 // 38
    "missing braces after HaplList",                                                            // 39
    "error while reading haplotype list",                                                       // 40
    "invalid keyword in section [HaplotypeDefinition]",                                         // 41
    "unable to open matrix file",                                                               // 42
    "error while reading matrix",                                                               // 43
    "attempt to operate on two matrices of different size",                                     // 44
    "unable to open external structure file",                                                   // 45
    "invalid value assigned to \"StructureName\"",                                              // 46
    "invalid value assigned to \"NbGroups\"",                                                   // 47
    "invalid value assigned to \"DistMatLabel\"",                                               // 48
    "unknown number of groups",                                                                 // 49
    "missing opening brace for group definition",                                               // 50
    "unknown sample name",                                                                      // 51
    "missing closing brace for group definition",                                               // 52
    "too many groups defined in [Structure]",                                                   // 53
    "invalid keyword in section [Structure]",                                                   // 54
    "invalid value assigned to keyword",                                                        // 55
    "invalid value assigned to \"StructureName\"",                                              // 56
    "invalid value assigned to \"DistMatLabel\"",                                               // 57
    "unable to build haplotype table",                                                          // 58
    "invalid data or output",                                                                   // 59
    "invalid index in contingency table",                                                       // 60
    "section [Samples] must begin with \"SampleName\"",                                         // 61
    "invalid value assigned to \"SampleName\"",                                                 // 62
    "unable to read sample data",                                                               // 63
    "missing closing brace in sample definition",                                               // 64
    "two samples have the same name: renaming second sample",                                   // 65
    "invalid value assigned to \"SampleSize\"",                                                 // 66
    "invalid keyword in section [Samples]",                                                     // 67
    "a population has no defined data",                                                         // 68
    "phenotypes have different number of loci",                                                 // 69
    "haplotypes have different number of loci",                                                 // 70
    "samples do not have the same number of loci",                                              // 71
    "no degrees of freedom left",                                                               // 72
    "missing value for \"GenotypicData\": setting to default",                                  // 73
    "invalid value assigned to \"GenotypicData: setting to default\"",                          // 74
    "invalid value assigned to \"DataType\": setting to default",                               // 75
    "missing loci labels",                                                                      // 76
    "missing value for \"UsedHaplList\": setting to default",                                   // 77
    "missing value for \"MissingData\": setting to default",                                    // 78
    "missing value for \"LocusListing\": setting to default",                                   // 79
    "invalid value for \"LocusListing\": setting to default",                                   // 80
    "invalid value for \"NbLoci\": setting to default",                                         // 81
    "invalid value for \"LocusSeparator\": setting to default",                                 // 82
    "missing value for \"IndividualLevel\"",                                                    // 83
    "invalid value for \"IndividualLevel\": setting to default",                                // 84
    "missing value for \"Interleave\": setting to default",                                     // 85
    "invalid value for \"Interleave\": setting to default",                                     // 86
    "invalid value for \"Frequency\": setting to default",                                      // 87
    "missing value for \"GameticPhase\": setting to default",                                   // 88
    "invalid value for \"GameticPhase\": setting to default",                                   // 89
    "invalid recessive allele, switching off recessive data",                                   // 90
    "invalid frequency threshold value, restoring default (1e-5)",                              // 91
    "invalid epsilon value, restoring default (1e-7)",                                          // 92
    "unable to read project \"Title\"",                                                         // 93
    "missing value for \"NbSamples\"",                                                          // 94
    "invalid value for \"NbSamples\"",                                                          // 95
    "missing value for \"NbGroups\"",                                                           // 96
    "invalid value for \"NbGroups\"",                                                           // 97
    "invalid keyword in section [Profile]",                                                     // 98
    "unable to open Mendrake ini file",                                                         // 99
    "invalid character in input file",                                                          // 100
    "unable to read a character in input file",                                                 // 101
    "unable to find section in profile",                                                        // 102
    "unable to open Mendrake input file",                                                       // 103
    "unable to read subsection id",                                                             // 104
    "numerical error",                                                                          // 105
    "haplotype frequencies are not absolute frequencies",                                       // 106
    "allele index exceeds vector size",                                                         // 107
    "haplotype list is empty",                                                                  // 108
    "number of haplotype is zero",                                                              // 109
    "sum of haplotype frequencies do not Add up to specified number",                           // 110
    "number of haplotypes does not correspond to initial value",                                // 111
    "invalid character while reading phenotype",                                                // 112
    "invalid data type",                                                                        // 113
    "too many heterozygous loci",                                                               // 114
    "attempt to do computation on non-selected alleles",                                        // 115
    "unable to find specified allele",                                                          // 116
    "a phenotype has zero probability",                                                         // 117
    "invalid number of selected loci",                                                          // 118
    "number of alleles changed after permutation",                                              // 119
    "number of phenotypes changed after DB expansion",                                          // 120
    "microsatellite allele not coded as an integer value",                                      // 121
    "distance matrix does not exist",                                                           // 122
    "no samples have been defined",                                                             // 123
    "no group(s) have been defined",                                                            // 124
    "invalid structure: only one population per group",                                         // 125
    "unable to open project file",                                                              // 126
    "unable to read Profile Settings",                                                          // 127
    "no subsections found",                                                                     // 128
    "distance matrix in project file is ignored",                                               // 129
    "specified haplotype list was found empty",                                                 // 130
    "too many sub-sections found (max=4)",                                                      // 131
    "unable to write distance matrix output file",                                              // 132
    "unable to write project back-up file",                                                     // 133
    "project contains invalid data after check",                                                // 134
    "haplotype list incompatible with distance matrix",                                         // 135
    "distance matrix could not be computed",                                                    // 136
    "haplotype distance matrix cannot be computed on genotypic data",                           // 137
    "incompatibility between known gametic phase and recessive data",                           // 138
    "RFLP haplotypes have different length",                                                    // 139
    "sample size is zero",                                                                      // 140
    "sum of haplotype frequencies do not match specified sample size : adjusting sample size",  // 141
    "unable to read haplotype id",                                                              // 142
    "haplotype cannot be inserted into database",                                               // 143
    "unable to read haplotype frequency",                                                       // 144
    "missing haplotype definition",                                                             // 145
    "data already defined",                                                                     // 146
    "error while reading haplotypic data",                                                      // 147
    "sum of genotype frequencies do not match specified sample size : adjusting sample size",   // 148
    "unable to read genotype frequency",                                                        // 149
    "unable to read genotype data",                                                             // 150
    "error while reading genotypic data",                                                       // 151
    "phenotype data base is empty",                                                             // 152
    "recessive allele inserted at unspecified position in DB",                                  // 153
    "invalid number of batches",                                                                // 154
    "unable to build contingency table",                                                        // 155
    "haplotype DB is not empty: flushing DB",                                                   // 156
    "suspicious haplotype DB transfer",                                                         // 157
    "sum of allele frequencies is zero",                                                        // 158
    "missing haplotype definition",                                                             // 159
    "allele not found in DB",                                                                   // 160
    "DNA sequences have different lengths",                                                     // 161
    "sequences too divergent for Jukes and Cantor correction",                                  // 162
    "sequences too divergent for Kimura-2P correction",                                         // 163
    "a nucleotide is not found, impossible to apply Tajima-Nei correction ",                    // 164
    "sequences too divergent for Tajima-Nei correction",                                        // 165
    "mismatch vector not available",                                                            // 166
    "linkage disequilibrium cannot be computed on a single locus",                              // 167
    "invalid number of pairwise linkage disequilibrium values",                                 // 168
    "sum of haplotype frequencies do not match specified sample size",                          // 169
    "sum of haplotype frequencies is zero",                                                     // 170
    "nucleotide composition too unbalanced for Tamura correction",                              // 171
    "unable to read \"Structure\" section, no samples are defined",                             // 172
    "unable to associate Haplotype with a valid matrix LABEL",                                  // 173
    "Sum of elements should be equal to 1",                                                     // 174
    "attempting to compute log(0)",                                                             // 175
    "nucleotide composition too unbalanced for Tamura-Nei correction",                          // 176
    "hits vector has a bad size ",                                                              // 177
    "negative S value, Fs cannot be computed ",                                                 // 178
    "too many alleles, or too large sample ",                                                   // 179
    "attempt to compute negative sqrt ",                                                        // 180
    "given seed is too large, initializing ran3 with random seed ",                             // 181
    "singular Jacobian",                                                                        // 182
    "r singular in broydn",                                                                     // 183
    "equation solving did not converge, too many iterations",                                   // 184
    "Roundoff problem in lnsrch.",                                                              // 185
    "Unable to read specified number of Mantel Matrices",                                       // 186
    "No molecular diversity within a sample while performing Fu's test",                        // 187
    "missing '=' sign in keyword definition in project file",                                   // 188
    "missing keyword in project file",                                                          // 189
    "bad value assigned to keyword in project file",                                            // 190
    "reading sample data in external file",                                                     // 191
    "unable to open external sample data file",                                                 // 192
    "error while reading external sample data file",                                            // 193
    "missing closing brace in Sampledata definition",                                           // 194
    "External definition of the \"Genetic Structure\" is not supported anymore in ver 3",       // 195
    "unable to read \"Mantel\" section, no samples are defined",                                // 196
    "unable to read value in \"Mantel\" section",                                               // 197
    "no value assigned to \"MatrixNumber\"",                                                    // 198
    "invalid value assigned to \"MatrixNumber\"",                                               // 199
    "unable to read external distance matrix file",                                             // 200
    "problem in reading labels in UsedYmatrixLabels section",                                   // 201
    "unable to compute Genetic Structure with current settings",                                // 202
    "missing required keywords definition in project file",                                     // 203
    "unable to make connections in minimum spanning tree",                                      // 204
    "group does not contain any population sample",                                             // 205
    "sample included twice in a group",                                                         // 206
    "\"SampleName\" keyword not found",                                                         // 207
    "A population does not contain any data for a given locus",                                 // 208
});

static_assert(kMessages.size() == static_cast<std::size_t>(kNumMessages));

}  // namespace

const char* message_text(int code) {
    if (code < 0 || code >= kNumMessages) return "unknown message";
    return kMessages[static_cast<std::size_t>(code)];
}

}  // namespace mnd
