#pragma once

#include <CLI/CLI.hpp>

/// What option values must look like. A value of another form ends the program with the reason and exit status 2,
/// before anything is opened.
namespace quorvel::ctl {

CLI::Validator number();     ///< a number of less than 1000 either way
CLI::Validator busAddress(); ///< 1 to 249, decimal
CLI::Validator deviceName(); ///< what can be the name of a port or of a device server

} // namespace quorvel::ctl
