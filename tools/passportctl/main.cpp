#include "Command.h"
#include "Host.h"
#include "Output.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>
#include <QtCore/QTimer>

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>

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
               "            3 the service cannot be reached, 4 a configuration cannot be used.");
    addFlag(app, "--json", options.json, "Print one JSON object on one line");
    addFlag(app, "-v,--verbose", options.verbose, "Say on standard error why a request failed");
    addText(app, "--config", options.host.configFile, "Cloud configuration file (JSON)");
    addText(app, "--environment", options.host.environment, "Name of the cloud environment");
    addText(app, "--passport-dir", options.host.passportDir, "Passport directory of the host");
    addText(app, "--cloud", options.host.address, "Address of the account service");
}

// In the order in which --help lists them.
void declareCommands(const Commands &commands)
{
    addAccountCommands(commands);
    addErrorCommands(commands);
    addDiagnosisCommands(commands);
    addCodeCommands(commands);
    addServiceCommands(commands);
    addEmulatorCommands(commands);
    addWebCommands(commands);
    addProtectionCommands(commands);
}

// The library's own lines carry tokens, so they stay off whatever is asked for.
void chooseLogLines(bool verbose)
{
    QLoggingCategory::setFilterRules(
        QStringLiteral("velqor.passport.lib=false\nnubelo=%1")
            .arg(verbose ? QStringLiteral("true") : QStringLiteral("false")));
}

// The library delivers events while it waits, so that the timer fires during a request.
void sayOnTerminalsThatItWaits(QTimer &timer)
{
    QObject::connect(&timer, &QTimer::timeout,
                     [] { std::fputs("passportctl: still waiting\n", stderr); });
    if (isatty(STDERR_FILENO) != 0)
        timer.start(std::chrono::seconds(2));
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
        return app.exit(error) == 0 ? 0 : static_cast<int>(Exit::Usage);
    }

    chooseLogLines(options.verbose);
    QTimer waiting;
    sayOnTerminalsThatItWaits(waiting);
    Host host(options.host, Output(options.json));
    return static_cast<int>(command->run(host));
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "passportctl: %s\n", error.what());
        return static_cast<int>(Exit::Configuration);
    }
}
