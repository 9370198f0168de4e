// The five kinds of genetic data; the values are those of the settings and of the profile.
#pragma once

namespace mnd {

enum DataTypeCode : int { DNA = 0, RFLP = 1, MICROSAT = 2, STANDARD = 3, FREQUENCY = 4 };

}  // namespace mnd
