// Steps that the distance matrices of all data types share.
#pragma once

#include <cmath>
#include <fstream>
#include <ostream>
#include <string_view>
#include <vector>

#include "foundation/my_string.h"
#include "model/population.h"

namespace mnd {

class settings;

// Contents of the haplotypes of a sample, in the order of its list; valid as long as that.
std::vector<std::string_view> haplotype_texts(const Population& sample);

// Indices of the usable loci, ascending. A sample whose loci were not compared yet has all
// `length` loci usable.
std::vector<int> usable_loci(const PopGenetics& sample, int length);

// Makes dist_mat a zeroed matrix of the haplotypes, and max_dist 0; sets nb_hapl.
//   keep   an existing matrix of the right size is not replaced, and keeps its cells
// Result: false, without a matrix, after report 0 when the memory does not suffice
bool prepare_distance_matrix(PopGenetics& sample, bool keep);

// Raises max_dist to the integer part of a distance that is above it. Distances that are not
// finite do not count.
void note_distance(PopGenetics& sample, double distance);

// Shows the progress after a row of the matrix. False when the work shall stop.
bool row_is_done(const settings* s);

// Fills both triangles of dist_mat: below the diagonal the distance, above it its standard
// deviation, each times scale.
//   compare   compare(i, j), i above j, sets distance and distance_var of the sample; false
//             when there is no distance
//   origin    function in whose name a missing distance is reported (136)
// Result: false, without a matrix, after that report or when the work shall stop
template <class Compare>
bool fill_distance_matrix(PopGenetics& sample, double scale, const settings* s, const char* origin,
                          Compare compare);

// Says in the log that a matrix is written, and writes it: a heading, then one row per
// haplotype, the diagonal blank, cells with 4 decimals in width 8. Null: writes nothing.
void write_distance_matrix(std::ostream* out, const PopGenetics& sample);

// The table itself.
void print_distance_matrix(std::ostream& out, const RectMat& matrix);

// Path of a file of one sample, without its extension: the result folder, and the sample's
// name with blanks and the characters of paths as underscores.
my_string get_small_name(const Population& sample, const settings& s);

// Writes the distances between the haplotypes of a sample to the file of its small name and
// ".dis", by DistanceMethodAMOVA and GammaAValueAMOVA. The sample keeps the matrix. That it takes
// the place of the file of an earlier sample of the pass is said in the log.
// Writes: distance_method, gamma_a, dist_mat, max_dist
// Result: 1, or 0 when there is no distance or the file can't be written, which is then said
//         in the log
int write_distance_file(PopGenetics& sample, settings& s);

// --- implementation ---

// Reports that a sample has no haplotypes, or one of its pairs no distance.
void report_no_haplotypes(const char* origin);
void report_no_distance(const char* origin);

template <class Compare>
bool fill_distance_matrix(PopGenetics& sample, double scale, const settings* s, const char* origin,
                          Compare compare) {
    double** cells = sample.dist_mat->data;
    for (int i = 0; i < sample.nb_hapl; ++i) {
        for (int j = 0; j < i; ++j) {
            if (!compare(i, j)) {
                report_no_distance(origin);
                sample.dist_mat.reset();
                return false;
            }
            cells[i][j] = sample.distance * scale;
            cells[j][i] = sample.distance_var >= 0.0 ? std::sqrt(sample.distance_var) * scale : 0.0;
            note_distance(sample, cells[i][j]);
        }
        cells[i][i] = 0.0;
        if (!row_is_done(s)) {
            sample.dist_mat.reset();
            return false;
        }
    }
    return true;
}

}  // namespace mnd
