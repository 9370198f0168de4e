// The script that builds the folder tree beside a result document.
//
// The script grows by one line per entry while a run goes on. Each entry opens, appends and
// closes the file, so that the tree is complete at every moment, whatever happens next. A
// file that can't be opened loses its entries without a message: the document itself is not
// touched by that.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

#include "foundation/my_string.h"

namespace mnd {

class settings;

// Writer of one tree script. Labels are users' texts, as they are: they are escaped here.
// Nothing is written while `htmlOutput` is off.
class TJSOut {
public:
    // Appends to the file, which need not exist yet.
    explicit TJSOut(const char* js_file_name);

    // Empties the script.
    void restart();

    // Settings and root of the tree, which come first in the script.
    //   icon_path    folder of the icons, in the form of the system
    //   style_path   style sheet of the tree, which the tree library finds by itself
    //   title        text of the root
    //   tree_target  file that the root shows, without path, as it is
    void foldersTree(const char* icon_path, const char* style_path, const char* title,
                     const char* tree_target);

    // A leaf: below the root at level 0, otherwise below the last folder of that level.
    //   target   link, complete and encoded but for its blanks
    void doc(int level, const char* label, const char* target);

    // A folder: below the root at level 1, otherwise below the last folder one level up.
    void aux(int level, const char* label, const char* target);

private:
    void append(const std::string& text);

    std::string js_file_name_;
    std::ofstream js_stream_;  // open for the time of one entry
};

// Name of an anchor of this run: its time stamp, without blanks and with underlines for
// slashes and colons, and `suffix`. The stamp keeps the anchors of repeated runs apart.
std::string run_anchor_name(const settings& s, std::string_view suffix);

// Write the anchor into the result document, where its block follows, and its entry in the
// tree: a leaf, or a folder that opens a place in the document. Nothing is written while
// `htmlOutput` is off.
//   anchor   complete name of the anchor
void print_doc_anchor(settings& s, int level, std::string_view anchor, const char* label);
void print_aux_anchor(settings& s, int level, std::string_view anchor, const char* label);

// The same for an anchor of this run with the given suffix.
void print_js_doc_entry(settings& s, int level, const char* suffix, const char* label);
void print_js_aux_entry(settings& s, int level, const char* suffix, const char* label);

// The log as the first entry of the tree.
void print_js_mendrake_log_entry(settings& s);

// Leaf of one sample.
//   suffix         kind of the block, such as "pop_"
//   sample_number  number of the sample, which ends the name of the anchor
//   sample_name    label of the leaf
void print_population_anchor(int level, settings& s, const char* suffix, int sample_number,
                             const char* sample_name);

// Leaf of one block of the summary over samples.
//   group_level   the samples are groups
void print_computation_anchor(int level, settings& s, const char* suffix, const char* label,
                              bool group_level);

}  // namespace mnd
