// SPDX-License-Identifier: MIT
#include "Command.h"
#include "Host.h"
#include "Nearest.h"
#include "Output.h"
#include "Prompt.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QLoggingCategory>
#include <QtCore/QTimer>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>

#include <unistd.h>

namespace {

struct GlobalOptions
{
    bool json = false;
    bool verbose = false;
    HostOptions host;
};

void declareGlobal(CLI::App &app, GlobalOptions &options)
{
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", "passportctl " PASSPORT_VERSION);
    app.footer("Passwords are asked for, or read from standard input; no option takes one.\n"
               "Exit codes: 0 done, 1 the service said no, 2 wrong command line,\n"
               "            3 the service cannot be reached,\n"
               "            4 a local file or setting cannot be used.");
    addFlag(app, "--json", options.json, "Print one JSON object on one line");
    addFlag(app, "-v,--verbose", options.verbose, "Say on standard error why a request failed");
    addFile(app, "--config", options.host.configFile, "Cloud configuration file (JSON)");
    addText(app, "--environment", options.host.environment, "Name of the cloud environment");
    addDirectory(app, "--passport-dir", options.host.passportDir, "Passport directory of the host");
    addText(app, "--cloud", options.host.address,
            "Address of the account service; the variable counts only without --config and "
            "--environment");
    app.get_option("--passport-dir")->envname("PASSPORT_DIR");
    app.get_option("--cloud")->envname("PASSPORT_CLOUD");
}

// In the order in which --help lists them.
void declareCommands(const Commands &commands)
{
    addAccountCommands(commands.titled("Sign-in and the remembered account"));
    addCodeCommands(commands.titled("With a captcha"));
    addWebCommands(commands.titled("Web pages"));
    addServiceCommands(commands.titled("What the service tells"));
    addDiagnosisCommands(commands.titled("When something is wrong"));
    addErrorCommands(commands.titled("When something is wrong"));
    addEmulatorCommands(commands.titled("With a passport-emulator"));
    addProtectionCommands(commands.titled("Protected storage"));
    addAboutCommands(commands.titled("About this program"));
}

// The library's own lines carry tokens, so they stay off whatever is asked for.
void chooseLogLines(bool verbose)
{
    QLoggingCategory::setFilterRules(
        QStringLiteral("velqor.passport.lib=false\nnubelo=%1")
            .arg(verbose ? QStringLiteral("true") : QStringLiteral("false")));
}

// The library delivers events while it waits, so that the timer fires during a request. After a
// question it is late: nobody has waited for the service meanwhile.
void sayOnTerminalsThatItWaits(QTimer &timer, QElapsedTimer &sinceLast)
{
    constexpr auto interval = std::chrono::milliseconds(2000);
    QObject::connect(&timer, &QTimer::timeout, [&sinceLast, interval] {
        if (sinceLast.restart() < interval.count() * 3 / 2)
            std::fputs("passportctl: still waiting\n", stderr);
    });
    sinceLast.start();
    if (isatty(STDERR_FILENO) != 0)
        timer.start(interval);
}

QString unknownOption(const CLI::App &app, const CLI::App &command, const QString &name)
{
    QStringList names;
    for (const CLI::App *place : {&command, &app}) {
        for (const CLI::Option *option : place->get_options()) {
            for (const std::string &known : option->get_lnames())
                names.append(QStringLiteral("--") + QString::fromStdString(known));
        }
    }
    const QString near = nearestName(name, names);
    const QString problem = QStringLiteral("there is no option \"%1\"").arg(name);
    return near.isEmpty() ? problem : problem + QStringLiteral("; did you mean \"%1\"?").arg(near);
}

/// What is wrong with the command line, in words of our own where a name is unknown or missing.
QString usageProblem(const CLI::App &app, const CLI::ParseError &error)
{
    const CLI::App *command = &app;
    while (!command->get_subcommands().empty())
        command = command->get_subcommands().front();
    const bool needsCommand = command->get_require_subcommand_min() > 0;
    const auto rest = app.remaining(true);
    if (!rest.empty()) {
        const QString first = QString::fromStdString(rest.front());
        if (first.startsWith(QLatin1Char('-')))
            return unknownOption(app, *command, first);
        if (needsCommand)
            return unknownCommand(*command, first);
    }
    if (!needsCommand)
        return QString::fromUtf8(error.what());
    if (command == &app)
        return QStringLiteral("a command is missing; see passportctl --help");
    QStringList words;
    for (const CLI::App *part = command; part != &app; part = part->get_parent())
        words.prepend(QString::fromStdString(part->get_name()));
    return QStringLiteral("a command is missing behind \"%1\"; see passportctl help %1")
        .arg(words.join(QLatin1Char(' ')));
}

/// Whether an option stands on the command line, also on one that could not be read to its end.
bool isGiven(const std::string &option, int argc, char *argv[])
{
    return std::any_of(argv + 1, argv + argc, [&option](const std::string &word) {
        return word == option || word.rfind(option + '=', 0) == 0;
    });
}

int run(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);

    GlobalOptions options;
    std::shared_ptr<Command> command;
    CLI::App app("Account services from the command line", "passportctl");
    declareGlobal(app, options);
    declareCommands({app, command});
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        std::ostringstream text;
        if (app.exit(error, text, text) != 0)
            return static_cast<int>(Output(isGiven("--json", argc, argv))
                                        .failure(Exit::Usage, usageProblem(app, error)));
        writeStandardOutput(QByteArray::fromStdString(text.str()));
        return 0;
    }

    // Whoever names a file or an environment means its address, not that of the variable.
    const bool namesAnother =
        !options.host.configFile.isEmpty() || !options.host.environment.isEmpty();
    if (namesAnother && !isGiven("--cloud", argc, argv))
        options.host.address.clear();

    chooseLogLines(options.verbose);
    QTimer waiting;
    QElapsedTimer sinceLast;
    sayOnTerminalsThatItWaits(waiting, sinceLast);
    const Output output(options.json);
    Host host(options.host, output);
    try {
        return static_cast<int>(command->run(host));
    } catch (const std::length_error &error) {
        return static_cast<int>(output.failure(Exit::Usage, QString::fromUtf8(error.what())));
    }
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        return run(argc, argv);
    } catch (const Interrupted &interrupted) {
        std::signal(interrupted.signal, SIG_DFL);
        return std::raise(interrupted.signal);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "passportctl: %s\n", error.what());
        return static_cast<int>(Exit::Configuration);
    }
}
