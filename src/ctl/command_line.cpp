#include "ctl/command_line.h"

#include "link/bytes.h"
#include "text/number.h"

#include <QFileInfo>

namespace quorvel::ctl {

CLI::App* addCommand(CLI::App& parent, const std::string& name, const std::string& help,
                     const std::string& example)
{
    auto* command = parent.add_subcommand(name, help);
    const auto* root = &parent;
    while (root->get_parent())
        root = root->get_parent();
    return command->footer("Example:\n  " + root->get_name() + " " + example);
}

void addYes(CLI::App& command, Console& console)
{
    command.add_flag("--yes", console.options.yes, "Do not ask first");
}

void addForce(CLI::App& command, Console& console)
{
    command.add_flag("--force", console.options.force, "Overwrite a file that exists");
}

std::filesystem::path pathOf(const std::string& file)
{
    return QFileInfo(QString::fromLocal8Bit(file.c_str())).filesystemFilePath();
}

void insertLength(QJsonObject& answer, const QString& name, const std::optional<std::string>& text)
{
    const bool number = text && text::isNumber(*text);
    answer.insert(name + QStringLiteral("Mm"), number ? QJsonValue(text::Val(*text)) : QJsonValue());
    answer.insert(name + QStringLiteral("Text"), text ? QJsonValue(link::shown(*text)) : QJsonValue());
}

} // namespace quorvel::ctl
