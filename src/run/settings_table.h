// The keys of the settings file: one row each, in the order of the file.
//
// The rows drive the reader, the writer, the defaults and the block of the result document, so
// that a key is added in one place. The order is part of the file format: a key is found by
// substring, hence a key whose name is contained in another's must stand before it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <variant>

#include "foundation/my_string.h"
#include "run/settings.h"

namespace mnd {

// Sections of the file, in its order. Keys of the last are read and never written.
enum SettingSection : int {
    kSectionTasks,
    kSectionGeneral,
    kSectionHardyWeinberg,
    kSectionLinkage,
    kSectionDiversity,
    kSectionMismatch,
    kSectionHaplotypeFrequencies,
    kSectionAmova,
    kSectionPairwise,
    kSectionDifferentiation,
    kSectionSelection,
    kSectionNeutrality,
    kSectionMantel,
    kSectionReadOnly
};

// Title of a section as the file has it, such as "#SETTINGS FOR AMOVA"; null for the section of
// the tasks, which has none, and for the keys that are not written.
const char* section_heading(SettingSection section);

// The field of a key.
using SettingField = std::variant<int settings::*, long settings::*, double settings::*, bool settings::*,
                                  my_string settings::*>;

// Traits of a key; a set is their union.
enum SettingTraits : unsigned {
    kPlain = 0,
    kKeptWhenAbsent = 1,  // a file without the key leaves the field as it is, in place of clearing it
    kScientific = 2,      // a double written with an exponent
    kReadAsInteger = 4,   // a double whose text is read as a whole number
    kCutFraction = 32,    // an int whose text is read up to its point only
    kYesNo = 8,           // shown to users as yes or no
    kDistance = 16        // shown as the name of a molecular distance
};

struct SettingKey {
    const char* name;
    SettingSection section;
    SettingField field;
    double initial;        // the default; a text begins empty
    unsigned traits;       // SettingTraits
    const char* label;     // name of the key in the result document; null: not shown there
    const char* comments;  // lines of explanation above the key in the file, "#" included
};

// All keys, those that are only read behind the others.
std::span<const SettingKey> setting_keys();

// Row of a key; null for a name that is none.
const SettingKey* find_setting(const char* name);

// The value of a key as the settings file spells it.
std::string setting_text(const settings& s, const SettingKey& key);

// Gives the field of a key the value that the text of a settings file spells.
void assign_setting_text(settings& s, const SettingKey& key, const char* text);

// Gives the field of a key a number; a text becomes empty.
void assign_setting_number(settings& s, const SettingKey& key, double value);

}  // namespace mnd
