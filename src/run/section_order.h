// The order of the sections of a project: groups and Mantel matrices refer to samples, which
// must stand before them.
#pragma once

namespace mnd {

class Samples;

// A section that refers to samples, and what is said when there are none.
struct SampleSection {
    int code;                     // the error
    const char* before_samples;   // log text when no [[Samples]] section was read
    const char* without_samples;  // log text when it held no sample
};

extern const SampleSection kStructureSection;
extern const SampleSection kMantelSection;

// True when a section of samples was read and holds one; else the text in the log and the error
// from "Project::open()".
bool samples_stand_before(SampleSection const& section, bool samples_read, Samples const& samples);

}  // namespace mnd
