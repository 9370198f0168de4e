// When each analysis between samples is called.
//
// The task set alone does not decide: an analysis of molecular variance runs in up to two forms,
// and the matrix of distances between haplotypes serves several of the others.
#pragma once

namespace mnd {

class settings;

// True when an analysis of molecular variance is selected in one of its forms, over whole
// haplotypes or locus by locus.
bool wants_amova(const settings& s);

// True when the document needs a heading for the comparisons between samples.
bool opens_structure_section(const settings& s);

// True when an entry of the tree is needed for them.
bool opens_structure_folder(const settings& s);

// True when the distances between all haplotypes of the project have to be computed.
bool needs_haplotype_matrix(const settings& s);

// True when the haplotypes have to be bound to the rows of a matrix, computed or given. A correlation of
// matrices alone needs none unless there is one.
bool needs_matrix_rows(const settings& s, bool has_matrix);

// True when that matrix is printed, once it is computed.
bool prints_haplotype_matrix(const settings& s);

// True when samples are compared at all: analysis of variance, pairs of samples, or the
// correlation of matrices.
bool compares_samples(const settings& s);

// True when these comparisons work on whole haplotypes, and when they work locus by locus.
// Neither holds for a task set without one of them.
bool compares_whole_haplotypes(const settings& s);
bool compares_locus_by_locus(const settings& s);

}  // namespace mnd
