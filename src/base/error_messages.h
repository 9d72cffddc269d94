#pragma once

#include "tessarin/error_codes.h"

namespace tessarin {

/// The constant text of `code`; one without a text of its own reads as an internal error.
const char* ErrorMessage(error_code code);

} // namespace tessarin
