#include "Command.h"

#include <utility>

void Command::validate(const CLI::App &app) const
{
    Q_UNUSED(app)
}

Commands Commands::group(const char *name, const char *description)
{
    CLI::App *app = m_app.add_subcommand(name, description);
    app->require_subcommand(1);
    return {*app, m_chosen};
}

void Commands::add(const char *name, const char *description, std::shared_ptr<Command> command)
{
    CLI::App *app = m_app.add_subcommand(name, description);
    command->declare(*app);
    app->callback([app, command = std::move(command), &chosen = m_chosen] {
        command->validate(*app);
        chosen = command;
    });
}

CLI::Option *addText(CLI::App &app, const char *name, QString &value, const char *description)
{
    const auto fillIn = [&value](const CLI::results_t &arguments) {
        value = QString::fromStdString(arguments.front());
        return true;
    };
    const auto current = [&value] { return value.toStdString(); };
    return app.add_option(name, fillIn, description, false, current)->type_name("TEXT");
}

void addAccount(CLI::App &app, Account &account)
{
    addText(app, "user", account.user, "User name, mail address or phone number")->required();
    addText(app, "--phone-area", account.phoneArea, "Phone area of the user name, such as 86");
}
