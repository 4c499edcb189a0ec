// SPDX-License-Identifier: MIT
#include "Texts.h"

#include <algorithm>

// Every script first finds the command that the words before the cursor have come to, and then
// offers what that command has.

namespace {

QString quoted(QString text)
{
    text.replace(QLatin1Char('\''), QStringLiteral("'\\''"));
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

/// All commands but the program itself, as patterns of a shell's "case".
QString patterns(const CommandDescription &program, const QString &separator)
{
    QStringList paths;
    for (const CommandDescription *command : program.all()) {
        if (command != &program)
            paths.append(quoted(command->path));
    }
    return paths.join(separator);
}

/// Options that take a value of this kind, or of no kind that can be completed; the same name
/// never takes two kinds.
QString optionsWith(const CommandDescription &program, const QStringList &values)
{
    QStringList names;
    for (const CommandDescription *command : program.all()) {
        for (const OptionDescription &option : command->options) {
            if (!option.isArgument && values.contains(option.value))
                names += option.names;
        }
    }
    names.removeDuplicates();
    return names.join(QLatin1Char('|'));
}

const QString takesFile = QStringLiteral("FILE");
const QString takesDirectory = QStringLiteral("DIR");
const QString takesText = QStringLiteral("TEXT");

/// What may come next, each word with its description. The program's own options may stand behind
/// every command, too.
std::vector<std::pair<QString, QString>> wordsAt(const CommandDescription &command,
                                                 const CommandDescription &program)
{
    std::vector<std::pair<QString, QString>> words;
    for (const CommandDescription &below : command.commands)
        words.emplace_back(below.name, below.description);
    auto options = program.options;
    if (&command != &program)
        options = command.options + options;
    for (const OptionDescription &option : qAsConst(options)) {
        if (!option.isArgument)
            words.emplace_back(option.names.last(), option.description);
    }
    return words;
}

QString bashScript(const CommandDescription &program)
{
    QString places;
    for (const CommandDescription *command : program.all()) {
        QStringList words;
        for (const auto &word : wordsAt(*command, program))
            words.append(word.first);
        places += QStringLiteral("        %1) words=%2 ;;\n")
                      .arg(quoted(command->path), quoted(words.join(QLatin1Char(' '))));
    }
    return QStringLiteral(R"(# bash completion for passportctl
_passportctl()
{
    local current=${COMP_WORDS[COMP_CWORD]} place= word words=
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case "${place:+$place }$word" in
            %1) place="${place:+$place }$word" ;;
        esac
    done
    COMPREPLY=()
    case ${COMP_WORDS[COMP_CWORD-1]} in
        %2) mapfile -t COMPREPLY < <(compgen -f -- "$current"); return ;;
        %3) mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
        %4) return ;;
    esac
    case $place in
%5    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -o default -F _passportctl passportctl)")
        .arg(patterns(program, QStringLiteral("|")), optionsWith(program, {takesFile}),
             optionsWith(program, {takesDirectory}), optionsWith(program, {takesText}), places);
}

QString zshScript(const CommandDescription &program)
{
    QString places;
    for (const CommandDescription *command : program.all()) {
        QStringList words;
        for (const auto &word : wordsAt(*command, program))
            words.append(quoted(word.first + QLatin1Char(':') + word.second));
        places += QStringLiteral("        %1) entries=(%2) ;;\n")
                      .arg(quoted(command->path), words.join(QLatin1Char(' ')));
    }
    return QStringLiteral(R"(#compdef passportctl
_passportctl()
{
    local place= word
    local -a entries
    for word in ${words[2,CURRENT-1]}; do
        case "${place:+$place }$word" in
            %1) place="${place:+$place }$word" ;;
        esac
    done
    case ${words[CURRENT-1]} in
        %2) _files; return ;;
        %3) _files -/; return ;;
        %4) return ;;
    esac
    case $place in
%5    esac
    _describe passportctl entries || _files
}
_passportctl "$@")")
        .arg(patterns(program, QStringLiteral("|")), optionsWith(program, {takesFile}),
             optionsWith(program, {takesDirectory}), optionsWith(program, {takesText}), places);
}

QString fishOption(const OptionDescription &option)
{
    QString line;
    for (const QString &name : option.names)
        line += name.startsWith(QLatin1String("--")) ? QStringLiteral(" -l ") + name.mid(2)
                                                     : QStringLiteral(" -s ") + name.mid(1);
    if (option.value == takesFile)
        line += QStringLiteral(" -r -F");
    else if (!option.value.isEmpty())
        line += option.value == takesDirectory
                    ? QStringLiteral(" -x -a '(__fish_complete_directories)'")
                    : QStringLiteral(" -x");
    return line + QStringLiteral(" -d ") + quoted(option.description);
}

QString fishScript(const CommandDescription &program)
{
    QString script = QStringLiteral(R"(# fish completion for passportctl
function __passportctl_at
    set -l place
    set -l tokens (commandline -opc)
    set -e tokens[1]
    for word in $tokens
        switch "$place $word"
            case %1
                set place "$place $word"
        end
    end
    test "$place" = "$argv"
end
complete -c passportctl -f
)");
    QStringList paths;
    for (const CommandDescription *command : program.all()) {
        const QString path = command->path.isEmpty() ? QString() : QLatin1Char(' ') + command->path;
        if (!path.isEmpty())
            paths.append(quoted(path));
        const QString always = QStringLiteral("complete -c passportctl");
        const QString here =
            always + QStringLiteral(" -n \"__passportctl_at %1\"").arg(quoted(path));
        for (const CommandDescription &below : command->commands)
            script +=
                here + QStringLiteral(" -a %1 -d %2\n").arg(below.name, quoted(below.description));
        // The program's own options may stand behind every command, too.
        const QString start = path.isEmpty() ? always : here;
        for (const OptionDescription &option : command->options) {
            if (!option.isArgument)
                script += start + fishOption(option) + QLatin1Char('\n');
            else if (option.value == takesFile)
                script += start + QStringLiteral(" -F\n");
        }
    }
    return script.replace(QStringLiteral("%1"), paths.join(QLatin1Char(' '))).trimmed();
}

} // namespace

QString completionScript(const CommandDescription &program, const QString &shell)
{
    if (shell == QLatin1String("bash"))
        return bashScript(program);
    if (shell == QLatin1String("zsh"))
        return zshScript(program);
    return shell == QLatin1String("fish") ? fishScript(program) : QString();
}
