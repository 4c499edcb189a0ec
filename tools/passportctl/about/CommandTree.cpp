// SPDX-License-Identifier: MIT
#include "CommandTree.h"

#include <CLI/App.hpp>

namespace {

OptionDescription describe(const CLI::Option &option)
{
    OptionDescription described;
    described.isArgument = option.get_positional();
    described.isRequired = option.get_required();
    if (described.isArgument)
        described.names.append(QString::fromStdString(option.get_name(true)));
    for (const std::string &name : option.get_snames())
        described.names.append(QLatin1Char('-') + QString::fromStdString(name));
    for (const std::string &name : option.get_lnames())
        described.names.append(QStringLiteral("--") + QString::fromStdString(name));
    if (option.get_type_size() != 0)
        described.value = QString::fromStdString(option.get_type_name());
    described.description = QString::fromStdString(option.get_description());
    described.usual = QString::fromStdString(option.get_default_str());
    described.variable = QString::fromStdString(option.get_envname());
    return described;
}

} // namespace

CommandDescription::CommandDescription(const CLI::App &app, const QString &parentPath)
    : name(QString::fromStdString(app.get_name()))
    , title(QString::fromStdString(app.get_group()))
    , description(QString::fromStdString(app.get_description()))
    , footer(QString::fromStdString(app.get_footer()))
{
    if (app.get_parent())
        path = parentPath.isEmpty() ? name : parentPath + QLatin1Char(' ') + name;
    for (const CLI::Option *option : app.get_options()) {
        if (option != app.get_help_ptr())
            options.append(describe(*option));
    }
    for (const CLI::App *below : app.get_subcommands({}))
        commands.append(CommandDescription(*below, path));
}

std::vector<const CommandDescription *> CommandDescription::all() const
{
    std::vector<const CommandDescription *> list{this};
    for (const CommandDescription &command : commands) {
        const auto below = command.all();
        list.insert(list.end(), below.begin(), below.end());
    }
    return list;
}
