#pragma once

#include <QString>

/// The reasons why a serial port cannot be opened, each with the next step.
namespace quorvel::link {

QString missingText(const QString& name);
QString inUseText(const QString& name);
/// @param group  who may use the port; empty when that is not known; "dialout" is named then.
QString notAllowedText(const QString& name, const QString& group);
/// @param why  what the platform says.
QString unusableText(const QString& name, const QString& why);

} // namespace quorvel::link
