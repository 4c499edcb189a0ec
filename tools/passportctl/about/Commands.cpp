// SPDX-License-Identifier: MIT
#include "../Command.h"
#include "../Nearest.h"
#include "Texts.h"

#include <CLI/App.hpp>

namespace {

/// A command about the command line itself, which it finds above its own part of it.
class AboutCommand : public Command
{
public:
    void declare(CLI::App &app) override { m_program = app.get_parent(); }

protected:
    const CLI::App &program() const { return *m_program; }

    static Exit print(Host &host, const QString &text)
    {
        return host.output().success(text, {}, {{QStringLiteral("text"), text}});
    }

private:
    const CLI::App *m_program = nullptr;
};

class Help : public AboutCommand
{
public:
    void declare(CLI::App &app) override
    {
        AboutCommand::declare(app);
        app.add_option("command", m_words, "The command to explain, such as web sign-in");
    }
    Exit run(Host &host) override;

private:
    std::vector<std::string> m_words;
};

Exit Help::run(Host &host)
{
    const CLI::App *app = &program();
    std::string name = app->get_name();
    for (const std::string &word : m_words) {
        const auto found =
            app->get_subcommands([&](const CLI::App *below) { return below->get_name() == word; });
        if (found.empty())
            return host.output().failure(Exit::Usage,
                                         unknownCommand(*app, QString::fromStdString(word)));
        app = found.front();
        name += ' ' + word;
    }
    // Not by app->help(): that of the program is of the command that was given, this one.
    const std::string text = app->get_formatter()->make_help(app, name, CLI::AppFormatMode::Normal);
    return print(host, QString::fromStdString(text).trimmed());
}

class Manual : public AboutCommand
{
public:
    Exit run(Host &host) override { return print(host, manualPage(CommandDescription(program()))); }
};

class Completion : public AboutCommand
{
public:
    void declare(CLI::App &app) override
    {
        AboutCommand::declare(app);
        addRequiredText(app, "shell", m_shell, "bash, zsh or fish");
    }
    Exit run(Host &host) override
    {
        const QString script = completionScript(CommandDescription(program()), m_shell);
        if (!script.isEmpty())
            return print(host, script);
        return host.output().failure(
            Exit::Usage, QStringLiteral("the shells are bash, zsh and fish, not %1").arg(m_shell));
    }

private:
    QString m_shell;
};

} // namespace

void addAboutCommands(Commands commands)
{
    commands.add<Help>("help", "Explain a command", "help web sign-in");
    commands.add<Manual>("manual", "Print the manual page", "manual | man -l -");
    commands.add<Completion>("completion", "Print what a shell needs to complete commands",
                             "completion bash >~/.local/share/bash-completion/completions/"
                             "passportctl");
}
