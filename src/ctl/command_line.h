#pragma once

#include "ctl/console.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <optional>
#include <string>

/// What all commands have in common on the command line and in their answers.
namespace quorvel::ctl {

/// Adds a command. What --help says of it is also its part of the manual page.
/// @param example  what is typed behind the program's name.
CLI::App* addCommand(CLI::App& parent, const std::string& name, const std::string& help,
                     const std::string& example);

/// --yes, for a command that asks first (Console::agrees).
void addYes(CLI::App& command, Console& console);
/// --force, for a command that writes a file (Console::mayMake).
void addForce(CLI::App& command, Console& console);

/// The path of a file that was named on the command line, whatever its letters.
std::filesystem::path pathOf(const std::string& file);

/// A length as received, in an answer: NAMEMm, a number, and NAMEText beside it; the number is null when the text is not
/// one, both are without a text.
void insertLength(QJsonObject& answer, const QString& name, const std::optional<std::string>& text);

} // namespace quorvel::ctl
