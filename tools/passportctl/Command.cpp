// SPDX-License-Identifier: MIT
#include "Command.h"

#include "Nearest.h"

#include <CLI/App.hpp>

#include <string>
#include <utility>

void Command::validate(const CLI::App &app) const
{
    Q_UNUSED(app)
}

CLI::App *Commands::addApp(const char *name, const char *description, const char *example) const
{
    CLI::App *app = m_app.add_subcommand(name, description)->group(m_title);
    return app->footer(*example == '\0' ? std::string()
                                        : std::string("Example: passportctl ") + example);
}

Commands Commands::group(const char *name, const char *description, const char *example) const
{
    CLI::App *app = addApp(name, description, example);
    app->require_subcommand(1);
    return {*app, m_chosen};
}

Commands Commands::titled(const char *title) const
{
    Commands same = *this;
    same.m_title = title;
    return same;
}

void Commands::add(const char *name, const char *description, const char *example,
                   std::shared_ptr<Command> command)
{
    CLI::App *app = addApp(name, description, example);
    command->declare(*app);
    app->callback([app, command = std::move(command), &chosen = m_chosen] {
        command->validate(*app);
        chosen = command;
    });
}

namespace {

CLI::Option *addTextOption(CLI::App &app, const char *name, QString &value, const char *description)
{
    const auto fillIn = [&value](const CLI::results_t &arguments) {
        value = QString::fromStdString(arguments.front());
        return true;
    };
    const auto current = [&value] { return value.toStdString(); };
    const bool hasDefault = !value.isEmpty();
    return app.add_option(name, fillIn, description, hasDefault, current)->type_name("TEXT");
}

} // namespace

void addFlag(CLI::App &app, const char *name, bool &value, const char *description)
{
    app.add_flag(name, value, description);
}

void addText(CLI::App &app, const char *name, QString &value, const char *description)
{
    addTextOption(app, name, value, description);
}

void addRequiredText(CLI::App &app, const char *name, QString &value, const char *description)
{
    addTextOption(app, name, value, description)->required();
}

void addFile(CLI::App &app, const char *name, QString &value, const char *description)
{
    addTextOption(app, name, value, description)->type_name("FILE");
}

void addRequiredFile(CLI::App &app, const char *name, QString &value, const char *description)
{
    addTextOption(app, name, value, description)->type_name("FILE")->required();
}

void addDirectory(CLI::App &app, const char *name, QString &value, const char *description)
{
    addTextOption(app, name, value, description)->type_name("DIR");
}

QString unknownCommand(const CLI::App &app, const QString &name)
{
    QStringList names;
    for (const CLI::App *command : app.get_subcommands({}))
        names.append(QString::fromStdString(command->get_name()));
    const QString near = nearestName(name, names);
    const QString problem = QStringLiteral("there is no command \"%1\"").arg(name);
    return near.isEmpty() ? problem : problem + QStringLiteral("; did you mean \"%1\"?").arg(near);
}

void addAccount(CLI::App &app, Account &account)
{
    addRequiredText(app, "user", account.user, "User name, mail address or phone number");
    addText(app, "--phone-area", account.phoneArea, "Phone area of the user name, such as 86");
}
