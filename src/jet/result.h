#pragma once

#include "files/result.h"

/// Failures as values, under the names that the units of this folder use.
namespace quorvel::jet {

using files::Failure;
using files::Result;
using files::Status;

} // namespace quorvel::jet
