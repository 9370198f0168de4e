// The driver of all analyses of one sample: it prepares the sample once, and runs each task
// that the settings select in a fixed order, each with its block in the result document.
#pragma once

#include <ostream>
#include <string>

#include "run/settings.h"
#include "run/tasks.h"

namespace mnd {

class PopulDNA;
class PopulRFLP;
class PopulMicrosat;
class PopulStandard;

// Tasks that give a sample its own frame in the document.
inline constexpr int kSampleFrameTasks = kPerSampleTasks | kTaskDistanceFiles;

// Writes a heading between two lines of "=" of its own length, and an empty line. What in it
// would be markup is escaped.
void print_heading(std::ostream& out, const std::string& heading);

// Runs the selected analyses of a sample; its block goes to the result stream of s. Between two
// tasks the stop flag of s is polled. A sample without haplotypes to compare gets a text in
// place of the first analysis that needs them, and no further one.
void run_sample_analyses(PopulDNA& sample, settings& s);
void run_sample_analyses(PopulRFLP& sample, settings& s);
void run_sample_analyses(PopulMicrosat& sample, settings& s);
void run_sample_analyses(PopulStandard& sample, settings& s);

}  // namespace mnd
