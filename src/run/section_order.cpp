#include "run/section_order.h"

#include <ostream>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "model/samples.h"
#include "run/errors.h"

namespace mnd {

const SampleSection kStructureSection = {
    kStructureWithoutSamples,
    "[STRUCTURE] section defined before the [SAMPLES] section. Aborting reading project",
    "No samples were defined before the [STRUCTURE] section. Aborting reading project"};

const SampleSection kMantelSection = {
    kMantelWithoutSamples, "[MANTEL] section defined before the [SAMPLES] section. Aborting reading project",
    "No samples were defined before the [MANTEL] section. Aborting reading project"};

bool samples_stand_before(SampleSection const& section, bool samples_read, Samples const& samples) {
    if (samples_read && samples.populations.count > 0) return true;
    *_AOS_ << (samples_read ? section.without_samples : section.before_samples) << std::endl;
    report(Error, "Project::open()", section.code);
    return false;
}

}  // namespace mnd
