#include "link/serialport.h"

#include <iterator>

namespace quorvel::link {

namespace {

/// Next steps.
struct Advice {
    const char* missing;
    const char* again;
    const char* another;
};

constexpr Advice kAdvice[] = {
    {"Plug the adapter in, refresh the list (F5) and choose it again.", "press OpenComm again",
     "Choose another port."},
    {"Plug the adapter in, or name another port with --port; quorvelctl ports lists them.",
     "run the command again", "Name another port with --port."},
    {"Plug the adapter in, or name another port.", "", "Name another port."},
};
static_assert(std::size(kAdvice) == static_cast<std::size_t>(Adviser::Service) + 1);

const Advice* advice =
    &kAdvice[0]; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): see setAdviser()

} // namespace

void setAdviser(Adviser adviser) { advice = &kAdvice[static_cast<std::size_t>(adviser)]; }

QString thenAgain(const char* joint)
{
    const auto again = QLatin1String(advice->again);
    return again.isEmpty() ? QString() : QLatin1String(joint) + again;
}

QString missingText(const QString& name)
{
    return QStringLiteral("%1 does not exist. %2").arg(name, QLatin1String(advice->missing));
}

QString inUseText(const QString& name)
{
    return QStringLiteral("%1 is used by another program. Close it%2.").arg(name, thenAgain(" and "));
}

QString notAllowedText(const QString& name, const QString& group)
{
    const auto again = thenAgain(" and ");
    const auto login =
        again.isEmpty() ? QStringLiteral(" and log in again") : QStringLiteral(", log in again");
    return QStringLiteral("You may not use %1. Join the group \"%2\" (sudo usermod -aG %2 YOUR-NAME)%3.")
        .arg(name, group.isEmpty() ? QStringLiteral("dialout") : group, login + again);
}

QString unusableText(const QString& name, const QString& why)
{
    return QStringLiteral("%1 cannot be opened as a serial port: %2. %3")
        .arg(name, why, QLatin1String(advice->another));
}

QString goneText(const QString& name, const QString& why)
{
    return QStringLiteral("%1 is gone (%2). Check the adapter and the cable%3.")
        .arg(name, why, thenAgain(", then "));
}

} // namespace quorvel::link
