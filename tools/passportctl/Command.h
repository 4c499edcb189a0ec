// SPDX-License-Identifier: MIT
#pragma once

#include "Host.h"

#include <memory>

namespace CLI {
class App;
}

/// One command of the tool; its members are its options.
class Command
{
public:
    Command() = default;
    virtual ~Command() = default;
    Command(const Command &) = delete;
    Command &operator=(const Command &) = delete;

    /// Adds the options to the command's own part of the command line, which fills them in.
    virtual void declare(CLI::App &app) = 0;

    /// Throws a CLI::ValidationError when options do not go together. By then all are filled in,
    /// also those that every command takes.
    virtual void validate(const CLI::App &app) const;

    /// Carries the command out and prints what came of it.
    virtual Exit run(Host &host) = 0;
};

/// The commands at one place of the command line, and the one that was chosen.
class Commands
{
public:
    /// Both outlive the parsing; `chosen` stays null until a command has been parsed.
    Commands(CLI::App &app, std::shared_ptr<Command> &chosen) : m_app(app), m_chosen(chosen) {}

    /// `example`: what might stand behind the program's name to show the command; its help and the
    /// manual print it.
    template <typename OneCommand>
    void add(const char *name, const char *description, const char *example = "")
    {
        add(name, description, example, std::make_shared<OneCommand>());
    }
    void add(const char *name, const char *description, const char *example,
             std::shared_ptr<Command> command);

    /// A name under which further commands stand, such as "web".
    Commands group(const char *name, const char *description, const char *example = "") const;

    /// The same place; what is added here is listed under `title`.
    Commands titled(const char *title) const;

private:
    CLI::App *addApp(const char *name, const char *description, const char *example) const;
    CLI::App &m_app;
    std::shared_ptr<Command> &m_chosen;
    const char *m_title = "Commands";
};

// Without dashes a name is that of an argument. A value that is set already is the default, and
// --help shows it.

void addFlag(CLI::App &app, const char *name, bool &value, const char *description);
void addText(CLI::App &app, const char *name, QString &value, const char *description);
void addRequiredText(CLI::App &app, const char *name, QString &value, const char *description);
void addFile(CLI::App &app, const char *name, QString &value, const char *description);
void addRequiredFile(CLI::App &app, const char *name, QString &value, const char *description);
void addDirectory(CLI::App &app, const char *name, QString &value, const char *description);

/// Adds the argument and the option that say whose account it is.
void addAccount(CLI::App &app, Account &account);

/// That there is no such command at this place, with the one that was probably meant.
QString unknownCommand(const CLI::App &app, const QString &name);

// Each adds the commands of one source.

void addAboutCommands(Commands commands);      ///< help, manual, completion
void addAccountCommands(Commands commands);    ///< sign-in, profile, account
void addErrorCommands(Commands commands);      ///< errors
void addDiagnosisCommands(Commands commands);  ///< status, config, doctor
void addCodeCommands(Commands commands);       ///< those that need a captcha
void addServiceCommands(Commands commands);    ///< countries, country, privacy, net
void addEmulatorCommands(Commands commands);   ///< those that only a passport-emulator answers
void addWebCommands(Commands commands);        ///< web ...
void addProtectionCommands(Commands commands); ///< protect, unprotect
