// SPDX-License-Identifier: MIT
#pragma once

#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <vector>

namespace CLI {
class App;
}

/// An option or an argument of a command, as --help shows it.
struct OptionDescription
{
    QStringList names; ///< such as "-o", "--output"; of an argument the one without dashes
    QString value;     ///< what it takes, such as "FILE"; empty: nothing
    QString description;
    QString usual;    ///< its value where it is not given
    QString variable; ///< of the environment
    bool isArgument;
    bool isRequired;
};

/// A command with those below it, read from the command line's own declaration, so that whatever
/// is made of it is what the program takes.
struct CommandDescription
{
    explicit CommandDescription(const CLI::App &app, const QString &parentPath = {});

    QString path; ///< behind the program's name, such as "web sign-in"; of the program itself empty
    QString name;
    QString title; ///< under which --help lists it
    QString description;
    QString footer;
    QVector<OptionDescription> options; ///< without --help
    QVector<CommandDescription> commands;

    /// Itself and all below it.
    std::vector<const CommandDescription *> all() const;
};
