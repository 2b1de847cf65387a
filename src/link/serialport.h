#pragma once

#include <QString>

/// The reasons why a serial port cannot be opened, or is gone, each with the next step.
namespace quorvel::link {

/// Whose words the next step is said in: the windows name their buttons, the command line its options, and what opens the
/// port again by itself asks nobody to.
enum class Adviser { Windows, CommandLine, Service };
/// For the whole program, which has one of them at a time; that of the windows at first.
void setAdviser(Adviser adviser);

QString missingText(const QString& name);
QString inUseText(const QString& name);
/// @param group  who may use the port; empty when that is not known; "dialout" is named then.
QString notAllowedText(const QString& name, const QString& group);
/// @param why  what the platform says.
QString unusableText(const QString& name, const QString& why);
/// An open port vanished. @param why  what the platform says.
QString goneText(const QString& name, const QString& why);

/// "press OpenComm again" behind `joint`, such as " and "; nothing when the port is opened again anyway.
QString thenAgain(const char* joint);

} // namespace quorvel::link
