// SPDX-License-Identifier: MIT
#include "Texts.h"

namespace {

/// For a line of its own: what roff would take for a command or a hyphen is made a character.
QString escaped(QString text)
{
    text.replace(QLatin1Char('\\'), QStringLiteral("\\e"))
        .replace(QLatin1Char('-'), QStringLiteral("\\-"));
    if (text.startsWith(QLatin1Char('.')) || text.startsWith(QLatin1Char('\'')))
        text.prepend(QStringLiteral("\\&"));
    return text;
}

QString bold(const QString &text)
{
    return QStringLiteral("\\fB%1\\fR").arg(escaped(text));
}

QString italic(const QString &text)
{
    return QStringLiteral("\\fI%1\\fR").arg(escaped(text));
}

QString paragraph(const QString &label, const QString &text)
{
    return QStringLiteral(".TP\n%1\n%2\n").arg(label, text);
}

QString describe(const OptionDescription &option)
{
    QStringList names;
    for (const QString &name : option.names)
        names.append(option.isArgument ? italic(name) : bold(name));
    QString label = names.join(QStringLiteral(", "));
    if (!option.isArgument && !option.value.isEmpty())
        label += QLatin1Char(' ') + italic(option.value);
    QString text = escaped(option.description);
    if (!option.usual.isEmpty())
        text += QStringLiteral(" (usually %1)").arg(escaped(option.usual));
    if (!option.variable.isEmpty())
        text += QStringLiteral("; without it the variable %1").arg(bold(option.variable));
    return paragraph(label, text + QLatin1Char('.'));
}

QString usage(const CommandDescription &command)
{
    QString line = bold(QStringLiteral("passportctl ") + command.path);
    for (const OptionDescription &option : command.options) {
        if (option.isArgument)
            line += option.isRequired ? QLatin1Char(' ') + italic(option.names.first())
                                      : QStringLiteral(" [%1]").arg(italic(option.names.first()));
    }
    return line;
}

QString describe(const CommandDescription &command)
{
    QString text =
        QStringLiteral(".SS %1\n%2.\n").arg(usage(command), escaped(command.description));
    for (const OptionDescription &option : command.options)
        text += describe(option);
    if (!command.footer.isEmpty())
        text += QStringLiteral(".PP\n%1\n").arg(escaped(command.footer));
    return text;
}

QString section(const QString &title)
{
    return QStringLiteral(".SH %1\n").arg(title.toUpper());
}

} // namespace

QString manualPage(const CommandDescription &program)
{
    QString text = QStringLiteral(".TH PASSPORTCTL 1 \"\" \"libpassport\" \"User Commands\"\n");
    text += section(QStringLiteral("Name"));
    text += QStringLiteral("passportctl \\- %1\n").arg(escaped(program.description));
    text += section(QStringLiteral("Synopsis"));
    text += QStringLiteral("%1 [%2] %3 [%4]\n")
                .arg(bold(program.name), italic(QStringLiteral("options")),
                     italic(QStringLiteral("command")), italic(QStringLiteral("arguments")));
    text += section(QStringLiteral("Options"));
    for (const OptionDescription &option : program.options)
        text += describe(option);
    QString title;
    for (const CommandDescription *command : program.all()) {
        if (command->path.isEmpty() || !command->commands.isEmpty())
            continue;
        // Commands within another one, such as "web", stand under its own title.
        if (!command->path.contains(QLatin1Char(' ')) && command->title != title) {
            title = command->title;
            text += section(title);
        }
        text += describe(*command);
    }
    text += section(QStringLiteral("Notes"));
    text += QStringLiteral(".nf\n");
    const QStringList lines = program.footer.split(QLatin1Char('\n'));
    for (const QString &line : lines)
        text += escaped(line) + QLatin1Char('\n');
    text += QStringLiteral(".fi\n");
    text += section(QStringLiteral("See also"));
    text += QStringLiteral("\\fBpassport\\-emulator\\fR(1), \\fBopenweburl\\fR(1)");
    return text;
}
