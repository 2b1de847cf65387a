#pragma once

#include "files/name.h"

namespace quorvel::calibration {

using files::isThere;

} // namespace quorvel::calibration
