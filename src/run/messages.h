// The fixed messages of the system.
#pragma once

#include "foundation/message_codes.h"

namespace mnd {

// Text of a message; "unknown message" for a code outside the table.
const char* message_text(int code);

}  // namespace mnd
